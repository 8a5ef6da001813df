#include "nu/engine/minimax/enclosing_cylinder.h"

#include "nu/engine/base/floating_point.h"
#include "nu/engine/minimax/axis_search.h"
#include "nu/engine/minimax/distance_kernels.h"
#include "nu/engine/points/principal_direction.h"

namespace nu::engine::minimax {
namespace {

// The errors of the two products with the frame, in units of the farthest point's.
constexpr double kRoundings = 4.0;

// Points so much longer than wide have hardly a second optimum: none was found in 2000 trials.
constexpr double kSlim = 0.1;

struct Reach {
  ValueRange along;     // the axis
  double square = 0.0;  // the largest squared distance from the origin of the frame
  double across = 0.0;  // and from the axis
};

NU_KERNEL void FindReach(const PointBlock& block, const AxisFrame& given, Reach& found) {
  const AxisFrame frame = given;
  LaneExtremes along, across, square;
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes u, v, w;
    LoadLocal(block, i, frame, u, v, w);
    along.Add(w);
    across.Add(u * u + v * v);
    square.Add(u * u + v * v + w * w);
  }
  found = {{along.Smallest(), along.Largest()}, square.Largest(), across.Largest()};
}

Reach ReachOf(PointBlocks& points, const AxisFrame& frame) {
  Reach reach;
  points.ForEach([&](const PointBlock& block) {
    Reach part;
    FindReach(block, frame, part);
    reach.along.Include(part.along);
    reach.square = std::max(reach.square, part.square);
    reach.across = std::max(reach.across, part.across);
  });
  return reach;
}

// Frames turn with the points, so that the optimum found does. Of two principal directions one is across.
Vec3 PrincipalAcross(PointBlocks& points, const Vec3& direction) {
  constexpr double mostCosine = 0.8;
  const Vec3 smallest = FindPrincipalDirection(points, Extent::smallest).direction;
  if (std::fabs(Dot(smallest, direction)) < mostCosine) return smallest;
  return FindPrincipalDirection(points, Extent::largest).direction;
}

}  // namespace

MinimaxSolution<AxisDistance> SmallestCylinder(PointBlocks& points, const Vec3& mean, const Vec3& direction, long limit,
                                               const StepMonitor& monitor) {
  const Reach reach = ReachOf(points, AxisFrame::Along(mean, direction));
  const double half = 0.5 * reach.along.Width();
  const Vec3 middle = mean + reach.along.Middle() * direction;
  const double rounding = kRoundings * kEpsilon * std::sqrt(reach.square);
  Minimax<AxisDistance> minimax(points, MinimaxSide::outer, rounding, limit, monitor);
  if (!(reach.across > kSlim * kSlim * half * half)) return minimax.Solve({AxisFrame::Along(middle, direction), half});

  const AxisFrame frame = AxisFrame::Along(middle, direction, PrincipalAcross(points, direction));
  MinimaxSolution<AxisDistance> best = minimax.Solve({frame, half});
  if (best.end == MinimaxEnd::limitReached || best.end == MinimaxEnd::cancelled) return best;
  if (AxisSearch::IsProven(KnownCylinder(best))) return best;
  AxisSearch search(points, best.model.frame, minimax.KnownPoints());
  AxisDistance start;
  while (search.FindSmaller(KnownCylinder(best), start)) {
    const MinimaxSolution<AxisDistance> other = minimax.Improve(start, best.value - rounding);
    if (other.end == MinimaxEnd::cancelled) return other;
    if (other.end == MinimaxEnd::converged) best = other;
  }
  return best;
}

}  // namespace nu::engine::minimax
