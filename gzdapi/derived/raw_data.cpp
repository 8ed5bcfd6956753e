// do_pupil_cr_fixup: the bright reflection hides a part of the dark pupil, which pulls the pupil's
// measured centre away from it.
// 1. From the discs' radii and distance follows how far the reflection reaches into the pupil, as a
//    fraction f of its diameter.
// 2. Centre and area are blended by f from those of the pupil to those of pupil and reflection
//    together.
// 3. f is taken anew from the blended pupil, and the blend repeated from the original one.

#include "derived/raw_data.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace gzd {

namespace {

constexpr float pack_offset = 32700.0f;
constexpr float pack_steps = 16.0f;   // fractions of a packed unit
constexpr float pack_scale = 256.0f;  // packed fractions in a camera pixel
constexpr float word_scale = 250.0f;  // units of plain words in a camera pixel
constexpr float cr_weight = 1.02f;    // in pupil minus reflection
constexpr float rough_pi = 3.14159f;  // of the overlap correction
constexpr float overlap_margin = 3.0f;
constexpr int overlap_passes = 5;

// What the words of `hdata` hold. Of two words x or width comes first, the area and the box of
// pupil and reflection have one each.
enum HeadWord {
  WORD_PUPIL = 0,
  WORD_CR = 2,
  WORD_PUPIL_AREA = 4,
  WORD_CR_AREA,
  WORD_PUPIL_BOX,
  WORD_CR_BOX
};
// With a second reflection of packed data they hold that instead, the words of one eye after those
// of the other.
enum SecondReflectionWord { WORD_CR2 = 0, WORD_CR2_FRACTIONS = 2, WORD_CR2_AREA, CR2_WORDS };

// The corner of the tracking window in `input`: nine bits of x, seven of y, in steps of pixels.
constexpr int window_x_bits = 9;
constexpr int window_x_mask = (1 << window_x_bits) - 1;
constexpr int window_x_step = 4;
constexpr int window_y_step = 8;

// By their bits, as no others have these values.
bool missing(float value) {
  const auto bits = std::bit_cast<UINT32>(value);
  return bits == std::bit_cast<UINT32>(MISSING_DATA) || bits == std::bit_cast<UINT32>(NOT_RECORDED);
}

bool is_packed(const FSAMPLE& sam, int eye) {
  return sam.pa[eye] < 0.0f;
}

void set(float* rv, float x, float y) {
  rv[0] = x;
  rv[1] = y;
}

void set_missing(float* rv) {
  set(rv, MISSING_DATA, MISSING_DATA);
}

void set_missing(UINT32* rv) {
  rv[0] = rv[1] = MISSING_DATA_INT;
}

// Width in the low byte, height in the high one.
void set_box(INT16 word, UINT32* rv) {
  rv[0] = static_cast<UINT32>(word & 0xFF);
  rv[1] = static_cast<UINT32>(word >> 8);
}

// Truncated; what an integer cannot hold becomes the nearest it can, not-a-number 0.
template <typename Integer>
Integer truncated(float value) {
  using Limits = std::numeric_limits<Integer>;
  if (std::isnan(value)) return 0;
  if (value <= static_cast<float>(Limits::min())) return Limits::min();
  if (value >= static_cast<float>(Limits::max())) return Limits::max();
  return static_cast<Integer>(value);
}

// What a field of packed data holds besides: two fractions of a position in the low byte, a length
// of the pupil's box in the one above.
struct PackedField {
  bool known;
  int bits;
};

PackedField unpacked(float prescaler, float value) {
  if (missing(value)) return {false, 0};
  return {true, truncated<INT32>(prescaler * value + pack_offset)};
}

struct PackedFields {
  PackedField x, y;
};

// Those of an eye; unknown ones when its data are not packed.
PackedFields packed_fields(const CameraSetup& camera, const FSAMPLE& sam, int eye) {
  if (!is_packed(sam, eye)) return {};
  return {unpacked(camera.prescaler, sam.gx[eye]), unpacked(camera.prescaler, sam.gy[eye])};
}

// A coordinate of which `whole` holds the upper part and `sixteenths` the lower one.
float packed_coordinate(float whole, int sixteenths) {
  return ((whole + pack_offset) * pack_steps + static_cast<float>(sixteenths)) / pack_scale;
}

void packed_position(float x, float y, const PackedField& fractions, float* rv) {
  if (missing(x) || missing(y) || !fractions.known) return set_missing(rv);
  set(rv, packed_coordinate(x, (fractions.bits >> 4) & 15),
      packed_coordinate(y, fractions.bits & 15));
}

struct Centre {
  float x, y;
};

Centre window_centre(const CameraSetup& camera, const FSAMPLE& sam) {
  const auto originX = static_cast<float>((sam.input & window_x_mask) * window_x_step);
  const auto originY = static_cast<float>((sam.input >> window_x_bits) * window_y_step);
  return {originX + static_cast<float>(camera.width) * 0.5f,
          originY + static_cast<float>(camera.height) * 0.5f};
}

void plain_position(const CameraSetup& camera, const FSAMPLE& sam, int word, float* rv) {
  const Centre centre = window_centre(camera, sam);
  set(rv, centre.x + static_cast<float>(sam.hdata[word]) / word_scale,
      centre.y + static_cast<float>(sam.hdata[word + 1]) / word_scale);
}

// The words of the second reflection of an eye; null without one.
const INT16* second_reflection(const FSAMPLE& sam, int eye) {
  if (!is_packed(sam, eye)) return nullptr;
  if (sam.htype == GZD_HTYPE_SECOND_CR_ONE_EYE) return sam.hdata;
  if (sam.htype != GZD_HTYPE_SECOND_CR_TWO_EYES) return nullptr;
  return sam.hdata + (eye == GZD_RIGHT_EYE ? CR2_WORDS : 0);
}

// Centre of the pupil, or of its reflection, of an eye that has an area of it, and the pupil's box.
void centre_of_pupil(const CameraSetup& camera, const FSAMPLE& sam, int eye,
                     const PackedFields& fields, float* rv) {
  if (!is_packed(sam, eye)) return plain_position(camera, sam, WORD_PUPIL, rv);
  packed_position(sam.px[eye], sam.py[eye], fields.x, rv);
}

void centre_of_cr(const CameraSetup& camera, const FSAMPLE& sam, int eye,
                  const PackedFields& fields, float* rv) {
  if (!is_packed(sam, eye)) return plain_position(camera, sam, WORD_CR, rv);
  packed_position(sam.hx[eye], sam.hy[eye], fields.y, rv);
}

void box_of_pupil(const FSAMPLE& sam, int eye, const PackedFields& fields, UINT32* rv) {
  if (!is_packed(sam, eye)) return set_box(sam.hdata[WORD_PUPIL_BOX], rv);
  if (!fields.x.known || !fields.y.known) return set_missing(rv);
  rv[0] = static_cast<UINT32>(fields.y.bits >> 8) & 0xFF;
  rv[1] = static_cast<UINT32>(fields.x.bits >> 8) & 0xFF;
}

}  // namespace

