#ifndef NU_ASSOCIATION_INTERNAL_FEATURE_FITS_H
#define NU_ASSOCIATION_INTERNAL_FEATURE_FITS_H

#include <exception>
#include <memory>
#include <type_traits>

#include "nu/association/internal/constrained_fits.h"
#include "nu/association/internal/plain_fits.h"
#include "nu/association/internal/report_details.h"
#include "nu/engine/points/extents.h"
#include "nu/foundation/internal/failures.h"
#include "nu/geometry/internal/fit_guards.h"

// A fit of any class from its options to its report.
namespace nu::internal {

// CNuOperationException cause 45 for what the feature or the criterion does not have.
void RequireOptions(const AssociationState& state, const FeatureRules& rules, ENuCriterion criterion);

// The caller's monitor for the engine, which knows no exceptions: what it throws cancels the fit and comes out of it.
class Monitor {
 public:
  explicit Monitor(const AssociationOptions& options) : m_function(options.monitor), m_context(options.context) {}
  StepMonitor ForEngine() { return m_function != nullptr ? StepMonitor{GoesOn, this} : StepMonitor{}; }
  void Rethrow() const;

 private:
  static bool GoesOn(void* context, long step, double objective, double length);

  NuStepMonitor m_function;
  void* m_context;
  std::exception_ptr m_thrown;
};

struct Cancelled {};

// CNuBestfitException as the fits of the classes throw it, or Cancelled.
void RequireConverged(FitEnd end, const char* name);

// What the fit runs into becomes its end; lack of memory passes through.
template<class Fit>
bool Converges(const Fit& fit, const char* name, ReportData* data) {
  try {
    fit();
    data->end = NuConverged;
  } catch (const Cancelled&) {
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
  Class feature = AnyOf<Class>();
  PlainForm form;
};

template<class Class>
void RunPlainFit(const AssociationState& state, ENuCriterion criterion, double tol, FoundFeature<Class>* found) {
  const LengthToleranceScope scope(tol);
  const bool wantsForm = (state.options.details & NuDetailForm) != 0;
  const FitOptions options{.maxIter = state.options.maxSteps, .tol = tol, .wantsDeviations = wantsForm};
  const PlainOutcome outcome = FitPlainly(state.points, criterion, options, &found->feature);
  const bool hasForm = criterion == NuLeastSquares || criterion == NuMinimumZone;
  if (wantsForm && hasForm) found->form.form = outcome.form;
  if (wantsForm && criterion == NuLeastSquares) found->form.sumSquares = outcome.deviations.sumSquares;
}

// That of the fit without options or, where points and fixed parameters determine the feature only together, a rough
// one.
template<class Class>
Feature StartFor(const AssociationState& state, ENuCriterion criterion, double tol) {
  const AssociationOptions& options = state.options;
  if (options.start) return options.start->feature;
  const bool isTorus = std::is_same_v<Class, CNuTorSurf>;
  FoundFeature<Class> found;
  const Feature any = FeatureOf(found.feature);
  try {
    RunPlainFit(state, isTorus ? NuMinimumZone : criterion, tol, &found);
    return FeatureOf(found.feature);
  } catch (const CNuBestfitException&) {
    const bool isRough = HasRoughStart(any.kind) && options.fixed.Mask() != 0 && state.points.Size() > 0;
    if (!isRough || !ExtentsOf(state.points).isFinite) throw;
    return RoughStart(any.kind, options.fixed, state.points);
  }
}

template<class Class>
void RunConstrainedFit(const AssociationState& state, ENuCriterion criterion, double tol, const StepMonitor& monitor,
                       ReportData* data, FoundFeature<Class>* found) {
  const Feature start = StartFor<Class>(state, criterion, tol);
  const FittedFeature fit = FitConstrained(state, criterion, start, tol, monitor);
  data->steps = fit.steps;
  data->lastStep = fit.lastStep;
  RequireConverged(fit.end, kRules<Class>.name);
  Store(fit.feature, &found->feature);
  if (criterion == NuLeastSquares) found->form.sumSquares = fit.objective;
}

template<class Class>
CNuAssociationReport FitFeature(const AssociationState& state, ENuCriterion criterion, Class* feature) {
  constexpr FeatureRules rules = kRules<Class>;
  RequireOptions(state, rules, criterion);
  return WithMemory("CNuAssociation::Fit", [&] {
    const AssociationOptions& options = state.options;
    const double tol = options.tol.value_or(NuGetLengthTol());
    const bool isTorusByLeastSquares = std::is_same_v<Class, CNuTorSurf> && criterion == NuLeastSquares;
    const auto data = std::make_shared<ReportData>();
    data->criterion = criterion;
    data->type = rules.type;
    data->points = static_cast<int>(state.points.Size());
    data->details = options.details;
    Monitor monitor(options);
    FoundFeature<Class> found;
    const auto fit = [&] {
      if (IsPlain(options) && !isTorusByLeastSquares)
        RunPlainFit(state, criterion, tol, &found);
      else
        RunConstrainedFit(state, criterion, tol, monitor.ForEngine(), data.get(), &found);
    };
    const bool converged = Converges(fit, rules.name, data.get());
    monitor.Rethrow();
    if (converged && options.details != NuDetailNone) {
      const Feature accounted = AccountedFeature(FeatureOf(found.feature), criterion, state.points, tol);
      FillDetails(state, accounted, found.form, data.get());
    }
    CNuAssociationReport report(data);
    if (converged) Output(feature, std::move(found.feature));
    return report;
  });
}

}  // namespace nu::internal

#endif
