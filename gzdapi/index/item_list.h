// The entries of the index, in order.
//
// Nearly all are samples: a sample's entry is one word, whether either eye is inside a blink, its
// place in the file, and its stamp above a base that suits the file; SampleWords holds them. The
// others, the landmarks, lie in a list of their own with their places, 16 bytes each, so that what
// concerns them alone does not touch the samples. An entry that does not fit (a boundary, a stamp
// far from the others) lies whole in a third list. Entries are handed out by value.
#ifndef GZDAPI_ITEM_LIST_H
#define GZDAPI_ITEM_LIST_H

#include <algorithm>
#include <cstddef>
#include <deque>
#include <iterator>
#include <vector>

#include "index/GZDItem.h"
#include "index/sample_words.h"

namespace gzd {

// An entry that is no sample: its place in the list, its number among its like.
struct Landmark {
  UINT32 place;
  UINT32 number;
};

// Where the record of a sample stands in the file, and its stamp.
struct PlainSample {
  INT64 position;
  UINT64 stamp;
};

class ItemList {
  struct Mark;

 public:
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

      Iterator(const ItemList& owner, std::size_t from) : list_(&owner), number_(from) {}
      Landmark operator*() const {
        return {list_->marks_[number_].place, static_cast<UINT32>(number_)};
      }
      Iterator& operator++() {
        ++number_;
        return *this;
      }
      bool operator==(const Iterator& other) const { return number_ == other.number_; }

     private:
      const ItemList* list_;
      std::size_t number_;
    };

    explicit Landmarks(const ItemList& owner) : list_(owner) {}
    [[nodiscard]] Iterator begin() const { return {list_, 0}; }
    [[nodiscard]] Iterator end() const { return {list_, list_.marks_.size()}; }

