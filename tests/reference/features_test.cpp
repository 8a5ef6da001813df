#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "support/failures.h"
#include "support/fitted.h"
#include "support/reference_score.h"

// Scores the fits of the features against the sets of data/reference: least squares with the plain bounds at the
// default tolerances and with the full ones carried to rounding, minimax with the full ones throughout. The order of
// the points does not count: in every order the same digits are right, and the same sets are refused.
namespace {

using nu::test::Fitted;
using nu::test::ForEachSet;
using nu::test::Json;

void Check(const Json& set, const Fitted& f, bool full = true) {
  nu::test::Expecting(set, full).Fit(f);
}

template<class Call>
void ForSomeOrders(const Json& set, Call call) {
  CNuPointArray points = PointsOf(set);
  nu::test::Random random(3);
  for (int order = 0; order < 4; ++order) {
    SCOPED_TRACE("order " + std::to_string(order));
    call(points);
    points = Shuffled(random, points);
  }
}

struct Sets {
  const char* name;
  const char* className;
  nu::test::Criterion by;
  int sets, refusals;
};

constexpr Sets kLeastSquaresSets[] = {
    {"line-", "CNuLine", nu::test::kLeastSquares, 8, 2},
    {"plane-", "CNuPlane", nu::test::kLeastSquares, 7, 0},
    {"circle-", "CNuCircle", nu::test::kLeastSquares, 11, 1},
    {"sphere-", "CNuSphSurf", nu::test::kLeastSquares, 7, 1},
    {"cylinder-", "CNuCylSurf", nu::test::kLeastSquares, 10, 2},
    {"cone-", "CNuConSurf", nu::test::kLeastSquares, 10, 2},
    {"torus-", "CNuTorSurf", nu::test::kLeastSquares, 8, 0},
    {"ellipse-", "CNuEllipse", nu::test::kLeastSquares, 4, 2},
    {"hyperbola-", "CNuHyperbola", nu::test::kLeastSquares, 4, 1},
    {"parabola-", "CNuParabola", nu::test::kLeastSquares, 4, 2},
    {"sine-", "CNuSineCurve", nu::test::kLeastSquares, 5, 0},
    {"cosine-", "CNuCosineCurve", nu::test::kLeastSquares, 3, 0},
};

Fitted LeastSquaresOf(const Sets& sets, const CNuPointArray& points) {
  return FitOf(nu::test::TheFit(sets.className), points, 0.0);
}

void CheckLeastSquares(bool full) {
  for (const Sets& sets : kLeastSquaresSets) {
    const auto check = [&](const Json& set) {
      ForSomeOrders(set, [&](const CNuPointArray& points) { Check(set, LeastSquaresOf(sets, points), full); });
    };
    EXPECT_EQ(ForEachSet({"ls-", "lit-ls-", "hard-ls-"}, sets.name, check), sets.sets) << sets.name;
  }
}

TEST(LeastSquaresReference, MeetsPlainBoundsAtDefaultTolerances) {
  CheckLeastSquares(false);
}

TEST(LeastSquaresReference, MeetsFullBoundsCarriedToRounding) {
  const double tol = NuGetTol();
  NuSetTol(1e-32);
  CheckLeastSquares(true);
  NuSetTol(tol);
}

TEST(LeastSquaresReference, RefusesWhatCannotBeFitted) {
  for (const Sets& sets : kLeastSquaresSets) {
    const auto check = [&](const Json& set) {
      ForSomeOrders(set, [&](const CNuPointArray& points) {
        EXPECT_EQ(FailureOf([&] { LeastSquaresOf(sets, points); }), RefusalOf(set));
      });
    };
    EXPECT_EQ(ForEachSet({"err-ls-"}, sets.name, check), sets.refusals) << sets.name;
  }
}

constexpr Sets kMinimaxSets[] = {
    {"mc-circle-", "CNuCircle", nu::test::kCircumscribed, 11, 1},
    {"mi-circle-", "CNuCircle", nu::test::kInscribed, 8, 3},
    {"mz-circle-", "CNuCircle", nu::test::kZone, 8, 1},
    {"mc-sphere-", "CNuSphSurf", nu::test::kCircumscribed, 9, 0},
    {"mi-sphere-", "CNuSphSurf", nu::test::kInscribed, 5, 0},
    {"mz-sphere-", "CNuSphSurf", nu::test::kZone, 7, 0},
    {"mc-cylinder-", "CNuCylSurf", nu::test::kCircumscribed, 5, 1},
    {"mi-cylinder-", "CNuCylSurf", nu::test::kInscribed, 5, 0},
    {"mz-cylinder-", "CNuCylSurf", nu::test::kZone, 9, 0},
    {"mc-torus-", "CNuTorSurf", nu::test::kCircumscribed, 5, 0},
    {"mz-line", "CNuLine", nu::test::kZone, 13, 1},
    {"mz-plane-", "CNuPlane", nu::test::kZone, 8, 0},
    {"mz-cone-", "CNuConSurf", nu::test::kZone, 9, 2},
};

Fitted FitOf(const Sets& sets, const Json& set, const CNuPointArray& points) {
  const Fitted f = FitOfSet(set, nu::test::TheFit(sets.className, sets.by), points, 1.0);
  if (sets.by == nu::test::kZone && f.radius > 0.0) {
    EXPECT_EQ(f.inner.place.DistanceTo(f.place) + f.outer.place.DistanceTo(f.place), 0.0);
  }
  return f;
}

// An apex far away is rounded where it is stored, and moves the axis at the points by about the full bound: in other
// orders than their own, cones are held to the plain one.
TEST(MinimaxReference, MeetsFullBounds) {
  for (const Sets& sets : kMinimaxSets) {
    const bool isCone = std::string(sets.className) == "CNuConSurf";
    const auto check = [&](const Json& set) {
      Check(set, FitOf(sets, set, PointsOf(set)));
      ForSomeOrders(set, [&](const CNuPointArray& points) {
        const auto expect = [](const nu::test::Measure& m) { EXPECT_LE(m.error, m.bound) << m.what; };
        nu::test::Comparison(set, {}, !isCone, expect).Fit(FitOf(sets, set, points));
      });
    };
    EXPECT_EQ(ForEachSet({"", "lit-", "hard-"}, sets.name, check), sets.sets) << sets.name;
  }
}

TEST(MinimaxReference, RefusesWhatCannotBeFitted) {
  for (const Sets& sets : kMinimaxSets) {
    const auto check = [&](const Json& set) {
      ForSomeOrders(set, [&](const CNuPointArray& points) {
        EXPECT_EQ(FailureOf([&] { FitOf(sets, set, points); }), RefusalOf(set));
      });
    };
    EXPECT_EQ(ForEachSet({"err-"}, sets.name, check), sets.refusals) << sets.name;
  }
}

}  // namespace
