#include "nu/engine/minimax/cone_minimax.h"

#include <limits>

#include "nu/engine/minimax/round_minimax.h"

namespace nu::engine::minimax {
namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();

// The cone comes with the rounding errors of an apex and an angle: its deviations are so many of them off.
constexpr double kNoise = 64.0;

Cone3 Rescaled(Cone3 cone, double factor) {
  cone.axisPoint = factor * cone.axisPoint;
  cone.toApex *= factor;
  return cone;
}

// What was found, in the callers' unit.
template<class Model>
ConeZone Described(const MinimaxSolution<Model>& found, double unit, double rounding) {
  ConeZone zone;
  zone.linearised = true;
  zone.end = found.end;
  zone.steps = found.steps;
  zone.cone = Rescaled(found.model.Cone(), unit);
  zone.width = 2.0 * unit * found.value;
  zone.rounding = unit * rounding;
  zone.contacts = found.contacts;
  for (int k = 0; k < found.contacts; ++k) {
    zone.contact[k] = unit * found.contact[k];
    zone.sign[k] = found.sign[k];
    zone.multiplier[k] = found.multiplier[k];
  }
  return zone;
}

}  // namespace

ConeZone NarrowestConeZone(PointBlocks& points, const Vec3& mean, const Cone3& start, double form, long limit) {
  points.Keep();
  NearAndFar seen;
  if (!FindNearAndFar(points, mean, seen)) return {};
  const double scale = points.Scale();
  const double rounding = kDistanceRoundings * kEpsilon * seen.greatest;
  double low, high;
  const ConeDistance model =
      DistanceFromCone(points, Rescaled(start, scale), scale * form + kNoise * rounding, low, high);
  if (!model.IsFinite()) return {};
  const double middle = 0.5 * (low + high);
  if (model.bothNappes) {
    Minimax<NappesDistance> minimax(points, MinimaxSide::both, rounding, limit);
    return Described(minimax.Solve({model, middle}), 1.0 / scale, kNoise * rounding);
  }
  Minimax<ConeDistance> minimax(points, MinimaxSide::both, rounding, limit);
  return Described(minimax.Solve(model.Moved({middle})), 1.0 / scale, kNoise * rounding);
}

}  // namespace nu::engine::minimax
