// An entry of the index as it is handed out: where a record lies, what it is, when it happened. The
// index itself holds it in fewer bytes: see item_list.h.
#ifndef GZDAPI_GZDITEM_H
#define GZDAPI_GZDITEM_H

#include "gzd_data.h"
#include "record/Recording.h"
#include "record/event_fields.h"

namespace gzd {

// Places of entries that the reader made itself and that have no record on disk.
constexpr INT64 position_of_dummy = -1;
// No entry lies after this place.
constexpr INT64 largest_position = 0xFFFFFFFE;

enum ItemSide : UINT16 { SIDE_NONE = 0, SIDE_LEFT = 1, SIDE_RIGHT = 2 };

constexpr ItemSide side_of_event(int type, int eye) {
  if (!is_eye_event(type)) return SIDE_NONE;
  return eye == GZD_LEFT_EYE ? SIDE_LEFT : SIDE_RIGHT;
}

class GZDItem {
 public:
  // Bits of mDetailType_ above type and side. For samples they tell which eye is inside a blink,
  // for eye events what the repairs did to the entry.
  static constexpr UINT16 left_inside_blink = 0x1000;
  static constexpr UINT16 right_inside_blink = 0x2000;
  static constexpr UINT16 time_changed = 0x1000;
  static constexpr UINT16 blink_merged = 0x2000;
  static constexpr int mark_shift = 12;

  GZDItem() = default;
  GZDItem(INT64 position, int type, UINT16 side, UINT16 tag, UINT64 stamp)
      : placeInFile_(static_cast<UINT32>(position + 1)),
        mDetailType_(static_cast<UINT16>(type | side << 8)),
        lastTag_(tag),
        timeStamp_(stamp) {}
  explicit GZDItem(Recording* block)
      : placeInFile_(1), mDetailType_(GZD_RECORDING), lastTag_(0), recording_(block) {}

  // Of the record's body, just after its tag word; 0 for boundaries.
  [[nodiscard]] INT64 getFilePos() const { return INT64{placeInFile_} - 1; }
  // Of the record with its tag word; -1 for entries without one.
  [[nodiscard]] INT64 getRecordPlace() const {
    constexpr INT64 tag_bytes = sizeof(UINT16);
    return getFilePos() >= tag_bytes ? getFilePos() - tag_bytes : INT64{-1};
  }
  [[nodiscard]] int getItemType() const { return mDetailType_ & 0xFF; }
  [[nodiscard]] UINT16 getDetailedType() const { return mDetailType_; }
  // The tag word of an event's record. A sample's stands in front of its record.
  [[nodiscard]] UINT16 getLastTag() const { return lastTag_; }
  [[nodiscard]] UINT16 getSide() const { return (mDetailType_ >> 8) & 0x0F; }
  // The eye index of an eye event: GZD_LEFT_EYE or GZD_RIGHT_EYE.
  [[nodiscard]] int getEye() const {
    return getSide() == SIDE_RIGHT ? GZD_RIGHT_EYE : GZD_LEFT_EYE;
  }

  [[nodiscard]] Recording* getRecording() const { return isRecording() ? recording_ : nullptr; }
  [[nodiscard]] UINT64 getTimeStamp() const {
    if (!isRecording()) return timeStamp_;
    return recording_ != nullptr ? recording_->getTime() : 0;
  }
  void setTimeStamp(UINT64 stamp) { timeStamp_ = stamp; }
  // Moves an event in time and remembers that this was done.
  void setFixedTimeStamp(UINT64 stamp) {
    timeStamp_ = stamp;
    mDetailType_ |= time_changed;
  }
  // Marks a blink as merged or paired by a repair.
  void markBlinkMerged() { mDetailType_ |= blink_merged; }
  [[nodiscard]] bool isTimeChanged() const { return (mDetailType_ & time_changed) != 0; }
  [[nodiscard]] bool isBlinkMerged() const { return (mDetailType_ & blink_merged) != 0; }

  void markSampleInsideBlink(int eye) {
    mDetailType_ |= eye == GZD_LEFT_EYE ? left_inside_blink : right_inside_blink;
  }
  [[nodiscard]] bool isSampleInsideBlink(int eye) const {
    return (mDetailType_ & (eye == GZD_LEFT_EYE ? left_inside_blink : right_inside_blink)) != 0;
  }

  // The two bits above type and side.
  [[nodiscard]] unsigned getMarks() const { return mDetailType_ >> mark_shift & 3u; }

  [[nodiscard]] bool isSample() const { return getItemType() == GZD_SAMPLE; }
  [[nodiscard]] bool isRecording() const { return getItemType() == GZD_RECORDING; }
  [[nodiscard]] bool isRecordingStart() const {
    return isRecording() && recording_ != nullptr && recording_->isStart();
  }
  [[nodiscard]] bool isDummy() const { return placeInFile_ == 0; }
  [[nodiscard]] bool isEyeEvent() const { return is_eye_event(getItemType()); }
  [[nodiscard]] bool isStartEvent() const { return isEyeEvent() && !isEndEvent(); }
  [[nodiscard]] bool isEndEvent() const { return is_eye_event_end(getItemType()); }

 private:
  UINT32 placeInFile_ = 1;  // plus 1, so that position_of_dummy is 0
  UINT16 mDetailType_ = 0;
  UINT16 lastTag_ = 0;
  union {
    UINT64 timeStamp_ = 0;
    Recording* recording_;  // owned by the index
  };
};

static_assert(sizeof(GZDItem) == 16);

}  // namespace gzd

#endif
