// Repairs and marks that concern blinks.
#ifndef GZDAPI_BLINK_REPAIR_H
#define GZDAPI_BLINK_REPAIR_H

#include "index/index.h"

namespace gzd {

// Makes one blink of all blinks of an eye inside one saccade of it; the end of the merged blink is
// marked.
void mergeBlinksInsideSaccade(Index& index);

// Marks the samples that lie between the start and the end of a blink, for each eye. A recording
// boundary ends all blinks.
void markSamplesInsideBlink(Index& index);

}  // namespace gzd

#endif
