// The table of ready columns and the slower ways of the numbers of samples.
#include "asc/sample_number.h"

#include <iterator>

#include "asc/number_form.h"

namespace gzdconv {

namespace {

using sample_number::Cell;
using sample_number::ReadyCells;

// Plain arrays: all of this is worked out by the compiler, which allows only so many steps.
struct Quad {
  char text[4];
};
struct Quads {
  Quad of[1000];
};

constexpr char digit_of(std::size_t number, std::size_t power) {
  return static_cast<char>('0' + number / power % 10);
}

// "\t123", leading zeros blank.
constexpr Quads make_heads() {
  Quads heads{};
  for (std::size_t n = 0; n < std::size(heads.of); ++n) {
    Quad& head = heads.of[n] = {{'\t', ' ', ' ', ' '}};
    std::size_t place = std::size(head.text);
    for (std::size_t rest = n; rest != 0; rest /= 10) head.text[--place] = digit_of(rest, 1);
  }
  return heads;
}

// "45.6" after other digits.
constexpr Quads make_tails() {
  Quads tails{};
  for (std::size_t n = 0; n < std::size(tails.of); ++n)
    tails.of[n] = {{digit_of(n, 100), digit_of(n, 10), '.', digit_of(n, 1)}};
  return tails;
}

// "\t   45.6", below 100.
constexpr Cell make_small(std::size_t n) {
  return {{'\t', ' ', ' ', ' ', n >= 100 ? digit_of(n, 100) : ' ', digit_of(n, 10), '.',
           digit_of(n, 1)}};
}

constexpr Quads heads = make_heads();
constexpr Quads tails = make_tails();

constexpr Cell make_cell(std::size_t tenths) {
  if (tenths < 1000) return make_small(tenths);
  const auto& head = heads.of[tenths / 1000].text;
  const auto& tail = tails.of[tenths % 1000].text;
  return {{head[0], head[1], head[2], head[3], tail[0], tail[1], tail[2], tail[3]}};
}

constexpr ReadyCells make_cells() {
  ReadyCells cells{};
  for (std::size_t n = 0; n < std::size(cells.of); ++n) cells.of[n] = make_cell(n);
  return cells;
}

}  // namespace

constinit const ReadyCells sample_number::ready_cells = make_cells();

char* write_any_tenths(char* place, float value) {
  if (has_usual_form() && has_ready_signed_tenths(value))
    return write_ready_signed_tenths<false>(place, value);
  return write_recorded(place, value, form_of(1));
}

}  // namespace gzdconv
