// Gaze of many samples at a time, value by value in columns.
#ifndef GZDAPI_GAZE_COLUMNS_H
#define GZDAPI_GAZE_COLUMNS_H

#include "index/item_list.h"
#include "read/sample_run.h"
#include "record/sample_layout.h"

namespace gzd {

// A decoded sample as a row of the columns.
void copy_gaze(const FSAMPLE& sample, UINT32 row, const GZD_GAZE_COLUMNS& to);

// Decodes the samples among the entries from `first` up to `end` into the columns, up to the first
// entry that has no record among `places` with this layout. The layout has the usual values and no
// blocks. Returns how many.
UINT32 fetch_usual_gaze(const ItemList& items, UINT32 first, UINT32 end, const RecordPlaces& places,
                        const SampleLayout& layout, const GZD_GAZE_COLUMNS& to);

}  // namespace gzd

#endif
