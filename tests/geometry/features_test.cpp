#include <gtest/gtest.h>

#include <cmath>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

const CNuPoint kOrigin;

bool Near(const CNuVector& v, double x, double y, double z) {
  return v.IsEqual(CNuVector(x, y, z), 4e-16);
}

TEST(Features, RefuseUselessDefinitions) {
  const CNuVector useless[] = {CNuVector(),  CNuVector(0.9e-300, 0, 0), CNuVector(2),
                               CNuVector(4), CNuVector(0, kNaN, 0),     CNuVector(1, kInf, 0)};
  for (const CNuVector& v : useless) {
    EXPECT_EQ(FailureOf([&] { CNuLine(kOrigin, v); }), "construction 3 |CNuLine [0,0]");
    EXPECT_EQ(FailureOf([&] { CNuPlane(kOrigin, v); }), "construction 4 |CNuPlane [0,0]");
    EXPECT_EQ(FailureOf([&] { CNuCircle(1, kOrigin, v); }), "construction 4 |CNuCircle [0,0]");
  }
  const CNuPoint p(1, 2, 3);
  for (const CNuPoint& q : {p, p + CNuPoint(9e-13, -9e-13, 0), CNuPoint(1, kNaN, 3), CNuPoint(1, 2, kInf)}) {
    EXPECT_EQ(FailureOf([&] { CNuLine(p, q); }), "construction 10 |CNuLine [0,0]");
  }
  for (const CNuPoint& q : {CNuPoint(7, 0, 0), CNuPoint(7, 9e-13, 0), CNuPoint(0, kNaN, 0)}) {
    EXPECT_EQ(FailureOf([&] { CNuPlane(q, CNuLine()); }), "construction 9 |CNuPlane [0,0]");
  }
  for (const double radius : {0.0, -1.0, -kInf, kNaN}) {
    EXPECT_EQ(FailureOf([=] { CNuCircle(radius, kOrigin, CNuVector()); }), "construction 5 radius|CNuCircle [0,0]");
    EXPECT_EQ(FailureOf([=] { CNuSphSurf(radius, kOrigin); }), "construction 5 radius|CNuSphSurf [0,0]");
  }
}

TEST(Features, KnowTheirPlaceAndDirection) {
  for (const double size : {1e-299, 1e-170, 1.0, 1e170, 5e307}) {
    const CNuVector v(2 * size, -1 * size, 2 * size);
    const CNuCircle circle(5, CNuPoint(1, 2, 3), v);
    for (const CNuVector& unit : {CNuLine(kOrigin, v).GetDirection(), CNuPlane(kOrigin, v).GetNormal(),
                                  circle.GetNormal(), circle.GetPlane().GetNormal()}) {
      EXPECT_TRUE(Near(unit, 2.0 / 3, -1.0 / 3, 2.0 / 3)) << size;
    }
    EXPECT_NEAR(circle.GetXaxis() % circle.GetNormal(), 0.0, 3e-16);
    EXPECT_NEAR(circle.GetXaxis().Magnitude(), 1.0, 3e-16);
  }
  for (const double offset : {0.0, 1e8}) {  // a plane through point and line holds both
    const CNuPoint base(offset, -offset, offset), p = base + CNuPoint(5, -4, 3);
    const CNuLine line(base + CNuPoint(1, 2, 3), CNuVector(1, 2, -2));
    const CNuPlane plane(p, line);
    EXPECT_LT(line.GetPoint().DistanceTo(plane) + std::fabs(plane.GetNormal() % line.GetDirection()), 1e-14);
    EXPECT_EQ(p.DistanceTo(plane), 0.0);
  }
  EXPECT_TRUE(Near(CNuLine(CNuPoint(1, 1, 1), CNuPoint(1, 1, -2)).GetDirection(), 0, 0, -1));
  CNuPoint point;
  CNuVector direction;
  CNuLine().GetData(&point, &direction);
  EXPECT_TRUE(point.IsZero(1e-300) && Near(direction, 1, 0, 0) && Near(CNuPlane().GetNormal(), 0, 0, 1));
  CNuPlane(CNuPoint(1, 2, 3), CNuVector(0, 2, 0)).GetData(&point, &direction);
  EXPECT_TRUE(point.z() == 3.0 && Near(direction, 0, 1, 0));
  double radius = 0, x = 0, y = 0, z = 0;
  CNuCircle(5, CNuPoint(1, 2, 4)).GetData(&radius, &point, &direction);
  EXPECT_TRUE(radius == 5 && point.z() == 4 && Near(direction, 0, 0, 1) && CNuCircle(5).GetCentre().IsZero(1e-300));
  const CNuSphSurf sphere(2, CNuPoint(4, 5, 6));
  sphere.GetCentre(&x, &y, &z);
  sphere.GetData(&radius, &point);
  EXPECT_TRUE(x == 4 && y == 5 && z == 6 && radius == 2 && sphere.GetRadius() == 2 && point.z() == 6);
  EXPECT_TRUE(CNuLine(CNuLine()).GetType() == 20 && CNuPlane(CNuPlane()).GetType() == 21 &&
              CNuSphSurf(sphere).GetType() == 35);
}

// A failed or empty rotation changes nothing, and many small ones leave the direction at unit length.
template<class Feature>
void ExpectSteadyRotations(CNuVector (Feature::*direction)() const) {
  const CNuPoint point(1, 2, 3);
  Feature feature(point, CNuVector(3, -4, 12));
  const CNuVector before = (feature.*direction)();
  EXPECT_EQ(FailureOf([&] { feature.Rotate(5, CNuVector()); }), "operation 9 rotation|CNuVector [0,0]");
  EXPECT_EQ(FailureOf([&] { feature.Rotate(5, CNuVector(2), point); }), "operation 10 rotation|CNuVector [0,0]");
  feature.Rotate(0, CNuGeometry::X_AXIS, CNuPoint(0.1, 0.1, 0.1));
  EXPECT_TRUE(feature.GetPoint().DistanceTo(point) == 0.0 && ((feature.*direction)() - before).Magnitude() == 0.0);
  for (int i = 0; i < 100000; ++i) feature.Rotate(0.1, CNuVector(2, -1, 3));
  EXPECT_NEAR((feature.*direction)().Magnitude(), 1.0, 3e-16);
  feature.Translate(point);  // places it there, and does not add
  EXPECT_EQ(feature.GetPoint().DistanceTo(point), 0.0);
}

TEST(Features, RotateSteadily) {
  ExpectSteadyRotations(&CNuLine::GetDirection);
  ExpectSteadyRotations(&CNuPlane::GetNormal);
}

}  // namespace
