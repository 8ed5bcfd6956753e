// Any bytes as a table of video frames.
//
// Asserts: a table is read whole or is empty; memory goes with its bytes; the walk gives each
// record once, and taking records of one frame together never gives more; the binary searches find
// what a look at every record finds, where the table is in order, and stay in bounds where it is
// not; what is found lies within the tolerance; the values of a record made here come back.
#include "video/frame_table.h"

#include <memory>

#include "fuzz_support.h"

using namespace gzdconv;

namespace {

constexpr std::size_t HEAD_BYTES = 8, RECORD_BYTES = 12;
constexpr std::int64_t TOLERANCE = 30;  // ms

struct CloseFile {
  void operator()(FILE* file) const { std::fclose(file); }
};

bool read_table(AVIGZDTimeLookupTime& table, fuzz::Input bytes) {
  static fuzz::MemoryFile content("table");
  content.set(bytes);
  const std::unique_ptr<FILE, CloseFile> file(std::fopen(content.path().c_str(), "rb"));
  if (!file) std::abort();
  return table.read(file.get());
}

struct Order {
  bool byEntry = true, byFrame = true;
};

Order order_of(AVIGZDTimeLookupTime& table) {
  Order order;
  const AVIGZDTime* last = nullptr;
  int count = 0;
  while (const AVIGZDTime* record = table.getNextEntry()) {
    ++count;
    if (last != nullptr) {
      order.byEntry &= last->entryTime() <= record->entryTime();
      order.byFrame &= last->frameTime() <= record->frameTime();
    }
    last = record;
  }
  FUZZ_REQUIRE(count == table.count());
  return order;
}

bool is_near(const AVIGZDTime& record, int time) {
  const std::int64_t apart = std::int64_t{time} - record.frameTime();
  return apart >= -TOLERANCE && apart <= TOLERANCE;
}

// Looks for `time` in a fresh reading of the table, whose cursor is at its beginning.
void check_searches(AVIGZDTimeLookupTime& table, Order order, int time, int field) {
  const AVIGZDTime* const fast = table.findAVIGZDEntry(time, field);
  const AVIGZDTime* const slow = table.secfindAVIGZDEntry(time, field);
  if (fast != nullptr) FUZZ_REQUIRE(fast->entryTime() == time);
  if (slow != nullptr) FUZZ_REQUIRE(slow->entryTime() == time);
  if (order.byEntry) FUZZ_REQUIRE(fast == slow);
  const AVIGZDTime* const frame = table.findFrameForGZDTime(time);
  if (frame != nullptr) FUZZ_REQUIRE(is_near(*frame, time));
}

void check_frame_search(AVIGZDTimeLookupTime& table, int time) {
  const AVIGZDTime* first = nullptr;
  const AVIGZDTime* last = nullptr;
  bool near = false;
  while (const AVIGZDTime* record = table.getNextEntry()) {
    if (first == nullptr) first = record;
    last = record;
    near |= is_near(*record, time);
  }
  const bool inside = first != nullptr && time >= first->frameTime() && time <= last->frameTime();
  FUZZ_REQUIRE((table.findFrameForGZDTime(time) != nullptr) == (near && inside));
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

void check_record(fuzz::Tail& tail) {
  const int frame = static_cast<int>(tail.integer() & 0x7FFFFFFF);
  const int entry = static_cast<int>(tail.integer() >> 2);
  const int offset = tail.word() % 8192;
  const unsigned bits = tail.byte();
  const int sign = bits & 8 ? -1 : 1;
  const AVIGZDTime record(frame, bits & 1, entry, entry + sign * offset, bits & 2, bits & 4);
  FUZZ_REQUIRE(record.frameNumber() == frame && record.entryTime() == entry);
  FUZZ_REQUIRE(record.frameTime() == entry + sign * offset);
  FUZZ_REQUIRE(record.field() == static_cast<int>(bits & 1));
  FUZZ_REQUIRE((record.firstMarker() != 0) == ((bits & 2) != 0));
  FUZZ_REQUIRE((record.secondMarker() != 0) == ((bits & 4) != 0));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Tail tail({data, size});
  const int time = static_cast<int>(tail.integer());
  const int field = tail.byte() % 3 - 1;
  AVIGZDTimeLookupTime table(0), fresh(0), other(0);
  const bool whole = read_table(table, tail.rest());
  if (!whole) FUZZ_REQUIRE(table.count() == 0);
  FUZZ_REQUIRE(static_cast<std::size_t>(table.count()) * RECORD_BYTES <= size);
  if (whole)
    FUZZ_REQUIRE(tail.rest().size() >=
                 HEAD_BYTES + static_cast<std::size_t>(table.count()) * RECORD_BYTES);
  FUZZ_REQUIRE(read_table(fresh, tail.rest()) == whole && fresh.count() == table.count());
  FUZZ_REQUIRE(read_table(other, tail.rest()) == whole);
  const Order order = order_of(table);
  check_searches(fresh, order, time, field);
  if (order.byFrame) check_frame_search(fresh, time);
  check_frames(other);
  other.print(stdout);
  check_record(tail);
  return 0;
}
