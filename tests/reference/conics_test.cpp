#include <gtest/gtest.h>

#include <cctype>
#include <cmath>
#include <string>

#include "support/failures.h"
#include "support/fitted.h"
#include "support/reference_score.h"

// Scores the conic fits against the sets of data/reference: with the plain bounds at the default tolerances, with the
// full ones carried to rounding.
namespace {

using nu::test::Fitted;
using nu::test::ForEachSet;
using nu::test::Json;

Fitted FitOf(const std::string& className, const Json& set) {
  return FitOf(nu::test::TheFit(className), PointsOf(set), 0.0, 100);
}

// Of the class without CNu, in small letters.
std::string FileOf(std::string className) {
  className[3] = static_cast<char>(std::tolower(className[3]));
  return className.substr(3);
}

void Check(const std::string& className, const Json& set, bool full) {
  const Fitted f = FitOf(className, set);
  const Json& result = set["result"];
  const nu::test::Score score(set, full);
  const bool parabola = className == "CNuParabola";
  const auto direction = [&](const char* key, const CNuVector& found, bool anySign, double s) {
    const CNuVector truth = VectorOf(result[key]);
    score.Turn(key, ((anySign && found % truth < 0.0 ? -found : found) - truth).Magnitude(), s);
  };
  const CNuVector origin = VectorOf(result[parabola ? "vertex" : "centre"]);
  score.Length("origin", (f.place.To3DVector() - origin).Magnitude(), origin.Magnitude());
  if (parabola) {
    score.Length("parameters", std::fabs(f.radius - result["focal_length"].Number()), f.radius);
  } else {
    const double error = std::hypot(f.radius - result["a"].Number(), f.minor - result["b"].Number());
    score.Length("parameters", error, std::hypot(f.radius, f.minor));
  }
  direction("x_axis", f.axis, !parabola, score.Sensitivity("x_axis"));
  // The files give no sensitivity for the normal; two is that of a full turn.
  direction("normal", f.normal, true, 2.0 * score.Sensitivity("origin") / score.Size());
  score.Form(f.form, f.sumsq);
}

class ConicReference : public testing::TestWithParam<const char*> {};

TEST_P(ConicReference, MeetsPlainAndFullBounds) {
  const double tol = NuGetTol();
  const int sets = ForEachSet({"ls-"}, FileOf(GetParam()), [tol](const Json& set) {
    Check(GetParam(), set, false);
    NuSetTol(1e-32);
    Check(GetParam(), set, true);
    NuSetTol(tol);
  });
  EXPECT_EQ(sets, 4);
}

TEST_P(ConicReference, RefusesWhatCannotBeFitted) {
  const auto check = [](const Json& set) { EXPECT_EQ(FailureOf([&] { FitOf(GetParam(), set); }), RefusalOf(set)); };
  EXPECT_GE(ForEachSet({"err-ls-"}, FileOf(GetParam()), check), 1);
}

INSTANTIATE_TEST_SUITE_P(All, ConicReference, testing::Values("CNuEllipse", "CNuHyperbola", "CNuParabola"),
                         [](const auto& feature) { return std::string(feature.param); });

}  // namespace
