#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <string>

#include "support/failures.h"
#include "support/fitted.h"

// How the fits fail: in the promised order, alike in both forms, and without a trace.
namespace {

using namespace nu::test;

constexpr double kTol = 1e-9;
constexpr long kLimit = 1000;

bool IsOfAny(const AnyFit& fit, const char* kind) {
  return std::string(fit.className).find(kind) != std::string::npos;
}

// The fit fails so in both forms, changes nothing and restores the host's tolerance. Both are asked with the same
// length tolerance: the host's, or the one of the call.
void ExpectFailure(const AnyFit& fit, const CNuPointArray& points, const std::string& failure, long limit = kLimit,
                   double tol = kTol) {
  SCOPED_TRACE(fit.Name() + " of " + std::to_string(points.GetSize()) + " points: " + failure);
  const double usual = NuGetLengthTol(), hosts = fit.criterion == kLeastSquares ? tol : 3e-7;
  const bool isBadLimit = failure.rfind("bestfit 13 ", 0) == 0, isLimit = failure.rfind("bestfit 12 ", 0) == 0;
  Fitted f, other, left = fit.start;
  // Required: these clear the outputs once the limit is found good.
  if (fit.criterion == kLeastSquares && IsOfAny(fit, "Surf") && !isBadLimit) left.form = left.sumsq = 0.0;
  if (fit.criterion == kLeastSquares) NuSetLengthTol(tol);
  EXPECT_EQ(FailureOf([&] { fit.run(points, tol, limit, f); }), failure);
  EXPECT_TRUE(failure == "nothing" || f == left);
  NuSetLengthTol(hosts);
  if (isBadLimit) {
    const std::string own = std::string("bestfit 13 |") + fit.className + " [0,0]";
    EXPECT_EQ(FailureOf([&] { fit.runEx(points, tol, limit, other); }), own);
  } else if (fit.runEx != nullptr) {
    EXPECT_EQ(fit.runEx(points, tol, limit, other), failure == "nothing" ? NuFitSuccess
                                                    : isLimit            ? NuFitNoConvergence
                                                                         : NuFitFailure);
    EXPECT_TRUE(other == f);
  }
  if (fit.associate != nullptr && !isBadLimit) {
    CNuAssociation association(points);
    EXPECT_EQ(FailureOf([&] { fit.associate(association, tol, limit, other).Require(); }), failure);
    EXPECT_TRUE(static_cast<const Shape&>(other) == f);
  }
  EXPECT_EQ(NuGetLengthTol(), hosts);
  NuSetLengthTol(usual);
}

TEST(FitFailures, BadLimitsComeFirst) {
  Random random(31);
  for (const AnyFit& fit : kAllFits) {
    if (!fit.hasLimit) continue;
    // Required: the plain fit of a torus names the sphere.
    const std::string name = fit.Is("CNuTorSurf", kCircumscribed) ? "CNuSphSurf" : fit.className;
    for (const long limit : {0L, -1L}) {
      ExpectFailure(fit, CNuPointArray(1), "bestfit 13 |" + name + " [0,0]", limit);
      ExpectFailure(fit, fit.points(random, 30), "bestfit 13 |" + name + " [0,0]", limit);
    }
  }
}

// How many points each fit takes at least, in the order of kAllFits.
constexpr int kLeast[] = {2, 3, 3, 4, 5, 6, 5, 5, 5, 4, 4, 1, 1, 1, 3, 3, 4, 1, 2, 3, 1, 1, 1, 6};
static_assert(std::size(kLeast) == std::size(kAllFits));

TEST(FitFailures, CountsComeBeforeNumbers) {
  Random random(33);
  for (std::size_t i = 0; i < std::size(kAllFits); ++i) {
    const AnyFit& fit = kAllFits[i];
    CNuPointArray points(6);
    for (int n = 0; n < kLeast[i]; ++n) {
      // The plane of the circle is fitted first.
      const std::string name = fit.Is("CNuCircle", kLeastSquares) ? "CNuPlane" : fit.className;
      ExpectFailure(fit, points, "bestfit 1 |" + name + " [" + std::to_string(kLeast[i]) + ",0]");
      points.Add(CNuPoint(n == 0 ? kNaN : n, 0, 0));
    }
    EXPECT_NE(FailureOf([&] { FitOf(fit, points); }).substr(0, 10), "bestfit 1 ");
    EXPECT_EQ(FailureOf([&] { FitOf(fit, fit.points(random, 30)); }), "nothing") << fit.Name();
  }
}

// Anywhere among the points, or all over.
TEST(FitFailures, PointsThatAreNotFiniteAreRefused) {
  Random random(32);
  for (const AnyFit& fit : kAllFits) {
    const std::string name = fit.className + std::string(fit.Is("CNuTorSurf", kCircumscribed) ? "::FitMin" : "");
    const std::string failure = "bestfit 11 |" + name + " [0,0]";
    const CNuPointArray points = fit.points(random, 12);
    for (const double bad : {kNaN, kInf, -kInf}) {
      for (int k = 0; k < 36; ++k) {
        CNuPointArray spoilt(points);
        CNuPoint& p = spoilt[k / 3];
        (k % 3 == 0 ? p.x() : k % 3 == 1 ? p.y() : p.z()) = bad;
        ExpectFailure(fit, spoilt, failure);
      }
      for (const CNuPoint& p : {CNuPoint(bad, 0), CNuPoint(0, bad), CNuPoint(0, 0, bad), CNuPoint(bad, bad, bad)}) {
        ExpectFailure(fit, PointsOf({p, p, p, p, p, p}), failure);
        if (kLeast[&fit - kAllFits] == 1) ExpectFailure(fit, PointsOf({p}), failure);
      }
    }
  }
}

TEST(FitFailures, DegeneratePointsAreNamed) {
  Random random(34);
  const CNuPointArray place = PointsOf({{1, 1, 1}, {1, 1, 1}, {1, 1, 1}}),
                      pair = PointsOf({{1, 1, 1}, {1, 1, 1 + 5e-13}});
  const CNuPointArray line = PointsOf({{0, 0}, {1, 1}, {3, 3}, {2, 2, 1e-10}, {4, 4}, {-1, -1}});
  const CNuPointArray square = PointsOf({{1, 1}, {-1, 1}, {1, -1}, {-1, -1}}), plane = PlaneCloud(random, 9, 1, 1, 0.0);
  const CNuPointArray solid = PointsOf({{}, {1, 0}, {0, 1}, {0, 0, 1}}), slab = PlaneCloud(random, 2000, 2, 1, 4e-9);
  const CNuPointArray ring = CircleCloud(random, 30, 10, 360, 0.05),
                      wavy = CircleCloud(random, 30, 10, 360, 0.05, 0.05);
  const CNuPointArray cap = SphereCloud(random, 3000, 1, 80, 1e-3), bar = LineCloud(random, 10, 10, 0.1);
  const CNuPointArray strip = CylinderCloud(random, 300, 10, 20, 170, 1e-3),
                      pin = CylinderCloud(random, 30, 9, 9, 360, 0.1);
  const CNuPointArray hyperbola = TypicalPoints<CNuHyperbola>(random, 60);
  CNuPointArray four = pin.SubArray(0, 3), five = pin.SubArray(0, 4), parabola(6), shaft(40), level(9);
  four.Append(pin.SubArray(0, 3)), five.Append(pin.SubArray(0, 4));
  for (int i = 0; i < 6; ++i) parabola.Add(CNuPoint(i % 4, i % 4 * (i % 4)));
  // The corners of a square, again and again along a line: every circle is worse than a straight tube.
  for (int i = 0; i < 40; ++i) shaft.Add(CNuPoint(i % 2, i / 2 % 2, i / 4));
  for (int i = 0; i < 9; ++i) level.Add(CNuPoint(i, 5 + 1e-13 * i));
  CNuPointArray spoilt(place);
  spoilt.Add(CNuPoint(0, kNaN, 0));
  const struct {
    const char* className;
    Criterion by;
    const CNuPointArray& points;
    const char* failure;
    double tol = kTol;
    long limit = kLimit;
  } rows[] = {
      {"CNuLine", kLeastSquares, place, "bestfit 2 |CNuLine [2,0]"},
      {"CNuLine", kLeastSquares, place, "bestfit 2 |CNuLine [2,0]", 0.0},
      {"CNuLine", kLeastSquares, pair, "bestfit 2 |CNuLine [2,0]", 1e-12},
      {"CNuPlane", kLeastSquares, line, "bestfit 3 |CNuPlane [3,0]"},
      {"CNuCircle", kLeastSquares, line, "bestfit 3 |CNuPlane [3,0]"},
      {"CNuSphSurf", kLeastSquares, plane, "bestfit 4 |CNuSphSurf [4,0]"},
      {"CNuCylSurf", kLeastSquares, plane, "bestfit 4 |CNuCylSurf [4,0]"},
      {"CNuCylSurf", kLeastSquares, four, "bestfit 2 |CNuCylSurf [5,0]"},
      {"CNuConSurf", kLeastSquares, plane, "bestfit 4 |CNuConSurf [4,0]"},
      {"CNuConSurf", kLeastSquares, five, "bestfit 2 |CNuConSurf [6,0]"},
      {"CNuEllipse", kLeastSquares, line, "bestfit 3 |CNuPlane [3,0]"},
      {"CNuEllipse", kLeastSquares, parabola, "bestfit 2 |CNuEllipse [5,0]"},
      {"CNuEllipse", kLeastSquares, hyperbola, "bestfit 11 |CNuEllipse [0,0]"},
      {"CNuHyperbola", kLeastSquares, parabola, "bestfit 2 |CNuHyperbola [5,0]"},
      {"CNuParabola", kLeastSquares, parabola, "nothing"},
      {"CNuSineCurve", kLeastSquares, square, "bestfit 2 |CNuSineCurve [4,0]"},
      {"CNuSineCurve", kLeastSquares, level, "bestfit 6 |CNuSineCurve [0,0]"},
      {"CNuSineCurve", kLeastSquares, line, "bestfit 11 |CNuSineCurve [0,0]"},
      {"CNuCircle", kCircumscribed, solid, "bestfit 5 |CNuCircle [3,0]"},
      {"CNuCircle", kInscribed, solid, "bestfit 5 |CNuCircle [3,0]"},
      {"CNuCircle", kInscribed, line, "bestfit 3 |CNuCircle [3,0]"},
      {"CNuCircle", kZone, line, "nothing"},
      {"CNuCircle", kZone, shaft, "bestfit 11 |CNuCircle [0,0]"},
      {"CNuCircle", kZone, wavy, "bestfit 12 |CNuCircle [0,0]", kTol, 1},
      {"CNuSphSurf", kInscribed, line, "bestfit 3 |CNuSphSurf [3,0]"},
      {"CNuSphSurf", kInscribed, square, "bestfit 11 |CNuSphSurf [0,0]"},
      {"CNuSphSurf", kInscribed, cap, "bestfit 11 |CNuSphSurf [0,0]"},
      {"CNuSphSurf", kZone, slab, "bestfit 11 |CNuSphSurf [0,0]"},
      {"CNuSphSurf", kZone, ring, "bestfit 12 |CNuCircle [0,0]", kTol, 1},
      {"CNuCylSurf", kCircumscribed, plane, "bestfit 4 |CNuCylSurf [4,0]"},
      {"CNuCylSurf", kCircumscribed, four, "bestfit 2 |CNuCylSurf [5,0]"},
      {"CNuCylSurf", kInscribed, four, "bestfit 2 |CNuCylSurf [5,0]"},
      {"CNuCylSurf", kInscribed, solid, "bestfit 1 |CNuCylSurf [5,0]"},
      {"CNuCylSurf", kInscribed, square, "nothing"},
      {"CNuCylSurf", kInscribed, strip, "bestfit 11 |CNuCylSurf [0,0]"},
      {"CNuCylSurf", kZone, plane, "bestfit 4 |CNuCylSurf [4,0]"},
      {"CNuCylSurf", kZone, four, "bestfit 2 |CNuCylSurf [5,0]"},
      {"CNuCylSurf", kZone, pin, "nothing", 1e9},
      {"CNuConSurf", kZone, plane, "bestfit 4 |CNuConSurf [4,0]"},
      {"CNuConSurf", kZone, five, "bestfit 2 |CNuConSurf [6,0]"},
      {"CNuConSurf", kZone, pin, "bestfit 4 |CNuConSurf [4,0]", 1e9},
      {"CNuLine", kZone, solid, "bestfit 2 |CNuLine [2,0]", 2.0},
      {"CNuPlane", kZone, line, "bestfit 3 |CNuPlane [3,0]"},
      {"CNuPlane", kZone, spoilt, "bestfit 11 |CNuPlane [0,0]"},
      {"CNuTorSurf", kCircumscribed, bar, "bestfit 3 |CNuTorSurf [3,0]", 5.0},
      {"CNuTorSurf", kCircumscribed, shaft, "bestfit 11 |CNuTorSurf::FitMin [0,0]"},
  };
  for (const auto& row : rows)
    ExpectFailure(TheFit(row.className, row.by), row.points, row.failure, row.limit, row.tol);
}

TEST(FitFailures, LimitsAreReached) {
  Random random(35);
  for (const AnyFit& fit : kAllFits) {
    if (!fit.hasLimit) continue;
    // Required: the limit of a cylinder is reported by the name of the circle.
    const char* name = IsOfAny(fit, "CNuCylSurf") ? "CNuCircle" : fit.className;
    CNuPointArray points = fit.points(random, 30);
    if (fit.Is("CNuLine", kZone)) points = BoxCloud(random, 30, 3.0, 2.0, 1.0);
    ExpectFailure(fit, points, std::string("bestfit 12 |") + name + " [0,0]", 1);
    ExpectFailure(fit, points, "nothing");
  }
}

// A result is finite, and of the size of its points.
TEST(FitFailures, PointsOfAnySizeEnd) {
  Random random(37);
  for (const AnyFit& fit : kAllFits) {
    if (IsOfAny(fit, "Curve")) continue;  // waves have two units
    for (const double size : {1e300, 1e150, 1e-150, 1e-300, 5e-324}) {
      for (const CNuPointArray& points : {fit.points(random, 40), BoxCloud(random, 40, 3.0, 2.0, 1.0)}) {
        Fitted f;
        if (FailureOf([&] { fit.run(Scaled(points, size), 0.0, kLimit, f); }) != "nothing") continue;
        EXPECT_TRUE(std::isfinite(f.place.DistanceTo(CNuPoint()) + f.radius + f.form)) << fit.Name() << " " << size;
        EXPECT_TRUE(size < 1e-200 || f.form <= 50.0 * size) << fit.Name() << " " << size;
      }
    }
  }
}

// They spoil a result at most.
TEST(FitFailures, TolerancesThatMeanNothingEnd) {
  Random random(36);
  for (const AnyFit& fit : kAllFits) {
    const CNuPointArray points = fit.points(random, 30);
    for (const double tol : {0.0, -1.0, kInf, kNaN, 1e-320}) {
      Fitted f;
      FailureOf([&] { fit.run(points, tol, 100, f); });
      if (fit.runEx != nullptr) fit.runEx(points, tol, 100, f);
      EXPECT_EQ(NuGetLengthTol(), 1e-12);
      for (const auto& set : {NuSetTol, NuSetZero, NuSetLengthTol}) {
        set(tol);
        FailureOf([&] { fit.run(points, kTol, 100, f); });
        NuSetTol(4.45e-16), NuSetZero(1e-300), NuSetLengthTol(1e-12);
      }
    }
    EXPECT_EQ(FailureOf([&] { FitOf(fit, points); }), "nothing") << fit.Name();
  }
}

}  // namespace