   private:
    const ItemList& list_;
  };

  // Samples from a place on, each of which fits into a word. Valid until the list changes.
  class Span {
   public:
    Span() = default;
    Span(UINT32 place, const SampleWords::Run& run, UINT64 base)
        : first_(place), base_(base), run_(run) {}

    [[nodiscard]] std::size_t count() const { return run_.count; }
    [[nodiscard]] bool holds(UINT32 place) const { return place - first_ < count(); }
    // Of the sample at a place that it holds.
    [[nodiscard]] PlainSample at(UINT32 place) const {
      const UINT64 word = run_[place - first_];
      return {positionOf(word), base_ + (word >> stamp_shift)};
    }
    // From each stamp to the next; 0 when they differ, or are not known to be the same.
    [[nodiscard]] UINT64 step() const { return stepOf(run_); }

   private:
    UINT32 first_ = 0;
    UINT64 base_ = 0;
    SampleWords::Run run_;
  };

  [[nodiscard]] std::size_t size() const { return samples_.size() + marks_.size(); }
  // Of memory that the entries take.
  [[nodiscard]] UINT64 bytes() const {
    return samples_.bytes() + sizeof(Mark) * marks_.size() + sizeof(GZDItem) * others_.size();
  }
  [[nodiscard]] bool empty() const { return size() == 0; }
  [[nodiscard]] Iterator begin() const { return {*this, 0}; }
  [[nodiscard]] Iterator end() const { return {*this, size()}; }

  [[nodiscard]] GZDItem operator[](std::size_t place) const {
    const Gap& gap = gapAt(place);
    return isLandmark(gap, place) ? unpack(marks_[gap.number]) : sample(place - gap.number);
  }
  [[nodiscard]] UINT64 stampAt(std::size_t place) const {
    const Gap& gap = gapAt(place);
    return isLandmark(gap, place) ? stampOf(marks_[gap.number]) : stampOfSample(place - gap.number);
  }
  [[nodiscard]] bool isSampleAt(std::size_t place) const {
    return gap_.holds(place) || findGap(place).holds(place);
  }
  // Whether the entry is a sample that fits into a word: nearly every one.
  [[nodiscard]] bool isPlainAt(std::size_t place) const {
    return isSampleAt(place) && (!hasOddSamples_ || isPlain(samples_[place - gap_.number]));
  }
  // The same, but only for samples between the landmarks around the entry asked for last.
  [[nodiscard]] bool isPlainNearby(std::size_t place) const {
    return gap_.holds(place) && !hasOddSamples_;
  }
  // Whether the entry is the landmark behind the gap asked for last.
  [[nodiscard]] bool isLandmarkNearby(std::size_t place) const {
    return gap_.endsAt(place) && isLandmark(gap_, place);
  }
  // The samples from a place on; none where isPlainAt() is false.
  [[nodiscard]] Span spanFrom(UINT32 place) const;

  void push_back(const GZDItem& item);
  // A recorded sample outside blinks.
  void addSample(INT64 position, UINT64 stamp) {
    if (fits(position, stamp)) {
      samples_.push_back(plain(position, stamp));
      noteStamp(stamp);
    } else {
      push_back({position, GZD_SAMPLE, SIDE_NONE, 0, stamp});
    }
  }
  // Such samples, the first of which stands in the file at `position`, others at equal distances
  // from each to the next; so do their stamps.
  void addSamples(std::size_t count, PlainSample first, PlainSample distance);
  // Puts what `change` makes of a landmark's entry in its place.
  template <class Change>
  void change(std::size_t place, Change change) {
    GZDItem item = (*this)[place];
    change(item);
    setLandmark(gapAt(place).number, item);
  }

  // ---- landmarks --------------------------------------------------------------------------------
  [[nodiscard]] Landmarks landmarks() const { return Landmarks(*this); }
  [[nodiscard]] std::size_t landmarkCount() const { return marks_.size(); }
  // Makes room for `count` landmarks in all.
  void reserveLandmarks(std::size_t count) { marks_.reserve(count); }
  [[nodiscard]] std::size_t landmarkRoom() const { return marks_.capacity(); }
  // A landmark's entry.
  [[nodiscard]] GZDItem operator[](Landmark mark) const { return unpack(marks_[mark.number]); }
  // The first landmark from a place on, `end` when there is none before that place.
  [[nodiscard]] std::size_t nextLandmark(std::size_t place, std::size_t end) const {
    const std::size_t number = gapAt(place).number;
    return number < marks_.size() ? std::min<std::size_t>(marks_[number].place, end) : end;
  }
  // How many stand before a place.
  [[nodiscard]] std::size_t landmarksBefore(std::size_t place) const { return gapAt(place).number; }
  [[nodiscard]] Landmark landmark(std::size_t number) const {
    return {marks_[number].place, static_cast<UINT32>(number)};
  }

  // ---- samples, by their numbers ----------------------------------------------------------------
  [[nodiscard]] GZDItem sample(std::size_t number) const { return unpackSample(samples_[number]); }
  [[nodiscard]] UINT64 stampOfSample(std::size_t number) const { return stampOf(samples_[number]); }
  // Those from a number on, whose places are their numbers. All must fit into words.
  [[nodiscard]] Span samplesFrom(UINT32 number) const {
    return {number, samples_.runFrom(number), base_};
  }
  // Whether the stamps rise from each to the next. False also when one of them did not fit into a
  // word.
  [[nodiscard]] bool samplesRise() const { return rising_; }
  // The same of those from number `first` up to `last`.
  [[nodiscard]] bool samplesRise(std::size_t first, std::size_t last) const;

  // ---- order ------------------------------------------------------------------------------------
  // Puts into the place of as many landmarks, from this number on, the same in another order and at
  // other places.
  void arrange(std::size_t number, const std::vector<Landmark>& landmarks);
  // Puts as many entries as `order` has numbers, from `first` on, into the order of their numbers,
  // which count from `first` on.
  void reorder(std::size_t first, const std::vector<UINT32>& order);

  // Builds the list anew from what it holds and further entries.
  class Rebuild {
   public:
    // The list must not change before finish().
    explicit Rebuild(ItemList& list) : list_(list) {}
    // The list's entries from place `first` up to `last`, samples marked as inside a blink of the
    // left or the right eye.
    void take(std::size_t first, std::size_t last, bool left = false, bool right = false);
    void add(const GZDItem& item);
    // The list becomes what was built.
    void finish();

   private:
    void takeSamples(std::size_t first, std::size_t last, UINT64 blinks);

    ItemList& list_;
    SampleWords samples_;
    std::vector<Mark> marks_;
  };

 private:
  // The word of a sample, its highest bit on the left; stamps are half-milliseconds:
  //
  //   63             34 33                        3  2  1  0
  //  +-----------------+---------------------------+--+--+--+
  //  | stamp less base | place in the file plus 1  | R| L| 0|  place 0: filled in
  //  +-----------------+---------------------------+--+--+--+
  //   63                                           2  1  0
  //  +------------------------------------------------+--+--+
  //  | number of the entry in `others_`               | 0| 1|  what does not fit
  //  +------------------------------------------------+--+--+
  //
  // L and R: the left and the right eye is inside a blink.
  static constexpr UINT64 odd_bit = 1;
  static constexpr UINT64 in_left_blink = 2;
  static constexpr UINT64 in_right_blink = 4;
  static constexpr int other_shift = 2;
  static constexpr int position_shift = 3;
  static constexpr int position_bits = 31;
  static constexpr int stamp_shift = position_shift + position_bits;
  static constexpr INT64 position_limit = (INT64{1} << position_bits) - 1;
  static constexpr UINT64 stamp_limit = UINT64{1} << (64 - stamp_shift);  // 149 hours
  static constexpr UINT64 stamps_before_first = stamp_limit / 16;
  static constexpr UINT64 no_base = ~UINT64{0} / 2;  // no stamp lies that far up

  // Samples and landmarks have a base each.
  struct Mark {
    UINT32 place;
    UINT32 placeInFile;  // plus 1; the number of the entry in `others_` for what does not fit
    UINT32 stamp;        // less base
    UINT16 detail;       // type, side and marks as in GZDItem; 0 for what does not fit
    UINT16 tag;
  };
  static_assert(sizeof(Mark) == 16);

  // The samples between two landmarks: their places, and the number of the landmark behind them.
  struct Gap {
    std::size_t begin = ~std::size_t{0};
    std::size_t count = 0;
    std::size_t number = 0;

    [[nodiscard]] bool holds(std::size_t place) const { return place - begin < count; }
    [[nodiscard]] bool endsAt(std::size_t place) const { return place - begin == count; }
  };

  // The gap that a place lies in, or the one before its landmark.
  [[nodiscard]] const Gap& gapAt(std::size_t place) const {
    return gap_.holds(place) || gap_.endsAt(place) ? gap_ : findGap(place);
  }
  const Gap& findGap(std::size_t place) const;
  const Gap& enterGap(std::size_t number) const;
  // Whether a place whose gap this is, which may have grown since, is that of the landmark.
  [[nodiscard]] bool isLandmark(const Gap& gap, std::size_t place) const {
    return !gap.holds(place) && gap.number < marks_.size() && marks_[gap.number].place == place;
  }

  static bool isPlain(UINT64 word) { return (word & odd_bit) == 0; }
  static UINT64 stepOf(const SampleWords::Run& run);
  static INT64 positionOf(UINT64 word) {
    return static_cast<INT64>(word >> position_shift & ((UINT64{1} << position_bits) - 1)) - 1;
  }
  [[nodiscard]] UINT64 stampOf(UINT64 word) const {
    return isPlain(word) ? base_ + (word >> stamp_shift) : otherOf(word).getTimeStamp();
  }
  [[nodiscard]] const GZDItem& otherOf(UINT64 word) const {
    return others_[static_cast<std::size_t>(word >> other_shift)];
  }
  [[nodiscard]] bool fits(INT64 position, UINT64 stamp) const {
    return position < position_limit && stamp - base_ < stamp_limit;
  }
  [[nodiscard]] UINT64 plain(INT64 position, UINT64 stamp) const {
    return (stamp - base_) << stamp_shift | static_cast<UINT64>(position + 1) << position_shift;
  }
  [[nodiscard]] GZDItem unpackSample(UINT64 word) const;
  UINT64 packSample(const GZDItem& item);

  [[nodiscard]] UINT64 stampOf(const Mark& mark) const {
    return mark.detail != 0 ? eventBase_ + mark.stamp : others_[mark.placeInFile].getTimeStamp();
  }
  [[nodiscard]] GZDItem unpack(const Mark& mark) const {
    if (mark.detail == 0) return others_[mark.placeInFile];
    return {INT64{mark.placeInFile} - 1, mark.detail, SIDE_NONE, mark.tag, eventBase_ + mark.stamp};
  }
  Mark packLandmark(const GZDItem& item, std::size_t place);
  void setLandmark(std::size_t number, const GZDItem& item);
  std::size_t addOther(const GZDItem& item) {
    others_.push_back(item);
    return others_.size() - 1;
  }

  void noteStamp(UINT64 stamp) {
    rising_ &= stamp >= risingFrom_;
    risingFrom_ = stamp + 1;
  }
  SampleWords samples_;
  std::vector<Mark> marks_;
  std::deque<GZDItem> others_;  // grows without being copied
  UINT64 base_ = no_base;
  UINT64 eventBase_ = no_base;
  bool hasOddSamples_ = false;
  bool rising_ = true;
  UINT64 risingFrom_ = 0;  // samples added from here on go on rising
  mutable Gap gap_;        // the one asked for last
};

}  // namespace gzd

#endif
