#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

TEST(RotationMatrix, TurnsRightHandedAboutItsAxis) {
  const double c = std::cos(0.5235987755982988), s = std::sin(0.5235987755982988);
  const double expected[3][9] = {
      {1, 0, 0, 0, c, s, 0, -s, c}, {c, 0, -s, 0, 1, 0, s, 0, c}, {c, s, 0, -s, c, 0, 0, 0, 1}};
  for (int axis = 0; axis < 3; ++axis) {
    for (const double length : {0.0, 1e-299, 1e-200, 1.0, 1e200}) {
      CNuVector direction;
      direction[axis] = length;
      const auto turn = [&](double angle, int i) {
        return (length == 0.0 ? CNuGeometry::RotationMatrix(angle, CNuGeometry::EAxisType(axis))
                              : CNuGeometry::RotationMatrix(angle, direction))
            .GetElement(i / 3, i % 3);
      };
      for (int i = 0; i < 9; ++i) {
        EXPECT_NEAR(turn(30, i), expected[axis][i], 2 * kEps) << axis << " " << length << " " << i;
        EXPECT_TRUE(turn(-90, i) == 0.0 || std::fabs(turn(-90, i)) == 1.0);
      }
    }
  }
  Random random(17);
  for (int i = 0; i < 200; ++i) {
    CNuVector axis(random.Uniform(-1, 1), random.Uniform(-1, 1), random.Uniform(-1, 1)), x, y;
    const double angle = random.Uniform(-720, 720);
    const CNuMatrix turn = CNuGeometry::RotationMatrix(angle, axis);
    EXPECT_TRUE(turn.IsOrthogonal(8 * kEps) && (axis * turn).IsEqual(axis, 8 * kEps));
    axis.OrthonormalXY(&x, &y);
    EXPECT_NEAR((x * turn) % y, std::sin(angle * kDegree), 16 * kEps);
  }
  const std::string where = "|CNuGeometry::RotationMatrix() [0,0]";
  EXPECT_EQ(FailureOf([] { CNuGeometry::RotationMatrix(30, CNuVector(2)); }), "operation 10 rotation" + where);
  EXPECT_EQ(FailureOf([] { CNuGeometry::RotationMatrix(30, CNuVector()); }), "operation 9 rotation" + where);
}

TEST(CartesianCoord, StoresWhatItIsGiven) {
  CNuCartesianCoord frame;
  CNuPoint origin;
  CNuVector x, z;
  frame.SetData(CNuPoint(1, 2, 3), CNuVector(0, 7, 0), CNuVector(5));
  CNuCartesianCoord(frame).GetData(&origin, &x, &z);
  EXPECT_TRUE(origin.z() == 3 && x[1] == 7 && z.GetSize() == 5 && CNuCartesianCoord(frame).GetType() == 19);
}

TEST(Position, IsAbsentUntilAMotionNeedsIt) {
  const CNuCircle plain(2);
  EXPECT_TRUE(plain.GetTransformation().IsEqual(CNuMatrix::Identity(4), 1e-300));
  EXPECT_TRUE(plain.GetInverseTransformation().IsEqual(CNuMatrix::Identity(4), 1e-300));
  CNuCircle c[5] = {plain, plain, plain, plain, plain};
  const std::string where = "|CNuNonLinearGeometry [0,0]";
  for (const double angle : {0.0, 1e-301, -1e-301}) {
    c[0].Rotate(angle, CNuGeometry::X_AXIS);
    c[0].Rotate(angle, CNuVector(1, 1, 1), CNuPoint(1, 2, 3));
    EXPECT_EQ(FailureOf([&] { c[0].Rotate(angle, CNuVector(2)); }), "operation 10 rotation" + where);
    EXPECT_EQ(FailureOf([&] { c[0].Rotate(angle, CNuVector(), CNuPoint()); }), "operation 9 rotation" + where);
  }
  EXPECT_FALSE(plain.IsPositionSet() || c[0].IsPositionSet());
  c[0].Translate(0, 0, 0);
  c[1].Translate(CNuPoint());
  c[2].Rotate(30, CNuGeometry::X_AXIS);
  c[3].Rotate(30, CNuVector(1, 0, 0));
  c[4].Rotate(30, CNuGeometry::X_AXIS, CNuPoint());
  for (const CNuCircle& placed : c) EXPECT_TRUE(placed.IsPositionSet());
}

TEST(Position, AssignmentClearsAndCopyPositionKeeps) {
  const CNuCircle plain(2);
  CNuCircle placed(3, CNuPoint(1, 2, 3));
  placed.CopyPosition(plain);
  placed.CopyPosition(placed);
  placed = *&placed;
  CNuSphSurf sphere(5);
  sphere.CopyPosition(placed);
  placed.Translate(CNuPoint(7, 7, 7));  // places it there, and does not add
  EXPECT_TRUE(placed.GetCentre().x() == 7.0 && sphere.GetCentre().z() == 3.0 && CNuCircle(placed).GetType() == 22);
  placed = plain;
  EXPECT_TRUE(!placed.IsPositionSet() && placed.GetRadius() == 2);
}

// What is fixed to the frame moves as a point of space does, lines and planes move as their points do, and the frame's
// inverse brings all of them back.
TEST(Position, MovesItsPointsWithIt) {
  const CNuVector axis(1, -2, 3);
  const CNuPoint centre(5, -7, 9), pointLocal(0.5, 0.25, -4), tipLocal(2.5, 1.25, -2);
  CNuPoint point = pointLocal, tip = tipLocal;
  CNuLine line(point, tip);
  CNuPlane plane(point, (tip - point).To3DVector());
  CNuCircle g(1);
  const auto expectMoved = [&](auto move) {
    move(g), move(point), move(tip), move(line), move(plane);
    CNuPoint back[] = {(point.To4DVector() * g.GetInverseTransformation()).To3DPoint(), point, point, point};
    back[1].MoveTo(g);
    back[2].MoveTo(g.GetCentre(), g.GetXaxis(), g.GetNormal());
    CNuLine lineLocal = line;
    lineLocal.MoveTo(g);
    back[3] = lineLocal.GetPoint();
    for (const CNuPoint& p : back) EXPECT_LT(p.DistanceTo(pointLocal), 1e-13);
    EXPECT_LT((pointLocal.To4DVector() * g.GetTransformation()).To3DPoint().DistanceTo(point), 1e-13);
    EXPECT_LT(plane.GetPoint().DistanceTo(point) + tip.DistanceTo(line) + tipLocal.DistanceTo(lineLocal), 1e-13);
    for (const CNuVector& d : {line.GetDirection(), plane.GetNormal()}) EXPECT_NEAR(d % (tip - point), 3.0, 1e-13);
    EXPECT_NEAR(lineLocal.GetDirection() % (tipLocal - pointLocal), 3.0, 1e-13);
  };
  for (int round = 0; round < 3; ++round) {
    expectMoved([](auto& o) { o.Translate(1, -2, 3); });
    expectMoved([](auto& o) { o.Rotate(40, CNuGeometry::X_AXIS); });
    expectMoved([&](auto& o) { o.Rotate(-50, axis); });
    expectMoved([&](auto& o) { o.Rotate(130, CNuGeometry::Y_AXIS, centre); });
    expectMoved([&](auto& o) { o.Rotate(70, axis, centre); });
  }
  EXPECT_TRUE((g.GetTranslation() + g.GetInverseTranslation()).IsZero(1e-300) && g.GetRotation().IsOrthogonal(1e-14));
  EXPECT_TRUE(g.GetRotation().Transpose().IsEqual(g.GetInverseRotation(), 1e-300));
}

}  // namespace
