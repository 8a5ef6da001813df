#include <algorithm>
#include <cmath>

#include "nu/curves/circle.h"
#include "nu/curves/internal/circle_fits.h"
#include "nu/curves/internal/plane_axes.h"
#include "nu/engine/least_squares/round_least_squares.h"
#include "nu/engine/minimax/annulus2.h"
#include "nu/engine/minimax/empty_circle2.h"
#include "nu/engine/minimax/enclosing_ball.h"
#include "nu/engine/points/alignment.h"
#include "nu/engine/points/longest_edge.h"
#include "nu/geometry/internal/fit_guards.h"
#include "nu/geometry/internal/plane_fits.h"
#include "nu/surfaces/internal/surface_fits.h"

// Minimax circles. The points are projected into their least-squares plane, along in-plane axes X and Y; the problems
// there are those of nu/engine/minimax. Points that share one z need no projection: their plane is z = const. Only
// the zone knows points that are not in one plane: theirs is a torus.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuCircle";
constexpr int kLeastPoints = 3;

struct CarrierFrame : PlaneFrame {
  double form = 0.0;  // how far the points are from lying in this plane
};

FeatureFit<PlacedCircle> CircleIn(const PlaneFrame& frame, Vec2 centre, double radius) {
  const Vec3 p = frame.origin + (centre.x * frame.x + centre.y * frame.y);
  if (!IsFinite(p) || !std::isfinite(radius)) FailFit(kNumericalFailure, kName);
  return {{{p, frame.normal, radius}, frame.x}};
}

bool IsDegenerate(PointView points, double tol) {
  return LieOnOneLine(points, tol) || HasFewerDistinct(points, 2, tol);
}

// The longest edge of points on one line joins the two extreme ones.
FeatureFit<PlacedCircle> CircleOnLongestEdge(PointView points) {
  const Edge edge = points.Size() == 1 ? Edge{0.0} : LongestEdge(points, NuGetZero());
  if (!std::isfinite(edge.length)) FailFit(kNumericalFailure, kName);
  const Vec3 p = LoadVec3(points[edge.m]);
  const Vec3 q = LoadVec3(points[edge.n]);
  const Vec3 middle = 0.5 * p + 0.5 * q;
  const double radius = 0.5 * edge.length;
  if (!(edge.length > 0.0)) return {{{middle, {0.0, 0.0, 1.0}, radius}, {1.0, 0.0, 0.0}}};
  // Its y axis is the canonical one across the edge.
  const PlaneFrame across = AxesAcross(CanonicalDirection(Unit(q - p)), middle);
  return {{{middle, CanonicalDirection(across.y), radius}, across.normal}};
}

// The points are known to be finite and, within `tol`, not on one line: the plane's only failure is a numerical one.
// The tolerance of the circle decides in its plane, too, which points are on one line.
FeatureFit<Plane3> FlatCarrier(PointView points, double tol) {
  const LengthToleranceScope scope(tol);
  try {
    return FitPlane(points, {.wantsDeviations = true});
  } catch (const CNuBestfitException&) {
    FailFit(kNumericalFailure, kName);
  }
}

CarrierFrame FrameOf(PointView points, double tol) {
  if (HaveOneHeight(points)) return {AxesAcross({0.0, 0.0, 1.0}, MiddleOf(points))};
  const auto plane = FlatCarrier(points, tol);
  return {AxesAcross(plane.shape.normal, plane.shape.point), plane.form};
}

// What rounding errors of the coordinates make of a plane is no form.
bool IsInPlane(PointView points, const CarrierFrame& frame, double tol) {
  return frame.form <= tol || LieInOnePlane(points, tol);
}

PlaneFrame RequirePlane(PointView points, double tol) {
  const CarrierFrame frame = FrameOf(points, tol);
  if (!IsInPlane(points, frame, tol)) FailFit(kPointsNotInPlane, kName, kLeastPoints);
  return frame;
}

// Points that are no circle at all can make the steps creep: after so many the start is as good as it gets.
constexpr long kMostStartSteps = 50;

// The centre of the least-squares circle, or where its iteration has come to.
Vec2 LeastSquaresCentre(PointView points, PointBlocks& blocks, const PlaneFrame& frame, const FitOptions& options) {
  RoundLeastSquares<2> fit(blocks, {frame.x, frame.y});
  if (!fit.Start(points)) return {};
  const GaussNewtonRule rule{.tolerance = NuGetTol(),
                             .large = NuGetLarge(),
                             .limit = std::min(options.maxIter, kMostStartSteps),
                             .takesLastStep = true,
                             .endsAtGrowth = false,
                             .endsBeforeLimit = false,
                             .monitor = options.monitor};
  const GaussNewtonEnd end = fit.Run(rule);
  if (end == GaussNewtonEnd::limitReached && options.maxIter <= kMostStartSteps) {
    FailFit(kIterationLimit, kName);
  }
  return frame.LocalDirection(fit.Centre());
}

Annulus FindMinimalAnnulus(PointView points, const PlaneFrame& frame, const FitOptions& options) {
  constexpr const char* step = "FindMinimalAnnulus";
  RequireCount(points, kLeastPoints, step);
  PointBlocks blocks(points, frame.origin);
  blocks.Keep();
  const Vec2 start = LeastSquaresCentre(points, blocks, frame, options);
  const Annulus found = NarrowestAnnulus(blocks, {frame.x, frame.y}, start, options.maxIter, options.monitor);
  if (found.end == AnnulusEnd::limitReached) FailFit(kIterationLimit, step);
  if (found.end == AnnulusEnd::noOptimum) FailFit(kExchangeFailed, kName);
  if (found.end != AnnulusEnd::found || !std::isfinite(found.outer)) FailFit(kNumericalFailure, kName);
  return found;
}

