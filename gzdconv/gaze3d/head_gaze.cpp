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

#include "asc/computed_pair.h"
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

std::optional<Vector3> vector_of(const float (&values)[3]) {
  if (is_missing(values[0]) || is_missing(values[1]) || is_missing(values[2])) return std::nullopt;
  return Vector3{values[0], values[1], values[2]};
}

std::optional<RigidTransform> head_pose(const FSAMPLE& sample, std::size_t frame) {
  const std::optional<Vector3> rotation = vector_of(sample.headRotation);
  const std::optional<Vector3> position = vector_of(sample.headPosition);
  const std::optional<RigidTransform>& way = calGeom.from_pose[frame];
  if (!rotation || !position || !way) return std::nullopt;
  return compose(*way, ovilo_calc_pose_mat(*rotation, *position));
}

PairFlags flags(bool left, bool right) {
  return PairFlags{left ? -1 : 0, right ? -1 : 0};
}

// Where something is for both eyes, and of which it is known.
struct KnownPoints {
  VectorPair at = {};
  PairFlags known = {};
};

KnownPoints eye_centres(const RigidTransform& pose) {
  const auto& [left, right] = calGeom.eyecam_to_ecenter;
  const Vector3 l = left.value_or(Vector3{}), r = right.value_or(Vector3{});
  return {transform_point(pose, VectorPair{{l.x, r.x}, {l.y, r.y}, {l.z, r.z}}),
          flags(left.has_value(), right.has_value())};
}

KnownPoints points_on_screen(const FSAMPLE& sample, std::size_t frame) {
  const std::optional<RigidTransform>& way = calGeom.from_screen[frame];
  if (!calGeom.scale || !way) return {};
  const ScreenScale& scale = *calGeom.scale;
  const auto &x = sample.gx, &y = sample.gy;
  const VectorPair at = {(Pair{x[0], x[1]} - scale.centre_x) / scale.x,
                         (Pair{y[0], y[1]} - scale.centre_y) / scale.y,
                         {}};
  return {transform_point(*way, at),
          flags(!is_missing(x[0]) && !is_missing(y[0]), !is_missing(x[1]) && !is_missing(y[1]))};
}

// ---- columns ------------------------------------------------------------------------------------

constexpr int column_count = 15;
constexpr double rounding_noise = 1e-9;

// Rounding leaves a 0 with either sign; it prints without one.
Pair without_noise(Pair values) {
  const PairFlags noise = computed_number::sizes_of(values) < rounding_noise;
  return Pair(PairFlags(values) & ~noise);
}

template <class Columns>
struct VectorColumns {
  Pair values[3];  // x, y and z
  Columns x = Columns(values[0]), y = Columns(values[1]), z = Columns(values[2]);

  explicit VectorColumns(const VectorPair& vectors)
      : values{without_noise(vectors.x), without_noise(vectors.y), without_noise(vectors.z)} {}

  [[nodiscard]] PairFlags ready() const { return x.ready() & y.ready() & z.ready(); }

  char* write(char* place, int eye) const {
    return z.write(y.write(x.write(place, eye), eye), eye);
  }
};

// A vector that is missing or has numbers that are not ready.
template <class Columns>
[[gnu::noinline]] char* write_any_vector(char* place, const Pair (&values)[3], bool is_known,
                                         int eye) {
  if (!is_known) return write_missing(place, 3);
  for (const Pair& pair : values)
    place = std::isfinite(pair[eye]) ? Columns::write_any(place, pair[eye]) : write_missing(place);
  return place;
}

// The vectors of so many eyes.
template <class Columns, int eyes = 2>
char* write_vectors(char* place, const VectorPair& vectors, PairFlags known) {
  const VectorColumns<Columns> columns(vectors);
  const PairFlags ready = columns.ready() & known;
  const bool suits = Columns::suits();
  for (int eye = 0; eye < eyes; ++eye) {
    if (suits && ready[eye] != 0) [[likely]]
      place = columns.write(place, eye);
    else
      place = write_any_vector<Columns>(place, columns.values, known[eye] != 0, eye);
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
  const KnownPoints centres = eye_centres(*pose), targets = points_on_screen(sample, frame);
  const GazeLines lines = gaze_lines(centres.at, targets.at);
  const PairFlags has_line = lines.known & centres.known & targets.known;
  const MeetingPoint meeting = meeting_point(lines.origins, lines.directions);
  const PairFlags has_both = flags((has_line[0] & has_line[1]) != 0, false);
  return {centres.at, centres.known, lines.directions,
          has_line,   meeting.point, meeting.known & has_both};
}

char* write_head_gaze(char* place, const FSAMPLE& sample) {
  const HeadGaze gaze = compute_head_gaze(sample);
  if ((gaze.has_centre[0] | gaze.has_centre[1]) == 0) return write_missing(place, column_count);
  place = write_vectors<TenthsPair>(place, gaze.eye_centres, gaze.has_centre);
  place = write_vectors<TenDecimalsPair>(place, gaze.directions, gaze.has_direction);
  return write_vectors<TenthsPair, 1>(place, gaze.point, gaze.has_point);
}

}  // namespace gzdconv
