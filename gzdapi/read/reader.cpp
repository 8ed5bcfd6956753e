// A record is decoded anew each time it is asked for, with the parameters of the block it stands
// in. Samples whose velocities are wanted come through the sample queue, which reads ahead; others
// are decoded straight into the record, whose presets stay from one sample to the next. After such
// a sample begins a run: where its like lie in the stream's window, block and parameters are known.
#include "read/reader.h"

#include <algorithm>
#include <limits>
#include <string>

#include "base/config.h"
#include "base/log.h"
#include "read/gaze_columns.h"
#include "record/event_decoder.h"
#include "record/record_stream.h"
#include "record/sample_decoder.h"

namespace gzd {

namespace {

constexpr int largest_lstring_length = 32767;

}  // namespace

Reader::Reader(InputStream& stream, const StreamState& streamState, const Index& items)
    : file_(stream),
      state_(streamState),
      index_(items),
      queue_(items, *this),
      stretches_(items),
      dummies_(items, stretches_, [this](UINT32 recorded, Sample& sample) {
        readQueueSample(recorded, sample);
        return layout_tag(goToSample(index_.gzdItemList[recorded]));
      }) {}

void Reader::indexIsFinal(bool pairEvents) {
  timesFollowRepairs_ = pairEvents;
  pairing_ = pairEvents ? EventPairing::build(index_) : EventPairing();
  startAnew();
}

void Reader::startAnew() {
  stretches_.forget();
  leaveRun();
  dummies_.forget();
  queue_.clear();
}

ALLF_DATA* Reader::getFloatData(UINT32 itemIndex, bool reports) {
  state_.reportsUnknownFields = reports;
  if (itemIndex >= index_.size() || failed_) return nullptr;
  try {
    const GZDItem item = index_.gzdItemList[itemIndex];
    if (item.isSample()) {
      leaveRun();  // the window may be about to move
      readSample(itemIndex, item);
      return &fData_;
    }
    if (readOther(itemIndex, item) == 0) return &other_;
    print_log("Read error \n");
  } catch (const GZDException& error) {
    leaveRun();
    failed_ = true;
    log_error(error);
  }
  return nullptr;
}

std::string_view Reader::messageText(UINT32 itemIndex, bool reports) {
  if (itemIndex >= index_.size() ||
      !is_known_event_type(index_.gzdItemList[itemIndex].getItemType())) {
    return {};
  }
  const ALLF_DATA* record = getFloatData(itemIndex, reports);
  return record != nullptr ? text_of(record->fe.message) : std::string_view();
}

// A run goes on behind an entry that is no sample unless reading it has moved the window.
int Reader::readOther(UINT32 itemIndex, const GZDItem& item) {
  otherType_ = item.getItemType();
  if (item.isRecording() && item.getRecording() != nullptr) {
    other_.rec = *item.getRecording();
    return 0;
  }
  if (is_known_event_type(otherType_)) {
    const InputStream::HeldBytes window = file_.held();
    readEvent(itemIndex, item);
    if (file_.held() != window) leaveRun();
    return 0;
  }
  other_ = ALLF_DATA{};
  return -1;
}

void Reader::enterEpochOf(INT64 position) {
  const auto& epochs = index_.parameterEpochs;
  const auto next =
      std::upper_bound(epochs.begin(), epochs.end(), position,
                       [](INT64 place, const ParameterEpoch& e) { return place < e.filePos; });
  epochBegin_ = next == epochs.begin() ? 0 : (next - 1)->filePos;
  epochEnd_ = next == epochs.end() ? std::numeric_limits<INT64>::max() : next->filePos;
  state_.parameters = (next == epochs.begin() ? next : next - 1)->parameters;
  layout_ = SampleLayout();
  leaveRun();
}

// Goes to a place in a record, with the parameters of its block in force.
void Reader::goTo(INT64 position) {
  if (!isInEpoch(position)) enterEpochOf(position);
  file_.moveTo(position);
}

// Goes to the body of a recorded sample and returns its tag word, which stands in front of it.
UINT16 Reader::goToSample(const GZDItem& item) {
  goTo(item.getFilePos() - static_cast<INT64>(sizeof(UINT16)));
  const byte* const tag = file_.peek(sizeof(UINT16));
  if (tag == nullptr) return static_cast<UINT16>(file_.getWord());
  file_.take(sizeof(UINT16));
  return load_be16(tag);
}

const SampleLayout& Reader::layoutFor(UINT16 tag) {
  if (!layout_.suits(tag)) layout_ = layout_of(tag, state_);
  return layout_;
}

// ---- samples ------------------------------------------------------------------------------------

void Reader::readSample(UINT32 itemIndex, GZDItem item) {
  const Recording* const block = stretches_.at(itemIndex).block;
  const bool usesQueue = velocityKinds_ != GZD_VELOCITY_NONE;
  const bool hasVelocities =
      usesQueue && block != nullptr && static_cast<int>(block->sample_rate) > 0;
  // Velocities of the sample before are not to stay.
  if (usesQueue && !hasVelocities) presetTag_ = 0;
  // Also without a block: what the queue holds decides about velocities to come.
  int slot = usesQueue ? queue_.getSample(itemIndex) : -1;
  if (!readLikeTheOneBefore(item) && !readSampleDirectly(item)) {
    if (!usesQueue) slot = queue_.getSample(itemIndex);
    readWithQueue(itemIndex, slot);
  }
  if (hasVelocities) setVelocities(itemIndex, slot, *block);
  if (block == nullptr) {
    print_log("WARNING: GZD FILE MAY BE CORRUPTED. Samples %ld found without start recording \n",
              static_cast<long>(fData_.fs.time));
  }
  const bool mayBegin = presetTag_ != 0 && block != nullptr && usesQueue == hasVelocities;
  if (mayBegin && layout_.tag == presetTag_) beginRun(stretches_.at(itemIndex), hasVelocities);
}

// Nearly every sample has the tag of the one before, and lies whole in the window. Returns false,
// and does nothing, for any other.
bool Reader::readLikeTheOneBefore(GZDItem item) {
  const byte* const record = recordAsPreset(item, presetTag_);
  if (record == nullptr) return false;
  setPlaceInTime(load_be16(record), item.getTimeStamp());
  decode_fixed_part_quickly(record + sizeof(UINT16), layout_, fData_.fs);
  return true;
}

// Those of the epoch in force.
RecordPlaces Reader::placesInWindow(std::size_t longestRecord) const {
  const InputStream::HeldBytes held = file_.held();
  const INT64 first = std::max(held.offset + INT64{sizeof(UINT16)}, epochBegin_);
  const INT64 end =
      std::min(held.offset + held.length - static_cast<INT64>(longestRecord) + 1, epochEnd_);
  if (end <= first) return {};
  return {first, end - first, held.bytes + (first - held.offset)};
}

bool Reader::enterSpan(UINT32 itemIndex) noexcept {
  if (!run_.holds(itemIndex) || index_.gzdItemList.isLandmarkNearby(itemIndex)) return false;
  span_ = index_.gzdItemList.spanFrom(itemIndex);
  return span_.holds(itemIndex);
}

// Makes the run that of the sample just read: its stretch, as far as window and epoch go.
void Reader::beginRun(const Stretch& stretch, bool hasVelocities) {
  if (layout_.hasBlocks && !blocks_.isKnown()) return;
  run_.firstItem = stretch.begin;
  run_.items = stretch.end - stretch.begin;
  run_.places = placesInWindow(longest_fixed_part + (layout_.hasBlocks ? blocks_.length() : 0));
  run_.isUsual = layout_.isUsual && !hasVelocities;
  run_.sampleRate = hasVelocities ? static_cast<int>(stretch.block->sample_rate) : 0;
}

// The sample of a run with another layout than the usual one, or with velocities. Null when its
// blocks are not those of the one before it, or its velocities are not at hand.
ALLF_DATA* Reader::unusualSampleInRun(UINT32 itemIndex, const byte* body, UINT16 tag,
                                      UINT64 stamp) noexcept {
  const byte* const chain = body + length_with_head_data(body, layout_);
  if (layout_.hasBlocks && !blocks_.isAt(chain)) return nullptr;
  const bool hasVelocities = run_.sampleRate > 0;
  if (hasVelocities && !queue_.stepTo(itemIndex, tag, velocitySettings(run_.sampleRate)))
    return nullptr;
  setPlaceInTime(tag, stamp);
  decode_fixed_part_quickly(body, layout_, fData_.fs);
  if (layout_.hasBlocks) blocks_.decode(chain, state_.parameters, fData_.fs);
  if (hasVelocities) queue_.copyVelocities(fData_.fs);
  return &fData_;
}

UINT32 Reader::gazeInRun(UINT32 itemIndex, UINT32 most, const GZD_GAZE_COLUMNS& to) noexcept {
  if (!run_.holds(itemIndex)) return 0;
  const UINT32 end = itemIndex + std::min(most, run_.firstItem + run_.items - itemIndex);
  if (layout_.hasUsualValues && !layout_.hasBlocks && run_.sampleRate == 0)
    return fetch_usual_gaze(index_.gzdItemList, itemIndex, end, run_.places, layout_, to);
  UINT32 place = itemIndex;
  for (; place < end && sampleInRun(place) != nullptr; ++place)
    copy_gaze(fData_.fs, place - itemIndex, to);
  return place - itemIndex;
}

// Returns false, and leaves it to the queue, for a sample that the reader made itself, and for one
// without pupil sizes: it takes over those of the sample before it, which the queue knows.
bool Reader::readSampleDirectly(GZDItem item) {
  if (item.isDummy()) return false;
  const UINT16 tag = goToSample(item);
  if ((tag & SMP_PUPIL_SIZE) == 0) return false;
  const UINT64 stamp = item.getTimeStamp();
  const UINT32 time = time_of_stamp(stamp);
  presetTag_ = 0;
  preset_sample(tag, fData_.fs);
  decode_into_preset_sample(file_, state_, layoutFor(tag), time, fData_.fs);
  presetTag_ = layout_tag(tag);
  if (layout_.hasBlocks) blocks_ = blocks_of_record(file_, item.getFilePos(), layout_);
  setPlaceInTime(tag, stamp);
  return true;
}

// `slot` holds the entry's sample, or that of another entry with its stamp; negative for none. The
// record's own values count all the same.
void Reader::readWithQueue(UINT32 itemIndex, int slot) {
  presetTag_ = 0;
  Sample own;
  readQueueSample(itemIndex, own);
  if ((own.flags & SMP_PUPIL_SIZE) == 0 && slot >= 0) {
    std::copy_n(queue_.pupilSizes(slot), 2, own.pa);
  }
  fData_.fs = own;
}

void Reader::setVelocities(UINT32 itemIndex, int slot, const Recording& block) {
  const bool isQueued = slot >= 0 && queue_.entry(slot) == itemIndex;
  queue_.setVelocity(fData_.fs, index_.gzdItemList.stampAt(itemIndex), isQueued ? slot : -1,
                     velocitySettings(static_cast<int>(block.sample_rate)));
}

VelocitySettings Reader::velocitySettings(int sampleRate) const {
  const CONFIG& config = default_config();
  return {velocityKinds_, config.default_rx, config.default_ry, sampleRate, state_.ovilo_revision};
}

void Reader::readQueueSampleAnew(const GZDItem& item, Sample& sample) {
  const UINT16 tag = goToSample(item);
  const UINT16 preset = layout_tag(tag);
  if (sample.presetFor != preset) {
    if (preset != queuePresetTag_) preset_sample(tag, queuePreset_);
    queuePresetTag_ = preset;
    static_cast<FSAMPLE&>(sample) = queuePreset_;
  }
  sample.presetFor = (tag & SMP_EXTENDED) == 0 ? preset : UINT16{0};
  decode_into_preset_sample(file_, state_, layoutFor(tag), time_of_stamp(item.getTimeStamp()),
                            sample);
  sample.flags = flags_at(tag, item.getTimeStamp());
}

void Reader::readQueueSample(UINT32 itemIndex, Sample& sample) {
  const GZDItem item = index_.gzdItemList[itemIndex];
  if (const byte* const record = recordAsPreset(item, sample.presetFor)) {
    decode_fixed_part_quickly(record + sizeof(UINT16), layout_, sample);
    sample.flags = flags_at(load_be16(record), item.getTimeStamp());
  } else if (item.isDummy()) {
    sample.presetFor = 0;
    dummies_.make(itemIndex, sample);
  } else {
    readQueueSampleAnew(item, sample);
  }
  sample.updateTimeStamp(item.getTimeStamp());
}

PlainRecords Reader::recordsLike(const Sample& sample) {
  if (sample.presetFor == 0 || sample.presetFor != layout_.tag || layout_.hasBlocks) return {};
  return {placesInWindow(longest_fixed_part), &layout_};
}

int Reader::stampsPerSampleAt(UINT32 itemIndex) {
  const Recording* const block = stretches_.at(itemIndex).block;
  return block != nullptr ? stamps_per_sample(block->sample_rate) : 0;
}

// ---- events -------------------------------------------------------------------------------------

void Reader::decodeEvent(const GZDItem& item, MessageText& target, FEVENT& event) {
  goTo(item.getFilePos());
  const int result = decode_event(file_, state_, item.getLastTag(), target, event);
  if (result < 0) {
    print_log("error reading gzd file 4   %d %ld\n", result, static_cast<long>(item.getFilePos()));
    throw GZDException("Error reading event - type(readItem)");
  }
}

void Reader::readEvent(UINT32 itemIndex, GZDItem item) {
  if (item.isDummy()) {
    readInsertedEvent(item);
  } else {
    decodeEvent(item, lstring_buffer_, other_.fe);
    EData::process_event(other_.fe);
    const bool hasText = other_.fe.message != nullptr;
    if (hasText && piece_of_message(text_of(other_.fe.message)) == MessagePiece::First)
      assembleLongMessage(item);
  }
  if (timesFollowRepairs_) pairing_.apply(itemIndex, item, other_.fe);
}

// A start of blink that the repairs have added.
void Reader::readInsertedEvent(const GZDItem& item) {
  other_.fe = FEVENT{};
  other_.fe.type = GZD_START_BLINK;
  other_.fe.sttime = other_.fe.entime = time_of_stamp(item.getTimeStamp());
  other_.fe.eye = static_cast<INT16>(item.getEye());
}

void Reader::assembleLongMessage(const GZDItem& item) {
  std::string text = without_marker(text_of(other_.fe.message));
  const auto group = index_.msg_item_list.find(item.getFilePos());
  if (group != index_.msg_item_list.end()) {
    for (const GZDItem& piece : group->second) {
      if (text.size() > long_message_limit) {
        print_log("Long message is longer than 65536 characters.  Truncating it to %d \n",
                  static_cast<int>(text.size()));
        break;
      }
      FEVENT event;
      decodeEvent(piece, lstring_buffer_, event);
      text += without_marker(text_of(event.message));
    }
  }
  if (!longText_) longText_ = std::make_unique<LongText>();
  longText_->len = static_cast<INT16>(std::min(text.size(), std::size_t{largest_lstring_length}));
  text.copy(longText_->text.data(), longText_->text.size() - 1);
  longText_->text[std::min(text.size(), longText_->text.size() - 1)] = '\0';
  other_.fe.message = reinterpret_cast<LSTRING*>(longText_.get());
}

}  // namespace gzd
