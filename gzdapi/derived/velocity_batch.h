// Velocities of neighbouring samples at equal intervals, computed together.
#ifndef GZDAPI_VELOCITY_BATCH_H
#define GZDAPI_VELOCITY_BATCH_H

#include <array>
#include <cstddef>
#include <cstring>
#include <iterator>

#include "derived/pair_series.h"
#include "gzd_data.h"
#include "record/Sample.h"

namespace gzd {

// What velocities depend on beyond the samples.
struct VelocitySettings {
  unsigned kinds = GZD_VELOCITY_ALL;
  float defaultRx = MISSING_DATA;
  float defaultRy = MISSING_DATA;
  int sampleRate = 0;
  int ovilo_revision = 1;

  // Bit by bit, at once: there is nothing between the members.
  bool operator==(const VelocitySettings& other) const {
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison)
    return std::memcmp(this, &other, sizeof *this) == 0;
  }
};

// Types of positions, in the order of series of them.
constexpr int position_types = 3;
constexpr int position_type_of_series[position_types] = {GZD_POSITION_GAZE, GZD_POSITION_HREF,
                                                         GZD_POSITION_PUPIL};

struct VelocityKind {
  unsigned bit;
  bool fast;
  std::size_t series;
  float (FSAMPLE::*x)[2];
  float (FSAMPLE::*y)[2];
};

constexpr VelocityKind velocity_kinds[] = {
    {GZD_VELOCITY_GAZE, false, 0, &FSAMPLE::gxvel, &FSAMPLE::gyvel},
    {GZD_VELOCITY_HREF, false, 1, &FSAMPLE::hxvel, &FSAMPLE::hyvel},
    {GZD_VELOCITY_RAW, false, 2, &FSAMPLE::rxvel, &FSAMPLE::ryvel},
    {GZD_VELOCITY_FAST_GAZE, true, 0, &FSAMPLE::fgxvel, &FSAMPLE::fgyvel},
    {GZD_VELOCITY_FAST_HREF, true, 1, &FSAMPLE::fhxvel, &FSAMPLE::fhyvel},
    {GZD_VELOCITY_FAST_RAW, true, 2, &FSAMPLE::frxvel, &FSAMPLE::fryvel},
};
constexpr std::size_t velocity_kind_count = std::size(velocity_kinds);

// One eye's positions, by type.
using SeriesOfEye = std::array<PairSeries, position_types>;

// Velocities of one kind and one eye, of `count` samples in a row, at most
// VelocityBatch::batch_length. `positions` can be read over velocity_reach to either side as well;
// `own` are the resolutions that the samples hold.
void compute_velocities(const VelocityKind& kind, const VelocitySettings& settings,
                        PairsFrom positions, PairsFrom own, int count, float* xvel, float* yvel);

// Holds velocities of samples of the queue, by slot.
class VelocityBatch {
 public:
  static constexpr int batch_length = 64;

  // Forgets all. Due whenever samples were added or dropped.
  void clear() { first_ = end_ = 0; }
  // Whether it holds the velocities of the sample at a slot, of the eyes in its `flags`.
  [[nodiscard]] bool holds(int slot, UINT16 flags, const VelocitySettings& asked) const {
    return covers(slot, asked) && (flags & both_eyes & ~eyes_) == 0;
  }
  // Computes them, and those of the slots around it, of `size` in use. `positions` are by eye.
  void compute(int slot, int size, UINT16 flags, const VelocitySettings& asked,
               const std::array<SeriesOfEye, 2>& positions, const PairSeries& resolutions);
  // Copies them into the sample.
  void copyTo(FSAMPLE& s, int slot) const {
    const auto place = static_cast<std::size_t>(slot - first_);
    for (std::size_t i = 0; i < kindCount_; ++i) {
      copyPair(of_[i].x[place], s.*kinds_[i]->x, s.flags);
      copyPair(of_[i].y[place], s.*kinds_[i]->y, s.flags);
    }
  }

 private:
  static constexpr unsigned both_eyes = SMP_LEFT | SMP_RIGHT;

  // By slot and eye.
  using Pair = float[2];
  struct Velocities {
    Pair x[batch_length], y[batch_length];
  };

  // Of the eyes in `flags`.
  static void copyPair(const Pair& from, Pair& to, UINT16 flags) {
    if ((flags & both_eyes) == both_eyes) {
      std::memcpy(to, from, sizeof to);
      return;
    }
    for (int eye = 0; eye < 2; ++eye)
      if ((flags & eye_flag(eye)) != 0) to[eye] = from[eye];
  }

  [[nodiscard]] bool covers(int slot, const VelocitySettings& asked) const {
    return slot >= first_ && slot < end_ && asked == settings_;
  }
  void moveTo(int slot, int size, const VelocitySettings& asked);

  int first_ = 0;  // slots
  int end_ = 0;
  unsigned eyes_ = 0;  // those computed, as flags of samples
  VelocitySettings settings_;
  std::array<const VelocityKind*, velocity_kind_count> kinds_;  // those asked for
  std::size_t kindCount_ = 0;
  std::array<Velocities, velocity_kind_count> of_;  // by kind asked for
};

}  // namespace gzd

#endif
