#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

// What cylinders and cones have in common.
namespace {

using namespace nu::test;

template<class Surface>
void ExpectHeld(double value, std::initializer_list<double> refused, const std::string& failure, int type) {
  const std::string name = failure.substr(failure.find('|'));
  const CNuVector flat(2), zero(0, 0, 0);
  for (const double bad : refused) {
    EXPECT_EQ(FailureOf([&] { Surface s(bad); }), failure);
    EXPECT_EQ(FailureOf([&] { Surface s(bad, CNuPoint(), flat); }), failure);
  }
  EXPECT_EQ(FailureOf([&] { Surface s(value, CNuPoint(), flat); }), "construction 4 " + name);
  EXPECT_EQ(FailureOf([&] { Surface s(value, CNuPoint(), zero); }), "construction 3 " + name);
  EXPECT_TRUE(!Surface(value).IsPositionSet() && Surface(value).GetAxisDirection()[2] == 1.0);
  Surface surface(value, CNuPoint(1, 2, 3), CNuVector(0, 4, 0));
  const Surface copy(surface);
  double held = 0.0;
  CNuPoint place;
  CNuVector direction;
  copy.GetData(&held, &place, &direction);
  EXPECT_TRUE(held == value && place.y() == 2.0 && direction[1] == 1.0 && copy.GetType() == type);
  surface.Rotate(90.0, CNuGeometry::X_AXIS, CNuPoint(1, 2, 3));
  surface.Translate(1.0, 0.0, 0.0);
  EXPECT_LE(surface.GetAxis().GetPoint().DistanceTo(CNuPoint(2, 2, 3)), 4 * kEps);
  EXPECT_NEAR(surface.GetAxis().GetDirection()[2], 1.0, 4 * kEps);
  surface = copy;
  EXPECT_TRUE(surface.GetAxis().GetDirection()[1] == 1.0 && surface.GetAxis().GetPoint().z() == 3.0);
}

TEST(SurfacesWithAnAxis, HoldTheirPlaceAndSize) {
  ExpectHeld<CNuCylSurf>(2.0, {0.0, -1.0, kNaN}, "construction 5 radius|CNuCylSurf [0,0]", 33);
  ExpectHeld<CNuConSurf>(30.0, {0.0, 90.0, -1.0, 91.0, kNaN}, "construction 6 |CNuConSurf [0,0]", 34);
  EXPECT_EQ(CNuConSurf(std::nextafter(90.0, 0.0)).GetSemiAngle(), std::nextafter(90.0, 0.0));
  EXPECT_TRUE(CNuCylSurf(2.0).GetRadius() == 2.0 && CNuConSurf(30.0).GetApex().IsZero(1e-300));
}

// p Q p of a point at the distance rho from the axis and the height h along it, in the world and in another frame.
template<class Surface, class Value>
void ExpectQuadric(double size, Value value) {
  Random random(55);
  const Motion motion = RandomMotion(random, 5.0);
  const Surface surface(size, motion(CNuPoint()), motion.Direction(CNuPoint(0, 0, 1)));
  CNuCylSurf frame(1.0, CNuPoint(1, 2, 3), CNuVector(1, 2, 2));
  const CNuMatrix world = surface.ToAlgebraicForm(), local = surface.ToAlgebraicForm(frame);
  for (int k = 0; k < 24; ++k) {
    const double rho = 3.0 + k % 2, h = 0.5 * k - 6.0;
    const CNuPoint p = motion(CNuPoint(rho * std::cos(k), rho * std::sin(k), h));
    CNuPoint inFrame = p;
    inFrame.MoveTo(frame);
    EXPECT_NEAR(p.To4DVector() * world % p.To4DVector(), value(rho, h), 1e-12);
    EXPECT_NEAR(inFrame.To4DVector() * local % inFrame.To4DVector(), value(rho, h), 1e-12);
  }
}

TEST(SurfacesWithAnAxis, AreTheQuadricsOfTheirMatrices) {
  ExpectQuadric<CNuCylSurf>(3.0, [](double rho, double) { return rho * rho - 9.0; });
  const double slope = std::tan(35.0 * kDegree);
  ExpectQuadric<CNuConSurf>(35.0, [=](double rho, double h) { return rho * rho - slope * slope * h * h; });
}

}  // namespace
