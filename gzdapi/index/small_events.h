// Places in the file and tags of events, six bytes each: what of an event its word in the index
// does not hold. Type and side are told by the tag.
#ifndef GZDAPI_SMALL_EVENTS_H
#define GZDAPI_SMALL_EVENTS_H

#include <array>
#include <vector>

#include "index/GZDItem.h"
#include "record/event_fields.h"

namespace gzd {

class SmallEvents {
 public:
  [[nodiscard]] std::size_t size() const { return count_; }
  [[nodiscard]] UINT64 bytes() const { return sizeof(Event) * count_; }

  void add(INT64 position, UINT16 tag) {
    if (count_ % chunk_size == 0) chunks_.emplace_back().reserve(chunk_size);
    chunks_.back().push_back(made(position, tag));
    ++count_;
  }
  [[nodiscard]] GZDItem item(std::size_t number, UINT64 stamp, unsigned marks) const {
    return itemOf(chunks_[number / chunk_size][number % chunk_size], stamp, marks);
  }
  // Whether all of an entry but its stamp and its marks can be told by place and tag.
  [[nodiscard]] static bool canHold(const GZDItem& item) {
    if (item.isSample() || item.isRecording() || item.isDummy()) return false;
    const GZDItem held = itemOf(made(item.getFilePos(), item.getLastTag()), 0, item.getMarks());
    return held.getDetailedType() == item.getDetailedType();
  }

 private:
  static constexpr std::size_t chunk_size = 16384;

  struct Event {
    UINT16 positionHigh;
    UINT16 positionLow;
    UINT16 tag;
  };
  static_assert(sizeof(Event) == 6);

  static Event made(INT64 position, UINT16 tag) {
    return {static_cast<UINT16>(position >> 16), static_cast<UINT16>(position), tag};
  }
  static GZDItem itemOf(Event event, UINT64 stamp, unsigned marks) {
    const INT64 position = INT64{event.positionHigh} << 16 | event.positionLow;
    const unsigned type = detailed_types[event.tag >> 8] | marks << GZDItem::mark_shift;
    return {position, static_cast<int>(type), SIDE_NONE, event.tag, stamp};
  }

  // By the upper byte of a tag.
  static constexpr std::array<UINT16, 256> detailed_types = [] {
    std::array<UINT16, 256> types{};
    for (unsigned high = 0; high < types.size(); ++high) {
      const int type = static_cast<int>(high & tag_type_mask);
      const bool isRight = (high & tag_eye_mask) == tag_eye_right;
      const unsigned side = side_of_event(type, isRight ? GZD_RIGHT_EYE : GZD_LEFT_EYE);
      types[high] = static_cast<UINT16>(static_cast<unsigned>(type) | side << 8);
    }
    return types;
  }();

  std::vector<std::vector<Event>> chunks_;  // grow without being copied
  std::size_t count_ = 0;
};

}  // namespace gzd

#endif
