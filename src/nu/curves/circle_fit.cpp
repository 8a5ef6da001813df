#include <cmath>

#include "nu/curves/circle.h"
#include "nu/curves/internal/carrier_plane.h"
#include "nu/engine/least_squares/round_least_squares.h"
#include "nu/geometry/internal/fit_guards.h"

// Least-squares circle. The carrier plane is the least-squares plane of the points; in it, with the points projected
// onto the in-plane axes X and Y, the centre (a, b) and the radius r minimise the sum of
// (sqrt((u - a)^2 + (v - b)^2) - r)^2: an algebraic start, then Gauss-Newton until the squared length of the correction
// to (a, b, r) is below NuGetTol(). The correction is applied each time.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuCircle";
constexpr int kLeastPoints = 3;

struct Axes {
  CNuVector x;
  CNuVector y;
  CNuVector normal;
};

struct Solution {
  Vec3 centre;  // relative to the origin given
  double radius = 0.0;
  Deviations deviations;
};

// From the first point, which is on the circle.
Solution CircleThroughThree(const CNuPointArray& points, const Axes& axes) {
  const Vec3 x = Components(axes.x);
  const Vec3 y = Components(axes.y);
  const Vec3 p = Components(points[1] - points[0]);
  const Vec3 q = Components(points[2] - points[0]);
  const double pu = Dot(p, x);
  const double pv = Dot(p, y);
  const double qu = Dot(q, x);
  const double qv = Dot(q, y);
  const double pp = pu * pu + pv * pv;
  const double qq = qu * qu + qv * qv;
  const double area = 2.0 * (pu * qv - qu * pv);
  const double a = (qv * pp - pv * qq) / area;
  const double b = (pu * qq - qu * pp) / area;
  return {a * x + b * y, std::sqrt(a * a + b * b), {}};
}

Solution LeastSquaresCircle(PointBlocks& blocks, const Axes& axes, bool wantsDeviations, long maxIter) {
  RoundLeastSquares<2> fit(blocks, {Components(axes.x), Components(axes.y)});
  const double large = NuGetLarge();
  if (!fit.Start() || !(fit.Radius() < 0.1 * large)) FailFit(kNumericalFailure, kName);
  const GaussNewtonRule rule{.tolerance = NuGetTol(),
                             .large = large,
                             .limit = maxIter,
                             .takesLastStep = true,
                             .endsAtGrowth = false,
                             .endsBeforeLimit = false};
  const GaussNewtonEnd end = fit.Run(rule);
  if (end == GaussNewtonEnd::unsolvable) FailFit(kNumericalFailure, kName);
  if (end == GaussNewtonEnd::limitReached) FailFit(kIterationLimit, kName);
  return {fit.Centre(), fit.Radius(), wantsDeviations ? fit.DeviationsNow() : Deviations{}};
}

}  // namespace

void CNuCircle::Fit(const CNuPointArray& points, long maxIter) {
  Fit(points, nullptr, nullptr, maxIter);
}

void CNuCircle::Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter) {
  RequireIterations(maxIter, kName);
  TranslateForeign(kName, [&] {
    const CNuPlane plane = CarrierPlane(points, kName);
    Axes axes{{}, {}, plane.GetNormal()};
    axes.normal.OrthonormalXY(&axes.x, &axes.y);
    const bool exact = points.GetSize() == kLeastPoints;
    const Vec3 origin = Components(exact ? points[0] : plane.GetPoint());
    PointBlocks blocks(ViewOf(points), origin);
    const Solution found = exact ? CircleThroughThree(points, axes)
                                 : LeastSquaresCircle(blocks, axes, form != nullptr || sumSquares != nullptr, maxIter);
    const Vec3 centre = origin + found.centre;
    if (!IsFinite(centre) || !std::isfinite(found.radius)) FailFit(kNumericalFailure, kName);
    Place(found.radius, ToPoint(centre), axes.x, axes.normal);
    StoreForm(found.deviations, form, sumSquares);
  });
}

ENuFitResult CNuCircle::FitEx(const CNuPointArray& points, long maxIter) {
  return FitEx(points, nullptr, nullptr, maxIter);
}

ENuFitResult CNuCircle::FitEx(const CNuPointArray& points, double* form, double* sumSquares, long maxIter) {
  RequireIterations(maxIter, kName);
  return ResultOf([&] { Fit(points, form, sumSquares, maxIter); });
}
