#include "nu/engine/points/alignment.h"
#include "nu/engine/points/form_statistics.h"
#include "nu/engine/points/principal_direction.h"
#include "nu/geometry/internal/fit_guards.h"
#include "nu/geometry/internal/line_fits.h"
#include "nu/geometry/line.h"

// Least-squares line. The line through P0 along the unit direction d that minimises the sum of |d x (p - P0)|^2 passes
// through the mean point, and d is the right singular vector of the largest singular value of the matrix of the rows
// p - P0 (K. Pearson, On lines and planes of closest fit, Phil. Mag. 2, 1901).

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuLine";
constexpr int kLeastPoints = 2;

Vec3 DirectionOfTwo(PointView points) {
  const Vec3 d = LoadVec3(points[1]) - LoadVec3(points[0]);
  // Equal points have no direction whatever the tolerance.
  const bool isNone = d.x == 0.0 && d.y == 0.0 && d.z == 0.0;
  if (isNone || IsNull(d, NuGetLengthTol())) FailFit(kDegeneratePoints, kName, kLeastPoints);
  if (!IsFinite(d)) FailFit(kNumericalFailure, kName);
  return Unit(d);
}

PrincipalDirection Solve(PointBlocks& blocks, PointView points) {
  PrincipalDirection found = FindPrincipalDirection(blocks, Extent::largest);
  const bool exact = points.Size() == kLeastPoints;
  if (exact) found.direction = DirectionOfTwo(points);
  if (!found.finite) FailFit(kNumericalFailure, kName);
  if (!exact && found.largestSingular < NuGetZero()) FailFit(kDegeneratePoints, kName, kLeastPoints);
  found.direction = CanonicalDirection(found.direction);
  return found;
}

// Deviations in a plane have a sign, in space they have none.
// The extremes of the signed ones start at 0.0: hosts rely on a form that is never below the largest deviation.
double FormOf(const Deviations& d, bool planar) {
  return planar ? std::max(d.largest, 0.0) - std::min(d.smallest, 0.0) : 2.0 * d.largest;
}

}  // namespace

FeatureFit<Line3> nu::internal::FitLine(PointView points, const FitOptions& options) {
  return TranslateForeign(kName, options, [&](const FitOptions& watched) -> FeatureFit<Line3> {
    RequireCount(points, kLeastPoints, kName);
    PassMonitor(watched);
    PointBlocks blocks = BlocksOf(points);
    const PrincipalDirection found = Solve(blocks, points);
    const bool planar = HaveOneHeight(points);
    Deviations d;
    if (options.wantsDeviations && points.Size() > kLeastPoints) {
      d = planar ? PlanarLineDeviations(blocks, found.mean, found.direction)
                 : SpaceLineDeviations(blocks, found.mean, found.direction);
    }
    return {{blocks.InCallersFrame(found.mean), found.direction}, FormOf(d, planar), d};
  });
}

void CNuLine::Fit(const CNuPointArray& points) {
  Fit(points, nullptr, nullptr);
}

void CNuLine::Fit(const CNuPointArray& points, double* form, double* sumSquares) {
  const auto found =
      MemoryAsNumericalFailure(kName, [&] { return FitLine(ViewOf(points), OptionsFor(form, sumSquares)); });
  m_point = ToPoint(found.shape.point);
  m_direction = ToVector(found.shape.direction);
  StoreForm(found, form, sumSquares);
}
