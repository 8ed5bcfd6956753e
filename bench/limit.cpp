// limit: the floor that the converter is measured against. One pass over a plain recording of gaze
// samples, which prints their default lines and nothing else:
//
//   1. the records lie in one read buffer and are decoded where they stand;
//   2. a sample's place of gaze, pupil and status follows from its tag, worked out once a run of
//      one tag;
//   3. a stored word is looked up as the eight characters of its column, made when first met;
//   4. of a time, all digits but two stay for up to a hundred milliseconds;
//   5. lines leave in writes of 128 KiB, each at a multiple of its size.
//
// No index, no order, no repairs, no options: a recording that needs any of them is refused, or
// differs from the converter's text, which bench/convert checks before it measures.
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string_view>
#include <vector>

#include "gzd_data.h"
#include "limit_buffers.h"

namespace {

using Cell = std::uint64_t;

// ---- cells --------------------------------------------------------------------------------------

constexpr unsigned missing_word = 0x8000;
constexpr Cell mark_of_cells = 1;  // set in the tab that each begins with
constexpr std::string_view missing_cell = "\t   .";

char* put(char* out, std::string_view text) {
  std::memcpy(out, text.data(), text.size());
  return out + text.size();
}

char* put(char* out, Cell cell) {
  std::memcpy(out, &cell, sizeof cell);
  return out + sizeof cell;
}

// "\t%7.1f" of a float: times 10 it is exact in double precision, so the nearest integer has the
// digits.
Cell cell_of(float value) {
  char text[sizeof(Cell)];
  std::memset(text, ' ', sizeof text);
  text[0] = '\t';
  auto tenths = static_cast<long>(std::nearbyint(std::fabs(double{value}) * 10.0));
  char* p = text + sizeof text;
  *--p = static_cast<char>('0' + tenths % 10);
  *--p = '.';
  for (tenths /= 10; p > text + 1; tenths /= 10) {
    *--p = static_cast<char>('0' + tenths % 10);
    if (tenths < 10) break;
  }
  if (tenths >= 10 || (std::signbit(value) && p <= text + 1)) refuse("a value above seven columns");
  if (std::signbit(value)) *--p = '-';
  return std::bit_cast<Cell>(text);
}

// The columns of the words stored under one prescale. 0 stands for a column not made yet and for
// one that depends on more than its word.
class CellTable {
 public:
  CellTable() : cells_(65536) {}

  void set_prescale(float prescale) {
    if (prescale == prescale_) return;
    prescale_ = prescale;
    cells_.assign(cells_.size(), 0);
  }
  [[nodiscard]] const Cell* cells() const { return cells_.data(); }
  Cell make(unsigned word) {
    if (cells_[word] == 0) {
      const auto value = static_cast<float>(static_cast<std::int16_t>(word));
      cells_[word] = cell_of(prescale_ > 0.1F ? value / prescale_ : value);
    }
    return cells_[word];
  }

 private:
  std::vector<Cell> cells_;
  float prescale_ = 1.0F;
};

// ---- lines --------------------------------------------------------------------------------------

constexpr std::size_t tag_size = 2;
constexpr unsigned half_ms = SMP_HALF_MS;  // no trace of it in a line

// Where a sample's fields lie in its record.
struct Layout {
  unsigned tag;
  bool absolute_time;
  std::size_t gaze, pupil, status, size;

  explicit Layout(unsigned the_tag)
      : tag(the_tag & ~half_ms), absolute_time((tag & SMP_TIME_ABSOLUTE) != 0) {
    constexpr unsigned wanted = SMP_GAZE | SMP_PUPIL_SIZE;
    constexpr unsigned refused = SMP_HEAD_DATA | SMP_EXTENDED | SMP_SKIP_BLOCKS;
    if ((tag & wanted) != wanted || (tag & refused) != 0) refuse("samples of another kind");
    if (eyes() == 0) refuse("samples without an eye");
    const auto words = [this](unsigned flag, std::size_t count) {
      return (tag & flag) != 0 ? 2 * count : 0;
    };
    gaze = tag_size + (absolute_time ? 4 : 1) + words(SMP_PUPIL_POS, 2 * eyes()) +
           words(SMP_HREF, 2 * eyes());
    pupil = gaze + words(SMP_GAZE, 2 * eyes()) + words(SMP_RESOLUTION, 2);
    status = pupil + words(SMP_PUPIL_SIZE, eyes());
    size = status + words(SMP_STATUS, 1) + words(SMP_INPUT, 1) + words(SMP_BUTTONS, 1);
  }
  [[nodiscard]] bool left() const { return (tag & SMP_LEFT) != 0; }
  [[nodiscard]] bool right() const { return (tag & SMP_RIGHT) != 0; }
  [[nodiscard]] std::size_t eyes() const { return (left() ? 1 : 0) + (right() ? 1 : 0); }
};

// The ends of lines, by the five status bits that show in them.
struct Tails {
  static constexpr unsigned shift = 8, mask = 0x1F;
  std::array<Cell, mask + 1> text{};
  std::size_t length = 0;

