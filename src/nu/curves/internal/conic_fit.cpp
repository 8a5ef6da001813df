#include "nu/curves/internal/conic_fit.h"

#include <algorithm>

#include "nu/curves/internal/carrier_plane.h"
#include "nu/curves/internal/plane_axes.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/least_squares/conic_least_squares.h"
#include "nu/engine/least_squares/conic_start.h"
#include "nu/engine/points/point_sample.h"
#include "nu/engine/shapes/least_bend.h"

namespace nu::internal {
namespace {

constexpr int kLeastPoints = 5;

// A fit of more points than are a sample elsewhere starts from that of so many of them.
constexpr std::size_t kSampleSize = PointSample::kMostPoints / 2;

// A sample whose mean squared deviation is less than that of all points by this factor has missed points far off,
// unless both are rounding errors: those are below this part of the spread.
constexpr double kUnlike = 4.0;
constexpr double kRounding = 16.0 * kEpsilon;

// Points whose deviations are below this part of their smaller spread are clearly on one curve. Around others there may
// be several optima.
constexpr double kClear = 0.1;

// A descent that takes more steps creeps towards lines.
constexpr int kMostSteps = 100;

ConicModel ModelOf(ConicKind kind, const ConicFrame& frame, const ConicEquation& equation) {
  ConicModel model;
  model.kind = kind;
  model.frame = frame;
  model.equation = equation;
  return model;
}

// So few points as there are unknowns are on many curves.
bool IsClear(const ConicLeastSquares& fit, std::size_t size) {
  const ConicModel& model = fit.Model();
  const double spread = kClear * model.frame.unit * model.frame.flatness;
  const double freedom = static_cast<double>(size) - (model.kind == ConicKind::parabola ? 4.0 : 5.0);
  return fit.SumSquares() < freedom * spread * spread;
}

// More starts for points that are not clearly on one curve.
void AddStarts(ConicKind kind, ConicStarts& starts) {
  if (kind == ConicKind::parabola) starts.AddEven(0.0, 24);
  if (kind == ConicKind::ellipse) {
    starts.AddEven(1.0, 1);
    for (const double ratio : {0.3, 0.05}) starts.AddEven(ratio, 8);
  }
  if (kind == ConicKind::hyperbola)
    for (const double ratio : {-1.0, -0.3, -0.05}) starts.AddEven(ratio, 8);
}

// Two parallel lines are a parabola whose vertex is farther away than its numbers can tell, in units of the spread.
constexpr double kFarVertex = 1.0 / kLeastBend;
constexpr double kAnywhere = kInfinity;

bool IsNearerThan(double farthest, const ConicModel& model, const PlacedConic& conic) {
  return LargestComponent(conic.origin - model.frame.origin) < farthest * model.frame.unit;
}

struct Optimum {
  ConicEquation equation;
  double sumSquares = kInfinity;

