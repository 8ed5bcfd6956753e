// The display is flat and kEyeToDisplay pixels away, the plane of head-referenced positions 15000
// units; raw pupil positions are proportional to the angles.
#include "tracker_camera.h"

#include <cmath>
#include <numbers>

#include "gzd_data.h"

namespace gzdsynth {

namespace {

constexpr double kDegree = std::numbers::pi / 180;
constexpr double kPixelsPerDegree = 36;  // in the middle of the display
constexpr double kEyeToDisplay = kPixelsPerDegree / kDegree;
constexpr double kHrefDistance = 15000;
constexpr double kRawPerDegree = 95;
constexpr double kMiddleX = (kDisplayRight + 1) / 2.0, kMiddleY = (kDisplayBottom + 1) / 2.0;

// Stored values of packed camera data are offset by this.
constexpr int kPackedOffset = 32700;
constexpr double kCameraPerDegree = 2.5;  // camera pixels that the pupil moves
constexpr double kCrPerDegree = 0.9;      // and the corneal reflection
constexpr int kCrArea = 310, kSecondCrArea = 75;

constexpr unsigned kTargetWords = 0xB6;      // one eye: six words
constexpr unsigned kTargetWordsBoth = 0xB7;  // both: the second eye's flags are the seventh
constexpr unsigned kSecondCr = 0xC4;         // four words
constexpr unsigned kSecondCrBoth = 0xC8;     // eight

unsigned chosenFlags(const SessionSettings& s) {
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

double pixelX(double degrees) {
  return kMiddleX + kEyeToDisplay * std::tan(degrees * kDegree);
}
double pixelY(double degrees) {
  return kMiddleY + kEyeToDisplay * std::tan(degrees * kDegree);
}

double pixelsPerDegree(double degrees) {
  const double cosine = std::cos(degrees * kDegree);
  return kPixelsPerDegree / (cosine * cosine);
}

int hrefUnits(double degrees) {
  return static_cast<int>(std::lround(kHrefDistance * std::tan(degrees * kDegree)));
}

float single(double value) {
  return static_cast<float>(value);
}

// A camera position in 1/256 pixels: the upper bits go into a position word, the lower four into
// a packed word.
int cameraUnits(double middle, double degrees, double perDegree) {
  return static_cast<int>(std::lround((middle + degrees * perDegree) * 256));
}

int packedExtras(int boxSide, int unitsX, int unitsY) {
  return ((boxSide << 8) | ((unitsX & 15) << 4) | (unitsY & 15)) - kPackedOffset;
}

void losePosition(SampleRecord& sample, std::size_t eye) {
  for (auto* words : {&sample.px, &sample.py, &sample.hx, &sample.hy, &sample.gx, &sample.gy})
    (*words)[eye] = kStoredMissing;
}

// The pieces of one eye: integer parts in the position words, fractions and box sizes in the gaze
// words, the second reflection in the head words.
void packEye(SampleRecord& sample, const EyeState& look, std::size_t eye, std::size_t headAt) {
  const double middle = eye == 0 ? 240 : 400;
  const int pupilX = cameraUnits(middle, look.x, kCameraPerDegree);
  const int pupilY = cameraUnits(150, look.y, kCameraPerDegree);
  const int crX = cameraUnits(middle + 4, look.x, kCrPerDegree);
  const int crY = cameraUnits(162, look.y, kCrPerDegree);
  const int side = static_cast<int>(2 * std::sqrt(look.pupil / std::numbers::pi));
  sample.px[eye] = (pupilX >> 4) - kPackedOffset;
  sample.py[eye] = (pupilY >> 4) - kPackedOffset;
  sample.hx[eye] = (crX >> 4) - kPackedOffset;
  sample.hy[eye] = (crY >> 4) - kPackedOffset;
  sample.gx[eye] = packedExtras(side, pupilX, pupilY);
  sample.gy[eye] = packedExtras(side + 1, crX, crY);
  sample.headData[headAt] = (crX >> 8) + 9;
  sample.headData[headAt + 1] = (crY >> 8) + 3;
  sample.headData[headAt + 2] = ((crX & 127) << 8) | (crY & 255);
  sample.headData[headAt + 3] = kSecondCrArea;
}

}  // namespace

TrackerCamera::TrackerCamera(const SessionSettings& settings)
    : settings_(settings), flags_(chosenFlags(settings)) {}

void TrackerCamera::fillEye(SampleRecord& sample, const GazeState& state, std::size_t eye) const {
  const EyeState& look = state.eyes[eye];
  const double prescale = settings_.generation > 3 ? kPupilPrescale : 1;
  sample.pa[eye] = stored(look.pupil, prescale);
  sample.px[eye] = static_cast<int>(std::lround(look.x * kRawPerDegree));
  sample.py[eye] = static_cast<int>(std::lround(look.y * kRawPerDegree));
  sample.hx[eye] = hrefUnits(look.x);
  sample.hy[eye] = hrefUnits(look.y);
  sample.gx[eye] = stored(pixelX(look.x), settings_.gazePrescale());
  sample.gy[eye] = stored(pixelY(look.y), settings_.gazePrescale());
}

void TrackerCamera::pack(SampleRecord& sample, const GazeState& state) const {
  const bool both = settings_.eyes() == 2;
  sample.rx = sample.ry = kCrArea;
  sample.headType = both ? kSecondCrBoth : kSecondCr;
  sample.headData = {};
  for (std::size_t eye = 0; eye < 2; ++eye) {
    if (!(eye == 0 ? settings_.left : settings_.right)) continue;
    sample.pa[eye] = static_cast<int>(std::lround(state.eyes[eye].pupil)) - kPackedOffset;
    if (state.phase != Phase::kLost)
      packEye(sample, state.eyes[eye], eye, both && eye == 1 ? 4 : 0);
  }
}

void TrackerCamera::fillTarget(SampleRecord& sample, const GazeState& state) const {
  const HeadState& head = state.head;
  sample.headType = settings_.eyes() == 2 ? kTargetWordsBoth : kTargetWords;
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
    const bool lost = state.phase == Phase::kLost;
    pose.eyeInHeadX[i] = single(lost ? missing : (first.x + second.x) / 2 - state.head.rotation[1]);
    pose.eyeInHeadY[i] = single(lost ? missing : (first.y + second.y) / 2 - state.head.rotation[0]);
    const double shift = i == 2 ? 0 : 30 * (i == 0 ? -1.0 : 1.0);
    pose.headInSpaceX[i] = single(pixelX(state.head.rotation[1]) + shift);
    pose.headInSpaceY[i] = single(pixelY(state.head.rotation[0]));
  }
  for (std::size_t eye = 0; eye < 2; ++eye) {
    const bool seen = (eye == 0 ? settings_.left : settings_.right) && state.phase != Phase::kLost;
    pose.gaze[2 * eye] = single(seen ? pixelX(state.eyes[eye].x) : missing);
    pose.gaze[2 * eye + 1] = single(seen ? pixelY(state.eyes[eye].y) : missing);
  }
  return pose;
}

void TrackerCamera::fillBlocks(SampleRecord& sample, const GazeState& state) const {
  if (settings_.pose) sample.blocks.push_back(headPoseBlock(pose(state)));
  if (settings_.ellipse == 0) return;
  Ellipse ellipse;
  ellipse.headGazeX = ellipse.headGazeY = single(kPixelsPerDegree);
  ellipse.eyeGazeX.fill(single(pixelsPerDegree(state.eyes[0].x)));
  ellipse.eyeGazeY.fill(single(pixelsPerDegree(state.eyes[0].y)));
  for (std::size_t eye = 0; eye < 2; ++eye) {
    const EyeState& look = state.eyes[eye];
    const double radius = std::sqrt(look.pupil / std::numbers::pi);
    ellipse.eyes[eye] = {single(240 + kCameraPerDegree * look.x),
                         single(150 + kCameraPerDegree * look.y), single(1.02 * radius),
                         single(radius / 1.02), single(10 + look.x)};
    if (state.phase == Phase::kLost)
      ellipse.eyes[eye] = {MISSING_DATA, MISSING_DATA, MISSING_DATA, MISSING_DATA, MISSING_DATA};
  }
  sample.blocks.push_back(settings_.ellipse == 56 ? ellipseBlock56(ellipse)
                                                  : ellipseBlock72(ellipse));
}

SampleRecord TrackerCamera::sample(const GazeState& state) const {
  SampleRecord sample;
  sample.flags = flags_;
  sample.rx = stored(pixelsPerDegree(state.eyes[0].x), settings_.gazePrescale());
  sample.ry = stored(pixelsPerDegree(state.eyes[0].y), settings_.gazePrescale());
  for (std::size_t eye = 0; eye < 2; ++eye) {
    fillEye(sample, state, eye);
    if (state.phase == Phase::kLost) losePosition(sample, eye);
  }
  if (settings_.target) fillTarget(sample, state);
  fillBlocks(sample, state);
  return sample;
}

}  // namespace gzdsynth
