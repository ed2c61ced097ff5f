// Poses, keys and the matrices of an open shutter.
#include <gtest/gtest.h>

#include "Poses.h"

namespace {

void ExpectMatrix(const GEO_Matrix3& found, const GEO_Matrix3& wanted) {
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column)
            EXPECT_EQ(found.m[row][column], wanted.m[row][column]) << row << ' ' << column;
    }
}

TEST(Poses, QuarterTurnsAreExact) {
    Pose pose;
    pose.rotate = 90;
    ExpectMatrix(MatrixOf(pose, {4, 2}), {{{0, 1, 0}, {-1, 0, 0}, {6, -2, 1}}});
    pose.rotate = -450;
    ExpectMatrix(MatrixOf(pose, {0, 0}), {{{0, -1, 0}, {1, 0, 0}, {0, 0, 1}}});
    pose.rotate = 720;
    ExpectMatrix(MatrixOf(pose, {3, 5}), {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}});
}

TEST(Poses, TheAnchorStaysAndTheShiftComesLast) {
    const Pose pose = {33, 2, -0.5, 10, -7};
    const GEO_Vector2T<double> moved = MatrixOf(pose, {12, 34}).TransformPointAndDivide({12, 34});
    EXPECT_NEAR(moved.x, 22, 1e-12);
    EXPECT_NEAR(moved.y, 27, 1e-12);
}

TEST(Poses, ScalingComesBeforeTurning) {
    const Pose pose = {90, 2, 3, 0, 0};
    ExpectMatrix(MatrixOf(pose, {0, 0}), {{{0, 2, 0}, {-3, 0, 0}, {0, 0, 1}}});
}

TEST(Poses, KeysKeepWhatTheyDoNotName) {
    Pose still;
    still.sx = 0.5;
    const std::vector<Key> keys = KeysOf("-1:rotate=5; 0.5:x=8,sy=2; 3:", still);
    ASSERT_EQ(keys.size(), 3u);
    EXPECT_EQ(keys[0].pose.sx, 0.5);
    EXPECT_EQ(keys[1].pose.rotate, 5);
    EXPECT_EQ(keys[2].pose.x, 8);
    EXPECT_EQ(keys[2].pose.sy, 2);
    EXPECT_EQ(keys[0].time, -1);
}

TEST(Poses, MoveOnStraightLinesAndRestOutside) {
    const std::vector<Key> keys = KeysOf("1:x=10;2:x=20;4:x=0", {});
    const double wanted[][2] = {{0, 10}, {1, 10}, {1.25, 12.5}, {2, 20}, {3, 10}, {4, 0}, {9, 0}};
    for (const auto& [time, x] : wanted) EXPECT_EQ(PoseAt(keys, time).x, x) << time;
}

TEST(Poses, TheSeriesSpansTheOpenShutter) {
    const std::vector<GEO_Matrix3> series = MotionOf(KeysOf("0:x=0;1:x=60", {}), 0.5, 4, {0, 0});
    ASSERT_EQ(series.size(), 4u);
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(series[i].m[2][0], 10.0 * i, 1e-12);
}

TEST(Poses, AMotionThatComesBackDoesNotEndAsItBegan) {
    const std::vector<GEO_Matrix3> series = MotionOf(KeysOf("0:x=0;0.5:x=4;1:x=0", {}), 1, 5, {0, 0});
    double sum = 0;
    for (const GEO_Matrix3& matrix : series) sum += matrix.m[2][0];
    EXPECT_EQ(sum, 8);
    EXPECT_NE(series.front().m[2][0], series.back().m[2][0]);
}

}  // namespace
