#include <algorithm>
#include <cmath>
#include <vector>

#include "nu/association/association.h"
#include "nu/association/internal/constrained_fits.h"
#include "nu/association/internal/parameters.h"
#include "nu/association/internal/report_details.h"
#include "nu/association/internal/sampled_fit_data.h"
#include "nu/engine/association/monte_carlo.h"
#include "nu/engine/base/floating_point.h"

// A fit again and again: without one of its contacts, or on points that are moved at random. Each time it starts from
// the optimum that is known.

using namespace nu::internal;

namespace {

void RequirePoints(const AssociationState& state, const ReportData& data, const char* where) {
  if (static_cast<std::size_t>(data.points) != state.points.Size())
    FailOperation(NuOperationSizeMismatch, "association", where);
}

bool HasRadius(ENuCriterion criterion) {
  return criterion == NuMinimumCircumscribed || criterion == NuMaximumInscribed;
}

// What the criterion makes least or largest: the sum of squares, the radius, or the width of the zone. The engine has
// half of that, of a zone on one side of the material all of it.
double ValueOf(const FittedFeature& fit, const FitProblem& problem) {
  if (fit.end != FitEnd::converged) return kQuietNaN;
  if (problem.criterion == FitCriterion::leastSquares) return fit.objective;
  if (problem.criterion != FitCriterion::zone) return fit.feature.size[0];
  return problem.side == PointSide::either ? 2.0 * fit.objective : fit.objective;
}

// The same of the report. A zone whose size is fixed reaches from the feature, or from both of its sides, as far as the
// farthest point.
double ValueOf(const ReportData& data, const FitProblem& problem) {
  if (problem.criterion == FitCriterion::leastSquares) return data.form.sumSquares;
  if (problem.criterion != FitCriterion::zone) return data.feature.size[0];
  if (!Contains(problem.fixed, OffsetOf(data.feature.kind))) return data.value;
  const double farthest = std::max(data.form.peak, data.form.valley);
  return problem.side == PointSide::either ? 2.0 * farthest : farthest;
}

struct Sampling {
  const AssociationState& state;
  const ReportData& data;
  Feature feature;  // in the frame of its parameters
  FitProblem problem;
  int count = 0;
  Unknown unknown[kUnknowns] = {};

  Sampling(const AssociationState& s, const ReportData& d)
      : state(s), data(d), feature(ParameterFeature(s, d)), problem(ProblemOf(s, d.criterion, d.feature.kind, {})) {
    count = ListUnknowns(UnknownsOf(d.feature.kind) & ~problem.fixed, unknown);
  }

  bool Run(PointView points, double* values) const {
    FitProblem moved = problem;
    moved.points = points;
    const FittedFeature fit = FitFrom(moved, feature);
    if (fit.end != FitEnd::converged) return false;
    double change[kUnknowns];
    FindChange(feature, fit.feature, change);
    for (int k = 0; k < count; ++k) values[k] = UnitOf(feature.kind, unknown[k]) * change[unknown[k]];
    values[count] = fit.feature.size[0];
    if (HasRadius(data.criterion)) return true;
    values[count] = FormOf(points, fit.feature);
    return true;
  }
};

CNuSampledFit SampledFitOf(const Sampling& sampling, int samples, const SampledValue* values) {
  const auto data = std::make_shared<SampledFitData>();
  data->samples = samples;
  data->values = sampling.count + 1;
  for (int k = 0; k < sampling.count; ++k) data->names[k] = NameOf(sampling.data.feature.kind, sampling.unknown[k]);
  data->names[sampling.count] = HasRadius(sampling.data.criterion) ? "radius" : "form";
  for (int k = 0; k < data->values; ++k) {
    data->means.Add(values[k].mean);
    data->deviations.Add(values[k].deviation);
    data->low.Add(values[k].low);
    data->high.Add(values[k].high);
  }
  return CNuSampledFit(data);
}

}  // namespace

CNuDoubleArray CNuAssociation::Sensitivity(const CNuAssociationReport& report) const {
  constexpr const char* where = "Sensitivity";
  const ReportData& data = report.Data();
  RequireDetail(data, NuDetailContacts, where);
  if (!data.contacts) FailOperation(NuOperationUnsupported, kReport, where);
  RequirePoints(*m_state, data, where);
  return WithMemory(where, [&] {
    const CNuIntArray& contacts = data.contacts->points;
    const int count = contacts.GetSize();
    const std::vector<std::size_t> index(contacts.GetData(), contacts.GetData() + count);
    std::vector<double> change(count);
    const FitProblem problem = ProblemOf(*m_state, data.criterion, data.feature.kind, {});
    std::vector<double> weights = m_state->options.weights;
    const auto refit = [&](PointView points, std::size_t left) {
      FitProblem without = problem;
      without.points = points;
      // The last point takes the place of the one that is left out.
      if (!weights.empty()) {
        weights = m_state->options.weights;
        weights[left] = weights.back();
        without.weights = weights.data();
      }
      const FittedFeature next = FitFrom(without, data.feature);
      // The optimum next to this one may vanish with the point that held it; another one takes its place.
      return ValueOf(next.end == FitEnd::converged ? next : FitNear(without, data.feature), without);
    };
    FindSensitivities(m_state->points, index.data(), count, ValueOf(data, problem), refit, change.data());
    CNuDoubleArray result(count);
    for (const double c : change) result.Add(c);
    return result;
  });
}

CNuSampledFit CNuAssociation::MonteCarlo(const CNuAssociationReport& report, double sigma, int samples,
                                         unsigned seed) const {
  constexpr const char* where = "MonteCarlo";
  constexpr int kMostSamples = 10000000;
  const ReportData& data = report.Data();
  if (data.end != NuConverged || data.details == NuDetailNone) FailOperation(NuOperationNotReported, kReport, where);
  RequirePoints(*m_state, data, where);
  const bool valid = sigma >= 0.0 && std::isfinite(sigma) && samples >= 2 && samples <= kMostSamples;
  if (!valid) FailOperation(NuOperationDomain, "association", where);
  return WithMemory(where, [&] {
    const Sampling sampling(*m_state, data);
    const MonteCarloProblem problem{
        .points = m_state->points, .sigma = {sigma, sigma, sigma}, .seed = seed, .samples = samples};
    SampledValue values[kUnknowns + 1];
    const auto fit = [&](PointView points, double* to) { return sampling.Run(points, to); };
    const int found = SampleFits(problem, sampling.count + 1, fit, values);
    return SampledFitOf(sampling, found, values);
  });
}

CNuSampledFit::CNuSampledFit(std::shared_ptr<const SampledFitData> data) : m_data(std::move(data)) {}
CNuSampledFit::CNuSampledFit(const CNuSampledFit&) = default;
CNuSampledFit& CNuSampledFit::operator=(const CNuSampledFit&) = default;
CNuSampledFit::~CNuSampledFit() = default;

int CNuSampledFit::GetNumberSamples() const {
  return m_data->samples;
}

int CNuSampledFit::GetNumberValues() const {
  return m_data->values;
}

const char* CNuSampledFit::GetName(int i) const {
  RequireIndex(i, m_data->values, "sampled fit", "GetName");
  return m_data->names[i];
}

const CNuDoubleArray& CNuSampledFit::GetMeans() const {
  return m_data->means;
}

const CNuDoubleArray& CNuSampledFit::GetStandardDeviations() const {
  return m_data->deviations;
}

const CNuDoubleArray& CNuSampledFit::GetLow() const {
  return m_data->low;
}

const CNuDoubleArray& CNuSampledFit::GetHigh() const {
  return m_data->high;
}
