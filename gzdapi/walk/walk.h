// Where the reader of an open file stands.
#ifndef GZDAPI_WALK_H
#define GZDAPI_WALK_H

#include "gzd_data.h"
#include "record/Recording.h"

namespace gzd {

constexpr UINT32 no_trial = 0xFFFFFFFFu;

struct Walk {
  UINT32 currentData = 0;                    // index of the element handed out next
  UINT32 currentBookMark = 0;                // place of the bookmark last reached
  UINT32 currentTrial = no_trial;            // place of the current trial
  const Recording* lastRecording = nullptr;  // the block that the walk is in, null outside
  // True while the trials are collected: what is read meanwhile is reported when its turn comes.
  bool collectsTrials = false;
};

}  // namespace gzd

#endif
