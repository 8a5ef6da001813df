#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "nu/nu.h"
#include "support/failures.h"
#include "support/reference_data.h"

// Scores the minimax circles against the sets of data/reference, with the bounds of its README for full accuracy.
namespace {

using nu::test::Json;

constexpr double kEps = std::numeric_limits<double>::epsilon();

struct Fitted {
  CNuCircle circle{1.0};
  double zone = 0.0;
  double inner = 0.0;
  double outer = 0.0;
};
using Fit = std::function<Fitted(const CNuPointArray&, double tol, long limit)>;

Fitted Circumscribed(const CNuPointArray& points, double tol, long) {
  Fitted f;
  f.circle.FitMin(points, tol);
  return f;
}

Fitted Inscribed(const CNuPointArray& points, double tol, long) {
  Fitted f;
  f.circle.FitMax(points, tol);
  return f;
}

Fitted Zone(const CNuPointArray& points, double tol, long limit) {
  Fitted f;
  CNuCircle inner(1.0), outer(1.0);
  f.circle.FitMinZone(points, &f.zone, &inner, &outer, tol, limit);
  f.inner = inner.GetRadius();
  f.outer = outer.GetRadius();
  return f;
}

CNuPointArray PointsOf(const Json& set) {
  CNuPointArray points(static_cast<int>(set["points"].Size()));
  for (std::size_t i = 0; i < set["points"].Size(); ++i) {
    const auto p = set["points"][i].Numbers();
    points.Add(CNuPoint(p[0], p[1], p[2]));
  }
  return points;
}

Fitted FitOf(const Json& set, const Fit& fit) {
  return fit(PointsOf(set), set["arguments"]["tol"].Number(), static_cast<long>(set["arguments"]["maxiter"].Number()));
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
  EXPECT_LE((f.circle.GetCentre() - truth).To3DVector().Magnitude(), bound("centre", truth.To3DVector().Magnitude()));
  const auto radius = [&](const char* key, double value) {
    if (!result.Has(key)) return;
    EXPECT_LE(std::fabs(value - result[key].Number()), bound("radius", value)) << key;
  };
  radius("radius", f.circle.GetRadius());
  radius("inner_radius", f.inner);
  radius("outer_radius", f.outer);
  if (result.Has("zone")) {
    EXPECT_LE(std::fabs(f.zone - result["zone"].Number()), 8.0 * d);
  }
  if (!result.Has("normal")) return;
  const auto n = result["normal"].Numbers();
  EXPECT_LE((f.circle.GetNormal() * CNuVector(n[0], n[1], n[2])).Magnitude(),
            8.0 * d / set["size"].Number() + 4.0 * kEps);
}

struct Criterion {
  const char* name;
  Fit fit;
  int sets;
  int refusals;
};

class CircleReference : public testing::TestWithParam<Criterion> {};

TEST_P(CircleReference, MeetsFullBounds) {
  int sets = 0;
  for (const char* kind : {"", "lit-", "hard-"}) {
    for (const auto& file : nu::test::ReferenceFiles(std::string(kind) + GetParam().name + "-circle-")) {
      SCOPED_TRACE(file.filename().string());
      const Json set = nu::test::ReadReference(file);
      Check(set, FitOf(set, GetParam().fit));
      ++sets;
    }
  }
  EXPECT_EQ(sets, GetParam().sets);
}

TEST_P(CircleReference, RefusesWhatCannotBeFitted) {
  int sets = 0;
  for (const auto& file : nu::test::ReferenceFiles(std::string("err-") + GetParam().name + "-circle-")) {
    SCOPED_TRACE(file.filename().string());
    const Json set = nu::test::ReadReference(file);
    const Json& refusal = set["result"];
    const std::string count = refusal["count"].IsNumber() ? refusal["count"].Text() : "3";
    EXPECT_EQ(FailureOf([&] { FitOf(set, GetParam().fit); }),
              "bestfit " + refusal["cause"].Text() + " |" + refusal["text"].Text() + " [" + count + ",0]");
    ++sets;
  }
  EXPECT_EQ(sets, GetParam().refusals);
}

INSTANTIATE_TEST_SUITE_P(All, CircleReference,
                         testing::Values(Criterion{"mc", Circumscribed, 11, 1}, Criterion{"mi", Inscribed, 8, 3},
                                         Criterion{"mz", Zone, 8, 1}),
                         [](const auto& set) { return std::string(set.param.name); });

}  // namespace
