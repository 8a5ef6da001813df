#include "nu/engine/minimax/slab3.h"
#include "nu/engine/points/alignment.h"
#include "nu/engine/points/mean.h"
#include "nu/geometry/internal/fit_guards.h"
#include "nu/geometry/internal/plane_fits.h"
#include "nu/geometry/plane.h"

// Minimum-zone plane. Of all pairs of parallel planes with the points between them the two that are least apart rest on
// a face and a vertex of the points' convex hull, or on two of its edges (M. E. Houle, G. T. Toussaint, Computing the
// width of a set, IEEE Transactions on Pattern Analysis and Machine Intelligence 10, 1988); the plane half way between
// them has the least largest distance from the points. Every such pair of the hull that may be the narrowest is
// measured, so the result is the global optimum.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuPlane";
constexpr int kLeastPoints = 3;

}  // namespace

FeatureFit<Plane3> nu::internal::FitMinZonePlane(PointView points, const FitOptions& options) {
  return TranslateForeign(kName, options, [&](const FitOptions& watched) -> FeatureFit<Plane3> {
    RequireCount(points, kLeastPoints, kName);
    RequireFinite(points, kName);
    int corner[3];
    if (!FindTriangle(points, options.tol, corner)) FailFit(kCollinearPoints, kName, kLeastPoints);
    const Vec3 mean = MeanOf(points);
    const Slab3 slab = NarrowestSlab(points, mean, watched.monitor);
    const Plane3 middle{mean + slab.height * slab.normal, CanonicalDirection(slab.normal)};
    const bool isFinite = IsFinite(middle.point) && IsFinite(0.5 * slab.width * middle.normal);
    if (!slab.found || !isFinite) FailFit(kNumericalFailure, kName);
    return {middle, slab.width, {}};
  });
}

void CNuPlane::FitMinZone(const CNuPointArray& points, double* zone, double tol) {
  FitMinZone(points, zone, nullptr, nullptr, tol);
}

void CNuPlane::FitMinZone(const CNuPointArray& points, double* zone, CNuPlane* p1, CNuPlane* p2, double tol) {
  const auto found = MemoryAsNumericalFailure(kName, [&] { return FitMinZonePlane(ViewOf(points), {.tol = tol}); });
  const auto& [middle, normal] = found.shape;
  const Vec3 half = 0.5 * found.form * normal;
  const auto store = [&normal = normal](CNuPlane* plane, const Vec3& point) {
    if (plane == nullptr) return;
    plane->m_point = ToPoint(point);
    plane->m_normal = ToVector(normal);
  };
  store(this, middle);
  Output(zone, found.form);
  store(p1, middle - half);
  store(p2, middle + half);
}
