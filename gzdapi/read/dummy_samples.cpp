#include "read/dummy_samples.h"

#include "record/sample_decoder.h"
#include "record/sample_layout.h"

namespace gzd {

namespace {

bool is_recorded(const GZDItem& item) {
  return item.isSample() && !item.isDummy();
}

}  // namespace

// The nearest recorded sample before a dummy in its block, else after it; NONE when there is none.
UINT32 DummySamples::recordedSampleNear(UINT32 itemIndex) {
  if (itemIndex >= model.first && itemIndex <= model.last) return model.recorded;
  const UINT32 begin = stretches.at(itemIndex).begin;
  for (UINT32 i = itemIndex; i > begin; --i) {
    if (i == model.last) {
      model.last = itemIndex;
      return model.recorded;
    }
    if (is_recorded(index.gzdItemList[i - 1])) {
      model.first = i;
      model.last = itemIndex;
      return i - 1;
    }
  }
  model.first = begin;
  model.last = itemIndex;
  return recordedSampleAfter(itemIndex);
}

UINT32 DummySamples::recordedSampleAfter(UINT32 itemIndex) {
  const UINT32 end = stretches.at(itemIndex).end;
  for (UINT32 i = itemIndex + 1; i < end; ++i) {
    if (is_recorded(index.gzdItemList[i])) return i;
  }
  return no_sample;
}

// Makes what all dummies modelled on one recorded sample have in common.
void DummySamples::makeModel(UINT32 recorded) {
  model.recorded = recorded;
  model.isMade = false;
  model.dummy.clear();
  if (recorded == no_sample) {
    model.tag = 0;
    make_dummy_sample(model.tag, nullptr, model.dummy);
  } else {
    Sample sample;
    model.tag = readRecorded(recorded, sample);
    make_dummy_sample(model.tag, &sample, model.dummy);
  }
  model.isMade = true;
}

void DummySamples::make(UINT32 itemIndex, FSAMPLE& sample) {
  const UINT32 recorded = recordedSampleNear(itemIndex);
  if (!model.isMade || recorded != model.recorded) makeModel(recorded);
  sample = model.dummy;
  sample.flags = flags_at(model.tag, index.gzdItemList.stampAt(itemIndex));
}

}  // namespace gzd
