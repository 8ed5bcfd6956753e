// Three-dimensional gaze of a sample:
//  1. the head pose takes each eye's centre, fixed in the head, to where it is now;
//  2. the gaze position in pixels becomes a point on the screen plane, in millimetres;
//  3. both are brought to one frame, that of the screen or that of the eye camera;
//  4. each eye's gaze runs from its centre to its point; the two lines meet, nearly, in the
//     three-dimensional gaze point.
#include "gaze3d/head_gaze.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "asc/computed_number.h"
#include "asc/output.h"
#include "cli/options.h"

namespace gzdconv {

CalGeom calGeom;
int osp_report_geom_config = -1;

namespace {

// ---- messages -----------------------------------------------------------------------------------

// Walks over a message as scanf does: blanks of a word match any run of blanks, none included.
class MessageScanner {
 public:
  explicit MessageScanner(const char* text) : at_(text) {}

  bool word(const char* expected) {
    for (; *expected != '\0'; ++expected) {
      if (*expected == ' ') {
        while (std::isspace(static_cast<unsigned char>(*at_)) != 0) ++at_;
      } else if (*at_++ != *expected) {
        --at_;
        return false;
      }
    }
    return true;
  }

  bool number(double& value) {
    char* end = nullptr;
    value = std::strtod(at_, &end);
    return moved_to(end);
  }

  bool number(int& value) {
    char* end = nullptr;
    value = static_cast<int>(std::clamp<long>(std::strtol(at_, &end, 10), INT_MIN, INT_MAX));
    return moved_to(end);
  }

 private:
  bool moved_to(const char* end) {
    const bool moved = end != at_;
    at_ = end;
    return moved;
  }

