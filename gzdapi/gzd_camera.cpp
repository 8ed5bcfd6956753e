// The C boundary of what is worked out from the camera's view: raw data, and pixels per degree.
#include "derived/physical_setup.h"
#include "derived/raw_data.h"
#include "guard.h"
#include "gzd.h"

using namespace gzd;

namespace {

// The camera set-up of the trial that a sample lies in.
CameraSetup camera_at(GZDFILE* gzd, const FSAMPLE* sam) {
  return guarded(gzd, CameraSetup(), [=](GZDFile& file) {
    const Recording* block = file.getTrials().blockAtTime(file.recordedTime(sam->time));
    if (block == nullptr) return CameraSetup();
    return CameraSetup{block->getPrescaler(), block->getWindowWidth(), block->getWindowHeight()};
  });
}

}  // namespace

// ---- raw camera data ----------------------------------------------------------------------------

UINT32 gzd_get_uncorrected_pupil_area(GZDFILE*, FSAMPLE* sam, int eye) {
  return uncorrected_pupil_area(*sam, eye);
}

void gzd_get_uncorrected_raw_pupil(GZDFILE* gzd, FSAMPLE* sam, int eye, float* rv) {
  uncorrected_raw_pupil(camera_at(gzd, sam), *sam, eye, rv);
}

UINT32 gzd_get_uncorrected_cr_area(GZDFILE* gzd, FSAMPLE* sam, int eye) {
  return uncorrected_cr_area(camera_at(gzd, sam), *sam, eye);
}

void gzd_get_uncorrected_raw_cr(GZDFILE* gzd, FSAMPLE* sam, int eye, float* rv) {
  uncorrected_raw_cr(camera_at(gzd, sam), *sam, eye, rv);
}

UINT32 gzd_get_uncorrected_cr2_area(GZDFILE*, FSAMPLE* sam, int eye) {
  return uncorrected_cr2_area(*sam, eye);
}

void gzd_get_uncorrected_raw_cr2(GZDFILE*, FSAMPLE* sam, int eye, float* rv) {
  uncorrected_raw_cr2(*sam, eye, rv);
}

void gzd_get_pupil_dimension(GZDFILE* gzd, FSAMPLE* sam, int eye, UINT32* rv) {
  pupil_dimension(camera_at(gzd, sam), *sam, eye, rv);
}

void gzd_get_cr_dimension(GZDFILE*, FSAMPLE* sam, UINT32* rv) {
  cr_dimension(*sam, rv);
}

void gzd_get_window_position(GZDFILE* gzd, FSAMPLE* sam, UINT32* rv) {
  window_position(camera_at(gzd, sam), *sam, rv);
}

void gzd_get_pupil_cr(GZDFILE* gzd, FSAMPLE* sam, int eye, float* rv) {
  pupil_cr(camera_at(gzd, sam), *sam, eye, rv);
}

void gzd_get_raw_eye(GZDFILE* gzd, FSAMPLE* sam, int eye, GZD_RAW_EYE* raw) {
  raw_eye(camera_at(gzd, sam), *sam, eye, *raw);
}

void gzd_get_raw_eyes(GZDFILE* gzd, FSAMPLE* sam, GZD_RAW_EYE* raw) {
  raw_eyes(camera_at(gzd, sam), *sam, raw);
}

// ---- pixels per degree --------------------------------------------------------------------------

int gzd_compute_physical_setup(float simulation_screen_distance,
                               float simulation_screen_distance_bot, float screen_phys_l,
                               float screen_phys_t, float screen_phys_r, float screen_phys_b,
                               float screen_pixel_l, float screen_pixel_t, float screen_pixel_r,
                               float screen_pixel_b) {
  return compute_physical_setup(simulation_screen_distance, simulation_screen_distance_bot,
                                {screen_phys_l, screen_phys_t, screen_phys_r, screen_phys_b},
                                {screen_pixel_l, screen_pixel_t, screen_pixel_r, screen_pixel_b});
}

void gzd_calculate_ppd(float hpixel, float vpixel, FSAMPLE* f, int eye, double* rx, double* ry) {
  calculate_ppd(hpixel, vpixel, *f, eye, rx, ry);
}
