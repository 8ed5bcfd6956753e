// Samples that the repairs have filled in where none was recorded: each is modelled on the recorded
// sample nearest to it, so that its line has its neighbours' columns.
#ifndef GZDAPI_DUMMY_SAMPLES_H
#define GZDAPI_DUMMY_SAMPLES_H

#include <functional>
#include <utility>

#include "index/index.h"
#include "read/stretches.h"
#include "record/Sample.h"

namespace gzd {

class DummySamples {
 public:
  // Reads the recorded sample of an entry, and returns the layout tag of its record.
  using RecordedSample = std::function<UINT16(UINT32 itemIndex, Sample& sample)>;

  // `items` and `stretchesOfItems` are borrowed.
  DummySamples(const Index& items, Stretches& stretchesOfItems, RecordedSample reader)
      : index_(items), stretches_(stretchesOfItems), readRecorded_(std::move(reader)) {}

  // To be called when the index has changed.
  void forget() { model_ = Model(); }

  // The sample of the dummy at `itemIndex`, but for its time.
  void make(UINT32 itemIndex, FSAMPLE& sample);

 private:
  static constexpr UINT32 no_sample = 0xFFFFFFFFu;

  struct Model {
    UINT32 first = no_sample;  // all dummies from here
    UINT32 last = 0;           // up to here have the same one
    UINT32 recorded = no_sample;
    bool isMade = false;
    UINT16 tag = 0;
    Sample dummy;  // but for its place in time
  };

  UINT32 recordedSampleNear(UINT32 itemIndex);
  UINT32 recordedSampleAfter(UINT32 itemIndex);
  void makeModel(UINT32 recorded);

  const Index& index_;
  Stretches& stretches_;
  RecordedSample readRecorded_;
  Model model_;
};

}  // namespace gzd

#endif
