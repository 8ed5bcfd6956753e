#include "record_frames.h"

#include <zlib.h>

#include "gzd_data.h"

namespace fuzz {

namespace {

constexpr std::size_t TAG = 2;
constexpr std::uint64_t LONGEST_FILLED_GAP = 10000;
constexpr std::uint64_t FASTEST_SAMPLES_PER_MS = 2;

constexpr unsigned CODE_START_TIME = 33, CODE_END_TIME = 65, CODE_MESSAGE = 94;

unsigned word_at(Input bytes, std::size_t place) {
  if (place + 1 >= bytes.size()) return 0;
  return static_cast<unsigned>(bytes[place]) << 8 | bytes[place + 1];
}

std::uint32_t integer_at(Input bytes, std::size_t place) {
  return word_at(bytes, place) << 16 | word_at(bytes, place + 2);
}

// A block is a length, a kind and its bytes. In the extended chain, one of another kind that has
// the length of a known block is a byte shorter.
std::size_t block_length(Input bytes, std::size_t place, bool extended) {
  const std::size_t length = bytes[place];
  const unsigned kind = place + 1 < bytes.size() ? bytes[place + 1] : 0;
  const bool known = length == 24 || length == 56 || length == 72 || length == 92;
  const bool recognised = (length == 24 && kind == 1) || (length == 92 && kind == 2) ||
                          (kind == 3 && (length == 56 || length == 72));
  return 2 + length - (extended && known && !recognised ? 1 : 0);
}

// Behind a chain of blocks and the length of 0 that closes it.
std::size_t behind_blocks(Input bytes, std::size_t place, bool extended) {
  while (place < bytes.size() && bytes[place] != 0) place += block_length(bytes, place, extended);
  return place + 1;
}

std::size_t behind_sample(Input bytes, std::size_t begin) {
  const unsigned tag = word_at(bytes, begin);
  const std::size_t eyes = ((tag & SMP_LEFT) ? 1U : 0U) + ((tag & SMP_RIGHT) ? 1U : 0U);
  std::size_t place = begin + TAG + ((tag & SMP_TIME_ABSOLUTE) ? 4 : 1);
  for (const unsigned pair : {SMP_PUPIL_POS, SMP_HREF, SMP_GAZE})
    if (tag & pair) place += 4 * eyes;
  if (tag & SMP_RESOLUTION) place += 4;
  if (tag & SMP_PUPIL_SIZE) place += 2 * eyes;
  for (const unsigned word : {SMP_STATUS, SMP_INPUT, SMP_BUTTONS})
    if (tag & word) place += 2;
  if ((tag & SMP_HEAD_DATA) && place < bytes.size())
    place += 1 + 2 * std::min<std::size_t>(bytes[place] & 15, 8);
  if (tag & SMP_EXTENDED) place = behind_blocks(bytes, place, true);
  if (tag & SMP_SKIP_BLOCKS) place = behind_blocks(bytes, place, false);
  return place;
}

std::size_t value_length(Input bytes, std::size_t place, unsigned code) {
  switch (code) {
    case CODE_MESSAGE:
      return 2 + word_at(bytes, place);
    case CODE_START_TIME:
    case CODE_END_TIME:
    case 40:
    case 41:
    case 42:
    case 43:
    case 72:
    case 73:
    case 74:
    case 75:
    case 104:
    case 105:
    case 106:
      return 4;
    case 48:
    case 51:
    case 81:
    case 83:
    case 85:
    case 86:
    case 114:
    case 115:
    case 147:
    case 180:
      return 2;
    default:
      return 0;
  }
}

std::size_t behind_event(Input bytes, std::size_t begin) {
  std::size_t place = begin + TAG;
  while (place < bytes.size() && bytes[place] != 0) {
    const unsigned code = bytes[place++];
    place += value_length(bytes, place, code);
  }
  return place + 1;
}

bool is_sample(Input bytes, std::size_t begin) {
  return (word_at(bytes, begin) & SMP_IS_SAMPLE) != 0;
}

}  // namespace

std::size_t head_length(Input recording) {
  constexpr std::string_view closing = "\nENDP:\n";
  const std::size_t found = text_of(recording).find(closing);
  return found == std::string_view::npos ? 0 : found + closing.size();
}

bool is_compressed(Input recording) {
  const std::string_view text = text_of(recording);
  const std::string_view line = text.substr(0, text.find('\n'));
  return line.find(" ZIP") != std::string_view::npos;
}

std::vector<Frame> find_frames(Input records) {
  std::vector<Frame> frames;
  std::size_t place = 0;
  while (place + TAG <= records.size()) {
    if (word_at(records, place) == 0) place += TAG;  // fail-safe reading goes on behind one
    if (word_at(records, place) == 0) break;
    const std::size_t end =
        is_sample(records, place) ? behind_sample(records, place) : behind_event(records, place);
    if (end > records.size()) break;
    frames.push_back({place, end});
    place = end;
  }
  return frames;
}

std::vector<std::uint8_t> plain_records(Input recording) {
  const Input body = recording.subspan(head_length(recording));
  if (!is_compressed(recording)) return {body.begin(), body.end()};
  std::vector<std::uint8_t> records(LARGEST_BODY);
  z_stream stream{};
  if (inflateInit(&stream) != Z_OK) return {};
  stream.next_in = const_cast<Bytef*>(body.data());
  stream.avail_in = static_cast<uInt>(body.size());
  stream.next_out = records.data();
  stream.avail_out = static_cast<uInt>(records.size());
  (void)inflate(&stream, Z_SYNC_FLUSH);  // as far as it goes
  inflateEnd(&stream);
  records.resize(stream.total_out);
  return records;
}

bool is_too_large(Input recording, std::uint64_t mostFilling) {
  const std::vector<std::uint8_t> records = plain_records(recording);
  return records.size() >= LARGEST_BODY || largest_filling(records) > mostFilling;
}

std::size_t time_offset(Input records, Frame frame) {
  if (is_sample(records, frame.begin))
    return (word_at(records, frame.begin) & SMP_TIME_ABSOLUTE) ? TAG : 0;
  const unsigned code = records[frame.begin + TAG];
  return code == CODE_START_TIME || code == CODE_END_TIME ? TAG + 1 : 0;
}

std::uint64_t largest_filling(Input records) {
  std::uint64_t filling = 0;
  std::uint32_t last = 0;
  for (const Frame frame : find_frames(records)) {
    const std::size_t offset = time_offset(records, frame);
    if (offset == 0) {
      filling += FASTEST_SAMPLES_PER_MS * records[frame.begin + TAG];  // perhaps a step of time
      continue;
    }
    const std::uint32_t time = integer_at(records, frame.begin + offset);
    const std::uint64_t apart = time > last ? time - last : last - time;
    filling += std::min(apart * FASTEST_SAMPLES_PER_MS, LONGEST_FILLED_GAP);
    last = time;
  }
  return filling;
}

}  // namespace fuzz
