#include "nu/engine/points/alignment.h"
#include "nu/engine/points/form_statistics.h"
#include "nu/engine/points/principal_direction.h"
#include "nu/geometry/internal/fit_guards.h"
#include "nu/geometry/internal/plane_fits.h"
#include "nu/geometry/plane.h"

// Least-squares plane. The plane through P0 with the unit normal n that minimises the sum of ((p - P0) . n)^2 passes
// through the mean point, and n is the right singular vector of the smallest singular value of the matrix of the rows
// p - P0 (K. Pearson, On lines and planes of closest fit, Phil. Mag. 2, 1901).

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuPlane";
constexpr int kLeastPoints = 3;

// Zero, or not finite, when differences of the coordinates overflow.
Vec3 NormalOfThree(PointView points) {
  const Vec3 p = LoadVec3(points[0]);
  return Unit(Cross(Rescaled(LoadVec3(points[1]) - p), Rescaled(LoadVec3(points[2]) - p)));
}

PrincipalDirection Solve(PointBlocks& blocks, PointView points) {
  PrincipalDirection found = FindPrincipalDirection(blocks, Extent::smallest);
  if (points.Size() == kLeastPoints) {
    // The mean and the moments are scaled and do not overflow.
    const Vec3 spanned = NormalOfThree(points);
    if (IsFinite(spanned) && !IsNull(spanned, NuGetZero())) found.direction = spanned;
  }
  if (!found.finite || !IsFinite(found.direction)) FailFit(kNumericalFailure, kName);
  found.direction = CanonicalDirection(found.direction);
  return found;
}

// The extremes start at 0.0, as for the line in a plane: hosts rely on a form that is never below the largest one-sided
// deviation.
double FormOf(const Deviations& d) {
  return std::max(d.largest, 0.0) - std::min(d.smallest, 0.0);
}

}  // namespace

FeatureFit<Plane3> nu::internal::FitPlane(PointView points, const FitOptions& options) {
  return TranslateForeign(kName, options, [&](const FitOptions& watched) -> FeatureFit<Plane3> {
    RequireCount(points, kLeastPoints, kName);
    PassMonitor(watched);
    if (LieOnOneLine(points, NuGetLengthTol())) FailFit(kCollinearPoints, kName, kLeastPoints);
    PointBlocks blocks = BlocksOf(points);
    const PrincipalDirection found = Solve(blocks, points);
    Deviations d;
    if (options.wantsDeviations && points.Size() > kLeastPoints) {
      d = PlaneDeviations(blocks, found.mean, found.direction);
    }
    return {{blocks.InCallersFrame(found.mean), found.direction}, FormOf(d), d};
  });
}

void CNuPlane::Fit(const CNuPointArray& points) {
  Fit(points, nullptr, nullptr);
}

void CNuPlane::Fit(const CNuPointArray& points, double* form, double* sumSquares) {
  const auto found =
      MemoryAsNumericalFailure(kName, [&] { return FitPlane(ViewOf(points), OptionsFor(form, sumSquares)); });
  m_point = ToPoint(found.shape.point);
  m_normal = ToVector(found.shape.normal);
  StoreForm(found, form, sumSquares);
}
