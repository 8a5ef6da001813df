#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "nu/nu.h"
#include "support/failures.h"
#include "support/reference_data.h"

// Scores the conic fits against the sets of data/reference with the bounds of its README: the plain ones at the default
// tolerances, the full ones with iterations carried to the rounding level.
namespace {

using nu::test::Json;

constexpr double kEps = std::numeric_limits<double>::epsilon();

struct Fitted {
  double a = 0, b = 0;  // f in a
  CNuPoint origin = {};
  CNuVector xAxis = {}, normal = {};
  double form = -1, sumsq = -1;
};

Fitted FitOf(const std::string& feature, const Json& set) {
  CNuPointArray points(static_cast<int>(set["points"].Size()));
  for (std::size_t i = 0; i < set["points"].Size(); ++i) {
    const auto p = set["points"][i].Numbers();
    points.Add(CNuPoint(p[0], p[1], p[2]));
  }
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
  const double size = set["size"].Number();
  const double n = static_cast<double>(set["points"].Size());
  double reach = size;
  for (std::size_t i = 0; i < set["points"].Size(); ++i)
    for (const double c : set["points"][i].Numbers()) reach = std::max(reach, std::fabs(c));
  const double d = 2.0 * kEps * reach;
  const auto score = [&](const char* what, double error, double fullBound, double plainBound) {
    EXPECT_LE(error, full ? fullBound : std::max(fullBound, plainBound)) << what;
  };
  const auto length = [&](const char* what, double error, double value) {
    const double s = set["sensitivity"][what].Number();
    score(what, error, 4.0 * d * s + 4.0 * kEps * value, 1e-12 * size * std::max(1.0, s));
  };
  const auto vector = [&](const char* key) {
    const auto c = result[key].Numbers();
    return CNuVector(c[0], c[1], c[2]);
  };
  const auto direction = [&](const char* key, CNuVector found, double s) {
    if (feature != "parabola" && found % vector(key) < 0.0) found = -found;
    if (found % vector(key) < 0.0 && std::string(key) == "normal") found = -found;
    score(key, (found - vector(key)).Magnitude(), 4.0 * d * s + 4.0 * kEps, 1e-12 * std::max(1.0, s * size));
  };
  const CNuVector origin = vector(feature == "parabola" ? "vertex" : "centre");
  length("origin", (f.origin.To3DVector() - origin).Magnitude(), origin.Magnitude());
  if (feature == "parabola") {
    length("parameters", std::fabs(f.a - result["focal_length"].Number()), f.a);
  } else {
    length("parameters", std::hypot(f.a - result["a"].Number(), f.b - result["b"].Number()), std::hypot(f.a, f.b));
  }
  direction("x_axis", f.xAxis, set["sensitivity"]["x_axis"].Number());
  // The files give no sensitivity for the normal; two is that of a full turn.
  direction("normal", f.normal, 2.0 * set["sensitivity"]["origin"].Number() / size);
  const double sumsq = result["sumsq"].Number();
  const double rounding = 4.0 * d * std::sqrt(n * sumsq) + 16.0 * n * d * d;
  score("form", std::fabs(f.form - result["form"].Number()), 8.0 * d, 1e-12 * size);
  score("sumsq", std::fabs(f.sumsq - sumsq), rounding, 1e-12 * sumsq + rounding);
}

class ConicReference : public testing::TestWithParam<const char*> {};

TEST_P(ConicReference, MeetsPlainAndFullBounds) {
  int sets = 0;
  const double tol = NuGetTol();
  for (const auto& file : nu::test::ReferenceFiles(std::string("ls-") + GetParam() + "-")) {
    SCOPED_TRACE(file.filename().string());
    const Json set = nu::test::ReadReference(file);
    Check(GetParam(), set, false);
    NuSetTol(1e-32);
    Check(GetParam(), set, true);
    NuSetTol(tol);
    ++sets;
  }
  EXPECT_EQ(sets, 4);
}

TEST_P(ConicReference, RefusesWhatCannotBeFitted) {
  int sets = 0;
  for (const auto& file : nu::test::ReferenceFiles(std::string("err-ls-") + GetParam() + "-")) {
    SCOPED_TRACE(file.filename().string());
    const Json set = nu::test::ReadReference(file);
    const Json& refusal = set["result"];
    EXPECT_EQ(
        FailureOf([&] { FitOf(GetParam(), set); }),
        "bestfit " + refusal["cause"].Text() + " |" + refusal["text"].Text() + " [" + refusal["count"].Text() + ",0]");
    ++sets;
  }
  EXPECT_GE(sets, 1);
}

INSTANTIATE_TEST_SUITE_P(All, ConicReference, testing::Values("ellipse", "hyperbola", "parabola"),
                         [](const auto& feature) { return std::string(feature.param); });

}  // namespace
