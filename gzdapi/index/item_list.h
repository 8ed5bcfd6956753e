// The entries of the index, in order.
//
// Nearly all are samples, so a sample's entry is one word of 8 bytes: whether either eye is inside
// a blink, its place in the file, and its stamp above a base that suits the file. An event's word
// holds its stamp, its marks and a number, under which SmallEvents keeps place and tag: 14 bytes in
// all. An entry that does not fit (a boundary, an inserted event, a stamp far
// from the others) lies whole in a list of its own, and its word tells where. Entries are handed
// out by value.
//
// The list knows its landmarks, the entries that are no samples, by one bit an entry: few, so that
// what concerns them alone need not touch the whole list.
#ifndef GZDAPI_ITEM_LIST_H
#define GZDAPI_ITEM_LIST_H

#include <algorithm>
#include <bit>
#include <cstddef>
#include <deque>
#include <iterator>
#include <vector>

#include "index/GZDItem.h"
#include "index/small_events.h"

namespace gzd {

// An entry that is no sample: its place in the list.
struct Landmark {
  UINT32 place;
};

class ItemList {
 public:
  // An entry as its list keeps it. It may be moved about in that list.
  struct Packed {
    UINT64 word;
  };

  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = GZDItem;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = GZDItem;

    Iterator(const ItemList& owner, std::size_t start) : list_(&owner), place_(start) {}
    GZDItem operator*() const { return (*list_)[place_]; }
    Iterator& operator++() {
      ++place_;
      return *this;
    }
    Iterator operator++(int) { return {*list_, place_++}; }
    bool operator==(const Iterator& other) const { return place_ == other.place_; }

   private:
    const ItemList* list_;
    std::size_t place_;
  };

  // The landmarks, ascending.
  class Landmarks {
   public:
    class Iterator {
     public:
      using iterator_category = std::input_iterator_tag;
      using value_type = Landmark;
      using difference_type = std::ptrdiff_t;
      using pointer = void;
      using reference = Landmark;

      Iterator(const ItemList& owner, std::size_t from)
          : list_(&owner), place_(owner.nextLandmark(from, owner.size())) {}
      Landmark operator*() const { return {static_cast<UINT32>(place_)}; }
      Iterator& operator++() { return *this = {*list_, place_ + 1}; }
      bool operator==(const Iterator& other) const { return place_ == other.place_; }

     private:
      const ItemList* list_;
      std::size_t place_;
    };

    explicit Landmarks(const ItemList& owner) : list_(owner) {}
    [[nodiscard]] Iterator begin() const { return {list_, 0}; }
    [[nodiscard]] Iterator end() const { return {list_, list_.size()}; }

   private:
    const ItemList& list_;
  };

  [[nodiscard]] std::size_t size() const { return entries_.size(); }
  // Of memory that the entries take.
  [[nodiscard]] UINT64 bytes() const {
    return sizeof(Packed) * entries_.size() + events_.bytes() + sizeof(GZDItem) * others_.size();
  }
  [[nodiscard]] bool empty() const { return entries_.empty(); }
  [[nodiscard]] std::size_t capacity() const { return entries_.capacity(); }
  // Makes room for `count` entries in all.
  void reserve(std::size_t count) { entries_.reserve(count); }
  [[nodiscard]] Iterator begin() const { return {*this, 0}; }
  [[nodiscard]] Iterator end() const { return {*this, size()}; }

  [[nodiscard]] GZDItem operator[](std::size_t place) const { return unpack(entries_[place]); }
  [[nodiscard]] UINT64 stampAt(std::size_t place) const {
    const Packed entry = entries_[place];
    if (isPlain(entry)) return stampOf(entry);
    return isEvent(entry) ? eventStampOf(entry) : otherOf(entry).getTimeStamp();
  }
  [[nodiscard]] bool isSampleAt(std::size_t place) const {
    const Packed entry = entries_[place];
    return isPlain(entry) || (!isEvent(entry) && otherOf(entry).isSample());
  }

  // Whether the entry is a sample that fits into a word: nearly every one.
  [[nodiscard]] bool isPlainAt(std::size_t place) const { return isPlain(entries_[place]); }

