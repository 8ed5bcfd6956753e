// Geometry of head and gaze: rigid poses, lines of gaze, and where they meet.
//
// Lengths are millimetres, angles degrees, directions unit vectors. A result that cannot be given
// (parallel lines, a vector without length) is empty.
#ifndef GZDCONV_HEAD_GEOMETRY_H
#define GZDCONV_HEAD_GEOMETRY_H

#include <array>
#include <cmath>
#include <cstddef>
#include <optional>

namespace gzdconv {

struct Vector3 {
  double x = 0, y = 0, z = 0;
};

inline Vector3 operator+(const Vector3& a, const Vector3& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vector3 operator-(const Vector3& a, const Vector3& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vector3 operator*(const Vector3& a, double factor) {
  return {a.x * factor, a.y * factor, a.z * factor};
}
inline double dot(const Vector3& a, const Vector3& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline double length(const Vector3& a) {
  return std::sqrt(dot(a, a));
}

inline std::optional<Vector3> normalised(const Vector3& a) {
  const double size = length(a);
  if (!(size > 0) || !std::isfinite(size)) return std::nullopt;
  return a * (1 / size);
}

// Takes points of one frame to another: a rotation, then a shift. Three rows of four, the rotation
// in the first three columns, the shift in the last.
struct RigidTransform {
  std::array<double, 12> m = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};
};

namespace head_geometry {

inline double element(const RigidTransform& t, std::size_t row, std::size_t column) {
  return t.m[row * 4 + column];
}

inline Vector3 row(const RigidTransform& t, std::size_t index) {
  return {element(t, index, 0), element(t, index, 1), element(t, index, 2)};
}

inline Vector3 column(const RigidTransform& t, std::size_t index) {
  return {element(t, 0, index), element(t, 1, index), element(t, 2, index)};
}

inline RigidTransform from_columns(const Vector3& x, const Vector3& y, const Vector3& z,
                                   const Vector3& shift) {
  return {{x.x, y.x, z.x, shift.x, x.y, y.y, z.y, shift.y, x.z, y.z, z.z, shift.z}};
}

}  // namespace head_geometry

inline Vector3 transform_direction(const RigidTransform& t, const Vector3& direction) {
  using head_geometry::row;
  return {dot(row(t, 0), direction), dot(row(t, 1), direction), dot(row(t, 2), direction)};
}

inline Vector3 transform_point(const RigidTransform& t, const Vector3& point) {
  return transform_direction(t, point) + head_geometry::column(t, 3);
}

// The transform that undoes `t`, whose rotation must be one.
inline RigidTransform inverse(const RigidTransform& t) {
  using namespace head_geometry;
  const RigidTransform turned_back = from_columns(row(t, 0), row(t, 1), row(t, 2), {});
  const Vector3 shift = transform_direction(turned_back, column(t, 3)) * -1;
  return from_columns(row(t, 0), row(t, 1), row(t, 2), shift);
}

// First `first`, then `second`.
inline RigidTransform compose(const RigidTransform& second, const RigidTransform& first) {
  using namespace head_geometry;
  return from_columns(
      transform_direction(second, column(first, 0)), transform_direction(second, column(first, 1)),
      transform_direction(second, column(first, 2)), transform_point(second, column(first, 3)));
}

// The line from a point in a direction.
struct GazeLine {
  Vector3 origin;
  Vector3 direction;
};

struct Quaternion {
  double w = 1, x = 0, y = 0, z = 0;  // of length 1, w not negative
};

struct AxisAngle {
  Vector3 axis;      // unit vector; the x axis when the angle is 0
  double angle = 0;  // 0 to 180
};

// The pose of a head that turned about the fixed x axis, then y, then z, by `rotation`, and stands
// at `position`: takes points of the head to the frame in which the pose is given.
RigidTransform ovilo_calc_pose_mat(const Vector3& rotation, const Vector3& position);

// The rotation of a pose in two other forms.
Quaternion ovilo_calc_pose_quat(const RigidTransform& pose);
AxisAngle ovilo_calc_pose_axAngle(const RigidTransform& pose);

// The line from an eye's centre through the point it looks at.
inline std::optional<GazeLine> ovilo_calc_gaze_vector(const Vector3& eye_centre,
                                                      const Vector3& target) {
  const std::optional<Vector3> direction = normalised(target - eye_centre);
  if (!direction) return std::nullopt;
  return GazeLine{eye_centre, *direction};
}

// The direction in which a head of this pose faces, when `straight_ahead` is that of a head that
// is not turned.
Vector3 ovilo_calc_head_vector(const RigidTransform& pose, const Vector3& straight_ahead);

// The middle of the shortest segment between two gaze lines.
std::optional<Vector3> ovilo_calc_3D_gaze(const GazeLine& left, const GazeLine& right);

// Where a gaze line meets the plane z = 0 of the frame that `to_plane` leads to, in that frame.
std::optional<Vector3> ovilo_calc_plane_gaze(const GazeLine& gaze, const RigidTransform& to_plane);

}  // namespace gzdconv

#endif
