// The time that begins every sample line.
#ifndef GZDCONV_SAMPLE_TIME_H
#define GZDCONV_SAMPLE_TIME_H

#include <array>
#include <cstddef>
#include <cstring>

#include "cli/options.h"
#include "gzd_data.h"

namespace gzdconv {

constexpr std::array<std::array<char, 2>, 100> make_digit_pairs() {
  std::array<std::array<char, 2>, 100> pairs{};
  for (std::size_t n = 0; n < pairs.size(); ++n)
    pairs[n] = {static_cast<char>('0' + n / 10), static_cast<char>('0' + n % 10)};
  return pairs;
}

// The digits of time / 100: they stay for most samples, so that two digits a sample are new.
class TimeDigits {
 public:
  // Writes the digits of a time at `place`, and returns their end. Eight bytes are stored.
  char* write(char* place, UINT32 time) {
    if (time < base_ || time - base_ >= 100) {
      if (time < 100) return write_short(place, time);
      keep(time);
    }
    // Read first: for all the compiler knows, the stores below may reach these members.
    const std::size_t length = length_;
    const auto& last_two = digit_pairs[time - base_];
    std::memcpy(place, text_, sizeof text_);
    std::memcpy(place + length, last_two.data(), last_two.size());
    return place + length + last_two.size();
  }

 private:
  static constexpr auto digit_pairs = make_digit_pairs();

  static char* write_short(char* place, UINT32 time);
  void keep(UINT32 time);

  UINT32 base_ = 100;
  char text_[8] = {'1'};
  std::size_t length_ = 1;
};

extern TimeDigits time_digits;

// Makes a time that ends at `end` one with half-milliseconds, eight characters wide or more.
// Returns the end.
char* write_half(char* place, char* end, const FSAMPLE& sample);

// Writes the time of a sample at `place`, in the line buffer, and returns its end.
inline char* write_sample_time(char* place, const FSAMPLE& sample) {
  char* const end = time_digits.write(place, sample.time);
  return options.float_time == 0 ? end : write_half(place, end, sample);
}

}  // namespace gzdconv

#endif
