// Where samples like the one read last need no more than to be decoded: entries of a block, with
// records whole in the stream's window.
#ifndef GZDAPI_SAMPLE_RUN_H
#define GZDAPI_SAMPLE_RUN_H

#include "gzd_data.h"

namespace gzd {

// Places in the file at which records would lie whole in memory, their tags too.
struct RecordPlaces {
  INT64 first = 0;
  INT64 count = 0;
  const byte* bytes = nullptr;  // at the first place

  // The record's body at a place in the file; null when it is none of them.
  [[nodiscard]] const byte* recordAt(INT64 place) const {
    const auto ahead = static_cast<UINT64>(place - first);
    return ahead < static_cast<UINT64>(count) ? bytes + ahead : nullptr;
  }
};

struct SampleRun {
  UINT32 firstItem = 0;
  UINT32 items = 0;
  RecordPlaces places;
  bool isUsual = false;  // the layout, and nobody wants velocities
  int sampleRate = 0;    // of the velocities wanted; 0 for none

  [[nodiscard]] bool holds(UINT32 itemIndex) const { return itemIndex - firstItem < items; }
};

}  // namespace gzd

#endif
