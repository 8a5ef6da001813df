#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/clouds.h"
#include "support/failures.h"
#include "support/fitted.h"
#include "support/reference_data.h"

// Scores the least-squares fits against the sets of data/reference with the bounds of its README: the plain ones at the
// default tolerances, where an iteration may stop short of the optimum by what the set says, the full ones with
// iterations carried to the rounding level.
namespace {

using nu::test::Feature;
using nu::test::Fitted;
using nu::test::Json;

constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr const char* kFeatures[] = {"line", "plane", "circle", "sphere", "cylinder", "cone"};

CNuPointArray PointsOf(const Json& set) {
  CNuPointArray points(static_cast<int>(set["points"].Size()));
  for (std::size_t i = 0; i < set["points"].Size(); ++i) {
    const auto p = set["points"][i].Numbers();
    points.Add(CNuPoint(p[0], p[1], p[2]));
  }
  return points;
}

double Distance(const CNuVector& a, const std::vector<double>& b) {
  return (a - CNuVector(b[0], b[1], b[2])).Magnitude();
}

// How far the axis of a cone passes the reference's axis point, which is at the foot of the mean point. The apex may be
// far away: doubles hold it, but not the difference.
double NearMean(const Json& set, const Fitted& cone) {
  using Wide = long double;
  const auto truth = set["result"]["axis_point"].Numbers();
  Wide from[3], along = 0.0L, square = 0.0L, distance = 0.0L;
  for (int i = 0; i < 3; ++i) {
    from[i] = Wide(truth[static_cast<std::size_t>(i)]) - cone.place.To3DVector()[i];
    along += from[i] * cone.axis[i];
    square += Wide(cone.axis[i]) * cone.axis[i];
  }
  for (int i = 0; i < 3; ++i) {
    const Wide across = from[i] - along / square * cone.axis[i];
    distance += across * across;
  }
  return static_cast<double>(std::sqrt(distance));
}

void Check(const Json& set, const Fitted& fitted, bool full) {
  const Json& result = set["result"];
  const double size = set["size"].Number();
  const double n = static_cast<double>(set["points"].Size());
  double reach = size;
  for (std::size_t i = 0; i < set["points"].Size(); ++i)
    for (const double c : set["points"][i].Numbers()) reach = std::max(reach, std::fabs(c));
  const double d = 2.0 * kEps * reach;

  const auto stopped = [&](const char* key) {
    return !full && set.Has("stop_rule") ? set["stop_rule"][key].Number() : 0.0;
  };
  const auto score = [&](const char* what, double error, double fullBound, double plainBound, double stop) {
    EXPECT_LE(error, stop + (full ? fullBound : std::max(fullBound, plainBound))) << what;
  };
  const auto length = [&](const char* what, double error, double value, double stop) {
    const double s = set["sensitivity"][what].Number();
    score(what, error, 4.0 * d * s + 4.0 * kEps * value, 1e-12 * size * std::max(1.0, s), stop);
  };
  const bool cylindrical = result.Has("axis_point");
  const bool round = result.Has("radius") && !cylindrical;
  const double moved = 2.0 * (stopped("centre") + stopped("radius"));
  const bool conical = result.Has("apex");
  const char* place = round ? "centre" : conical ? "apex" : cylindrical ? "axis_point" : "point";
  const auto truth = result[place].Numbers();
  length(place, Distance(fitted.place.To3DVector(), truth), std::hypot(truth[0], truth[1], truth[2]),
         round ? stopped(place) : 0.0);
  if (result.Has("radius"))
    length("radius", std::fabs(fitted.radius - result["radius"].Number()), fitted.radius, stopped("radius"));
  if (conical) {
    const double s = set["sensitivity"]["semi_angle_rad"].Number();
    const double error = std::fabs(fitted.angle - result["semi_angle_deg"].Number()) * nu::test::kDegree;
    score("semi-angle", error, 4.0 * d * s + 4.0 * kEps, 1e-12 * std::max(1.0, s * size), 0.0);
    length("axis_point", NearMean(set, fitted), 0.0, 0.0);
  }
  for (const char* axis : {"direction", "axis_direction", "normal"}) {
    if (!result.Has(axis)) continue;
    // The files give no sensitivity for the normal of a circle; two is that of a full turn.
    const double s = round ? 2.0 * set["sensitivity"]["centre"].Number() / size : set["sensitivity"][axis].Number();
    const auto direction = result[axis].Numbers();
    const double error =
        std::min(Distance(fitted.axis, direction), cylindrical && !conical ? Distance(-fitted.axis, direction) : 2.0);
    score(axis, error, 4.0 * d * s + 4.0 * kEps, 1e-12 * std::max(1.0, s * size), 0.0);
  }
  const double sumsq = result["sumsq"].Number();
  const double rounding = 4.0 * d * std::sqrt(n * sumsq) + 16.0 * n * d * d;
  score("form", std::fabs(fitted.form - result["form"].Number()), 8.0 * d, 1e-12 * size, moved);
  score("sumsq", std::fabs(fitted.sumsq - sumsq), rounding, 1e-12 * sumsq + rounding, n * moved * moved);
}

// Returns how many there were.
template<class Score>
int ForAllSets(std::initializer_list<std::string> kinds, Score score) {
  int sets = 0;
  for (const Feature feature : {nu::test::kLine, nu::test::kPlane, nu::test::kCircle, nu::test::kSphere,
                                nu::test::kCylinder, nu::test::kCone}) {
    for (const std::string& kind : kinds) {
      for (const auto& file : nu::test::ReferenceFiles(kind + kFeatures[feature] + "-")) {
        SCOPED_TRACE(file.filename().string());
        score(feature, nu::test::ReadReference(file));
        ++sets;
      }
    }
  }
  return sets;
}

void CheckAll(bool full) {
  const int sets = ForAllSets({"ls-", "lit-ls-", "hard-ls-"}, [full](Feature feature, const Json& set) {
    Check(set, FitOf(feature, PointsOf(set)), full);
  });
  EXPECT_GE(sets, 53);
}

TEST(LeastSquaresReference, MeetsPlainBoundsAtDefaultTolerances) {
  CheckAll(false);
}

TEST(LeastSquaresReference, MeetsFullBoundsCarriedToRounding) {
  const double tol = NuGetTol();
  NuSetTol(1e-32);
  CheckAll(true);
  NuSetTol(tol);
}

TEST(LeastSquaresReference, RefusesWhatCannotBeFitted) {
  const int sets = ForAllSets({"err-ls-"}, [](Feature feature, const Json& set) {
    const Json& refusal = set["result"];
    EXPECT_EQ(
        FailureOf([&] { FitOf(feature, PointsOf(set)); }),
        "bestfit " + refusal["cause"].Text() + " |" + refusal["text"].Text() + " [" + refusal["count"].Text() + ",0]");
  });
  EXPECT_GE(sets, 8);
}

}  // namespace
