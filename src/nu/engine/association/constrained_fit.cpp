#include "nu/engine/association/constrained_fit.h"

#include "nu/engine/association/scaled_fit.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/points/mean.h"

namespace nu::engine::association {
namespace {

// The errors of a deviation, in units of the rounding of the greatest length in it.
constexpr double kDeviationRoundings = 4.0;

bool HasSecondLength(FeatureKind kind) {
  return kind == FeatureKind::ellipse || kind == FeatureKind::hyperbola || kind == FeatureKind::torus;
}

bool IsFinite(const Feature& feature) {
  const AxisFrame& f = feature.frame;
  return shapes::IsFinite(f.origin) && shapes::IsFinite(f.x) && shapes::IsFinite(f.y) && shapes::IsFinite(f.z) &&
         std::isfinite(feature.size[0]) && std::isfinite(feature.size[1]);
}

// The same feature with its origin next to the one of the blocks, where that is possible.
Feature WithNearOrigin(Feature feature, UnknownMask fixed) {
  AxisFrame& frame = feature.frame;
  const Vec3 q = frame.Local({});
  switch (feature.kind) {
    case FeatureKind::lineInPlane:
      if (!Contains(fixed, kShiftY)) frame.origin = frame.origin + q.x * frame.x;
      break;
    case FeatureKind::plane:
      if (!Contains(fixed, kShiftZ)) frame.origin = frame.origin + (q.x * frame.x + q.y * frame.y);
      break;
    case FeatureKind::cone:
      if (fixed & (kShiftsAcross | Bits({kSize0}))) break;
      frame.origin = frame.origin + q.z * frame.z;
      feature.size[0] += q.z * Tan(feature.size[1]);
      break;
    case FeatureKind::line:
    case FeatureKind::cylinder:
      if (!(fixed & kShiftsAcross)) frame.origin = frame.origin + q.z * frame.z;
      break;
    default:
      break;
  }
  return feature;
}

Feature InBlocks(Feature feature, const PointBlocks& points) {
  feature.frame.origin = feature.frame.origin - points.Origin();
  return Scaled(feature, points.Scale());
}

Feature InCallersFrame(Feature feature, const PointBlocks& points) {
  const Vec3 origin = points.InCallersFrame(feature.frame.origin);
  feature = Scaled(feature, 1.0 / points.Scale());
  feature.frame.origin = origin;
  return feature;
}

// To the bit what the caller has fixed.
void RestoreFixed(const Feature& start, UnknownMask fixed, Feature& feature) {
  const UnknownMask still = fixed | ~UnknownsOf(feature.kind);
  if ((still & kShifts) == kShifts && (fixed & kShifts)) feature.frame.origin = start.frame.origin;
  if (Contains(still, kSize0)) feature.size[0] = start.size[0];
  if (Contains(still, kSize1)) feature.size[1] = start.size[1];
}

void ToCallersUnit(const PointBlocks& points, FitCriterion criterion, FittedFeature& result) {
  const double unit = 1.0 / points.Scale();
  result.feature = InCallersFrame(result.feature, points);
  result.lastStep *= unit;
  result.objective *= criterion == FitCriterion::leastSquares ? unit * unit : unit;
  for (int k = 0; k < result.contacts.contacts; ++k)
    result.contacts.contact[k] = points.InCallersFrame(result.contacts.contact[k]);
}

// Squares of lengths in this range keep all their digits.
bool NeedsScale(double extent) {
  constexpr double kLargest = 1e60;
  constexpr double kSmallest = 1e-60;
  return !(extent <= kLargest) || (extent > 0.0 && extent < kSmallest);
}

// The monitor is told lengths in the caller's unit.
struct ScaledMonitor {
  StepMonitor monitor;
  double unit;
  bool isSquare;

  static bool GoesOn(void* context, long step, double objective, double length) {
    const auto* m = static_cast<const ScaledMonitor*>(context);
    return m->monitor.GoesOn(step, (m->isSquare ? m->unit * m->unit : m->unit) * objective, m->unit * length);
  }
};

FittedFeature Solve(const FitProblem& problem, PointBlocks& points, const Feature& start) {
  const double unit = 1.0 / points.Scale();
  ScaledMonitor monitor{problem.monitor, unit, problem.criterion == FitCriterion::leastSquares};
  FitProblem scaled = problem;
  if (problem.monitor.function != nullptr) scaled.monitor = {ScaledMonitor::GoesOn, &monitor};
  const Feature near = WithNearOrigin(InBlocks(start, points), problem.fixed);
  const double extent = FarthestFrom(points, near.frame.origin);
  double greatest = extent + std::fabs(near.size[0]);
  if (HasSecondLength(near.kind)) greatest += std::fabs(near.size[1]);
  const ScaledFit fit{
      scaled,         points, extent, kDeviationRoundings * kEpsilon * greatest, problem.tolerance * points.Scale(),
      problem.monitor};
  FittedFeature result;
  result.feature = near;
  const bool isUsable = IsFinite(near) && std::isfinite(extent) && extent > 0.0;
  if (isUsable && problem.criterion == FitCriterion::leastSquares) result = FitLeastSquares(fit, near);
  if (isUsable && problem.criterion != FitCriterion::leastSquares) result = FitMinimax(fit, near);
  ToCallersUnit(points, problem.criterion, result);
  if (!IsFinite(result.feature)) result.end = FitEnd::noOptimum;
  if (result.end == FitEnd::noOptimum) result.feature = start;
  RestoreFixed(start, problem.fixed, result.feature);
  return result;
}

}  // namespace

Feature HeldAs(const Feature& held, UnknownMask fixed, Feature feature) {
  if ((fixed & kTilts) != 0) feature.frame = {feature.frame.origin, held.frame.x, held.frame.y, held.frame.z};
  if ((fixed & kShifts) != 0) feature.frame.origin = held.frame.origin;
  for (const int k : {0, 1})
    if (Contains(fixed, kSize0 + k)) feature.size[k] = held.size[k];
  return feature;
}

FittedFeature FitFrom(const FitProblem& problem, const Feature& start) {
  FittedFeature failed;
  failed.feature = start;
  if (problem.points.Size() == 0) return failed;
  PointBlocks points(problem.points, MeanOf(problem.points));
  points.Keep();
  const double extent = FarthestFrom(points, {});
  if (NeedsScale(extent) && !points.FitScale()) return failed;
  return Solve(problem, points, start);
}

}  // namespace nu::engine::association
