#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <tuple>
#include <utility>

#include "nu/nu.h"
#include "support/failures.h"
#include "support/reference_data.h"

// Scores the minimax cylinders against the sets of data/reference, with the bounds of its README for full accuracy.
namespace {

using nu::test::Json;

constexpr double kEps = std::numeric_limits<double>::epsilon();

struct Fitted {
  CNuCylSurf cylinder{1.0};
  CNuCylSurf inner{1.0};
  CNuCylSurf outer{1.0};
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

CNuPoint PointOf(const Json& json) {
  const auto p = json.Numbers();
  return {p[0], p[1], p[2]};
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
  const CNuPoint truth = PointOf(result["axis_point"]);
  const CNuLine axis = f.cylinder.GetAxis();
  const CNuPoint place = axis.GetPoint();
  EXPECT_LE(place.DistanceTo(truth), bound("axis_point", truth.To3DVector().Magnitude()));
  CNuVector direction = PointOf(result["axis_direction"]).To3DVector();
  if (direction % axis.GetDirection() < 0.0) direction = -direction;
  EXPECT_LE((direction - axis.GetDirection()).Magnitude(), bound("axis_direction", 1.0));
  for (const auto& [key, cylinder] :
       {std::pair("radius", &f.cylinder), {"inner_radius", &f.inner}, {"outer_radius", &f.outer}}) {
    if (!result.Has(key)) continue;
    EXPECT_LE(std::fabs(cylinder->GetRadius() - result[key].Number()), bound("radius", cylinder->GetRadius())) << key;
    EXPECT_EQ(cylinder->GetAxis().GetPoint().DistanceTo(place), 0.0);
  }
  if (!result.Has("zone")) return;
  EXPECT_LE(std::fabs(f.zone - result["zone"].Number()), 8.0 * d);
}

TEST(CylinderMinimaxReference, MeetsFullBounds) {
  const std::tuple<const char*, Fit, int> criteria[] = {
      {"mc",
       [](Fitted& f, const CNuPointArray& points, double tol, long limit) { f.cylinder.FitMin(points, tol, limit); },
       5},
      {"mi",
       [](Fitted& f, const CNuPointArray& points, double tol, long limit) { f.cylinder.FitMax(points, tol, limit); },
       5},
      {"mz",
       [](Fitted& f, const CNuPointArray& points, double tol, long limit) {
         f.cylinder.FitMinZone(points, &f.zone, &f.inner, &f.outer, tol, limit);
       },
       9},
  };
  for (const auto& [criterion, fit, expected] : criteria) {
    int sets = 0;
    for (const char* kind : {"", "hard-"}) {
      for (const auto& file : nu::test::ReferenceFiles(std::string(kind) + criterion + "-cylinder-")) {
        SCOPED_TRACE(file.filename().string());
        const Json set = nu::test::ReadReference(file);
        Check(set, FitOf(set, fit));
        ++sets;
      }
    }
    EXPECT_EQ(sets, expected) << criterion;
    for (const auto& file : nu::test::ReferenceFiles(std::string("err-") + criterion + "-cylinder-")) {
      const Json set = nu::test::ReadReference(file);
      const Json& result = set["result"];
      const std::string expectedFailure = "bestfit " + std::to_string(static_cast<int>(result["cause"].Number())) +
                                          " |CNuCylSurf [" +
                                          std::to_string(static_cast<int>(result["count"].Number())) + ",0]";
      EXPECT_EQ(FailureOf([&] { FitOf(set, fit); }), expectedFailure);
    }
  }
}

}  // namespace
