// Checks of the time-ordered index, and its repairs.
#ifndef GZDAPI_CONSISTENCY_H
#define GZDAPI_CONSISTENCY_H

#include "index/index.h"
#include "repair/recording_collision.h"

namespace gzd {

// Runs all checks over the index and sorts it on the way. Finds are logged. Eye events outside
// recording blocks are re-timed, samples outside blocks removed, blinks without a start get one,
// misplaced configuration messages are moved; with `repair` blink starts are re-timed, split blinks
// merged and the samples inside blinks marked as well. Returns 0.
int checkConsistency(Index& index, bool repair, const MessageReader& messageText);

// Moves eye events between two blocks to the boundaries: ends back to the end of the block before,
// starts on to the start of the next one. Returns 0.
int MergeEyeEventsOutsideOfTrials(Index& index);

}  // namespace gzd

#endif