  const char* at_;
};

template <std::size_t count>
std::optional<std::array<double, count>> read_numbers(const char* text, const char* keyword) {
  MessageScanner scanner(text);
  if (!scanner.word(keyword)) return std::nullopt;
  std::array<double, count> values;
  for (double& value : values) {
    if (!scanner.number(value)) return std::nullopt;
  }
  return values;
}

void read_transform(const char* text, const char* keyword, std::optional<RigidTransform>& target) {
  if (const auto values = read_numbers<12>(text, keyword)) target = RigidTransform{*values};
}

void read_vector(const char* text, const char* keyword, std::optional<Vector3>& target) {
  if (const auto v = read_numbers<3>(text, keyword)) target = Vector3{(*v)[0], (*v)[1], (*v)[2]};
}

bool read_edges(const char* text, const char* keyword, std::optional<CalibratedScreen>& target) {
  MessageScanner scanner(text);
  CalibratedScreen edges;
  const bool complete =
      scanner.word(keyword) && scanner.word(" r ") && scanner.number(edges.right) &&
      scanner.word(" l ") && scanner.number(edges.left) && scanner.word(" t ") &&
      scanner.number(edges.top) && scanner.word(" b ") && scanner.number(edges.bottom);
  if (complete) target = edges;
  return complete;
}

// The reference frame is the world that hm_world_to_screen starts from.
void derive_screen_transforms() {
  calGeom.screen_to_ref.reset();
  calGeom.screen_to_eyecam.reset();
  if (!calGeom.hm_world_to_screen) return;
  calGeom.screen_to_ref = inverse(*calGeom.hm_world_to_screen);
  if (!calGeom.hm_eyecam_to_ref) return;
  calGeom.screen_to_eyecam = compose(inverse(*calGeom.hm_eyecam_to_ref), *calGeom.screen_to_ref);
}

std::optional<RigidTransform> between(int from, int to) {
  if (from < pose_in_eye_camera || from > pose_on_screen) return std::nullopt;
  if (from == to) return RigidTransform{};
  const auto& screen_to_from = calGeom.from_screen[static_cast<std::size_t>(from)];
  const auto& screen_to_to = calGeom.from_screen[static_cast<std::size_t>(to)];
  if (!screen_to_from || !screen_to_to) return std::nullopt;
  return compose(*screen_to_to, inverse(*screen_to_from));
}

void derive_pose_ways() {
  calGeom.from_screen = {calGeom.screen_to_eyecam, calGeom.screen_to_ref, RigidTransform{}};
  for (const int frame : {pose_in_eye_camera, pose_in_reference, pose_on_screen})
    calGeom.from_pose[static_cast<std::size_t>(frame)] =
        between(calGeom.pose_output_ref_type, frame);
}

void read_pose_reference(const char* text) {
  MessageScanner scanner(text);
  int type = 0;
  if (scanner.word(" !GEOM pose_output_ref_type ") && scanner.number(type)) {
    calGeom.pose_output_ref_type = type;
    derive_pose_ways();
  }
}

void derive_screen_scale() {
  calGeom.scale.reset();
  if (!calGeom.screen_pixel || !calGeom.screen_phys) return;
  const CalibratedScreen& pixel = *calGeom.screen_pixel;
  const CalibratedScreen& phys = *calGeom.screen_phys;
  calGeom.scale = ScreenScale{(pixel.right + pixel.left) / 2, (pixel.top + pixel.bottom) / 2,
                              std::abs((pixel.right - pixel.left + 1) / (phys.right - phys.left)),
                              std::abs((pixel.top - pixel.bottom + 1) / (phys.top - phys.bottom))};
}

void complete_geometry() {
  derive_screen_transforms();
  derive_pose_ways();
  derive_screen_scale();
  // Counting starts at 1, and -1 stays the mark of a geometry never told.
  osp_report_geom_config = std::max(osp_report_geom_config, 0) + 1;
  print("new osp_report_geom_config %d \n", osp_report_geom_config);
}

void read_set_up(const char* text) {
  read_transform(text, " !GEOM hm_mipicam_to_board: ", calGeom.hm_mipicam_to_board);
  read_transform(text, " !GEOM hm_board_to_eyecam_mid:  ", calGeom.hm_board_to_eyecam_mid);
  read_transform(text, " !GEOM hm_eyecam_to_ref:  ", calGeom.hm_eyecam_to_ref);
  read_transform(text, " !GEOM hm_screen_to_markers:  ", calGeom.hm_screen_to_markers);
  read_transform(text, " !GEOM hm_world_to_screen:  ", calGeom.hm_world_to_screen);
  read_vector(text, " !GEOM eyecam_to_ecenter 0:  ", calGeom.eyecam_to_ecenter[0]);
  read_vector(text, " !GEOM eyecam_to_ecenter 1:  ", calGeom.eyecam_to_ecenter[1]);
  read_vector(text, " !GEOM fixedEyeUVec 0:  ", calGeom.fixedEyeUVec[0]);
  read_vector(text, " !GEOM fixedEyeUVec 1:  ", calGeom.fixedEyeUVec[1]);
  read_vector(text, " !GEOM fixedEyeUVec 2:  ", calGeom.fixedEyeUVec[2]);
  read_edges(text, " !GEOM screen_pixel", calGeom.screen_pixel);
  if (read_edges(text, " !GEOM screen_phys", calGeom.screen_phys)) complete_geometry();
}

// ---- samples ------------------------------------------------------------------------------------

bool is_missing(float value) {
  return value == MISSING_DATA || value == NOT_RECORDED;
}

std::optional<Vector3> vector_of(const float (&values)[3]) {
  if (is_missing(values[0]) || is_missing(values[1]) || is_missing(values[2])) return std::nullopt;
  return Vector3{values[0], values[1], values[2]};
}

std::optional<Vector3> moved(const std::optional<RigidTransform>& transform,
                             const std::optional<Vector3>& point) {
  if (!transform || !point) return std::nullopt;
  return transform_point(*transform, *point);
}

std::optional<RigidTransform> head_pose(const FSAMPLE& sample, std::size_t frame) {
  const std::optional<Vector3> rotation = vector_of(sample.headRotation);
  const std::optional<Vector3> position = vector_of(sample.headPosition);
  const std::optional<RigidTransform>& way = calGeom.from_pose[frame];
  if (!rotation || !position || !way) return std::nullopt;
  return compose(*way, ovilo_calc_pose_mat(*rotation, *position));
}

std::optional<Vector3> point_on_screen(const FSAMPLE& sample, std::size_t eye) {
  if (!calGeom.scale || is_missing(sample.gx[eye]) || is_missing(sample.gy[eye])) {
    return std::nullopt;
  }
  const ScreenScale& scale = *calGeom.scale;
  return Vector3{(sample.gx[eye] - scale.centre_x) / scale.x,
                 (sample.gy[eye] - scale.centre_y) / scale.y, 0};
}

EyeGaze gaze_of(const FSAMPLE& sample, std::size_t eye, const std::optional<RigidTransform>& pose,
                std::size_t frame) {
  const auto centre = moved(pose, calGeom.eyecam_to_ecenter[eye]);
  const auto target = moved(calGeom.from_screen[frame], point_on_screen(sample, eye));
  if (!centre || !target) return {centre, std::nullopt};
  return {centre, ovilo_calc_gaze_vector(*centre, *target)};
}

// ---- columns ------------------------------------------------------------------------------------

constexpr double rounding_noise = 1e-9;

char* write_position(char* place, double value) {
  return write_computed_tenths(place, value, has_usual_form());
}

// Rounding leaves a 0 with either sign; it prints without one.
template <char* (*write)(char*, double)>
char* write_vector(char* place, const Vector3* vector) {
  if (vector == nullptr) return write_missing(place, 3);
  for (const double value : {vector->x, vector->y, vector->z}) {
    const double size = std::abs(value);
    if (size >= rounding_noise && size <= std::numeric_limits<double>::max()) [[likely]]
      place = write(place, value);
    else
      place = std::isfinite(value) ? write(place, 0.0) : write_missing(place);
  }
  return place;
}

}  // namespace

void read_geometry_message(const char* text) {
  if (!MessageScanner(text).word(" !GEOM")) return;
  if (options.gaze_3d != 0) read_set_up(text);
  read_pose_reference(text);
}

HeadGaze compute_head_gaze(const FSAMPLE& sample) {
  if (osp_report_geom_config <= 0) return {};
  const std::size_t frame = options.gaze_3d_screen != 0 ? pose_on_screen : pose_in_eye_camera;
  const std::optional<RigidTransform> pose = head_pose(sample, frame);
  if (!pose) return {};
  const EyeGaze left = gaze_of(sample, GZD_LEFT_EYE, pose, frame);
  const EyeGaze right = gaze_of(sample, GZD_RIGHT_EYE, pose, frame);
  if (!left.line || !right.line) return {left, right, std::nullopt};
  return {left, right, ovilo_calc_3D_gaze(*left.line, *right.line)};
}

char* write_head_gaze(char* place, const FSAMPLE& sample) {
  const HeadGaze gaze = compute_head_gaze(sample);
  for (const EyeGaze* eye : {&gaze.left, &gaze.right})
    place = write_vector<write_position>(place, eye->centre ? &*eye->centre : nullptr);
  for (const EyeGaze* eye : {&gaze.left, &gaze.right})
    place = write_vector<write_ten_decimals>(place, eye->line ? &eye->line->direction : nullptr);
  return write_vector<write_position>(place, gaze.point ? &*gaze.point : nullptr);
}

}  // namespace gzdconv
