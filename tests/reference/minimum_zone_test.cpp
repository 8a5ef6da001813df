#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "nu/nu.h"
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

// The place nearest to the mean point, the axis in canonical sign, and the width.
void Check(const Json& set, const CNuVector& place, const char* axisKey, const CNuVector& axis, double zone) {
  const Json& result = set["result"];
  double reach = set["size"].Number();
  for (std::size_t i = 0; i < set["points"].Size(); ++i)
    for (const double c : set["points"][i].Numbers()) reach = std::max(reach, std::fabs(c));
  const double d = 2.0 * kEps * reach;
  // Sets with a closed form state no sensitivity.
  const auto bound = [&](const char* what) {
    return 4.0 * d * (set.Has("sensitivity") && set["sensitivity"].Has(what) ? set["sensitivity"][what].Number() : 1.0);
  };
  const CNuVector truth = VectorOf(result["point"]);
  EXPECT_LE((place - truth).Magnitude(), bound("point") + 4.0 * kEps * truth.Magnitude());
  EXPECT_LE((axis - VectorOf(result[axisKey])).Magnitude(), bound(axisKey) + 4.0 * kEps);
  EXPECT_NEAR(zone, result["zone"].Number(), 8.0 * d);
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

TEST(MinimumZoneReference, RefusesWhatHasNoLine) {
  const auto files = nu::test::ReferenceFiles("err-mz-line");
  EXPECT_GE(files.size(), 1U);
  for (const auto& file : files) {
    const Json set = nu::test::ReadReference(file);
    const Json& refusal = set["result"];
    CNuLine line;
    double zone = 0.0;
    EXPECT_EQ(
        FailureOf([&] { line.FitMinZone(PointsOf(set), &zone, Tol(set), Limit(set)); }),
        "bestfit " + refusal["cause"].Text() + " |" + refusal["text"].Text() + " [" + refusal["count"].Text() + ",0]");
  }
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

}  // namespace
