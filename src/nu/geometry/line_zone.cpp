#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>
#include <vector>

#include "nu/engine/minimax/enclosing_cylinder.h"
#include "nu/engine/minimax/strip2.h"
#include "nu/engine/points/alignment.h"
#include "nu/engine/points/form_statistics.h"
#include "nu/engine/points/principal_direction.h"
#include "nu/geometry/internal/fit_guards.h"
#include "nu/geometry/internal/point_order.h"
#include "nu/geometry/line.h"

// Minimum-zone line: of all lines the one with the least largest distance to a point. For points in one plane it is the
// middle line of the narrowest strip, which lies along an edge of their convex hull. In space it is the axis of the
// smallest circular cylinder that holds the points: a minimax problem of four parameters, solved next to the
// least-squares line and wherever else a search over all directions finds less.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuLine";
constexpr int kLeastPoints = 2;

struct Zone {
  Vec3 point;  // of the middle line, nearest to the mean of the points
  Vec3 direction;
  double width = 0.0;
  Vec3 side;  // unit length, from the middle line to the first boundary
};

void RequireTwoDistinct(const CNuPointArray& points, double tol) {
  if (CNuGeometry::NumberDistinctPoints(points, 2, tol) == 0) {
    FailFit(kDegeneratePoints, kName, kLeastPoints);
  }
}

CNuVector Canonical(const Vec3& direction) {
  CNuVector v = ToVector(direction);
  v.SymmetricAxis(NuGetTol(), 1);
  return v;
}

// The plane z = const needs no frame: the strip is that of the coordinates as they are.
Zone ZoneInPlaneZ(const CNuPointArray& points, const Vec3& mean) {
  const Strip2 strip = NarrowestStrip(ViewOf(points));
  const Vec3 normal{strip.normal[0], strip.normal[1], 0.0};
  const Vec3 middle{strip.middle[0], strip.middle[1], mean.z};
  return {mean + Dot(middle - mean, normal) * normal, {normal.y, -normal.x, 0.0}, strip.width, normal};
}

// The axes of the frame are the principal ones of the points, in canonical sign, so it does not depend on their order.
// Its plane is their least-squares plane, which fits no worse than one through three of them and leans less.
Zone ZoneInPlane(const CNuPointArray& points) {
  PointBlocks blocks(ViewOf(points), MiddleOf(points));
  const PrincipalDirection flat = FindPrincipalDirection(blocks, Extent::smallest);
  const Vec3 along = FindPrincipalDirection(blocks, Extent::largest).direction;
  const Vec3 z = Components(Canonical(flat.direction));
  const Vec3 x = Components(Canonical(Unit(Rejection(along, z))));
  const Vec3 y = Cross(z, x);
  std::vector<std::array<double, 2>> local;
  local.reserve(blocks.Size());
  blocks.ForEach([&](const PointBlock& block) {
    for (std::size_t i = 0; i < block.size; ++i) {
      const Vec3 q = Vec3{block.x[i], block.y[i], block.z[i]} - flat.mean;
      local.push_back({Dot(q, x), Dot(q, y)});
    }
  });
  const PointView view(local.front().data(), sizeof(local.front()), local.size());
  const Strip2 strip = NarrowestStrip(view);
  const Vec3 normal = strip.normal[0] * x + strip.normal[1] * y;
  const double offset = strip.middle[0] * strip.normal[0] + strip.middle[1] * strip.normal[1];
  return {blocks.InCallersFrame(flat.mean + offset * normal), Unit(strip.normal[1] * x - strip.normal[0] * y),
          strip.width / blocks.Scale(), Unit(normal)};
}

// Towards the contact point that is least by its coordinates.
Vec3 SideOf(const MinimaxSolution<AxisDistance>& found) {
  const AxisFrame& frame = found.model.frame;
  const Vec3* end = found.contact + found.contacts;
  const Vec3* contact = std::min_element(found.contact, end, [](const Vec3& p, const Vec3& q) {
    return std::tie(p.x, p.y, p.z) < std::tie(q.x, q.y, q.z);
  });
  if (contact == end) return frame.x;
  const Vec3 local = frame.Local(*contact);
  const double distance = std::sqrt(local.x * local.x + local.y * local.y);
  if (!(distance > 0.0)) return frame.x;
  return (local.x / distance) * frame.x + (local.y / distance) * frame.y;
}