// ---- pupil --------------------------------------------------------------------------------------

UINT32 uncorrected_pupil_area(const FSAMPLE& sam, int eye) {
  if (!is_packed(sam, eye)) return static_cast<UINT32>(sam.hdata[WORD_PUPIL_AREA]);
  return sam.pa[eye] <= -pack_offset ? 0 : truncated<UINT32>(sam.pa[eye] + pack_offset);
}

void uncorrected_raw_pupil(const CameraSetup& camera, const FSAMPLE& sam, int eye, float* rv) {
  if (uncorrected_pupil_area(sam, eye) == 0) return set_missing(rv);
  centre_of_pupil(camera, sam, eye, packed_fields(camera, sam, eye), rv);
}

void pupil_dimension(const CameraSetup& camera, const FSAMPLE& sam, int eye, UINT32* rv) {
  rv[0] = rv[1] = 0;
  if (uncorrected_pupil_area(sam, eye) == 0) return;
  box_of_pupil(sam, eye, packed_fields(camera, sam, eye), rv);
}

// ---- corneal reflections ------------------------------------------------------------------------

UINT32 uncorrected_cr_area(const CameraSetup& camera, const FSAMPLE& sam, int eye) {
  if (!is_packed(sam, eye)) return static_cast<UINT32>(sam.hdata[WORD_CR_AREA]);
  const float packed = eye == GZD_RIGHT_EYE ? sam.ry : sam.rx;
  if (missing(packed)) return 0;
  return truncated<UINT32>(camera.prescaler * packed + 0.5f);
}

void uncorrected_raw_cr(const CameraSetup& camera, const FSAMPLE& sam, int eye, float* rv) {
  if (uncorrected_cr_area(camera, sam, eye) == 0) return set_missing(rv);
  centre_of_cr(camera, sam, eye, packed_fields(camera, sam, eye), rv);
}

