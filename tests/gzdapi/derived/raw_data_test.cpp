#include "derived/raw_data.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace gzd;

namespace {

constexpr int L = GZD_LEFT_EYE, R = GZD_RIGHT_EYE;
constexpr float MISSING = MISSING_DATA;

struct Pair {
  float x, y;
  bool operator==(const Pair&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Pair& p) {
  return out << p.x << "," << p.y;
}
const Pair NO_POSITION = {MISSING, MISSING};

Pair rawPupil(const CameraSetup& c, const FSAMPLE& s, int eye) {
  float rv[2];
  uncorrected_raw_pupil(c, s, eye, rv);
  return {rv[0], rv[1]};
}
Pair rawCr(const CameraSetup& c, const FSAMPLE& s, int eye) {
  float rv[2];
  uncorrected_raw_cr(c, s, eye, rv);
  return {rv[0], rv[1]};
}
Pair rawCr2(const FSAMPLE& s, int eye) {
  float rv[2];
  uncorrected_raw_cr2(s, eye, rv);
  return {rv[0], rv[1]};
}
Pair pupilCr(const CameraSetup& c, const FSAMPLE& s, int eye) {
  float rv[2];
  pupil_cr(c, s, eye, rv);
  return {rv[0], rv[1]};
}
using Dimension = std::pair<UINT32, UINT32>;
const Dimension NO_DIMENSION = {100000000u, 100000000u};
Dimension pupilDimension(const CameraSetup& c, const FSAMPLE& s, int eye) {
  UINT32 rv[2];
  pupil_dimension(c, s, eye, rv);
  return {rv[0], rv[1]};
}
Dimension crDimension(const FSAMPLE& s) {
  UINT32 rv[2];
  cr_dimension(s, rv);
  return {rv[0], rv[1]};
}

FSAMPLE plainSample() {
  FSAMPLE s{};
  s.pa[L] = 900.0f;
  const INT16 words[8] = {250, -500, 1000, 125, 700, 30, 0x1A1B, 0x0506};
  std::copy(words, words + 8, s.hdata);
  s.input = (3 << 9) | 5;  // origin 20, 24
  return s;
}

// A packed value as stored: the position fields hold it less the offset.
float packedInto(int value, float prescaler = 1.0f) {
  return (static_cast<float>(value) - 32700.0f) / prescaler;
}

FSAMPLE packedSample(int eye) {
  FSAMPLE s{};
  s.pa[eye] = packedInto(500);
  s.px[eye] = packedInto(1600);  // 100 pixels
  s.py[eye] = packedInto(800);   // 50
  s.hx[eye] = packedInto(160);
  s.hy[eye] = packedInto(320);
  s.gx[eye] = packedInto(0x2184, 10.0f);  // height 0x21, fractions 8 and 4
  s.gy[eye] = packedInto(0x433C, 10.0f);  // width 0x43, fractions 3 and 12
  s.rx = eye == L ? 4.04f : MISSING;
  s.ry = eye == R ? 4.05f : MISSING;
  return s;
}
const CameraSetup TENFOLD = {10.0f, 176, 190};

TEST(RawData, PlainWords) {
  const FSAMPLE s = plainSample();
  const CameraSetup c;
  EXPECT_EQ(uncorrected_pupil_area(s, L), 700u);
  EXPECT_EQ(uncorrected_cr_area(c, s, L), 30u);
  EXPECT_EQ(rawPupil(c, s, L), (Pair{20 + 88 + 1, 24 + 95 - 2}));
  EXPECT_EQ(rawCr(c, s, L), (Pair{20 + 88 + 4, 24 + 95 + 0.5f}));
  EXPECT_EQ(rawPupil({0.0f, 101, 51}, s, L), (Pair{20 + 50.5f + 1, 24 + 25.5f - 2}));
  EXPECT_EQ(pupilDimension(c, s, L), Dimension(0x1B, 0x1A));
  EXPECT_EQ(crDimension(s), Dimension(6, 5));
  EXPECT_EQ(uncorrected_cr2_area(s, L), 0u);
  EXPECT_EQ(rawCr2(s, L), NO_POSITION);
  UINT32 window[2];
  window_position({0.0f, 101, 190}, s, window);
  EXPECT_EQ(window[0], 70u);  // cut
  EXPECT_EQ(window[1], 119u);
}

TEST(RawData, PlainAreasOfZeroGiveNothing) {
  FSAMPLE s = plainSample();
  s.hdata[4] = s.hdata[5] = 0;
  EXPECT_EQ(rawPupil({}, s, L), NO_POSITION);
  EXPECT_EQ(rawCr({}, s, L), NO_POSITION);
  EXPECT_EQ(pupilDimension({}, s, L), Dimension(0, 0));
}

TEST(RawData, PackedFields) {
  for (const int eye : {L, R}) {
    const FSAMPLE s = packedSample(eye);
    EXPECT_EQ(uncorrected_pupil_area(s, eye), 500u);
    EXPECT_EQ(uncorrected_cr_area(TENFOLD, s, eye), eye == L ? 40u : 41u);
    EXPECT_EQ(rawPupil(TENFOLD, s, eye), (Pair{100 + 8 / 256.0f, 50 + 4 / 256.0f}));
    EXPECT_EQ(rawCr(TENFOLD, s, eye), (Pair{10 + 3 / 256.0f, 20 + 12 / 256.0f}));
    EXPECT_EQ(pupilDimension(TENFOLD, s, eye), Dimension(0x43, 0x21));
  }
}

TEST(RawData, MissingPackedFieldsGiveNothing) {
  for (const float missing : {MISSING_DATA, NOT_RECORDED}) {
    FSAMPLE s = packedSample(L);
    s.gx[L] = missing;
    EXPECT_EQ(rawPupil(TENFOLD, s, L), NO_POSITION);
    EXPECT_NE(rawCr(TENFOLD, s, L), NO_POSITION);
    EXPECT_EQ(pupilDimension(TENFOLD, s, L), NO_DIMENSION);
    s = packedSample(L);
    s.hy[L] = missing;
    EXPECT_EQ(rawCr(TENFOLD, s, L), NO_POSITION);
    s.rx = missing;
    EXPECT_EQ(uncorrected_cr_area(TENFOLD, s, L), 0u);
  }
  FSAMPLE lost = packedSample(L);
  lost.pa[L] = -32700.0f;
  EXPECT_EQ(uncorrected_pupil_area(lost, L), 0u);
  EXPECT_EQ(rawPupil(TENFOLD, lost, L), NO_POSITION);
  lost.pa[L] = NOT_RECORDED;
  EXPECT_EQ(uncorrected_pupil_area(lost, L), 0u);
  // Outside every trial the prescaler is 0.
  EXPECT_EQ(uncorrected_cr_area({}, packedSample(L), L), 0u);
}

TEST(RawData, ASecondReflectionExistsInTwoKindsOfPackedSamples) {
  FSAMPLE s = packedSample(L);
  s.pa[R] = s.pa[L];
  const INT16 words[8] = {11, 22, 0x4080, 33, 44, 55, -256, 66};
  std::copy(words, words + 8, s.hdata);
  s.htype = 196;
  EXPECT_EQ(uncorrected_cr2_area(s, R), 33u);
  EXPECT_EQ(rawCr2(s, R), (Pair{11.25f, 22.5f}));
  EXPECT_EQ(crDimension(s), Dimension(66, 0));
  s.htype = 200;
  EXPECT_EQ(uncorrected_cr2_area(s, L), 33u);
  EXPECT_EQ(uncorrected_cr2_area(s, R), 66u);
  EXPECT_EQ(rawCr2(s, L), (Pair{11.25f, 22.5f}));
  EXPECT_EQ(rawCr2(s, R), (Pair{44 - 1 / 256.0f, 55}));
  EXPECT_EQ(crDimension(s), NO_DIMENSION);
  s.htype = 195;
  EXPECT_EQ(uncorrected_cr2_area(s, L), 0u);
}

TEST(RawData, AnyFloatsGiveAResult) {
  for (const float wild : {std::numeric_limits<float>::quiet_NaN(), 1e38f, -1e38f,
                           std::numeric_limits<float>::infinity()}) {
    FSAMPLE s = packedSample(L);
    s.gx[L] = s.gy[L] = s.rx = s.px[L] = wild;
    EXPECT_NO_FATAL_FAILURE(rawPupil(TENFOLD, s, L));
    EXPECT_NO_FATAL_FAILURE(pupilCr(TENFOLD, s, L));
    pupilDimension(TENFOLD, s, L);
    uncorrected_cr_area({wild, 1, 1}, s, L);
    s.pa[L] = wild;
    uncorrected_pupil_area(s, L);
    pupilCr(TENFOLD, s, L);
  }
}

// ---- pupil minus reflection --------------------------------------------------------------------

struct Fixed {
  float x, y;
  UINT32 area;
};

Fixed fixedUp(float x, float y, UINT32 area, float cx, float cy, float ca) {
  Fixed f = {x, y, area};
  do_pupil_cr_fixup(&f.x, &f.y, &f.area, cx, cy, ca, 3.0f, 5);
  return f;
}

TEST(PupilCr, WithoutOverlapItIsTheDifference) {
  FSAMPLE s = plainSample();
  s.hdata[0] = 30000;  // far from the reflection
  EXPECT_EQ(pupilCr({}, s, L), (Pair{228 - 1.02f * 112, 117 - 1.02f * 119.5f}));
}

TEST(PupilCr, OfMissingInputsItIsTheFormulasValue) {
  FSAMPLE s = plainSample();
  s.hdata[4] = 0;
  EXPECT_EQ(pupilCr({}, s, L), (Pair{MISSING - 1.02f * 112, MISSING - 1.02f * 119.5f}));
}

TEST(Overlap, AReflectionInsideThePupilMovesItToTheCommonCentre) {
  const double pupil = 10000, rc = std::sqrt(100 / 3.14159) + 3, cr = rc * rc * 3.14159;
  const Fixed f = fixedUp(100, 50, 10000, 110, 60, 100);
  EXPECT_NEAR(f.x, (100 * pupil + 110 * cr) / (pupil + cr), 1e-4);
  EXPECT_NEAR(f.y, (50 * pupil + 60 * cr) / (pupil + cr), 1e-4);
  EXPECT_EQ(f.area, static_cast<UINT32>(pupil + cr));
}

TEST(Overlap, NothingChangesWithoutAreasPositionsOrOverlap) {
  EXPECT_EQ(fixedUp(100, 50, 0, 100, 50, 100).area, 0u);
  EXPECT_EQ(fixedUp(100, 50, 400, 100, 50, 0.5f).area, 400u);
  EXPECT_EQ(fixedUp(100, 50, 400, MISSING, 50, 100).area, 400u);
  EXPECT_EQ(fixedUp(NOT_RECORDED, 50, 400, 100, 50, 100).area, 400u);
  EXPECT_EQ(fixedUp(100, 50, 400, 200, 50, 100).area, 400u);
}

// The same steps in plain double arithmetic.
TEST(Overlap, APartialOneIsRefinedFiveTimes) {
  const double pi = 3.14159;
  for (double distance = 5; distance < 20; distance += 0.25) {
    const double px = 100, cx = px + distance, area = 400, rc = std::sqrt(100 / pi) + 3;
    const double disc = rc * rc * pi, total = area + disc, middle = (px * area + cx * disc) / total;
    double x = px, a = area;
    bool overlaps = true;
    for (int pass = 0; pass < 5 && overlaps; ++pass) {
      const double f = std::min(1.0, (std::sqrt(a / pi) - (std::fabs(x - cx) - rc)) * 0.5 / rc);
      overlaps = f >= 0;
      x = px * (1 - f) + middle * f;
      a = area * (1 - f) + total * f;
    }
    const Fixed fixed = fixedUp(100, 50, 400, static_cast<float>(cx), 50, 100);
    EXPECT_NEAR(fixed.x, overlaps ? x : px, 1e-3) << distance;
    EXPECT_NEAR(fixed.area, overlaps ? a : area, 1.01) << distance;
    EXPECT_NEAR(fixed.y, 50.0f, 1e-4);
  }
}

}  // namespace
