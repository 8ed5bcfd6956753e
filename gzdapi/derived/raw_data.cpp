// do_pupil_cr_fixup: the bright reflection hides a part of the dark pupil, which pulls the pupil's
// measured centre away from it.
// 1. From the discs' radii and distance follows how far the reflection reaches into the pupil, as a
//    fraction f of its diameter.
// 2. Centre and area are blended by f from those of the pupil to those of pupil and reflection
//    together.
// 3. f is taken anew from the blended pupil, and the blend repeated from the original one.

#include "derived/raw_data.h"

#include <algorithm>
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

bool missing(float value) {
  return value == MISSING_DATA || value == NOT_RECORDED;
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

int unpacked(float prescaler, float value) {
  return truncated<INT32>(prescaler * value + pack_offset);
}

// A coordinate of which `whole` holds the upper part and `sixteenths` the lower one.
float packed_coordinate(float whole, int sixteenths) {
  return ((whole + pack_offset) * pack_steps + static_cast<float>(sixteenths)) / pack_scale;
}

void packed_position(float prescaler, float x, float y, float extras, float* rv) {
  if (missing(x) || missing(y) || missing(extras)) return set_missing(rv);
  const int bits = unpacked(prescaler, extras);
  set(rv, packed_coordinate(x, (bits >> 4) & 15), packed_coordinate(y, bits & 15));
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

// Centre of the pupil, or of its reflection, of an eye that has an area of it.
void centre_of_pupil(const CameraSetup& camera, const FSAMPLE& sam, int eye, float* rv) {
  if (!is_packed(sam, eye)) return plain_position(camera, sam, WORD_PUPIL, rv);
  packed_position(camera.prescaler, sam.px[eye], sam.py[eye], sam.gx[eye], rv);
}

void centre_of_cr(const CameraSetup& camera, const FSAMPLE& sam, int eye, float* rv) {
  if (!is_packed(sam, eye)) return plain_position(camera, sam, WORD_CR, rv);
  packed_position(camera.prescaler, sam.hx[eye], sam.hy[eye], sam.gy[eye], rv);
}

}  // namespace

// ---- pupil --------------------------------------------------------------------------------------

UINT32 uncorrected_pupil_area(const FSAMPLE& sam, int eye) {
  if (!is_packed(sam, eye)) return static_cast<UINT32>(sam.hdata[WORD_PUPIL_AREA]);
  return sam.pa[eye] <= -pack_offset ? 0 : truncated<UINT32>(sam.pa[eye] + pack_offset);
}

void uncorrected_raw_pupil(const CameraSetup& camera, const FSAMPLE& sam, int eye, float* rv) {
  if (uncorrected_pupil_area(sam, eye) == 0) return set_missing(rv);
  centre_of_pupil(camera, sam, eye, rv);
}

void pupil_dimension(const CameraSetup& camera, const FSAMPLE& sam, int eye, UINT32* rv) {
  rv[0] = rv[1] = 0;
  if (uncorrected_pupil_area(sam, eye) == 0) return;
  if (!is_packed(sam, eye)) {
    set_box(sam.hdata[WORD_PUPIL_BOX], rv);
  } else if (missing(sam.gx[eye]) || missing(sam.gy[eye])) {
    set_missing(rv);
  } else {
    rv[0] = static_cast<UINT32>(unpacked(camera.prescaler, sam.gy[eye]) >> 8) & 0xFF;
    rv[1] = static_cast<UINT32>(unpacked(camera.prescaler, sam.gx[eye]) >> 8) & 0xFF;
  }
}

// ---- corneal reflections ------------------------------------------------------------------------

UINT32 uncorrected_cr_area(const CameraSetup& camera, const FSAMPLE& sam, int eye) {
  if (!is_packed(sam, eye)) return static_cast<UINT32>(sam.hdata[WORD_CR_AREA]);
  const float packed = eye == GZD_RIGHT_EYE ? sam.ry : sam.rx;
  if (missing(packed)) return 0;
  return truncated<UINT32>(std::floor(camera.prescaler * packed + 0.5f));
}

void uncorrected_raw_cr(const CameraSetup& camera, const FSAMPLE& sam, int eye, float* rv) {
  if (uncorrected_cr_area(camera, sam, eye) == 0) return set_missing(rv);
  centre_of_cr(camera, sam, eye, rv);
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

struct Disc {
  float x, y, area;
};

// How far a reflection of radius `rc` reaches into the pupil, as a fraction of its diameter.
float overlap_fraction(const Disc& pupil, const Disc& cr, float rc) {
  const float rp = std::sqrt(pupil.area / rough_pi);
  const double dx = pupil.x - cr.x;
  const double dy = pupil.y - cr.y;
  const auto distance = static_cast<float>(std::sqrt(dx * dx + dy * dy));
  return (rp - (distance - rc)) * 0.5f / rc;
}

Disc together(const Disc& pupil, const Disc& cr) {
  const float total = pupil.area + cr.area;
  return {(pupil.x * pupil.area + cr.x * cr.area) / total,
          (pupil.y * pupil.area + cr.y * cr.area) / total, total};
}

Disc blend(const Disc& from, const Disc& to, float f) {
  const float w = 1.0f - f;
  return {from.x * w + to.x * f, from.y * w + to.y * f, from.area * w + to.area * f};
}

// The pupil of an eye, corrected pass by pass for the part that its reflection covers.
class OverlapCorrection {
 public:
  explicit OverlapCorrection(const GZD_RAW_EYE& raw)
      : pupil_{raw.pupil[0], raw.pupil[1], static_cast<float>(raw.pupil_area)}, result_(pupil_) {
    const auto ca = static_cast<float>(raw.cr_area);
    done_ = raw.pupil_area < 1 || ca < 1.0f || missing(raw.pupil[0]) || missing(raw.pupil[1]) ||
            missing(raw.cr[0]) || missing(raw.cr[1]);
    if (done_) return;
    rc_ = std::sqrt(ca / rough_pi) + overlap_margin;
    cr_ = {raw.cr[0], raw.cr[1], rc_ * rc_ * rough_pi};
    combined_ = together(pupil_, cr_);
  }

  // Nothing is corrected when the two do not overlap.
  void pass() {
    if (done_) return;
    const float f = std::min(overlap_fraction(result_, cr_, rc_), 1.0f);
    result_ = f < 0.0f ? pupil_ : blend(pupil_, combined_, f);
    done_ = f <= 0.0f;
  }

  [[nodiscard]] const Disc& result() const { return result_; }

 private:
  Disc pupil_, result_;
  Disc cr_ = {}, combined_ = {};
  float rc_ = 0.0f;
  bool done_ = false;
};

void set_pupil_cr(GZD_RAW_EYE& raw, const Disc& pupil) {
  set(raw.pupil_cr, pupil.x - cr_weight * raw.cr[0], pupil.y - cr_weight * raw.cr[1]);
}

// The pupil without what its reflection covers, of the values that `raw` has already.
Disc do_pupil_cr_fixup(const GZD_RAW_EYE& raw) {
  OverlapCorrection eye(raw);
  for (int pass = 0; pass < overlap_passes; ++pass) eye.pass();
  return eye.result();
}

// The same of two eyes: while a pass waits for its square root the other eye's goes on.
void set_pupils_cr(GZD_RAW_EYE& raw_left, GZD_RAW_EYE& raw_right) {
  OverlapCorrection left(raw_left), right(raw_right);
  for (int pass = 0; pass < overlap_passes; ++pass) {
    left.pass();
    right.pass();
  }
  set_pupil_cr(raw_left, left.result());
  set_pupil_cr(raw_right, right.result());
}

// All but pupil minus reflection.
void measure(const CameraSetup& camera, const FSAMPLE& sam, int eye, GZD_RAW_EYE& raw) {
  raw.pupil_area = uncorrected_pupil_area(sam, eye);
  raw.cr_area = uncorrected_cr_area(camera, sam, eye);
  raw.cr2_area = uncorrected_cr2_area(sam, eye);
  set_missing(raw.pupil);
  set_missing(raw.cr);
  if (raw.pupil_area != 0) centre_of_pupil(camera, sam, eye, raw.pupil);
  if (raw.cr_area != 0) centre_of_cr(camera, sam, eye, raw.cr);
  uncorrected_raw_cr2(sam, eye, raw.cr2);
  pupil_dimension(camera, sam, eye, raw.pupil_dimension);
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
  set_pupil_cr(raw, do_pupil_cr_fixup(raw));
}

void raw_eyes(const CameraSetup& camera, const FSAMPLE& sam, GZD_RAW_EYE* raw) {
  for (const int eye : {GZD_LEFT_EYE, GZD_RIGHT_EYE}) measure(camera, sam, eye, raw[eye]);
  set_pupils_cr(raw[GZD_LEFT_EYE], raw[GZD_RIGHT_EYE]);
}

}  // namespace gzd