  void TakeLess(const ConicEquation& other, double sum) {
    if (sum < sumSquares) *this = {other, sum};
  }
};

// The optima among the conics of one kind and among all others.
struct Optima {
  Optimum own;
  Optimum other;
};

// Descends from the starts: from the first one only, if that clearly finds the curve. Farther ones are others.
Optima OptimaFrom(ConicKind kind, PointBlocks& points, ConicStarts starts, double farthest) {
  Optima found;
  AddStarts(kind, starts);
  ConicLeastSquares fit(points);
  for (int k = 0; k < starts.count; ++k) {
    fit.Place(ModelOf(kind, starts.frame, starts.equation[k]));
    const bool ended = fit.Descend(kMostSteps);
    PlacedConic conic;
    const bool isOwn = ended && Place(fit.Model(), conic) && IsNearerThan(farthest, fit.Model(), conic);
    (isOwn ? found.own : found.other).TakeLess(fit.Model().equation, fit.SumSquares());
    if (k == 0 && (isOwn || farthest == kAnywhere) && IsClear(fit, points.Size())) break;
  }
  return found;
}

// Where other conics are better than the best ellipse or hyperbola, those between them, the parabolas, may be as well:
// then ellipses or hyperbolas approach the best parabola, and none is the best.
bool IsOptimum(ConicKind kind, PointBlocks& points, const PlaneAxes& axes, const Optima& optima) {
  if (!(optima.own.sumSquares < kInfinity)) return false;
  if (kind == ConicKind::parabola || optima.own.sumSquares <= optima.other.sumSquares) return true;
  const ConicKind between = ConicKind::parabola;
  const Optima parabolas = OptimaFrom(between, points, AlgebraicFits(between, points, axes), kAnywhere);
  return optima.own.sumSquares <= parabolas.own.sumSquares;
}

// The best of all optima, or the best other conic where there is none.
Optimum BestStart(ConicKind kind, PointBlocks& points, const PlaneAxes& axes, const ConicStarts& starts) {
  const Optima optima = OptimaFrom(kind, points, starts, kind == ConicKind::parabola ? kFarVertex : kAnywhere);
  return IsOptimum(kind, points, axes, optima) ? optima.own : optima.other;
}

// The start that a sample gives for all points, whose blocks keep their unit. `mostSquares` is the largest sum of
// squares of all points for which the sample stands.
ConicStarts StartFromSample(ConicKind kind, PointView points, const Vec3& origin, const PlaneAxes& axes,
                            double& mostSquares) {
  const PointSample sample(points, kSampleSize);
  PointBlocks few(sample.View(), origin);
  few.Keep();
  ConicStarts starts = AlgebraicFits(kind, few, axes);
  if (starts.count == 0) return starts;
  const Optimum best = BestStart(kind, few, axes, starts);
  starts.equation[0] = best.equation;
  starts.count = 1;
  starts.frame.unit /= few.Scale();
  const double rounding = kRounding * starts.frame.unit;
  const double meanSquare = best.sumSquares / (few.Scale() * few.Scale()) / static_cast<double>(few.Size());
  mostSquares = static_cast<double>(points.Size()) * (kUnlike * meanSquare + rounding * rounding);
  starts.frame.origin = (1.0 / few.Scale()) * starts.frame.origin;
  return starts;
}

// Points that are not clearly on one curve after so many steps need the search that follows.
constexpr int kFirstSteps = 12;

// A fit that ends at once where the sum of squares is too large, and after the first steps where it is not small.
struct BoundedFit {
  ConicLeastSquares& fit;
  double mostSquares;
  std::size_t searched;  // how many points a search follows for
  int steps = 0;