Zone ZoneInSpace(const CNuPointArray& points, long limit) {
  PointBlocks blocks(ViewOf(points), MiddleOf(points));
  blocks.Keep();
  const PrincipalDirection least = FindPrincipalDirection(blocks, Extent::largest);
  const MinimaxSolution<AxisDistance> found = SmallestCylinder(blocks, least.mean, least.direction, limit);
  if (found.end == MinimaxEnd::limitReached) FailFit(kIterationLimit, kName);
  if (found.end != MinimaxEnd::converged) FailFit(kNumericalFailure, kName);
  const AxisFrame& axis = found.model.frame;
  const Vec3 nearest = axis.origin + Dot(least.mean - axis.origin, axis.z) * axis.z;
  const double radius = SpaceLineDeviations(blocks, nearest, axis.z).largest;
  const double leastRadius = SpaceLineDeviations(blocks, least.mean, least.direction).largest;
  // Where the least-squares line is the optimum, rounding decides which is better.
  const bool better = radius < leastRadius;
  return {blocks.InCallersFrame(better ? nearest : least.mean), better ? axis.z : least.direction,
          2.0 * (better ? radius : leastRadius), SideOf(found)};
}

Zone ZoneOf(const CNuPointArray& points, long limit) {
  if (points.Is2D() == NuTrue) return ZoneInPlaneZ(points, Components(points.MeanPoint()));
  if (LieInOnePlane(ViewOf(points), NuGetLengthTol())) return ZoneInPlane(points);
  return ZoneInSpace(points, limit);
}

Zone ZoneInAnyOrder(const CNuPointArray& points, long limit) {
  if (!NeedsCanonicalOrder(points)) return ZoneOf(points, limit);
  return ZoneOf(Ordered(points), limit);
}

void RequireFinite(const Zone& zone) {
  if (!IsFinite(zone.point) || !IsFinite(zone.direction) || !std::isfinite(zone.width)) {
    FailFit(kNumericalFailure, kName);
  }
}

}  // namespace

void CNuLine::FitMinZone(const CNuPointArray& points, double* zone, double tol, long maxIter) {
  FitMinZone(points, zone, nullptr, nullptr, tol, maxIter);
}

void CNuLine::FitMinZone(const CNuPointArray& points, double* zone, CNuLine* l1, CNuLine* l2, double tol,
                         long maxIter) {
  RequireIterations(maxIter, kName);
  TranslateForeign(kName, [&] {
    RequireCount(points, kLeastPoints, kName);
    RequireFinite(points, kName);
    RequireTwoDistinct(points, tol);
    CNuLine line;
    line.Fit(points);
    Zone found;
    if (!LieOnOneLine(ViewOf(points), tol)) {
      found = ZoneInAnyOrder(points, maxIter);
      RequireFinite(found);
      line = CNuLine(ToPoint(found.point), Canonical(found.direction));
    }
    CNuLine first(line);
    CNuLine second(line);
    const Vec3 shift = (0.5 * found.width) * found.side;
    first.Translate(shift.x, shift.y, shift.z);
    second.Translate(-shift.x, -shift.y, -shift.z);
    *this = line;
    Output(zone, found.width);
    Output(l1, first);
    Output(l2, second);
  });
}

ENuFitResult CNuLine::FitMinZoneEx(const CNuPointArray& points, double* zone, double tol, long maxIter) {
  return FitMinZoneEx(points, zone, nullptr, nullptr, tol, maxIter);
}

ENuFitResult CNuLine::FitMinZoneEx(const CNuPointArray& points, double* zone, CNuLine* l1, CNuLine* l2, double tol,
                                   long maxIter) {
  return ResultWithin(tol, maxIter, kName, [&] { FitMinZone(points, zone, l1, l2, tol, maxIter); });
}
