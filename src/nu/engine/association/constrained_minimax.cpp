// Zones, circumscribed and inscribed features as problems of the minimax driver, over the unknowns that are free.
//
// A zone with all points on one side asks for the least t with 0 <= e <= t. Where one of the unknowns moves all
// deviations alike, that is the free zone, shifted. Otherwise let v(t) be the least largest |e - t / 2|: the least t is
// the root of f(t) = v(t) - t / 2, which falls, and whose derivative is minus the sum of the multipliers of the points
// at e = t. Newton's method finds it.

#include <memory>

#include "nu/engine/association/scaled_fit.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/minimax/minimax.h"
#include "nu/engine/minimax/with_offset.h"

namespace nu::engine::association {
namespace {

constexpr int kMostLevels = 40;
// So little of the multipliers at the level t means that no t is enough.
constexpr double kLeastShare = 1e-9;
constexpr double kNoise = 4.0;

// A feature as a model of minimax.h. An unknown beyond those that are free moves nothing, and is bent so that it stays.
template<int K>
struct FreeFeature {
  static constexpr int kUnknowns = K;
  static constexpr int kStrata = kFeatureParts;

  Feature feature;
  const FreeUnknowns* free = nullptr;
  double extent = 1.0;
  double level = 0.0;  // taken off the deviations

  void Deviations(const PointBlock& block, double* deviation, double& smallest, double& largest) const {
    DeviationsOf(feature, block, deviation, smallest, largest);
    if (level == 0.0) return;
    smallest -= level;
    largest -= level;
    for (std::size_t i = 0; i < block.size; ++i) deviation[i] -= level;
  }

  void Gradients(const PointBlock& block, double* deviation, double (*gradient)[kMostRows]) const {
    double smallest, largest;
    Deviations(block, deviation, smallest, largest);
    for (std::size_t i = 0; i < block.size; ++i) {
      double first[association::kUnknowns];
      DeviationOf(feature, block.At(i), first);
      for (int k = 0; k < K; ++k) gradient[k][i] = k < free->count ? free->unit[k] * first[free->at[k]] : 0.0;
    }
  }

  void AddCurvature(const Vec3& point, double weight, double (&sum)[K][K]) const {
    double second[association::kUnknowns][association::kUnknowns] = {};
    association::AddCurvature(feature, point, weight, second);
    for (int i = 0; i < free->count; ++i)
      for (int j = 0; j < free->count; ++j)
        sum[i][j] += free->unit[i] * free->unit[j] * second[free->at[i]][free->at[j]];
    for (int k = free->count; k < K; ++k) sum[k][k] += std::fabs(weight) / extent;
  }

  FreeFeature Moved(const double (&step)[K]) const { return {free->Moved(feature, step), free, extent, level}; }

