// The display is flat and eye_to_display pixels away, the plane of head-referenced positions 15000
// units; raw pupil positions are proportional to the angles.
#include "tracker_camera.h"

#include <cmath>
#include <numbers>

#include "gzd_data.h"

namespace gzdsynth {

namespace {

constexpr double radians_per_degree = std::numbers::pi / 180;
constexpr double pixels_per_degree = 36;  // in the middle of the display
constexpr double eye_to_display = pixels_per_degree / radians_per_degree;
constexpr double href_distance = 15000;
constexpr double raw_per_degree = 95;
constexpr double middle_x = (display_right + 1) / 2.0, middle_y = (display_bottom + 1) / 2.0;

// Stored values of packed camera data are offset by this.
constexpr int packed_offset = 32700;
constexpr double camera_per_degree = 2.5;  // camera pixels that the pupil moves
constexpr double cr_per_degree = 0.9;      // and the corneal reflection
constexpr int cr_area = 310, second_cr_area = 75;

constexpr unsigned target_words = 0xB6;       // one eye: six words
constexpr unsigned target_words_both = 0xB7;  // both: the second eye's flags are the seventh
constexpr unsigned second_cr = 0xC4;          // four words
constexpr unsigned second_cr_both = 0xC8;     // eight

unsigned chosen_flags(const SessionSettings& s) {
  unsigned flags = SMP_PUPIL_SIZE;
  const auto add = [&flags](bool on, unsigned bits) { flags |= on ? bits : 0U; };
  add(s.left, SMP_LEFT);
  add(s.right, SMP_RIGHT);
  add(s.gaze || s.rawPacked, SMP_GAZE);
  add(s.href || s.rawPacked, SMP_HREF);
  add(s.raw || s.rawPacked, SMP_PUPIL_POS);
  add(s.resolution || s.rawPacked, SMP_RESOLUTION);
  add(s.generation > 1, SMP_STATUS);
  add(s.input, SMP_INPUT);
  add(s.buttons, SMP_BUTTONS);
  add(s.target || s.rawPacked, SMP_HEAD_DATA);
  add(s.pose || s.ellipse != 0, SMP_EXTENDED);
  return flags;
}

double pixel_x(double degrees) {
  return middle_x + eye_to_display * std::tan(degrees * radians_per_degree);
}
double pixel_y(double degrees) {
  return middle_y + eye_to_display * std::tan(degrees * radians_per_degree);
}

double pixels_at_degree(double degrees) {
  const double cosine = std::cos(degrees * radians_per_degree);
  return pixels_per_degree / (cosine * cosine);
}

int href_units(double degrees) {
  return static_cast<int>(std::lround(href_distance * std::tan(degrees * radians_per_degree)));
}

float single(double value) {
  return static_cast<float>(value);
}

// A camera position in 1/256 pixels: the upper bits go into a position word, the lower four into
// a packed word.
int camera_units(double middle, double degrees, double perDegree) {
  return static_cast<int>(std::lround((middle + degrees * perDegree) * 256));
}

int packed_extras(int boxSide, int unitsX, int unitsY) {
  return ((boxSide << 8) | ((unitsX & 15) << 4) | (unitsY & 15)) - packed_offset;
}

void lose_position(SampleRecord& sample, std::size_t eye) {
  for (auto* words : {&sample.px, &sample.py, &sample.hx, &sample.hy, &sample.gx, &sample.gy})
    (*words)[eye] = stored_missing;
}

// The pieces of one eye: integer parts in the position words, fractions and box sizes in the gaze
// words, the second reflection in the head words.
void pack_eye(SampleRecord& sample, const EyeState& look, std::size_t eye, std::size_t headAt) {
  const double middle = eye == 0 ? 240 : 400;
  const int pupilX = camera_units(middle, look.x, camera_per_degree);
  const int pupilY = camera_units(150, look.y, camera_per_degree);
  const int crX = camera_units(middle + 4, look.x, cr_per_degree);
  const int crY = camera_units(162, look.y, cr_per_degree);
  const int side = static_cast<int>(2 * std::sqrt(look.pupil / std::numbers::pi));
  sample.px[eye] = (pupilX >> 4) - packed_offset;
  sample.py[eye] = (pupilY >> 4) - packed_offset;
  sample.hx[eye] = (crX >> 4) - packed_offset;
  sample.hy[eye] = (crY >> 4) - packed_offset;
  sample.gx[eye] = packed_extras(side, pupilX, pupilY);
  sample.gy[eye] = packed_extras(side + 1, crX, crY);
  sample.headData[headAt] = (crX >> 8) + 9;
  sample.headData[headAt + 1] = (crY >> 8) + 3;
  sample.headData[headAt + 2] = ((crX & 127) << 8) | (crY & 255);
  sample.headData[headAt + 3] = second_cr_area;
}

}  // namespace

TrackerCamera::TrackerCamera(const SessionSettings& settings)
    : settings_(settings), flags_(chosen_flags(settings)) {}

void TrackerCamera::fill_eye(SampleRecord& sample, const GazeState& state, std::size_t eye) const {
  const EyeState& look = state.eyes[eye];
  const double prescale = settings_.generation > 3 ? pupil_prescale : 1;
  sample.pa[eye] = stored(look.pupil, prescale);
  sample.px[eye] = static_cast<int>(std::lround(look.x * raw_per_degree));
  sample.py[eye] = static_cast<int>(std::lround(look.y * raw_per_degree));
  sample.hx[eye] = href_units(look.x);
  sample.hy[eye] = href_units(look.y);
  sample.gx[eye] = stored(pixel_x(look.x), settings_.gaze_prescale());
  sample.gy[eye] = stored(pixel_y(look.y), settings_.gaze_prescale());
}

void TrackerCamera::pack(SampleRecord& sample, const GazeState& state) const {
  const bool both = settings_.eyes() == 2;
  sample.rx = sample.ry = cr_area;
  sample.headType = both ? second_cr_both : second_cr;
  sample.headData = {};
  for (std::size_t eye = 0; eye < 2; ++eye) {
    if (!(eye == 0 ? settings_.left : settings_.right)) continue;
    sample.pa[eye] = static_cast<int>(std::lround(state.eyes[eye].pupil)) - packed_offset;
    if (state.phase != Phase::Lost)
      pack_eye(sample, state.eyes[eye], eye, both && eye == 1 ? 4 : 0);
  }
}

void TrackerCamera::fill_target(SampleRecord& sample, const GazeState& state) const {
  const HeadState& head = state.head;
  sample.headType = settings_.eyes() == 2 ? target_words_both : target_words;
  const auto whole = [](double value) { return static_cast<int>(std::lround(value)); };
  sample.headData = {whole(512 + 8 * head.position[0]),
                     whole(420 + 8 * head.position[1]),
                     whole(10 * head.position[2]),
                     0,
                     0,
                     0,
                     0,
                     0};
}

HeadPose TrackerCamera::pose(const GazeState& state) const {
  HeadPose pose;
  const double missing = MISSING_DATA;
  for (std::size_t i = 0; i < 3; ++i) {
    pose.rotation[i] = single(state.head.rotation[i]);
    pose.position[i] = single(state.head.position[i]);
    // The cyclopean eye is the mean of both.
    const EyeState& first = state.eyes[i == 1 ? 1 : 0];
    const EyeState& second = state.eyes[i == 0 ? 0 : 1];
    const bool lost = state.phase == Phase::Lost;
    pose.eyeInHeadX[i] = single(lost ? missing : (first.x + second.x) / 2 - state.head.rotation[1]);
    pose.eyeInHeadY[i] = single(lost ? missing : (first.y + second.y) / 2 - state.head.rotation[0]);
    const double shift = i == 2 ? 0 : 30 * (i == 0 ? -1.0 : 1.0);
    pose.headInSpaceX[i] = single(pixel_x(state.head.rotation[1]) + shift);
    pose.headInSpaceY[i] = single(pixel_y(state.head.rotation[0]));
  }
  for (std::size_t eye = 0; eye < 2; ++eye) {
    const bool seen = (eye == 0 ? settings_.left : settings_.right) && state.phase != Phase::Lost;
    pose.gaze[2 * eye] = single(seen ? pixel_x(state.eyes[eye].x) : missing);
    pose.gaze[2 * eye + 1] = single(seen ? pixel_y(state.eyes[eye].y) : missing);
  }
  return pose;
}

void TrackerCamera::fill_blocks(SampleRecord& sample, const GazeState& state) const {
  if (settings_.pose) sample.blocks.push_back(head_pose_block(pose(state)));
  if (settings_.ellipse == 0) return;
  Ellipse ellipse;
  ellipse.headGazeX = ellipse.headGazeY = single(pixels_per_degree);
  ellipse.eyeGazeX.fill(single(pixels_at_degree(state.eyes[0].x)));
  ellipse.eyeGazeY.fill(single(pixels_at_degree(state.eyes[0].y)));
  for (std::size_t eye = 0; eye < 2; ++eye) {
    const EyeState& look = state.eyes[eye];
    const double radius = std::sqrt(look.pupil / std::numbers::pi);
    ellipse.eyes[eye] = {single(240 + camera_per_degree * look.x),
                         single(150 + camera_per_degree * look.y), single(1.02 * radius),
                         single(radius / 1.02), single(10 + look.x)};
    if (state.phase == Phase::Lost)
      ellipse.eyes[eye] = {MISSING_DATA, MISSING_DATA, MISSING_DATA, MISSING_DATA, MISSING_DATA};
  }
  sample.blocks.push_back(settings_.ellipse == 56 ? ellipse_block56(ellipse)
                                                  : ellipse_block72(ellipse));
}

SampleRecord TrackerCamera::sample(const GazeState& state) const {
  SampleRecord sample;
  sample.flags = flags_;
  sample.rx = stored(pixels_at_degree(state.eyes[0].x), settings_.gaze_prescale());
  sample.ry = stored(pixels_at_degree(state.eyes[0].y), settings_.gaze_prescale());
  for (std::size_t eye = 0; eye < 2; ++eye) {
    fill_eye(sample, state, eye);
    if (state.phase == Phase::Lost) lose_position(sample, eye);
  }
  if (settings_.target) fill_target(sample, state);
  fill_blocks(sample, state);
  return sample;
}

}  // namespace gzdsynth
