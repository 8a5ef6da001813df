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

bool IsDegenerate(const CNuPointArray& pts, double tol) {
  return LieOnOneLine(ViewOf(pts), tol) || CNuGeometry::NumberDistinctPoints(pts, 2, tol) == 0;
}

// The longest edge of points on one line joins the two extreme ones.
Placement CircleOnLongestEdge(const CNuPointArray& pts) {
  int m, n;
  const double length = pts.MaxEdge(&m, &n);
  if (!std::isfinite(length)) FailFit(kNumericalFailure, kName);
  const Vec3 p = Components(pts[m]);
  const Vec3 q = Components(pts[n]);
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
CNuPlane FlatCarrier(const CNuPointArray& pts, double tol, double* form) {
  const LengthToleranceScope scope(tol);
  CNuPlane plane;
  double sumsq;
  try {
    plane.Fit(pts, form, &sumsq);
  } catch (const CNuBestfitException&) {
    FailFit(kNumericalFailure, kName);
  }
  return plane;
}

PlaneFrame FrameOf(const CNuPointArray& pts, double tol) {
  PlaneFrame frame;
  frame.origin = MiddleOf(pts);
  frame.normal = CNuVector(0.0, 0.0, 1.0);
  frame.form = 0.0;
  if (pts.Is2D() == NuFalse) {
    const CNuPlane plane = FlatCarrier(pts, tol, &frame.form);
    frame.origin = Components(plane.GetPoint());
    frame.normal = plane.GetNormal();
  }
  frame.normal.OrthonormalXY(&frame.x, &frame.y);
  return frame;
}

// What rounding errors of the coordinates make of a plane is no form.
bool IsInPlane(const CNuPointArray& pts, const PlaneFrame& frame, double tol) {
  return frame.form <= tol || LieInOnePlane(ViewOf(pts), tol);
}

PlaneFrame RequirePlane(const CNuPointArray& pts, double tol) {
  const PlaneFrame frame = FrameOf(pts, tol);
  if (!IsInPlane(pts, frame, tol)) FailFit(kPointsNotInPlane, kName, kLeastPoints);
  return frame;
}

// Points that are no circle at all can make the steps creep: after so many the start is as good as it gets.
constexpr long kMostStartSteps = 50;

// The centre of the least-squares circle, or where its iteration has come to.
Vec2 LeastSquaresCentre(PointBlocks& blocks, const PlaneFrame& frame, long maxiter) {
  const Vec3 axes[] = {Components(frame.x), Components(frame.y)};
  RoundLeastSquares<2> fit(blocks, {axes[0], axes[1]});
  if (!fit.Start()) return {};
  const GaussNewtonRule rule{.tolerance = NuGetTol(),
                             .large = NuGetLarge(),
                             .limit = std::min(maxiter, kMostStartSteps),
                             .takesLastStep = true,
                             .endsAtGrowth = false,
                             .endsBeforeLimit = false};
  const GaussNewtonEnd end = fit.Run(rule);
  if (end == GaussNewtonEnd::limitReached && maxiter <= kMostStartSteps) {
    FailFit(kIterationLimit, kName);
  }
  return {Dot(fit.Centre(), axes[0]), Dot(fit.Centre(), axes[1])};
}

Annulus FindMinimalAnnulus(const CNuPointArray& pts, const PlaneFrame& frame, long maxiter) {
  constexpr const char* step = "FindMinimalAnnulus";
  RequireIterations(maxiter, step);
  RequireCount(pts, kLeastPoints, step);
  PointBlocks blocks(ViewOf(pts), frame.origin);
  const Vec2 start = LeastSquaresCentre(blocks, frame, maxiter);
  const Annulus found = NarrowestAnnulus(blocks, {Components(frame.x), Components(frame.y)}, start, maxiter);
  if (found.end == AnnulusEnd::limitReached) FailFit(kIterationLimit, step);
  if (found.end == AnnulusEnd::noOptimum) FailFit(kExchangeFailed, kName);
  if (found.end == AnnulusEnd::notFinite || !std::isfinite(found.outer)) FailFit(kNumericalFailure, kName);
  return found;
}

// Points in space are held by the thinnest tube around a circle.
Zone ZoneInSpace(const CNuPointArray& pts, double tol, long maxiter) {
  CNuTorSurf torus(2.0, 1.0);
  try {
    torus.FitMin(pts, tol, maxiter);
  } catch (const CNuBestfitException& failure) {
    throw CNuBestfitException(failure.GetCause(), kName, failure.GetSize());
  }
  const double radius = torus.GetMajorRadius();
  const double half = torus.GetMinorRadius();
  const Placement middle{radius, torus.GetCentre(), torus.GetRotation().GetRowVector(0), torus.GetAxisDirection()};
  return {middle, std::max(0.0, radius - half), radius + half, 2.0 * half};
}

Zone ZoneInPlane(const CNuPointArray& pts, const PlaneFrame& frame, long maxiter) {
  const Annulus found = FindMinimalAnnulus(pts, frame, maxiter);
  const CNuPoint centre = frame.PointAt(found.centre.x, found.centre.y);
  const double radius = 0.5 * found.inner + 0.5 * found.outer;
  return {{radius, centre, frame.x, frame.normal}, found.inner, found.outer, found.outer - found.inner};
}

Zone ZoneOf(const CNuPointArray& pts, double tol, long maxiter) {
  if (IsDegenerate(pts, tol)) {
    const Placement circle = CircleOnLongestEdge(pts);
    return {circle, circle.radius, circle.radius, 0.0};
  }
  const PlaneFrame frame = FrameOf(pts, tol);
  return IsInPlane(pts, frame, tol) ? ZoneInPlane(pts, frame, maxiter) : ZoneInSpace(pts, tol, maxiter);
}

}  // namespace

