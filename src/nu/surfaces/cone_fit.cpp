#include <algorithm>
#include <cmath>
#include <vector>

#include "nu/engine/base/elementary.h"
#include "nu/engine/least_squares/cone_start.h"
#include "nu/engine/least_squares/sampled_start.h"
#include "nu/engine/points/alignment.h"
#include "nu/engine/shapes/apex_rounding.h"
#include "nu/engine/shapes/axis_direction.h"
#include "nu/foundation/constants.h"
#include "nu/surfaces/cone.h"
#include "nu/surfaces/internal/surface_fits.h"

// Least-squares cone. Apex, axis and semi-angle a minimise the sum of squares of d cos a - h sin a, where d is the
// distance of a point from the axis and h its height over the apex: a start from a sample of the points, which is
// refined on that sample first, then Gauss-Newton steps on all points.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuConSurf";
constexpr int kLeastPoints = 6;

// The mean is this close to the apex, in parts of the size of the points, when they are balanced about it.
constexpr double kBalanced = 0.1;

struct Solution {
  Vec3 axisPoint;  // near the data
  Vec3 axisDirection;
  double toApex = 0.0;  // along the axis
  double semiAngle = 0.0;
  Deviations deviations;
};

// Whether its radius grows, and its height, by more over the points than rounding errors of their coordinates make of a
// cylinder or a plane.
bool IsCone(const ConeModel& m, const PointBlocks& blocks, double meanSquare) {
  const double slope = std::min(std::fabs(nu::internal::Sin(m.angle)), nu::internal::Cos(m.angle));
  return std::sqrt(meanSquare) * slope > RoundingAt(blocks, m.pivot, meanSquare);
}

// The cone with the semi-angle below 90 degrees and the axis from the apex into the data. Of points balanced about the
// apex neither end is the one with the data.
Solution InCallersFrame(const ConeModel& m, const PointBlocks& blocks, double meanSquare) {
  const double fromApex = (m.rise + m.height * nu::internal::Cos(m.angle)) / nu::internal::Sin(m.angle);
  const bool balanced = m.bothNappes && std::fabs(fromApex) <= kBalanced * std::sqrt(meanSquare);
  const Vec3 direction = balanced ? WithLargestPositive(m.w) : std::copysign(1.0, fromApex) * m.w;
  return {blocks.InCallersFrame(m.pivot - m.height * m.u), direction, -fromApex * Dot(direction, m.w) / blocks.Scale(),
          std::fabs(m.angle) / Nu_PI * 180.0, Deviations{}};
}

Solution LeastSquaresCone(PointView points, PointBlocks& blocks, bool wantsDeviations, long maxIter) {
  blocks.Keep();
  ConeLeastSquares fit(blocks);
  if (!StartFit(points, blocks, fit, StartCone)) FailStart(blocks, kName);
  const GaussNewtonRule rule{.tolerance = NuGetTol(),
                             .large = NuGetLarge(),
                             .limit = maxIter,
                             .takesLastStep = true,
                             .endsAtGrowth = false,
                             .endsBeforeLimit = true,
                             .stopsCreeping = true};
  const GaussNewtonEnd end = RunGaussNewton(fit, rule);
  if (end == GaussNewtonEnd::limitReached) FailFit(kIterationLimit, kName);
  const double meanSquare = fit.MeanSquare();
  if (end == GaussNewtonEnd::unsolvable || !fit.Determined() || !IsCone(fit.Model(), blocks, meanSquare))
    FailFit(kNumericalFailure, kName);
  Solution found = InCallersFrame(fit.Model(), blocks, meanSquare);
  if (wantsDeviations) found.deviations = fit.DeviationsNow();
  return found;
}

// With few points several cones may be as good as each other, and rounding would let the order of the points choose:
// they are taken in one that is theirs.
std::vector<Vec3> CanonicalOrder(PointView points) {
  std::vector<Vec3> ordered(points.Size());
  for (std::size_t i = 0; i < ordered.size(); ++i) ordered[i] = LoadVec3(points[i]);
  std::sort(ordered.begin(), ordered.end(), [](const Vec3& p, const Vec3& q) {
    return p.x != q.x ? p.x < q.x : p.y != q.y ? p.y < q.y : p.z < q.z;
  });
  return ordered;
}

Solution ConeInAnyOrder(PointView points, PointBlocks& blocks, bool wantsDeviations, long maxIter) {
  if (points.Size() > kFewPoints) return LeastSquaresCone(points, blocks, wantsDeviations, maxIter);
  if (!blocks.AllFinite()) FailFit(kNumericalFailure, kName);
  const std::vector<Vec3> ordered = CanonicalOrder(points);
  const PointView view(&ordered[0].x, sizeof(Vec3), ordered.size());
  PointBlocks orderedBlocks(view, ordered[ordered.size() / 2]);
  return LeastSquaresCone(view, orderedBlocks, wantsDeviations, maxIter);
}

}  // namespace

void CNuConSurf::Fit(const CNuPointArray& points, long maxIter) {
  Fit(points, nullptr, nullptr, maxIter);
}

void CNuConSurf::Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter) {
  RequireIterations(maxIter, kName);
  Output(form, 0.0);
  Output(sumSquares, 0.0);
  RequireCount(points, kLeastPoints, kName);
  const bool coplanar = LieInOnePlane(ViewOf(points), NuGetLengthTol());
  if (coplanar) FailFit(kCoplanarPoints, kName, 4);
  PointBlocks blocks(ViewOf(points), MiddleOf(points));
  const bool distinct = NumberDistinctPoints(points, kLeastPoints, NuGetLengthTol()) == 1;
  // What is not finite has no distance from each other.
  if (!distinct && !blocks.AllFinite()) FailFit(kNumericalFailure, kName);
  if (!distinct) FailFit(kDegeneratePoints, kName, kLeastPoints);
  const Solution found = ConeInAnyOrder(ViewOf(points), blocks, form != nullptr || sumSquares != nullptr, maxIter);
  const bool finite = IsFinite(found.axisPoint + found.toApex * found.axisDirection);
  if (!finite || !(found.semiAngle < 90.0)) FailFit(kNumericalFailure, kName);
  Place(found.semiAngle, ToPoint(found.axisPoint), ToVector(found.axisDirection));
  Translate(ToPoint(PointAlong(found.axisPoint, Components(GetAxisDirection()), found.toApex)));
  StoreFormWithin(found.deviations, form, sumSquares);
}

ENuFitResult CNuConSurf::FitEx(const CNuPointArray& points, long maxIter) {
  return FitEx(points, nullptr, nullptr, maxIter);
}

ENuFitResult CNuConSurf::FitEx(const CNuPointArray& points, double* form, double* sumSquares, long maxIter) {
  RequireIterations(maxIter, kName);
  return ResultOf([&] { Fit(points, form, sumSquares, maxIter); });
}
