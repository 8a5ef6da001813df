#include "nu/curves/internal/conic_fit.h"

#include <cstdint>
#include <limits>
#include <vector>

#include "nu/curves/internal/carrier_plane.h"
#include "nu/engine/least_squares/conic_least_squares.h"
#include "nu/engine/least_squares/conic_start.h"

namespace nu::internal {
namespace {

// From so many points on, the fit starts from that of a sample.
constexpr std::size_t kManyPoints = 2048;
constexpr std::size_t kSampleSize = 1024;

// Points whose deviations are below this part of their smaller spread are clearly on one curve. Around others there may
// be several optima.
constexpr double kClear = 0.1;

// Where only the place of an optimum is asked for, in units of the spread.
constexpr double kSearchTolerance = 1e-14;
constexpr long kSearchSteps = 60;

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

GaussNewtonRule RuleOf(double tolerance, double large, long limit) {
  return {.tolerance = tolerance,
          .large = large,
          .limit = limit,
          .takesLastStep = true,
          .endsAtGrowth = false,
          .endsBeforeLimit = true};
}

// So few points as there are unknowns are on many curves.
template<class Curve>
bool IsClear(const ConicLeastSquares<Curve>& fit, std::size_t n) {
  const double spread = kClear * fit.Frame().flatness;
  const double freedom = static_cast<double>(n) - kUnknownsOf<Curve>;
  return fit.SumSquares() < freedom * spread * spread;
}

// More starts for points that are not clearly on one curve.
void AddStarts(const Ellipse2&, ConicStarts& starts) {
  starts.AddEven(1.0, 1);
  for (const double ratio : {0.3, 0.05}) starts.AddEven(ratio, 8);
}
void AddStarts(const Hyperbola2&, ConicStarts& starts) {
  for (const double ratio : {-1.0, -0.3, -0.05}) starts.AddEven(ratio, 8);
}
void AddStarts(const Parabola2&, ConicStarts& starts) {
  starts.AddEven(0.0, 24);
}

struct Optimum {
  ConicEquation equation;
  double sumSquares = std::numeric_limits<double>::infinity();

  void TakeLess(const ConicEquation& other, double sum) {
    if (sum < sumSquares) *this = {other, sum};
  }
};

// The optima among the conics of one kind and among all others.
struct Optima {
  Optimum own;
  Optimum other;
};

// Descends from the starts: from the first one only, if that clearly finds the curve.
template<class Curve>
Optima OptimaFrom(PointBlocks& points, ConicStarts starts) {
  Optima found;
  AddStarts(Curve(), starts);
  ConicLeastSquares<Curve> fit(points, starts.frame);
  const double unit = starts.frame.unit / points.Scale();
  const double large = std::numeric_limits<double>::max();
  const GaussNewtonRule rule = RuleOf(kSearchTolerance * unit * unit, large, kSearchSteps);
  for (int k = 0; k < starts.count; ++k) {
    if (!fit.Start(starts.equation[k])) continue;
    const GaussNewtonEnd end = RunGaussNewton(fit, rule);
    PlacedConic<Curve> conic;
    const bool isOwn = end == GaussNewtonEnd::converged && fit.Find(conic);
    (isOwn ? found.own : found.other).TakeLess(fit.Equation(), fit.SumSquares());
    if (k == 0 && IsClear(fit, points.Size())) break;
  }
  return found;
}

// Where other conics are better than the best ellipse or hyperbola, those between them, the parabolas, may be as well:
// then ellipses or hyperbolas approach the best parabola, and none is the best.
template<class Curve>
bool IsOptimum(PointBlocks& points, const PlaneBasis& axes, const Optima& optima) {
  if (!(optima.own.sumSquares < std::numeric_limits<double>::infinity())) return false;
  if (kIsParabola<Curve> || optima.own.sumSquares <= optima.other.sumSquares) return true;
  const Optima parabolas = OptimaFrom<Parabola2>(points, AlgebraicFits<Parabola2>(points, axes));
  return optima.own.sumSquares <= parabolas.own.sumSquares;
}

// The best of all optima, or the best other conic where there is none.
template<class Curve>
ConicEquation BestStart(PointBlocks& points, const PlaneBasis& axes, const ConicStarts& starts) {
  const Optima optima = OptimaFrom<Curve>(points, starts);
  return (IsOptimum<Curve>(points, axes, optima) ? optima.own : optima.other).equation;
}

// The start that the sample gives for all points, whose blocks keep their unit.
template<class Curve>
ConicStarts StartFromSample(PointView points, const Vec3& origin, const PlaneBasis& axes) {
  const std::vector<double> sample = SampleOf(points);
  PointBlocks few({sample.data(), 3 * sizeof(double), kSampleSize}, origin);
  ConicStarts starts = AlgebraicFits<Curve>(few, axes);
  if (starts.count == 0) return starts;
  starts.equation[0] = BestStart<Curve>(few, axes, starts);
  starts.count = 1;
  for (double* length : {&starts.frame.unit, &starts.frame.xMean, &starts.frame.yMean}) *length /= few.Scale();
  return starts;
}

// The tolerance is a length squared, and would be a coarse one for points within a thousandth of a unit.
template<class Curve>
GaussNewtonEnd RunFrom(const ConicEquation& start, double spread, long maxIter, ConicLeastSquares<Curve>& fit) {
  if (!fit.Start(start)) return GaussNewtonEnd::unsolvable;
  const double size = std::min(1.0, spread);
  return RunGaussNewton(fit, RuleOf(NuGetTol() * size * size, NuGetLarge(), maxIter));
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
  const PlaneBasis axes{Components(u), Components(v)};
  const PointView view = ViewOf(points);
  PointBlocks blocks(view, Components(plane.GetPoint()));
  const bool isSampled = view.Size() >= kManyPoints;
  const ConicStarts starts =
      isSampled ? StartFromSample<Curve>(view, blocks.Origin(), axes) : AlgebraicFits<Curve>(blocks, axes);
  if (starts.count == 0) FailFit(kNumericalFailure, name);
  ConicLeastSquares<Curve> fit(blocks, starts.frame);
  const double spread = starts.frame.unit / blocks.Scale();
  PlacedConic<Curve> conic;
  GaussNewtonEnd end = RunFrom(starts.equation[0], spread, maxIter, fit);
  if (!isSampled && !IsClear(fit, view.Size()))
    end = RunFrom(BestStart<Curve>(blocks, axes, starts), spread, maxIter, fit);
  if (end == GaussNewtonEnd::limitReached) FailFit(kIterationLimit, name);
  if (end == GaussNewtonEnd::unsolvable || !fit.Find(conic)) FailFit(kNumericalFailure, name);
  const Vec3 axis = Unit(conic.axis);
  const Vec3 origin = blocks.Origin() + conic.origin;
  if (!IsFinite(origin) || !IsFinite(axis)) FailFit(kNumericalFailure, name);
  const double sign = AxisSign(conic.curve, axis, -1.0 * conic.origin);
  return {conic.curve, origin, sign * axis, normal, wantsDeviations ? fit.DeviationsNow() : Deviations{}};
}

template FittedConic<Ellipse2> FitConic(const CNuPointArray&, const char*, bool, long);
template FittedConic<Hyperbola2> FitConic(const CNuPointArray&, const char*, bool, long);
template FittedConic<Parabola2> FitConic(const CNuPointArray&, const char*, bool, long);

}  // namespace nu::internal
