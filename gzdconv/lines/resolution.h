// Angular resolution: the sums of the mean of a block, and the mapping of gaze from the
// tracked area to the display.
#ifndef GZDCONV_RESOLUTION_H
#define GZDCONV_RESOLUTION_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "cli/options.h"
#include "gzd_data.h"

namespace gzdconv {

// True for a pupil too small to be seen, whose eye does not count for a mean of both. Never with
// options.no_pupil_area_check.
bool has_lost_pupil(const FSAMPLE& sample, int eye);

// True for a resolution that counts: above 0.01 and below 10000. Bit patterns of positive floats
// are in the order of their values, and all others lie above.
constexpr float smallest_resolution = 0.01F, largest_resolution = 1.0e4F;
inline bool is_usable_resolution(float resolution) {
  const auto bits = std::bit_cast<std::uint32_t>(resolution);
  return bits > std::bit_cast<std::uint32_t>(smallest_resolution) &&
         bits < std::bit_cast<std::uint32_t>(largest_resolution);
}

struct Resolution {
  double x, y;
};

// Resolution at a head-referenced position.
Resolution head_referenced_resolution(double hx, double hy);

// Head-referenced positions of both eyes.
struct HrefPlaces {
  float x[2], y[2];
};

// Sums of the resolutions that count since the last END line of the file, and their number.
class ResolutionSums {
 public:
  // Adds a pair when both values count.
  void add(float rx, float ry) {
    if (waiting_ > 0) [[unlikely]]
      settle();
    sums_.add(rx, ry);
  }
  // Adds the resolution at the mean of both eyes' positions. Many are worked out together,
  // so that a square root needs not wait for the one before.
  void add_at(const HrefPlaces& eyes) {
    if (waiting_ == places_.size()) settle();
    places_[waiting_++] = eyes;
  }

  [[nodiscard]] bool are_empty() {
    settle();
    return sums_.ppd_count == 0.0;
  }
  // Of sums that are not empty.
  [[nodiscard]] Resolution mean() const {
    return {sums_.ppd_x / sums_.ppd_count, sums_.ppd_y / sums_.ppd_count};
  }

  void clear() { *this = ResolutionSums(); }

 private:
  static constexpr std::size_t most_waiting = 64;
  struct Sums {
    double ppd_x = 0.0, ppd_y = 0.0, ppd_count = 0.0;

    void add(float rx, float ry) {
      if (is_usable_resolution(rx) && is_usable_resolution(ry)) add_usable(rx, ry);
    }
    void add_usable(float rx, float ry) {
      ppd_x += rx;
      ppd_y += ry;
      ppd_count += 1.0;
    }
  };

  void settle();

  Sums sums_;
  std::size_t waiting_ = 0;
  std::array<HrefPlaces, most_waiting> places_{};
};

extern ResolutionSums resolution_sums;

// Adds the resolution of `sample`, for samples of `position_type` (GZD_POSITION_), to the sums. It
// is completed first, where columns show it.
void complete_and_add_resolution(FSAMPLE& sample, int position_type);
inline void updatePPD(FSAMPLE& sample, int position_type) {
  const bool is_complete = position_type == GZD_POSITION_GAZE &&
                           (sample.flags & SMP_RESOLUTION) != 0 && options.gaze_map == 0;
  if (is_complete) [[likely]]
    resolution_sums.add(sample.rx, sample.ry);
  else
    complete_and_add_resolution(sample, position_type);
}

// Read the sizes after the keyword that begins `text`; other text makes them unknown. Null is
// ignored.
void parseDisplayCoords(const char* text);
void parseDisplayAreaCoords(const char* text);

// The tracked area, widened by its margin.
float getLeft();
float getRight();
float getTop();
float getBottom();

// A gaze position or resolution on the display. Unchanged without options.gaze_map, when it is
// MISSING_DATA, and while area or display are unknown.
namespace display_mapping {
float map_x(float x);
float map_y(float y);
float map_ppd_x(float resolution);
float map_ppd_y(float resolution);
}  // namespace display_mapping

inline float getMappedX(float x) {
  return options.gaze_map ? display_mapping::map_x(x) : x;
}
inline float getMappedY(float y) {
  return options.gaze_map ? display_mapping::map_y(y) : y;
}
inline float getMappedPPDX(float resolution) {
  return options.gaze_map ? display_mapping::map_ppd_x(resolution) : resolution;
}
inline float getMappedPPDY(float resolution) {
  return options.gaze_map ? display_mapping::map_ppd_y(resolution) : resolution;
}

}  // namespace gzdconv

#endif