  GaussNewtonStep SolveStep() {
    GaussNewtonStep step = fit.SolveStep();
    const bool needsSearch = searched > 0 && ++steps > kFirstSteps && !IsClear(fit, searched);
    step.solvable = step.solvable && fit.SumSquares() <= mostSquares && !needsSearch;
    return step;
  }
  void TakeStep() { fit.TakeStep(); }
};

// Steps in a cloud may gain next to nothing for ever. They are watched the less long the more points each of them asks.
CreepRule CreepingOf(std::size_t points) {
  return {8, kMostSteps, points > kKeptPoints ? 2 : 4};
}

// The tolerance is a length squared, and would be a coarse one for points within a thousandth of a unit.
GaussNewtonEnd RunFrom(const ConicModel& start, const PointBlocks& points, const FitOptions& options,
                       ConicLeastSquares& fit, double mostSquares = kInfinity, std::size_t searched = 0) {
  fit.Place(start);
  BoundedFit bounded{fit, mostSquares, searched};
  const double size = std::min(1.0, start.frame.unit / points.Scale());
  long count;
  const GaussNewtonEnd end = RunGaussNewton(bounded,
                                            {.tolerance = NuGetTol() * size * size,
                                             .large = NuGetLarge(),
                                             .limit = std::min<long>(options.maxIter, kMostSteps),
                                             .takesLastStep = true,
                                             .endsAtGrowth = false,
                                             .endsBeforeLimit = true,
                                             .creeping = CreepingOf(points.Size()),
                                             .monitor = options.monitor},
                                            count);
  return end == GaussNewtonEnd::limitReached && count < options.maxIter ? GaussNewtonEnd::unsolvable : end;
}

// An ellipse takes the axis that is canonical for lines, a hyperbola the one to the side of the mean.
double AxisSign(ConicKind kind, Vec3 axis, Vec3 toMean) {
  if (kind == ConicKind::hyperbola) return Dot(axis, toMean) < 0.0 ? -1.0 : 1.0;
  if (kind == ConicKind::parabola) return 1.0;
  return Dot(CanonicalDirection(axis), axis) < 0.0 ? -1.0 : 1.0;
}

// In the unit of the points a length may overflow or vanish.
bool IsInRange(double length) {
  return length > 0.0 && std::isfinite(length);
}

FeatureFit<FittedConic> Solve(const ConicFitRule& rule, PointView points, const FitOptions& options) {
  const auto& [name, kind, leastDistinct] = rule;
  RequireCount(points, kLeastPoints, name);
  RequireDistinct(points, leastDistinct, NuGetLengthTol(), name);
  const Plane3 plane = CarrierPlane(points, name);
  const PlaneAxes axes = AxesAcross(plane.normal, plane.point);
  PointBlocks blocks(points, axes.origin);
  const bool isSampled = points.Size() > PointSample::kMostPoints;
  double most = kInfinity;
  ConicStarts starts =
      isSampled ? StartFromSample(kind, points, blocks.Origin(), axes, most) : AlgebraicFits(kind, blocks, axes);
  if (starts.count == 0) FailFit(kNumericalFailure, name);
  blocks.Keep();
  ConicLeastSquares fit(blocks);
  const std::size_t searched = isSampled ? 0 : points.Size();
  GaussNewtonEnd end = RunFrom(ModelOf(kind, starts.frame, starts.equation[0]), blocks, options, fit, most, searched);
  if (isSampled && fit.SumSquares() > most) {
    starts = AlgebraicFits(kind, blocks, axes);
    if (starts.count == 0) FailFit(kNumericalFailure, name);
    end = RunFrom(ModelOf(kind, starts.frame, starts.equation[0]), blocks, options, fit);
  }
  PlacedConic conic;
  const bool isFar =
      kind == ConicKind::parabola && Place(fit.Model(), conic) && !IsNearerThan(kFarVertex, fit.Model(), conic);
  if (!isSampled && (isFar || !IsClear(fit, points.Size()))) {
    end = RunFrom(ModelOf(kind, starts.frame, BestStart(kind, blocks, axes, starts).equation), blocks, options, fit);
  }
  RequireConverged(end, name, name);
  if (!Place(fit.Model(), conic)) FailFit(kNumericalFailure, name);
  const double scale = blocks.Scale();
  const double a = conic.a / scale;
  const double b = conic.b / scale;
  const Vec3 axis = Unit(conic.axis);
  const Vec3 shift = (1.0 / scale) * conic.origin;
  const Vec3 origin = blocks.Origin() + shift;
  const bool isInRange = IsInRange(a) && (kind == ConicKind::parabola || IsInRange(b));
  if (!isInRange || !IsFinite(origin) || !IsFinite(axis)) FailFit(kNumericalFailure, name);
  RequireBend(points, Norm(shift), name);
  const Vec3 xAxis = AxisSign(kind, axis, -1.0 * shift) * axis;
  Deviations deviations = options.wantsDeviations ? fit.DeviationsNow() : Deviations{};
  if (conic.sense < 0.0) deviations = {deviations.sumSquares, -deviations.largest, -deviations.smallest};
  return {{a, b, origin, xAxis, plane.normal}, deviations.largest - deviations.smallest, deviations};
}

}  // namespace

FeatureFit<FittedConic> FitConic(const ConicFitRule& rule, PointView points, const FitOptions& options) {
  RequireIterations(options.maxIter, rule.name);
  return TranslateForeign(rule.name, options, [&](const FitOptions& watched) { return Solve(rule, points, watched); });
}

}  // namespace nu::internal
