#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "nu/nu.h"
#include "support/failures.h"
#include "support/reference_score.h"

// Scores the conic fits against the sets of data/reference: with the plain bounds at the default tolerances, with the
// full ones carried to rounding.
namespace {

using nu::test::ForEachSet;
using nu::test::Json;

struct Fitted {
  double a = 0, b = 0;  // f in a
  CNuPoint origin = {};
  CNuVector xAxis = {}, normal = {};
  double form = -1, sumsq = -1;
};

Fitted FitOf(const std::string& feature, const Json& set) {
  const CNuPointArray points = PointsOf(set);
  Fitted f;
  CNuEllipse ellipse(2, 1);
  CNuHyperbola hyperbola(2, 1);
  CNuParabola parabola(1);
  if (feature == "ellipse") {
    ellipse.Fit(points, &f.form, &f.sumsq, 100);
    ellipse.GetData(&f.a, &f.b, &f.origin, &f.xAxis, &f.normal);
  } else if (feature == "hyperbola") {
    hyperbola.Fit(points, &f.form, &f.sumsq, 100);
    hyperbola.GetData(&f.a, &f.b, &f.origin, &f.xAxis, &f.normal);
  } else {
    parabola.Fit(points, &f.form, &f.sumsq, 100);
    parabola.GetData(&f.a, &f.origin, &f.xAxis, &f.normal);
  }
  return f;
}

void Check(const std::string& feature, const Json& set, bool full) {
  const Fitted f = FitOf(feature, set);
  const Json& result = set["result"];
  const nu::test::Score score(set, full);
  const bool parabola = feature == "parabola";
  const auto direction = [&](const char* key, const CNuVector& found, bool anySign, double s) {
    const CNuVector truth = VectorOf(result[key]);
    score.Turn(key, ((anySign && found % truth < 0.0 ? -found : found) - truth).Magnitude(), s);
  };
  const CNuVector origin = VectorOf(result[parabola ? "vertex" : "centre"]);
  score.Length("origin", (f.origin.To3DVector() - origin).Magnitude(), origin.Magnitude());
  if (parabola) {
    score.Length("parameters", std::fabs(f.a - result["focal_length"].Number()), f.a);
  } else {
    const double error = std::hypot(f.a - result["a"].Number(), f.b - result["b"].Number());
    score.Length("parameters", error, std::hypot(f.a, f.b));
  }
  direction("x_axis", f.xAxis, !parabola, score.Sensitivity("x_axis"));
  // The files give no sensitivity for the normal; two is that of a full turn.
  direction("normal", f.normal, true, 2.0 * score.Sensitivity("origin") / score.Size());
  score.Form(f.form, f.sumsq);
}

class ConicReference : public testing::TestWithParam<const char*> {};

TEST_P(ConicReference, MeetsPlainAndFullBounds) {
  const double tol = NuGetTol();
  const int sets = ForEachSet({"ls-"}, GetParam(), [tol](const Json& set) {
    Check(GetParam(), set, false);
    NuSetTol(1e-32);
    Check(GetParam(), set, true);
    NuSetTol(tol);
  });
  EXPECT_EQ(sets, 4);
}

TEST_P(ConicReference, RefusesWhatCannotBeFitted) {
  const auto check = [](const Json& set) { EXPECT_EQ(FailureOf([&] { FitOf(GetParam(), set); }), RefusalOf(set)); };
  EXPECT_GE(ForEachSet({"err-ls-"}, GetParam(), check), 1);
}

INSTANTIATE_TEST_SUITE_P(All, ConicReference, testing::Values("ellipse", "hyperbola", "parabola"),
                         [](const auto& feature) { return std::string(feature.param); });

}  // namespace
