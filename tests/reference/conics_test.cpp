#include <gtest/gtest.h>

#include <cctype>
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

class ConicReference : public testing::TestWithParam<const char*> {};

TEST_P(ConicReference, MeetsPlainAndFullBounds) {
  const double tol = NuGetTol();
  const int sets = ForEachSet({"ls-"}, FileOf(GetParam()), [tol](const Json& set) {
    nu::test::Expecting(set, false).Conic(FitOf(GetParam(), set));
    NuSetTol(1e-32);
    nu::test::Expecting(set).Conic(FitOf(GetParam(), set));
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
