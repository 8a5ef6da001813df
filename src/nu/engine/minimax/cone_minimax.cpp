#include "nu/engine/minimax/cone_minimax.h"

#include <type_traits>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/minimax/round_minimax.h"
#include "nu/engine/points/principal_direction.h"

namespace nu::engine::minimax {
namespace {

Cone3 Rescaled(Cone3 cone, double factor) {
  cone.axis.point = factor * cone.axis.point;
  cone.toApex *= factor;
  return cone;
}

const ConeDistance& ConeOf(const ConeDistance& model) {
  return model;
}
const ConeDistance& ConeOf(const NappesDistance& model) {
  return model.model;
}

// What was found, in the callers' unit.
template<class Model>
ConeZone Described(const MinimaxSolution<Model>& found, double unit, double rounding) {
  ConeZone zone;
  zone.linearised = true;
  zone.end = found.end;
  zone.steps = found.steps;
  zone.cone = Rescaled(ConeOf(found.model).Cone(), unit);
  zone.width = 2.0 * unit * found.value;
  zone.rounding = unit * (rounding + kEpsilon * ConeOf(found.model).radius);
  zone.TakeContacts(found, unit);
  return zone;
}

struct ConeProblem : ScaledProblem {
  PointBlocks& points;
  double form = 0.0;  // the range of the deviations to be bettered
};

// Seen from the middle of its zone.
template<class Model>
Model InMiddle(const ConeDistance& cone, double middle) {
  if constexpr (std::is_same_v<Model, NappesDistance>)
    return {cone, middle};
  else
    return cone.Moved({middle});
}

// The points are near enough to it for a bend, beside its radius of curvature, and for a taper, beside the distance
// from the apex.
bool IsCone(const ConeProblem& problem, const ConeDistance& cone) {
  const double least = kLeastBend * cone.radius;
  return problem.seen.greatest * cone.cosine > least && problem.seen.greatest * std::fabs(cone.sine) > least;
}

template<class Model>
bool IsOptimum(const ConeProblem& problem, const MinimaxSolution<Model>& found) {
  return found.end == MinimaxEnd::converged && IsCone(problem, ConeOf(found.model));
}

// The cone that touches a plane along a line: the apex is at the distance `toApex` before the point, and the radius of
// curvature there is `bend`.
Cone3 TouchingCone(const Vec3& point, const Vec3& normal, const Vec3& line, double toApex, double bend) {
  const double angle = Atan2(bend, toApex);
  return {{point - toApex * line, Cos(angle) * line - Sin(angle) * normal}, 0.0, angle};
}

// Points that are nearly flat may lead the search to a cone that is a plane, where it finds no optimum. Others lie next
// to cones that touch the plane through the points from either side, along several lines, and bend more or less: the
// best of the first kind of cones that brings any.
template<class Model>
void SearchElsewhere(const ConeProblem& problem, Minimax<Model>& minimax, MinimaxSolution<Model>& found) {
  constexpr bool bothNappes = std::is_same_v<Model, NappesDistance>;
  // The distance from the apex, in units of the reach, and the radius of curvature, 1 where the cone bulges by the
  // form.
  constexpr double kKinds[][2] = {{0.8, 12.0}, {0.8, 3.0}, {0.3, 3.0}, {1.6, 12.0}, {0.3, 12.0}, {0.8, 0.5}};
  const Vec3 normal = FindPrincipalDirection(problem.points, Extent::smallest).direction;
  const Vec3 longest = FindPrincipalDirection(problem.points, Extent::largest).direction;
  const AxisFrame plane = AxisFrame::Along(problem.mean, normal, longest);
  const double bend = 0.5 * problem.seen.greatest * problem.seen.greatest / problem.form;
  const long steps = found.steps;
  double value = 0.5 * problem.form;
  for (const auto& [toApex, radius] : kKinds) {
    for (const Vec3& line : {plane.x, plane.y, -1.0 * plane.x, -1.0 * plane.y}) {
      for (const double side : {1.0, -1.0}) {
        Cone3 cone = TouchingCone(problem.mean, side * normal, line, toApex * problem.seen.greatest, radius * bend);
        cone.bothNappes = bothNappes;
        ValueRange deviations;
        const ConeDistance model = DistanceFromCone(problem.points, cone, deviations);
        if (!model.IsFinite() || model.bothNappes != bothNappes) continue;
        const MinimaxSolution<Model> other =
            minimax.Improve(InMiddle<Model>(model, deviations.Middle()), value, kMostTrialSteps);
        if (other.end == MinimaxEnd::cancelled) {
          found.end = other.end;
          return;
        }
        if (!IsOptimum(problem, other)) continue;
        found = other;
        found.steps = steps;
        value = other.value - problem.rounding;
      }
    }
    if (found.end == MinimaxEnd::converged) return;
  }
}

template<class Model>
ConeZone Search(const ConeProblem& problem, const Model& start, long limit, const StepMonitor& monitor) {
  Minimax<Model> minimax(problem.points, MinimaxSide::both, problem.rounding, std::min(limit, kMostZoneSteps), monitor);
  MinimaxSolution<Model> found = minimax.Solve(start);
  if (!IsOptimum(problem, found) && found.end != MinimaxEnd::cancelled && found.steps < limit) {
    found.end = MinimaxEnd::stalled;
    SearchElsewhere(problem, minimax, found);
  }
  return Described(found, 1.0 / problem.scale, problem.rounding);
}

}  // namespace

ConeZone NarrowestConeZone(PointBlocks& points, const Vec3& mean, const Cone3& start, double form, long limit,
                           const StepMonitor& monitor) {
  const ScaledProblem scaled = Prepared(points, mean);
  if (!scaled.isFinite) return {};
  const ConeProblem problem{scaled, points, scaled.scale * form};
  ValueRange deviations;
  const ConeDistance model = DistanceFromCone(points, Rescaled(start, problem.scale), deviations);
  if (!model.IsFinite()) return {};
  const double middle = deviations.Middle();
  if (model.bothNappes) return Search(problem, InMiddle<NappesDistance>(model, middle), limit, monitor);
  return Search(problem, InMiddle<ConeDistance>(model, middle), limit, monitor);
}

}  // namespace nu::engine::minimax
