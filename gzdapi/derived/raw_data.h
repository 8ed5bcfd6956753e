// The camera's raw measurements in a sample: pupil and corneal reflections before calibration.
//
// A sample holds them in one of two ways. With a pupil size of 0 or above they are plain words:
// `hdata`, and the tracking window in `input`. With a negative pupil size they are packed into the
// position fields of the eye.
//
// `eye` is GZD_LEFT_EYE or GZD_RIGHT_EYE. Results through `rv` are two elements, x and y or width
// and height. All arithmetic is single precision, rounded at each operation.
#ifndef GZDAPI_RAW_DATA_H
#define GZDAPI_RAW_DATA_H

#include "gzd_data.h"
#include "record/Recording.h"

namespace gzd {

// What a sample's recording block says about the camera.
struct CameraSetup {
  float prescaler = 0.0f;  // gaze prescaler
  int width = default_window_width;
  int height = default_window_height;
};

UINT32 uncorrected_pupil_area(const FSAMPLE& sam, int eye);
void uncorrected_raw_pupil(const CameraSetup& camera, const FSAMPLE& sam, int eye, float* rv);
UINT32 uncorrected_cr_area(const CameraSetup& camera, const FSAMPLE& sam, int eye);
void uncorrected_raw_cr(const CameraSetup& camera, const FSAMPLE& sam, int eye, float* rv);
UINT32 uncorrected_cr2_area(const FSAMPLE& sam, int eye);
void uncorrected_raw_cr2(const FSAMPLE& sam, int eye, float* rv);
void pupil_dimension(const CameraSetup& camera, const FSAMPLE& sam, int eye, UINT32* rv);
void cr_dimension(const FSAMPLE& sam, UINT32* rv);
// Centre of the tracking window.
void window_position(const CameraSetup& camera, const FSAMPLE& sam, UINT32* rv);
// Pupil minus corneal reflection. Of missing inputs it is the formula's value.
void pupil_cr(const CameraSetup& camera, const FSAMPLE& sam, int eye, float* rv);
// All of it, of one eye or of both, by eye.
void raw_eye(const CameraSetup& camera, const FSAMPLE& sam, int eye, GZD_RAW_EYE& raw);
void raw_eyes(const CameraSetup& camera, const FSAMPLE& sam, GZD_RAW_EYE* raw);

}  // namespace gzd

#endif
