#include <algorithm>
#include <cmath>

#include "nu/engine/base/elementary.h"
#include "nu/engine/least_squares/cone_start.h"
#include "nu/engine/points/canonical_order.h"
#include "nu/engine/shapes/axis_direction.h"
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

// Whether its radius grows, and its height, by more over the points than rounding errors of their coordinates make of a
// cylinder or a plane.
bool IsCone(const ConeModel& m, const PointBlocks& blocks, double meanSquare) {
  const double slope = std::min(std::fabs(nu::internal::Sin(m.angle)), nu::internal::Cos(m.angle));
  return std::sqrt(meanSquare) * slope > RoundingAt(blocks, m.pivot, meanSquare);
}

// The cone with the axis from the apex into the data. Of points balanced about the apex neither end is the one with the
// data.
Cone3 InCallersFrame(const ConeModel& m, const PointBlocks& blocks, double meanSquare) {
  const double fromApex = (m.rise + m.height * nu::internal::Cos(m.angle)) / nu::internal::Sin(m.angle);
  const bool balanced = m.bothNappes && std::fabs(fromApex) <= kBalanced * std::sqrt(meanSquare);
  const Vec3 direction = balanced ? WithLargestPositive(m.w) : std::copysign(1.0, fromApex) * m.w;
  return {{blocks.InCallersFrame(m.pivot - m.height * m.u), direction},
          -fromApex * Dot(direction, m.w) / blocks.Scale(),
          std::fabs(m.angle),
          m.bothNappes};
}

FeatureFit<Cone3> LeastSquaresCone(PointView points, PointBlocks& blocks, const FitOptions& options, FlatPoints flat) {
  ConeLeastSquares fit(blocks);
  const GaussNewtonEnd end = RunSurfaceFit(points, blocks, fit, StartCone, options, kName);
  RequireConverged(end, kName, kName);
  const double meanSquare = fit.MeanSquare();
  if (!fit.Determined() || !IsCone(fit.Model(), blocks, meanSquare)) FailFit(kNumericalFailure, kName);
  if (flat == FlatPoints::refused) RequireCloserThanPlane(points, blocks, fit, kName);
  const Cone3 cone = InCallersFrame(fit.Model(), blocks, meanSquare);
  if (!(DegreesOf(cone) < 90.0 && IsFinite(cone.Apex()))) FailFit(kNumericalFailure, kName);
  return FitOf(cone, options.wantsDeviations ? fit.DeviationsNow() : Deviations{});
}

FeatureFit<Cone3> FitAnyCone(PointView points, PointBlocks& blocks, const FitOptions& options, FlatPoints flat) {
  RequireIterations(options.maxIter, kName);
  RequireSolid(points, kLeastPoints, 4, NuGetLengthTol(), kName);
  if (points.Size() > kFewPoints) return LeastSquaresCone(points, blocks, options, flat);
  // With few points several cones may be as good as each other, and rounding would let the order of the points choose:
  // they are taken in one that is theirs.
  RequireFinite(points, kName);
  return InOrder(points, [&](PointView ordered) {
    PointBlocks orderedBlocks = BlocksOf(ordered);
    return LeastSquaresCone(ordered, orderedBlocks, options, flat);
  });
}

}  // namespace

FeatureFit<Cone3> nu::internal::FitCone(PointView points, PointBlocks& blocks, const FitOptions& options) {
  return FitAnyCone(points, blocks, options, FlatPoints::taken);
}

FeatureFit<Cone3> nu::internal::FitCone(PointView points, const FitOptions& options) {
  return BentFit(points, options, kName, &Cone3::toApex, [&](PointBlocks& blocks, const FitOptions& watched) {
    return FitAnyCone(points, blocks, watched, FlatPoints::refused);
  });
}

void CNuConSurf::Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter) {
  ClearForm(form, sumSquares, maxIter, kName);
  const auto found = WithMemory(kName, [&] { return FitCone(ViewOf(points), OptionsFor(form, sumSquares, maxIter)); });
  const Cone3& cone = found.shape;
  Place(DegreesOf(cone), ToPoint(StoredApex(cone)), ToVector(cone.axis.direction));
  StoreForm(found, form, sumSquares);
}

NU_DEFINE_FIT_VARIANTS(CNuConSurf, kName)
