#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "nu/nu.h"
#include "support/failures.h"
#include "support/reference_data.h"

// Scores the least-squares fits against the sets of data/reference with the bounds of its README: the plain ones at the
// default tolerances, where an iteration may stop short of the optimum by what the set says, the full ones with
// iterations carried to the rounding level.
namespace {

using nu::test::Json;

constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr long kLimit = 1000;

struct Fitted {
  CNuPoint place;       // mean point or centre
  CNuVector direction;  // direction or normal; of a sphere without meaning
  double radius = 0.0;
  double form = -1.0;
  double sumsq = -1.0;
};

CNuPointArray PointsOf(const Json& set) {
  CNuPointArray points(static_cast<int>(set["points"].Size()));
  for (std::size_t i = 0; i < set["points"].Size(); ++i) {
    const auto p = set["points"][i].Numbers();
    points.Add(CNuPoint(p[0], p[1], p[2]));
  }
  return points;
}

Fitted FitOf(const Json& set) {
  const CNuPointArray points = PointsOf(set);
  const std::string& feature = set["feature"].Text();
  Fitted fitted;
  if (feature == "line") {
    CNuLine line;
    line.Fit(points, &fitted.form, &fitted.sumsq);
    line.GetData(&fitted.place, &fitted.direction);
  } else if (feature == "plane") {
    CNuPlane plane;
    plane.Fit(points, &fitted.form, &fitted.sumsq);
    plane.GetData(&fitted.place, &fitted.direction);
  } else if (feature == "circle") {
    CNuCircle circle(1.0);
    circle.Fit(points, &fitted.form, &fitted.sumsq, kLimit);
    circle.GetData(&fitted.radius, &fitted.place, &fitted.direction);
  } else {
    CNuSphSurf sphere(1.0);
    sphere.Fit(points, &fitted.form, &fitted.sumsq, kLimit);
    sphere.GetData(&fitted.radius, &fitted.place);
  }
  return fitted;
}

double Distance(const double (&a)[3], const std::vector<double>& b) {
  return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

// One score per quantity: its error, and how much of it is allowed.
void Check(const Json& set, bool full) {
  const Json& result = set["result"];
  const Fitted fitted = FitOf(set);
  const double size = set["size"].Number();
  double reach = size;
  for (std::size_t i = 0; i < set["points"].Size(); ++i)
    for (const double c : set["points"][i].Numbers()) reach = std::max(reach, std::fabs(c));
  const double d = 2.0 * kEps * reach;
  const double n = static_cast<double>(set["points"].Size());
  const auto stopRule = [&](const char* key) {
    return !full && set.Has("stop_rule") ? set["stop_rule"][key].Number() : 0.0;
  };
  const auto score = [&](const char* what, double error, double fullBound, double plainBound, double stop = 0.0) {
    EXPECT_LE(error, stop + (full ? fullBound : std::max(fullBound, plainBound))) << what;
  };
  const bool round = result.Has("radius");
  const auto sensitivity = [&](const char* what) { return set["sensitivity"][what].Number(); };
  const auto length = [&](const char* what, const char* key, double error, double value) {
    const double s = sensitivity(key);
    score(what, error, 4.0 * d * s + 4.0 * kEps * value, 1e-12 * size * std::max(1.0, s), round ? stopRule(what) : 0.0);
  };

  const char* place = round ? "centre" : "point";
  double at[3];
  fitted.place.GetData(&at[0], &at[1], &at[2]);
  const auto truth = result[place].Numbers();
  length(place, place, Distance(at, truth), std::hypot(truth[0], truth[1], truth[2]));
  if (round) length("radius", "radius", std::fabs(fitted.radius - result["radius"].Number()), fitted.radius);

  for (const char* axis : {"direction", "normal"}) {
    if (!result.Has(axis) || round) continue;
    const double s = sensitivity(axis);
    const double* v = fitted.direction.GetData();
    score(axis, Distance({v[0], v[1], v[2]}, result[axis].Numbers()), 4.0 * d * s + 4.0 * kEps,
          1e-12 * std::max(1.0, s * size));
  }
  if (round && result.Has("normal")) {
    EXPECT_LE((fitted.direction *
               CNuVector(result["normal"][0].Number(), result["normal"][1].Number(), result["normal"][2].Number()))
                  .Magnitude(),
              16.0 * d / size + 4.0 * kEps);
  }
  const double sumsq = result["sumsq"].Number();
  const double sumsqBound = 4.0 * d * std::sqrt(n * sumsq) + 16.0 * n * d * d;
  const double moved = round ? 2.0 * (stopRule("centre") + stopRule("radius")) : 0.0;
  score("form", std::fabs(fitted.form - result["form"].Number()), 8.0 * d, 1e-12 * size, moved);
  score("sumsq", std::fabs(fitted.sumsq - sumsq), sumsqBound, 1e-12 * sumsq + sumsqBound, n * moved * moved);
}

class LeastSquaresReference : public ::testing::TestWithParam<const char*> {
 protected:
  void TearDown() override { NuSetTol(m_tol); }

  void CheckAll(bool full) const {
    int sets = 0;
    for (const char* kind : {"ls-", "lit-ls-", "hard-ls-"}) {
      for (const auto& file : nu::test::ReferenceFiles(std::string(kind) + GetParam() + "-")) {
        SCOPED_TRACE(file.filename().string());
        Check(nu::test::ReadReference(file), full);
        ++sets;
      }
    }
    EXPECT_GE(sets, 7);
  }

 private:
  double m_tol = NuGetTol();
};

TEST_P(LeastSquaresReference, MeetsPlainBoundsAtDefaultTolerances) {
  CheckAll(false);
}

TEST_P(LeastSquaresReference, MeetsFullBoundsCarriedToRounding) {
  NuSetTol(1e-32);
  CheckAll(true);
}

TEST_P(LeastSquaresReference, RefusesWhatCannotBeFitted) {
  for (const auto& file : nu::test::ReferenceFiles(std::string("err-ls-") + GetParam() + "-")) {
    const Json set = nu::test::ReadReference(file);
    const Json& refusal = set["result"];
    EXPECT_EQ(FailureOf([&] { FitOf(set); }), "bestfit " + refusal["cause"].Text() + " |" + refusal["text"].Text() +
                                                  " [" + refusal["count"].Text() + ",0]");
  }
}

INSTANTIATE_TEST_SUITE_P(Features, LeastSquaresReference, ::testing::Values("line", "plane", "circle", "sphere"),
                         [](const auto& feature) { return std::string(feature.param); });

}  // namespace
