#include "nu/engine/association/axis_bound.h"

#include <algorithm>
#include <cmath>

#include "nu/engine/association/bounded_points.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/minimax/axis_search.h"
#include "nu/engine/minimax/distance_kernels.h"

namespace nu::engine::association {
namespace {

// Of a distance from an axis, and of a bound on its square, in units of the farthest point and its square.
constexpr double kDistanceRoundings = 4.0;
constexpr double kSquareRoundings = 32.0;

// Around thin points that rounding is a part of the gap; of what is left, so much of the gap asked for is searched.
constexpr double kWhole = 1.75;
constexpr double kLeastPart = 0.125;

constexpr long kMostSteps = 1000;

// Boxes between two calls of the monitor.
constexpr long kPortion = 1000;

double RadiusAbout(PointBlocks& points, const AxisDistance& axis) {
  return RangeOfDeviations(points, axis).largest;
}

// The local optimum next to an axis; the axis itself where none is found that is better.
MinimaxSolution<AxisDistance> Better(PointBlocks& points, MinimaxSolution<AxisDistance> optimum,
                                     const AxisDistance& start) {
  const double radius = RadiusAbout(points, start);
  if (optimum.end == MinimaxEnd::converged && optimum.value <= radius) return optimum;
  MinimaxSolution<AxisDistance> itself;
  itself.model = start;
  itself.value = radius;
  return itself;
}

}  // namespace

AxisBound BoundAxes(PointBlocks& points, const AxisFrame& start, double reach, double gap, long boxes,
                    AxisMonitor goesOn) {
  const AxisDistance first{start, reach};
  const double rounding = kDistanceRoundings * kEpsilon * reach;
  Minimax<AxisDistance> minimax(points, MinimaxSide::outer, rounding, kMostSteps);
  MinimaxSolution<AxisDistance> best = Better(points, minimax.Solve(first), first);
  const long ofPass = 1 + static_cast<long>(points.Size() / BoundedPoints::kMostInSet);
  const double loss = 0.5 * kSquareRoundings * kEpsilon * reach * reach / best.value;
  const double searched = std::clamp(kWhole * gap - loss, kLeastPart * gap, gap);
  AxisSearch search(points, best.model.frame, minimax.KnownPoints(), {2.0 * searched / best.value, 0, 0});
  const auto used = [&] { return search.Circles() + ofPass * search.Passes(); };
  const auto bound = [&] {
    const double square = search.Bound(KnownCylinder(best)) - kSquareRoundings * kEpsilon * reach * reach;
    return std::sqrt(std::max(0.0, square));
  };
  bool isDone = false;
  for (long allowed = 0; !isDone && allowed < boxes;) {
    allowed = std::min(boxes, allowed + kPortion);
    search.Allow(allowed, 1 + allowed / ofPass);
    AxisDistance found;
    while (search.FindSmaller(KnownCylinder(best), found))
      best = Better(points, minimax.Improve(found, best.value - rounding), found);
    isDone = !search.IsExhausted() || !goesOn(1 + used(), best.value, bound());
  }
  return {best.model.frame, best.value, bound(), used()};
}

}  // namespace nu::engine::association