// Points in space are held by the thinnest tube around a circle.
CircleZone ZoneInSpace(PointView points, const FitOptions& options) {
  try {
    const Torus3 torus = FitMinTorus(points, options).shape;
    const double radius = torus.majorRadius;
    const double half = torus.minorRadius;
    const PlaneFrame frame = AxesAcross(torus.axis, torus.centre);
    const PlacedCircle middle{{torus.centre, frame.normal, radius}, frame.x};
    return {{middle, 2.0 * half, {}}, std::max(0.0, radius - half), radius + half, true};
  } catch (const CNuBestfitException& failure) {
    throw CNuBestfitException(failure.GetCause(), kName, failure.GetSize());
  }
}

CircleZone ZoneInPlane(PointView points, const PlaneFrame& frame, const FitOptions& options) {
  const Annulus found = FindMinimalAnnulus(points, frame, options);
  auto middle = CircleIn(frame, found.centre, 0.5 * found.inner + 0.5 * found.outer);
  middle.form = found.outer - found.inner;
  return {middle, found.inner, found.outer};
}

CircleZone ZoneOf(PointView points, const FitOptions& options) {
  if (IsDegenerate(points, options.tol)) {
    const auto circle = CircleOnLongestEdge(points);
    return {circle, circle.shape.radius, circle.shape.radius};
  }
  const CarrierFrame frame = FrameOf(points, options.tol);
  return IsInPlane(points, frame, options.tol) ? ZoneInPlane(points, frame, options) : ZoneInSpace(points, options);
}

}  // namespace

FeatureFit<PlacedCircle> nu::internal::FitMinCircle(PointView points, const FitOptions& options) {
  return TranslateForeign(kName, options, [&](const FitOptions& watched) {
    RequireCount(points, 1, kName);
    PassMonitor(watched);
    RequireFinite(points, kName);
    if (IsDegenerate(points, options.tol)) return CircleOnLongestEdge(points);
    const PlaneFrame frame = RequirePlane(points, options.tol);
    PointBlocks blocks(points, frame.origin);
    const EnclosingBall found = SmallestEnclosingBall<2>(blocks, {frame.x, frame.y});
    if (!found.found) FailFit(kNumericalFailure, kName);
    return CircleIn(frame, {found.centre.x, found.centre.y}, found.radius);
  });
}

FeatureFit<PlacedCircle> nu::internal::FitMaxCircle(PointView points, const FitOptions& options) {
  return TranslateForeign(kName, options, [&](const FitOptions& watched) {
    RequireCount(points, kLeastPoints, kName);
    PassMonitor(watched);
    RequireFinite(points, kName);
    if (LieOnOneLine(points, options.tol)) FailFit(kCollinearPoints, kName, kLeastPoints);
    const PlaneFrame frame = RequirePlane(points, options.tol);
    PointBlocks blocks(points, frame.origin);
    const EmptyCircle found = LargestEmptyCircle(blocks, {frame.x, frame.y});
    if (!found.found) FailFit(kNumericalFailure, kName);
    return CircleIn(frame, {found.centre.x, found.centre.y}, found.radius);
  });
}

CircleZone nu::internal::FitMinZoneCircle(PointView points, const FitOptions& options) {
  RequireIterations(options.maxIter, kName);
  return TranslateForeign(kName, options, [&](const FitOptions& watched) {
    RequireCount(points, 1, kName);
    RequireFinite(points, kName);
    return ZoneOf(points, watched);
  });
}

void CNuCircle::FitMin(const CNuPointArray& points, double tol) {
  const PlacedCircle found =
      MemoryAsNumericalFailure(kName, [&] { return FitMinCircle(ViewOf(points), {.tol = tol}); }).shape;
  Place(found.radius, ToPoint(found.centre), ToVector(found.xAxis), ToVector(found.normal));
}

ENuFitResult CNuCircle::FitMinEx(const CNuPointArray& points, double tol) {
  const LengthToleranceScope scope(tol);
  return ResultOf([&] { FitMin(points, tol); });
}

void CNuCircle::FitMax(const CNuPointArray& points, double tol) {
  const PlacedCircle found =
      MemoryAsNumericalFailure(kName, [&] { return FitMaxCircle(ViewOf(points), {.tol = tol}); }).shape;
  Place(found.radius, ToPoint(found.centre), ToVector(found.xAxis), ToVector(found.normal));
}

ENuFitResult CNuCircle::FitMaxEx(const CNuPointArray& points, double tol) {
  const LengthToleranceScope scope(tol);
  return ResultOf([&] { FitMax(points, tol); });
}

void CNuCircle::FitMinZone(const CNuPointArray& points, double* zone, double tol, long maxIter) {
  FitMinZone(points, zone, nullptr, nullptr, tol, maxIter);
}

void CNuCircle::FitMinZone(const CNuPointArray& points, double* zone, CNuCircle* inner, CNuCircle* outer, double tol,
                           long maxIter) {
  const CircleZone found = MemoryAsNumericalFailure(
      kName, [&] { return FitMinZoneCircle(ViewOf(points), {.maxIter = maxIter, .tol = tol}); });
  const CNuPoint centre = ToPoint(found.shape.centre);
  const CNuVector xAxis = ToVector(found.shape.xAxis);
  const CNuVector normal = ToVector(found.shape.normal);
  Place(found.shape.radius, centre, xAxis, normal);
  Output(zone, found.form);
  if (inner != nullptr) inner->Place(found.inner, centre, xAxis, normal);
  if (outer != nullptr) outer->Place(found.outer, centre, xAxis, normal);
}

NU_DEFINE_ZONE_VARIANTS(CNuCircle, kName)
