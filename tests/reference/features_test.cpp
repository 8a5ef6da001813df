#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "support/failures.h"
#include "support/fitted.h"
#include "support/reference_score.h"

// Scores the fits of the features against the sets of data/reference: least squares with the plain bounds at the
// default tolerances and with the full ones carried to rounding, minimax with the full ones throughout.
namespace {

using nu::test::Fitted;
using nu::test::ForEachSet;
using nu::test::Json;
using nu::test::VectorOf;

// How far the axis of a cone passes the reference's axis point, which is at the foot of the mean point. The apex may be
// far away: doubles hold it, but not the difference.
double FromAxis(const CNuVector& point, const Fitted& cone) {
  using Wide = long double;
  Wide from[3], along = 0.0L, square = 0.0L, distance = 0.0L;
  for (int i = 0; i < 3; ++i) {
    from[i] = Wide(point[i]) - cone.place.To3DVector()[i];
    along += from[i] * cone.axis[i];
    square += Wide(cone.axis[i]) * cone.axis[i];
  }
  for (int i = 0; i < 3; ++i) {
    const Wide across = from[i] - along / square * cone.axis[i];
    distance += across * across;
  }
  return static_cast<double>(std::sqrt(distance));
}

void Check(const Json& set, const Fitted& f, bool full = true) {
  const Json& result = set["result"];
  const nu::test::Score score(set, full);
  const bool round = result.Has("centre");
  const bool conical = result.Has("apex");
  const bool cylindrical = result.Has("axis_point") && !conical;
  const char* place = round ? "centre" : conical ? "apex" : cylindrical ? "axis_point" : "point";
  const CNuVector truth = VectorOf(result[place]);
  score.Length(place, (f.place.To3DVector() - truth).Magnitude(), truth.Magnitude());
  for (const auto& [key, radius] :
       {std::pair("radius", f.radius), {"inner_radius", f.inner.radius}, {"outer_radius", f.outer.radius}})
    if (result.Has(key)) score.Length("radius", std::fabs(radius - result[key].Number()), radius);
  if (conical) {
    score.Turn("semi_angle_rad", std::fabs(f.angle - result["semi_angle_deg"].Number()) * nu::test::kDegree);
    score.Length("axis_point", FromAxis(VectorOf(result["axis_point"]), f), 0.0);
  }
  for (const char* key : {"direction", "axis_direction", "normal"}) {
    if (!result.Has(key)) continue;
    const CNuVector axis = VectorOf(result[key]);
    const CNuVector found = cylindrical && axis % f.axis < 0.0 ? -f.axis : f.axis;
    // The files give no sensitivity for the normal of a circle; two is that of a full turn.
    const double s = round ? 2.0 * std::min(1.0, score.Sensitivity("centre")) / score.Size() : score.Sensitivity(key);
    score.Turn(key, (found - axis).Magnitude(), s);
  }
  score.Form(f.form, f.sumsq);
}

constexpr std::pair<nu::test::Feature, const char*> kFeatures[] = {
    {nu::test::kLine, "line-"},     {nu::test::kPlane, "plane-"},       {nu::test::kCircle, "circle-"},
    {nu::test::kSphere, "sphere-"}, {nu::test::kCylinder, "cylinder-"}, {nu::test::kCone, "cone-"}};

void CheckLeastSquares(bool full) {
  int sets = 0;
  for (const auto& [feature, name] : kFeatures) {
    sets += ForEachSet({"ls-", "lit-ls-", "hard-ls-"}, name,
                       [&, fitted = feature](const Json& set) { Check(set, FitOf(fitted, PointsOf(set)), full); });
  }
  EXPECT_GE(sets, 53);
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
  int sets = 0;
  for (const auto& [feature, name] : kFeatures) {
    sets += ForEachSet({"err-ls-"}, name, [fitted = feature](const Json& set) {
      EXPECT_EQ(FailureOf([&] { FitOf(fitted, PointsOf(set)); }), RefusalOf(set));
    });
  }
  EXPECT_GE(sets, 8);
}

struct Sets {
  const char* name;
  const char* className;
  nu::test::Criterion by;
  int sets, refusals;
};

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
    {"mz-line", "CNuLine", nu::test::kZone, 13, 1},
    {"mz-plane-", "CNuPlane", nu::test::kZone, 8, 0},
    {"mz-cone-", "CNuConSurf", nu::test::kZone, 9, 2},
};

Fitted FitOf(const Sets& sets, const Json& set) {
  const Json& arguments = set["arguments"];
  const Fitted f = FitOf(nu::test::TheFit(sets.className, sets.by), PointsOf(set), arguments["tol"].Number(),
                         static_cast<long>(arguments["maxiter"].Number()));
  if (sets.by == nu::test::kZone && f.radius > 0.0) {
    EXPECT_EQ(f.inner.place.DistanceTo(f.place) + f.outer.place.DistanceTo(f.place), 0.0);
  }
  return f;
}

TEST(MinimaxReference, MeetsFullBounds) {
  for (const Sets& sets : kMinimaxSets) {
    const auto check = [&](const Json& set) { Check(set, FitOf(sets, set)); };
    EXPECT_EQ(ForEachSet({"", "lit-", "hard-"}, sets.name, check), sets.sets) << sets.name;
  }
}

TEST(MinimaxReference, RefusesWhatCannotBeFitted) {
  for (const Sets& sets : kMinimaxSets) {
    const auto check = [&](const Json& set) { EXPECT_EQ(FailureOf([&] { FitOf(sets, set); }), RefusalOf(set)); };
    EXPECT_EQ(ForEachSet({"err-"}, sets.name, check), sets.refusals) << sets.name;
  }
}

}  // namespace