  void push_back(const GZDItem& item);
  // A recorded sample outside blinks.
  void addSample(INT64 position, UINT64 stamp) {
    if (fits(position, stamp)) {
      entries_.push_back(plain(position, stamp));
      noteStamp(stamp);
    } else {
      push_back({position, GZD_SAMPLE, SIDE_NONE, 0, stamp});
    }
  }
  // Puts what `change` makes of the entry in its place.
  template <class Change>
  void change(std::size_t place, Change change) {
    GZDItem item = (*this)[place];
    change(item);
    set(place, item);
  }

  // ---- landmarks --------------------------------------------------------------------------------
  // They stay until entries are added, moved or removed.
  [[nodiscard]] Landmarks landmarks() const {
    if (!marksKnown_) findLandmarks();
    return Landmarks(*this);
  }
  // A landmark's entry.
  [[nodiscard]] GZDItem operator[](Landmark mark) const { return (*this)[mark.place]; }
  // The first landmark from a place on, `end` when there is none before that place. Only while
  // landmarks() would have nothing to find.
  [[nodiscard]] std::size_t nextLandmark(std::size_t place, std::size_t end) const {
    const std::size_t number = place / word_bits;
    if (place >= end || number >= marks_.size()) return end;
    const UINT64 word = marks_[number] >> place % word_bits;
    return word != 0 ? std::min(place + firstBit(word), end) : landmarkBehindWord(number, end);
  }
  // Whether the stamps of the samples rise from each to the next. False also when one of them did
  // not fit into a word.
  [[nodiscard]] bool samplesRise() const {
    if (!marksKnown_) findLandmarks();
    return rising_;
  }

  // Moves the entry at `from` back to `to`, before those that stood there. The landmarks are to be
  // known, and are so afterwards.
  void moveBack(std::size_t from, std::size_t to);
  // To be called when entries were added, moved or removed as they are kept.
  void changed() { marksKnown_ = false; }
  // To be called when the entries from `first` up to `last` were given another order.
  void orderChanged(std::size_t first, std::size_t last);

  // ---- entries as they are kept -----------------------------------------------------------------
  [[nodiscard]] GZDItem unpack(Packed entry) const {
    if (!isPlain(entry)) return isEvent(entry) ? unpackEvent(entry) : otherOf(entry);
    GZDItem item(positionOf(entry), GZD_SAMPLE, SIDE_NONE, 0, stampOf(entry));
    if ((entry.word & in_left_blink) != 0) item.markSampleInsideBlink(GZD_LEFT_EYE);
    if ((entry.word & in_right_blink) != 0) item.markSampleInsideBlink(GZD_RIGHT_EYE);
    return item;
  }
  // Keeps a new entry, which is not yet in the list.
  [[nodiscard]] Packed pack(const GZDItem& item);
  [[nodiscard]] std::vector<Packed>& packed() { return entries_; }
  [[nodiscard]] const std::vector<Packed>& packed() const { return entries_; }

 private:
  // The word of an entry, its highest bit on the left; stamps are half-milliseconds:
  //
  //   63             34 33                        3  2  1  0
  //  +-----------------+---------------------------+--+--+--+
  //  | stamp less base | place in the file plus 1  | R| L| 0|  sample; place 0: filled in
  //  +-----------------+---------------------------+--+--+--+
  //   63             34 33                     4 3 2  1  0
  //  +-----------------+------------------------+-----+--+--+
  //  | stamp less base | number of the event    |marks| 0| 1|  event or message, see SmallEvents
  //  +-----------------+------------------------+-----+--+--+
  //   63                                           2  1  0
  //  +------------------------------------------------+--+--+
  //  | number of the entry in `others_`               | 1| 1|  what fits into neither
  //  +------------------------------------------------+--+--+
  //
  // L and R: the left and the right eye is inside a blink. marks: as in GZDItem, from mark_shift
  // on. Samples and events have a base each.
  static constexpr UINT64 no_sample_bit = 1;
  static constexpr UINT64 no_event_bit = 2;
  static constexpr UINT64 in_left_blink = 2;
  static constexpr UINT64 in_right_blink = 4;
  static constexpr int position_shift = 3;
  static constexpr int position_bits = 31;
  static constexpr int stamp_shift = position_shift + position_bits;
  static constexpr INT64 position_limit = (INT64{1} << position_bits) - 1;
  static constexpr UINT64 stamp_limit = UINT64{1} << (64 - stamp_shift);  // 149 hours
  static constexpr UINT64 stamps_before_first = stamp_limit / 16;
  static constexpr UINT64 no_base = ~UINT64{0} / 2;  // no sample's stamp lies that far up
  static constexpr int mark_shift = 2;
  static constexpr int event_shift = 4;
  static constexpr UINT64 event_limit = UINT64{1} << (stamp_shift - event_shift);
  static constexpr int other_shift = 2;
  static constexpr std::size_t word_bits = 64;  // of a word of landmarks

