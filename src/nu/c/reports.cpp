#include <cstring>

#include "nu/association/certificate.h"
#include "nu/c/internal/features.h"
#include "nu/c/internal/handles.h"
#include "nu/foundation/internal/failures.h"
#include "nu/linalg/matrix.h"

using namespace nu::internal;
using namespace nu::internal::c;

namespace {

nu_verdict VerdictOf(const CNuCertificate& certificate, const double* xyz, std::int32_t count, std::int32_t stride,
                     const nu_feature* feature, double length) {
  RequirePoints(xyz, count, stride);
  const auto check = [&]<class Class>(const Class& of) -> CNuCertificateVerdict {
    if constexpr (std::is_base_of_v<CNuGeometry, Class>)
      return certificate.Check(xyz, count, stride, of, length);
    else
      FailOperation(NuOperationUnsupported, "certificate", "CNuCertificate::Check");
  };
  const CNuCertificateVerdict verdict = std::visit(check, ClassOf(feature));
  return {verdict.GetFailedCheck(),  verdict.IsGlobal() != NuFalse ? 1 : 0,
          verdict.GetGap(),          verdict.GetRadius(),
          verdict.GetValue(),        verdict.GetExcess(),
          verdict.GetContactError(), verdict.GetMultiplierSum(),
          verdict.GetBalance(),      verdict.GetGrowth(),
          verdict.GetCurvature()};
}

}  // namespace

void nu_report_free(nu_report* report) {
  Free(report);
}

nu_status nu_report_get(const nu_report* report, nu_summary* summary) {
  return Give(summary, "summary is null", [&] {
    const CNuAssociationReport& from = Deref(report).report;
    return nu_summary{from.GetFeatureType(), from.GetCriterion(), from.GetDetails(), from.GetNumberPoints(),
                      from.GetEnd(),         from.GetCause(),     from.GetSteps(),   from.GetLastStep()};
  });
}

nu_status nu_report_require(const nu_report* report) {
  return Guarded([&] { Deref(report).report.Require(); });
}

nu_status nu_report_form(const nu_report* report, nu_form* form) {
  return Give(form, "form is null", [&] { return FormOf(Deref(report).report); });
}

nu_status nu_report_deviations(const nu_report* report, double* values, int32_t capacity, int32_t* count,
                               int32_t* highest, int32_t* lowest) {
  return Guarded([&] {
    const CNuAssociationReport& from = Deref(report).report;
    const CNuDoubleArray& deviations = from.GetDeviations();
    Fill(values, capacity, deviations.GetSize(), count, [&](int i) { return deviations[i]; });
    Output(highest, from.GetHighestPoint());
    Output(lowest, from.GetLowestPoint());
  });
}

nu_status nu_report_contacts(const nu_report* report, nu_contact* contacts, int32_t capacity, int32_t* count) {
  return Guarded([&] {
    const CNuAssociationReport& from = Deref(report).report;
    Fill(contacts, capacity, from.GetNumberContacts(), count, [&](int i) {
      return nu_contact{from.GetContactPoints()[i], from.GetContactSides()[i], from.GetMultipliers()[i]};
    });
  });
}

nu_status nu_report_uncertainty(const nu_report* report, nu_uncertainty* uncertainty) {
  return Give(uncertainty, "uncertainty is null", [&] {
    const CNuAssociationReport& from = Deref(report).report;
    return nu_uncertainty{from.GetNumberParameters(), from.GetDegreesOfFreedom(), from.GetStandardDeviation(),
                          from.GetCondition()};
  });
}

nu_status nu_report_parameter(const nu_report* report, int32_t i, nu_parameter* parameter) {
  return Give(parameter, "parameter is null", [&] {
    const CNuAssociationReport& from = Deref(report).report;
    const std::int32_t isAngle = from.IsParameterAngle(i) != NuFalse ? 1 : 0;
    return nu_parameter{from.GetParameterName(i), isAngle, 0, from.GetStandardUncertainty(i)};
  });
}

