#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

CNuPoint At(double radius, double angle, double z) {
  return {radius * std::cos(angle), radius * std::sin(angle), z};
}

// How points are probed on a cylinder of radius 1 about the z axis; `noise` is what their pattern bears.
struct Pattern {
  const char* name;
  std::function<CNuPointArray(Random&, double noise)> points;
};

CNuPointArray Rings(Random& random, int rings, int perRing, double sweep, double height, double noise) {
  CNuPointArray points(rings * perRing);
  for (int i = 0; i < rings * perRing; ++i) {
    const double z = (i % rings - 0.5 * (rings - 1)) * height;
    points.Add(At(1.0 + noise * random.Bell(), sweep * (i / rings + 0.3 * random.Uniform(0, 1)) / perRing, z));
  }
  return points;
}

std::vector<Pattern> Patterns() {
  constexpr double kTurn = 360.0 * kDegree;
  const auto strip = [](double sweep, double shortest, double longest, double quiet) {
    return [=](Random& r, double noise) {
      const double length = shortest * std::pow(longest / shortest, r.Uniform(0, 1));
      return CylinderCloud(r, 20 + r.Below(60), 1.0, length, sweep, quiet * noise);
    };
  };
  const auto form = [](double lobes, double taper) {
    return [=](Random& r, double noise) {
      CNuPointArray points(50);
      for (int i = 0; i < 50; ++i) {
        const double angle = r.Uniform(0, kTurn), z = r.Uniform(-2, 2);
        points.Add(At(1.0 + noise * (lobes * std::cos(3.0 * angle) + taper * z), angle, z));
      }
      return points;
    };
  };
  const double spherical = std::sqrt(2.0);  // two rings of this distance: as good on a sphere as any two circles
  return {
      {"full", strip(360, 0.1, 30, 1)},
      {"slender", strip(360, 30, 1000, 1)},
      {"flat", strip(360, 0.003, 0.1, 0.003)},
      {"quarter", strip(90, 0.3, 10, 1)},
      {"ten degrees", strip(10, 0.05, 2, 0.01)},
      {"two rings", [](Random& r, double e) { return Rings(r, 2, 5 + r.Below(9), kTurn, r.Uniform(0.2, 5), e); }},
      {"two rings on a sphere", [=](Random& r, double e) { return Rings(r, 2, 5 + r.Below(9), kTurn, spherical, e); }},
      {"two arcs", [](Random& r, double e) { return Rings(r, 2, 9 + r.Below(9), 1.5, r.Uniform(0.5, 5), 0.01 * e); }},
      {"three rings", [](Random& r, double e) { return Rings(r, 3, 5 + r.Below(9), kTurn, r.Uniform(0.1, 5), e); }},
      {"four lines",
       [](Random& r, double e) {
         CNuPointArray points(24);
         for (int i = 0; i < 24; ++i)
           points.Add(At(1 + e * r.Bell(), i % 4 * 1.6 + i % 4 * i % 4 * 0.1, r.Uniform(-4, 4)));
         return points;
       }},
      {"helix",
       [](Random& r, double e) {
         CNuPointArray points(40);
         const double pitch = r.Uniform(0.05, 2);
         for (int i = 0; i < 40; ++i) points.Add(At(1 + e * r.Bell(), 0.4 * i, 0.4 * i * pitch));
         return points;
       }},
      {"nine points", [](Random& r, double e) { return Rings(r, 3, 3, kTurn, r.Uniform(0.5, 5), 0.01 * e); }},
      {"seven points",
       [](Random& r, double e) {
         const CNuPointArray eight = Rings(r, 2, 4, kTurn, r.Uniform(1, 5), 0.01 * e);
         return eight.SubArray(0, 6);
       }},
      {"lobes", form(1, 0)},
      {"taper", form(0, 1)},
  };
}

double SumOfSquares(const CNuPointArray& points, const CNuPoint& onAxis, CNuVector axis, double radius) {
  axis /= axis.Magnitude();
  double sum = 0.0;
  for (int i = 0; i < points.GetSize(); ++i) {
    const CNuVector p = (points[i] - onAxis).To3DVector();
    const double e = (p - axis * (p % axis)).Magnitude() - radius;
    sum += e * e;
  }
  return sum;
}

