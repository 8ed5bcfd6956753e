// Sums of resolution, resolution from positions, and the mapping between tracked area and display.
#include "lines/resolution.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <utility>

#include "cli/options.h"

namespace gzdconv {

ResolutionSums resolution_sums;

namespace {

constexpr double margin_factor = 0.95;
constexpr double href_distance_squared = GZD_HREF_DISTANCE * GZD_HREF_DISTANCE;
constexpr double degrees_per_radian = 57.2958;
constexpr float smallest_pupil = 15.0F;  // of an eye that is seen
constexpr std::size_t display_keyword = sizeof "DISPLAY_COORDS" - 1;
constexpr std::size_t area_keyword = sizeof "DISPLAY_AREA_COORDS" - 1;

// Of the tracked area and the display. They outlive a file: one that does not tell its own has
// those of the file before.
float trackerLeft = MISSING_DATA;
float trackerTop = MISSING_DATA;
float trackerRight = MISSING_DATA;
float trackerBottom = MISSING_DATA;
float displayWidth = MISSING_DATA;
float displayHeight = MISSING_DATA;

struct Edges {
  int left, top, right, bottom;
};

// Reads the four numbers after a keyword of `offset` characters that begins `text`.
bool read_edges(const char* text, std::size_t offset, Edges& edges) {
  if (strnlen(text, offset) < offset) return false;
  return std::sscanf(text + offset, " %d %d %d %d", &edges.left, &edges.top, &edges.right,
                     &edges.bottom) == 4;
}

float extent(int low, int high) {
  return static_cast<float>(std::int64_t{high} - low);
}

float margin(float low, float high) {
  const float width = high - low;
  return static_cast<float>(width / margin_factor - width);
}

bool is_mapped(float value) {
  if (value == MISSING_DATA) return false;
  for (const float size :
       {trackerLeft, trackerTop, trackerRight, trackerBottom, displayWidth, displayHeight})
    if (size == MISSING_DATA) return false;
  return true;
}

// Means of the head-referenced coordinates of the eyes that count.
class HrefMean {
 public:
  void add_eye(const FSAMPLE& sample, int eye) {
    if (!(sample.flags & SMP_HREF) || has_lost_pupil(sample, eye)) return;
    add(sample.hx[eye], x_, x_count_);
    add(sample.hy[eye], y_, y_count_);
  }
  [[nodiscard]] bool is_known() const { return x_count_ > 0 && y_count_ > 0; }
  [[nodiscard]] float x() const { return mean(x_, x_count_); }
  [[nodiscard]] float y() const { return mean(y_, y_count_); }

 private:
  static void add(float value, float& sum, int& count) {
    if (value == MISSING_DATA || value == NOT_RECORDED) return;
    sum += value;
    ++count;
  }
  // Of one or two, without a division.
  static float mean(float sum, int count) { return count == 1 ? sum : sum * 0.5F; }

