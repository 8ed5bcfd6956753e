// What of a sample counts as there.
#ifndef GZDTABLES_SAMPLE_STATE_H
#define GZDTABLES_SAMPLE_STATE_H

#include <array>
#include <cmath>
#include <cstdint>

#include "gzd.h"

namespace gzdtables {

// Whether a number of a record was recorded and is valid.
[[nodiscard]] inline bool is_value(float value) {
  return std::isfinite(value) && value != MISSING_DATA && value != NOT_RECORDED;
}

// Whether a block records an eye, 0 left, 1 right; of no block (null) nothing is known: true.
[[nodiscard]] inline bool block_has(const RECORDINGS* block, std::size_t eye) {
  constexpr std::array<int, 2> bits{GZD_BLOCK_LEFT, GZD_BLOCK_RIGHT};
  return block == nullptr || (block->eye & bits[eye]) != 0;
}

// What of a sample is there for each eye.
struct Presence {
  std::array<bool, 2> eye{};       // recorded by block and sample
  std::array<bool, 2> position{};  // may have positions: the pupil is not lost
  std::array<bool, 2> pupil{};     // has a pupil size
  bool packed = false;             // holds packed camera data instead
};

[[nodiscard]] inline Presence presence_of(const FSAMPLE& sample, const RECORDINGS* block) {
  constexpr std::array<std::uint16_t, 2> flags{SMP_LEFT, SMP_RIGHT};
  Presence there;
  const bool has_size = (sample.flags & SMP_PUPIL_SIZE) != 0;
  for (const std::size_t eye : {0, 1}) {
    there.eye[eye] = (sample.flags & flags[eye]) != 0 && block_has(block, eye);
    there.packed |= there.eye[eye] && has_size && sample.pa[eye] < 0.0F;
  }
  for (const std::size_t eye : {0, 1}) {
    const bool usable = there.eye[eye] && !there.packed;
    there.position[eye] = usable && !(has_size && sample.pa[eye] == 0.0F);
    there.pupil[eye] = usable && has_size && sample.pa[eye] > 0.0F;
  }
  return there;
}

}  // namespace gzdtables

#endif
