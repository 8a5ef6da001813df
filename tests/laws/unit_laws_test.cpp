#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "support/clouds.h"
#include "support/failures.h"
#include "support/fitted.h"
#include "support/minimax_laws.h"

// The same part in about metres, millimetres and micrometres, with every tolerance converted, has the same fits, by
// every criterion. The factors are powers of two, which round nothing, so the results agree to the last bit.
namespace {

using namespace nu::test;

// All digits: NuGetTol() bounds squared lengths, but components of directions as well.
struct Tolerances {
  explicit Tolerances(double length) { NuSetTol(0.0), NuSetLengthTol(length); }
  ~Tolerances() { NuSetTol(m_tol), NuSetLengthTol(m_lengthTol); }

  double m_tol = NuGetTol();
  double m_lengthTol = NuGetLengthTol();
};

constexpr long kLimit = 1000;

// Whose points may lie anywhere; waves have no common unit of length, and conics need points near one.
bool IsForAnyPoints(const AnyFit& fit) {
  return fit.criterion != kLeastSquares || &fit - kAllFits <= kCone;
}

// What a fit ended with, in millimetres, whatever the unit.
struct Outcome {
  std::string failure;
  std::vector<double> numbers;
};

Outcome OutcomeOf(const AnyFit& fit, const CNuPointArray& points, double tol, double unit) {
  const Tolerances scope(tol * unit);
  const CNuPointArray scaled = Scaled(points, unit);
  Fitted f;
  const std::string failure = FailureOf([&] { fit.run(scaled, tol * unit, kLimit, f); });
  return {failure, failure == "nothing" ? f.Numbers(unit) : std::vector<double>()};
}

struct Part {
  const char* name;
  CNuPointArray points;
};

// Millimetres. Form errors of 10 um; the last ones are nearly degenerate, by 0.5 um and by 2 um.
std::vector<Part> Parts() {
  Random random(81);
  constexpr double kNoise = 2e-3;
  std::vector<Part> parts{{"bore", CircleCloud(random, 180, 5.0, 360.0, kNoise)},
                          {"ring off its plane", CircleCloud(random, 60, 5.0, 360.0, kNoise, kNoise)},
                          {"edge", LineCloud(random, 90, 20.0, kNoise)},
                          {"face", PlaneCloud(random, 90, 20.0, 8.0, kNoise)},
                          {"ball", SphereCloud(random, 90, 5.0, 120.0, kNoise)},
                          {"pin", CylinderCloud(random, 90, 5.0, 10.0, 360.0, kNoise)},
                          {"cone", ConeCloud(random, 90, 25.0, 5.0, 8.0, 360.0, kNoise)}};
  for (const double off : {0.5e-3, 2e-3}) {
    parts.push_back({"three next to a line", PointsOf({{0, 0, 0}, {5, 2.0 * off, 0}, {10, 0, 0}})});
    parts.push_back({"line", LineCloud(random, 50, 20.0, off / 3.0)});
    parts.push_back({"plane", PlaneCloud(random, 50, 20.0, 8.0, off / 3.0)});
    parts.push_back({"shell", SphereCloud(random, 50, 5.0, 120.0, off / 3.0)});
  }
  return parts;
}

// A circle through three points that are less than the tolerance off a line would have a radius of 1e7 times that.
TEST(UnitLaws, ToleranceIsALength) {
  const CNuPointArray near = PointsOf({{0, 0, 0}, {5, 1e-10, 0}, {10, 0, 0}});
  CNuCircle circle(1.0);
  circle.FitMin(near, 1e-9);
  EXPECT_EQ(circle.GetRadius(), 5.0);
  EXPECT_EQ(FailureOf([&] { circle.FitMax(near, 1e-9); }), "bestfit 3 |CNuCircle [3,0]");
  double form = 0.0;
  for (const double unit : {1e-3, 1.0, 1e3}) {
    Random random(82);
    const CNuPointArray bore = Scaled(CircleCloud(random, 720, 5.0, 360.0, 2e-3), unit);
    ASSERT_EQ(circle.FitMinZoneEx(bore, &form, 1e-3 * unit, kLimit), NuFitSuccess);
    EXPECT_NEAR(form, 1.1e-2 * unit, 2e-3 * unit);
    ASSERT_EQ(circle.FitMinEx(bore, 1e-3 * unit), NuFitSuccess);
    EXPECT_NEAR(DistancesFrom(circle.GetCentre(), bore).farthest, circle.GetRadius(), 1e-14 * unit);
    CNuLine line;
    ASSERT_EQ(line.FitMinZoneEx(Scaled(LineCloud(random, 200, 20.0, 2e-3), unit), &form, 1e-3 * unit, kLimit),
              NuFitSuccess);
    EXPECT_NEAR(form, 1.1e-2 * unit, 2e-3 * unit);
  }
}

TEST(UnitLaws, TheUnitOfLengthChangesNoFit) {
  for (const Part& part : Parts()) {
    for (const AnyFit& fit : kAllFits) {
      if (!IsForAnyPoints(fit)) continue;
      for (const double tol : {0.0, 1e-3}) {
        const Outcome inMillimetres = OutcomeOf(fit, part.points, tol, 1.0);
        for (const double unit : {0x1p-10, 0x1p10}) {
          SCOPED_TRACE(fit.Name() + " of " + part.name + ", unit " + std::to_string(unit) + ", tolerance " +
                       std::to_string(tol));
          const Outcome other = OutcomeOf(fit, part.points, tol, unit);
          EXPECT_EQ(other.failure, inMillimetres.failure);
          EXPECT_EQ(other.numbers, inMillimetres.numbers);
        }
      }
    }
  }
}

}  // namespace
