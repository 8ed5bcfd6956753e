// Samples as values, and those that are made for missing ones.
#include "record/Sample.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "record/sample_decoder.h"

using namespace gzd;

namespace {

TEST(DummySample, MissesWhatItsModelHas) {
  const UINT16 tag = SMP_LEFT | SMP_GAZE | SMP_HREF | SMP_PUPIL_SIZE | SMP_INPUT | SMP_IS_SAMPLE;
  FSAMPLE model{};
  model.htype = 0xB8;
  model.pa[0] = 500.0f;
  FSAMPLE s{};
  make_dummy_sample(tag, &model, s);
  EXPECT_EQ(s.gx[0], 1e8f);
  EXPECT_EQ(s.gy[0], 1e8f);
  EXPECT_EQ(s.gx[1], -32768.0f);
  EXPECT_EQ(s.hx[0], 1e8f);
  EXPECT_EQ(s.px[0], -32768.0f);
  EXPECT_EQ(s.pa[0], 1e8f);
  EXPECT_EQ(s.pa[1], -32768.0f);
  EXPECT_EQ(s.rx, 1e8f);
  EXPECT_EQ(s.errors, 0);
  EXPECT_EQ(s.input, 0x8000);
  EXPECT_EQ(s.buttons, 0);
  EXPECT_EQ(s.htype, 0xB8);
  const INT16 words[8] = {-32768, -32768, -32768, 0, 0, 0, 0, 0};
  EXPECT_EQ(std::memcmp(s.hdata, words, sizeof words), 0);
}

TEST(DummySample, OfRawDataStaysRaw) {
  const UINT16 tag = SMP_LEFT | SMP_RIGHT | SMP_PUPIL_SIZE | SMP_IS_SAMPLE;
  FSAMPLE model{};
  model.pa[0] = -100.0f;
  model.pa[1] = 100.0f;
  FSAMPLE s{};
  make_dummy_sample(tag, &model, s);
  EXPECT_EQ(s.pa[0], -32768.0f);
  EXPECT_EQ(s.pa[1], 1e8f);
}

TEST(Sample, PositionsByEyeAndKind) {
  Sample s;
  s.flags = SMP_LEFT | SMP_GAZE | SMP_HREF | SMP_PUPIL_SIZE;
  s.pa[0] = 15.0f;
  s.gx[0] = 1;
  s.gy[0] = 2;
  s.hx[0] = 3;
  s.hy[0] = 4;
  const auto at = [&s](int eye, int type) {
    float x = 0, y = 0;
    const int result = s.getSampleData(&x, &y, eye, type);
    return std::array<float, 3>{static_cast<float>(result), x, y};
  };
  using Answer = std::array<float, 3>;
  EXPECT_EQ(at(0, 192), (Answer{1, 1, 2}));
  EXPECT_EQ(at(0, 128), (Answer{1, 3, 4}));
  EXPECT_EQ(at(0, 64), (Answer{1, 1e8f, 1e8f}));
  EXPECT_EQ(at(0, 7), (Answer{1, 1e8f, 1e8f}));
  EXPECT_EQ(at(1, 192), (Answer{0, 1e8f, 1e8f}));
  s.pa[0] = 14.9f;
  EXPECT_EQ(at(0, 192), (Answer{1, 1e8f, 1e8f}));
  s.flags ^= SMP_PUPIL_SIZE;
  EXPECT_EQ(at(0, 192), (Answer{1, 1, 2}));
}

}  // namespace
