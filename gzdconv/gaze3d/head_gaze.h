// Three-dimensional gaze of samples: the set-up of camera, screen and eyes that the recording
// tells in its " !GEOM" messages, and the columns computed from it.
//
// Frames, units and the layout of the columns: docs/head-gaze.md.
#ifndef GZDCONV_HEAD_GAZE_H
#define GZDCONV_HEAD_GAZE_H

#include <array>
#include <optional>

#include "gaze3d/head_geometry.h"
#include "gzd_data.h"

namespace gzdconv {

// The edges of the screen, in pixels or in millimetres.
struct CalibratedScreen {
  double right = 0, left = 0, top = 0, bottom = 0;
};

// Pixels to millimetres: a position less the centre, divided by the scale.
struct ScreenScale {
  double centre_x = 0, centre_y = 0;  // pixels
  double x = 0, y = 0;                // pixels per millimetre
};

// What the frame of the tracked head pose is.
enum PoseReference { pose_in_eye_camera = 0, pose_in_reference = 1, pose_on_screen = 2 };

// The geometry of the recording. Empty: not told.
struct CalGeom {
  std::optional<RigidTransform> hm_mipicam_to_board;
  std::optional<RigidTransform> hm_board_to_eyecam_mid;
  std::optional<RigidTransform> hm_eyecam_to_ref;
  std::optional<RigidTransform> hm_screen_to_markers;
  std::optional<RigidTransform> hm_world_to_screen;
  std::array<std::optional<Vector3>, 2> eyecam_to_ecenter;  // by eye
  std::array<std::optional<Vector3>, 3> fixedEyeUVec;       // left, right, cyclopean
  std::optional<CalibratedScreen> screen_pixel;
  std::optional<CalibratedScreen> screen_phys;
  int pose_output_ref_type = pose_in_eye_camera;

  // Derived whenever screen_phys is read.
  std::optional<RigidTransform> screen_to_eyecam;
  std::optional<RigidTransform> screen_to_ref;
  std::optional<ScreenScale> scale;

  // By frame, pose_in_eye_camera and so on. The second ones, from the frame of the head pose, are
  // derived when that is read as well.
  std::array<std::optional<RigidTransform>, 3> from_screen;
  std::array<std::optional<RigidTransform>, 3> from_pose;
};

// Both outlive the file: the next recording goes on with the geometry of the last.
extern CalGeom calGeom;
extern int osp_report_geom_config;  // how often the geometry was completed; -1: never

// Reads a " !GEOM" message into calGeom; other text changes nothing, and so does a message without
// all of its numbers. Without options.gaze_3d only the frame of the head pose is read. A message
// that completes the geometry prints a line into the ASC file.
void read_geometry_message(const char* text);

// The fifteen values of a sample, in the frame that the options choose.
struct HeadGaze {
  VectorPair eye_centres = {};  // mm
  PairFlags has_centre = {};
  VectorPair directions = {};  // from there
  PairFlags has_direction = {};
  VectorPair point = {};  // mm, in both numbers
  PairFlags has_point = {};
};
HeadGaze compute_head_gaze(const FSAMPLE& sample);

// Writes the fifteen columns at `place`, in the line buffer at or after its cursor, and returns
// their end.
char* write_head_gaze(char* place, const FSAMPLE& sample);

}  // namespace gzdconv

#endif
