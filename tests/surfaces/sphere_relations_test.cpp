#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

CNuSphSurf RandomSphere(Random& random, double size) {
  const double radius = size * random.Uniform(0.01, 2.0);
  return {radius, RandomPoint(random, size)};
}

double Off(const CNuPoint& p, const CNuSphSurf& sphere) {
  return std::fabs(p.DistanceTo(sphere.GetCentre()) - sphere.GetRadius());
}

// The only result of an intersection, or none; the array held something before.
std::unique_ptr<CNuObject> Common(const CNuSphSurf& a, const CNuSphSurf& b) {
  CNuPoint old;
  CNuObjArray found(1);
  found.Add(&old);
  const int count = a.IntersectWith(b, &found);
  EXPECT_EQ(found.GetSize(), count);
  EXPECT_LE(count, 1);
  return std::unique_ptr<CNuObject>(count == 1 ? found[0] : nullptr);
}

// The circle is on both, and looks from the first to the second.
void ExpectOnBoth(const CNuObject& found, const CNuSphSurf& a, const CNuSphSurf& b, double tol) {
  const auto& circle = static_cast<const CNuCircle&>(found);
  const CNuPointArray rim = circle.ToPointArray(9);
  for (int i = 0; i < 9; ++i) EXPECT_LE(std::max(Off(rim[i], a), Off(rim[i], b)), tol);
  EXPECT_GT(circle.GetNormal() % (b.GetCentre() - a.GetCentre()).To3DVector(), 0.0);
}

// At random, and in any place, turned about it: outside, touching from outside, crossing, touching from inside, inside.
TEST(SphereIntersections, WithSpheresAreOnBothAndNoneIsMissed) {
  Random random(601);
  int circles = 0;
  for (int run = 0; run < 10000; ++run) {
    SCOPED_TRACE(run);
    const double size = run == 0 ? 1e150 : run == 1 ? 1e-9 : std::pow(10.0, random.Below(9) - 3);
    const CNuSphSurf a = RandomSphere(random, size), b = RandomSphere(random, size);
    const double ra = a.GetRadius(), rb = b.GetRadius(), d = a.GetCentre().DistanceTo(b.GetCentre());
    const auto found = Common(a, b);
    ASSERT_EQ(found != nullptr, d < ra + rb && d > std::fabs(ra - rb));
    if (found) ExpectOnBoth(*found, a, b, 1e-14 * size), ++circles;
    if (run % 10 > 1 || std::fabs(ra - rb) < 0.1 * size) continue;
    const CNuPoint way = RandomMotion(random, 0.0).Direction({1, 0, 0});
    for (const auto& [along, type] : {std::pair(ra + rb + 0.1 * size, CNuObject::NuTypeNone),
                                      {ra + rb, CNuObject::NuTypePoint},
                                      {std::max(ra, rb), CNuObject::NuTypeCircle},
                                      {std::fabs(ra - rb), CNuObject::NuTypePoint},
                                      {0.0, CNuObject::NuTypeNone}}) {
      CNuSphSurf c(b);
      c.Translate(a.GetCentre() + CNuPoint(along * way.x(), along * way.y(), along * way.z()));
      for (const bool swapped : {false, true}) {
        const auto special = swapped ? Common(c, a) : Common(a, c);
        ASSERT_EQ(special ? special->GetType() : CNuObject::NuTypeNone, type) << along / size;
        if (type != CNuObject::NuTypePoint) continue;
        const auto& p = static_cast<const CNuPoint&>(*special);
        ASSERT_LE(std::max(Off(p, a), Off(p, c)), std::max(1e-12, 1e-14 * size)) << along / size;
      }
    }
    ASSERT_EQ(Common(a, a), nullptr) << "equal spheres are concentric ones";
  }
  EXPECT_GT(circles, 3000);
}

