#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"
#include "support/reference_data.h"

// Scores the minimum-zone fits against the sets of data/reference, with the bounds of its README for full accuracy.
namespace {

using nu::test::Json;

constexpr double kEps = std::numeric_limits<double>::epsilon();

CNuPointArray PointsOf(const Json& set) {
  CNuPointArray points(static_cast<int>(set["points"].Size()));
  for (std::size_t i = 0; i < set["points"].Size(); ++i) {
    const auto p = set["points"][i].Numbers();
    points.Add(CNuPoint(p[0], p[1], p[2]));
  }
  return points;
}

double Tol(const Json& set) {
  return set["arguments"]["tol"].Number();
}

long Limit(const Json& set) {
  return static_cast<long>(set["arguments"]["maxiter"].Number());
}

CNuVector VectorOf(const Json& numbers) {
  const auto v = numbers.Numbers();
  return CNuVector(v[0], v[1], v[2]);
}

// What a set allows each of its quantities to be off by. Sets with a closed form state no sensitivity.
struct Bounds {
  explicit Bounds(const Json& reference) : set(reference) {
    double reach = set["size"].Number();
    for (std::size_t i = 0; i < set["points"].Size(); ++i)
      for (const double c : set["points"][i].Numbers()) reach = std::max(reach, std::fabs(c));
    d = 2.0 * kEps * reach;
  }
  double operator()(const char* what, double value) const {
    const bool states = set.Has("sensitivity") && set["sensitivity"].Has(what);
    return 4.0 * d * (states ? set["sensitivity"][what].Number() : 1.0) + 4.0 * kEps * value;
  }
  double Zone() const { return 8.0 * d; }

  const Json& set;
  double d = 0.0;
};

// The place nearest to the mean point, the axis in canonical sign, and the width.
void Check(const Json& set, const CNuVector& place, const char* axisKey, const CNuVector& axis, double zone) {
  const Json& result = set["result"];
  const Bounds bound(set);
  const CNuVector truth = VectorOf(result["point"]);
  EXPECT_LE((place - truth).Magnitude(), bound("point", truth.Magnitude()));
  EXPECT_LE((axis - VectorOf(result[axisKey])).Magnitude(), bound(axisKey, 1.0));
  EXPECT_NEAR(zone, result["zone"].Number(), bound.Zone());
}

TEST(MinimumZoneReference, Lines) {
  std::size_t sets = 0;
  for (const char* kind : {"mz-line2d-", "mz-line3d-", "hard-mz-line3d-"}) {
    for (const auto& file : nu::test::ReferenceFiles(kind)) {
      SCOPED_TRACE(file.filename().string());
      const Json set = nu::test::ReadReference(file);
      CNuLine line;
      double zone = -1.0;
      EXPECT_EQ(line.FitMinZoneEx(PointsOf(set), &zone, Tol(set), Limit(set)), NuFitSuccess);
      Check(set, line.GetPoint().To3DVector(), "direction", line.GetDirection(), zone);
      ++sets;
    }
  }
  EXPECT_GE(sets, 13U);
}

TEST(MinimumZoneReference, Planes) {
  int sets = 0;
  for (const char* kind : {"mz-plane-", "lit-mz-plane-", "hard-mz-plane-"}) {
    for (const auto& file : nu::test::ReferenceFiles(kind)) {
      SCOPED_TRACE(file.filename().string());
      const Json set = nu::test::ReadReference(file);
      CNuPlane plane;
      double zone = -1.0;
      plane.FitMinZone(PointsOf(set), &zone, Tol(set));
      Check(set, plane.GetPoint().To3DVector(), "normal", plane.GetNormal(), zone);
      ++sets;
    }
  }
  EXPECT_EQ(sets, 8);
}

// The distance of a point from an axis that is given by a point far away: doubles hold that, but not the way between.
double FromAxis(const CNuVector& point, const CNuVector& far, const CNuVector& axis) {
  long double from[3], along = 0.0L, square = 0.0L, distance = 0.0L;
  for (int i = 0; i < 3; ++i) {
    from[i] = static_cast<long double>(point[i]) - far[i];
    along += from[i] * axis[i];
    square += static_cast<long double>(axis[i]) * axis[i];
  }
  for (int i = 0; i < 3; ++i) {
    const long double across = from[i] - along / square * axis[i];
    distance += across * across;
  }
  return static_cast<double>(std::sqrt(distance));
}

TEST(MinimumZoneReference, Cones) {
  int sets = 0;
  for (const char* kind : {"mz-cone-", "hard-mz-cone-"}) {
    for (const auto& file : nu::test::ReferenceFiles(kind)) {
      SCOPED_TRACE(file.filename().string());
      const Json set = nu::test::ReadReference(file);
      const Json& result = set["result"];
      const Bounds bound(set);
      const CNuPointArray points = PointsOf(set);
      CNuConSurf cone(45.0);
      double zone = -1.0;
      EXPECT_EQ(cone.FitMinZoneEx(points, &zone, Tol(set), Limit(set)), NuFitSuccess);
      EXPECT_NEAR(zone, result["zone"].Number(), bound.Zone());
      EXPECT_NEAR(cone.GetSemiAngle() * nu::test::kDegree, result["semi_angle_deg"].Number() * nu::test::kDegree,
                  bound("semi_angle_rad", 1.0));
      const CNuVector axis = cone.GetAxisDirection();
      EXPECT_LE((axis - VectorOf(result["axis_direction"])).Magnitude(), bound("axis_direction", 1.0));
      const CNuVector apex = cone.GetApex().To3DVector();
      const CNuVector trueApex = VectorOf(result["apex"]);
      EXPECT_LE((apex - trueApex).Magnitude(), bound("apex", trueApex.Magnitude()));
      const CNuVector place = VectorOf(result["axis_point"]);
      EXPECT_LE(FromAxis(place, apex, axis), bound("axis_point", place.Magnitude()));
      ++sets;
    }
  }
  EXPECT_EQ(sets, 9);
}

TEST(MinimumZoneReference, RefusesWhatHasNoZone) {
  int sets = 0;
  for (const char* kind : {"err-mz-line", "err-mz-cone"}) {
    for (const auto& file : nu::test::ReferenceFiles(kind)) {
      const Json set = nu::test::ReadReference(file);
      const Json& refusal = set["result"];
      const std::string failure = FailureOf([&] {
        double zone = 0.0;
        if (set["feature"].Text() == "cone") return CNuConSurf(45.0).FitMinZone(PointsOf(set), &zone, Tol(set), 1000);
        CNuLine().FitMinZone(PointsOf(set), &zone, Tol(set), Limit(set));
      });
      EXPECT_EQ(failure, "bestfit " + refusal["cause"].Text() + " |" + refusal["text"].Text() + " [" +
                             refusal["count"].Text() + ",0]");
      ++sets;
    }
  }
  EXPECT_EQ(sets, 3);
}

}  // namespace