  static bool isPlain(Packed entry) { return (entry.word & no_sample_bit) == 0; }
  static bool isEvent(Packed entry) {
    return (entry.word & (no_sample_bit | no_event_bit)) == no_sample_bit;
  }
  static std::size_t eventNumber(Packed entry) {
    return static_cast<std::size_t>(entry.word >> event_shift & (event_limit - 1));
  }
  [[nodiscard]] UINT64 eventStampOf(Packed entry) const {
    return eventBase_ + (entry.word >> stamp_shift);
  }
  [[nodiscard]] GZDItem unpackEvent(Packed entry) const {
    const auto itsMarks = static_cast<unsigned>(entry.word >> mark_shift & 3);
    return events_.item(eventNumber(entry), eventStampOf(entry), itsMarks);
  }
  // Whether an entry fits into a word and what SmallEvents holds.
  [[nodiscard]] bool isSmallEvent(const GZDItem& item) const;
  [[nodiscard]] Packed packSmallEvent(const GZDItem& item, std::size_t number) const;
  static INT64 positionOf(Packed entry) {
    return static_cast<INT64>(entry.word >> position_shift & ((UINT64{1} << position_bits) - 1)) -
           1;
  }
  [[nodiscard]] UINT64 stampOf(Packed entry) const { return base_ + (entry.word >> stamp_shift); }
  [[nodiscard]] const GZDItem& otherOf(Packed entry) const {
    return others_[static_cast<std::size_t>(entry.word >> other_shift)];
  }
  [[nodiscard]] bool fits(INT64 position, UINT64 stamp) const {
    return position < position_limit && stamp - base_ < stamp_limit;
  }
  [[nodiscard]] Packed plain(INT64 position, UINT64 stamp) const {
    return {(stamp - base_) << stamp_shift | static_cast<UINT64>(position + 1) << position_shift};
  }
  void set(std::size_t place, const GZDItem& item);
  void noteStamp(UINT64 stamp) {
    rising_ &= stamp >= risingFrom_;
    risingFrom_ = stamp + 1;
  }
  // Marks the landmarks from place `first` up to `last`, as they are. Returns whether the samples
  // among them rise; from `riseFrom` on others would.
  bool markLandmarks(std::size_t first, std::size_t last, UINT64& riseFrom) const;
  static std::size_t firstBit(UINT64 word) {
    return static_cast<std::size_t>(std::countr_zero(word));
  }
  // The same after a word of landmarks.
  [[nodiscard]] std::size_t landmarkBehindWord(std::size_t number, std::size_t end) const;
  void putMarks(std::size_t number, UINT64 mask, UINT64 landmarks) const;
  [[nodiscard]] bool areLandmarks(std::size_t first, std::size_t last) const;
  void rotateMarks(std::size_t to, std::size_t from);
  void findLandmarks() const;

  std::vector<Packed> entries_;
  SmallEvents events_;
  std::deque<GZDItem> others_;  // grows without being copied
  UINT64 base_ = no_base;
  UINT64 eventBase_ = no_base;

  mutable std::vector<UINT64> marks_;  // a bit a place; 0 past the end
  mutable bool marksKnown_ = true;
  mutable bool rising_ = true;
  mutable UINT64 risingFrom_ = 0;  // samples added from here on go on rising
};

static_assert(sizeof(ItemList::Packed) == 8);

}  // namespace gzd

#endif
