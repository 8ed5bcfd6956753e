// Big-endian bytes of a recording, appended to a growing buffer.
#ifndef GZDSYNTH_BYTE_LAYOUT_H
#define GZDSYNTH_BYTE_LAYOUT_H

#include <bit>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <vector>

namespace gzdsynth {

using Bytes = std::vector<std::uint8_t>;

// The stored word of a value that was recorded but is not valid.
inline constexpr int stored_missing = -32768;

inline void put_byte(Bytes& out, unsigned value) {
  out.push_back(static_cast<std::uint8_t>(value & 0xFFU));
}

// The low 16 bits of `value`, so that 0x8000 and -32768 are the same word.
inline void put_word(Bytes& out, int value) {
  const auto bits = static_cast<unsigned>(value);
  put_byte(out, bits >> 8U);
  put_byte(out, bits);
}

inline void put_int(Bytes& out, std::uint32_t value) {
  put_word(out, static_cast<int>(value >> 16U));
  put_word(out, static_cast<int>(value & 0xFFFFU));
}

inline void put_float(Bytes& out, float value) {
  put_int(out, std::bit_cast<std::uint32_t>(value));
}

inline void put_text(Bytes& out, std::string_view text) {
  out.insert(out.end(), text.begin(), text.end());
}

inline void put_bytes(Bytes& out, const Bytes& bytes) {
  out.insert(out.end(), bytes.begin(), bytes.end());
}

// The word that stands for `value` under a prescale: rounded, held within -32767..32767.
// 1e8 and above (missing) becomes stored_missing.
inline int stored(double value, double prescale = 10.0) {
  if (!(value < 1e8)) return stored_missing;
  const double scaled = std::round(value * prescale);
  return static_cast<int>(std::fmin(std::fmax(scaled, -32767.0), 32767.0));
}

}  // namespace gzdsynth

#endif
