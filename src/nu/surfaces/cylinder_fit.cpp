#include "nu/engine/least_squares/cylinder_start.h"
#include "nu/engine/shapes/axis_direction.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/internal/surface_fits.h"

// Least-squares cylinder. The axis and the radius r minimise the sum of (distance from the axis - r)^2: a start from a
// sample of the points, which is refined on that sample first, then Gauss-Newton steps on all points.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuCylSurf";
constexpr int kLeastPoints = 5;

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

FeatureFit<Cylinder3> LeastSquaresCylinder(PointView points, PointBlocks& blocks, const FitOptions& options,
                                           FlatPoints flat) {
  RequireIterations(options.maxIter, kName);
  RequireSolid(points, kLeastPoints, kLeastPoints - 1, NuGetLengthTol(), kName);
  CylinderLeastSquares fit(blocks);
  const GaussNewtonEnd end = RunSurfaceFit(points, blocks, fit, StartCylinder, options, kName);
  // Required: the limit is reported under the name of the circle, and hosts look for that name.
  RequireConverged(end, kName, "CNuCircle");
  if (!fit.Determined() || !IsCurved(fit, blocks)) FailFit(kNumericalFailure, kName);
  if (flat == FlatPoints::refused) RequireCloserThanPlane(points, blocks, fit, kName);
  const CylinderModel& model = fit.Model();
  const Vec3 onAxis = model.pivot - model.height * model.u + fit.MeanAlong() * model.w;
  const Cylinder3 cylinder{{blocks.InCallersFrame(onAxis), WithLargestPositive(model.w)},
                           (model.height + model.rise) / blocks.Scale()};
  if (!IsFinite(cylinder)) FailFit(kNumericalFailure, kName);
  return FitOf(cylinder, options.wantsDeviations ? fit.DeviationsNow() : Deviations{});
}

}  // namespace

FeatureFit<Cylinder3> nu::internal::FitCylinder(PointView points, PointBlocks& blocks, const FitOptions& options) {
  return LeastSquaresCylinder(points, blocks, options, FlatPoints::taken);
}

FeatureFit<Cylinder3> nu::internal::FitCylinder(PointView points, const FitOptions& options) {
  return BentFit(points, options, kName, &Cylinder3::radius, [&](PointBlocks& blocks, const FitOptions& watched) {
    return LeastSquaresCylinder(points, blocks, watched, FlatPoints::refused);
  });
}

void CNuCylSurf::Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter) {
  ClearForm(form, sumSquares, maxIter, kName);
  const auto found =
      WithMemory(kName, [&] { return FitCylinder(ViewOf(points), OptionsFor(form, sumSquares, maxIter)); });
  const Line3& axis = found.shape.axis;
  Place(found.shape.radius, ToPoint(axis.point), ToVector(axis.direction));
  StoreForm(found, form, sumSquares);
}

NU_DEFINE_FIT_VARIANTS(CNuCylSurf, kName)