nu_status nu_report_frame(const nu_report* report, double* origin, double* x, double* y, double* z) {
  return Guarded([&] {
    CNuPoint o;
    CNuVector u, v, w;
    Deref(report).report.GetParameterFrame(&o, &u, &v, &w);
    Write(o, origin);
    Write(u, x);
    Write(v, y);
    Write(w, z);
  });
}

nu_status nu_report_covariance(const nu_report* report, double* values, int32_t capacity, int32_t* count) {
  return Guarded([&] {
    const CNuMatrix matrix = Deref(report).report.GetCovariance();
    const int columns = matrix.GetColumnSize();
    Fill(values, capacity, matrix.GetRowSize() * columns, count,
         [&](int i) { return matrix.Element(i / columns, i % columns); });
  });
}

nu_status nu_report_axis_uncertainty(const nu_report* report, double height, double* uncertainty) {
  return Give(uncertainty, "uncertainty is null", [&] { return Deref(report).report.GetAxisUncertainty(height); });
}

nu_status nu_report_surface_uncertainty(const nu_report* report, const double* place, double* uncertainty) {
  return Give(uncertainty, "uncertainty is null",
              [&] { return Deref(report).report.GetSurfaceUncertainty(PointOf(place, "place is null")); });
}

nu_status nu_report_bound(const nu_report* report, nu_bound* bound) {
  return Give(bound, "bound is null", [&] {
    const CNuAssociationReport& from = Deref(report).report;
    nu_bound found{};
    found.is_global = from.IsGlobal() != NuFalse ? 1 : 0;
    try {
      found.bound = from.GetBound();
      found.gap = from.GetGap();
      found.has_bound = 1;
    } catch (const CNuOperationException& failure) {
      if (failure.GetCause() != NuOperationNotReported) throw;
    }
    return found;
  });
}

nu_status nu_report_weakness(const nu_report* report, nu_weakness* weakness) {
  return Give(weakness, "weakness is null", [&] {
    const CNuAssociationReport& from = Deref(report).report;
    nu_weakness found{};
    found.parameter = from.GetWeakestParameter();
    found.uncertainty = from.GetWeakestUncertainty();
    found.coverage = from.GetCoverage();
    CNuPoint probe;
    found.has_probe = from.GetProbingPlace(&probe) != NuFalse ? 1 : 0;
    Write(probe, found.probe);
    return found;
  });
}

nu_status nu_report_explain(const nu_report* report, char* text, int32_t capacity, int32_t* count) {
  return Guarded([&] {
    const char* sentence = Deref(report).report.Explain();
    const auto size = static_cast<std::int32_t>(std::strlen(sentence) + 1);
    Fill(text, capacity, size, count, [&](std::int32_t i) { return sentence[i]; });
  });
}

nu_status nu_report_check(const nu_report* report, const double* xyz, int32_t count, int32_t stride,
                          const nu_feature* feature, double length, nu_verdict* verdict) {
  return Give(verdict, "verdict is null",
              [&] { return VerdictOf(Deref(report).report.GetCertificate(), xyz, count, stride, feature, length); });
}

nu_status nu_certificate_check(int32_t criterion, const nu_contact* contacts, int32_t contact_count, const double* xyz,
                               int32_t count, int32_t stride, const nu_feature* feature, double length,
                               nu_verdict* verdict) {
  return Guarded([&] {
    Require(contact_count >= 0, "the number of contacts is negative");
    Require(contacts != nullptr || contact_count == 0, "contacts is null");
    Require(verdict != nullptr, "verdict is null");
    CNuIntArray points(contact_count);
    CNuIntArray sides(contact_count);
    CNuDoubleArray multipliers(contact_count);
    for (std::int32_t i = 0; i < contact_count; ++i) {
      points.Add(contacts[i].point);
      sides.Add(contacts[i].side);
      multipliers.Add(contacts[i].multiplier);
    }
    const CNuCertificate certificate(static_cast<ENuCriterion>(criterion), points, sides, multipliers);
    *verdict = VerdictOf(certificate, xyz, count, stride, feature, length);
  });
}
