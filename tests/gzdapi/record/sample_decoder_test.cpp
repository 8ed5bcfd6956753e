#include "record/sample_decoder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "record/Sample.h"
#include "support/memory_stream.h"
#include "support/recording_fixture.h"

using namespace gzd;

namespace {

using gzdsynth::Bytes;
using gzdsynth::kStoredMissing;
using gzdsynth::SampleBlock;
using gzdsynth::SampleRecord;

constexpr unsigned BOTH = SMP_LEFT | SMP_RIGHT;
constexpr std::size_t PADDING = 100;

// One decoding of a record: what came out, or the error.
struct Decoded {
  FSAMPLE sample{};
  StreamState state;
  INT64 end = 0;
  bool failed = false;
  std::string log;
};

Bytes body_of(const SampleRecord& record) {
  Bytes bytes;
  gzdsynth::putSample(bytes, record);
  bytes.erase(bytes.begin(), bytes.begin() + 2);
  return bytes;
}

UINT16 tag_of(const SampleRecord& record) {
  return static_cast<UINT16>(record.flags | SMP_IS_SAMPLE);
}

Decoded decode(const Bytes& body, UINT16 tag, const StreamState& state, UINT32 expectedTime = 0) {
  CapturedLog log;
  MemoryStream in(body);
  Decoded decoded;
  decoded.state = state;
  try {
    decode_sample(in, decoded.state, tag, expectedTime, decoded.sample);
  } catch (const GZDException&) {
    decoded.failed = true;
  }
  decoded.end = in.getFilePos();
  decoded.log = log.take();
  return decoded;
}

// Decodes near the end of the stream and with bytes to spare; both must agree.
Decoded decode(const SampleRecord& record, const StreamState& state = {}, UINT32 expectedTime = 0) {
  Bytes body = body_of(record);
  const Decoded atEnd = decode(body, tag_of(record), state, expectedTime);
  EXPECT_EQ(atEnd.end, static_cast<INT64>(body.size()));
  EXPECT_FALSE(atEnd.failed);
  body.insert(body.end(), PADDING, 0xEE);
  const Decoded inWindow = decode(body, tag_of(record), state, expectedTime);
  EXPECT_EQ(inWindow.end, atEnd.end);
  EXPECT_EQ(std::memcmp(&inWindow.sample, &atEnd.sample, sizeof(FSAMPLE)), 0);
  return atEnd;
}

StreamState osprey(float gazePrescale, float pupilPrescale) {
  StreamState state;
  state.ovilo_revision = 4;
  state.parameters.gaze_prescale = gazePrescale;
  state.parameters.pupil_prescale = pupilPrescale;
  return state;
}

// ---- fixed part
// ----------------------------------------------------------------------------------

TEST(SampleDecoder, ABareSampleHasItsPresets) {
  StreamState state;
  state.curr_time = 4000;
  const Decoded d = decode({.flags = SMP_LEFT, .step = 5}, state);
  const FSAMPLE& s = d.sample;
  EXPECT_EQ(s.time, 4005u);
  EXPECT_EQ(d.state.curr_time, 4005u);
  EXPECT_EQ(s.flags, 0x8001);
  for (const auto* field :
       {s.px, s.py, s.hx, s.hy, s.gx, s.gy, s.gxvel, s.gyvel, s.hxvel, s.hyvel, s.rxvel, s.ryvel,
        s.fgxvel, s.fgyvel, s.fhxvel, s.fhyvel, s.frxvel, s.fryvel}) {
    EXPECT_EQ(field[0], -32768.0f);
    EXPECT_EQ(field[1], -32768.0f);
  }
  EXPECT_EQ(s.rx, 1e8f);
  EXPECT_EQ(s.ry, 1e8f);
  EXPECT_EQ(s.errors, 0x8000);
  EXPECT_EQ(s.input, 0x8000);
  EXPECT_EQ(s.buttons, 0);
  EXPECT_EQ(s.htype, -32768);
  EXPECT_EQ(s.headMarkerFlags, 0xFFFF8000u);
  for (const auto* field : {s.eyeInHeadX, s.eyeInHeadY, s.headRotation, s.headPosition}) {
    for (int i = 0; i < 3; ++i) EXPECT_EQ(field[i], 1e8f);
  }
  for (const auto* field :
       {s.unused_headInSpaceX, s.unused_headInSpaceY, s.ex, s.ey, s.emajor, s.eminor, s.eangle}) {
    EXPECT_EQ(field[0], 1e8f);
    EXPECT_EQ(field[1], 1e8f);
  }
  for (const float value : {s.headInSpaceX, s.headInSpaceY, s.hrgx, s.hrgy, s.ergx, s.ergy}) {
    EXPECT_EQ(value, 1e8f);
  }
}

TEST(SampleDecoder, TimesAreAbsoluteOrSteps) {
  StreamState state;
  state.curr_time = 4000;
  EXPECT_EQ(decode({.flags = SMP_LEFT, .step = 255}, state).sample.time, 4255u);
  const Decoded expected = decode({.flags = SMP_LEFT, .step = 5}, state, 2000);
  EXPECT_EQ(expected.sample.time, 2000u);
  EXPECT_EQ(expected.state.curr_time, 2000u);
  const Decoded whole =
      decode({.flags = SMP_LEFT | SMP_TIME_ABSOLUTE, .time = 0xFEDCBA98u}, state, 2000);
  EXPECT_EQ(whole.sample.time, 0xFEDCBA98u);
  EXPECT_EQ(whole.state.curr_time, 0xFEDCBA98u);
}

TEST(SampleDecoder, EveryFixedFieldOfBothEyes) {
  const SampleRecord record{.flags = 0xFFF1,
                            .time = 77,
                            .px = {1, -2},
                            .py = {3, kStoredMissing},
                            .hx = {5, 6},
                            .hy = {kStoredMissing, 8},
                            .gx = {3000, kStoredMissing},
                            .gy = {-11, 12},
                            .rx = 333,
                            .ry = kStoredMissing,
                            .pa = {900, 1000},
                            .status = 0x8123,
                            .input = 0xFFFE,
                            .buttons = 0x0102,
                            .headType = 0xB7,
                            .headData = {1, -2, 3, -4, 5, -6, 7, 8}};
  const Decoded d = decode(record, osprey(10.0f, 4.0f));
  const FSAMPLE& s = d.sample;
  EXPECT_EQ(s.time, 77u);
  EXPECT_EQ(s.px[0], 1.0f);
  EXPECT_EQ(s.px[1], -2.0f);
  EXPECT_EQ(s.py[0], 3.0f);
  EXPECT_EQ(s.py[1], -32768.0f);  // plain words have no mark for missing
  EXPECT_EQ(s.hx[1], 6.0f);
  EXPECT_EQ(s.hy[0], -32768.0f);
  EXPECT_EQ(s.hy[1], 8.0f);
  EXPECT_EQ(s.gx[0], 300.0f);
  EXPECT_EQ(s.gx[1], 1e8f);
  EXPECT_EQ(s.gy[0], -1.1f);
  EXPECT_EQ(s.gy[1], 1.2f);
  EXPECT_EQ(s.rx, 33.3f);
  EXPECT_EQ(s.ry, 1e8f);
  EXPECT_EQ(s.pa[0], 225.0f);
  EXPECT_EQ(s.pa[1], 250.0f);
  EXPECT_EQ(s.errors, 0x8123);
  EXPECT_EQ(s.input, 0xFFFE);
  EXPECT_EQ(s.buttons, 0x0102);
  EXPECT_EQ(s.htype, 0xB7);
  const INT16 words[8] = {1, -2, 3, -4, 5, -6, 7, 0};
  EXPECT_EQ(std::memcmp(s.hdata, words, sizeof words), 0);
  EXPECT_EQ(d.state.sam_data, 0xFFF1);
}

TEST(SampleDecoder, OneEyeLeavesTheOtherNotRecorded) {
  SampleRecord record{.flags = SMP_RIGHT | SMP_GAZE | SMP_PUPIL_SIZE};
  record.gx = {1, 20};
  record.gy = {2, 30};
  record.pa = {3, 40};
  const FSAMPLE right = decode(record).sample;
  EXPECT_EQ(right.gx[0], -32768.0f);
  EXPECT_EQ(right.gx[1], 20.0f);
  EXPECT_EQ(right.pa[0], -32768.0f);
  EXPECT_EQ(right.pa[1], 40.0f);
  record.flags ^= BOTH;
  const FSAMPLE left = decode(record).sample;
  EXPECT_EQ(left.gy[0], 2.0f);
  EXPECT_EQ(left.gy[1], -32768.0f);
  EXPECT_EQ(left.pa[1], -32768.0f);
}

TEST(SampleDecoder, PrescalesUpToATenthDoNotScale) {
  SampleRecord record{.flags = SMP_LEFT | SMP_GAZE | SMP_PUPIL_SIZE};
  record.gx = {3000, 0};
  record.pa = {kStoredMissing, 0};
  for (const auto& [prescale, expected] :
       {std::pair{10.0f, 300.0f}, {0.05f, 3000.0f}, {0.0f, 3000.0f}, {-10.0f, 3000.0f}}) {
    const FSAMPLE s = decode(record, osprey(prescale, 10.0f)).sample;
    EXPECT_EQ(s.gx[0], expected) << prescale;
    EXPECT_EQ(s.pa[0], 1e8f);
  }
}

TEST(SampleDecoder, OlderTrackersStorePlainPupilSizes) {
  SampleRecord record{.flags = BOTH | SMP_PUPIL_SIZE};
  record.pa = {kStoredMissing, 800};
  for (const INT16 generation : {INT16{1}, INT16{2}, INT16{3}}) {
    StreamState state = osprey(1.0f, 8.0f);
    state.ovilo_revision = generation;
    const FSAMPLE s = decode(record, state).sample;
    EXPECT_EQ(s.pa[0], -32768.0f);
    EXPECT_EQ(s.pa[1], 800.0f);
  }
}

TEST(SampleDecoder, PupilSizesNotInTheRecordStayAsTheyWere) {
  MemoryStream in(body_of({.flags = SMP_LEFT}));
  StreamState state;
  FSAMPLE s{};
  s.pa[0] = 12.0f;
  s.pa[1] = 34.0f;
  decode_sample(in, state, 0x8001, 0, s);
  EXPECT_EQ(s.pa[0], 12.0f);
  EXPECT_EQ(s.pa[1], 34.0f);
}

TEST(SampleDecoder, HeadDataHasAtMostEightWords) {
  SampleRecord record{.flags = SMP_LEFT | SMP_HEAD_DATA, .headType = 0x1B};
  record.headData = {1, 2, 3, 4, 5, 6, 7, 8};
  const FSAMPLE full = decode(record).sample;
  EXPECT_EQ(full.htype, 0x1B);
  EXPECT_EQ(full.hdata[7], 8);
  record.headType = 0xF0;
  const FSAMPLE none = decode(record).sample;
  EXPECT_EQ(none.htype, 0xF0);
  EXPECT_EQ(none.hdata[0], 0);
}

// ---- blocks
// --------------------------------------------------------------------------------------

SampleRecord extended(std::vector<SampleBlock> blocks) {
  SampleRecord record{.flags = SMP_LEFT | SMP_EXTENDED};
  record.blocks = std::move(blocks);
  return record;
}

TEST(SampleBlocks, HeadTarget) {
  SampleRecord record = extended(
      {gzdsynth::headTargetBlock({10, 20, 30, 40, 50, 60, 70, 80, 90, 100, kStoredMissing, 120})});
  record.flags |= SMP_HEAD_DATA;
  record.headData = {182, -364, 91, 10, -25, 6, -3, 0x1FF};
  const FSAMPLE s = decode(record, osprey(10.0f, 1.0f)).sample;
  EXPECT_EQ(s.unused_headInSpaceX[0], 1.0f);
  EXPECT_EQ(s.unused_headInSpaceX[1], 2.0f);
  EXPECT_EQ(s.headInSpaceX, 3.0f);
  EXPECT_EQ(s.unused_headInSpaceY[0], 4.0f);
  EXPECT_EQ(s.unused_headInSpaceY[1], 5.0f);
  EXPECT_EQ(s.headInSpaceY, 6.0f);
  EXPECT_EQ(s.eyeInHeadX[0], 7.0f);
  EXPECT_EQ(s.eyeInHeadX[2], 9.0f);
  EXPECT_EQ(s.eyeInHeadY[0], 10.0f);
  EXPECT_EQ(s.eyeInHeadY[1], 1e8f);
  EXPECT_EQ(s.eyeInHeadY[2], 12.0f);
  EXPECT_EQ(s.headRotation[0], 1.0f);
  EXPECT_EQ(s.headRotation[1], -2.0f);
  EXPECT_EQ(s.headRotation[2], 0.5f);
  EXPECT_EQ(s.headPosition[0], 1.0f);
  EXPECT_EQ(s.headPosition[1], -2.5f);
  EXPECT_EQ(s.headPosition[2], 0.6f);
  EXPECT_EQ(s.headMarkerFlags, 0x7F0000u - 3u);
}

gzdsynth::HeadPose pose_of_numbers() {
  return {.headInSpaceX = {1, 2, 3},
          .headInSpaceY = {4, 5, -32768.0f},
          .eyeInHeadX = {7, 8, 9},
          .eyeInHeadY = {10, 11, 12},
          .markerFlags = 0x89ABCDEFu,
          .rotation = {14, 15, 16},
          .position = {17, 18, 1e8f},
          .gaze = {20, 21, 22, 23}};
}

TEST(SampleBlocks, HeadPoseReplacesGaze) {
  SampleRecord record = extended({gzdsynth::headPoseBlock(pose_of_numbers())});
  record.flags |= SMP_GAZE;
  record.gx = {500, 600};
  const FSAMPLE s = decode(record).sample;
  EXPECT_EQ(s.unused_headInSpaceX[0], 1.0f);
  EXPECT_EQ(s.unused_headInSpaceX[1], 2.0f);
  EXPECT_EQ(s.headInSpaceX, 3.0f);
  EXPECT_EQ(s.unused_headInSpaceY[1], 5.0f);
  EXPECT_EQ(s.headInSpaceY, 1e8f);
  EXPECT_EQ(s.eyeInHeadX[2], 9.0f);
  EXPECT_EQ(s.eyeInHeadY[0], 10.0f);
  EXPECT_EQ(s.headMarkerFlags, 0x89ABCDEFu);
  EXPECT_EQ(s.headRotation[0], 14.0f);
  EXPECT_EQ(s.headPosition[1], 18.0f);
  EXPECT_EQ(s.headPosition[2], 1e8f);
  EXPECT_EQ(s.gx[0], 20.0f);
  EXPECT_EQ(s.gy[0], 21.0f);
  EXPECT_EQ(s.gx[1], 22.0f);
  EXPECT_EQ(s.gy[1], 23.0f);
}

TEST(SampleBlocks, EllipsesOfBothSizes) {
  const gzdsynth::Ellipse ellipse{.headGazeX = 1,
                                  .headGazeY = 2,
                                  .eyeGazeX = {3, 4, 5},
                                  .eyeGazeY = {6, 7, -32768.0f},
                                  .eyes = {{{10, 11, 12, 13, 14}, {20, 21, 22, 23, 24}}}};
  for (const SampleBlock& block :
       {gzdsynth::ellipseBlock56(ellipse), gzdsynth::ellipseBlock72(ellipse)}) {
    const FSAMPLE s = decode(extended({block})).sample;
    EXPECT_EQ(s.hrgx, 1.0f);
    EXPECT_EQ(s.hrgy, 2.0f);
    EXPECT_EQ(s.ergx, 5.0f);
    EXPECT_EQ(s.ergy, 1e8f);
    EXPECT_EQ(s.ex[0], 10.0f);
    EXPECT_EQ(s.ey[0], 11.0f);
    EXPECT_EQ(s.emajor[0], 12.0f);
    EXPECT_EQ(s.eminor[0], 13.0f);
    EXPECT_EQ(s.eangle[0], 14.0f);
    EXPECT_EQ(s.ex[1], 20.0f);
    EXPECT_EQ(s.eangle[1], 24.0f);
  }
}

TEST(SampleBlocks, UnknownLengthsAreSkippedWhole) {
  const SampleBlock known = gzdsynth::headTargetBlock({11, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  for (const std::size_t length : {1u, 23u, 25u, 91u, 93u, 200u, 255u}) {
    const FSAMPLE s =
        decode(extended({gzdsynth::unknownBlock(1, Bytes(length, 24)), known})).sample;
    EXPECT_EQ(s.unused_headInSpaceX[0], 11.0f) << length;
  }
}

TEST(SampleBlocks, KnownLengthsOfOtherKindsAreAByteShorter) {
  const SampleBlock known = gzdsynth::headTargetBlock({11, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  for (const auto& [length, kind] :
       {std::pair{24u, 2u}, {24u, 3u}, {56u, 1u}, {72u, 0u}, {92u, 1u}, {92u, 3u}, {56u, 255u}}) {
    const SampleBlock other{length, kind, Bytes(length - 1, 0xDD)};
    EXPECT_EQ(decode(extended({other, known})).sample.unused_headInSpaceX[0], 11.0f)
        << length << ' ' << kind;
  }
}

TEST(SampleBlocks, SkipBlocksHaveNoKnownLengths) {
  SampleRecord record{.flags = SMP_LEFT | SMP_SKIP_BLOCKS};
  record.skipped = {gzdsynth::unknownBlock(1, Bytes(24, 9)),
                    gzdsynth::unknownBlock(3, Bytes(72, 9)),
                    gzdsynth::unknownBlock(7, Bytes(255, 9))};
  const FSAMPLE s = decode(record).sample;
  EXPECT_EQ(s.headInSpaceX, 1e8f);
  record.flags |= SMP_EXTENDED;
  record.blocks = {gzdsynth::headPoseBlock(pose_of_numbers())};
  EXPECT_EQ(decode(record).sample.headInSpaceX, 3.0f);
}

// ---- cuts, and the scan's view
// -------------------------------------------------------------------

TEST(SampleDecoder, ARecordCutAnywhereIsReportedAtTheCut) {
  SampleRecord record{.flags = 0xFFFC, .headType = 0xB8};
  record.blocks = {gzdsynth::headPoseBlock({}), gzdsynth::ellipseBlock72({}),
                   gzdsynth::unknownBlock(9, Bytes(30, 1)), gzdsynth::headTargetBlock({})};
  record.skipped = {gzdsynth::unknownBlock(1, Bytes(40, 2))};
  const Bytes whole = body_of(record);
  for (std::size_t cut = 0; cut < whole.size(); ++cut) {
    const Bytes body(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut));
    const Decoded d = decode(body, tag_of(record), {});
    EXPECT_TRUE(d.failed) << cut;
    EXPECT_EQ(d.end, static_cast<INT64>(cut));
    EXPECT_TRUE(d.log == "error reading gzd file 9\n" || d.log == "error reading gzd file 11\n" ||
                d.log.starts_with("error reading gzd file 7a r = "))
        << d.log;
  }
  EXPECT_FALSE(decode(whole, tag_of(record), {}).failed);
}

struct Glanced {
  SampleGlance glance;
  StreamState state;
  INT64 end = 0;
  bool failed = false;
  std::string log;
};

// The layout stays from one record to the next, as it does in a scan.
Glanced glance(const Bytes& body, UINT16 tag, const StreamState& state) {
  static SampleLayout layout;
  CapturedLog log;
  MemoryStream in(body);
  Glanced glanced;
  glanced.state = state;
  try {
    glanced.glance = glance_at_sample(in, glanced.state, tag, layout);
  } catch (const GZDException&) {
    glanced.failed = true;
  }
  glanced.end = in.getFilePos();
  glanced.log = log.take();
  return glanced;
}

void expect_same_view(const Bytes& body, UINT16 tag, const StreamState& state) {
  const Decoded d = decode(body, tag, state);
  const Glanced g = glance(body, tag, state);
  ASSERT_EQ(g.failed, d.failed);
  ASSERT_EQ(g.end, d.end);
  ASSERT_EQ(g.log, d.log);
  ASSERT_EQ(g.state.curr_time, d.state.curr_time);
  ASSERT_EQ(g.state.sam_data, d.state.sam_data);
  if (d.failed) return;
  ASSERT_EQ(g.glance.time, d.sample.time);
  ASSERT_EQ(g.glance.flags, d.sample.flags);
  ASSERT_EQ(g.glance.input, d.sample.input);
  ASSERT_EQ(g.glance.htype, d.sample.htype);
  bool negative = false;
  for (int eye = 0; eye < 2; ++eye) {
    negative |= (tag & SMP_PUPIL_SIZE) != 0 && (tag & eye_flag(eye)) != 0 && d.sample.pa[eye] < 0;
  }
  ASSERT_EQ(g.glance.hasNegativePupil, negative);
}

TEST(SampleGlance, AgreesWithTheDecoderOverRandomRecords) {
  std::mt19937 random(7);
  for (int round = 0; round < 40'000; ++round) {
    StreamState state = osprey(round % 3 == 0 ? 10.0f : 0.0f, 2.0f);
    state.ovilo_revision = static_cast<INT16>(1 + random() % 4);
    state.curr_time = static_cast<UINT32>(random());
    // Now and then what most recordings hold: gaze, resolution and sizes of both eyes, and words.
    const bool common = random() % 4 == 0;
    const UINT16 tag = static_cast<UINT16>(common ? 0xC701 | (random() & 0x20E0) : random() | 1);
    Bytes body(random() % 300);
    for (auto& b : body) b = static_cast<std::uint8_t>(random() % 4 == 0 ? random() % 4 : random());
    // Lengths of known blocks are rare in random bytes.
    for (int i = 0; i < 4 && body.size() > 2; ++i) {
      const std::size_t at = random() % (body.size() - 1);
      body[at] = std::array<std::uint8_t, 4>{24, 56, 72, 92}[random() % 4];
      body[at + 1] = static_cast<std::uint8_t>(1 + random() % 3);
    }
    // And so are missing values.
    if (body.size() > 20) body[1 + random() % 19] = 0x80;
    ASSERT_NO_FATAL_FAILURE(expect_same_view(body, tag, state)) << "round " << round;
    // The same bytes with more behind them: the same record, out of the window.
    const Decoded atEnd = decode(body, tag, state);
    if (atEnd.failed) continue;
    body.insert(body.end(), PADDING, 0);
    ASSERT_NO_FATAL_FAILURE(expect_same_view(body, tag, state)) << "round " << round;
    const Decoded inWindow = decode(body, tag, state);
    ASSERT_EQ(inWindow.end, atEnd.end);
    ASSERT_EQ(std::memcmp(&inWindow.sample, &atEnd.sample, sizeof(FSAMPLE)), 0);
  }
}

TEST(SampleDecoder, APresetSampleIsDecodedIntoAgainAndAgain) {
  const UINT16 tag = 0xDFF1;
  StreamState state = osprey(10.0f, 1.0f);
  FSAMPLE reused{};
  preset_sample(tag, reused);
  std::mt19937 random(3);
  for (int round = 0; round < 200; ++round) {
    Bytes body(200);
    for (auto& b : body) b = static_cast<std::uint8_t>(random());
    MemoryStream in(body);
    decode_into_preset_sample(in, state, layout_of(tag, state), 5, reused);
    const FSAMPLE fresh = decode(body, tag, state, 5).sample;
    ASSERT_EQ(std::memcmp(&fresh, &reused, sizeof fresh), 0);
  }
}

}  // namespace