// Required: spheres count as touching by the length tolerance, but a point on both must be found by it, too; hosts tell
// a failed contact from a missing one by the exception.
TEST(SphereIntersections, TouchingWithoutACommonPointFails) {
  const CNuSphSurf a(1.0), b(1.0, CNuPoint(2.5, 0, 0));
  CNuObjArray found(1);
  CNuPoint old;
  found.Add(&old);
  NuSetLengthTol(0.5);
  EXPECT_EQ(FailureOf([&] { a.IntersectWith(b, &found); }),
            "operation 46 calculation|CNuSphSurf::IntersectWith(CNuSphSurf) [0,0]");
  EXPECT_EQ(found[0], &old);
  NuSetLengthTol(1e-12);
  for (const double bad : {kNaN, kInf, -kInf}) {
    EXPECT_EQ(FailureOf([&] { a.IntersectWith(CNuSphSurf(1.0, CNuPoint(bad, 0, 0)), &found); }),
              "operation 45 calculation|CNuSphSurf::IntersectWith(CNuSphSurf) [0,0]");
  }
}

TEST(SphereIntersections, WithLinesAndPlanes) {
  Random random(603);
  int points = 0;
  for (int run = 0; run < 10000; ++run) {
    const double size = std::pow(10.0, random.Below(9) - 3);
    const CNuSphSurf sphere = RandomSphere(random, size);
    const CNuPoint direction = RandomMotion(random, 0.0).Direction({1, 0, 0});
    const CNuLine line(RandomPoint(random, size), direction.To3DVector());
    CNuPoint p[2];
    const int count = sphere.IntersectWith(line, &p[0], &p[1]);
    ASSERT_EQ(count, sphere.GetCentre().DistanceTo(line) < sphere.GetRadius() ? 2 : 0) << run;
    for (int k = 0; k < count; ++k, ++points)
      ASSERT_LE(std::max(Off(p[k], sphere), p[k].DistanceTo(line)), 1e-14 * size) << run;
    ASSERT_TRUE(count == 0 || (p[1] - p[0]).To3DVector() % line.GetDirection() > 0.0);
  }
  EXPECT_GT(points, 6000);
  CNuObjArray found(1);
  EXPECT_EQ(CNuSphSurf(5.0).IntersectWith(CNuPlane(CNuPoint(0, 0, 3), CNuVector(0, 0, 1)), &found), 1);
  const std::unique_ptr<CNuObject> owned(found[0]);
  EXPECT_EQ(static_cast<const CNuCircle&>(*owned).GetRadius(), 4.0);
}

// The form's value is |p - c|^2 - r^2, in the coordinates asked for.
TEST(SphereQuadric, ValuesOfTheAlgebraicForm) {
  Random random(604);
  for (int run = 0; run < 200; ++run) {
    CNuSphSurf sphere = RandomSphere(random, 10.0);
    const CNuPoint centre = sphere.GetCentre();
    sphere.Rotate(random.Uniform(0.0, 360.0), CNuVector(1, 2, 3), centre);
    CNuSphSurf frame(1.0);
    const CNuVector axis = RandomPoint(random, 1.0).To3DVector();
    frame.Rotate(random.Uniform(0.0, 360.0), axis);
    frame.Translate(RandomPoint(random, 5.0));
    const CNuMatrix world = sphere.ToAlgebraicForm();
    const CNuMatrix local = sphere.ToAlgebraicForm(frame);
    for (int k = 0; k < 5; ++k) {
      CNuPoint p = RandomPoint(random, 10.0);
      const double d = p.DistanceTo(centre);
      const double expected = (d - sphere.GetRadius()) * (d + sphere.GetRadius());
      // Sums of products of up to 900, in 16 terms.
      const double rounding = 16.0 * 900.0 * std::numeric_limits<double>::epsilon();
      ASSERT_NEAR(p.To4DVector() * world % p.To4DVector(), expected, rounding);
      p.MoveTo(frame);
      ASSERT_NEAR(p.To4DVector() * local % p.To4DVector(), expected, rounding);
    }
  }
}

}  // namespace
