// Items are ordered by stamp; items of one stamp by their kinds, and within some kinds by their
// place in the file.
//
// The comparison is not a strict weak order: a message and an earlier sample of one stamp, and a
// start and an end of blink of different eyes, each come first. The order that std::sort makes of
// that, window by window, is the order of the index. A window that is in strict order already, in
// both directions of every comparison, has only that one order and is left alone. One that a few moves
// bring into such an order is given it. Any other is sorted between two guards, so that no scan of
// std::sort leaves it, whatever the comparison says.
#include "time_order.h"

#include <algorithm>
#include <array>

#include "insertion_order.h"

namespace {

constexpr std::size_t SORTED_WHOLE = 20000;
constexpr std::size_t WINDOW = 13500;
constexpr std::size_t OVERLAP = 3000;

enum class Kind : byte { Other, Opening, Closing, Sample, FileOrdered, Message };

constexpr std::array<Kind, 256> make_kinds() {
  std::array<Kind, 256> kinds{};
  for (const int type : {1, 3, 5, 7, 15, 17}) kinds[static_cast<std::size_t>(type)] = Kind::Opening;
  for (const int type : {2, 4, 6, 8, 16, 18}) kinds[static_cast<std::size_t>(type)] = Kind::Closing;
  for (const int type : {9, 10, 25, 28}) kinds[static_cast<std::size_t>(type)] = Kind::FileOrdered;
  kinds[GZD_MESSAGE] = Kind::Message;
  kinds[GZD_SAMPLE] = Kind::Sample;
  return kinds;
}

constexpr std::array<Kind, 256> KINDS = make_kinds();

Kind kind_of(const GZDItem& item) {
  return KINDS[static_cast<std::size_t>(item.getItemType())];
}

bool in_file_order(const GZDItem& a, const GZDItem& b) {
  return a.getFilePos() < b.getFilePos();
}

bool boundary_before(const GZDItem& a, const GZDItem& b) {
  if (a.isRecording() && b.isRecording()) return !a.isRecordingStart() && b.isRecordingStart();
  if (a.isRecordingStart()) return true;
  if (a.isRecording() || b.isRecordingStart()) return false;
  const Kind kind = kind_of(a);  // b is the end of a block
  return kind != Kind::Opening && kind != Kind::Other;
}

bool message_before(const GZDItem& a, const GZDItem& b) {
  // A message is before a sample, and a sample that lies earlier in the file is before a message.
  if (kind_of(a) == Kind::Message && kind_of(b) == Kind::Sample) return true;
  return in_file_order(a, b);
}

bool sample_before(const GZDItem& a, const GZDItem& b) {
  if (kind_of(a) == Kind::Sample) return kind_of(b) == Kind::Closing;
  return kind_of(a) == Kind::Opening;
}

bool is_blink(const GZDItem& item) {
  return item.getItemType() == GZD_START_BLINK || item.getItemType() == GZD_END_BLINK;
}

bool eye_event_before(const GZDItem& a, const GZDItem& b) {
  const int typeA = a.getItemType();
  const int typeB = b.getItemType();
  if (typeA == typeB) return in_file_order(a, b);
  // A start and an end of blink of different eyes come before each other.
  if (is_blink(a) && is_blink(b)) return a.getSide() != b.getSide() || typeA == GZD_START_BLINK;
  if (kind_of(a) != kind_of(b)) return kind_of(a) == Kind::Opening;
  return (typeA == GZD_START_SACCADE && typeB == GZD_START_BLINK) ||
         (typeA == GZD_END_BLINK && typeB == GZD_END_SACCADE);
}

bool before_at_one_stamp(const GZDItem& a, const GZDItem& b) {
  if (a.isRecording() || b.isRecording()) return boundary_before(a, b);
  const Kind kindA = kind_of(a);
  const Kind kindB = kind_of(b);
  const auto either = [&](Kind kind) { return kindA == kind || kindB == kind; };
  if (either(Kind::FileOrdered)) return in_file_order(a, b);
  if (either(Kind::Message)) return message_before(a, b);
  if (either(Kind::Other)) return false;
  if (either(Kind::Sample)) return sample_before(a, b);
  return eye_event_before(a, b);
}

// ---- windows
// ------------------------------------------------------------------------------------------

// An item with its stamp at hand. Guards have no item: the lowest stands before, the highest behind
// everything, a boundary at time 0 included.
struct Entry {
  UINT64 stamp;
  const GZDItem* item;
};

constexpr Entry LOW_GUARD{0, nullptr};
constexpr Entry HIGH_GUARD{~UINT64{0}, nullptr};

bool entry_before(const Entry& a, const Entry& b) {
  if (a.stamp != b.stamp) return a.stamp < b.stamp;
  if (b.item == nullptr) return false;
  if (a.item == nullptr) return true;
  return before_at_one_stamp(*a.item, *b.item);
}

class WindowSorter {
 public:
  explicit WindowSorter(ItemList& list) : items(list), insertion(list, before_at_one_stamp) {}

  // Sorts a window that is not empty. Returns whether anything moved.
  bool sort(std::size_t first, std::size_t last) {
    if (insertion.isStrict(first, last)) return false;
    if (insertion.make(first, last)) return true;
    window.clear();
    for (std::size_t place = first; place != last; ++place) window.push_back(items[place]);
    entries.clear();
    entries.push_back(LOW_GUARD);
    for (const GZDItem& item : window) entries.push_back({item.getTimeStamp(), &item});
    entries.push_back(HIGH_GUARD);
    std::sort(entries.begin() + 1, entries.end() - 1, entry_before);
    return carryOut(first);
  }

 private:
  bool carryOut(std::size_t first) {
    ItemList::Packed* const target = items.packed().data() + first;
    bool moved = false;
    sorted.clear();
    for (std::size_t i = 0; i < window.size(); ++i) {
      const auto from = static_cast<std::size_t>(entries[i + 1].item - window.data());
      moved |= from != i;
      sorted.push_back(target[from]);
    }
    if (moved) std::copy(sorted.begin(), sorted.end(), target);
    return moved;
  }

  ItemList& items;
  InsertionOrder insertion;
  std::vector<GZDItem> window;
  std::vector<Entry> entries;
  std::vector<ItemList::Packed> sorted;
};

// The windows of a list of `count` items, one by one: first and last item, the last not included.
class Windows {
 public:
  explicit Windows(std::size_t itemCount)
      : count(itemCount), length(itemCount <= SORTED_WHOLE ? itemCount : WINDOW) {}

  [[nodiscard]] std::size_t first() const { return begin; }
  [[nodiscard]] std::size_t last() const { return std::min(begin + length, count); }
  // Goes on to the next window; false behind the last one.
  bool next() {
    if (last() == count) return false;
    begin += WINDOW - OVERLAP;
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
  return before_at_one_stamp(e1, e2);
}

void sortItems(Index& index) {
  ItemList& items = index.gzdItemList;
  if (items.empty()) return;
  std::vector<bool> settled = std::move(index.settledWindows);
  WindowSorter sorter(items);
  bool anyMoved = false;
  bool moved = false;  // the window before changed, and this one overlaps it
  Windows windows(items.size());
  std::size_t number = 0;
  do {
    if (number == settled.size()) settled.push_back(false);
    if (!settled[number] || moved) {
      moved = sorter.sort(windows.first(), windows.last());
      settled[number] = !moved;
      if (moved && number > 0) settled[number - 1] = false;
      anyMoved |= moved;
    }
    ++number;
  } while (windows.next());
  if (anyMoved) index.itemsChanged();
  index.settledWindows = std::move(settled);
}
