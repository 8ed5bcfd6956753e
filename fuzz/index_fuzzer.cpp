// Any bytes as a record stream, scanned, ordered and repaired.
//
// Asserts: the unchecked index is in order of stamps, and in order of the whole comparison within
// every run of one stamp on which that comparison is consistent; every record on disk has at most
// one entry, inside the stream; boundaries in the index are those kept, each once; dummy
// samples are made by repairs only; repairs never touch what is not an eye event, a
// blink start, a sample or a dummy, and samples outside blocks are gone; what a look-up by time
// finds has that time; a record has the time of its entry.
#include "index/index.h"

#include <map>
#include <set>

#include "byte_stream.h"
#include "fuzz_support.h"
#include "order/time_order.h"
#include "read/reader.h"
#include "record_frames.h"
#include "repair/consistency.h"
#include "scan/prescan.h"
#include "walk/positions.h"

using namespace gzd;

namespace {

constexpr std::uint64_t LARGEST_FILLING = 100000;
constexpr std::size_t SORTED_WHOLE = 20000;
constexpr std::ptrdiff_t LONGEST_CHECKED_RUN = 16;

using Items = std::vector<GZDItem>;

Items items_of(const Index& index) {
  Items items;
  for (const GZDItem item : index.gzdItemList) items.push_back(item);
  return items;
}
using Iterator = Items::const_iterator;

// ---- order --------------------------------------------------------------------------------------

// Whether the comparison is a strict weak order on a run: irreflexive, asymmetric, transitive, and
// transitive in what it leaves open.
bool is_consistent(Iterator first, Iterator last) {
  const auto open = [](const GZDItem& a, const GZDItem& b) {
    return !sortByTime(a, b) && !sortByTime(b, a);
  };
  for (Iterator a = first; a != last; ++a) {
    if (sortByTime(*a, *a)) return false;
    for (Iterator b = first; b != last; ++b) {
      if (sortByTime(*a, *b) && sortByTime(*b, *a)) return false;
      for (Iterator c = first; c != last; ++c) {
        if (sortByTime(*a, *b) && sortByTime(*b, *c) && !sortByTime(*a, *c)) return false;
        if (open(*a, *b) && open(*b, *c) && !open(*a, *c)) return false;
      }
    }
  }
  return true;
}

void check_run(Iterator first, Iterator last) {
  if (last - first > LONGEST_CHECKED_RUN || !is_consistent(first, last)) return;
  for (Iterator item = first + 1; item < last; ++item)
    FUZZ_REQUIRE(!sortByTime(*item, *(item - 1)));
}

void check_order(const Items& items) {
  if (items.size() > SORTED_WHOLE) return;
  Iterator run = items.begin();
  for (Iterator item = items.begin(); item != items.end(); ++item) {
    if (item->getTimeStamp() == run->getTimeStamp()) continue;
    FUZZ_REQUIRE(item->getTimeStamp() > run->getTimeStamp());
    check_run(run, item);
    run = item;
  }
  if (run != items.end()) check_run(run, items.end());
}

// ---- entries ------------------------------------------------------------------------------------

void check_boundaries(const Index& index) {
  std::set<const Recording*> kept, entered;
  for (const auto& boundary : index.allRecordings) kept.insert(boundary.get());
  for (const GZDItem item : index.gzdItemList) {
    if (!item.isRecording()) continue;
    FUZZ_REQUIRE(kept.contains(item.getRecording()));
    FUZZ_REQUIRE(entered.insert(item.getRecording()).second);
  }
  FUZZ_REQUIRE(entered.size() == kept.size());
  for (const auto& boundary : index.allRecordings) {
    FUZZ_REQUIRE(boundary->state == GZD_BLOCK_START || boundary->state == GZD_BLOCK_END);
    FUZZ_REQUIRE(boundary->eye <= GZD_BLOCK_BOTH);
  }
}

void check_places(const Index& index, std::size_t streamSize) {
  std::set<INT64> places;
  for (const GZDItem item : index.gzdItemList) {
    if (item.isRecording() || item.isDummy()) continue;
    FUZZ_REQUIRE(item.getFilePos() >= 2 && item.getFilePos() <= static_cast<INT64>(streamSize));
    FUZZ_REQUIRE(places.insert(item.getFilePos()).second);
  }
}

void check_dummies(const Index& index, bool repaired) {
  for (const GZDItem item : index.gzdItemList) {
    if (item.isRecording() || !item.isDummy()) continue;
    const bool blinkStart = item.getItemType() == GZD_START_BLINK;
    FUZZ_REQUIRE(blinkStart || (repaired && item.isSample()));
  }
}

void check_epochs(const Index& index) {
  FUZZ_REQUIRE(!index.parameterEpochs.empty() && index.parameterEpochs.front().filePos == 0);
  for (std::size_t i = 1; i < index.parameterEpochs.size(); ++i)
    FUZZ_REQUIRE(index.parameterEpochs[i - 1].filePos < index.parameterEpochs[i].filePos);
}

// What repairs must leave as it is: everything but samples, eye events and boundaries' order.
std::multimap<INT64, int> lasting_entries(const Items& items) {
  std::multimap<INT64, int> lasting;
  for (const GZDItem& item : items) {
    const bool mayGo = item.isRecording() || item.isSample() || item.isEyeEvent();
    if (!mayGo) lasting.emplace(item.getFilePos(), item.getItemType());
  }
  return lasting;
}

// At the very stamp of a boundary, what lies outside may depend on how ties fell, and where an end
// and a start collide, the two may have changed places.
void check_no_sample_outside(const Items& items) {
  if (items.size() > SORTED_WHOLE) return;
  std::set<UINT64> starts, ends;
  for (const GZDItem& item : items)
    if (item.isRecording()) (item.isRecordingStart() ? starts : ends).insert(item.getTimeStamp());
  const bool collide =
      std::any_of(starts.begin(), starts.end(), [&](UINT64 stamp) { return ends.contains(stamp); });
  bool inside = collide;
  for (const GZDItem& item : items) {
    if (item.isRecording()) inside = collide || item.isRecordingStart();
    if (item.isSample())
      FUZZ_REQUIRE(inside || starts.contains(item.getTimeStamp()) ||
                   ends.contains(item.getTimeStamp()));
  }
}

// ---- look-ups -----------------------------------------------------------------------------------

void check_look_ups(const Index& index, fuzz::Random& random) {
  if (index.size() == 0) return;
  const int last = static_cast<int>(index.size()) - 1;
  for (int n = 0; n < 32; ++n) {
    const auto stamp =
        static_cast<UINT32>(index.gzdItemList[random.below(index.size())].getTimeStamp());
    const int found = findIndex(index, stamp, 0, last);
    FUZZ_REQUIRE(found >= -1 && found <= last);
    if (found < 0) continue;
    const GZDItem item = index.gzdItemList[static_cast<std::size_t>(found)];
    FUZZ_REQUIRE(static_cast<UINT32>(item.getTimeStamp()) == stamp);
  }
}

void check_records(Reader& reader, const Index& index, fuzz::Random& random) {
  for (int n = 0; n < 64 && index.size() > 0; ++n) {
    const auto place = static_cast<UINT32>(random.below(index.size()));
    const ALLF_DATA* const record = reader.getFloatData(place);
    const GZDItem item = index.gzdItemList[place];
    if (record == nullptr) continue;
    if (item.isSample()) FUZZ_REQUIRE(record->fs.time == time_of_stamp(item.getTimeStamp()));
    if (item.isRecording()) FUZZ_REQUIRE(record->rec.state == item.getRecording()->state);
  }
}

// ---- one input ----------------------------------------------------------------------------------

StreamState state_from(fuzz::Tail& tail) {
  StreamState state;
  const unsigned generation = tail.byte();
  state.revision = static_cast<INT16>(generation % 5);
  state.ovilo_revision = static_cast<INT16>(1 + generation / 8 % 4);
  return state;
}

ScanOptions options_from(fuzz::Tail& tail) {
  const unsigned bits = tail.byte();
  return {.failsafe = (bits & 1) != 0,
          .fixConsistency = (bits & 2) != 0,
          .loadEvents = (bits & 4) == 0,
          .loadSamples = (bits & 8) == 0};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Tail tail({data, size});
  StreamState state = state_from(tail);
  const ScanOptions options = options_from(tail);
  fuzz::Random random(tail.byte());
  if (fuzz::largest_filling(tail.rest()) > LARGEST_FILLING) return 0;

  fuzz::ByteStream stream(tail.rest(), fuzz::Window::Whole);
  Index index;
  try {
    preScan(stream, state, options, index);
  } catch (const GZDException&) {
    FUZZ_REQUIRE(!options.failsafe);
    return 0;
  }
  if (!options.fixConsistency) check_order(items_of(index));
  check_boundaries(index);
  check_places(index, tail.rest().size());
  check_dummies(index, options.fixConsistency);
  check_epochs(index);

  Reader reader(stream, state, index);
  reader.useState(state);
  const auto lasting = lasting_entries(items_of(index));
  checkConsistency(index, options.fixConsistency,
                   [&](UINT32 item) { return reader.messageText(item); });
  reader.indexIsFinal(options.fixConsistency);
  FUZZ_REQUIRE(lasting_entries(items_of(index)) == lasting);
  check_no_sample_outside(items_of(index));
  check_boundaries(index);
  check_places(index, tail.rest().size());
  check_dummies(index, options.fixConsistency);
  check_look_ups(index, random);
  check_records(reader, index, random);
  return 0;
}
