#include <memory>

#include "nu/association/sampled_fit.h"
#include "nu/c/internal/features.h"
#include "nu/c/internal/handles.h"
#include "nu/foundation/double_array.h"
#include "nu/foundation/int_array.h"
#include "nu/foundation/internal/failures.h"

using namespace nu::internal;
using namespace nu::internal::c;

namespace {

ENuBoolean CallMonitor(void* context, long step, double objective, double stepLength) {
  const auto* association = static_cast<const nu_association*>(context);
  const std::int32_t goesOn = association->monitor(association->context, step, objective, stepLength);
  return goesOn != 0 ? NuTrue : NuFalse;
}

// The array of the classes; T is the type of its elements.
template<class Array, class T>
Array ArrayOf(const T* values, std::int32_t count) {
  Require(count >= 0, "count is negative");
  Require(values != nullptr || count == 0, "the array is null");
  Array array(count);
  for (std::int32_t i = 0; i < count; ++i) array.Add(values[i]);
  return array;
}

// Stores the feature of a fit that converged, and the report where it is wanted; without it any other end is a failure.
template<class Class>
void Deliver(const CNuAssociationReport& report, const Class& found, nu_feature* feature, nu_report** to) {
  if (to == nullptr) report.Require();
  std::unique_ptr<nu_report> made;
  if (to != nullptr) made = std::make_unique<nu_report>(nu_report{{}, report});
  if (report.HasConverged() != NuFalse) *feature = ToFeature(found);
  if (to != nullptr) *to = made.release();
}

void Fix(CNuAssociation& fits, std::int32_t parameter, const double* value) {
  Require(value != nullptr, "value is null");
  switch (parameter) {
    case NU_PARAMETER_RADIUS:
      return fits.FixRadius(*value);
    case NU_PARAMETER_MAJOR_RADIUS:
      return fits.FixMajorRadius(*value);
    case NU_PARAMETER_SEMI_ANGLE:
      return fits.FixSemiAngle(*value);
    case NU_PARAMETER_DIRECTION:
      return fits.FixDirection(CNuVector(value[0], value[1], value[2]));
    case NU_PARAMETER_POINT:
      return fits.FixPoint(CNuPoint(value[0], value[1], value[2]));
    default:
      RefuseArgument("there is no such parameter");
  }
}

void Release(CNuAssociation& fits, std::int32_t parameter) {
  switch (parameter) {
    case NU_PARAMETER_RADIUS:
      return fits.ReleaseRadius();
    case NU_PARAMETER_MAJOR_RADIUS:
      return fits.ReleaseMajorRadius();
    case NU_PARAMETER_SEMI_ANGLE:
      return fits.ReleaseSemiAngle();
    case NU_PARAMETER_DIRECTION:
      return fits.ReleaseDirection();
    case NU_PARAMETER_POINT:
      return fits.ReleasePoint();
    default:
      RefuseArgument("there is no such parameter");
  }
}

}  // namespace

nu_status nu_association_create(const double* xyz, int32_t count, int32_t stride, nu_association** association) {
  return Create(association, [&] {
    RequirePoints(xyz, count, stride);
    return nu_association{{}, CNuAssociation(xyz, count, stride)};
  });
}

void nu_association_free(nu_association* association) {
  Free(association);
}

nu_status nu_association_count(const nu_association* association, int32_t* count) {
  return Give(count, "count is null", [&] { return Deref(association).fits.GetNumberPoints(); });
}

nu_status nu_association_add(nu_association* association, const double* xyz, int32_t count, int32_t stride) {
  return Guarded([&] {
    CNuAssociation& fits = Deref(association).fits;
    RequirePoints(xyz, count, stride);
    fits.Add(xyz, count, stride);
  });
}

nu_status nu_association_remove(nu_association* association, const int32_t* indices, int32_t count) {
  return Guarded([&] { Deref(association).fits.Remove(ArrayOf<CNuIntArray>(indices, count)); });
}

nu_status nu_association_merge(nu_association* association, const nu_association* other) {
  return Guarded([&] { Deref(association).fits.Merge(Deref(other).fits); });
}

nu_status nu_association_set_weights(nu_association* association, const double* weights, int32_t count) {
  return Guarded([&] {
    CNuAssociation& fits = Deref(association).fits;
    if (weights == nullptr && count == 0) return fits.ReleaseWeights();
    fits.SetWeights(ArrayOf<CNuDoubleArray>(weights, count));
  });
}

nu_status nu_association_fix(nu_association* association, int32_t parameter, const double* value) {
  return Guarded([&] { Fix(Deref(association).fits, parameter, value); });
}

