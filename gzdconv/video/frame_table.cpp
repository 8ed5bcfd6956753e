// Reads a frame table, and finds its records by time.
#include "video/frame_table.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace gzdconv {

namespace {

constexpr std::uint32_t table_magic = 0xAE5A1000;
constexpr std::size_t record_size = 12;
constexpr int frame_tolerance = 30;  // ms
constexpr std::size_t max_session_name = 19;
constexpr std::size_t max_session_path = 1023;

constexpr std::uint32_t field_bit = 0x80000000;
constexpr std::uint16_t magnitude_mask = 0x1FFF;
constexpr std::uint16_t negative_bit = 0x2000;
constexpr std::uint16_t first_marker_bit = 0x4000;
constexpr std::uint16_t second_marker_bit = 0x8000;

std::uint16_t little_endian_16(const unsigned char* bytes) {
  return static_cast<std::uint16_t>(bytes[0] | (bytes[1] << 8));
}

std::uint32_t little_endian_32(const unsigned char* bytes) {
  return little_endian_16(bytes) | (static_cast<std::uint32_t>(little_endian_16(bytes + 2)) << 16);
}

bool read_word(FILE* file, std::uint32_t& word) {
  unsigned char bytes[4];
  if (std::fread(bytes, sizeof bytes, 1, file) != 1) return false;
  word = little_endian_32(bytes);
  return true;
}

bool read_record(FILE* file, AVIGZDTime& record) {
  unsigned char bytes[record_size];
  if (std::fread(bytes, sizeof bytes, 1, file) != 1) return false;
  record.frame_word = little_endian_32(bytes);
  record.entry_time = static_cast<std::int32_t>(little_endian_32(bytes + 4));
  record.offset_word = little_endian_16(bytes + 8);
  return true;
}

std::uint16_t packed_offset(int difference) {
  const auto short_difference = static_cast<std::int16_t>(difference);
  if (short_difference > 0) return static_cast<std::uint16_t>(short_difference) & magnitude_mask;
  return static_cast<std::uint16_t>((-short_difference & magnitude_mask) | negative_bit);
}

}  // namespace

AVIGZDTime::AVIGZDTime(int frame_number, bool field, int entry, int frame_time, bool first_marker,
                       bool second_marker)
    : frame_word((static_cast<std::uint32_t>(frame_number) & ~field_bit) | (field ? field_bit : 0)),
      entry_time(entry),
      offset_word(static_cast<std::uint16_t>(
          packed_offset(static_cast<int>(static_cast<std::uint32_t>(frame_time) -
                                         static_cast<std::uint32_t>(entry))) |
          (first_marker ? first_marker_bit : 0) | (second_marker ? second_marker_bit : 0))) {}

int AVIGZDTime::frameNumber() const {
  return static_cast<int>(frame_word & ~field_bit);
}

int AVIGZDTime::field() const {
  return (frame_word & field_bit) != 0;
}

// Added as unsigned words: times of a damaged table may wrap around.
int AVIGZDTime::frameTime() const {
  const auto magnitude = static_cast<std::uint32_t>(offset_word & magnitude_mask);
  const auto entry = static_cast<std::uint32_t>(entry_time);
  return static_cast<int>((offset_word & negative_bit) != 0 ? entry - magnitude
                                                            : entry + magnitude);
}

int AVIGZDTime::firstMarker() const {
  return (offset_word & first_marker_bit) != 0;
}

int AVIGZDTime::secondMarker() const {
  return (offset_word & second_marker_bit) != 0;
}

void AVIGZDTime::print(FILE* stream) const {
  std::fprintf(stream != nullptr ? stream : stdout, "%d\t%d\t%d\t%d\t%d\t%d\n", frameNumber(),
               field(), entryTime(), frameTime(), firstMarker(), secondMarker());
}

bool AVIGZDTimeLookupTime::read(FILE* file) {
  records_.clear();
  cursor_ = 0;
  std::uint32_t count = 0;
  if (!read_word(file, count) || static_cast<std::int32_t>(count) < 0) {
    std::puts("Read Error. Cannot read the number of records");
    return false;
  }
  std::uint32_t magic = 0;
  if (!read_word(file, magic) || magic != table_magic) {
    std::puts("Bad magic! aborting read!!! ");
    return false;
  }
  return read_records(file, static_cast<int>(count));
}

