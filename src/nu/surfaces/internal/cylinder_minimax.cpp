#include "nu/surfaces/internal/cylinder_minimax.h"

#include <limits>

#include "nu/geometry/internal/enclosing_cylinder.h"
#include "nu/geometry/internal/round_minimax.h"
#include "nu/surfaces/internal/axis_direction.h"
#include "nu/surfaces/internal/cylinder_distance.h"

namespace nu::internal {
namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();

// Points next to a plane make the radius of a zone creep towards infinity. Measured parts need up to some tens.
constexpr long kMostSteps = 1000;

// Of what the directions of the contacts, weighted, must cancel to; it is about the square root of the rounding of the
// axis in units of the radius where the points are far from round.
constexpr double kStationary = 1e-7;

// The problem in the unit of the blocks, whose distances can be squared.
struct Scene {
  Vec3 mean;
  Cylinder3 start;
  NearAndFar seen;  // from the mean
  double rounding = 0.0;
};

bool Prepare(PointBlocks& points, const Vec3& mean, const Cylinder3& start, Scene& scene) {
  points.Keep();
  if (!FindNearAndFar(points, mean, scene.seen)) return false;
  const double scale = points.Scale();
  scene.mean = scale * mean;
  scene.start = {scale * start.axisPoint, start.axisDirection, scale * start.radius};
  scene.rounding = kDistanceRoundings * kEpsilon * scene.seen.greatest;
  return true;
}

// An axis through this point, with the result in the callers' unit.
template<class Model>
CylinderMinimax Described(const MinimaxSolution<Model>& solution, const Vec3& axisPoint, const Vec3& direction,
                          const Vec3& mean, double scale) {
  CylinderMinimax result;
  const double unit = 1.0 / scale;
  const Vec3 nearest = axisPoint + Dot(mean - axisPoint, direction) * direction;
  result.end = solution.end;
  result.cylinder = {unit * nearest, WithLargestPositive(direction), unit * std::fabs(solution.value)};
  result.contacts = solution.contacts;
  for (int k = 0; k < solution.contacts; ++k) {
    result.contact[k] = unit * solution.contact[k];
    result.sign[k] = solution.sign[k];
    result.multiplier[k] = solution.multiplier[k];
  }
  return result;
}

// What a step away from the points leads to: no step is taken whose deviations are NaN.
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr Vec3 kNowhere{kNaN, kNaN, kNaN};

// The distances from an axis that does not leave the ball that holds all points.
struct BoreDistance : AxisDistance {
  Vec3 mean;
  double reach = 0.0;

  bool IsAmongPoints() const { return Norm(Rejection(mean - frame.origin, frame.z)) <= reach; }
  BoreDistance Moved(const double (&step)[kUnknowns]) const {
    BoreDistance moved{AxisDistance::Moved(step), mean, reach};
    if (!moved.IsAmongPoints()) moved.frame.origin = kNowhere;
    return moved;
  }
};

// The contacts hold the axis between them.
bool IsHeld(const MinimaxSolution<BoreDistance>& solution) {
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

}  // namespace

CylinderMinimax NarrowestCylinderZone(PointBlocks& points, const Vec3& mean, const Cylinder3& start, long limit) {
  Scene scene;
  if (!Prepare(points, mean, start, scene)) return {};
  const Cylinder3& c = scene.start;
  const Vec3 outwards = Rejection(scene.mean - c.axisPoint, c.axisDirection);
  const Vec3 towards = Norm(outwards) > kEpsilon * c.radius ? outwards : scene.seen.farthest - scene.mean;
  const CylinderDistance model = DistanceFromCylinder(points, c.axisPoint, c.axisDirection, c.radius, towards);
  Minimax<CylinderDistance> minimax(points, MinimaxSide::both, scene.rounding, std::min(limit, kMostSteps));
  const MinimaxSolution<CylinderDistance> found = minimax.Solve(model);
  CylinderMinimax result = Described(found, found.model.AxisPoint(), found.model.frame.z, scene.mean, points.Scale());
  result.cylinder.radius = found.model.radius / points.Scale();
  result.zone = 2.0 * found.value / points.Scale();
  return result;
}

CylinderMinimax SmallestCylinderAround(PointBlocks& points, const Vec3& mean, const Cylinder3& start, long limit) {
  Scene scene;
  if (!Prepare(points, mean, start, scene)) return {};
  // An axis far outside, as that of a narrow strip, is no start.
  const bool isNear =
      Norm(Rejection(scene.start.axisPoint - scene.mean, scene.start.axisDirection)) <= scene.seen.greatest;
  const Vec3& through = isNear ? scene.start.axisPoint : scene.mean;
  const MinimaxSolution<AxisDistance> found =
      SmallestCylinder(points, through, scene.start.axisDirection, std::min(limit, kMostSteps));
  return Described(found, found.model.frame.origin, found.model.frame.z, scene.mean, points.Scale());
}

CylinderMinimax LargestCylinderInside(PointBlocks& points, const Vec3& mean, const Cylinder3& start, long limit) {
  Scene scene;
  if (!Prepare(points, mean, start, scene)) return {};
  const Cylinder3& c = scene.start;
  const CylinderDistance seen =
      DistanceFromCylinder(points, c.axisPoint, c.axisDirection, c.radius, scene.seen.farthest - scene.mean);
  AxisFrame frame = seen.frame;
  frame.origin = seen.AxisPoint();
  const BoreDistance model{{frame, seen.half}, scene.mean, scene.seen.greatest};
  if (!model.IsAmongPoints()) return {};
  Minimax<BoreDistance> minimax(points, MinimaxSide::inner, scene.rounding, std::min(limit, kMostSteps));
  const MinimaxSolution<BoreDistance> found = minimax.Solve(model);
  CylinderMinimax result = Described(found, found.model.frame.origin, found.model.frame.z, scene.mean, points.Scale());
  if (found.end == MinimaxEnd::converged && !IsHeld(found)) result.end = MinimaxEnd::stalled;
  return result;
}

}  // namespace nu::internal
