#include "nu/engine/points/alignment.h"
#include "nu/engine/points/form_statistics.h"
#include "nu/engine/points/principal_direction.h"
#include "nu/geometry/internal/fit_guards.h"
#include "nu/geometry/plane.h"

// Least-squares plane. The plane through P0 with the unit normal n that minimises the sum of ((p - P0) . n)^2 passes
// through the mean point, and n is the right singular vector of the smallest singular value of the matrix of the rows
// p - P0 (K. Pearson, On lines and planes of closest fit, Phil. Mag. 2, 1901).

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuPlane";
constexpr int kLeastPoints = 3;

// Zero, or not finite, when differences of the coordinates overflow.
Vec3 NormalOfThree(const CNuPointArray& points) {
  const Vec3 p = Components(points[0]);
  return Unit(Cross(Rescaled(Components(points[1]) - p), Rescaled(Components(points[2]) - p)));
}

PrincipalDirection Solve(PointBlocks& blocks, const CNuPointArray& points) {
  PrincipalDirection found = FindPrincipalDirection(blocks, Extent::smallest);
  if (points.GetSize() == kLeastPoints) {
    // The mean and the moments are scaled and do not overflow.
    const Vec3 spanned = NormalOfThree(points);
    if (IsFinite(spanned) && !IsNull(spanned, NuGetZero())) found.direction = spanned;
  }
  if (!found.finite || !IsFinite(found.direction)) FailFit(kNumericalFailure, kName);
  CNuVector normal = ToVector(found.direction);
  normal.SymmetricAxis(NuGetTol(), 1);
  found.direction = Components(normal);
  return found;
}

}  // namespace

void CNuPlane::Fit(const CNuPointArray& points) {
  Fit(points, nullptr, nullptr);
}

void CNuPlane::Fit(const CNuPointArray& points, double* form, double* sumSquares) {
  TranslateForeign(kName, [&] {
    RequireCount(points, kLeastPoints, kName);
    const bool collinear = LieOnOneLine(ViewOf(points), NuGetLengthTol());
    if (collinear) FailFit(kCollinearPoints, kName, kLeastPoints);
    PointBlocks blocks(ViewOf(points), MiddleOf(points));
    const PrincipalDirection found = Solve(blocks, points);
    Deviations d;
    const bool wanted = form != nullptr || sumSquares != nullptr;
    if (wanted && points.GetSize() > kLeastPoints) d = PlaneDeviations(blocks, found.mean, found.direction);
    m_point = ToPoint(blocks.InCallersFrame(found.mean));
    m_normal = ToVector(found.direction);
    // The extremes start at 0.0, as for the line in a plane:
    // hosts rely on a form that is never below the largest one-sided deviation.
    Output(form, std::max(d.largest, 0.0) - std::min(d.smallest, 0.0));
    Output(sumSquares, d.sumSquares);
  });
}