bool AVIGZDTimeLookupTime::read_records(FILE* file, int claimed) {
  AVIGZDTime record;
  for (int i = 0; i < claimed; ++i) {
    if (!read_record(file, record)) {
      std::printf("Read Error. Cannot read record %d! Aborting....\n", i);
      records_.clear();
      return false;
    }
    records_.push_back(record);
  }
  return true;
}

void AVIGZDTimeLookupTime::print(FILE* stream) const {
  for (const AVIGZDTime& record : records_) record.print(stream);
}

const AVIGZDTime* AVIGZDTimeLookupTime::findFrameForGZDTime(int time) const {
  return findFrameForGZDTime(0, count(), time);
}

const AVIGZDTime* AVIGZDTimeLookupTime::findFrameForGZDTime(int lo, int hi, int time) const {
  if (records_.empty()) return nullptr;
  if (time > records_.back().frameTime() || time < records_.front().frameTime()) return nullptr;
  lo = std::max(lo, 0);
  hi = std::min(hi, count());
  while (lo <= hi) {
    const int mid = lo + (hi - lo) / 2;
    if (!holds(mid)) {  // `hi` starts one after the last record
      hi = mid - 1;
      continue;
    }
    const std::int64_t distance = std::int64_t{time} - at(mid).frameTime();
    if (distance >= -frame_tolerance && distance <= frame_tolerance) return &at(mid);
    if (distance < 0) {
      hi = mid - 1;
    } else {
      lo = mid + 1;
    }
  }
  return nullptr;
}

const AVIGZDTime* AVIGZDTimeLookupTime::findAVIGZDEntry(int time, int field) const {
  return binfindAVIGZDEntry(0, count(), time, field);
}

const AVIGZDTime* AVIGZDTimeLookupTime::binfindAVIGZDEntry(int lo, int hi, int time,
                                                           int field) const {
  if (records_.empty() || time > records_.back().entryTime()) return nullptr;
  lo = std::max(lo, 0);
  hi = std::min(hi, count());
  while (lo <= hi) {
    int mid = lo + (hi - lo) / 2;
    if (!holds(mid) || time < at(mid).entryTime()) {
      hi = mid - 1;
    } else if (time > at(mid).entryTime()) {
      lo = mid + 1;
    } else {
      while (mid > 0 && at(mid - 1).entryTime() == time) --mid;
      return choose_field(mid, time, field);
    }
  }
  return nullptr;
}

const AVIGZDTime* AVIGZDTimeLookupTime::secfindAVIGZDEntry(int time, int field) const {
  for (int i = 0; i < count(); ++i) {
    if (at(i).entryTime() == time) return choose_field(i, time, field);
  }
  return nullptr;
}

const AVIGZDTime* AVIGZDTimeLookupTime::choose_field(int index, int time, int field) const {
  if (field == any_field || field == at(index).field() || !holds(index + 1)) return &at(index);
  const AVIGZDTime& next = at(index + 1);
  return next.field() == field && next.entryTime() == time ? &next : &at(index);
}

const AVIGZDTime* AVIGZDTimeLookupTime::getNextEntry() {
  return holds(cursor_) ? &at(cursor_++) : nullptr;
}

void AVIGZDTimeLookupTime::stepBack() {
  if (cursor_ > 0) --cursor_;
}

const AVIGZDTime* AVIGZDTimeLookupTime::getNextFrame() {
  const AVIGZDTime* const record = getNextEntry();
  if (record == nullptr || !holds(cursor_)) return record;
  const AVIGZDTime& next = at(cursor_);
  if (next.frameNumber() != record->frameNumber()) return record;
  ++cursor_;
  return next.frameTime() < record->frameTime() ? &next : record;
}

void AVIGZDTimeLookupTime::setSessionName(const char* name) {
  session_name_ = std::string_view(name).substr(0, max_session_name);
}

void AVIGZDTimeLookupTime::setSessionPath(const char* path) {
  session_path_ = std::string_view(path).substr(0, max_session_path);
}

}  // namespace gzdconv
