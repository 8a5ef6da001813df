#ifndef NU_ASSOCIATION_INTERNAL_FEATURE_FITS_H
#define NU_ASSOCIATION_INTERNAL_FEATURE_FITS_H

#include <exception>
#include <memory>
#include <optional>
#include <type_traits>

#include "nu/association/internal/constrained_fits.h"
#include "nu/association/internal/explanation.h"
#include "nu/association/internal/plain_fits.h"
#include "nu/association/internal/report_details.h"
#include "nu/engine/association/global_bound.h"
#include "nu/engine/points/extents.h"
#include "nu/foundation/internal/failures.h"
#include "nu/geometry/internal/fit_guards.h"

// A fit of any class from its options to its report.
namespace nu::internal {

// CNuOperationException as CNuAssociation::ProveGlobally promises.
void RequireProof(const AssociationState& state, ENuCriterion criterion, long budget);
// The bound, with a feature in the frame of the points; of one of a kind without a bound it is 0.
GlobalBound BoundOf(const AssociationState& state, ENuCriterion criterion, const Feature& known,
                    const BoundLimits& limits);

// Fits without options whose result is the optimum of all, by the proof behind their method.
bool IsGlobalBySolver(FeatureKind kind, int details, ENuCriterion criterion);

// CNuOperationException cause 45 for what the feature or the criterion does not have.
void RequireOptions(const AssociationState& state, const FeatureRules& rules, ENuCriterion criterion);

// The steps of a fit on their way to the caller's monitor. The engine knows no exceptions of callbacks: what the
// monitor throws cancels the fit and comes out of it.
class Monitor {
 public:
  // One that counts gives the steps of all starts of a fit numbers of their own; another one passes on what it is told.
  Monitor(const AssociationOptions& options, bool counts)
      : m_function(options.monitor), m_context(options.context), m_counts(counts) {}
  StepMonitor ForEngine() { return {GoesOn, this}; }
  void Rethrow() const;
  long Steps() const { return m_steps; }
  double LastStep() const { return m_lastStep; }

 private:
  static bool GoesOn(void* context, long step, double objective, double length);

  NuStepMonitor m_function;
  void* m_context;
  bool m_counts;
  long m_steps = 0;
  double m_lastStep = 0.0;
  std::exception_ptr m_thrown;
};

// CNuBestfitException as the fits of the classes throw it, or FitCancelled.
void RequireConverged(FitEnd end, const char* name);

// Cause 11 for a feature whose size or apex is so far beyond the points that its numbers, once they are rounded, give
// another form; as the plain fits have it. A radius that is fixed is as the caller has it.
void RequireBend(const AssociationState& state, const Feature& found, const char* name);

// What the fit runs into becomes its end; lack of memory passes through.
template<class Fit>
bool Converges(const Fit& fit, const char* name, ReportData* data) {
  try {
    fit();
    data->end = NuConverged;
  } catch (const FitCancelled&) {
    data->end = NuCancelled;
  } catch (const CNuBestfitException& failure) {
    data->failure = failure;
    data->end = failure.GetCause() == NuBestfitIterationLimit ? NuLimitReached : NuNoOptimum;
  } catch (const CNuOperationException& failure) {
    data->failure = failure;
  } catch (const CNuConstructionException&) {
    data->failure = CNuBestfitException(NuBestfitNumericalFailure, name, 0);
  }
  return data->end == NuConverged;
}

inline bool IsPlain(const AssociationOptions& options) {
  return options.weights.empty() && options.fixed.Mask() == 0 && options.side == NuEitherSide && !options.start;
}

template<class Class>
struct FoundFeature {
  // As its deviations count.
  Feature AsFound() const {
    Feature found = FeatureOf(feature);
    found.bothNappes = bothNappes;
    return found;
  }
  // As deviations from it count, by this criterion.
  Feature AsAccounted(ENuCriterion criterion, PointView points, double tol) const {
    if (!isInSpace) return AccountedFeature(AsFound(), criterion, points, tol);
    Feature found = AsFound();
    if (*isInSpace) found.kind = FeatureKind::circleInSpace;
    return found;
  }