void cr_dimension(const FSAMPLE& sam, UINT32* rv) {
  if (sam.htype == GZD_HTYPE_SECOND_CR_TWO_EYES) return set_missing(rv);
  set_box(sam.hdata[WORD_CR_BOX], rv);
}

UINT32 uncorrected_cr2_area(const FSAMPLE& sam, int eye) {
  const INT16* const words = second_reflection(sam, eye);
  return words != nullptr ? static_cast<UINT32>(words[WORD_CR2_AREA]) : 0;
}

void uncorrected_raw_cr2(const FSAMPLE& sam, int eye, float* rv) {
  const INT16* const words = second_reflection(sam, eye);
  if (words == nullptr || words[WORD_CR2_AREA] == 0) return set_missing(rv);
  const INT16 fractions = words[WORD_CR2_FRACTIONS];
  set(rv, static_cast<float>(words[WORD_CR2]) + static_cast<float>(fractions >> 8) / pack_scale,
      static_cast<float>(words[WORD_CR2 + 1]) + static_cast<float>(fractions & 0xFF) / pack_scale);
}

// ---- window, pupil minus reflection -------------------------------------------------------------

void window_position(const CameraSetup& camera, const FSAMPLE& sam, UINT32* rv) {
  const Centre centre = window_centre(camera, sam);
  rv[0] = truncated<UINT32>(centre.x);
  rv[1] = truncated<UINT32>(centre.y);
}

// ---- overlap ------------------------------------------------------------------------------------

namespace {

using Floats4 = float __attribute__((vector_size(16)));
using Ints4 = INT32 __attribute__((vector_size(16)));
using Longs2 = INT64 __attribute__((vector_size(16)));
using Doubles2 = double __attribute__((vector_size(16)));
using Doubles4 = double __attribute__((vector_size(32)));

// Of both eyes, worked on side by side: x of the left and of the right one, then y of both. What
// has one value an eye stands twice.
Floats4 places(const float (&left)[2], const float (&right)[2]) {
  return Floats4{left[0], right[0], left[1], right[1]};
}
Floats4 twice(float left, float right) {
  return Floats4{left, right, left, right};
}

Floats4 root(Floats4 v) {
  return Floats4{std::sqrt(v[0]), std::sqrt(v[1]), std::sqrt(v[2]), std::sqrt(v[3])};
}

struct Discs {
  Floats4 at, area;
};

Floats4 distance(const Discs& pupils, const Discs& crs) {
  const Doubles4 between = __builtin_convertvector(pupils.at - crs.at, Doubles4);
  const Doubles4 squares = between * between;
  const Doubles2 sums = __builtin_shufflevector(squares, squares, 0, 1) +
                        __builtin_shufflevector(squares, squares, 2, 3);
  const Doubles2 roots = {std::sqrt(sums[0]), std::sqrt(sums[1])};
  return __builtin_convertvector(__builtin_shufflevector(roots, roots, 0, 1, 0, 1), Floats4);
}

// How far reflections of radius `rc` reach into the pupils, as fractions of their diameters.
Floats4 overlap_fraction(const Discs& pupils, const Discs& crs, Floats4 rc) {
  const Floats4 rp = root(pupils.area / rough_pi);
  return (rp - (distance(pupils, crs) - rc)) * 0.5f / rc;
}

Discs together(const Discs& pupils, const Discs& crs) {
  const Floats4 total = pupils.area + crs.area;
  return {(pupils.at * pupils.area + crs.at * crs.area) / total, total};
}

Discs blend(const Discs& from, const Discs& to, Floats4 f) {
  const Floats4 w = 1.0f - f;
  return {from.at * w + to.at * f, from.area * w + to.area * f};
}

Discs choose(Ints4 which, const Discs& a, const Discs& b) {
  return {Floats4((Ints4(a.at) & which) | (Ints4(b.at) & ~which)),
          Floats4((Ints4(a.area) & which) | (Ints4(b.area) & ~which))};
}

bool lacks_overlap(const GZD_RAW_EYE& raw) {
  return raw.pupil_area < 1 || raw.cr_area < 1 || missing(raw.pupil[0]) || missing(raw.pupil[1]) ||
         missing(raw.cr[0]) || missing(raw.cr[1]);
}

// The pupils, corrected pass by pass for the part that their reflections cover.
class OverlapCorrection {
 public:
  OverlapCorrection(const GZD_RAW_EYE& left, const GZD_RAW_EYE& right)
      : pupils_{places(left.pupil, right.pupil),
                twice(static_cast<float>(left.pupil_area), static_cast<float>(right.pupil_area))} {
    const INT32 left_done = lacks_overlap(left) ? -1 : 0,
                right_done = lacks_overlap(right) ? -1 : 0;
    done_ = Ints4{left_done, right_done, left_done, right_done};
    const Floats4 ca = twice(static_cast<float>(left.cr_area), static_cast<float>(right.cr_area));
    rc_ = root(ca / rough_pi) + overlap_margin;
    crs_ = {places(left.cr, right.cr), rc_ * rc_ * rough_pi};
    combined_ = together(pupils_, crs_);
    result_ = pupils_;
  }

