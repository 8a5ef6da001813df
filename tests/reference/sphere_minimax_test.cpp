#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <tuple>
#include <utility>

#include "nu/nu.h"
#include "support/reference_data.h"

// Scores the minimax spheres against the sets of data/reference, with the bounds of its README for full accuracy.
namespace {

using nu::test::Json;

constexpr double kEps = std::numeric_limits<double>::epsilon();

struct Fitted {
  CNuSphSurf sphere{1.0};
  CNuSphSurf inner{1.0};
  CNuSphSurf outer{1.0};
  double zone = 0.0;
};
using Fit = std::function<void(Fitted&, const CNuPointArray&, double tol, long limit)>;

Fitted FitOf(const Json& set, const Fit& fit) {
  CNuPointArray points(static_cast<int>(set["points"].Size()));
  for (std::size_t i = 0; i < set["points"].Size(); ++i) {
    const auto p = set["points"][i].Numbers();
    points.Add(CNuPoint(p[0], p[1], p[2]));
  }
  Fitted f;
  fit(f, points, set["arguments"]["tol"].Number(), static_cast<long>(set["arguments"]["maxiter"].Number()));
  return f;
}

void Check(const Json& set, const Fitted& f) {
  const Json& result = set["result"];
  double reach = set["size"].Number();
  for (std::size_t i = 0; i < set["points"].Size(); ++i)
    for (const double c : set["points"][i].Numbers()) reach = std::max(reach, std::fabs(c));
  const double d = 2.0 * kEps * reach;
  // Sets with a closed form state no sensitivity.
  const auto bound = [&](const char* what, double value) {
    const double s = set.Has("sensitivity") ? set["sensitivity"][what].Number() : 1.0;
    return 4.0 * d * s + 4.0 * kEps * value;
  };
  const auto c = result["centre"].Numbers();
  const CNuPoint truth(c[0], c[1], c[2]);
  EXPECT_LE(f.sphere.GetCentre().DistanceTo(truth), bound("centre", truth.To3DVector().Magnitude()));
  for (const auto& [key, sphere] :
       {std::pair("radius", &f.sphere), {"inner_radius", &f.inner}, {"outer_radius", &f.outer}}) {
    if (!result.Has(key)) continue;
    EXPECT_LE(std::fabs(sphere->GetRadius() - result[key].Number()), bound("radius", sphere->GetRadius())) << key;
    EXPECT_EQ(sphere->GetCentre().DistanceTo(f.sphere.GetCentre()), 0.0);
  }
  if (!result.Has("zone")) return;
  EXPECT_LE(std::fabs(f.zone - result["zone"].Number()), 8.0 * d);
}

TEST(SphereMinimaxReference, MeetsFullBounds) {
  const std::tuple<const char*, Fit, int> criteria[] = {
      {"mc", [](Fitted& f, const CNuPointArray& points, double tol, long) { f.sphere.FitMin(points, tol); }, 9},
      {"mi", [](Fitted& f, const CNuPointArray& points, double tol, long) { f.sphere.FitMax(points, tol); }, 5},
      {"mz",
       [](Fitted& f, const CNuPointArray& points, double tol, long limit) {
         f.sphere.FitMinZone(points, &f.zone, &f.inner, &f.outer, tol, limit);
       },
       7},
  };
  for (const auto& [criterion, fit, expected] : criteria) {
    int sets = 0;
    for (const char* kind : {"", "lit-", "hard-"}) {
      for (const auto& file : nu::test::ReferenceFiles(std::string(kind) + criterion + "-sphere-")) {
        SCOPED_TRACE(file.filename().string());
        const Json set = nu::test::ReadReference(file);
        Check(set, FitOf(set, fit));
        ++sets;
      }
    }
    EXPECT_EQ(sets, expected) << criterion;
  }
}

}  // namespace
