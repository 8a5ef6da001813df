#include <algorithm>
#include <cmath>

#include "nu/curves/circle.h"
#include "nu/engine/least_squares/round_least_squares.h"
#include "nu/engine/minimax/annulus2.h"
#include "nu/engine/minimax/empty_circle2.h"
#include "nu/engine/minimax/enclosing_ball.h"
#include "nu/engine/points/alignment.h"
#include "nu/geometry/internal/fit_guards.h"
#include "nu/geometry/line.h"
#include "nu/geometry/plane.h"
#include "nu/linalg/matrix.h"
#include "nu/surfaces/torus.h"

// Minimax circles. The points are projected into their least-squares plane, along in-plane axes X and Y; the problems
// there are those of nu/geometry/internal. Points that share one z need no projection: their plane is z = const. Only
// the zone knows points that are not in one plane: theirs is a torus.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuCircle";
constexpr int kLeastPoints = 3;

struct PlaneFrame {
  Vec3 origin;
  CNuVector x;
  CNuVector y;
  CNuVector normal;
  double form;  // how far the points are from lying in this plane

  CNuPoint PointAt(double u, double v) const {
    const Vec3 p = origin + (u * Components(x) + v * Components(y));
    if (!IsFinite(p)) FailFit(kNumericalFailure, kName);
    return ToPoint(p);
  }
};

struct Placement {
  double radius;
  CNuPoint centre;
  CNuVector xaxis;
  CNuVector normal;
};

struct Zone {
  Placement middle;
  double inner;
  double outer;
  double width;
};

bool IsDegenerate(const CNuPointArray& points, double tol) {
  return LieOnOneLine(ViewOf(points), tol) || CNuGeometry::NumberDistinctPoints(points, 2, tol) == 0;
}

// The longest edge of points on one line joins the two extreme ones.
Placement CircleOnLongestEdge(const CNuPointArray& points) {
  int m, n;
  const double length = points.MaxEdge(&m, &n);
  if (!std::isfinite(length)) FailFit(kNumericalFailure, kName);
  const Vec3 p = Components(points[m]);
  const Vec3 q = Components(points[n]);
  Placement circle{0.5 * length, ToPoint(0.5 * p + 0.5 * q), CNuVector(1, 0, 0), CNuVector(0, 0, 1)};
  if (!(length > 0.0)) return circle;
  circle.xaxis = ToVector(Unit(q - p));
  circle.xaxis.SymmetricAxis(NuGetTol(), 1);
  CNuVector across;
  circle.xaxis.OrthonormalXY(&across, &circle.normal);
  circle.normal.SymmetricAxis(NuGetTol(), 1);
  return circle;
}

// The points are known to be finite and, within `tol`, not on one line: the plane's only failure is a numerical one.
// The tolerance of the circle decides in its plane, too, which points are on one line.
CNuPlane FlatCarrier(const CNuPointArray& points, double tol, double* form) {
  const LengthToleranceScope scope(tol);
  CNuPlane plane;
  double sumSquares;
  try {
    plane.Fit(points, form, &sumSquares);
  } catch (const CNuBestfitException&) {
    FailFit(kNumericalFailure, kName);
  }
  return plane;
}

PlaneFrame FrameOf(const CNuPointArray& points, double tol) {
  PlaneFrame frame;
  frame.origin = MiddleOf(points);
  frame.normal = CNuVector(0.0, 0.0, 1.0);
  frame.form = 0.0;
  if (points.Is2D() == NuFalse) {
    const CNuPlane plane = FlatCarrier(points, tol, &frame.form);
    frame.origin = Components(plane.GetPoint());
    frame.normal = plane.GetNormal();
  }
  frame.normal.OrthonormalXY(&frame.x, &frame.y);
  return frame;
}

// What rounding errors of the coordinates make of a plane is no form.
bool IsInPlane(const CNuPointArray& points, const PlaneFrame& frame, double tol) {
  return frame.form <= tol || LieInOnePlane(ViewOf(points), tol);
}

PlaneFrame RequirePlane(const CNuPointArray& points, double tol) {
  const PlaneFrame frame = FrameOf(points, tol);
  if (!IsInPlane(points, frame, tol)) FailFit(kPointsNotInPlane, kName, kLeastPoints);
  return frame;
}

// Points that are no circle at all can make the steps creep: after so many the start is as good as it gets.
constexpr long kMostStartSteps = 50;

// The centre of the least-squares circle, or where its iteration has come to.
Vec2 LeastSquaresCentre(PointBlocks& blocks, const PlaneFrame& frame, long maxIter) {
  const Vec3 axes[] = {Components(frame.x), Components(frame.y)};
  RoundLeastSquares<2> fit(blocks, {axes[0], axes[1]});
  if (!fit.Start()) return {};
  const GaussNewtonRule rule{.tolerance = NuGetTol(),
                             .large = NuGetLarge(),
                             .limit = std::min(maxIter, kMostStartSteps),
                             .takesLastStep = true,
                             .endsAtGrowth = false,
                             .endsBeforeLimit = false};
  const GaussNewtonEnd end = fit.Run(rule);
  if (end == GaussNewtonEnd::limitReached && maxIter <= kMostStartSteps) {
    FailFit(kIterationLimit, kName);
  }
  return {Dot(fit.Centre(), axes[0]), Dot(fit.Centre(), axes[1])};
}