void CNuCircle::FitMin(const CNuPointArray& pts, double tol) {
  TranslateForeign(kName, [&] {
    RequireCount(pts, 1, kName);
    RequireFinite(pts, kName);
    if (IsDegenerate(pts, tol)) {
      const Placement circle = CircleOnLongestEdge(pts);
      return Place(circle.radius, circle.centre, circle.xaxis, circle.normal);
    }
    const PlaneFrame frame = RequirePlane(pts, tol);
    PointBlocks blocks(ViewOf(pts), frame.origin);
    const EnclosingBall found = SmallestEnclosingBall<2>(blocks, {Components(frame.x), Components(frame.y)});
    if (!found.found || !std::isfinite(found.radius)) FailFit(kNumericalFailure, kName);
    Place(found.radius, frame.PointAt(found.centre.x, found.centre.y), frame.x, frame.normal);
  });
}

ENuFitResult CNuCircle::FitMinEx(const CNuPointArray& pts, double tol) {
  const LengthToleranceScope scope(tol);
  return ResultOf([&] { FitMin(pts, tol); });
}

void CNuCircle::FitMax(const CNuPointArray& pts, double tol) {
  TranslateForeign(kName, [&] {
    RequireCount(pts, kLeastPoints, kName);
    RequireFinite(pts, kName);
    if (LieOnOneLine(ViewOf(pts), tol)) FailFit(kCollinearPoints, kName, kLeastPoints);
    const PlaneFrame frame = RequirePlane(pts, tol);
    PointBlocks blocks(ViewOf(pts), frame.origin);
    const EmptyCircle found = LargestEmptyCircle(blocks, {Components(frame.x), Components(frame.y)});
    if (!found.found || !std::isfinite(found.radius)) FailFit(kNumericalFailure, kName);
    Place(found.radius, frame.PointAt(found.centre.x, found.centre.y), frame.x, frame.normal);
  });
}

ENuFitResult CNuCircle::FitMaxEx(const CNuPointArray& pts, double tol) {
  const LengthToleranceScope scope(tol);
  return ResultOf([&] { FitMax(pts, tol); });
}

void CNuCircle::FitMinZone(const CNuPointArray& pts, double* form, double tol, long maxiter) {
  FitMinZone(pts, form, nullptr, nullptr, tol, maxiter);
}

void CNuCircle::FitMinZone(const CNuPointArray& pts, double* form, CNuCircle* inner, CNuCircle* outer, double tol,
                           long maxiter) {
  RequireIterations(maxiter, kName);
  TranslateForeign(kName, [&] {
    RequireCount(pts, 1, kName);
    RequireFinite(pts, kName);
    const Zone zone = ZoneOf(pts, tol, maxiter);
    const Placement& m = zone.middle;
    Place(m.radius, m.centre, m.xaxis, m.normal);
    Output(form, zone.width);
    if (inner != nullptr) inner->Place(zone.inner, m.centre, m.xaxis, m.normal);
    if (outer != nullptr) outer->Place(zone.outer, m.centre, m.xaxis, m.normal);
  });
}

ENuFitResult CNuCircle::FitMinZoneEx(const CNuPointArray& pts, double* form, double tol, long maxiter) {
  return FitMinZoneEx(pts, form, nullptr, nullptr, tol, maxiter);
}

ENuFitResult CNuCircle::FitMinZoneEx(const CNuPointArray& pts, double* form, CNuCircle* inner, CNuCircle* outer,
                                     double tol, long maxiter) {
  return ResultWithin(tol, maxiter, kName, [&] { FitMinZone(pts, form, inner, outer, tol, maxiter); });
}
