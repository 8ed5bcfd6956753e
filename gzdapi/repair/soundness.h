// What the ordered index tells of blocks and events, beyond what is repaired.
#ifndef GZDAPI_SOUNDNESS_H
#define GZDAPI_SOUNDNESS_H

#include "index/index.h"

namespace gzd {

// Finds the blocks whose samples end before they do. Blocks that announce no samples have none to
// lose, nor has any block of an index without `samplesLoaded`.
void examine_blocks(Index& index, bool samplesLoaded);

// Finds starts of eye events without an end and ends without a start, by kind and eye.
void find_unpaired_events(Index& index);

}  // namespace gzd

#endif
