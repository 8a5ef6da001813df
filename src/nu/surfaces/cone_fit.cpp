#include <algorithm>
#include <cmath>

#include "nu/foundation/constants.h"
#include "nu/foundation/internal/failures.h"
#include "nu/geometry/internal/fit_guards.h"
#include "nu/surfaces/cone.h"
#include "nu/surfaces/internal/axis_direction.h"
#include "nu/surfaces/internal/cone_start.h"
#include "nu/surfaces/internal/far_point.h"
#include "nu/surfaces/internal/point_sample.h"

// Least-squares cone. Apex, axis and semi-angle a minimise the sum of squares of d cos a - h sin a, where d is the
// distance of a point from the axis and h its height over the apex: a start from a sample of the points, which is
// refined on that sample first, then Gauss-Newton steps on all points.

using nu::internal::Components;
using nu::internal::ConeLeastSquares;
using nu::internal::ConeModel;
using nu::internal::Deviations;
using nu::internal::FailFit;
using nu::internal::GaussNewtonEnd;
using nu::internal::GaussNewtonRule;
using nu::internal::PointAlong;
using nu::internal::PointBlocks;
using nu::internal::PointSample;
using nu::internal::PointView;
using nu::internal::StartCone;
using nu::internal::ToPoint;
using nu::internal::ToVector;
using nu::internal::Vec3;
using nu::internal::ViewOf;

namespace {

constexpr const char* kName = "CNuConSurf";
constexpr int kLeastPoints = 6;
constexpr int kSampleSteps = 100;

struct Solution {
  Vec3 axisPoint;  // near the data
  Vec3 axisDirection;
  double toApex = 0.0;  // along the axis
  double semiAngle = 0.0;
  Deviations deviations;
};

ConeModel Rescaled(ConeModel model, double factor) {
  model.pivot = factor * model.pivot;
  model.height *= factor;
  model.rise *= factor;
  return model;
}

// Starts from a sample of a large set.
bool StartFromSample(PointView points, PointBlocks& blocks, ConeLeastSquares& fit) {
  const PointSample sample(points);
  PointBlocks sampleBlocks(sample.View(), blocks.Origin());
  sampleBlocks.Keep();
  ConeLeastSquares sampleFit(sampleBlocks);
  if (!StartCone(sampleBlocks, sampleFit)) return false;
  sampleFit.Descend(kSampleSteps);
  if (!sampleFit.Determined()) return false;
  if (sampleBlocks.Scale() != 1.0 && !blocks.FitScale()) return false;
  fit.Place(Rescaled(sampleFit.Model(), blocks.Scale() / sampleBlocks.Scale()));
  return true;
}

void Start(PointView points, PointBlocks& blocks, ConeLeastSquares& fit) {
  if (points.Size() > PointSample::kMostPoints && StartFromSample(points, blocks, fit)) return;
  if (StartCone(blocks, fit)) return;
  if (!blocks.AllFinite()) FailFit(nu::internal::kNumericalFailure, kName);
  // Required: this failure is the algebraic fit's own, and hosts catch it as such.
  nu::internal::FailOperation(46, "calculation", "CNuSurface::QuadricAxes()");
}

// The cone with the semi-angle below 90 degrees and the axis from the apex into the data.
Solution InCallersFrame(const ConeModel& m, const PointBlocks& blocks) {
  const double fromApex = (m.rise + m.height * std::cos(m.angle)) / std::sin(m.angle);
  return {blocks.InCallersFrame(m.pivot - m.height * m.u), std::copysign(1.0, fromApex) * m.w,
          -std::fabs(fromApex) / blocks.Scale(), std::fabs(m.angle) / Nu_PI * 180.0, Deviations{}};
}

Solution LeastSquaresCone(PointView points, PointBlocks& blocks, bool wantsDeviations, long maxIter) {
  blocks.Keep();
  ConeLeastSquares fit(blocks);
  Start(points, blocks, fit);
  const GaussNewtonRule rule{.tolerance = NuGetTol(),
                             .large = NuGetLarge(),
                             .limit = maxIter,
                             .takesLastStep = true,
                             .endsAtGrowth = false,
                             .endsBeforeLimit = true};
  const GaussNewtonEnd end = RunGaussNewton(fit, rule);
  if (end == GaussNewtonEnd::limitReached) FailFit(nu::internal::kIterationLimit, kName);
  if (end == GaussNewtonEnd::unsolvable || !fit.Determined()) FailFit(nu::internal::kNumericalFailure, kName);
  Solution found = InCallersFrame(fit.Model(), blocks);
  if (wantsDeviations) found.deviations = fit.DeviationsNow();
  return found;
}

bool IsCone(const Solution& s) {
  return IsFinite(s.axisPoint + s.toApex * s.axisDirection) && s.semiAngle > 0.0 && s.semiAngle < 90.0;
}

}  // namespace

void CNuConSurf::Fit(const CNuPointArray& points, long maxIter) {
  Fit(points, nullptr, nullptr, maxIter);
}

void CNuConSurf::Fit(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter) {
  nu::internal::RequireIterations(maxIter, kName);
  if (formError != nullptr) *formError = *sumSquares = 0.0;
  nu::internal::RequireCount(points, kLeastPoints, kName);
  PointBlocks blocks(ViewOf(points), nu::internal::MiddleOf(points));
  const bool coplanar = AreCoplanar(points, NuGetLengthTol()) == 1;
  const bool distinct = NumberDistinctPoints(points, kLeastPoints, NuGetLengthTol()) == 1;
  // What is not finite has no distance from a plane or from each other, so it may pass for either.
  if ((coplanar || !distinct) && !blocks.AllFinite()) FailFit(nu::internal::kNumericalFailure, kName);
  if (coplanar) FailFit(nu::internal::kCoplanarPoints, kName, 4);
  if (!distinct) FailFit(nu::internal::kDegeneratePoints, kName, kLeastPoints);
  const Solution found = LeastSquaresCone(ViewOf(points), blocks, formError != nullptr, maxIter);
  if (!IsCone(found)) FailFit(nu::internal::kNumericalFailure, kName);
  Place(found.semiAngle, ToPoint(found.axisPoint), ToVector(found.axisDirection));
  Translate(ToPoint(PointAlong(found.axisPoint, Components(GetAxisDirection()), found.toApex)));
  if (formError == nullptr) return;
  // The extremes start at -NuGetLarge() and NuGetLarge(): required, and hosts that narrow the range see it.
  const double large = NuGetLarge();
  *formError = std::max(found.deviations.largest, -large) - std::min(found.deviations.smallest, large);
  *sumSquares = found.deviations.sumSquares;
}

ENuFitResult CNuConSurf::FitEx(const CNuPointArray& points, long maxIter) {
  return FitEx(points, nullptr, nullptr, maxIter);
}

ENuFitResult CNuConSurf::FitEx(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter) {
  nu::internal::RequireIterations(maxIter, kName);
  return nu::internal::ResultOf([&] { Fit(points, formError, sumSquares, maxIter); });
}
