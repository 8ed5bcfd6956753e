// Any items, put into time order, some of them given another time, and put into order again; short
// lists and such as are sorted in windows.
//
// Asserts: the order is the one that std::sort makes of the comparison, window by window, between
// one item that lies before all and one behind all: however the library finds out which windows
// need no sorting. Stamps rise within a window, no item is lost, and what is known of the places of
// other items than samples follows.
#include "order/time_order.h"

#include <memory>
#include <vector>

#include "fuzz_support.h"

using namespace gzd;

namespace {

constexpr std::size_t SORTED_WHOLE = 20000;
constexpr std::size_t WINDOW = 13500;
constexpr std::size_t OVERLAP = 3000;
constexpr std::size_t MOST_ITEMS = 27000;
constexpr int ROUNDS = 3;

constexpr int TYPES[] = {GZD_SAMPLE,        GZD_SAMPLE,      GZD_SAMPLE,          GZD_MESSAGE,
                         GZD_RECORDING,     GZD_RECORDING,   GZD_START_BLINK,     GZD_END_BLINK,
                         GZD_START_SACCADE, GZD_END_SACCADE, GZD_START_FIXATION,  GZD_END_FIXATION,
                         GZD_BUTTON,        GZD_INPUT,       GZD_FIXATION_UPDATE, 40};

using Items = std::vector<GZDItem>;

// ---- the plain way ------------------------------------------------------------------------------

struct Entry {
  const GZDItem* item;
  int guard;  // -1 before all, 1 behind all, 0 for an item
};

bool entry_before(const Entry& a, const Entry& b) {
  if (a.guard != b.guard) return a.guard < b.guard;
  return a.guard == 0 && sortByTime(*a.item, *b.item);
}

void sort_window(GZDItem* first, GZDItem* last) {
  std::vector<Entry> entries = {{nullptr, -1}};
  for (const GZDItem* item = first; item != last; ++item) entries.push_back({item, 0});
  entries.push_back({nullptr, 1});
  std::sort(entries.begin() + 1, entries.end() - 1, entry_before);
  Items sorted;
  for (std::size_t i = 1; i + 1 < entries.size(); ++i) sorted.push_back(*entries[i].item);
  std::copy(sorted.begin(), sorted.end(), first);
}

void sort_plainly(Items& items) {
  if (items.size() <= SORTED_WHOLE) {
    sort_window(items.data(), items.data() + items.size());
    return;
  }
  for (std::size_t first = 0;; first += WINDOW - OVERLAP) {
    const std::size_t last = std::min(first + WINDOW, items.size());
    sort_window(items.data() + first, items.data() + last);
    if (last == items.size()) return;
  }
}

// ---- items --------------------------------------------------------------------------------------

bool same_item(const GZDItem& a, const GZDItem& b) {
  return a.getFilePos() == b.getFilePos() && a.getDetailedType() == b.getDetailedType() &&
         a.getTimeStamp() == b.getTimeStamp() && a.getRecording() == b.getRecording();
}

void check_same(const ItemList& items, const Items& plain) {
  FUZZ_REQUIRE(items.size() == plain.size());
  for (std::size_t i = 0; i < items.size(); ++i) FUZZ_REQUIRE(same_item(items[i], plain[i]));
}

void check_landmarks(const Index& index) {
  std::vector<UINT32> expected;
  for (UINT32 place = 0; place < index.size(); ++place)
    if (!index.gzdItemList[place].isSample()) expected.push_back(place);
  std::vector<UINT32> actual;
  for (const Landmark mark : index.landmarks()) {
    actual.push_back(mark.place);
    FUZZ_REQUIRE(same_item(index.gzdItemList[mark], index.gzdItemList[mark.place]));
  }
  FUZZ_REQUIRE(actual == expected);
}

void check_rising(const Items& items) {
  for (std::size_t i = 1; i < items.size() && items.size() <= SORTED_WHOLE; ++i)
    FUZZ_REQUIRE(items[i - 1].getTimeStamp() <= items[i].getTimeStamp());
}

// One item of three bytes: its kind and side, its step in time, its place in the file.
void add_item(Index& index, fuzz::Tail& tail, UINT64& stamp) {
  const unsigned kind = tail.byte();
  const unsigned step = tail.byte();
  stamp = step < 200 ? stamp + step % 4 : stamp - std::min<UINT64>(stamp, step - 200);
  const int type = TYPES[kind % std::size(TYPES)];
  const auto place = static_cast<INT64>(10 * index.gzdItemList.size() + tail.byte());
  if (type != GZD_RECORDING) {
    index.gzdItemList.push_back(
        {place, type, static_cast<UINT16>(kind / 16 % 3), UINT16{0}, stamp});
    return;
  }
  auto boundary = std::make_unique<Recording>();
  boundary->state = kind & 16 ? GZD_BLOCK_START : GZD_BLOCK_END;
  boundary->time_collision_detected = (kind & 32) != 0;
  boundary->updateTime(stamp);
  index.gzdItemList.push_back(GZDItem(boundary.get()));
  index.allRecordings.push_back(std::move(boundary));
}

// The same items again and again, until there are enough for windows.
void fill(Index& index, fuzz::Input bytes, bool many) {
  UINT64 stamp = 1000;
  do {
    fuzz::Tail items(bytes);
    while (items.rest().size() >= 3 && index.gzdItemList.size() < MOST_ITEMS)
      add_item(index, items, stamp);
  } while (many && index.gzdItemList.size() < MOST_ITEMS);
}

void change_times(Index& index, Items& plain, fuzz::Random& random) {
  const std::size_t changes = 1 + random.below(4);
  for (std::size_t i = 0; i < changes; ++i) {
    const std::size_t place = random.below(plain.size());
    if (plain[place].isRecording()) continue;
    const UINT64 stamp = plain[random.below(plain.size())].getTimeStamp();
    plain[place].setFixedTimeStamp(stamp);
    index.gzdItemList.change(place, [=](GZDItem& item) { item.setFixedTimeStamp(stamp); });
  }
  index.itemsChanged();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Tail tail({data, size});
  fuzz::Random random(tail.word());
  const bool many = tail.byte() >= 254;
  if (tail.rest().size() < 3) return 0;
  Index index;
  fill(index, tail.rest(), many);
  Items plain;
  for (const GZDItem item : index.gzdItemList) plain.push_back(item);
  for (int round = 0; round < ROUNDS; ++round) {
    sortItems(index);
    sort_plainly(plain);
    check_same(index.gzdItemList, plain);
    check_rising(plain);
    check_landmarks(index);
    if (random.oneIn(2)) change_times(index, plain, random);
  }
  return 0;
}
