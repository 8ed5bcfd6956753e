// Rigid transforms and lines of gaze.
#include "gaze3d/head_geometry.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace gzdconv;

namespace {

constexpr double tolerance = 1e-9;

void expect_near(const Vector3& a, double x, double y, double z) {
  EXPECT_NEAR(a.x, x, tolerance);
  EXPECT_NEAR(a.y, y, tolerance);
  EXPECT_NEAR(a.z, z, tolerance);
}

void expect_same(const Vector3& a, const Vector3& b) {
  expect_near(a, b.x, b.y, b.z);
}

// Turns of every size, half turns among them, about axes in all directions.
TEST(HeadGeometry, QuaternionAndAxisAngleDescribeTheSameTurn) {
  const Vector3 p = {0.4, -0.8, 1.2};
  for (int x = -180; x <= 180; x += 30) {
    for (int y = -90; y <= 90; y += 30) {
      for (int z = -180; z <= 180; z += 45) {
        const Vector3 angles = {static_cast<double>(x), static_cast<double>(y),
                                static_cast<double>(z)};
        const RigidTransform pose = ovilo_calc_pose_mat(angles, {1, 2, 3});
        const Vector3 expected = transform_direction(pose, p);

        const Quaternion q = ovilo_calc_pose_quat(pose);
        EXPECT_NEAR(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z, 1, tolerance);
        EXPECT_GE(q.w, 0);
        const Vector3 v = {q.x, q.y, q.z};
        const Vector3 vp = {v.y * p.z - v.z * p.y, v.z * p.x - v.x * p.z, v.x * p.y - v.y * p.x};
        expect_same(v * (2 * dot(v, p)) + p * (q.w * q.w - dot(v, v)) + vp * (2 * q.w), expected);

        const AxisAngle turn = ovilo_calc_pose_axAngle(pose);
        EXPECT_NEAR(length(turn.axis), 1, tolerance);
        const double angle = turn.angle * std::acos(-1.0) / 180;
        const Vector3 k = turn.axis;
        const Vector3 kp = {k.y * p.z - k.z * p.y, k.z * p.x - k.x * p.z, k.x * p.y - k.y * p.x};
        expect_same(
            p * std::cos(angle) + kp * std::sin(angle) + k * (dot(k, p) * (1 - std::cos(angle))),
            expected);
      }
    }
  }
}

TEST(HeadGeometry, AxisAngleOfKnownTurns) {
  const AxisAngle quarter = ovilo_calc_pose_axAngle(ovilo_calc_pose_mat({0, -90, 0}, {}));
  EXPECT_NEAR(quarter.angle, 90, tolerance);
  expect_near(quarter.axis, 0, -1, 0);
  const AxisAngle still = ovilo_calc_pose_axAngle(RigidTransform{});
  EXPECT_EQ(still.angle, 0);
  expect_near(still.axis, 1, 0, 0);
}

// A head that turns by 30 degrees about the vertical faces half its length to the side.
TEST(HeadGeometry, HeadVectorTurnsWithTheHead) {
  const RigidTransform pose = ovilo_calc_pose_mat({0, 30, 0}, {5, 5, 5});
  expect_near(ovilo_calc_head_vector(pose, {0, 0, -1}), -0.5, 0, -std::sqrt(3.0) / 2);
}

TEST(HeadGeometry, GazeLinesMeetOrNearlyMeet) {
  const auto left = ovilo_calc_gaze_vector({-30, 0, 0}, {0, 0, 600});
  const auto right = ovilo_calc_gaze_vector({30, 0, 0}, {0, 0, 600});
  expect_near(*ovilo_calc_3D_gaze(*left, *right), 0, 0, 600);
  // One eye 4 mm higher than the point the other looks at: the middle is 2 mm up.
  const GazeLine skew = {{30, 4, 0}, right->direction};
  expect_near(*ovilo_calc_3D_gaze(*left, skew), 0, 2, 600);
  EXPECT_FALSE(ovilo_calc_3D_gaze(*left, {{30, 0, 0}, left->direction}));
}

TEST(HeadGeometry, GazeMeetsTheScreenPlane) {
  const GazeLine gaze = {{0, 0, -500}, {0.6, 0, 0.8}};
  expect_near(*ovilo_calc_plane_gaze(gaze, RigidTransform{}), 375, 0, 0);
  // The same line in a frame whose origin is 100 mm in front of the plane.
  const RigidTransform nearer = ovilo_calc_pose_mat({}, {0, 0, 100});
  expect_near(*ovilo_calc_plane_gaze(gaze, nearer), 300, 0, 0);
  EXPECT_FALSE(ovilo_calc_plane_gaze({{0, 0, -500}, {1, 0, 0}}, RigidTransform{}));
  EXPECT_FALSE(ovilo_calc_plane_gaze({{0, 0, -500}, {1, 0, 1e-12}}, RigidTransform{}));
  EXPECT_TRUE(ovilo_calc_plane_gaze({{0, 0, -500}, {1, 0, 2e-12}}, RigidTransform{}));
}

}  // namespace
