// Turns entries of the index into the records that are handed out.
#ifndef GZDAPI_READER_H
#define GZDAPI_READER_H

#include <array>
#include <memory>
#include <string_view>
#include <vector>

#include "index/index.h"
#include "read/SampleQueue.h"
#include "read/dummy_samples.h"
#include "read/sample_run.h"
#include "read/stretches.h"
#include "record/EData.h"
#include "record/sample_blocks.h"
#include "record/sample_layout.h"
#include "record/stream_state.h"
#include "repair/event_pairing.h"
#include "scan/long_message.h"
#include "stream/MVIO.h"

namespace gzd {

class Reader : public SampleSource {
 public:
  // `stream` and `items` are borrowed; `state` tells format and options, its parameters come from
  // the index.
  Reader(InputStream& stream, const StreamState& streamState, const Index& items);

  // Takes over what the scan found; its parameters do not matter.
  void useState(const StreamState& scanned) { state_ = scanned; }
  // To be called when the index has its final order. With `pairEvents` the times of eye events
  // follow the repairs.
  void indexIsFinal(bool pairEvents);
  // Forgets what was read: what comes next is read as if it were the first.
  void startAnew();

  // The record of the entry at `itemIndex`, valid until the next call; null, logged, for an entry
  // that cannot be read. `reports`: fields of an event that are not known go to the console.
  ALLF_DATA* getFloatData(UINT32 itemIndex, bool reports = true);
  // The same of nearly every sample after another one, quickly; null, with nothing done, for
  // any other entry.
  ALLF_DATA* sampleInRun(UINT32 itemIndex) noexcept {
    if (!span_.holds(itemIndex) && !enterSpan(itemIndex)) return nullptr;
    const auto [position, stamp] = span_.at(itemIndex);
    const byte* const body = run_.places.recordAt(position);
    if (body == nullptr) return nullptr;
    const UINT16 tag = load_be16(body - sizeof(UINT16));
    if (!layout_.suits(tag)) return nullptr;
    if (!run_.isUsual) return unusualSampleInRun(itemIndex, body, tag, stamp);
    setPlaceInTime(tag, stamp);
    decode_usual_part(body, layout_, fData_.fs);
    return &fData_;
  }
  // The gaze of samples from the entry on, as far as they are in the run. Returns how many, at most
  // `most`.
  UINT32 gazeInRun(UINT32 itemIndex, UINT32 most, const GZD_GAZE_COLUMNS& to) noexcept;
  // The message text of an entry, up to its first NUL; empty when it has none.
  std::string_view messageText(UINT32 itemIndex, bool reports = true);

  // Whether a record could not be read again. The file has changed since the scan, or fails: none
  // is read from then on.
  [[nodiscard]] bool hasFailed() const { return failed_; }

  // The code of the entry whose record this is; 0 for a record that was handed out by nobody.
  [[nodiscard]] int kindOfRecord(const ALLF_DATA* record) const {
    if (record == &fData_) return GZD_SAMPLE;
    return record == &other_ ? otherType_ : 0;
  }

  void setVelocityKinds(unsigned kinds) {
    velocityKinds_ = kinds & GZD_VELOCITY_ALL;
    presetTag_ = 0;
    leaveRun();
  }

  void readQueueSample(UINT32 itemIndex, Sample& sample) override;
  PlainRecords recordsLike(const Sample& sample) override;
  int stampsPerSampleAt(UINT32 itemIndex) override;

 private:
  void leaveRun() {
    run_ = SampleRun();
    span_ = ItemList::Span();
  }
  int readOther(UINT32 itemIndex, const GZDItem& item);
  bool readLikeTheOneBefore(GZDItem item);
  void setPlaceInTime(UINT16 tag, UINT64 stamp) {
    fData_.fs.time = time_of_stamp(stamp);
    fData_.fs.flags = flags_at(tag, stamp);
  }
  [[nodiscard]] RecordPlaces placesInWindow(std::size_t longestRecord) const;
  bool enterSpan(UINT32 itemIndex) noexcept;
  void beginRun(const Stretch& stretch, bool hasVelocities);
  ALLF_DATA* unusualSampleInRun(UINT32 itemIndex, const byte* body, UINT16 tag,
                                UINT64 stamp) noexcept;
  [[nodiscard]] VelocitySettings velocitySettings(int sampleRate) const;
  void readSample(UINT32 itemIndex, GZDItem item);
  bool readSampleDirectly(GZDItem item);
  // The record of a sample, from its tag on, when it can be decoded where it lies into a sample
  // preset for the layout tag `presetFor`, with the layout used last; else null.
  [[nodiscard]] const byte* recordAsPreset(const GZDItem& item, UINT16 presetFor) const {
    constexpr std::size_t longest_record = sizeof(UINT16) + longest_fixed_part;
    const INT64 place = item.getFilePos() - static_cast<INT64>(sizeof(UINT16));
    if (layout_.tag != presetFor || layout_.hasBlocks || !isInEpoch(place)) return nullptr;
    const byte* const record = file_.inWindow(place, longest_record);
    return record != nullptr && layout_.suits(load_be16(record)) ? record : nullptr;
  }
  void readQueueSampleAnew(const GZDItem& item, Sample& sample);
  void readWithQueue(UINT32 itemIndex, int slot);
  void setVelocities(UINT32 itemIndex, int slot, const Recording& block);
  void readEvent(UINT32 itemIndex, GZDItem item);
  void readInsertedEvent(const GZDItem& item);
  void assembleLongMessage(const GZDItem& item);
  void decodeEvent(const GZDItem& item, MessageText& target, FEVENT& event);

  [[nodiscard]] bool isInEpoch(INT64 position) const {
    return position >= epochBegin_ && position < epochEnd_;
  }
  void enterEpochOf(INT64 position);
  void goTo(INT64 position);
  UINT16 goToSample(const GZDItem& item);
  const SampleLayout& layoutFor(UINT16 tag);

  InputStream& file_;
  StreamState state_;
  const Index& index_;
  bool timesFollowRepairs_ = false;
  EventPairing pairing_;
  SampleQueue queue_;
  Stretches stretches_;
  DummySamples dummies_;
  unsigned velocityKinds_ = GZD_VELOCITY_ALL;

  // Between these places the parameters in force hold.
  INT64 epochBegin_ = 0;
  INT64 epochEnd_ = -1;

  // The samples' record stays while events are read: nearly each is like the one before.
  ALLF_DATA fData_{};
  ALLF_DATA other_{};
  int otherType_ = 0;  // the code of the latter; 0 before the first
  bool failed_ = false;
  UINT16 presetTag_ = 0;  // fData is a sample preset for this layout tag; 0 when it is not
  BlockChain blocks_;     // and for these blocks, when its layout has some
  SampleRun run_;
  ItemList::Span span_;    // of samples of the run
  SampleLayout layout_;    // of the tag used last, in this epoch; tag 0 for none
  FSAMPLE queuePreset_{};  // a sample preset for queuePresetTag
  UINT16 queuePresetTag_ = 0;
  MessageText lstring_buffer_;
  // A long message, laid out as an LSTRING; made when the first one is met.
  struct LongText {
    INT16 len;
    std::array<char, long_message_capacity> text;
  };
  std::unique_ptr<LongText> longText_;
};

}  // namespace gzd

#endif
