#include "nu/engine/minimax/round_minimax.h"

#include "nu/engine/points/point_lanes.h"

namespace nu::engine::minimax {
namespace {

// Squares outside have overflowed or vanished, or are about to in products.
constexpr double kSafeSmall = 1e-70;
constexpr double kSafeLarge = 1e70;

struct LaneExtremes {
  double farSquare, nearSquare;
  std::size_t farIndex, nearIndex;
  double nonFinite;  // 0 or, when a square is not finite, NaN
};

NU_KERNEL void FindExtremes(const PointBlock& block, const Vec3& centre, LaneExtremes& found) {
  const Vec3 c = centre;
  Lanes far = -1.0 - Lanes{};
  Lanes near = kInfinity - Lanes{};
  Lanes farPlace = {};
  Lanes nearPlace = {};
  Lanes lost = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes x, y, z;
    LoadPoints(block, i, x, y, z);
    x -= c.x;
    y -= c.y;
    z -= c.z;
    const Lanes s = x * x + y * y + z * z;
    const Lanes place = static_cast<double>(i) - Lanes{};
    farPlace = s > far ? place : farPlace;
    far = s > far ? s : far;
    nearPlace = s < near ? place : nearPlace;
    near = s < near ? s : near;
    lost += s - s;  // NOLINT(misc-redundant-expression): NaN where s is not finite
  }
  found = {Largest(far), Smallest(near), block.size - 1, block.size - 1, Sum(lost)};
  // Lanes beyond the last point are copies of it.
  for (int l = 0; l < kLanes; ++l) {
    if (far[l] == found.farSquare) found.farIndex = std::min(found.farIndex, static_cast<std::size_t>(farPlace[l]) + l);
    if (near[l] == found.nearSquare)
      found.nearIndex = std::min(found.nearIndex, static_cast<std::size_t>(nearPlace[l]) + l);
  }
}

}  // namespace

NearAndFar NearAndFarFrom(PointBlocks& points, const Vec3& centre) {
  double far = -1.0;
  double near = kInfinity;
  double nonFinite = 0.0;
  NearAndFar result;
  points.ForEach([&](const PointBlock& block) {
    LaneExtremes found;
    FindExtremes(block, centre, found);
    nonFinite += found.nonFinite;
    if (found.farSquare > far) {
      far = found.farSquare;
      result.farthest = block.At(found.farIndex);
    }
    if (found.nearSquare < near) {
      near = found.nearSquare;
      result.nearest = block.At(found.nearIndex);
    }
  });
  result.least = std::sqrt(near);
  result.greatest = std::sqrt(far) + nonFinite;
  return result;
}

ScaledProblem Prepared(PointBlocks& points, const Vec3& mean) {
  points.Keep();
  ScaledProblem problem;
  const auto see = [&] { problem.seen = NearAndFarFrom(points, points.Scale() * mean); };
  see();
  const double square = problem.seen.greatest * problem.seen.greatest;
  if (!(square >= kSafeSmall && square <= kSafeLarge)) {
    if (!points.FitScale()) return problem;
    see();
  }
  problem.isFinite = std::isfinite(problem.seen.greatest);
  problem.scale = points.Scale();
  problem.mean = problem.scale * mean;
  problem.rounding = kDistanceRoundings * kEpsilon * problem.seen.greatest;
  return problem;
}

AxisFrame FrameAlong(const Vec3& origin, const Vec3& direction, const Vec3& across) {
  constexpr double leastSine = 1e-3;  // between them, for x to keep its digits
  const Vec3 z = Unit(direction);
  const bool apart = Norm(Cross(z, Unit(across))) > leastSine;
  return apart ? AxisFrame::Along(origin, z, across) : AxisFrame::Along(origin, z);
}

int DirectionCell(const Vec3& v) {
  const double x = std::fabs(v.x);
  const double y = std::fabs(v.y);
  const double z = std::fabs(v.z);
  const auto cell = [](int face, double a, double b, double c) {
    return 8 * face + (a < 0.0 ? 1 : 0) + (b < 0.0 ? 2 : 0) + (c < 0.0 ? 4 : 0);
  };
  if (x >= y && x >= z) return cell(0, v.x, v.y, v.z);
  return y >= z ? cell(1, v.y, v.z, v.x) : cell(2, v.z, v.x, v.y);
}

}  // namespace nu::engine::minimax
