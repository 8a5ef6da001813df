#include "nu/curves/internal/conic_fit.h"

#include <cstdint>
#include <limits>
#include <vector>

#include "nu/curves/internal/carrier_plane.h"
#include "nu/curves/internal/conic_least_squares.h"

namespace nu::internal {
namespace {

// From so many points on, the first steps run over a sample.
constexpr std::size_t kManyPoints = 16384;
constexpr std::size_t kSampleSize = 4096;

// A sample need not be fitted closer than it tells about all points.
constexpr double kSampleTolerance = 1e-14;
constexpr long kSampleSteps = 30;

// One point from each of as many runs of consecutive points, at places that no regular scan shares (multiplicative
// hashing by the golden ratio).
std::vector<double> SampleOf(PointView points) {
  std::vector<double> sample;
  sample.reserve(3 * kSampleSize);
  const std::size_t run = points.Size() / kSampleSize;
  for (std::size_t k = 0; k < kSampleSize; ++k) {
    const std::uint64_t hash = (k + 1) * std::uint64_t{0x9E3779B97F4A7C15};
    const double* p = points[k * run + static_cast<std::size_t>(hash >> 32) % run];
    sample.insert(sample.end(), p, p + 3);
  }
  return sample;
}

template<class Curve>
bool StartFromSample(PointView points, PointBlocks& blocks, const PlaneAxes& axes, ConicLeastSquares<Curve>& fit) {
  const std::vector<double> sample = SampleOf(points);
  PointBlocks few({sample.data(), 3 * sizeof(double), kSampleSize}, blocks.Origin());
  ConicLeastSquares<Curve> rough(few, axes);
  if (!rough.Start()) return false;
  const double size = rough.Found().curve.Size();
  const GaussNewtonRule rule{.tolerance = kSampleTolerance * size * size,
                             .large = std::numeric_limits<double>::max(),
                             .limit = kSampleSteps,
                             .takesLastStep = true,
                             .endsAtGrowth = false,
                             .endsBeforeLimit = false};
  if (RunGaussNewton(rough, rule) != GaussNewtonEnd::converged) return false;
  if (few.Scale() != 1.0 && !blocks.FitScale()) return false;
  fit.StartFrom(rough.Found());
  return true;
}

double AxisSign(const Ellipse2&, Vec3 axis, Vec3) {
  CNuVector canonical = ToVector(axis);
  canonical.SymmetricAxis(NuGetTol(), 1);
  return Dot(Components(canonical), axis) < 0.0 ? -1.0 : 1.0;
}
double AxisSign(const Hyperbola2&, Vec3 axis, Vec3 toMean) {
  return Dot(axis, toMean) < 0.0 ? -1.0 : 1.0;
}
double AxisSign(const Parabola2&, Vec3, Vec3) {
  return 1.0;
}

}  // namespace

template<class Curve>
FittedConic<Curve> FitConic(const CNuPointArray& points, const char* name, bool wantsDeviations, long maxIter) {
  const CNuPlane plane = CarrierPlane(points, name);
  CNuVector normal = plane.GetNormal();
  CNuVector u, v;
  normal.OrthonormalXY(&u, &v);
  const PlaneAxes axes{Components(u), Components(v)};
  const PointView view = ViewOf(points);
  PointBlocks blocks(view, Components(plane.GetPoint()));
  ConicLeastSquares<Curve> fit(blocks, axes);
  const bool sampled = view.Size() >= kManyPoints && StartFromSample(view, blocks, axes, fit);
  if (!sampled && !fit.Start()) FailFit(kNumericalFailure, name);
  // The tolerance is a length squared, and would be a coarse one for a conic of a thousandth of a unit.
  const double size = std::min(1.0, fit.Found().curve.Size());
  const GaussNewtonRule rule{.tolerance = NuGetTol() * size * size,
                             .large = NuGetLarge(),
                             .limit = maxIter,
                             .takesLastStep = true,
                             .endsAtGrowth = false,
                             .endsBeforeLimit = true};
  const GaussNewtonEnd end = RunGaussNewton(fit, rule);
  if (end == GaussNewtonEnd::unsolvable || !fit.IsConic()) FailFit(kNumericalFailure, name);
  if (end == GaussNewtonEnd::limitReached) FailFit(kIterationLimit, name);
  const PlacedConic<Curve> conic = fit.Found();
  const Vec3 fromMean = conic.origin.x * axes.u + conic.origin.y * axes.v;
  const Vec3 axis = Unit(conic.axis.x * axes.u + conic.axis.y * axes.v);
  const Vec3 origin = blocks.Origin() + fromMean;
  if (!IsFinite(origin) || !IsFinite(axis)) FailFit(kNumericalFailure, name);
  const double sign = AxisSign(conic.curve, axis, -1.0 * fromMean);
  return {conic.curve, origin, sign * axis, normal, wantsDeviations ? fit.DeviationsNow() : Deviations{}};
}

template FittedConic<Ellipse2> FitConic(const CNuPointArray&, const char*, bool, long);
template FittedConic<Hyperbola2> FitConic(const CNuPointArray&, const char*, bool, long);
template FittedConic<Parabola2> FitConic(const CNuPointArray&, const char*, bool, long);

}  // namespace nu::internal
