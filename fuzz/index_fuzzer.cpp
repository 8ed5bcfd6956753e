// Any bytes as a record stream, scanned, ordered and repaired.
//
// Asserts: the unchecked index is in order of stamps; every record on disk has at most one entry,
// inside the stream; boundaries in the index are those kept, each once; dummy samples are made by
// repairs only; repairs never touch what is not an eye event, a sample or a boundary; samples
// outside blocks are gone; what a look-up by time finds has that time, a record that of its entry.
#include <map>
#include <set>

#include "harness.h"
#include "read/reader.h"
#include "repair/consistency.h"
#include "scan/prescan.h"
#include "support/item_lists.h"
#include "walk/positions.h"

using namespace gzd;

namespace {

constexpr std::uint64_t largest_filling = 100000;
constexpr std::size_t sorted_whole = 20000;

using Items = std::vector<GZDItem>;

void check_order(const Items& items) {
  for (std::size_t i = 1; i < items.size() && items.size() <= sorted_whole; ++i)
    FUZZ_REQUIRE(items[i - 1].getTimeStamp() <= items[i].getTimeStamp());
}

void check_entries(const Index& index, std::size_t streamSize, bool repaired) {
  std::set<const Recording*> kept, entered;
  std::set<INT64> places;
  for (const auto& boundary : index.allRecordings) {
    kept.insert(boundary.get());
    FUZZ_REQUIRE(boundary->state == GZD_BLOCK_START || boundary->state == GZD_BLOCK_END);
    FUZZ_REQUIRE(boundary->eye <= GZD_BLOCK_BOTH);
  }
  for (const GZDItem item : index.gzdItemList) {
    if (item.isRecording()) {
      FUZZ_REQUIRE(entered.insert(item.getRecording()).second);
    } else if (item.isDummy()) {
      FUZZ_REQUIRE(item.getItemType() == GZD_START_BLINK || (repaired && item.isSample()));
    } else {
      FUZZ_REQUIRE(item.getFilePos() >= 2 && item.getFilePos() <= static_cast<INT64>(streamSize));
      FUZZ_REQUIRE(places.insert(item.getFilePos()).second);
    }
  }
  FUZZ_REQUIRE(entered == kept);
  FUZZ_REQUIRE(!index.parameterEpochs.empty() && index.parameterEpochs.front().filePos == 0);
  for (std::size_t i = 1; i < index.parameterEpochs.size(); ++i)
    FUZZ_REQUIRE(index.parameterEpochs[i - 1].filePos < index.parameterEpochs[i].filePos);
}

// What repairs must leave as it is.
std::multimap<INT64, int> lasting_entries(const Items& items) {
  std::multimap<INT64, int> lasting;
  for (const GZDItem& item : items)
    if (!item.isRecording() && !item.isSample() && !item.isEyeEvent())
      lasting.emplace(item.getFilePos(), item.getItemType());
  return lasting;
}

// At the very stamp of a boundary, what lies outside may depend on how ties fell, and where an end
// and a start collide, the two may have changed places.
void check_no_sample_outside(const Items& items) {
  std::set<UINT64> starts, ends;
  for (const GZDItem& item : items)
    if (item.isRecording()) (item.isRecordingStart() ? starts : ends).insert(item.getTimeStamp());
  const bool collide =
      std::any_of(starts.begin(), starts.end(), [&](UINT64 stamp) { return ends.contains(stamp); });
  bool inside = false;
  for (const GZDItem& item : items) {
    if (item.isRecording()) inside = item.isRecordingStart();
    const UINT64 stamp = item.getTimeStamp();
    const bool excused = collide || starts.contains(stamp) || ends.contains(stamp);
    if (item.isSample() && items.size() <= sorted_whole) FUZZ_REQUIRE(inside || excused);
  }
}

void check_look_ups(Reader& reader, const Index& index, fuzz::Tail& tail) {
  for (int n = 0; n < 64 && index.size() > 0; ++n) {
    const auto place = static_cast<UINT32>(tail.word() % index.size());
    const GZDItem item = index.gzdItemList[place];
    const auto stamp = static_cast<UINT32>(item.getTimeStamp());
    const int found = findIndex(index, stamp, 0, static_cast<int>(index.size()) - 1);
    FUZZ_REQUIRE(found < 0 ||
                 static_cast<UINT32>(
                     index.gzdItemList[static_cast<std::size_t>(found)].getTimeStamp()) == stamp);
    const ALLF_DATA* const record = reader.getFloatData(place);
    if (record == nullptr) continue;
    if (item.isSample()) FUZZ_REQUIRE(record->fs.time == time_of_stamp(item.getTimeStamp()));
    if (item.isRecording()) FUZZ_REQUIRE(record->rec.state == item.getRecording()->state);
  }
}

ScanOptions options_from(fuzz::Tail& tail) {
  const unsigned bits = tail.byte();
  return {.failsafe = (bits & 1) != 0,
          .fixConsistency = (bits & 2) != 0,
          .loadEvents = (bits & 4) == 0,
          .loadSamples = (bits & 8) == 0};
}

}  // namespace

FUZZ_TARGET(index) {
  static fuzz::MemoryFile file("recording");
  fuzz::Tail tail(input);
  const ScanOptions options = options_from(tail);
  StreamState state;
  state.revision = static_cast<INT16>(tail.byte() % 5);
  state.ovilo_revision = static_cast<INT16>(1 + tail.byte() % 4);
  fuzz::Tail choices(tail.block(16));
  const std::vector<std::uint8_t> recording = fuzz::recording_from(tail);
  file.set(recording);
  if (fuzz::is_too_large(file.path(), largest_filling)) return;
  const std::size_t head = fuzz::text_of(recording).find("\nENDP:\n");
  const fuzz::Input records =
      fuzz::Input(recording).subspan(head == std::string_view::npos ? 0 : head + 7);

  fuzz::ByteStream stream(records, false);
  Index index;
  try {
    preScan(stream, state, options, index);
  } catch (const GZDException&) {
    FUZZ_REQUIRE(!options.failsafe);
    return;
  }
  if (!options.fixConsistency) check_order(items_of(index.gzdItemList));
  check_entries(index, records.size(), options.fixConsistency);
  Reader reader(stream, state, index);
  reader.useState(state);
  const auto lasting = lasting_entries(items_of(index.gzdItemList));
  checkConsistency(index, options.fixConsistency,
                   [&](UINT32 item) { return reader.messageText(item); });
  reader.indexIsFinal(options.fixConsistency);
  FUZZ_REQUIRE(lasting_entries(items_of(index.gzdItemList)) == lasting);
  check_no_sample_outside(items_of(index.gzdItemList));
  check_entries(index, records.size(), options.fixConsistency);
  check_look_ups(reader, index, choices);
}
