// Finds the recorded neighbour of a filled-in sample, and takes its kind over.
#include "read/dummy_samples.h"

#include "record/sample_decoder.h"
#include "record/sample_layout.h"

namespace gzd {

namespace {

bool is_recorded(const GZDItem& item) {
  return item.isSample() && !item.isDummy();
}

}  // namespace

// The nearest recorded sample before a dummy in its block, else after it; no_sample when there is
// none.
UINT32 DummySamples::recordedSampleNear(UINT32 itemIndex) {
  if (itemIndex >= model_.first && itemIndex <= model_.last) return model_.recorded;
  const UINT32 begin = stretches_.at(itemIndex).begin;
  for (UINT32 i = itemIndex; i > begin; --i) {
    if (i == model_.last) {
      model_.last = itemIndex;
      return model_.recorded;
    }
    if (is_recorded(index_.gzdItemList[i - 1])) {
      model_.first = i;
      model_.last = itemIndex;
      return i - 1;
    }
  }
  model_.first = begin;
  model_.last = itemIndex;
  return recordedSampleAfter(itemIndex);
}

UINT32 DummySamples::recordedSampleAfter(UINT32 itemIndex) {
  const UINT32 end = stretches_.at(itemIndex).end;
  for (UINT32 i = itemIndex + 1; i < end; ++i) {
    if (is_recorded(index_.gzdItemList[i])) return i;
  }
  return no_sample;
}

// Makes what all dummies modelled on one recorded sample have in common.
void DummySamples::makeModel(UINT32 recorded) {
  model_.recorded = recorded;
  model_.isMade = false;
  model_.dummy.clear();
  if (recorded == no_sample) {
    model_.tag = 0;
    make_dummy_sample(model_.tag, nullptr, model_.dummy);
  } else {
    Sample sample;
    model_.tag = readRecorded_(recorded, sample);
    make_dummy_sample(model_.tag, &sample, model_.dummy);
  }
  model_.isMade = true;
}

void DummySamples::make(UINT32 itemIndex, FSAMPLE& sample) {
  const UINT32 recorded = recordedSampleNear(itemIndex);
  if (!model_.isMade || recorded != model_.recorded) makeModel(recorded);
  sample = model_.dummy;
  sample.flags = flags_at(model_.tag, index_.gzdItemList.stampAt(itemIndex));
}

}  // namespace gzd
