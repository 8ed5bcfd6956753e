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
  EXPECT_EQ(s.gx[0], MISSING_DATA);
  EXPECT_EQ(s.gy[0], MISSING_DATA);
  EXPECT_EQ(s.gx[1], NOT_RECORDED);
  EXPECT_EQ(s.hx[0], MISSING_DATA);
  EXPECT_EQ(s.px[0], NOT_RECORDED);
  EXPECT_EQ(s.pa[0], MISSING_DATA);
  EXPECT_EQ(s.pa[1], NOT_RECORDED);
  EXPECT_EQ(s.rx, MISSING_DATA);
  EXPECT_EQ(s.errors, 0);
  EXPECT_EQ(s.input, NOT_RECORDED_WORD);
  EXPECT_EQ(s.buttons, 0);
  EXPECT_EQ(s.htype, 0xB8);
  const INT16 words[8] = {-32768, -32768, -32768, 0, 0, 0, 0, 0};
  EXPECT_EQ(std::memcmp(s.hdata, words, sizeof words), 0);
}

}  // namespace