  Class feature = AnyOf<Class>();
  PlainForm form;
  bool bothNappes = false;        // of a cone, which does not say by itself how its fit has counted the points
  std::optional<bool> isInSpace;  // of the zone of a circle, where its fit has found out
};

// Its class has no such fit; the one for constrained features starts on its own.
template<class Class>
constexpr bool IsTorusByLeastSquares(ENuCriterion criterion) {
  return std::is_same_v<Class, CNuTorSurf> && criterion == NuLeastSquares;
}
inline constexpr int kLeastPointsOfTorus = 7;  // as many as it has parameters

template<class Class>
void RunPlainFit(const AssociationState& state, ENuCriterion criterion, double tol, const StepMonitor& monitor,
                 FoundFeature<Class>* found) {
  const LengthToleranceScope scope(tol);
  const bool wantsForm = (state.options.details & NuDetailForm) != 0;
  const FitOptions options{
      .maxIter = state.options.maxSteps, .tol = tol, .wantsDeviations = wantsForm, .monitor = monitor};
  const PlainOutcome outcome = FitPlainly(state.points, criterion, options, &found->feature);
  found->bothNappes = outcome.bothNappes;
  if (std::is_same_v<Class, CNuCircle> && criterion == NuMinimumZone) found->isInSpace = outcome.isInSpace;
  const bool hasForm = criterion == NuLeastSquares || criterion == NuMinimumZone;
  if (wantsForm && hasForm) found->form.form = outcome.form;
  if (!wantsForm || criterion != NuLeastSquares) return;
  found->form.sumSquares = outcome.deviations.sumSquares;
  found->form.extremes = outcome.deviations;
}

// That of the fit without options or, where points and fixed parameters determine the feature only together, a rough
// one.
template<class Class>
Feature StartFor(const AssociationState& state, ENuCriterion criterion, double tol) {
  const AssociationOptions& options = state.options;
  if (options.start) return WithNappes(options.start->feature, state.points);
  FoundFeature<Class> found;
  const Feature any = FeatureOf(found.feature);
  if (IsTorusByLeastSquares<Class>(criterion)) return RoughStart(any.kind, options.fixed, state.points);
  try {
    RunPlainFit(state, criterion, tol, {}, &found);
    return found.AsFound();
  } catch (const CNuBestfitException&) {
    const bool isRough = HasRoughStart(any.kind) && options.fixed.Mask() != 0 && state.points.Size() > 0;
    if (!isRough || !ExtentsOf(state.points).isFinite) throw;
    return RoughStart(any.kind, options.fixed, state.points);
  }
}

template<class Class>
void RunConstrainedFit(const AssociationState& state, ENuCriterion criterion, double tol, const StepMonitor& monitor,
                       FoundFeature<Class>* found) {
  constexpr FeatureRules rules = kRules<Class>;
  RequireCount(state.points, IsTorusByLeastSquares<Class>(criterion) ? kLeastPointsOfTorus : 1, rules.name);
  const Feature start = StartFor<Class>(state, criterion, tol);
  const FittedFeature fit = FitConstrained(state, criterion, start, tol, monitor);
  RequireConverged(fit.end, rules.name);
  RequireBend(state, fit.feature, rules.name);
  Store(fit.feature, &found->feature);
  found->bothNappes = fit.feature.bothNappes;
  if (criterion == NuLeastSquares) found->form.sumSquares = fit.objective;
}

inline double LengthTolOf(const AssociationOptions& options) {
  return options.tol.value_or(NuGetLengthTol());
}

template<class Class>
void Account(const AssociationState& state, double tol, const FoundFeature<Class>& found, ReportData* data) {
  if (data->details == NuDetailNone) return;
  Feature feature = found.AsAccounted(data->criterion, state.points, tol);
  if (feature.kind == FeatureKind::circleInSpace && state.options.side != NuEitherSide)
    feature.kind = FeatureKind::circle;
  FillDetails(state, feature, found.form, data);
}

// Fits into `found` and tells how it ended.
template<class Class>
std::shared_ptr<ReportData> FitInto(const AssociationState& state, ENuCriterion criterion, FoundFeature<Class>* found) {
  constexpr FeatureRules rules = kRules<Class>;
  const AssociationOptions& options = state.options;
  const double tol = LengthTolOf(options);
  const bool isPlain = IsPlain(options) && !IsTorusByLeastSquares<Class>(criterion);
  auto data = std::make_shared<ReportData>();
  data->criterion = criterion;
  data->type = rules.type;
  data->points = static_cast<int>(state.points.Size());
  data->details = options.details;
  data->fixed = options.fixed;
  Monitor monitor(options, true);
  const auto fit = [&] {
    if (isPlain)
      RunPlainFit(state, criterion, tol, monitor.ForEngine(), found);
    else
      RunConstrainedFit(state, criterion, tol, monitor.ForEngine(), found);
  };
  const bool converged = Converges(fit, rules.name, data.get());
  monitor.Rethrow();
  data->steps = monitor.Steps();
  data->lastStep = monitor.LastStep();
  if (converged) Account(state, tol, *found, data.get());
  if (converged && isPlain) data->isGlobal = IsGlobalBySolver(data->feature.kind, data->details, criterion);
  if (!converged) ExplainFailure(state, tol, data.get());
  return data;
}

template<class Class>
CNuAssociationReport Delivered(std::shared_ptr<ReportData> data, FoundFeature<Class>& found, Class* feature) {
  CNuAssociationReport report(std::move(data));
  if (report.HasConverged() == NuTrue) Output(feature, std::move(found.feature));
  return report;
}

template<class Class>
CNuAssociationReport FitFeature(const AssociationState& state, ENuCriterion criterion, Class* feature) {
  RequireOptions(state, kRules<Class>, criterion);
  return WithMemory("CNuAssociation::Fit", [&] {
    FoundFeature<Class> found;
    auto data = FitInto(state, criterion, &found);
    return Delivered(std::move(data), found, feature);
  });
}

// A start that leads nowhere is no failure: the fit without it may have one.
template<class Class>
CNuAssociationReport RefitFeature(const AssociationState& state, ENuCriterion criterion, Class* feature) {
  RequireOptions(state, kRules<Class>, criterion);
  if (feature == nullptr) return FitFeature(state, criterion, feature);
  return WithMemory("CNuAssociation::Refit", [&] {
    AssociationState warm(state);
    warm.options.start = StartFeature{kRules<Class>.type, FeatureOf(*feature)};
    FoundFeature<Class> found;
    auto data = FitInto(warm, criterion, &found);
    const bool isDone = data->end == NuConverged || data->end == NuCancelled;
    return isDone ? Delivered(std::move(data), found, feature) : FitFeature(state, criterion, feature);
  });
}

// A better feature as its class keeps it. An apex too far away for its digits spoils a cone: one that is not better
// then is left alone.
template<class Class>
void TakeBetter(const AssociationState& state, const Feature& known, const GlobalBound& bound,
                FoundFeature<Class>* found, ReportData* data) {
  const double tol = LengthTolOf(state.options);
  const bool isTorus = kRules<Class>.type == CNuObject::NuTypeTorSurf;
  const Feature better = isTorus ? AsTube(bound.feature, 0.5 * bound.best) : bound.feature;
  FoundFeature<Class> taken;
  Store(WithCanonicalSense(better), &taken.feature);
  taken.bothNappes = better.bothNappes;
  if (known.kind == FeatureKind::cone) {
    const double before = FormOf(state.points, known);
    data->value = FormOf(state.points, taken.AsFound());
    data->isGlobal = bound.proven && data->value < before;
    if (!(data->value < before)) {
      data->value = before;
      return;
    }
  }
  *found = std::move(taken);
  const double value = data->value;
  Account(state, tol, *found, data);
  data->value = value;
}

template<class Class>
CNuAssociationReport ProveFeature(const AssociationState& state, ENuCriterion criterion, long budget, Class* feature) {
  constexpr FeatureRules rules = kRules<Class>;
  RequireOptions(state, rules, criterion);
  RequireProof(state, criterion, budget);
  return WithMemory("CNuAssociation::ProveGlobally", [&] {
    FoundFeature<Class> found;
    auto data = FitInto(state, criterion, &found);
    if (data->end != NuConverged) return CNuAssociationReport(std::move(data));
    const double tol = LengthTolOf(state.options);
    const Feature known = AccountedFeature(found.AsFound(), criterion, state.points, tol);
    Monitor monitor(state.options, false);
    const GlobalBound bound = BoundOf(state, criterion, known, {.boxes = budget, .monitor = monitor.ForEngine()});
    monitor.Rethrow();
    data->value = bound.best;
    data->bound = bound.bound;
    if (bound.cancelled) {
      data->end = NuCancelled;
      ExplainFailure(state, tol, data.get());
      return CNuAssociationReport(std::move(data));
    }
    data->isGlobal = bound.proven;
    if (bound.improved) TakeBetter(state, known, bound, &found, data.get());
    return Delivered(std::move(data), found, feature);
  });
}

}  // namespace nu::internal

#endif
