#include "nu/association/internal/constrained_fits.h"

#include <cmath>

#include "nu/association/internal/report_details.h"
#include "nu/engine/association/covariance.h"
#include "nu/engine/linear/eigen_symmetric.h"
#include "nu/engine/points/mean.h"
#include "nu/engine/points/principal_direction.h"
#include "nu/engine/shapes/axis_direction.h"
#include "nu/engine/shapes/incidence.h"
#include "nu/foundation/tolerances.h"
#include "nu/geometry/internal/conversions.h"

// From the options of an association to a problem of the engine.
//
// A fixed point becomes the origin of the frame and a fixed direction its z axis (the x axis of a line in a plane), so
// that every fixed parameter is an unknown that stays 0. What remains free starts from the unconstrained fit.

namespace nu::internal {
namespace {

AxisFrame Turned(const AxisFrame& frame, const Vec3& direction) {
  constexpr double kParallel = 1e-3;  // a sine, far from where rounding decides
  const bool hasAcross = Norm(Cross(frame.x, direction)) > kParallel;
  return hasAcross ? AxisFrame::Along(frame.origin, direction, frame.x) : AxisFrame::Along(frame.origin, direction);
}

// Of the second moments about a place: the direction in which the points extend farthest from there, or least.
Vec3 DirectionAbout(const Vec3& place, PointView points, Extent extent) {
  double moments[9] = {};
  for (std::size_t i = 0; i < points.Size(); ++i) {
    const Vec3 d = Unit(Rescaled(LoadVec3(points[i]) - place));
    if (!IsFinite(d)) continue;
    const double weight = Norm(LoadVec3(points[i]) - place);
    const double q[3] = {weight * d.x, weight * d.y, weight * d.z};
    for (int k = 0; k < 9; ++k) moments[k] += q[k / 3] * q[k % 3];
  }
  double values[3];
  double vectors[9];
  if (!DecomposeSymmetric(moments, 3, 3, values, vectors, 3)) return {};
  const int column = extent == Extent::largest ? 2 : 0;
  return {vectors[column], vectors[3 + column], vectors[6 + column]};
}

double MeanDeviation(const Feature& feature, PointView points) {
  double sum = 0.0;
  for (std::size_t i = 0; i < points.Size(); ++i) sum += DeviationOf(feature, LoadVec3(points[i]));
  return sum / static_cast<double>(points.Size());
}

void PutDirection(const Vec3& direction, Feature* feature) {
  AxisFrame& frame = feature->frame;
  if (feature->kind == FeatureKind::lineInPlane) {
    frame.x = direction;
    frame.y = Cross(frame.z, frame.x);
  } else if (feature->kind != FeatureKind::sphere) {
    frame = Turned(frame, direction);
  }
}

// The direction of a line or plane through a point far from where it was follows from the points.
void TurnAboutPoint(const FixedParameters& fixed, PointView points, Feature* feature) {
  const Vec3& place = *fixed.point;
  const bool isLine = feature->kind == FeatureKind::line || feature->kind == FeatureKind::lineInPlane;
  if (fixed.direction || !(isLine || feature->kind == FeatureKind::plane)) return;
  const Vec3 direction = DirectionAbout(place, points, isLine ? Extent::largest : Extent::smallest);
  if (IsFinite(direction) && !IsNull(direction, NuGetZero())) PutDirection(Unit(direction), feature);
}

// A line that is fixed to a direction or a point off the plane of the points leaves it.
bool StaysInPlane(const FixedParameters& fixed, PointView points) {
  const bool leaves = fixed.direction && fixed.direction->z != 0.0;
  return !leaves && !(fixed.point && fixed.point->z != points[0][2]);
}

Feature WithFixed(const Feature& given, const FixedParameters& fixed, PointView points) {
  if (fixed.Mask() == 0) return given;
  Feature feature = AtFixed(CentredOn(points, given), fixed);
  if (fixed.point) TurnAboutPoint(fixed, points, &feature);
  if (!fixed.radius && IsRound(feature.kind)) feature.size[0] += MeanDeviation(feature, points);
  return feature;
}

// As the fits of the classes have it: the point of a line, plane or cylinder is next to the mean of the points.
Feature BesideMean(Feature feature, const FitProblem& problem) {
  Vec3& origin = feature.frame.origin;
  Vec3 sum;
  double total = 0.0;
  for (std::size_t i = 0; i < problem.points.Size(); ++i) {
    sum = sum + problem.weights[i] * (LoadVec3(problem.points[i]) - origin);
    total += problem.weights[i];
  }
  const Vec3 toMean = (1.0 / total) * sum;
  if (feature.kind == FeatureKind::line || feature.kind == FeatureKind::cylinder)
    origin = origin + Dot(toMean, feature.frame.z) * feature.frame.z;
  if (feature.kind == FeatureKind::lineInPlane) origin = origin + Dot(toMean, feature.frame.x) * feature.frame.x;
  if (feature.kind == FeatureKind::plane) origin = origin + Rejection(toMean, feature.frame.z);
  return feature;
}

}  // namespace

UnknownMask FixedUnknowns(const FixedParameters& fixed, FeatureKind kind) {
  UnknownMask mask = 0;
  if (fixed.direction) mask |= kind == FeatureKind::lineInPlane ? Bits({kTurn}) : kTilts;
  if (fixed.point) mask |= kShifts | (kind == FeatureKind::cone ? Bits({kSize0}) : 0U);
  if (fixed.majorRadius) mask |= Bits({kSize0});
  if (fixed.radius) mask |= kind == FeatureKind::torus ? Bits({kSize1}) : Bits({kSize0});
  if (fixed.semiAngle) mask |= Bits({kSize1});
  return mask & UnknownsOf(kind);
}

Feature AtFixed(Feature feature, const FixedParameters& fixed) {
  if (fixed.direction) PutDirection(*fixed.direction, &feature);
  if (fixed.point) feature.frame.origin = *fixed.point;
  if (fixed.point && feature.kind == FeatureKind::cone) feature.size[0] = 0.0;
  if (fixed.majorRadius) feature.size[0] = *fixed.majorRadius;
  if (fixed.radius) feature.size[feature.kind == FeatureKind::torus ? 1 : 0] = *fixed.radius;
  if (fixed.semiAngle) feature.size[1] = *fixed.semiAngle;
  return feature;
}

FitCriterion ToEngine(ENuCriterion criterion) {
  constexpr FitCriterion kCriteria[] = {FitCriterion::leastSquares, FitCriterion::zone, FitCriterion::circumscribed,
                                        FitCriterion::inscribed};
  return kCriteria[criterion];
}

FitProblem ProblemOf(const AssociationState& state, ENuCriterion criterion, FeatureKind kind,
                     const StepMonitor& monitor) {
  constexpr PointSide kSides[] = {PointSide::either, PointSide::positive, PointSide::negative};
  const AssociationOptions& options = state.options;
  FitProblem problem;
  problem.points = state.points;
  problem.weights = WeightsOf(options);
  problem.criterion = ToEngine(criterion);
  problem.side = kSides[options.side];
  problem.fixed = FixedUnknowns(options.fixed, kind);
  problem.mostSteps = options.maxSteps;
  problem.monitor = monitor;
  return problem;
}

Feature WithCanonicalSense(Feature feature) {
  AxisFrame& frame = feature.frame;
  const bool inPlane = feature.kind == FeatureKind::lineInPlane;
  Vec3& along = inPlane ? frame.x : frame.z;
  Vec3 preferred = along;
  if (inPlane || feature.kind == FeatureKind::line || feature.kind == FeatureKind::plane) {
    CNuVector direction = ToVector(along);
    direction.SymmetricAxis(NuGetTol(), 1);
    preferred = Components(direction);
  } else if (feature.kind == FeatureKind::cylinder || feature.kind == FeatureKind::torus) {
    preferred = WithLargestPositive(along);
  }
  if (Dot(preferred, along) >= 0.0) return feature;
  along = -1.0 * along;
  frame.y = -1.0 * frame.y;
  return feature;
}

bool HasRoughStart(FeatureKind kind) {
  return IsRound(kind) || kind == FeatureKind::line || kind == FeatureKind::plane;
}

Feature RoughStart(FeatureKind kind, const FixedParameters& fixed, PointView points) {
  PointBlocks blocks(points, LoadVec3(points[points.Size() / 2]));
  const PrincipalDirection longest = FindPrincipalDirection(blocks, Extent::largest);
  const PrincipalDirection flattest = FindPrincipalDirection(blocks, Extent::smallest);
  const bool isAxis = kind == FeatureKind::line || kind == FeatureKind::lineInPlane || kind == FeatureKind::cylinder;
  Vec3 z = fixed.direction.value_or(isAxis ? longest.direction : flattest.direction);
  if (!IsFinite(z) || IsNull(z, NuGetZero())) z = {0.0, 0.0, 1.0};
  Feature feature{kind, AxisFrame::Along(MeanOf(points), z)};
  if (kind == FeatureKind::torus) {
    // About the points, with a minor radius that is no special one.
    feature.size[0] = longest.largestSingular / std::sqrt(static_cast<double>(points.Size()));
    feature.size[1] = 0.25 * feature.size[0];
  }
  if (!fixed.radius || !IsRound(kind)) return feature;
  // The points are on one side of the centre.
  const Vec3 across = kind == FeatureKind::circle ? Cross(z, longest.direction) : flattest.direction;
  if (IsFinite(across)) feature.frame.origin = feature.frame.origin + *fixed.radius * across;
  return feature;
}

Feature AsTube(Feature circle, double radius) {
  circle.kind = FeatureKind::torus;
  circle.size[1] = radius;
  return circle;
}

FittedFeature FitConstrained(const AssociationState& state, ENuCriterion criterion, const Feature& start, double tol,
                             const StepMonitor& monitor) {
  const AssociationOptions& options = state.options;
  Feature accounted = AccountedFeature(start, criterion, state.points, tol);
  if (start.kind == FeatureKind::line && !StaysInPlane(options.fixed, state.points)) accounted = start;
  // Distances from a circle in space have no sign.
  if (start.kind == FeatureKind::circle && options.side != NuEitherSide) accounted.kind = FeatureKind::circle;
  const Feature moved = WithFixed(accounted, options.fixed, state.points);
  const FitProblem problem = ProblemOf(state, criterion, moved.kind, monitor);
  FittedFeature fit = options.start ? FitFrom(problem, moved) : FitNear(problem, moved);
  if (start.kind == FeatureKind::torus && criterion == NuMinimumZone) fit.feature = AsTube(fit.feature, fit.objective);
  const bool hasSense = options.start || options.fixed.direction || options.side != NuEitherSide;
  if (!hasSense) fit.feature = WithCanonicalSense(fit.feature);
  if (problem.weights != nullptr && !options.fixed.point) fit.feature = BesideMean(fit.feature, problem);
  return fit;
}

}  // namespace nu::internal
