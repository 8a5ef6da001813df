#include "nu/association/internal/feature_fits.h"

#include <cmath>

#include "nu/engine/base/elementary.h"
#include "nu/engine/points/alignment.h"

namespace nu::internal {
namespace {

bool Accepts(const AssociationState& state, const FeatureRules& rules, ENuCriterion criterion) {
  const AssociationOptions& options = state.options;
  if ((rules.criteria & Has(criterion)) == 0) return false;
  const bool isTorus = rules.type == CNuObject::NuTypeTorSurf;
  if (!options.weights.empty() && criterion != NuLeastSquares) return false;
  if (options.side != NuEitherSide && criterion != NuLeastSquares && criterion != NuMinimumZone) return false;
  // Distances from a line in space have no sign.
  const bool isLine = rules.type == CNuObject::NuTypeLine;
  if (isLine && options.side != NuEitherSide && !HaveOneHeight(state.points)) return false;
  if ((options.fixed.Mask() & ~rules.fixable) != 0) return false;
  if (options.start && options.start->type != rules.type) return false;
  const FixedParameters& fixed = options.fixed;
  // The zone of a torus is the tube around a circle: it has no side and no radius but its own.
  if (isTorus && criterion == NuMinimumZone && (fixed.radius || options.side != NuEitherSide)) return false;
  return !(isTorus && fixed.radius && fixed.majorRadius && !(*fixed.radius < *fixed.majorRadius));
}

}  // namespace

bool Monitor::GoesOn(void* context, long step, double objective, double length) {
  auto* const monitor = static_cast<Monitor*>(context);
  monitor->m_steps = monitor->m_counts ? monitor->m_steps + 1 : step;
  if (!std::isnan(length)) monitor->m_lastStep = length;
  if (monitor->m_function == nullptr) return true;
  try {
    return monitor->m_function(monitor->m_context, monitor->m_steps, objective, length) != NuFalse;
  } catch (...) {
    monitor->m_thrown = std::current_exception();
    return false;
  }
}

void Monitor::Rethrow() const {
  if (m_thrown) std::rethrow_exception(m_thrown);
}

void RequireConverged(FitEnd end, const char* name) {
  if (end == FitEnd::cancelled) throw FitCancelled();
  if (end == FitEnd::limitReached) FailFit(kIterationLimit, name);
  if (end != FitEnd::converged) FailFit(kNumericalFailure, name);
}

void RequireBend(const AssociationState& state, const Feature& found, const char* name) {
  const bool isRound = IsRound(found.kind) || found.kind == FeatureKind::circleInSpace;
  if (isRound && !state.options.fixed.radius) RequireBend(state.points, found.size[0], name);
  if (found.kind != FeatureKind::cone) return;
  const Vec3 apex = found.frame.origin - found.size[0] / nu::engine::base::Tan(found.size[1]) * found.frame.z;
  RequireBend(state.points, Norm(apex - MiddleOf(state.points)), name);
}

void RequireOptions(const AssociationState& state, const FeatureRules& rules, ENuCriterion criterion) {
  if (!Accepts(state, rules, criterion)) FailOperation(NuOperationUnsupported, "association", rules.name);
}

void RequireProof(const AssociationState& state, ENuCriterion criterion, long budget) {
  constexpr const char* where = "ProveGlobally";
  const bool hasBound = criterion == NuMinimumZone || criterion == NuMinimumCircumscribed;
  if (!hasBound || !IsPlain(state.options)) FailOperation(NuOperationUnsupported, "association", where);
  if (budget < 1) FailOperation(NuOperationDomain, "association", where);
}

GlobalBound BoundOf(const AssociationState& state, ENuCriterion criterion, const Feature& known,
                    const BoundLimits& limits) {
  const Vec3 origin = MiddleOf(state.points);
  Feature local = known;
  local.frame.origin = local.frame.origin - origin;
  const BoundedCriterion by = criterion == NuMinimumZone ? BoundedCriterion::zone : BoundedCriterion::circumscribed;
  GlobalBound found = BoundGlobally(state.points, origin, local, by, limits);
  if (!std::isfinite(found.best)) found.best = FormOf(state.points, known);
  found.feature.frame.origin = found.feature.frame.origin + origin;
  return found;
}

bool IsGlobalBySolver(FeatureKind kind, int details, ENuCriterion criterion) {
  if (details == NuDetailNone) return false;
  const bool isCircle = kind == FeatureKind::circle;
  switch (criterion) {
    case NuLeastSquares:
      return kind == FeatureKind::line || kind == FeatureKind::lineInPlane || kind == FeatureKind::plane;
    case NuMinimumZone:
      return kind == FeatureKind::lineInPlane || kind == FeatureKind::plane || isCircle;
    case NuMinimumCircumscribed:
      return isCircle || kind == FeatureKind::sphere;
    case NuMaximumInscribed:
      return isCircle;
  }
  return false;
}

}  // namespace nu::internal
