// Cells that are not made anew each time: numbers that trackers record again and again, and times
// that count on.
#ifndef GZDTOOL_READY_CELLS_H
#define GZDTOOL_READY_CELLS_H

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>

#include "sinks/cell_text.h"

namespace gzdtool {

// Numbers as write_float writes them. Tenths up to 3276.7, nearly all that trackers record, are
// made once and kept.
class ReadyFloats {
 public:
  ReadyFloats() : cells_(std::make_unique<std::array<Cell, tenths>>()) {}

  // Writes up to 8 bytes more than it counts.
  [[nodiscard]] char* write(char* to, float value) {
    const float scaled = value * 10.0F;
    if (!(scaled >= 1.0F && scaled < static_cast<float>(tenths - 1))) return write_float(to, value);
    const auto place = static_cast<std::uint32_t>(scaled + 0.5F);
    if (static_cast<float>(place) / 10.0F != value) return write_float(to, value);
    Cell& cell = (*cells_)[place];
    if (cell.size == 0) [[unlikely]]
      make(cell, value);
    std::memcpy(to, &cell, sizeof cell);
    return to + cell.size;
  }

 private:
  static constexpr std::size_t tenths = 1 << 15;

  struct Cell {
    char text[7];
    std::uint8_t size;  // 0: not made yet
  };

  static void make(Cell& cell, float value) {
    char text[longest_number];
    cell.size = static_cast<std::uint8_t>(write_float(text, value) - text);
    std::memcpy(cell.text, text, cell.size);
  }

  std::unique_ptr<std::array<Cell, tenths>> cells_;
};

// Numbers as write_double writes them. Whole and half ones that rise by less than ten change one
// digit of the text before.
class RisingNumber {
 public:
  // Writes up to 16 bytes more than it counts.
  [[nodiscard]] char* write(char* to, double value) {
    constexpr double highest = 4e9;
    if (!(value >= 0 && value <= highest) || std::signbit(value)) return write_double(to, value);
    const auto whole = static_cast<std::uint32_t>(value);
    const double rest = value - whole;
    if (rest != 0 && rest != 0.5) return write_double(to, value);
    count_to(whole);
    std::memcpy(to, text_.data(), text_.size());
    to += size_;
    if (rest == 0) return to;
    std::memcpy(to, ".5", 2);
    return to + 2;
  }

 private:
  void count_to(std::uint32_t whole) {
    const std::uint32_t step = whole - whole_;
    char& last = text_[size_ - 1];
    whole_ = whole;
    if (step <= static_cast<std::uint32_t>('9' - last))
      last = static_cast<char>(last + static_cast<char>(step));
    else
      size_ = static_cast<std::size_t>(write_digits(text_.data(), whole) - text_.data());
  }

  std::uint32_t whole_ = 0;
  std::array<char, 16> text_{'0'};
  std::size_t size_ = 1;
};

}  // namespace gzdtool

#endif
