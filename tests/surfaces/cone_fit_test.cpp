#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

// At the distance `along` from the apex on a generator, moved by e along the normal.
CNuPoint On(double angle, double along, double turn, double e = 0.0) {
  const double rho = along * std::sin(angle) + e * std::cos(angle);
  return {rho * std::cos(turn), rho * std::sin(turn), along * std::cos(angle) - e * std::sin(angle)};
}

// The apex of a cylinder is nowhere, the axis of two planes as well.
TEST(ConeFit, RefusesWhatIsNoCone) {
  Random random(62);
  for (int k = 0; k < 60; ++k) {
    const Motion motion = RandomMotion(random, k % 2 == 0 ? 10.0 : 1e6);
    const CNuPointArray cylinder = motion(CylinderCloud(random, 40, 1.0, 3.0, 360.0, 0.0));
    CNuConSurf cone(7.0);
    EXPECT_EQ(FailureOf([&] { cone.Fit(cylinder, 100); }), "bestfit 11 |CNuConSurf [0,0]");
    EXPECT_EQ(cone.GetSemiAngle(), 7.0);
  }
}

// Points of a plane with little more than rounding: the plane is the limit of cones and cylinders, so that none is the
// answer which follows the points less than it.
TEST(ConeFit, IsNeverWorseThanAPlane) {
  Random random(63);
  NuSetLengthTol(1e-200);
  for (int k = 0; k < 300; ++k) {
    const double noise = std::pow(10.0, random.Uniform(-15.0, -13.0));
    const CNuPointArray points = RandomMotion(random, 1.0)(PlaneCloud(random, 6 + k % 60, 2.0, 1.0, noise));
    double form = 0.0, flat = 0.0, sum = 0.0;
    CNuPlane().Fit(points, &form, &flat);
    CNuConSurf cone(30.0);
    if (cone.FitEx(points, &form, &sum, 1000) == NuFitSuccess) {
      EXPECT_LT(sum, 1.001 * flat) << k;
    }
    CNuCylSurf cylinder(1.0);
    if (cylinder.FitEx(points, &form, &sum, 1000) == NuFitSuccess) {
      EXPECT_LT(sum, 1.001 * flat) << k;
    }
  }
  NuSetLengthTol(1e-12);
}

struct Part {
  CNuPointArray points;
  double angle;  // radians
};

// How points are probed on a cone with the apex at the origin and the axis z; `noise` is what their pattern bears.
struct Pattern {
  const char* name;
  std::function<Part(Random&, double noise)> part;
  bool bothNappes = false;
};

double Even(Random& random, double low, double high) {
  return low * std::pow(high / low, random.Uniform(0, 1));
}

// Scattered between two distances from the apex.
Part Scattered(Random& random, double angle, double low, double high, double sweep, double noise) {
  Part part{CNuPointArray(0), angle};
  for (int i = 0, n = 20 + random.Below(60); i < n; ++i)
    part.points.Add(On(angle, random.Uniform(low, high), random.Uniform(0, sweep) * kDegree, noise * random.Bell()));
  return part;
}

Part Rings(Random& random, int rings, int perRing, double sweep, double noise) {
  Part part{CNuPointArray(0), random.Uniform(5, 80) * kDegree};
  const double low = random.Uniform(0.3, 1), height = Even(random, 0.1, 5);
  for (int i = 0; i < rings * perRing; ++i) {
    const double turn = sweep * kDegree * (i / rings + 0.3 * random.Uniform(0, 1)) / perRing;
    part.points.Add(On(part.angle, low + height * (i % rings), turn, noise * random.Bell()));
  }
  return part;
}

