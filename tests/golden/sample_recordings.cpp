#include <array>
#include <string>

#include "golden_recordings.h"

namespace golden {

using namespace gzdsynth;

namespace {

constexpr unsigned kBothEyes = SMP_LEFT | SMP_RIGHT;
constexpr unsigned kGaze = SMP_GAZE | SMP_PUPIL_SIZE;

// A block start and samples of the same fields.
BlockStart blockOf(std::uint32_t time, unsigned flags, double rate = 1000) {
  return {.time = time,
          .rate = rate,
          .sampleFlags = static_cast<int>(flags),
          .eventFlags = static_cast<int>(flags & (kBothEyes | kGaze))};
}

SampleRecord sampleOf(std::uint32_t time, unsigned flags) {
  SampleRecord s{.flags = flags | SMP_TIME_ABSOLUTE, .time = time};
  s.px = {-1801, -1702};
  s.py = {902, 903};
  s.hx = {1500, 1400};
  s.hy = {-2250, -2240};
  s.gx = {5123, 5223};
  s.gy = {3847, 3947};
  s.rx = 360;
  s.ry = 370;
  s.pa = {900, 800};
  return s;
}

// One sample for each bit of `bits` in the status word.
void statusBlock(GzdWriter& w, std::uint32_t time, unsigned eyes) {
  const unsigned flags = eyes | kGaze | SMP_STATUS;
  w.startBlock(blockOf(time, flags));
  for (const int bits : {0, 0x1000, 0x0100, 0x0400, 0x0200, 0x0800, 0x0002, 0x1F02}) {
    SampleRecord s = sampleOf(time++, flags);
    s.status = bits;
    w.sample(s);
  }
  w.endBlock(time);
}

void targetBlock(GzdWriter& w, std::uint32_t time, unsigned eyes, unsigned headType) {
  const unsigned flags = eyes | kGaze | SMP_HEAD_DATA;
  w.startBlock(blockOf(time, flags));
  SampleRecord s = sampleOf(time, flags);
  s.headType = headType;
  const auto put = [&](const std::array<int, 8>& words) {
    s.time = time++;
    s.headData = words;
    w.sample(s);
  };
  for (int bit = 0x8000; bit > 0; bit /= 2) put({512, 420, 6523, bit, 0, 0, 0, 0});
  for (const int bits : {8, 4, 2, 1}) put({512, 420, 6523, 0, 0, 0, bits, 0});
  put({kStoredMissing, kStoredMissing, kStoredMissing, 0x4000, 0, 0, 0, 0});
  w.endBlock(time);
}

void typedBlock(GzdWriter& w, std::uint32_t time, unsigned positions) {
  const unsigned flags = kBothEyes | SMP_PUPIL_SIZE | positions;
  w.startBlock(blockOf(time, flags)).sample(sampleOf(time, flags)).endBlock(time + 1);
}

}  // namespace

GzdWriter statusFlags() {
  GzdWriter w(3);
  statusBlock(w, 1000, kBothEyes);
  statusBlock(w, 2000, SMP_LEFT);
  statusBlock(w, 3000, SMP_RIGHT);
  return w;
}

GzdWriter targetFlags() {
  GzdWriter w(3);
  targetBlock(w, 1000, kBothEyes, 0xB7);
  targetBlock(w, 2000, SMP_LEFT, 0xB6);
  return w;
}

GzdWriter halfMilliseconds() {
  GzdWriter w(3);
  const unsigned flags = SMP_RIGHT | kGaze;
  w.startBlock(blockOf(1000, flags, 2000));
  for (std::uint32_t half = 0; half < 20; ++half) {
    if (half == 9 || half == 14 || half == 15) continue;  // a lost one, then a lost pair
    SampleRecord s = sampleOf(1000 + half / 2, flags);
    s.gx[1] += static_cast<int>(half * half);
    w.sample(s);
  }
  w.endBlock(1010);
  return w;
}

GzdWriter positionTypes() {
  GzdWriter w(2);
  typedBlock(w, 1000, SMP_GAZE | SMP_HREF | SMP_PUPIL_POS);
  typedBlock(w, 2000, SMP_GAZE);
  typedBlock(w, 3000, SMP_HREF);
  typedBlock(w, 4000, SMP_PUPIL_POS);
  typedBlock(w, 5000, 0);
  w.startBlock(blockOf(6000, kBothEyes | kGaze));
  w.sample(sampleOf(6000, kBothEyes | kGaze)).sample(sampleOf(6001, SMP_LEFT | kGaze));
  w.sample(sampleOf(6002, SMP_RIGHT | kGaze)).sample(sampleOf(6003, kGaze));
  w.endBlock(6004);
  return w;
}

GzdWriter oddValues() {
  GzdWriter w(2);
  const unsigned flags = kBothEyes | kGaze | SMP_RESOLUTION;
  BlockStart block = blockOf(1000, flags);
  block.gazePrescale = 1;
  w.startBlock(block);
  SampleRecord s = sampleOf(1000, flags);
  const auto put = [&](int rx, int ry, int leftPupil, int rightPupil) {
    s.rx = rx;
    s.ry = ry;
    s.pa = {leftPupil, rightPupil};
    w.sample(s);
    ++s.time;
  };
  put(36, 37, 900, 800);
  put(0, 37, 0, 800);
  put(10001, 37, 14, 15);
  put(36, 0, kStoredMissing, 0);
  put(-1, -1, -5, 800);
  s.gx = {kStoredMissing, 32767};
  s.gy = {-32767, kStoredMissing};
  put(kStoredMissing, 37, 900, 800);
  w.endBlock(1006);
  return w;
}

GzdWriter mapping() {
  GzdWriter w(2);
  const unsigned flags = kBothEyes | kGaze | SMP_RESOLUTION;
  const auto shot = [&](std::uint32_t time) {
    w.startBlock(blockOf(time, flags)).sample(sampleOf(time, flags));
    w.event(EventRecord(GZD_START_FIXATION).start(time));
    w.event(EventRecord(GZD_END_FIXATION)
                .start(time)
                .end(time)
                .gazeAverage(5123, 3847)
                .pupilAverage(900)
                .resolutionStart(360, 370)
                .resolutionEnd(360, 370));
    w.endBlock(time + 1);
  };
  shot(1000);  // nothing known
  w.message(1500, "DISPLAY_COORDS 0 0 1023 767");
  shot(2000);  // display only
  w.message(2500, "DISPLAY_AREA_COORDS 100 50 539 429");
  shot(3000);  // both
  w.message(3500, "DISPLAY_AREA_COORDS 100 50 539");
  shot(4000);  // area lost again
  w.message(4500, "text before DISPLAY_AREA_COORDS 100 50 539 429");
  shot(5000);  // not at its place
  return w;
}

GzdWriter geometry() {
  GzdWriter w(4);
  w.magic(Magic::kOsp);
  const unsigned flags = kBothEyes | kGaze | SMP_EXTENDED;
  HeadPose pose;
  pose.headInSpaceX = {100, 110, 105};
  pose.headInSpaceY = {200, 210, 205};
  pose.eyeInHeadX = {1.5F, -1.5F, 0};
  pose.eyeInHeadY = {2.5F, 2.25F, 2.375F};
  pose.markerFlags = 0x0000000A;
  pose.rotation = {0, 0, 0};
  pose.position = {0, 0, 600};
  pose.gaze = {532, 384, 492, 300};  // the lines of sight cross in front of the screen
  const auto block = [&](std::uint32_t time) {
    w.startBlock(blockOf(time, flags));
    SampleRecord s = sampleOf(time, flags);
    s.blocks = {headPoseBlock(pose)};
    w.sample(s);
    s.time = time + 1;
    pose.rotation[0] = MISSING_DATA;
    s.blocks = {headPoseBlock(pose)};
    pose.rotation[0] = 0;
    w.sample(s).endBlock(time + 2);
  };
  block(1000);  // before the configuration is complete
  const char* const identity = " 1 0 0 0 0 1 0 0 0 0 1 0";
  for (const char* const name : {"hm_mipicam_to_board", "hm_board_to_eyecam_mid",
                                 "hm_eyecam_to_ref", "hm_screen_to_markers", "hm_world_to_screen"})
    w.message(1100, std::string("!GEOM ") + name + ":" + identity);
  w.message(1110, "!GEOM eyecam_to_ecenter 0: -30 0 0");
  w.message(1110, "!GEOM eyecam_to_ecenter 1: 30 0 0");
  w.message(1120, "!GEOM pose_output_ref_type 1");
  w.message(1130, "!GEOM screen_pixel r 1023 l 0 t 0 b 767");
  w.message(1140, "!GEOM screen_phys r 200 l -200 t -150 b 150");
  block(2000);
  return w;
}

GzdWriter poseFlags() {
  GzdWriter w(4);
  w.magic(Magic::kOsp);
  const unsigned flags = kBothEyes | kGaze | SMP_STATUS | SMP_HEAD_DATA | SMP_EXTENDED;
  w.startBlock(blockOf(1000, flags));
  SampleRecord s = sampleOf(1000, flags);
  s.headType = 0xB8;
  HeadPose pose;
  pose.gaze = {512.3F, 384.7F, 522.3F, 394.7F};
  pose.rotation = {1.25F, -2.5F, 3.75F};
  pose.position = {10, -20, 600.0625F};
  for (const std::uint32_t bits : {0U, 8U, 4U, 2U, 1U, 0x80000010U, 0xFFFFFFFFU}) {
    pose.markerFlags = bits;
    s.blocks = {headPoseBlock(pose)};
    s.status = bits == 8 ? 2 : 0;
    w.sample(s);
    ++s.time;
  }
  w.endBlock(s.time);
  return w;
}

GzdWriter cameraData() {
  GzdWriter w(2);
  const unsigned flags = SMP_LEFT | SMP_PUPIL_POS | SMP_HREF | SMP_GAZE | SMP_RESOLUTION |
                         SMP_PUPIL_SIZE | SMP_INPUT | SMP_HEAD_DATA;
  w.startBlock(blockOf(1000, flags));
  SampleRecord s = sampleOf(1000, flags);
  s.input = 5 << 9 | 30;  // window origin 120, 40
  s.headData = {250, -500, 125, -1000, 900, 310, 0x1E20, 0x0C0A};
  w.sample(s);
  const int offset = 32700;
  s.time = 1001;
  s.px = {3848 - offset, 0};
  s.py = {2404 - offset, 0};
  s.hx = {3872 - offset, 0};
  s.hy = {2592 - offset, 0};
  s.gx = {0x2059 - offset, 0};
  s.gy = {0x210F - offset, 0};
  s.rx = 310;
  s.pa = {900 - offset, 0};
  s.headType = 0xC4;
  s.headData = {250, 165, 0x4080, 75};
  w.sample(s).endBlock(1002);
  return w;
}

GzdWriter blockShapes() {
  GzdWriter w(2);
  const unsigned flags = SMP_LEFT | kGaze;
  w.sample(sampleOf(900, flags));  // in no block
  w.startSamples(blockOf(1000, flags, 500));
  for (const std::uint32_t time : {1000U, 1002U, 1008U, 1010U}) w.sample(sampleOf(time, flags));
  w.endSamples(1012).sample(sampleOf(1100, flags));
  w.startEvents(blockOf(2000, flags, 500)).event(EventRecord(GZD_START_FIXATION).start(2000));
  w.event(EventRecord(GZD_END_FIXATION).start(2000).end(2100).gazeAverage(5123, 3847));
  w.endEvents(2200).startBlock(blockOf(3000, flags, 500));
  w.sample(sampleOf(3000, flags)).sample(sampleOf(3002, flags));
  return w;
}

}  // namespace golden
