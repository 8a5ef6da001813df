#include <algorithm>
#include <cmath>

#include "nu/engine/least_squares/cylinder_start.h"
#include "nu/engine/least_squares/sampled_start.h"
#include "nu/engine/points/alignment.h"
#include "nu/engine/shapes/axis_direction.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/internal/surface_fits.h"

// Least-squares cylinder. The axis and the radius r minimise the sum of (distance from the axis - r)^2: a start from a
// sample of the points, which is refined on that sample first, then Gauss-Newton steps on all points.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuCylSurf";
constexpr int kLeastPoints = 5;

struct Solution {
  Vec3 axisPoint;
  Vec3 axisDirection;
  double radius = 0.0;
  Deviations deviations;
};

// Whether it bulges across its axis by more than rounding errors of the coordinates make of a plane; of a flat cylinder
// the height is the radius. Noise above them is no reason to refuse: the least-squares cylinder of noisy points is what
// was asked for, however flat.
bool IsCurved(const CylinderLeastSquares& fit, const PointBlocks& blocks) {
  constexpr int kHeight = 2;  // among the unknowns: rise, shift, height, tilts
  const CylinderModel& m = fit.Model();
  const double radius = m.height + m.rise;
  const double rounding = RoundingAt(blocks, m.pivot, fit.MeanSquare());
  const double meanAcross = fit.Equations().product[1][1] / fit.Equations().count;  // of (t / d)^2
  return radius * meanAcross > rounding && StandsOut(fit.Equations(), kHeight, radius, rounding);
}

Solution LeastSquaresCylinder(PointView points, PointBlocks& blocks, bool wantsDeviations, long maxIter) {
  blocks.Keep();
  CylinderLeastSquares fit(blocks);
  if (!StartFit(points, blocks, fit, StartCylinder)) FailStart(blocks, kName);
  const GaussNewtonRule rule{.tolerance = NuGetTol(),
                             .large = NuGetLarge(),
                             .limit = maxIter,
                             .takesLastStep = true,
                             .endsAtGrowth = false,
                             .endsBeforeLimit = true,
                             .stopsCreeping = true};
  const GaussNewtonEnd end = RunGaussNewton(fit, rule);
  // Required: the limit is reported under the name of the circle, and hosts look for that name.
  if (end == GaussNewtonEnd::limitReached) FailFit(kIterationLimit, "CNuCircle");
  if (end == GaussNewtonEnd::unsolvable || !fit.Determined() || !IsCurved(fit, blocks))
    FailFit(kNumericalFailure, kName);
  const CylinderModel& model = fit.Model();
  const Vec3 onAxis = model.pivot - model.height * model.u + fit.MeanAlong() * model.w;
  return {blocks.InCallersFrame(onAxis), WithLargestPositive(model.w), (model.height + model.rise) / blocks.Scale(),
          wantsDeviations ? fit.DeviationsNow() : Deviations{}};
}

}  // namespace

void CNuCylSurf::Fit(const CNuPointArray& points, long maxIter) {
  Fit(points, nullptr, nullptr, maxIter);
}

void CNuCylSurf::Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter) {
  RequireIterations(maxIter, kName);
  Output(form, 0.0);
  Output(sumSquares, 0.0);
  RequireCount(points, kLeastPoints, kName);
  const bool coplanar = LieInOnePlane(ViewOf(points), NuGetLengthTol());
  if (coplanar) FailFit(kCoplanarPoints, kName, kLeastPoints - 1);
  const bool distinct = NumberDistinctPoints(points, kLeastPoints, NuGetLengthTol()) == 1;
  PointBlocks blocks(ViewOf(points), MiddleOf(points));
  // What is not finite has no distance from each other.
  if (!distinct && !blocks.AllFinite()) FailFit(kNumericalFailure, kName);
  if (!distinct) FailFit(kDegeneratePoints, kName, kLeastPoints);
  const Solution found =
      LeastSquaresCylinder(ViewOf(points), blocks, form != nullptr || sumSquares != nullptr, maxIter);
  if (!IsFinite(found.axisPoint) || !std::isfinite(found.radius)) FailFit(kNumericalFailure, kName);
  Place(found.radius, ToPoint(found.axisPoint), ToVector(found.axisDirection));
  StoreFormWithin(found.deviations, form, sumSquares);
}

ENuFitResult CNuCylSurf::FitEx(const CNuPointArray& points, long maxIter) {
  return FitEx(points, nullptr, nullptr, maxIter);
}

ENuFitResult CNuCylSurf::FitEx(const CNuPointArray& points, double* form, double* sumSquares, long maxIter) {
  RequireIterations(maxIter, kName);
  return ResultOf([&] { Fit(points, form, sumSquares, maxIter); });
}