std::vector<Pattern> Patterns() {
  const auto any = [](Random& r) { return r.Uniform(5, 80) * kDegree; };
  const auto strip = [=](double sweep, double shortest, double quiet) {
    return [=](Random& r, double e) {
      const double low = r.Uniform(0.2, 1);
      return Scattered(r, any(r), low, low + Even(r, shortest, 3), sweep, quiet * e);
    };
  };
  const auto slender = [](double sweep, double quiet) {
    return [=](Random& r, double e) {
      const double angle = Even(r, 0.05, 3) * kDegree, end = 1.0 / std::sin(angle);
      return Scattered(r, angle, std::fmax(0.1 * end, end - Even(r, 0.3, 20)), end, sweep, quiet * e);
    };
  };
  const auto flat = [](double sweep, double quiet) {
    return [=](Random& r, double e) {
      const double rise = Even(r, 0.5, 10) * kDegree;
      return Scattered(r, 90.0 * kDegree - rise, r.Uniform(0.1, 0.5), 1, sweep, quiet * e * rise);
    };
  };
  const auto rings = [](int count, int least, int most, double sweep, double quiet) {
    return [=](Random& r, double e) { return Rings(r, count, least + r.Below(most - least + 1), sweep, quiet * e); };
  };
  // The i-th of `count` points, along and around.
  const auto curve = [=](int count, double (*along)(Random&, int), double (*turn)(Random&, int), double quiet) {
    return [=](Random& r, double e) {
      Part part{CNuPointArray(0), any(r)};
      for (int i = 0; i < count; ++i) part.points.Add(On(part.angle, along(r, i), turn(r, i), quiet * e * r.Bell()));
      return part;
    };
  };
  const auto along = [](Random& r, int) { return r.Uniform(0.5, 2); };
  const auto form = [=](double lobes, double belly) {
    return [=](Random& r, double e) {
      Part part{CNuPointArray(0), any(r)};
      for (int i = 0; i < 50; ++i) {
        const double turn = r.Uniform(0, 6.3), l = r.Uniform(0.5, 2);
        part.points.Add(On(part.angle, l, turn, e * (lobes * std::cos(3 * turn) + belly * (l - 1.2) * (l - 1.2))));
      }
      return part;
    };
  };
  const auto both = [=](double sweep, double quiet) {
    return [=](Random& r, double e) { return Scattered(r, any(r), -r.Uniform(0.3, 1), 1, sweep, quiet * e); };
  };
  return {
      {"full", strip(360, 0.3, 1)},
      {"to the tip", [=](Random& r, double e) { return Scattered(r, any(r), 0, 1, 360, e); }},
      {"short", strip(360, 0.003, 3e-4)},
      {"quarter", strip(90, 0.5, 0.1)},
      {"ten degrees", strip(10, 0.3, 1e-3)},
      {"slender", slender(360, 1e-3)},
      {"slender arc", slender(60, 1e-4)},
      {"flat", flat(360, 0.01)},
      {"flat arc", flat(60, 1e-3)},
      {"flat ten degrees", flat(10, 1e-5)},
      {"two rings", rings(2, 5, 13, 360, 1)},
      {"three rings", rings(3, 5, 13, 360, 1)},
      {"two arcs", rings(2, 9, 17, 90, 0.01)},
      {"nine points", rings(3, 3, 3, 360, 0.01)},
      {"eight points", rings(2, 4, 4, 360, 0.01)},
      {"six points", rings(2, 3, 3, 360, 0.01)},
      {"four lines", curve(
                         24, along, [](Random&, int i) { return 1.6 * (i % 4) + 0.1 * (i % 4) * (i % 4); }, 1)},
      {"six lines", curve(
                        30, along, [](Random&, int i) { return 60.0 * kDegree * (i % 6); }, 1)},
      {"helix", curve(
                    40, [](Random&, int i) { return 0.6 + 0.02 * i; }, [](Random&, int i) { return 0.4 * i; }, 0.1)},
      {"lobes", form(1, 0)},
      {"belly", form(0, 1)},
      {"both nappes", both(360, 1), true},
      {"a quarter of both nappes", both(90, 0.1), true},
      {"balanced about the apex",
       curve(
           40, [](Random& r, int i) { return (i % 2 == 0 ? 1 : -1) * r.Uniform(0.1, 1); },
           [](Random&, int i) { return 0.7 * (i / 2); }, 1),
       true},
  };
}

// Of the deviations from both nappes or, as if it went on behind the apex, from one.
double RootSum(const CNuPointArray& points, const CNuPoint& apex, CNuVector axis, double angle, bool bothNappes) {
  axis /= axis.Magnitude();
  double sum = 0.0;
  for (int i = 0; i < points.GetSize(); ++i) {
    const CNuVector p = (points[i] - apex).To3DVector();
    const double h = p % axis;
    const double e = (p * axis).Magnitude() * std::cos(angle) - (bothNappes ? std::fabs(h) : h) * std::sin(angle);
    sum += e * e;
  }
  return std::sqrt(sum);
}

