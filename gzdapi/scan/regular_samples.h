// Samples like the one before them, at the regular distance: the scan indexes them many at a time.
#ifndef GZDAPI_REGULAR_SAMPLES_H
#define GZDAPI_REGULAR_SAMPLES_H

#include "index/item_list.h"
#include "record/sample_blocks.h"
#include "record/sample_layout.h"

namespace gzd {

// What the samples are to be like, and where they stand.
struct RegularSamples {
  SampleLayout layout;
  BlockChain blocks;   // behind each fixed part of a layout that has them
  const byte* record;  // the tag of the first one
  const byte* last;    // behind a tag up to here the longest record is whole in memory
  INT64 position;      // of `record` in the file
  UINT32 time;         // of the sample before
  UINT64 stamp;        // of the sample before
  UINT64 largestStep;  // from one stamp to the next
};

// What was found.
struct RegularRun {
  const byte* end;     // past the last record
  const byte* newest;  // the body of the last record; null when there was none
  UINT32 time;         // of the newest sample
  UINT32 timeBefore;   // of the one before it
  bool hasNegativePupil;
  bool hasInput;
};

// Reads samples as long as they have the layout and the blocks, and their stamps rise, by no more
// than the largest step. Each gets an entry in `items`, unless that is null.
RegularRun read_regular_samples(const RegularSamples& expected, ItemList* items);

}  // namespace gzd

#endif