// Sizes from 1e-3 to 1e5, up to 1e4 sizes away from the origin, turned at random. No fit may be worse than the cylinder
// from which the points were made; it finds that one to what the noise allows, the exact one to rounding.
TEST(CylinderFit, EveryPatternLeadsToItsCylinder) {
  for (const Pattern& pattern : Patterns()) {
    for (int k = 0; k < 150; ++k) {
      SCOPED_TRACE(std::string(pattern.name) + " case " + std::to_string(k));
      Random random(1000 + static_cast<unsigned>(k));
      const double noise = k % 4 == 0 ? 0.0 : std::pow(10.0, -2.0 * (k % 4));
      const double size = std::pow(10.0, random.Uniform(-3, 5));
      const double far = k % 3 == 0 ? 1e4 * size : size;
      const Motion motion = RandomMotion(random, far);
      CNuPointArray points = pattern.points(random, noise);
      double extent = 0.0;
      for (int i = 0; i < points.GetSize(); ++i) {
        points[i] *= size;
        extent = std::max(extent, points[i].DistanceTo(points[0]));
      }
      points = motion(points);
      const CNuVector axis = motion.Direction(CNuPoint(0, 0, 1)).To3DVector();
      const CNuPoint origin(motion.shift[0], motion.shift[1], motion.shift[2]);

      CNuCylSurf cylinder(1.0);
      double form = 0.0;
      double sumsq = 0.0;
      ASSERT_EQ(FailureOf([&] { cylinder.Fit(points, &form, &sumsq, 100); }), "nothing");
      // Of the coordinates, in the root of a sum of squares.
      const double rounding = 4.0 * kEps * (far + extent) * std::sqrt(points.GetSize());
      const auto rootFrom = [&](const CNuPoint& onAxis, const CNuVector& direction, double radius) {
        return std::sqrt(SumOfSquares(points, onAxis, direction, radius));
      };
      EXPECT_LE(std::sqrt(sumsq), rootFrom(origin, axis, size) + rounding);
      EXPECT_NEAR(std::sqrt(sumsq),
                  rootFrom(cylinder.GetAxis().GetPoint(), cylinder.GetAxisDirection(), cylinder.GetRadius()), rounding);
      const double sine = (cylinder.GetAxisDirection() * axis).Magnitude();
      if (noise > 1e-4) continue;
      EXPECT_LE(sine, 30.0 * noise + 1e-7);
      EXPECT_NEAR(cylinder.GetRadius(), size, size * (30.0 * noise + 1e-6));
    }
  }
}

// A scan in rings: a sample taken in regular steps would always meet the same line.
TEST(CylinderFit, LargeSetsAreFittedAsWellAsSmallOnes) {
  Random random(62);
  constexpr int kRing = 4096;
  CNuPointArray points(16 * kRing);
  for (int i = 0; i < 16 * kRing; ++i) {
    const double r = 20.0 + 0.005 * random.Bell();
    points.Add(At(r, 360.0 * kDegree * (i % kRing) / kRing, 0.01 * (i / kRing)));
  }
  CNuCylSurf cylinder(1.0), shuffled(1.0);
  double form = 0.0;
  double sumsq = 0.0;
  cylinder.Fit(points, &form, &sumsq, 50);
  EXPECT_NEAR(cylinder.GetRadius(), 20.0, 2e-4);
  EXPECT_NEAR(sumsq / points.GetSize(), 0.005 * 0.005, 1e-6);
  EXPECT_NEAR(cylinder.GetAxis().GetPoint().z(), 0.075, 1e-7) << "the point nearest to the mean";
  shuffled.Fit(Shuffled(random, points), 50);
  EXPECT_NEAR(shuffled.GetRadius(), cylinder.GetRadius(), 1e-10);
  EXPECT_LE((shuffled.GetAxisDirection() - cylinder.GetAxisDirection()).Magnitude(), 1e-8);
  points[777].y() = std::nan("");
  EXPECT_EQ(FailureOf([&] { cylinder.Fit(points, 50); }), "bestfit 11 |CNuCylSurf [0,0]");
}

struct Probe : CNuCylSurf {
  using CNuSurface::QuadricAxes;
};

// Cylinders and cones, among them the cone of 45 degrees, whose eigenvalues differ by their sign alone, and points
// about their own mean, for which the quadric has no constant.
TEST(QuadricAxes, FindsTheAxesOfCylindersAndCones) {
  Random random(63);
  for (int k = 0; k < 300; ++k) {
    const double tangent = k % 3 == 0 ? 0.0 : k % 3 == 1 ? 1.0 : random.Uniform(0.1, 3.0);
    const double size = std::pow(10.0, random.Uniform(-3, 5));
    const Motion motion = RandomMotion(random, 10.0 * size);
    CNuPointArray local(60);
    for (int i = 0; i < 60; ++i) {
      const double z = random.Uniform(k % 2 == 0 ? 0.0 : -2.0, 2.0);
      local.Add(At(tangent > 0.0 ? tangent * z : 1.0, random.Uniform(0.0, 6.3), z) * size);
    }
    const CNuPointArray points = motion(local);
    CNuPoint onAxis;
    CNuVector direction;
    Probe::QuadricAxes(points, points.MeanPoint(), &onAxis, &direction);
    const CNuVector axis = motion.Direction(CNuPoint(0, 0, 1)).To3DVector();
    EXPECT_LE((direction * axis).Magnitude(), 1e-6) << k;
    const CNuLine truth(motion(CNuPoint()), axis);
    EXPECT_LE(onAxis.DistanceTo(truth), 1e-6 * size) << k;
    EXPECT_LE(std::fabs((onAxis - points.MeanPoint()).To3DVector() % direction), 1e-9 * size);
    double largest = 0.0;
    for (int j = 0; j < 3; ++j)
      if (std::fabs(direction[j]) > std::fabs(largest)) largest = direction[j];
    EXPECT_GT(largest, 0.0);
  }
}

