#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>
#include <vector>

#include "nu/engine/minimax/enclosing_cylinder.h"
#include "nu/engine/minimax/strip2.h"
#include "nu/engine/points/alignment.h"
#include "nu/engine/points/canonical_order.h"
#include "nu/engine/points/form_statistics.h"
#include "nu/engine/points/mean.h"
#include "nu/engine/points/principal_direction.h"
#include "nu/geometry/internal/fit_guards.h"
#include "nu/geometry/internal/line_fits.h"
#include "nu/geometry/line.h"

// Minimum-zone line: of all lines the one with the least largest distance to a point. For points in one plane it is the
// middle line of the narrowest strip, which lies along an edge of their convex hull. In space it is the axis of the
// smallest circular cylinder that holds the points: a minimax problem of four parameters, solved next to the
// least-squares line and wherever else a search over all directions finds less.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuLine";
constexpr int kLeastPoints = 2;

// Of the middle line the point nearest to the mean of the points; its direction may have either sign.
LineZone ZoneOf(Vec3 point, Vec3 direction, double width, Vec3 side) {
  return {{{point, direction}, width, {}}, side};
}

// The plane z = const needs no frame: the strip is that of the coordinates as they are.
LineZone ZoneInPlaneZ(PointView points) {
  const Vec3 mean = MeanOf(points);
  const Strip2 strip = NarrowestStrip(points);
  const Vec3 normal{strip.normal[0], strip.normal[1], 0.0};
  const Vec3 middle{strip.middle[0], strip.middle[1], mean.z};
  return ZoneOf(mean + Dot(middle - mean, normal) * normal, {normal.y, -normal.x, 0.0}, strip.width, normal);
}

// The axes of the frame are the principal ones of the points, in canonical sign, so it does not depend on their order.
// Its plane is their least-squares plane, which fits no worse than one through three of them and leans less.
LineZone ZoneInPlane(PointView points) {
  PointBlocks blocks = BlocksOf(points);
  const PrincipalDirection flat = FindPrincipalDirection(blocks, Extent::smallest);
  const Vec3 along = FindPrincipalDirection(blocks, Extent::largest).direction;
  const Vec3 z = CanonicalDirection(flat.direction);
  const Vec3 x = CanonicalDirection(Unit(Rejection(along, z)));
  const Vec3 y = Cross(z, x);
  std::vector<std::array<double, 2>> local;
  local.reserve(blocks.Size());
  blocks.ForEachPoint([&](const Vec3& p) { local.push_back({Dot(p - flat.mean, x), Dot(p - flat.mean, y)}); });
  const PointView view(local.front().data(), sizeof(local.front()), local.size());
  const Strip2 strip = NarrowestStrip(view);
  const Vec3 normal = strip.normal[0] * x + strip.normal[1] * y;
  const double offset = strip.middle[0] * strip.normal[0] + strip.middle[1] * strip.normal[1];
  return ZoneOf(blocks.InCallersFrame(flat.mean + offset * normal), Unit(strip.normal[1] * x - strip.normal[0] * y),
                strip.width / blocks.Scale(), Unit(normal));
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

LineZone ZoneInSpace(PointView points, const FitOptions& options) {
  PointBlocks blocks = BlocksOf(points);
  blocks.Keep();
  const PrincipalDirection least = FindPrincipalDirection(blocks, Extent::largest);
  const MinimaxSolution<AxisDistance> found =
      SmallestCylinder(blocks, least.mean, least.direction, options.maxIter, options.monitor);
  if (found.end == MinimaxEnd::limitReached) FailFit(kIterationLimit, kName);
  if (found.end != MinimaxEnd::converged) FailFit(kNumericalFailure, kName);
  const AxisFrame& axis = found.model.frame;
  const Vec3 nearest = axis.origin + Dot(least.mean - axis.origin, axis.z) * axis.z;
  const double radius = SpaceLineDeviations(blocks, nearest, axis.z).largest;
  const double leastRadius = SpaceLineDeviations(blocks, least.mean, least.direction).largest;
  // Where the least-squares line is the optimum, rounding decides which is better.
  const bool better = radius < leastRadius;
  return ZoneOf(blocks.InCallersFrame(better ? nearest : least.mean), better ? axis.z : least.direction,
                2.0 * (better ? radius : leastRadius), SideOf(found));
}

LineZone FindZone(PointView points, const FitOptions& options) {
  const bool hasFrame = HaveOneHeight(points);
  if (!hasFrame && !LieInOnePlane(points, NuGetLengthTol())) return ZoneInSpace(points, options);
  PassMonitor(options);
  return hasFrame ? ZoneInPlaneZ(points) : ZoneInPlane(points);
}

}  // namespace

LineZone nu::internal::FitMinZoneLine(PointView points, const FitOptions& options) {
  RequireIterations(options.maxIter, kName);
  return TranslateForeign(kName, options, [&](const FitOptions& watched) -> LineZone {
    RequireCount(points, kLeastPoints, kName);
    RequireFinite(points, kName);
    RequireDistinct(points, kLeastPoints, options.tol, kName);
    const auto leastSquares = FitLine(points, {});
    if (LieOnOneLine(points, options.tol)) return {leastSquares, {}};
    LineZone zone = InCanonicalOrder(points, [&](PointView data) { return FindZone(data, watched); });
    const Vec3 direction = CanonicalDirection(zone.shape.direction);
    const bool isFinite = IsFinite(zone.shape) && std::isfinite(zone.form);
    if (!isFinite || IsNull(direction, NuGetZero())) FailFit(kNumericalFailure, kName);
    zone.shape.direction = Unit(direction);
    return zone;
  });
}

void CNuLine::FitMinZone(const CNuPointArray& points, double* zone, double tol, long maxIter) {
  FitMinZone(points, zone, nullptr, nullptr, tol, maxIter);
}

void CNuLine::FitMinZone(const CNuPointArray& points, double* zone, CNuLine* l1, CNuLine* l2, double tol,
                         long maxIter) {
  const LineZone found =
      MemoryAsNumericalFailure(kName, [&] { return FitMinZoneLine(ViewOf(points), {.maxIter = maxIter, .tol = tol}); });
  m_point = ToPoint(found.shape.point);
  m_direction = ToVector(found.shape.direction);
  CNuLine first(*this);
  CNuLine second(*this);
  const Vec3 shift = (0.5 * found.form) * found.side;
  first.Translate(shift.x, shift.y, shift.z);
  second.Translate(-shift.x, -shift.y, -shift.z);
  Output(zone, found.form);
  Output(l1, first);
  Output(l2, second);
}

ENuFitResult CNuLine::FitMinZoneEx(const CNuPointArray& points, double* zone, double tol, long maxIter) {
  return FitMinZoneEx(points, zone, nullptr, nullptr, tol, maxIter);
}

ENuFitResult CNuLine::FitMinZoneEx(const CNuPointArray& points, double* zone, CNuLine* l1, CNuLine* l2, double tol,
                                   long maxIter) {
  return ResultWithin(tol, maxIter, kName, [&] { FitMinZone(points, zone, l1, l2, tol, maxIter); });
}
