#include "nu/engine/association/direct_bound.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/minimax/annulus2.h"
#include "nu/engine/minimax/enclosing_ball.h"
#include "nu/engine/minimax/slab3.h"
#include "nu/engine/minimax/strip2.h"

namespace nu::engine::association {
namespace {

// Exchanges of the annulus; without them it is found by its search among all candidates.
constexpr long kMostExchanges = 1000;

struct Solved {
  bool found = false;
  double value = 0.0;
  Feature feature;
};

Solved SolvePlane(const PointView& points, const Vec3& origin) {
  const Slab3 slab = NarrowestSlab(points, origin);
  return {slab.found, slab.width, {FeatureKind::plane, AxisFrame::Along(slab.height * slab.normal, slab.normal), {}}};
}

// In the plane of the feature's frame.
Solved SolveLineInPlane(const PointView& points, const Vec3& origin, const AxisFrame& frame) {
  std::vector<Vec3> local;
  local.reserve(points.Size());
  for (std::size_t i = 0; i < points.Size(); ++i) local.push_back(frame.Local(LoadVec3(points[i]) - origin));
  const Strip2 strip = NarrowestStrip(PointView(&local[0].x, sizeof(Vec3), local.size()));
  const Vec3 normal = strip.normal[0] * frame.x + strip.normal[1] * frame.y;
  const Vec3 through = frame.origin + strip.middle[0] * frame.x + strip.middle[1] * frame.y;
  return {
      strip.apex >= 0, strip.width, {FeatureKind::lineInPlane, {through, Cross(normal, frame.z), normal, frame.z}, {}}};
}

Feature CircleAt(const AxisFrame& frame, const Vec3& centre, double radius) {
  AxisFrame placed = frame;
  placed.origin = centre.x * frame.x + centre.y * frame.y + Dot(frame.origin, frame.z) * frame.z;
  return {FeatureKind::circle, placed, {radius, 0.0}};
}

Solved SolveAnnulus(PointBlocks& points, const AxisFrame& frame) {
  const Vec2 start{Dot(frame.origin, frame.x), Dot(frame.origin, frame.y)};
  const Annulus ring = NarrowestAnnulus(points, {frame.x, frame.y}, start, kMostExchanges);
  const Vec3 centre{ring.centre.x, ring.centre.y, 0.0};
  return {ring.end == AnnulusEnd::found, ring.outer - ring.inner,
          CircleAt(frame, centre, 0.5 * (ring.outer + ring.inner))};
}

Solved SolveEnclosingCircle(PointBlocks& points, const AxisFrame& frame) {
  const EnclosingBall ball = SmallestEnclosingBall<2>(points, {frame.x, frame.y});
  return {ball.found, ball.radius, CircleAt(frame, ball.centre, ball.radius)};
}

Solved SolveEnclosingSphere(PointBlocks& points) {
  const EnclosingBall ball = SmallestEnclosingBall<3>(points, {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}});
  return {ball.found,
          ball.radius,
          {FeatureKind::sphere, AxisFrame::Along(ball.centre, {0.0, 0.0, 1.0}), {ball.radius, 0.0}}};
}

Solved Solve(const PointView& points, const Vec3& origin, const Feature& known, BoundedCriterion criterion) {
  const bool isZone = criterion == BoundedCriterion::zone;
  PointBlocks blocks(points, origin);
  if (!blocks.AllFinite()) return {};
  switch (known.kind) {
    case FeatureKind::plane:
      return isZone ? SolvePlane(points, origin) : Solved{};
    case FeatureKind::lineInPlane:
      return isZone ? SolveLineInPlane(points, origin, known.frame) : Solved{};
    case FeatureKind::circle:
      return isZone ? SolveAnnulus(blocks, known.frame) : SolveEnclosingCircle(blocks, known.frame);
    case FeatureKind::sphere:
      return isZone ? Solved{} : SolveEnclosingSphere(blocks);
    default:
      return {};
  }
}

// The criterion of a feature, and how far the points are from its origin.
struct Measured {
  double value = 0.0;
  double reach = 0.0;
};

Measured Measure(const PointView& points, const Vec3& origin, const Feature& feature, BoundedCriterion criterion) {
  double low = kInfinity;
  double high = -low;
  Measured measured;
  for (std::size_t i = 0; i < points.Size(); ++i) {
    const Vec3 p = LoadVec3(points[i]) - origin;
    const double d = DeviationOf(feature, p);
    low = std::min(low, d);
    high = std::max(high, d);
    const Vec3 q = Rescaled(p - feature.frame.origin);
    measured.reach = std::max(measured.reach, std::sqrt(Dot(q, q)));
  }
  measured.value = criterion == BoundedCriterion::zone ? high - low : high + feature.size[0];
  return measured;
}

}  // namespace

GlobalBound BoundDirectly(const PointView& points, const Vec3& origin, const Feature& known, BoundedCriterion criterion,
                          double gap) {
  GlobalBound result;
  result.feature = known;
  result.best = kInfinity;
  const Solved solved = Solve(points, origin, known, criterion);
  if (!solved.found) return result;
  const Measured measured = Measure(points, origin, known, criterion);
  result.improved = !(measured.value <= solved.value + gap * measured.reach);
  if (result.improved) result.feature = solved.feature;
  result.best = result.bound = solved.value;
  result.proven = true;
  return result;
}

}  // namespace nu::engine::association