// Sizes from 1e-3 to 1e5, up to 1e4 sizes away from the origin, turned at random. No fit may be worse than the cone
// from which the points were made, and none may get better by a small move of its apex, axis and angle.
TEST(ConeFit, EveryPatternLeadsToItsCone) {
  for (const Pattern& pattern : Patterns()) {
    for (int k = 0; k < 24; ++k) {
      SCOPED_TRACE(std::string(pattern.name) + " case " + std::to_string(k));
      Random random(1000 + static_cast<unsigned>(k));
      const double noise = k % 4 == 0 ? 0.0 : std::pow(10.0, -2.0 * (k % 4));
      const double size = std::pow(10.0, random.Uniform(-3, 5));
      const double far = k % 3 == 0 ? 1e4 * size : size;
      const Motion motion = RandomMotion(random, far);
      const Part part = pattern.part(random, noise);
      CNuPointArray points = part.points;
      double extent = 0.0;
      for (int i = 0; i < points.GetSize(); ++i) {
        points[i] *= size;
        extent = std::max(extent, points[i].DistanceTo(points[0]));
      }
      points = motion(points);
      const CNuVector axis = motion.Direction(CNuPoint(0, 0, 1)).To3DVector();

      CNuConSurf cone(1.0);
      double form = 0.0;
      double sumsq = 0.0;
      ASSERT_EQ(FailureOf([&] { cone.Fit(points, &form, &sumsq, 100); }), "nothing");
      const CNuPoint apex = cone.GetApex();
      const CNuVector direction = cone.GetAxisDirection();
      const double angle = cone.GetSemiAngle() * kDegree;
      // Of the coordinates and, in this test's own sums, of an apex far away.
      const double rounding = 16.0 * kEps * (far + extent) * std::sqrt(points.GetSize());
      const double own = rounding + 8.0 * kEps * points[0].DistanceTo(apex) * std::sqrt(points.GetSize());
      const auto sumFrom = [&](const CNuPoint& a, const CNuVector& w, double s) {
        return RootSum(points, a, w, s, pattern.bothNappes);
      };
      const double least = sumFrom(apex, direction, angle);
      EXPECT_LE(std::sqrt(sumsq), sumFrom(motion(CNuPoint()), axis, part.angle) + rounding);
      EXPECT_NEAR(std::sqrt(sumsq), least, own);
      EXPECT_GE((points.MeanPoint() - apex).To3DVector() % direction, pattern.bothNappes ? -0.1 * extent : 0.0);
      if (noise == 0.0 && points.GetSize() > 9) {
        EXPECT_LE((direction * axis).Magnitude(), 1e-8 + 1e3 * kEps * far / size);
        EXPECT_NEAR(angle, part.angle, 1e-8 + 1e3 * kEps * far / size);
      }
      for (int j = 0; j < 12; ++j) {
        const double h = std::pow(10.0, random.Uniform(-6, -3));
        const auto change = [&] { return h * random.Uniform(-1, 1); };
        const CNuPoint otherApex = apex + CNuPoint(change(), change(), change()) * (extent * (j % 2));
        const CNuVector otherAxis = direction + CNuVector(change(), change(), change()) * (j % 3);
        EXPECT_GE(sumFrom(otherApex, otherAxis, angle + change() * (j % 4)), least * (1.0 - 1e-9) - own) << h;
      }
    }
  }
}

// A scan in rings: a sample taken in regular steps would always meet the same line.
TEST(ConeFit, LargeSetsAreFittedAsWellAsSmallOnes) {
  Random random(63);
  constexpr int kRing = 4096;
  CNuPointArray points(16 * kRing);
  for (int i = 0; i < 16 * kRing; ++i)
    points.Add(On(20.0 * kDegree, 50.0 + i / kRing, 360.0 * kDegree * (i % kRing) / kRing, 0.005 * random.Bell()));
  CNuConSurf cone(1.0), shuffled(1.0);
  double form = 0.0;
  double sumsq = 0.0;
  cone.Fit(points, &form, &sumsq, 50);
  EXPECT_NEAR(cone.GetSemiAngle(), 20.0, 1e-3);
  EXPECT_LE(cone.GetApex().DistanceTo(CNuPoint()), 2e-3);
  EXPECT_NEAR(sumsq / points.GetSize(), 0.005 * 0.005, 1e-6);
  shuffled.Fit(Shuffled(random, points), 50);
  EXPECT_NEAR(shuffled.GetSemiAngle(), cone.GetSemiAngle(), 1e-7);
  EXPECT_LE(shuffled.GetApex().DistanceTo(cone.GetApex()), 1e-7);
  points[777].y() = std::nan("");
  EXPECT_EQ(FailureOf([&] { cone.Fit(points, 50); }), "bestfit 11 |CNuConSurf [0,0]");
}

}  // namespace
