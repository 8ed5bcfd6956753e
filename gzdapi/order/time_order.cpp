// Items are ordered by stamp; items of one stamp by their kinds, and within some kinds by their
// place in the file.
//
// The comparison is not a strict weak order: a message and an earlier sample of one stamp, and a
// start and an end of blink of different eyes, each come first. The order that std::sort makes of
// that, window by window, is the order of the index. A window that is in strict order already, in
// both directions of every comparison, has only that one order and is left alone. One that a few
// moves bring into such an order is given it. Any other is sorted between two guards, so that no
// scan leaves it, whatever the comparison says.
#include "order/time_order.h"

#include <algorithm>

#include "order/introsort.h"
#include "order/strict_order.h"

namespace gzd {

namespace {

constexpr std::size_t sorted_whole = 20000;
constexpr std::size_t sort_window = 13500;
constexpr std::size_t sort_overlap = 3000;

class WindowSorter {
 public:
  explicit WindowSorter(ItemList& list) : items_(list), strictOrder_(list) {}

  // Sorts a window that is not empty. Returns the first place at which anything moved, or `last`.
  std::size_t sort(std::size_t first, std::size_t last) {
    strict_ = true;
    if (strictOrder_.make(first, last)) return strictOrder_.firstChange();
    strict_ = false;
    window_.clear();
    for (std::size_t place = first; place != last; ++place) window_.push_back(items_[place]);
    entries_.clear();
    entries_.push_back(low_guard);
    for (std::size_t i = 0; i < window_.size(); ++i)
      entries_.push_back(sort_entry_of(window_[i], static_cast<UINT32>(i)));
    entries_.push_back(high_guard);
    introsort_.sort(entries_, ItemOrder(window_.data()));
    return carryOut(first);
  }
  // Whether the window sorted last has but one order.
  [[nodiscard]] bool isStrict() const { return strict_; }

 private:
  std::size_t carryOut(std::size_t first) {
    std::size_t firstMoved = window_.size();
    order_.clear();
    for (std::size_t i = 0; i < window_.size(); ++i) {
      order_.push_back(entries_[i + 1].place);
      if (order_.back() != i) firstMoved = std::min(firstMoved, i);
    }
    items_.reorder(first, order_);
    return first + firstMoved;
  }

  ItemList& items_;
  StrictOrder strictOrder_;
  bool strict_ = false;
  IntroSort introsort_;
  std::vector<GZDItem> window_;
  std::vector<SortEntry> entries_;
  std::vector<UINT32> order_;
};

// The windows of a list of `count` items, one by one: first and last item, the last not included.
class Windows {
 public:
  explicit Windows(std::size_t itemCount)
      : count_(itemCount), length_(itemCount <= sorted_whole ? itemCount : sort_window) {}

  [[nodiscard]] std::size_t first() const { return begin_; }
  [[nodiscard]] std::size_t last() const { return std::min(begin_ + length_, count_); }
  // Goes on to the next window; false past the last one.
  bool next() {
    if (last() == count_) return false;
    begin_ += sort_window - sort_overlap;
    return true;
  }

 private:
  std::size_t count_;
  std::size_t length_;
  std::size_t begin_ = 0;
};

}  // namespace

bool sortByTime(const GZDItem& e1, const GZDItem& e2) {
  const UINT64 stamp1 = e1.getTimeStamp();
  const UINT64 stamp2 = e2.getTimeStamp();
  if (stamp1 != stamp2) return stamp1 < stamp2;
  const Precedence precedence = precedence_at_one_stamp(e1, e2);
  if (precedence == Precedence::ByFile) return e1.getFilePos() < e2.getFilePos();
  return precedence == Precedence::Always;
}

void sortItems(Index& index) {
  ItemList& items = index.gzdItemList;
  if (items.empty()) return;
  std::vector<bool> settled = std::move(index.settledWindows);
  WindowSorter sorter(items);
  bool moved = false;  // the window before changed, and this one overlaps it
  Windows windows(items.size());
  std::size_t number = 0;
  do {
    if (number == settled.size()) settled.push_back(false);
    if (!settled[number] || moved) {
      const std::size_t firstMoved = sorter.sort(windows.first(), windows.last());
      moved = firstMoved != windows.last();
      settled[number] = !moved || sorter.isStrict();
      const bool movedInOverlap = moved && firstMoved < windows.first() + sort_overlap;
      if (movedInOverlap && number > 0) settled[number - 1] = false;
    }
    ++number;
  } while (windows.next());
  index.settledWindows = std::move(settled);
}

}  // namespace gzd
