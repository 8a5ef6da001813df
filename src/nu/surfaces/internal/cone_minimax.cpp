#include "nu/surfaces/internal/cone_minimax.h"

#include <limits>

#include "nu/geometry/internal/round_minimax.h"

namespace nu::internal {
namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();

// Points that are nothing like a cone may let it creep towards a plane or a cylinder. Measured parts need up to some
// tens.
constexpr long kMostSteps = 1000;

Cone3 Rescaled(Cone3 cone, double factor) {
  cone.axisPoint = factor * cone.axisPoint;
  cone.toApex *= factor;
  return cone;
}

}  // namespace

ConeZone NarrowestConeZone(PointBlocks& points, const Vec3& mean, const Cone3& start, long limit) {
  points.Keep();
  ConeZone zone;
  NearAndFar seen;
  if (!FindNearAndFar(points, mean, seen)) return zone;
  const double scale = points.Scale();
  const ConeDistance model = DistanceFromCone(points, Rescaled(start, scale));
  zone.linearised = model.IsFinite();
  if (!zone.linearised) return zone;
  const double rounding = kDistanceRoundings * kEpsilon * seen.greatest;
  Minimax<ConeDistance> minimax(points, MinimaxSide::both, rounding, std::min(limit, kMostSteps));
  const MinimaxSolution<ConeDistance> found = minimax.Solve(model);
  const double unit = 1.0 / scale;
  zone.end = found.end;
  zone.steps = found.steps;
  zone.cone = Rescaled(found.model.Cone(), unit);
  zone.width = 2.0 * unit * found.value;
  zone.contacts = found.contacts;
  for (int k = 0; k < found.contacts; ++k) {
    zone.contact[k] = unit * found.contact[k];
    zone.sign[k] = found.sign[k];
    zone.multiplier[k] = found.multiplier[k];
  }
  return zone;
}

}  // namespace nu::internal
