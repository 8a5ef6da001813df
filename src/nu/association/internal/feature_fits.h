#ifndef NU_ASSOCIATION_INTERNAL_FEATURE_FITS_H
#define NU_ASSOCIATION_INTERNAL_FEATURE_FITS_H

#include <memory>

#include "nu/association/internal/plain_fits.h"
#include "nu/association/internal/report_details.h"
#include "nu/foundation/internal/failures.h"

// A fit of any class from its options to its report.
namespace nu::internal {

// CNuOperationException cause 45 for what the feature or the criterion does not have.
void RequireOptions(const AssociationState& state, const FeatureRules& rules, ENuCriterion criterion);

// What the fit runs into becomes its end; lack of memory passes through.
template<class Fit>
bool Converges(const Fit& fit, const char* name, ReportData* data) {
  try {
    fit();
    data->end = NuConverged;
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

// The points in the array that the plain fits read: the caller's own where there is one.
class PointsAsArray {
 public:
  explicit PointsAsArray(PointView points) : m_points(static_cast<int>(points.Size())) {
    for (std::size_t i = 0; i < points.Size(); ++i) m_points.Add(ToPoint(LoadVec3(points[i])));
  }
  const CNuPointArray& Get() const { return m_points; }

 private:
  CNuPointArray m_points;
};

template<class Class>
CNuAssociationReport FitFeature(const AssociationState& state, ENuCriterion criterion, Class* feature) {
  constexpr FeatureRules rules = kRules<Class>;
  RequireOptions(state, rules, criterion);
  return WithMemory("CNuAssociation::Fit", [&] {
    const AssociationOptions& options = state.options;
    const double tol = options.tol.value_or(NuGetLengthTol());
    const auto data = std::make_shared<ReportData>();
    data->criterion = criterion;
    data->type = rules.type;
    data->points = static_cast<int>(state.points.Size());
    data->details = options.details;
    Class found = AnyOf<Class>();
    PlainForm form;
    const bool wantsForm = (options.details & NuDetailForm) != 0;
    const auto fit = [&] {
      form = FitPlainly(PointsAsArray(state.points).Get(), criterion, tol, options.maxSteps, wantsForm, &found);
    };
    if (!Converges(fit, rules.name, data.get())) return CNuAssociationReport(data);
    if (options.details != NuDetailNone) {
      const Feature accounted = AccountedFeature(FeatureOf(found), criterion, state.points, tol);
      FillDetails(state, accounted, form, data.get());
    }
    CNuAssociationReport report(data);
    Output(feature, std::move(found));
    return report;
  });
}

}  // namespace nu::internal

#endif
