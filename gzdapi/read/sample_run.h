// Where samples like the one read last need no more than to be decoded: entries of a block, with
// records whole in the stream's window, whose velocities nobody wants.
#ifndef GZDAPI_SAMPLE_RUN_H
#define GZDAPI_SAMPLE_RUN_H

#include "gzd_data.h"

namespace gzd {

struct SampleRun {
  UINT32 firstItem = 0;
  UINT32 items = 0;
  INT64 firstPlace = 0;  // of records in the file
  INT64 places = 0;
  const byte* bytes = nullptr;  // at the first place

  [[nodiscard]] bool holds(UINT32 itemIndex) const { return itemIndex - firstItem < items; }

  // The record's body at a place in the file; null when it is not in the run.
  [[nodiscard]] const byte* recordAt(INT64 place) const {
    const auto ahead = static_cast<UINT64>(place - firstPlace);
    return ahead < static_cast<UINT64>(places) ? bytes + ahead : nullptr;
  }
};

}  // namespace gzd

#endif
