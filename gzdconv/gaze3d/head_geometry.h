// Geometry of head and gaze: rigid poses, lines of gaze, and where they meet.
//
// Lengths are millimetres, angles degrees, directions unit vectors. A result that cannot be given
// (parallel lines, a vector without length) is empty.
#ifndef GZDCONV_HEAD_GEOMETRY_H
#define GZDCONV_HEAD_GEOMETRY_H

#include <array>
#include <optional>

namespace gzdconv {

struct Vector3 {
  double x = 0, y = 0, z = 0;
};

Vector3 operator+(const Vector3& a, const Vector3& b);
Vector3 operator-(const Vector3& a, const Vector3& b);
Vector3 operator*(const Vector3& a, double factor);
double dot(const Vector3& a, const Vector3& b);
double length(const Vector3& a);

// Takes points of one frame to another: a rotation, then a shift. Three rows of four, the rotation
// in the first three columns, the shift in the last.
struct RigidTransform {
  std::array<double, 12> m = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};
};

Vector3 transform_point(const RigidTransform& t, const Vector3& point);
Vector3 transform_direction(const RigidTransform& t, const Vector3& direction);

// The transform that undoes `t`, whose rotation must be one.
RigidTransform inverse(const RigidTransform& t);

// First `first`, then `second`.
RigidTransform compose(const RigidTransform& second, const RigidTransform& first);

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
std::optional<GazeLine> ovilo_calc_gaze_vector(const Vector3& eye_centre, const Vector3& target);

// The direction in which a head of this pose faces, when `straight_ahead` is that of a head that
// is not turned.
Vector3 ovilo_calc_head_vector(const RigidTransform& pose, const Vector3& straight_ahead);

// The middle of the shortest segment between two gaze lines.
std::optional<Vector3> ovilo_calc_3D_gaze(const GazeLine& left, const GazeLine& right);

// Where a gaze line meets the plane z = 0 of the frame that `to_plane` leads to, in that frame.
std::optional<Vector3> ovilo_calc_plane_gaze(const GazeLine& gaze, const RigidTransform& to_plane);

}  // namespace gzdconv

#endif
