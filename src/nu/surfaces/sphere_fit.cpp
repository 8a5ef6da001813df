#include <algorithm>
#include <cmath>

#include "nu/engine/least_squares/round_least_squares.h"
#include "nu/surfaces/internal/surface_fits.h"
#include "nu/surfaces/sphere.h"

// Least-squares sphere. The centre c and the radius r minimise the sum of (|p - c| - r)^2: an algebraic start, then
// Gauss-Newton while the squared step of the centre keeps shrinking. A step below NuGetTol() is not applied; one that
// is not shorter than the step before ends the iteration, and so does the limit.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuSphSurf";
constexpr int kLeastPoints = 4;

// From the first point p0, which is on the sphere: the planes 2 q . (c - p0) = |q|^2 with q = p - p0 meet in the
// centre. Refused where a point is no farther from the plane of the others than rounding errors of the coordinates.
Sphere3 SphereThroughFour(PointView points, const PointBlocks& blocks) {
  const Vec3 p = LoadVec3(points[0]);
  const Vec3 q1 = LoadVec3(points[1]) - p;
  const Vec3 q2 = LoadVec3(points[2]) - p;
  const Vec3 q3 = LoadVec3(points[3]) - p;
  const Vec3 across = Cross(q2, q3);
  const double volume = Dot(q1, across);
  const double face = std::max({Norm(across), Norm(Cross(q3, q1)), Norm(Cross(q1, q2)), Norm(Cross(q2 - q1, q3 - q1))});
  const double meanSquare = 0.25 * (Dot(q1, q1) + Dot(q2, q2) + Dot(q3, q3));
  if (!(std::fabs(volume) > RoundingAt(blocks, {}, meanSquare) * face)) FailFit(kNumericalFailure, kName);
  const Vec3 sum = Dot(q1, q1) * across + Dot(q2, q2) * Cross(q3, q1) + Dot(q3, q3) * Cross(q1, q2);
  const Vec3 fromFirst = (0.5 / volume) * sum;
  return {p + fromFirst, std::sqrt(Dot(fromFirst, fromFirst))};
}

// A coordinate of the start within NuGetLengthTol() of zero becomes exactly 0: hosts rely on it for points that lie
// on a sphere about the origin, whose start no step moves.
Vec3 SnapNearZero(Vec3 centre) {
  const double lengthTol = NuGetLengthTol();
  for (double* c : {&centre.x, &centre.y, &centre.z})
    if (std::fabs(*c) < lengthTol) *c = 0.0;
  return centre;
}

FeatureFit<Sphere3> LeastSquaresSphere(PointView points, PointBlocks& blocks, const FitOptions& options) {
  const Vec3 origin = blocks.Origin();
  RoundLeastSquares<3> fit(blocks, {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}});
  if (!fit.Start(points)) FailFit(kNumericalFailure, kName);
  const Vec3 startWorld = SnapNearZero(origin + fit.Centre());
  if (startWorld.x == 0.0 || startWorld.y == 0.0 || startWorld.z == 0.0) fit.MoveCentre(startWorld - origin);
  const Vec3 start = fit.Centre();
  const GaussNewtonRule rule{.tolerance = NuGetTol(),
                             .large = NuGetLarge(),
                             .limit = options.maxIter,
                             .takesLastStep = false,
                             .endsAtGrowth = true,
                             .endsBeforeLimit = true,
                             .monitor = options.monitor};
  RequireConverged(fit.Run(rule), kName, kName);
  const Vec3 centre = fit.Centre();
  const Sphere3 sphere{centre == start ? startWorld : origin + centre, fit.Radius()};
  return FitOf(sphere, options.wantsDeviations ? fit.DeviationsNow() : Deviations{});
}

}  // namespace

FeatureFit<Sphere3> nu::internal::FitSphere(PointView points, PointBlocks& blocks, const FitOptions& options) {
  RequireIterations(options.maxIter, kName);
  RequireCount(points, kLeastPoints, kName);
  if (LieInOnePlane(points, NuGetLengthTol())) FailFit(kCoplanarPoints, kName, kLeastPoints);
  const bool exact = points.Size() == kLeastPoints;
  const auto found = exact ? FitOf(SphereThroughFour(points, blocks), {}) : LeastSquaresSphere(points, blocks, options);
  if (!IsFinite(found.shape)) FailFit(kNumericalFailure, kName);
  return found;
}

FeatureFit<Sphere3> nu::internal::FitSphere(PointView points, const FitOptions& options) {
  return BentFit(points, options, kName, &Sphere3::radius,
                 [&](PointBlocks& blocks, const FitOptions& watched) { return FitSphere(points, blocks, watched); });
}

void CNuSphSurf::Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter) {
  ClearForm(form, sumSquares, maxIter, kName);
  const auto found =
      WithMemory(kName, [&] { return FitSphere(ViewOf(points), OptionsFor(form, sumSquares, maxIter)); });
  Place(found.shape.radius, ToPoint(found.shape.centre));
  StoreForm(found, form, sumSquares);
}

NU_DEFINE_FIT_VARIANTS(CNuSphSurf, kName)
