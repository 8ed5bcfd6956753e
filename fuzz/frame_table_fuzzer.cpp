// Any bytes as a table of video frames.
//
// Asserts: a table is read whole or is empty; memory goes with its bytes; the walk gives each
// record once, and taking records of one frame together never gives more; the binary searches find
// what a look at every record finds, where the table is in order, and stay in bounds where it is
// not; what is found lies within the tolerance.
#include "harness.h"
#include "video/frame_table.h"

using namespace gzdconv;

namespace {

constexpr std::size_t head_bytes = 8, RECORD_BYTES = 12;
constexpr std::int64_t time_tolerance = 30;  // ms

bool read_table(AVIGZDTimeLookupTime& table, fuzz::Input bytes) {
  static fuzz::MemoryFile content("table");
  content.set(bytes);
  const fuzz::File file(std::fopen(content.path().c_str(), "rb"));
  if (!file) std::abort();
  return table.read(file.get());
}

bool is_near(const AVIGZDTime& record, int time) {
  return std::abs(std::int64_t{time} - record.frameTime()) <= time_tolerance;
}

// What a look at every record tells.
struct Seen {
  bool byEntry = true, byFrame = true, isNear = false, isInside = false;
};

Seen look_at_all(AVIGZDTimeLookupTime& table, int time) {
  Seen seen;
  const AVIGZDTime* first = nullptr;
  const AVIGZDTime* last = nullptr;
  int count = 0;
  while (const AVIGZDTime* record = table.getNextEntry()) {
    if (first == nullptr) first = record;
    seen.isNear |= is_near(*record, time);
    seen.byEntry &= last == nullptr || last->entryTime() <= record->entryTime();
    seen.byFrame &= last == nullptr || last->frameTime() <= record->frameTime();
    last = record;
    ++count;
  }
  FUZZ_REQUIRE(count == table.count());
  seen.isInside = first != nullptr && time >= first->frameTime() && time <= last->frameTime();
  return seen;
}

void check_searches(AVIGZDTimeLookupTime& table, const Seen& seen, int time, int field) {
  const AVIGZDTime* const fast = table.findAVIGZDEntry(time, field);
  const AVIGZDTime* const slow = table.secfindAVIGZDEntry(time, field);
  for (const AVIGZDTime* found : {fast, slow})
    if (found != nullptr) FUZZ_REQUIRE(found->entryTime() == time);
  if (seen.byEntry) FUZZ_REQUIRE(fast == slow);
  const AVIGZDTime* const frame = table.findFrameForGZDTime(time);
  if (frame != nullptr) FUZZ_REQUIRE(is_near(*frame, time));
  if (seen.byFrame) FUZZ_REQUIRE((frame != nullptr) == (seen.isNear && seen.isInside));
}

void check_frames(AVIGZDTimeLookupTime& table) {
  int frames = 0;
  while (const AVIGZDTime* frame = table.getNextFrame()) {
    ++frames;
    FUZZ_REQUIRE(frame->field() == 0 || frame->field() == 1);
  }
  FUZZ_REQUIRE(frames <= table.count() && 2 * frames >= table.count());
  table.stepBack();
  FUZZ_REQUIRE((table.getNextEntry() != nullptr) == (table.count() > 0));
}

}  // namespace

FUZZ_TARGET(frame_table) {
  fuzz::Tail tail(input);
  const int time = static_cast<int>(tail.integer());
  const int field = tail.byte() % 3 - 1;
  AVIGZDTimeLookupTime table(0), fresh(0), other(0);
  const bool whole = read_table(table, tail.rest());
  const std::size_t bytes = static_cast<std::size_t>(table.count()) * RECORD_BYTES;
  FUZZ_REQUIRE(whole ? tail.rest().size() >= head_bytes + bytes : bytes == 0);
  FUZZ_REQUIRE(read_table(fresh, tail.rest()) == whole && read_table(other, tail.rest()) == whole);
  check_searches(fresh, look_at_all(table, time), time, field);
  check_frames(other);
  other.print(stdout);
}