  Tails(const Layout& layout, bool with_flags) {
    const bool shown = with_flags && (layout.tag & SMP_STATUS) != 0;
    for (unsigned bits = 0; bits <= mask; ++bits) {
      char line_end[sizeof(Cell)] = {};
      char* p = line_end;
      const auto flag = [&](unsigned bit, char letter) { *p++ = (bits & bit) != 0 ? letter : '.'; };
      if (shown) {
        *p++ = '\t';
        flag(0x10, 'I');
        if (layout.left()) flag(0x01, 'C'), flag(0x04, 'R');
        if (layout.right()) flag(0x02, 'C'), flag(0x08, 'R');
      }
      *p++ = '\n';
      length = static_cast<std::size_t>(p - line_end);
      text[bits] = std::bit_cast<Cell>(line_end);
    }
  }
};

constexpr std::array<char, 200> digit_pairs = [] {
  std::array<char, 200> pairs{};
  for (std::size_t i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

// All digits of the times from `base` to base + 99 but the last two.
struct TimeText {
  Cell digits = 0;
  std::size_t length = 0;
  std::uint64_t base = ~std::uint64_t{0} - 1000;  // no time lies in its hundred

  TimeText() = default;
  explicit TimeText(std::uint32_t time) : base(time - time % 100) {
    if (time < 100) refuse("times of less than three digits");
    char text[sizeof digits] = {};
    length =
        static_cast<std::size_t>(std::to_chars(text, text + sizeof text, base / 100).ptr - text);
    digits = std::bit_cast<Cell>(text);
  }
};

class Limit {
 public:
  Limit(const char* input, const char* output) : in_(input), out_(output), cursor_(out_.begin()) {}

  // Returns the number of lines.
  unsigned long run() {
    read_head();
    while (read_record()) {
    }
    out_.write_up_to(cursor_);
    return lines_;
  }

 private:
  void read_head();
  std::string_view read_line();
  bool read_record();
  void read_event(unsigned tag);
  void end_block(std::uint32_t time);
  void read_samples(unsigned tag);
  template <std::size_t eyes>
  void print_run(const Layout& layout, const Tails& tails);
  template <std::size_t eyes>
  char* print_special(char* out, const Layout& layout, const Byte* sample);

  Input in_;
  Output out_;
  char* cursor_;
  CellTable gaze_, pupil_;
  TimeText time_text_;
  std::uint32_t time_ = 0;
  bool with_flags_ = false;
  bool in_block_ = false;
  bool last_is_late_ = false;  // the last sample is half a millisecond behind time_
  unsigned long lines_ = 0;
};

// ---- samples ------------------------------------------------------------------------------------

// The columns of a sample with missing values, or with a word that has no cell yet.
template <std::size_t eyes>
char* Limit::print_special(char* out, const Layout& layout, const Byte* sample) {
  for (std::size_t eye = 0; eye < eyes; ++eye) {
    const unsigned pupil = word_at(sample + layout.pupil + 2 * eye);
    if ((pupil & 0x8000) != 0) refuse("samples of raw camera data");
    for (std::size_t axis = 0; axis < 2; ++axis) {
      const unsigned word = word_at(sample + layout.gaze + 4 * eye + 2 * axis);
      const bool missing = pupil == 0 || word == missing_word;
      out = missing ? put(out, missing_cell) : put(out, gaze_.make(word));
    }
    out = put(out, pupil == 0 ? cell_of(0.0F) : pupil_.make(pupil));
  }
  return out;
}

// Prints the samples that follow with one tag, as far as they lie in the buffer. What the loop
// needs stands in locals whose address nobody has, so that no byte written can change it.
template <std::size_t eyes>
void Limit::print_run(const Layout& layout, const Tails& tails) {
  const unsigned tag = layout.tag;
  const bool absolute_time = layout.absolute_time;
  const std::size_t gaze_at = layout.gaze, pupil_at = layout.pupil, status_at = layout.status;
  const std::size_t record_size = layout.size;
  const std::size_t tail_length = tails.length;
  const Cell* const gaze = gaze_.cells();
  const Cell* const pupil = pupil_.cells();
  const Byte* p = in_.next;
  const Byte* const stop = in_.stop();
  const char* const full = out_.full();
  char* out = cursor_;
  TimeText text = time_text_;
  std::uint32_t time = time_;
  unsigned long lines = 0;
  for (; p < stop && (word_at(p) & ~half_ms) == tag; p += record_size, ++lines) {
    if (out >= full) [[unlikely]] {
      out = out_.write_piece(out);
    }
    time = absolute_time ? integer_at(p + tag_size) : time + p[tag_size];
    if (time - text.base >= 100) [[unlikely]]
      text = TimeText(time);
    put(out, text.digits);
    out += text.length;
    std::memcpy(out, &digit_pairs[2 * (time - text.base)], 2);
    out += 2;
    Cell all = ~Cell{0};
    const auto put_cell = [&](std::size_t place, Cell cell) {
      put(out + sizeof(Cell) * place, cell);
      all &= cell;
    };
    for (std::size_t eye = 0; eye < eyes; ++eye) {
      put_cell(3 * eye, gaze[word_at(p + gaze_at + 4 * eye)]);
      put_cell(3 * eye + 1, gaze[word_at(p + gaze_at + 4 * eye + 2)]);
      put_cell(3 * eye + 2, pupil[word_at(p + pupil_at + 2 * eye)]);
    }
    if ((all & mark_of_cells) != 0) [[likely]]
      out += 3 * eyes * sizeof(Cell);
    else
      out = print_special<eyes>(out, layout, p);
    put(out, tails.text[word_at(p + status_at) >> Tails::shift & Tails::mask]);
    out += tail_length;
  }
  if (lines > 0) last_is_late_ = (word_at(p - record_size) & half_ms) != 0;
  in_.next = p;
  cursor_ = out;
  time_text_ = text;
  time_ = time;
  lines_ += lines;
}

void Limit::read_samples(unsigned tag) {
  if (!in_block_) refuse("samples outside blocks");
  const Layout layout(tag);
  const Tails tails(layout, with_flags_);
  if (layout.eyes() == 2)
    print_run<2>(layout, tails);
  else
    print_run<1>(layout, tails);
}

// ---- events and the file's head -----------------------------------------------------------------

constexpr unsigned field_message = 94;
constexpr unsigned field_gaze_prescale = 48;
constexpr unsigned field_end_time = 65;

constexpr std::string_view codes_of_words = "\x30\x33\x51\x53\x55\x56\x5E\x72\x73\x93\xB4";
constexpr std::string_view codes_of_double_words =
    "\x21\x28\x29\x2A\x2B\x41\x48\x49\x4A\x4B\x68\x69\x6A";

// Bytes of the value behind a field code; a message's text comes on top of its length.
std::size_t size_of_field(unsigned code) {
  if (codes_of_words.find(static_cast<char>(code)) != std::string_view::npos) return 2;
  if (codes_of_double_words.find(static_cast<char>(code)) != std::string_view::npos) return 4;
  refuse("an event with an unknown field");
}

// A sample half a millisecond behind the end of its block lies outside: its line, the last one in
// the buffer, goes.
void Limit::end_block(std::uint32_t time) {
  in_block_ = false;
  if (!last_is_late_ || time_ != time || cursor_ == out_.begin()) return;
  do --cursor_;
  while (cursor_ != out_.begin() && cursor_[-1] != '\n');
  --lines_;
}

void Limit::read_event(unsigned tag) {
  const unsigned type = tag >> 8 & 0x3F;
  const Byte* p = in_.next + tag_size;
  const Byte* const limit = in_.next + longest_record / 2;
  std::uint32_t time = 0;
  while (const unsigned code = *p++) {
    if (code == field_gaze_prescale && type == GZD_START_SAMPLES)
      gaze_.set_prescale(static_cast<float>(word_at(p)));
    if (code == field_end_time) time = integer_at(p);
    const unsigned text = code == field_message ? word_at(p) : 0;
    p += size_of_field(code) + text;
    if (p > limit) refuse("an event that is too long");
  }
  if (type == GZD_START_SAMPLES) in_block_ = true;
  if (type == GZD_END_SAMPLES) end_block(time);
  in_.next = p;
}

bool Limit::read_record() {
  while (in_.next >= in_.stop())
    if (!in_.refill()) return false;
  const unsigned tag = word_at(in_.next);
  if (tag == 0) return false;
  if ((tag & SMP_IS_SAMPLE) != 0)
    read_samples(tag);
  else
    read_event(tag);
  return true;
}

std::string_view Limit::read_line() {
  const std::string_view text(reinterpret_cast<const char*>(in_.next), longest_record / 2);
  const std::size_t length = text.find('\n');
  if (length == text.npos) refuse("not a recording");
  in_.next += length + 1;
  return text.substr(0, length);
}

void Limit::read_head() {
  const std::string_view magic = read_line();
  if (!magic.starts_with("MORVEN_TECH_") || magic.ends_with(" ZIP"))
    refuse("not a plain recording");
  for (std::string_view line = read_line(); line != "ENDP:"; line = read_line()) {
    if (line.starts_with("VERSION: OVILO OSPREY")) refuse("a tracker of the fourth generation");
    if (line.starts_with("VERSION: OVILO KESTREL ")) with_flags_ = true;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "Usage: limit RECORDING.gzd OUTPUT\n");
    return 2;
  }
  try {
    std::printf("samples %lu\n", Limit(argv[1], argv[2]).run());
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "limit: %s\n", error.what());
    return 1;
  }
}