  float x_ = 0.0F, y_ = 0.0F;
  int x_count_ = 0, y_count_ = 0;
};

using Floats4 = float __attribute__((vector_size(16)));
using Ints4 = std::int32_t __attribute__((vector_size(16)));
using Longs2 = std::int64_t __attribute__((vector_size(16)));
using Doubles2 = double __attribute__((vector_size(16)));
using Doubles4 = double __attribute__((vector_size(32)));

// False where one of these stands for none, or is what no record holds. All four at once: the bit
// patterns of magnitudes are in the order of their values.
bool are_recorded(const float (&x)[2], const float (&y)[2]) {
  const Ints4 magnitudes = Ints4(Floats4{x[0], x[1], y[0], y[1]}) & INT32_MAX;
  const Longs2 too_large = Longs2(magnitudes >= std::bit_cast<std::int32_t>(-NOT_RECORDED));
  return (too_large[0] | too_large[1]) == 0;
}

// Of both axes side by side.
Doubles2 resolution_at(Doubles2 place) {
  const Doubles2 squares = place * place;
  const Doubles2 x = __builtin_shufflevector(squares, squares, 0, 0);
  const Doubles2 y = __builtin_shufflevector(squares, squares, 1, 1);
  const Doubles2 others = __builtin_shufflevector(squares, squares, 1, 0) + href_distance_squared;
  const Doubles2 roots = {std::sqrt(others[0]), std::sqrt(others[1])};
  return (x + href_distance_squared + y) / roots / degrees_per_radian;
}

// Of two samples, at the means of both eyes: x and y of one, then of the other.
Floats4 resolutions_at_means(const HrefPlaces& sample, const HrefPlaces& other) {
  Floats4 a, b;
  std::memcpy(&a, &sample, sizeof a);
  std::memcpy(&b, &other, sizeof b);
  const Floats4 means =
      (__builtin_shufflevector(a, b, 0, 2, 4, 6) + __builtin_shufflevector(a, b, 1, 3, 5, 7)) *
      0.5F;
  const Doubles4 places = __builtin_convertvector(means, Doubles4);
  const Doubles2 first = resolution_at(__builtin_shufflevector(places, places, 0, 1));
  const Doubles2 last = resolution_at(__builtin_shufflevector(places, places, 2, 3));
  return __builtin_convertvector(__builtin_shufflevector(first, last, 0, 1, 2, 3), Floats4);
}

// True where all four coordinates count, as those of nearly every sample do. False for some others
// as well, which are looked at one by one.
bool has_both_href(const FSAMPLE& sample) {
  constexpr unsigned needed = SMP_LEFT | SMP_RIGHT | SMP_HREF | SMP_PUPIL_SIZE;
  return (sample.flags & needed) == needed && options.left_samples && options.right_samples &&
         sample.pa[0] >= smallest_pupil && sample.pa[1] >= smallest_pupil &&
         are_recorded(sample.hx, sample.hy);
}

void complete_href(FSAMPLE& sample) {
  HrefMean mean;
  if (options.left_samples && (sample.flags & SMP_LEFT)) mean.add_eye(sample, GZD_LEFT_EYE);
  if (options.right_samples && (sample.flags & SMP_RIGHT)) mean.add_eye(sample, GZD_RIGHT_EYE);
  if (!mean.is_known()) return;
  const Resolution resolution = head_referenced_resolution(mean.x(), mean.y());
  sample.rx = static_cast<float>(resolution.x);
  sample.ry = static_cast<float>(resolution.y);
}

void take_default(FSAMPLE& sample) {
  sample.rx = options.default_res_x;
  sample.ry = options.default_res_y;
}

void complete_gaze(FSAMPLE& sample) {
  if (!(sample.flags & SMP_RESOLUTION)) take_default(sample);
  sample.rx = getMappedPPDX(sample.rx);
  sample.ry = getMappedPPDY(sample.ry);
}

void complete_resolution(FSAMPLE& sample, int position_type) {
  switch (position_type) {
    case GZD_POSITION_HREF:
      complete_href(sample);
      break;
    case GZD_POSITION_GAZE:
      complete_gaze(sample);
      break;
    case GZD_POSITION_PUPIL:
      take_default(sample);
      break;
    default:
      break;
  }
}

// Out of line: the way of the usual sample stays short.
[[gnu::noinline]] void complete_and_add_any(FSAMPLE& sample, int position_type) {
  complete_resolution(sample, position_type);
  resolution_sums.add(sample.rx, sample.ry);
}

}  // namespace

bool has_lost_pupil(const FSAMPLE& sample, int eye) {
  return (sample.flags & SMP_PUPIL_SIZE) && !options.no_pupil_area_check &&
         sample.pa[eye] < smallest_pupil;
}

// First all resolutions, without a branch, then the sums, which are asked once whether all count.
void ResolutionSums::settle() {
  const std::size_t count = std::exchange(waiting_, 0);
  std::array<float, 2 * most_waiting> resolutions;
  Ints4 usable = {-1, -1, -1, -1};
  for (std::size_t i = 0; i < count; i += 2) {
    const Floats4 two = resolutions_at_means(places_[i], places_[i + 1]);
    usable &= (two > smallest_resolution) & (two < largest_resolution);
    std::memcpy(&resolutions[2 * i], &two, sizeof two);
  }
  const Longs2 halves = Longs2(usable);
  const bool all_count = (halves[0] & halves[1]) == -1;
  Sums sums = sums_;
  for (std::size_t i = 0; i < 2 * count; i += 2) {
    if (all_count)
      sums.add_usable(resolutions[i], resolutions[i + 1]);
    else
      sums.add(resolutions[i], resolutions[i + 1]);
  }
  sums_ = sums;
}

void complete_and_add_resolution(FSAMPLE& sample, int position_type) {
  const bool is_href = position_type == GZD_POSITION_HREF;
  if (is_href && options.output_resolution == 0 && has_both_href(sample))
    resolution_sums.add_at({{sample.hx[0], sample.hx[1]}, {sample.hy[0], sample.hy[1]}});
  else
    complete_and_add_any(sample, position_type);
}

Resolution head_referenced_resolution(double hx, double hy) {
  const Doubles2 resolution = resolution_at(Doubles2{hx, hy});
  return {resolution[0], resolution[1]};
}

void parseDisplayCoords(const char* text) {
  if (text == nullptr) return;
  Edges edges;
  const bool known = read_edges(text, display_keyword, edges);
  displayWidth = known ? extent(edges.left, edges.right) : MISSING_DATA;
  displayHeight = known ? extent(edges.top, edges.bottom) : MISSING_DATA;
}

void parseDisplayAreaCoords(const char* text) {
  if (text == nullptr) return;
  Edges edges;
  const bool known = read_edges(text, area_keyword, edges);
  trackerLeft = known ? static_cast<float>(edges.left) : MISSING_DATA;
  trackerTop = known ? static_cast<float>(edges.top) : MISSING_DATA;
  trackerRight = known ? static_cast<float>(edges.right) : MISSING_DATA;
  trackerBottom = known ? static_cast<float>(edges.bottom) : MISSING_DATA;
}

float getLeft() {
  return trackerLeft - margin(trackerLeft, trackerRight);
}
float getRight() {
  return trackerRight + margin(trackerLeft, trackerRight);
}
float getTop() {
  return trackerTop - margin(trackerTop, trackerBottom);
}
float getBottom() {
  return trackerBottom + margin(trackerTop, trackerBottom);
}

float display_mapping::map_x(float x) {
  if (!is_mapped(x)) return x;
  return std::fma(x / displayWidth, getRight() - getLeft(), getLeft());
}

float display_mapping::map_y(float y) {
  if (!is_mapped(y)) return y;
  return std::fma(y / displayHeight, getBottom() - getTop(), getTop());
}

float display_mapping::map_ppd_x(float resolution) {
  if (!is_mapped(resolution)) return resolution;
  return resolution / displayWidth * (getRight() - getLeft());
}

float display_mapping::map_ppd_y(float resolution) {
  if (!is_mapped(resolution)) return resolution;
  return resolution / displayHeight * (getBottom() - getTop());
}

}  // namespace gzdconv
