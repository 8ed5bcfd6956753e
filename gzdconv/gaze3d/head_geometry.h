// Geometry of head and gaze: rigid poses, lines of gaze, and where they meet.
//
// Lengths are millimetres, angles degrees, directions unit vectors. A result that cannot be given
// (parallel lines, a vector without length) is empty.
#ifndef GZDCONV_HEAD_GEOMETRY_H
#define GZDCONV_HEAD_GEOMETRY_H

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <type_traits>

namespace gzdconv {

// Two numbers worked on side by side, usually those of the left eye and of the right one.
using Pair = double __attribute__((vector_size(16)));
// -1 for the numbers of a pair of which something holds, else 0.
using PairFlags = std::int64_t __attribute__((vector_size(16)));

template <typename Number>
struct Vector {
  Number x = {}, y = {}, z = {};
};
using Vector3 = Vector<double>;
using VectorPair = Vector<Pair>;

template <typename Number>
Vector<Number> operator+(const Vector<Number>& a, const Vector<Number>& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
template <typename Number>
Vector<Number> operator-(const Vector<Number>& a, const Vector<Number>& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
template <typename Number>
Vector<Number> operator*(const Vector<Number>& a, std::type_identity_t<Number> factor) {
  return {a.x * factor, a.y * factor, a.z * factor};
}
template <typename Number>
Number dot(const Vector<Number>& a, const Vector<Number>& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Pair swapped(Pair a) {
  return __builtin_shufflevector(a, a, 1, 0);
}
inline VectorPair swapped(const VectorPair& a) {
  return {swapped(a.x), swapped(a.y), swapped(a.z)};
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

constexpr double parallel_limit = 1e-12;  // squared sine, or cosine, taken as 0

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

template <typename Number>
Vector<Number> transform_direction(const RigidTransform& t, const Vector<Number>& direction) {
  const auto along = [&](std::size_t row) {
    using head_geometry::element;
    return element(t, row, 0) * direction.x + element(t, row, 1) * direction.y +
           element(t, row, 2) * direction.z;
  };
  return {along(0), along(1), along(2)};
}

template <typename Number>
Vector<Number> transform_point(const RigidTransform& t, const Vector<Number>& point) {
  using head_geometry::element;
  const Vector<Number> turned = transform_direction(t, point);
  return {turned.x + element(t, 0, 3), turned.y + element(t, 1, 3), turned.z + element(t, 2, 3)};
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
  const auto columns = [&first](std::size_t at) {
    const auto& m = first.m;
    return VectorPair{{m[at], m[at + 1]}, {m[4 + at], m[5 + at]}, {m[8 + at], m[9 + at]}};
  };
  const VectorPair xy = transform_direction(second, columns(0));
  const VectorPair z = transform_direction(second, columns(2));  // and the shift
  // A sum with -0.0 is the other number, whatever that is.
  const Pair last[] = {z.x + Pair{-0.0, second.m[3]}, z.y + Pair{-0.0, second.m[7]},
                       z.z + Pair{-0.0, second.m[11]}};
  return {{xy.x[0], xy.x[1], last[0][0], last[0][1], xy.y[0], xy.y[1], last[1][0], last[1][1],
           xy.z[0], xy.z[1], last[2][0], last[2][1]}};
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

// The lines from the centres of both eyes through the points that they look at.
struct GazeLines {
  VectorPair origins, directions;
  PairFlags known;  // which eye has a direction
};
inline GazeLines gaze_lines(const VectorPair& eye_centres, const VectorPair& targets) {
  const VectorPair ways = targets - eye_centres;
  const Pair squares = dot(ways, ways);
  const Pair sizes = {std::sqrt(squares[0]), std::sqrt(squares[1])};
  return {eye_centres, ways * (1.0 / sizes),
          (sizes > 0.0) & (sizes <= std::numeric_limits<double>::max())};
}

// The same of one eye.
std::optional<GazeLine> ovilo_calc_gaze_vector(const Vector3& eye_centre, const Vector3& target);

// The direction in which a head of this pose faces, when `straight_ahead` is that of a head that
// is not turned.
Vector3 ovilo_calc_head_vector(const RigidTransform& pose, const Vector3& straight_ahead);

// The middle of the shortest segment between two gaze lines: in both numbers of the pairs, and
// known in both or none.
struct MeetingPoint {
  VectorPair point;
  PairFlags known;
};
inline MeetingPoint meeting_point(const VectorPair& origins, const VectorPair& directions) {
  const VectorPair apart = origins - swapped(origins);
  const Pair b = dot(directions, swapped(directions));
  const Pair de =
      dot(directions,
          VectorPair{{apart.x[0], apart.x[0]}, {apart.y[0], apart.y[0]}, {apart.z[0], apart.z[0]}});
  const Pair ed_times_b = b * swapped(de);
  const Pair squared_sine = 1.0 - b * b;
  const Pair minuends = {ed_times_b[0], de[1]}, subtrahends = {de[0], ed_times_b[1]};
  const VectorPair feet = origins + directions * ((minuends - subtrahends) / squared_sine);
  return {(feet + swapped(feet)) * Pair{0.5, 0.5}, squared_sine > head_geometry::parallel_limit};
}

// The same point.
std::optional<Vector3> ovilo_calc_3D_gaze(const GazeLine& left, const GazeLine& right);

// Where a gaze line meets the plane z = 0 of the frame that `to_plane` leads to, in that frame.
std::optional<Vector3> ovilo_calc_plane_gaze(const GazeLine& gaze, const RigidTransform& to_plane);

}  // namespace gzdconv

#endif
