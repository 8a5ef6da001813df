#include <gtest/gtest.h>

#include <cmath>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

TEST(Cone, HoldsAnApexAnAxisAndAnAngle) {
  const CNuVector flat(2);
  for (const double angle : {0.0, 90.0, -1.0, 91.0, std::nan("")}) {
    EXPECT_EQ(FailureOf([&] { CNuConSurf c(angle); }), "construction 6 |CNuConSurf [0,0]");
    EXPECT_EQ(FailureOf([&] { CNuConSurf c(angle, CNuPoint(), flat); }), "construction 6 |CNuConSurf [0,0]");
  }
  EXPECT_EQ(FailureOf([&] { CNuConSurf c(30.0, CNuPoint(), flat); }), "construction 4 |CNuConSurf [0,0]");
  EXPECT_EQ(FailureOf([] { CNuConSurf c(30.0, CNuPoint(), CNuVector(0, 0, 0)); }), "construction 3 |CNuConSurf [0,0]");
  EXPECT_EQ(CNuConSurf(std::nextafter(90.0, 0.0)).GetSemiAngle(), std::nextafter(90.0, 0.0));

  EXPECT_EQ(CNuConSurf(30.0).IsPositionSet(), NuFalse);
  EXPECT_EQ(CNuConSurf(30.0).GetAxisDirection()[2], 1.0);
  CNuConSurf cone(30.0, CNuPoint(1, 2, 3), CNuVector(0, -4, 0));
  const CNuConSurf copy(cone);
  EXPECT_EQ(copy.GetType(), 34);
  CNuPoint apex;
  CNuVector direction;
  double angle = 0.0;
  copy.GetData(&angle, &apex, &direction);
  EXPECT_TRUE(angle == 30.0 && copy.GetSemiAngle() == 30.0 && apex.y() == 2.0 && direction[1] == -1.0);
  cone.Rotate(90.0, CNuGeometry::X_AXIS, CNuPoint(1, 2, 3));
  cone.Translate(1.0, 0.0, 0.0);
  EXPECT_LE(cone.GetApex().DistanceTo(CNuPoint(2, 2, 3)), 4 * kEps);
  EXPECT_NEAR(cone.GetAxis().GetDirection()[2], -1.0, 4 * kEps);
  cone = copy;
  EXPECT_EQ(cone.GetAxis().GetPoint().z(), 3.0);
}

// p Q p = rho^2 - (h tan a)^2 for a point at the distance rho from the axis and the height h, on either nappe.
TEST(Cone, IsTheQuadricOfItsMatrix) {
  Random random(55);
  const Motion motion = RandomMotion(random, 5.0);
  const CNuConSurf cone(35.0, motion(CNuPoint()), motion.Direction(CNuPoint(0, 0, 1)));
  CNuCylSurf frame(1.0, CNuPoint(1, 2, 3), CNuVector(1, 2, 2));
  const CNuMatrix world = cone.ToAlgebraicForm();
  const CNuMatrix local = cone.ToAlgebraicForm(frame);
  const double slope = std::tan(35.0 * kDegree);
  for (const double rho : {3.0, 4.0}) {
    for (int k = 0; k < 12; ++k) {
      const double h = k % 3 == 0 ? rho / slope : 0.5 * k - 3.0;
      const CNuPoint p = motion(CNuPoint(rho * std::cos(k), rho * std::sin(k), k % 2 == 0 ? h : -h));
      CNuPoint inFrame = p;
      inFrame.MoveTo(frame);
      const double expected = k % 3 == 0 ? 0.0 : rho * rho - slope * slope * h * h;
      EXPECT_NEAR(p.To4DVector() * world % p.To4DVector(), expected, 1e-12);
      EXPECT_NEAR(inFrame.To4DVector() * local % inFrame.To4DVector(), expected, 1e-12);
    }
  }
}

}  // namespace
