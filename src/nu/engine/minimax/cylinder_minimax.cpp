#include "nu/engine/minimax/cylinder_minimax.h"

#include "nu/engine/base/floating_point.h"
#include "nu/engine/minimax/distance_kernels.h"
#include "nu/engine/minimax/enclosing_cylinder.h"
#include "nu/engine/minimax/round_minimax.h"
#include "nu/engine/shapes/axis_direction.h"

namespace nu::engine::minimax {
namespace {

// Of what the directions of the contacts, weighted, must cancel to; it is about the square root of the rounding of the
// axis in units of the radius where the points are far from round.
constexpr double kStationary = 1e-7;

Cylinder3 Rescaled(const Cylinder3& c, double factor) {
  return {{factor * c.axis.point, c.axis.direction}, factor * c.radius};
}

// Seen from among the points.
CylinderDistance SurfaceOf(PointBlocks& points, const ScaledProblem& problem, const Cylinder3& start) {
  const Cylinder3 c = Rescaled(start, problem.scale);
  const Vec3 outwards = Rejection(problem.mean - c.axis.point, c.axis.direction);
  const Vec3 towards = Norm(outwards) > kEpsilon * c.radius ? outwards : problem.seen.farthest - problem.mean;
  return DistanceFromCylinder(points, c, towards);
}

// An axis through this point, with the result in the callers' unit.
template<class Model>
CylinderMinimax Described(const MinimaxSolution<Model>& solution, const Vec3& axisPoint, const Vec3& direction,
                          const ScaledProblem& problem) {
  CylinderMinimax result;
  const double unit = 1.0 / problem.scale;
  const Vec3 nearest = axisPoint + Dot(problem.mean - axisPoint, direction) * direction;
  result.end = solution.end;
  result.cylinder = {{unit * nearest, WithLargestPositive(direction)}, unit * std::fabs(solution.value)};
  result.TakeContacts(solution, unit);
  return result;
}

// The distances from an axis that does not leave a ball.
struct BoreDistance : AxisDistance {
  Vec3 centre;
  double reach = 0.0;

