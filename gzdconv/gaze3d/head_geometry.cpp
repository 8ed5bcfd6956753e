// Rotations, transforms, lines and planes of three-dimensional gaze.
#include "gaze3d/head_geometry.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace gzdconv {

namespace {

using namespace head_geometry;

constexpr double radians_per_degree = std::numbers::pi / 180;

VectorPair paired(const Vector3& a, const Vector3& b) {
  return VectorPair{{a.x, b.x}, {a.y, b.y}, {a.z, b.z}};
}
VectorPair twice(const Vector3& a) {
  return paired(a, a);
}
Vector3 first(const VectorPair& a) {
  return {a.x[0], a.y[0], a.z[0]};
}
// Half the square root of a sum that is 0 or more but for rounding.
double half_root(double sum) {
  return 0.5 * std::sqrt(std::max(0.0, sum));
}

}  // namespace

RigidTransform ovilo_calc_pose_mat(const Vector3& rotation, const Vector3& position) {
  const Vector3 angle = rotation * radians_per_degree;
  const double cx = std::cos(angle.x), sx = std::sin(angle.x);
  const double cy = std::cos(angle.y), sy = std::sin(angle.y);
  const double cz = std::cos(angle.z), sz = std::sin(angle.z);
  return from_columns({cz * cy, sz * cy, -sy},
                      {cz * sy * sx - sz * cx, sz * sy * sx + cz * cx, cy * sx},
                      {cz * sy * cx + sz * sx, sz * sy * cx - cz * sx, cy * cx}, position);
}

// The largest component is taken from the diagonal, the others by dividing by it: no loss near
// half turns.
Quaternion ovilo_calc_pose_quat(const RigidTransform& pose) {
  const double xx = element(pose, 0, 0), yy = element(pose, 1, 1), zz = element(pose, 2, 2);
  const double yz = element(pose, 2, 1) - element(pose, 1, 2);
  const double zx = element(pose, 0, 2) - element(pose, 2, 0);
  const double xy = element(pose, 1, 0) - element(pose, 0, 1);
  const double yz_sum = element(pose, 2, 1) + element(pose, 1, 2);
  const double zx_sum = element(pose, 0, 2) + element(pose, 2, 0);
  const double xy_sum = element(pose, 1, 0) + element(pose, 0, 1);
  Quaternion q;
  if (xx + yy + zz > 0) {
    q.w = half_root(1 + xx + yy + zz);
    q = {q.w, yz / (4 * q.w), zx / (4 * q.w), xy / (4 * q.w)};
  } else if (xx >= yy && xx >= zz) {
    q.x = half_root(1 + xx - yy - zz);
    q = {yz / (4 * q.x), q.x, xy_sum / (4 * q.x), zx_sum / (4 * q.x)};
  } else if (yy >= zz) {
    q.y = half_root(1 - xx + yy - zz);
    q = {zx / (4 * q.y), xy_sum / (4 * q.y), q.y, yz_sum / (4 * q.y)};
  } else {
    q.z = half_root(1 - xx - yy + zz);
    q = {xy / (4 * q.z), zx_sum / (4 * q.z), yz_sum / (4 * q.z), q.z};
  }
  return q.w < 0 ? Quaternion{-q.w, -q.x, -q.y, -q.z} : q;
}

AxisAngle ovilo_calc_pose_axAngle(const RigidTransform& pose) {
  const Quaternion q = ovilo_calc_pose_quat(pose);
  const Vector3 turned = {q.x, q.y, q.z};
  const std::optional<Vector3> axis = normalised(turned);
  if (!axis) return {{1, 0, 0}, 0};
  return {*axis, 2 * std::atan2(length(turned), q.w) / radians_per_degree};
}

Vector3 ovilo_calc_head_vector(const RigidTransform& pose, const Vector3& straight_ahead) {
  return transform_direction(pose, straight_ahead);
}

std::optional<GazeLine> ovilo_calc_gaze_vector(const Vector3& eye_centre, const Vector3& target) {
  const GazeLines lines = gaze_lines(twice(eye_centre), twice(target));
  if (lines.known[0] == 0) return std::nullopt;
  return GazeLine{eye_centre, first(lines.directions)};
}

std::optional<Vector3> ovilo_calc_3D_gaze(const GazeLine& left, const GazeLine& right) {
  const MeetingPoint meeting =
      meeting_point(paired(left.origin, right.origin), paired(left.direction, right.direction));
  if (meeting.known[0] == 0) return std::nullopt;
  return first(meeting.point);
}

std::optional<Vector3> ovilo_calc_plane_gaze(const GazeLine& gaze, const RigidTransform& to_plane) {
  const Vector3 origin = transform_point(to_plane, gaze.origin);
  const Vector3 direction = transform_direction(to_plane, gaze.direction);
  if (!(std::abs(direction.z) > parallel_limit)) return std::nullopt;
  return origin + direction * (-origin.z / direction.z);
}

}  // namespace gzdconv