  int Stratum(const Vec3& point) const { return PartOf(feature, extent, point); }
};

FitEnd EndOf(MinimaxEnd end) {
  if (end == MinimaxEnd::converged) return FitEnd::converged;
  if (end == MinimaxEnd::cancelled) return FitEnd::cancelled;
  return end == MinimaxEnd::limitReached ? FitEnd::limitReached : FitEnd::noOptimum;
}

template<class Model>
const Feature& FeatureOf(const Model& model) {
  if constexpr (requires { model.feature; })
    return model.feature;
  else
    return model.model.feature;
}

template<class Model>
FittedFeature ResultOf(const MinimaxSolution<Model>& found) {
  FittedFeature result;
  result.end = EndOf(found.end);
  result.feature = FeatureOf(found.model);
  result.steps = found.steps;
  result.objective = found.value;
  result.contacts = found;
  return result;
}

double OuterShare(const Contacts& contacts, double sign) {
  double share = 0.0;
  for (int k = 0; k < contacts.contacts; ++k)
    if (contacts.sign[k] == sign) share += contacts.multiplier[k];
  return share;
}

template<int K>
FittedFeature FitOneSided(const ScaledFit& fit, const FreeUnknowns& free, const Feature& start) {
  const double sign = fit.Sign();
  const auto minimax = std::make_unique<Minimax<FreeFeature<K>>>(fit.points, MinimaxSide::both, fit.rounding,
                                                                 fit.problem.mostSteps, fit.monitor);
  FreeFeature<K> model{start, &free, fit.extent, 0.0};
  FittedFeature result;
  double width = 0.0;
  long steps = 0;
  for (int k = 0; k < kMostLevels; ++k) {
    model.level = 0.5 * sign * width;
    const auto found = minimax->Solve(model);
    steps += found.steps;
    result = ResultOf(found);
    result.steps = steps;
    if (result.end != FitEnd::converged) return result;
    const double missing = found.value - 0.5 * width;
    result.objective = width;
    if (std::fabs(missing) <= kNoise * fit.rounding) return result;
    const double share = OuterShare(found, sign);
    if (!(share > kLeastShare)) break;
    model = found.model;
    width += missing / share;
  }
  result.end = FitEnd::noOptimum;
  return result;
}

template<int K>
FittedFeature FitWith(const ScaledFit& fit, const FreeUnknowns& free, const Feature& start, MinimaxSide side) {
  if (fit.problem.side != PointSide::either) return FitOneSided<K>(fit, free, start);
  const auto minimax =
      std::make_unique<Minimax<FreeFeature<K>>>(fit.points, side, fit.rounding, fit.problem.mostSteps, fit.monitor);
  return ResultOf(minimax->Solve({start, &free, fit.extent, 0.0}));
}

// The zone between the extreme deviations from both nappes, which no size of the cone shifts.
FittedFeature FitNappes(const ScaledFit& fit, const FreeUnknowns& free, const Feature& start) {
  using Model = WithOffset<FreeFeature<6>>;
  const auto minimax =
      std::make_unique<Minimax<Model>>(fit.points, MinimaxSide::both, fit.rounding, fit.problem.mostSteps, fit.monitor);
  return ResultOf(minimax->Solve({{start, &free, fit.extent, 0.0}, 0.0}));
}

// Nothing is free: the extreme point decides.
FittedFeature FitWithout(const ScaledFit& fit, const Feature& start, MinimaxSide side) {
  const bool oneSided = fit.problem.side != PointSide::either;
  double deviation[kBlockPoints];
  double value = -kInfinity;
  double beyond = 0.0;
  Vec3 point;
  double pointSign = 1.0;
  fit.points.ForEach([&](const PointBlock& block) {
    double low, high;
    DeviationsOf(start, block, deviation, low, high);
    for (std::size_t i = 0; i < block.size; ++i) {
      const double e = fit.Sign() * deviation[i];
      if (oneSided) beyond = std::max(beyond, -e);
      const bool inside = !oneSided && (side == MinimaxSide::inner || (side == MinimaxSide::both && e < 0.0));
      const double extreme = inside ? -e : e;
      if (!(extreme > value)) continue;
      value = extreme;
      point = block.At(i);
      pointSign = inside ? -fit.Sign() : fit.Sign();
    }
  });
  FittedFeature result;
  result.feature = start;
  result.objective = value;
  const bool found = std::isfinite(value) && !(beyond > kNoise * fit.rounding);
  result.end = found ? FitEnd::converged : FitEnd::noOptimum;
  if (found) result.contacts.AddContact(point, pointSign, 1.0);
  return result;
}

FittedFeature FitSides(const ScaledFit& fit, const FreeUnknowns& free, const Feature& start, MinimaxSide side) {
  if (start.bothNappes && fit.problem.side == PointSide::either) return FitNappes(fit, free, start);
  switch (free.count) {
    case 0:
      return FitWithout(fit, start, side);
    case 1:
    case 2:
      return FitWith<2>(fit, free, start, side);
    case 3:
      return FitWith<3>(fit, free, start, side);
    case 4:
      return FitWith<4>(fit, free, start, side);
    case 5:
      return FitWith<5>(fit, free, start, side);
    case 6:
      return FitWith<6>(fit, free, start, side);
    default:
      return FitWith<7>(fit, free, start, side);
  }
}

// Takes `by` off all deviations.
Feature Shifted(const Feature& feature, double by) {
  double step[::nu::engine::association::kUnknowns] = {};
  step[OffsetOf(feature.kind)] = feature.kind == FeatureKind::cone ? by / Cos(feature.size[1]) : by;
  return Moved(feature, step);
}

FittedFeature FitZone(const ScaledFit& fit, const Feature& start) {
  const UnknownMask mask = fit.Free(start);
  const FreeUnknowns free(start.kind, mask, fit.extent);
  const bool isShifted =
      fit.problem.side != PointSide::either && Contains(mask, OffsetOf(start.kind)) && !start.bothNappes;
  if (!isShifted) return FitSides(fit, free, start, MinimaxSide::both);
  FitProblem both = fit.problem;
  both.side = PointSide::either;
  FittedFeature result = FitSides({both, fit.points, fit.extent, fit.rounding, fit.tolerance, fit.monitor}, free, start,
                                  MinimaxSide::both);
  result.feature = Shifted(result.feature, -fit.Sign() * result.objective);
  result.objective *= 2.0;
  return result;
}

}  // namespace

// The distances from the centre or the axis are the deviations of the same feature without a size.
FittedFeature FitMinimax(const ScaledFit& fit, const Feature& start) {
  if (fit.problem.criterion == FitCriterion::zone) return FitZone(fit, start);
  const bool isInner = fit.problem.criterion == FitCriterion::inscribed;
  const FreeUnknowns free(start.kind, fit.Free(start) & ~Bits({kSize0}), fit.extent);
  Feature centre = start;
  centre.size[0] = 0.0;
  FittedFeature result = FitSides(fit, free, centre, isInner ? MinimaxSide::inner : MinimaxSide::outer);
  if (isInner) result.objective = -result.objective;
  // Held between points it is smaller than their extent: this one goes out from among them.
  if (isInner && result.objective > fit.extent) result.end = FitEnd::noOptimum;
  result.feature.size[0] = result.objective;
  return result;
}

}  // namespace nu::engine::association