nu_status nu_association_release(nu_association* association, int32_t parameter) {
  return Guarded([&] { Release(Deref(association).fits, parameter); });
}

nu_status nu_association_set_side(nu_association* association, int32_t side) {
  return Guarded([&] { Deref(association).fits.RestrictToMaterialSide(static_cast<ENuMaterialSide>(side)); });
}

nu_status nu_association_set_start(nu_association* association, const nu_feature* start) {
  return Guarded([&] {
    CNuAssociation& fits = Deref(association).fits;
    if (start == nullptr) return fits.ReleaseStart();
    const auto from = [&](const auto& feature) {
      if constexpr (requires { fits.StartFrom(feature); })
        fits.StartFrom(feature);
      else
        RefuseArgument("no fit starts from a point");
    };
    std::visit(from, ClassOf(start));
  });
}

nu_status nu_association_set_max_steps(nu_association* association, int32_t steps) {
  return Guarded([&] { Deref(association).fits.SetMaxSteps(steps); });
}

nu_status nu_association_set_tolerance(nu_association* association, double tolerance) {
  return Guarded([&] { Deref(association).fits.SetTolerance(tolerance); });
}

nu_status nu_association_set_monitor(nu_association* association, nu_monitor monitor, void* context) {
  return Guarded([&] {
    nu_association& of = Deref(association);
    of.monitor = monitor;
    of.context = context;
    of.fits.SetMonitor(monitor != nullptr ? CallMonitor : nullptr, association);
  });
}

nu_status nu_association_set_details(nu_association* association, int32_t details) {
  return Guarded([&] { Deref(association).fits.SetDetails(details); });
}

nu_status nu_association_fit(const nu_association* association, int32_t criterion, nu_feature* feature,
                             nu_report** report) {
  Output(report, nullptr);
  return Guarded([&] {
    const CNuAssociation& fits = Deref(association).fits;
    Require(feature != nullptr, "the feature is null");
    VisitToFit(feature->kind, [&](auto& found) {
      Deliver(fits.Fit(static_cast<ENuCriterion>(criterion), &found), found, feature, report);
    });
  });
}

nu_status nu_association_refit(const nu_association* association, int32_t criterion, nu_feature* feature,
                               nu_report** report) {
  Output(report, nullptr);
  return Guarded([&] {
    const CNuAssociation& fits = Deref(association).fits;
    AnyClass any = ClassOf(feature);
    const auto refit = [&](auto& found) {
      if constexpr (requires { fits.Refit(NuLeastSquares, &found); })
        Deliver(fits.Refit(static_cast<ENuCriterion>(criterion), &found), found, feature, report);
      else
        RefuseArgument("no feature of this kind can be fitted");
    };
    std::visit(refit, any);
  });
}

nu_status nu_association_prove(const nu_association* association, int32_t criterion, int32_t budget,
                               nu_feature* feature, nu_report** report) {
  Output(report, nullptr);
  return Guarded([&] {
    const CNuAssociation& fits = Deref(association).fits;
    Require(feature != nullptr, "the feature is null");
    VisitToFit(feature->kind, [&](auto& found) {
      if constexpr (requires { fits.ProveGlobally(NuLeastSquares, &found, 1L); })
        Deliver(fits.ProveGlobally(static_cast<ENuCriterion>(criterion), &found, budget), found, feature, report);
      else
        FailOperation(NuOperationUnsupported, "association", "ProveGlobally");
    });
  });
}

nu_status nu_association_sensitivity(const nu_association* association, const nu_report* report, double* values,
                                     int32_t capacity, int32_t* count) {
  return Guarded([&] {
    const CNuDoubleArray changes = Deref(association).fits.Sensitivity(Deref(report).report);
    Fill(values, capacity, changes.GetSize(), count, [&](int i) { return changes[i]; });
  });
}

nu_status nu_association_sample(const nu_association* association, const nu_report* report, double sigma,
                                int32_t samples, uint32_t seed, nu_spread* values, int32_t capacity, int32_t* count,
                                int32_t* made) {
  return Guarded([&] {
    const CNuSampledFit sampled = Deref(association).fits.MonteCarlo(Deref(report).report, sigma, samples, seed);
    Fill(values, capacity, sampled.GetNumberValues(), count, [&](int i) {
      return nu_spread{sampled.GetName(i), sampled.GetMeans()[i], sampled.GetStandardDeviations()[i],
                       sampled.GetLow()[i], sampled.GetHigh()[i]};
    });
    Output(made, sampled.GetNumberSamples());
  });
}
