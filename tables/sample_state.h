// What of a sample counts as there.
#ifndef GZDTABLES_SAMPLE_STATE_H
#define GZDTABLES_SAMPLE_STATE_H

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

#include "gzd.h"

namespace gzdtables {

// Whether a number of a record was recorded and is valid.
[[nodiscard]] inline bool is_value(float value) {
  constexpr float largest = std::numeric_limits<float>::max();
  return (std::fabs(value) <= largest) & (value != MISSING_DATA) & (value != NOT_RECORDED);
}

// What the names of an eye's columns begin with.
constexpr std::array<const char*, 2> eye_name{"left_", "right_"};

constexpr float nan_value = std::numeric_limits<float>::quiet_NaN();

// The value when it is there and valid, else null. Without a branch: losses come and go.
[[nodiscard]] inline float kept(bool is_there, float value) {
  return (is_there & is_value(value)) ? value : nan_value;
}

// Whether a number is a resolution (units per degree) that can be.
[[nodiscard]] inline bool is_resolution(float value) {
  constexpr float lowest = 0.01F;
  constexpr float highest = 1e4F;
  return value >= lowest && value <= highest;
}

// Whether a block records an eye, 0 left, 1 right.
[[nodiscard]] inline bool block_has(const RECORDINGS& block, std::size_t eye) {
  return ((static_cast<unsigned>(block.eye) >> eye) & 1U) != 0;  // GZD_BLOCK_LEFT, _RIGHT
}

// The GZD_BLOCK_ eyes that the flags of a sample name.
[[nodiscard]] inline unsigned eyes_in(unsigned flags) {
  return ((flags >> 15U) & 1U) | ((flags >> 13U) & 2U);  // SMP_LEFT, SMP_RIGHT
}

// What of a sample is there for each eye, 0 left, 1 right. Bits of one number, which stays in a
// register.
class Presence {
 public:
  // The eye is recorded by block and sample.
  [[nodiscard]] bool eye(std::size_t side) const { return has(side); }
  // It may have positions: the pupil is not lost.
  [[nodiscard]] bool position(std::size_t side) const { return has(position_bit + side); }
  // It has a pupil size.
  [[nodiscard]] bool pupil(std::size_t side) const { return has(pupil_bit + side); }
  // The sample holds packed camera data instead of positions.
  [[nodiscard]] bool packed() const { return has(packed_bit); }

 private:
  static constexpr std::size_t position_bit = 2;
  static constexpr std::size_t pupil_bit = 4;
  static constexpr std::size_t packed_bit = 6;
  static constexpr unsigned both_eyes = GZD_BLOCK_BOTH;

  explicit Presence(unsigned bits) : bits_(bits) {}
  [[nodiscard]] bool has(std::size_t bit) const { return ((bits_ >> bit) & 1U) != 0; }
  friend Presence presence_of(const FSAMPLE& sample, unsigned eyes);

  unsigned bits_;
};

// `eyes`: the GZD_BLOCK_ eyes of the block, GZD_BLOCK_BOTH outside blocks.
[[nodiscard]] inline Presence presence_of(const FSAMPLE& sample, unsigned eyes) {
  const auto by_eye = [&](auto test) {
    return static_cast<unsigned>(test(sample.pa[0])) | static_cast<unsigned>(test(sample.pa[1]))
                                                           << 1U;
  };
  const unsigned flags = sample.flags;
  const unsigned sized = (flags & SMP_PUPIL_SIZE) != 0 ? Presence::both_eyes : 0U;
  const unsigned present = eyes_in(flags) & eyes;
  const bool packed = (present & sized & by_eye([](float size) { return size < 0.0F; })) != 0;
  const unsigned usable = packed ? 0U : present;
  const unsigned lost = sized & by_eye([](float size) { return size == 0.0F; });
  const unsigned pupils = sized & by_eye([](float size) { return size > 0.0F; });
  return Presence(present | (usable & ~lost) << Presence::position_bit |
                  (usable & pupils) << Presence::pupil_bit |
                  static_cast<unsigned>(packed) << Presence::packed_bit);
}

}  // namespace gzdtables

#endif
