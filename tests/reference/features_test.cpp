#include <gtest/gtest.h>

#include <cmath>
#include <type_traits>
#include <utility>

#include "support/clouds.h"
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

struct Found : Fitted {
  double inner = 0.0, outer = 0.0;  // radii of a zone's boundaries
};

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

void Check(const Json& set, const Found& f, bool full = true) {
  const Json& result = set["result"];
  const nu::test::Score score(set, full);
  const bool round = result.Has("centre");
  const bool conical = result.Has("apex");
  const bool cylindrical = result.Has("axis_point") && !conical;
  const char* place = round ? "centre" : conical ? "apex" : cylindrical ? "axis_point" : "point";
  const CNuVector truth = VectorOf(result[place]);
  score.Length(place, (f.place.To3DVector() - truth).Magnitude(), truth.Magnitude());
  for (const auto& [key, radius] :
       {std::pair("radius", f.radius), {"inner_radius", f.inner}, {"outer_radius", f.outer}})
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
                       [&, fitted = feature](const Json& set) { Check(set, {FitOf(fitted, PointsOf(set))}, full); });
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

template<class Feature, bool kInscribed>
Found Enclosing(const CNuPointArray& points, double tol, long limit) {
  Found found;
  Feature feature(1.0);
  if constexpr (std::is_same_v<Feature, CNuCylSurf>) {
    kInscribed ? feature.FitMax(points, tol, limit) : feature.FitMin(points, tol, limit);
  } else {
    kInscribed ? feature.FitMax(points, tol) : feature.FitMin(points, tol);
  }
  Read(feature, found);
  return found;
}

// Of a feature with a radius, whose boundaries are about its place.
template<class Feature>
Found Zone(const CNuPointArray& points, double tol, long limit) {
  Found found, bounds[2];
  Feature feature(1.0), inner(1.0), outer(1.0);
  feature.FitMinZone(points, &found.form, &inner, &outer, tol, limit);
  Read(feature, found), Read(inner, bounds[0]), Read(outer, bounds[1]);
  for (const Found& bound : bounds) EXPECT_EQ(bound.place.DistanceTo(found.place), 0.0);
  found.inner = bounds[0].radius;
  found.outer = bounds[1].radius;
  return found;
}

// Of another one.
template<class Feature>
Found PlainZone(const CNuPointArray& points, double tol, long limit) {
  Found found;
  const auto fit = [&](Feature feature, auto... limits) {
    feature.FitMinZone(points, &found.form, tol, limits...);
    Read(feature, found);
  };
  if constexpr (std::is_same_v<Feature, CNuPlane>) fit(Feature());
  if constexpr (std::is_same_v<Feature, CNuLine>) fit(Feature(), limit);
  if constexpr (std::is_same_v<Feature, CNuConSurf>) fit(Feature(45.0), limit);
  return found;
}

struct Criterion {
  const char* name;
  Found (*fit)(const CNuPointArray&, double tol, long limit);
  int sets;
  int refusals;
};

constexpr Criterion kCriteria[] = {
    {"mc-circle-", Enclosing<CNuCircle, false>, 11, 1},
    {"mi-circle-", Enclosing<CNuCircle, true>, 8, 3},
    {"mz-circle-", Zone<CNuCircle>, 8, 1},
    {"mc-sphere-", Enclosing<CNuSphSurf, false>, 9, 0},
    {"mi-sphere-", Enclosing<CNuSphSurf, true>, 5, 0},
    {"mz-sphere-", Zone<CNuSphSurf>, 7, 0},
    {"mc-cylinder-", Enclosing<CNuCylSurf, false>, 5, 1},
    {"mi-cylinder-", Enclosing<CNuCylSurf, true>, 5, 0},
    {"mz-cylinder-", Zone<CNuCylSurf>, 9, 0},
    {"mz-line", PlainZone<CNuLine>, 13, 1},
    {"mz-plane-", PlainZone<CNuPlane>, 8, 0},
    {"mz-cone-", PlainZone<CNuConSurf>, 9, 2},
};

Found FitOf(const Criterion& criterion, const Json& set) {
  const Json& arguments = set["arguments"];
  return criterion.fit(PointsOf(set), arguments["tol"].Number(), static_cast<long>(arguments["maxiter"].Number()));
}

TEST(MinimaxReference, MeetsFullBounds) {
  for (const Criterion& criterion : kCriteria) {
    const auto check = [&](const Json& set) { Check(set, FitOf(criterion, set)); };
    EXPECT_EQ(ForEachSet({"", "lit-", "hard-"}, criterion.name, check), criterion.sets) << criterion.name;
  }
}

TEST(MinimaxReference, RefusesWhatCannotBeFitted) {
  for (const Criterion& criterion : kCriteria) {
    const auto check = [&](const Json& set) { EXPECT_EQ(FailureOf([&] { FitOf(criterion, set); }), RefusalOf(set)); };
    EXPECT_EQ(ForEachSet({"err-"}, criterion.name, check), criterion.refusals) << criterion.name;
  }
}

}  // namespace
