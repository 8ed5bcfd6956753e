// The entries of the index, in order.
//
// Nearly all are samples, so that a sample's entry is one word of 8 bytes: whether either eye is
// inside a blink, its place in the file, and its stamp above a base that suits the file. An entry
// that does not fit (any event, a stamp far from the others) lies in a list of its own, and its
// word tells where. Entries are handed out by value.
//
// The list knows its landmarks, the entries that are no samples: few, so that what concerns them
// alone need not touch the whole list.
#ifndef GZDAPI_ITEM_LIST_H
#define GZDAPI_ITEM_LIST_H

#include <cstddef>
#include <deque>
#include <iterator>
#include <vector>

#include "index/GZDItem.h"

namespace gzd {

// An entry that is no sample: its place in the list, and its number among the entries that did not
// fit into a word.
struct Landmark {
  UINT32 place;
  UINT32 number;
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

    Iterator(const ItemList& owner, std::size_t start) : list(&owner), place(start) {}
    GZDItem operator*() const { return (*list)[place]; }
    Iterator& operator++() {
      ++place;
      return *this;
    }
    Iterator operator++(int) { return {*list, place++}; }
    bool operator==(const Iterator& other) const { return place == other.place; }

   private:
    const ItemList* list;
    std::size_t place;
  };

  [[nodiscard]] std::size_t size() const { return entries.size(); }
  [[nodiscard]] bool empty() const { return entries.empty(); }
  [[nodiscard]] std::size_t capacity() const { return entries.capacity(); }
  // Makes room for `count` entries in all, as many of them landmarks as so far.
  void reserve(std::size_t count);
  [[nodiscard]] Iterator begin() const { return {*this, 0}; }
  [[nodiscard]] Iterator end() const { return {*this, size()}; }

  [[nodiscard]] GZDItem operator[](std::size_t place) const { return unpack(entries[place]); }
  [[nodiscard]] UINT64 stampAt(std::size_t place) const {
    const Packed entry = entries[place];
    return isPlain(entry) ? stampOf(entry) : otherOf(entry).getTimeStamp();
  }
  [[nodiscard]] bool isSampleAt(std::size_t place) const {
    return isPlain(entries[place]) || otherOf(entries[place]).isSample();
  }

  void push_back(const GZDItem& item);
  // A recorded sample outside blinks.
  void addSample(INT64 position, UINT64 stamp) {
    if (fits(position, stamp)) {
      entries.push_back(plain(position, stamp));
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

  // ---- landmarks ----
  // In ascending order. They stay until entries are added, moved or removed.
  [[nodiscard]] const std::vector<Landmark>& landmarks() const {
    if (!marksKnown) findLandmarks();
    return marks;
  }
  // A landmark's entry.
  [[nodiscard]] const GZDItem& operator[](Landmark mark) const { return others[mark.number]; }
  // The number of landmarks before a place.
  [[nodiscard]] std::size_t landmarksBefore(std::size_t place) const;
  // Whether the stamps of the samples rise from each to the next. False also when one of them did
  // not fit into a word.
  [[nodiscard]] bool samplesRise() const {
    if (!marksKnown) findLandmarks();
    return rising;
  }

  // Moves the entry at `from` back to `to`, before those that stood there. `mark` is the number of
  // landmarks before `from`.
  void moveBack(std::size_t from, std::size_t to, std::size_t mark);
  // To be called when entries were added, moved or removed as they are kept.
  void changed() { marksKnown = false; }
  // To be called when the entries from `first` up to `last` were given another order.
  void orderChanged(std::size_t first, std::size_t last);

  // ---- entries as they are kept ----
  [[nodiscard]] GZDItem unpack(Packed entry) const {
    if (!isPlain(entry)) return otherOf(entry);
    GZDItem item(positionOf(entry), GZD_SAMPLE, SIDE_NONE, 0, stampOf(entry));
    if ((entry.word & IN_LEFT_BLINK) != 0) item.markSampleInsideBlink(GZD_LEFT_EYE);
    if ((entry.word & IN_RIGHT_BLINK) != 0) item.markSampleInsideBlink(GZD_RIGHT_EYE);
    return item;
  }
  // Keeps a new entry, which is not yet in the list.
  [[nodiscard]] Packed pack(const GZDItem& item);
  [[nodiscard]] std::vector<Packed>& packed() { return entries; }
  [[nodiscard]] const std::vector<Packed>& packed() const { return entries; }

 private:
  // From the lowest bit: kind, marks, place in the file plus 1 (0 for none), stamp less the base.
  static constexpr UINT64 OTHER = 1;
  static constexpr UINT64 IN_LEFT_BLINK = 2;
  static constexpr UINT64 IN_RIGHT_BLINK = 4;
  static constexpr int POSITION_SHIFT = 3;
  static constexpr int POSITION_BITS = 31;
  static constexpr int STAMP_SHIFT = POSITION_SHIFT + POSITION_BITS;
  static constexpr INT64 POSITIONS = (INT64{1} << POSITION_BITS) - 1;
  static constexpr UINT64 STAMPS = UINT64{1} << (64 - STAMP_SHIFT);  // 149 hours
  static constexpr UINT64 STAMPS_BEFORE_FIRST = STAMPS / 16;
  static constexpr UINT64 NO_BASE = ~UINT64{0} / 2;  // no sample's stamp lies that far up
  static constexpr int OTHER_SHIFT = 1;

  static bool isPlain(Packed entry) { return (entry.word & OTHER) == 0; }
  static INT64 positionOf(Packed entry) {
    return static_cast<INT64>(entry.word >> POSITION_SHIFT & ((UINT64{1} << POSITION_BITS) - 1)) -
           1;
  }
  [[nodiscard]] UINT64 stampOf(Packed entry) const { return base + (entry.word >> STAMP_SHIFT); }
  [[nodiscard]] const GZDItem& otherOf(Packed entry) const {
    return others[entry.word >> OTHER_SHIFT];
  }
  [[nodiscard]] bool fits(INT64 position, UINT64 stamp) const {
    return position < POSITIONS && stamp - base < STAMPS;
  }
  [[nodiscard]] Packed plain(INT64 position, UINT64 stamp) const {
    return {(stamp - base) << STAMP_SHIFT | static_cast<UINT64>(position + 1) << POSITION_SHIFT};
  }
  void set(std::size_t place, const GZDItem& item);
  void noteStamp(UINT64 stamp) {
    rising &= stamp >= risingFrom;
    risingFrom = stamp + 1;
  }
  template <class Visit>
  bool visitLandmarks(std::size_t first, std::size_t last, UINT64& riseFrom, Visit visit) const;
  void findLandmarks() const;

  std::vector<Packed> entries;
  std::deque<GZDItem> others;  // grows without being copied
  UINT64 base = NO_BASE;

  mutable std::vector<Landmark> marks;
  mutable bool marksKnown = true;
  mutable bool rising = true;
  mutable UINT64 risingFrom = 0;  // samples added from here on go on rising
};

static_assert(sizeof(ItemList::Packed) == 8);

}  // namespace gzd

#endif
