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
  explicit WindowSorter(ItemList& list) : items(list), strictOrder(list, sortByTime) {}

  // Sorts a window that is not empty. Returns the first place at which anything moved, or `last`.
  std::size_t sort(std::size_t first, std::size_t last) {
    strict = true;
    if (strictOrder.isStrict(first, last)) return last;
    if (strictOrder.make(first, last)) return strictOrder.firstChange();
    strict = false;
    window.clear();
    for (std::size_t place = first; place != last; ++place) window.push_back(items[place]);
    entries.clear();
    entries.push_back(low_guard);
    for (std::size_t i = 0; i < window.size(); ++i)
      entries.push_back(sort_entry_of(window[i], static_cast<UINT32>(i)));
    entries.push_back(high_guard);
    introsort.sort(entries, ItemOrder(window.data()));
    return carryOut(first);
  }
  // Whether the window sorted last has but one order.
  [[nodiscard]] bool isStrict() const { return strict; }

 private:
  std::size_t carryOut(std::size_t first) {
    ItemList::Packed* const target = items.packed().data() + first;
    std::size_t firstMoved = window.size();
    sorted.clear();
    for (std::size_t i = 0; i < window.size(); ++i) {
      const UINT32 from = entries[i + 1].place;
      if (from != i) firstMoved = std::min(firstMoved, i);
      sorted.push_back(target[from]);
    }
    std::copy(sorted.begin(), sorted.end(), target);
    items.orderChanged(first, first + window.size());
    return first + firstMoved;
  }

  ItemList& items;
  StrictOrder strictOrder;
  bool strict = false;
  IntroSort introsort;
  std::vector<GZDItem> window;
  std::vector<SortEntry> entries;
  std::vector<ItemList::Packed> sorted;
};

// The windows of a list of `count` items, one by one: first and last item, the last not included.
class Windows {
 public:
  explicit Windows(std::size_t itemCount)
      : count(itemCount), length(itemCount <= sorted_whole ? itemCount : sort_window) {}

  [[nodiscard]] std::size_t first() const { return begin; }
  [[nodiscard]] std::size_t last() const { return std::min(begin + length, count); }
  // Goes on to the next window; false behind the last one.
  bool next() {
    if (last() == count) return false;
    begin += sort_window - sort_overlap;
    return true;
  }

 private:
  std::size_t count;
  std::size_t length;
  std::size_t begin = 0;
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