Annulus FindMinimalAnnulus(const CNuPointArray& points, const PlaneFrame& frame, long maxIter) {
  constexpr const char* step = "FindMinimalAnnulus";
  RequireIterations(maxIter, step);
  RequireCount(points, kLeastPoints, step);
  PointBlocks blocks(ViewOf(points), frame.origin);
  const Vec2 start = LeastSquaresCentre(blocks, frame, maxIter);
  const Annulus found = NarrowestAnnulus(blocks, {Components(frame.x), Components(frame.y)}, start, maxIter);
  if (found.end == AnnulusEnd::limitReached) FailFit(kIterationLimit, step);
  if (found.end == AnnulusEnd::noOptimum) FailFit(kExchangeFailed, kName);
  if (found.end == AnnulusEnd::notFinite || !std::isfinite(found.outer)) FailFit(kNumericalFailure, kName);
  return found;
}

// Points in space are held by the thinnest tube around a circle.
Zone ZoneInSpace(const CNuPointArray& points, double tol, long maxIter) {
  CNuTorSurf torus(2.0, 1.0);
  try {
    torus.FitMin(points, tol, maxIter);
  } catch (const CNuBestfitException& failure) {
    throw CNuBestfitException(failure.GetCause(), kName, failure.GetSize());
  }
  const double radius = torus.GetMajorRadius();
  const double half = torus.GetMinorRadius();
  const Placement middle{radius, torus.GetCentre(), torus.GetRotation().GetRowVector(0), torus.GetAxisDirection()};
  return {middle, std::max(0.0, radius - half), radius + half, 2.0 * half};
}

Zone ZoneInPlane(const CNuPointArray& points, const PlaneFrame& frame, long maxIter) {
  const Annulus found = FindMinimalAnnulus(points, frame, maxIter);
  const CNuPoint centre = frame.PointAt(found.centre.x, found.centre.y);
  const double radius = 0.5 * found.inner + 0.5 * found.outer;
  return {{radius, centre, frame.x, frame.normal}, found.inner, found.outer, found.outer - found.inner};
}

Zone ZoneOf(const CNuPointArray& points, double tol, long maxIter) {
  if (IsDegenerate(points, tol)) {
    const Placement circle = CircleOnLongestEdge(points);
    return {circle, circle.radius, circle.radius, 0.0};
  }
  const PlaneFrame frame = FrameOf(points, tol);
  return IsInPlane(points, frame, tol) ? ZoneInPlane(points, frame, maxIter) : ZoneInSpace(points, tol, maxIter);
}

}  // namespace

void CNuCircle::FitMin(const CNuPointArray& points, double tol) {
  TranslateForeign(kName, [&] {
    RequireCount(points, 1, kName);
    RequireFinite(points, kName);
    if (IsDegenerate(points, tol)) {
      const Placement circle = CircleOnLongestEdge(points);
      return Place(circle.radius, circle.centre, circle.xaxis, circle.normal);
    }
    const PlaneFrame frame = RequirePlane(points, tol);
    PointBlocks blocks(ViewOf(points), frame.origin);
    const EnclosingBall found = SmallestEnclosingBall<2>(blocks, {Components(frame.x), Components(frame.y)});
    if (!found.found || !std::isfinite(found.radius)) FailFit(kNumericalFailure, kName);
    Place(found.radius, frame.PointAt(found.centre.x, found.centre.y), frame.x, frame.normal);
  });
}

ENuFitResult CNuCircle::FitMinEx(const CNuPointArray& points, double tol) {
  const LengthToleranceScope scope(tol);
  return ResultOf([&] { FitMin(points, tol); });
}

void CNuCircle::FitMax(const CNuPointArray& points, double tol) {
  TranslateForeign(kName, [&] {
    RequireCount(points, kLeastPoints, kName);
    RequireFinite(points, kName);
    if (LieOnOneLine(ViewOf(points), tol)) FailFit(kCollinearPoints, kName, kLeastPoints);
    const PlaneFrame frame = RequirePlane(points, tol);
    PointBlocks blocks(ViewOf(points), frame.origin);
    const EmptyCircle found = LargestEmptyCircle(blocks, {Components(frame.x), Components(frame.y)});
    if (!found.found || !std::isfinite(found.radius)) FailFit(kNumericalFailure, kName);
    Place(found.radius, frame.PointAt(found.centre.x, found.centre.y), frame.x, frame.normal);
  });
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
  RequireIterations(maxIter, kName);
  TranslateForeign(kName, [&] {
    RequireCount(points, 1, kName);
    RequireFinite(points, kName);
    const Zone found = ZoneOf(points, tol, maxIter);
    const Placement& m = found.middle;
    Place(m.radius, m.centre, m.xaxis, m.normal);
    Output(zone, found.width);
    if (inner != nullptr) inner->Place(found.inner, m.centre, m.xaxis, m.normal);
    if (outer != nullptr) outer->Place(found.outer, m.centre, m.xaxis, m.normal);
  });
}

ENuFitResult CNuCircle::FitMinZoneEx(const CNuPointArray& points, double* zone, double tol, long maxIter) {
  return FitMinZoneEx(points, zone, nullptr, nullptr, tol, maxIter);
}

ENuFitResult CNuCircle::FitMinZoneEx(const CNuPointArray& points, double* zone, CNuCircle* inner, CNuCircle* outer,
                                     double tol, long maxIter) {
  return ResultWithin(tol, maxIter, kName, [&] { FitMinZone(points, zone, inner, outer, tol, maxIter); });
}
