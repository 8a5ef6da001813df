#include "nu/engine/minimax/slab3.h"
#include "nu/engine/points/mean.h"
#include "nu/foundation/int_array.h"
#include "nu/geometry/internal/fit_guards.h"
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

void RequireNotCollinear(const CNuPointArray& points, double tol) {
  CNuIntArray corners(kLeastPoints);
  if (points.IsNoncollinear(&corners, tol) == NuFalse) FailFit(kCollinearPoints, kName, kLeastPoints);
}

}  // namespace

void CNuPlane::FitMinZone(const CNuPointArray& points, double* zone, double tol) {
  FitMinZone(points, zone, nullptr, nullptr, tol);
}

void CNuPlane::FitMinZone(const CNuPointArray& points, double* zone, CNuPlane* p1, CNuPlane* p2, double tol) {
  TranslateForeign(kName, [&] {
    RequireCount(points, kLeastPoints, kName);
    RequireFinite(points, kName);
    RequireNotCollinear(points, tol);
    const Vec3 mean = MeanOf(ViewOf(points));
    const Slab3 slab = NarrowestSlab(ViewOf(points), mean);
    const Vec3 middle = mean + slab.height * slab.normal;
    CNuVector normal = ToVector(slab.normal);
    normal.SymmetricAxis(NuGetTol(), 1);
    const Vec3 half = 0.5 * slab.width * Components(normal);
    if (!slab.found || !IsFinite(middle) || !IsFinite(half)) FailFit(kNumericalFailure, kName);
    const auto store = [&normal](CNuPlane* plane, const Vec3& point) {
      if (plane == nullptr) return;
      plane->m_point = ToPoint(point);
      plane->m_normal = normal;
    };
    store(this, middle);
    Output(zone, slab.width);
    store(p1, middle - half);
    store(p2, middle + half);
  });
}