  bool IsInside() const { return Norm(Rejection(centre - frame.origin, frame.z)) <= reach; }
  BoreDistance Moved(const double (&step)[kUnknowns]) const {
    BoreDistance moved{AxisDistance::Moved(step), centre, reach};
    if (!moved.IsInside()) moved.frame.origin = kNowhere;
    return moved;
  }
};

// The contacts hold the axis between them.
bool IsBore(const MinimaxSolution<BoreDistance>& solution) {
  if (solution.end != MinimaxEnd::converged) return false;
  double sum[4] = {};
  for (int k = 0; k < solution.contacts; ++k) {
    const Vec3 q = solution.model.frame.Local(solution.contact[k]);
    const double weight = solution.multiplier[k] / std::sqrt(q.x * q.x + q.y * q.y);
    const double w = q.z / solution.model.half;
    sum[0] += weight * q.x;
    sum[1] += weight * q.y;
    sum[2] += weight * q.x * w;
    sum[3] += weight * q.y * w;
  }
  return std::all_of(sum, sum + 4, [](double s) { return std::fabs(s) <= kStationary; });
}

// By the limit or by the monitor, before there was an optimum.
bool IsCutShort(const MinimaxSolution<BoreDistance>& found) {
  return found.end == MinimaxEnd::limitReached || found.end == MinimaxEnd::cancelled;
}

bool IsRound(const ScaledProblem& problem, const CylinderDistance& surface) {
  return problem.seen.greatest > kLeastBend * surface.Radius();
}

// Half-way between the two cylinders about its axis that hold all points.
CylinderDistance MiddleOfZone(PointBlocks& points, CylinderDistance surface) {
  surface.rise += RangeOfDeviations(points, surface).Middle();
  return surface;
}

// Flat points may lead the search to a cylinder that is a plane, where it finds no optimum. Others lie next to the
// cylinders that bend to the other side, across, or less: the best of them that is below the start, if there is one.
MinimaxSolution<CylinderDistance> ZoneElsewhere(PointBlocks& points, const ScaledProblem& problem,
                                                const Cylinder3& start, double value,
                                                Minimax<CylinderDistance>& minimax,
                                                const MinimaxSolution<CylinderDistance>& failed) {
  constexpr double radii[] = {1.0, 4.0, 16.0};
  const CylinderDistance surface = SurfaceOf(points, problem, start);
  const Vec3& out = surface.u;
  MinimaxSolution<CylinderDistance> best = failed;
  for (const Vec3& direction : {surface.w, surface.v}) {
    for (const double side : {1.0, -1.0}) {
      for (const double radius : radii) {
        const double r = radius * surface.Radius();
        const Vec3 axisPoint = surface.pivot - (side * r) * out;
        const MinimaxSolution<CylinderDistance> other =
            minimax.Improve(DistanceFromCylinder(points, {{axisPoint, direction}, r}, side * out), value);
        if (other.end == MinimaxEnd::cancelled) return other;
        if (other.end != MinimaxEnd::converged || !IsRound(problem, other.model)) continue;
        best = other;
        value = other.value - problem.rounding;
      }
    }
  }
  return best;
}

}  // namespace

CylinderMinimax NarrowestCylinderZone(PointBlocks& points, const Vec3& mean, const Cylinder3& start, long limit,
                                      const StepMonitor& monitor) {
  const ScaledProblem problem = Prepared(points, mean);
  if (!problem.isFinite) return {};
  const CylinderDistance model = MiddleOfZone(points, SurfaceOf(points, problem, start));
  Minimax<CylinderDistance> minimax(points, MinimaxSide::both, problem.rounding, std::min(limit, kMostZoneSteps),
                                    monitor);
  MinimaxSolution<CylinderDistance> found = minimax.Solve(model);
  const bool isOptimum = found.end == MinimaxEnd::converged && IsRound(problem, found.model);
  if (!isOptimum && found.end != MinimaxEnd::cancelled && found.steps < limit) {
    found.end = MinimaxEnd::stalled;
    const double form = RangeOfDeviations(points, model).Width();
    found = ZoneElsewhere(points, problem, start, 0.5 * form, minimax, found);
  }
  CylinderMinimax result = Described(found, found.model.AxisPoint(), found.model.w, problem);
  result.cylinder.radius = found.model.Radius() / problem.scale;
  result.zone = 2.0 * found.value / problem.scale;
  result.rounding = (problem.rounding + kEpsilon * found.model.Radius()) / problem.scale;
  return result;
}

CylinderMinimax SmallestCylinderAround(PointBlocks& points, const Vec3& mean, const Cylinder3& start, long limit,
                                       const StepMonitor& monitor) {
  const ScaledProblem problem = Prepared(points, mean);
  if (!problem.isFinite) return {};
  // An axis far outside, as that of a narrow strip, is no start.
  const Line3 axis = Rescaled(start, problem.scale).axis;
  const bool isNear = Norm(Rejection(axis.point - problem.mean, axis.direction)) <= problem.seen.greatest;
  const Vec3& through = isNear ? axis.point : problem.mean;
  const MinimaxSolution<AxisDistance> found = SmallestCylinder(points, through, axis.direction, limit, monitor);
  return Described(found, found.model.frame.origin, found.model.frame.z, problem);
}

// Within the ball that holds all points. Where that leads out of the bore, as it may if hardly more than half of the
// circumference is there, again with less and less room around the axis.
CylinderMinimax LargestCylinderInside(PointBlocks& points, const Vec3& mean, const Cylinder3& start, long limit,
                                      const StepMonitor& monitor) {
  constexpr double mostRoom = 64.0;  // in units of the form
  constexpr double oneSided = 0.9;   // the points are within about 84 degrees of one direction
  const ScaledProblem problem = Prepared(points, mean);
  if (!problem.isFinite) return {};
  const CylinderDistance surface = SurfaceOf(points, problem, start);
  const AxisDistance axis{{surface.AxisPoint(), surface.u, surface.v, surface.w}, surface.half};
  const BoreDistance widest{axis, problem.mean, problem.seen.greatest};
  if (!widest.IsInside()) return {};
  Minimax<BoreDistance> minimax(points, MinimaxSide::inner, problem.rounding, limit, monitor);
  MinimaxSolution<BoreDistance> found = minimax.Solve(widest);
  const bool again = !IsCutShort(found) && !IsBore(found) && surface.Bulge() > oneSided;
  const ValueRange form = again ? RangeOfDeviations(points, surface) : ValueRange{};
  for (double room = mostRoom; again && room >= 1.0 && !IsCutShort(found) && !IsBore(found); room *= 0.5) {
    const BoreDistance narrower{axis, axis.frame.origin, room * form.Width()};
    found = minimax.Improve(narrower, -(surface.Radius() + form.smallest));
  }
  if (!IsCutShort(found) && !IsBore(found)) found.end = MinimaxEnd::stalled;
  return Described(found, found.model.frame.origin, found.model.frame.z, problem);
}

}  // namespace nu::engine::minimax