  // Nothing is corrected when the two do not overlap.
  void pass() {
    const Floats4 fraction = overlap_fraction(result_, crs_, rc_);
    const Floats4 f = fraction > 1.0f ? Floats4{1.0f, 1.0f, 1.0f, 1.0f} : fraction;
    const Discs next = choose(f < 0.0f, pupils_, blend(pupils_, combined_, f));
    result_ = choose(done_, result_, next);
    done_ |= f <= 0.0f;
  }

  [[nodiscard]] bool is_done() const {
    const Longs2 halves = Longs2(done_);
    return (halves[0] & halves[1]) == -1;
  }

  // Pupil minus reflection.
  [[nodiscard]] Floats4 difference() const { return result_.at - cr_weight * crs_.at; }

 private:
  Discs pupils_, result_, crs_, combined_;
  Floats4 rc_;
  Ints4 done_;  // -1 for eyes that are
};

// The pupils without what their reflections cover, of the values that the eyes have already.
void do_pupil_cr_fixup(GZD_RAW_EYE& left, GZD_RAW_EYE& right) {
  OverlapCorrection eyes(left, right);
  for (int pass = 0; pass < overlap_passes && !eyes.is_done(); ++pass) eyes.pass();
  const Floats4 pupil_cr = eyes.difference();
  set(left.pupil_cr, pupil_cr[0], pupil_cr[2]);
  set(right.pupil_cr, pupil_cr[1], pupil_cr[3]);
}

// All of an eye but pupil minus reflection.
void measure(const CameraSetup& camera, const FSAMPLE& sam, int eye, GZD_RAW_EYE& raw) {
  const PackedFields fields = packed_fields(camera, sam, eye);
  raw.pupil_area = uncorrected_pupil_area(sam, eye);
  raw.cr_area = uncorrected_cr_area(camera, sam, eye);
  raw.cr2_area = uncorrected_cr2_area(sam, eye);
  set_missing(raw.pupil);
  set_missing(raw.cr);
  raw.pupil_dimension[0] = raw.pupil_dimension[1] = 0;
  if (raw.pupil_area != 0) {
    centre_of_pupil(camera, sam, eye, fields, raw.pupil);
    box_of_pupil(sam, eye, fields, raw.pupil_dimension);
  }
  if (raw.cr_area != 0) centre_of_cr(camera, sam, eye, fields, raw.cr);
  uncorrected_raw_cr2(sam, eye, raw.cr2);
}

// What does not depend on the eye.
void measure_both(const CameraSetup& camera, const FSAMPLE& sam, GZD_RAW_EYE& raw) {
  cr_dimension(sam, raw.cr_dimension);
  window_position(camera, sam, raw.window_position);
}

}  // namespace

void pupil_cr(const CameraSetup& camera, const FSAMPLE& sam, int eye, float* rv) {
  GZD_RAW_EYE raw;
  raw_eye(camera, sam, eye, raw);
  set(rv, raw.pupil_cr[0], raw.pupil_cr[1]);
}

void raw_eye(const CameraSetup& camera, const FSAMPLE& sam, int eye, GZD_RAW_EYE& raw) {
  measure(camera, sam, eye, raw);
  measure_both(camera, sam, raw);
  do_pupil_cr_fixup(raw, raw);
}

void raw_eyes(const CameraSetup& camera, const FSAMPLE& sam, GZD_RAW_EYE* raw) {
  GZD_RAW_EYE &left = raw[GZD_LEFT_EYE], &right = raw[GZD_RIGHT_EYE];
  measure_both(camera, sam, left);
  std::copy_n(left.cr_dimension, 2, right.cr_dimension);
  std::copy_n(left.window_position, 2, right.window_position);
  measure(camera, sam, GZD_LEFT_EYE, left);
  measure(camera, sam, GZD_RIGHT_EYE, right);
  do_pupil_cr_fixup(left, right);
}

}  // namespace gzd