TEST(QuadricAxes, FailsUnderItsOwnName) {
  CNuPointArray points(6);
  CNuPoint onAxis(1, 2, 3);
  CNuVector direction(7, 8, 9);
  const auto failure = [&] { return FailureOf([&] { Probe::QuadricAxes(points, CNuPoint(), &onAxis, &direction); }); };
  EXPECT_EQ(failure(), "operation 46 calculation|CNuSurface::QuadricAxes() [0,0]");
  for (int i = 0; i < 5; ++i) points.Add(CNuPoint(4, 5, 6));
  EXPECT_EQ(failure(), "operation 46 calculation|CNuSurface::QuadricAxes() [0,0]");
  points.Add(CNuPoint(std::numeric_limits<double>::infinity(), 0, 0));
  EXPECT_EQ(failure(), "operation 46 calculation|CNuSurface::QuadricAxes() [0,0]");
  EXPECT_TRUE(onAxis.y() == 2.0 && direction[1] == 8.0);
}

// A plane to rounding, which is one within no length tolerance, as a cylinder or a sphere, of four points, too; lines
// that no cylinder suits, whose steps creep.
TEST(CylinderFit, RefusesWhatDeterminesNoCylinder) {
  Random random(61);
  NuSetLengthTol(1e-200);
  for (int run = 0; run < 40; ++run) {
    const double rounding = run % 2 == 0 ? 0.0 : 5e-15;
    CNuCylSurf cylinder(1.0);
    const CNuPointArray plane = RandomMotion(random, 1.0)(PlaneCloud(random, 10 + run, 1.0, 1.0, rounding));
    CNuSphSurf sphere(1.0);
    const auto expectNone = [](const std::string& failure, const std::string& name) {
      EXPECT_TRUE(failure == "bestfit 4 |" + name + " [4,0]" || failure == "bestfit 11 |" + name + " [0,0]") << failure;
    };
    expectNone(FailureOf([&] { cylinder.Fit(plane, 1000); }), "CNuCylSurf");
    expectNone(FailureOf([&] { sphere.Fit(plane, 1000); }), "CNuSphSurf");
    if (rounding == 0.0) expectNone(FailureOf([&] { sphere.Fit(plane.SubArray(0, 3), 1000); }), "CNuSphSurf");
  }
  NuSetLengthTol(1e-12);
}

// A plane between two skew lines is one away from all their points. Cylinders do better, but steps creep towards them.
TEST(CylinderFit, FollowsCreepingStepsToTheirEnd) {
  Random random(62);
  CNuPointArray skew(600);
  for (int i = 0; i < 600; ++i) {
    const double t = random.Uniform(-5.0, 5.0);
    skew.Add(i % 2 == 0 ? CNuPoint(t, 1, 0) : CNuPoint(0, -1, t));
  }
  CNuCylSurf cylinder(1.0);
  double form = 0.0, sumSquares = 0.0;
  ASSERT_EQ(cylinder.FitEx(skew, &form, &sumSquares, std::numeric_limits<long>::max()), NuFitSuccess);
  EXPECT_LT(sumSquares, 0.7 * skew.GetSize());
  double inOtherOrder = 0.0;
  ASSERT_EQ(cylinder.FitEx(Shuffled(random, skew), &form, &inOtherOrder, 1000), NuFitSuccess);
  EXPECT_NEAR(inOtherOrder, sumSquares, 1e-12 * sumSquares);
  CNuConSurf cone(45.0);
  EXPECT_NE(cone.FitEx(skew, std::numeric_limits<long>::max()), NuFitSuccess);
}

// Points that are no cylinder and no cone: Gauss-Newton steps creep for hundreds of steps, those by second derivatives
// arrive.
TEST(CylinderFit, ArrivesInFewStepsOnWhatIsNoCylinder) {
  constexpr long kSteps = 40;
  constexpr int kCount = 4000;
  Random random(63);
  const auto cloud = [&](auto&& point) {
    CNuPointArray points(kCount);
    for (int i = 0; i < kCount; ++i) points.Add(point());
    return points;
  };
  const auto direction = [&] { return CNuPoint(random.Bell(), random.Bell(), random.Bell()); };
  const CNuPointArray bell = cloud(direction);
  const CNuPointArray sphere = cloud([&] {
    const CNuPoint p = direction();
    const double length = std::sqrt(p.x() * p.x() + p.y() * p.y() + p.z() * p.z());
    return CNuPoint(p.x() / length, p.y() / length, p.z() / length);
  });
  for (const CNuPointArray& points : {bell, sphere}) {
    CNuCylSurf cylinder(1.0);
    CNuConSurf cone(45.0);
    double form = 0.0, ofCylinder = 0.0, ofCone = 0.0;
    ASSERT_EQ(cylinder.FitEx(points, &form, &ofCylinder, kSteps), NuFitSuccess);
    ASSERT_EQ(cone.FitEx(points, &form, &ofCone, kSteps), NuFitSuccess);
    EXPECT_LT(ofCone, (1.0 + 1e-9) * ofCylinder);
  }
}

}  // namespace
