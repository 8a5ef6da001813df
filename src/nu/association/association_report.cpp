#include "nu/association/association_report.h"

#include "nu/association/certificate.h"
#include "nu/association/internal/report_data.h"
#include "nu/foundation/cause_text.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/conversions.h"

using namespace nu::internal;

namespace {

const ReportData kOfNoFit;

const ReportedForm& FormOf(const ReportData& data, const char* where) {
  RequireDetail(data, NuDetailForm, where);
  return data.form;
}

const ReportedContacts& ContactsOf(const ReportData& data, const char* where) {
  RequireDetail(data, NuDetailContacts, where);
  if (!data.contacts) FailOperation(NuOperationUnsupported, kReport, where);
  return *data.contacts;
}

const ReportedExplanation& ExplanationOf(const ReportData& data, const char* where) {
  RequireDetail(data, NuDetailExplanation, where);
  return *data.explanation;
}

}  // namespace

CNuAssociationReport::CNuAssociationReport() = default;
CNuAssociationReport::CNuAssociationReport(std::shared_ptr<const ReportData> data) : m_data(std::move(data)) {}
CNuAssociationReport::CNuAssociationReport(const CNuAssociationReport&) = default;
CNuAssociationReport& CNuAssociationReport::operator=(const CNuAssociationReport&) = default;
CNuAssociationReport::~CNuAssociationReport() = default;

const ReportData& CNuAssociationReport::Data() const {
  return m_data ? *m_data : kOfNoFit;
}

ENuCriterion CNuAssociationReport::GetCriterion() const {
  return Data().criterion;
}

CNuObject::ENuObjectType CNuAssociationReport::GetFeatureType() const {
  return Data().type;
}

int CNuAssociationReport::GetNumberPoints() const {
  return Data().points;
}

int CNuAssociationReport::GetDetails() const {
  return Data().details;
}

ENuAssociationEnd CNuAssociationReport::GetEnd() const {
  return Data().end;
}

ENuBoolean CNuAssociationReport::HasConverged() const {
  return Data().end == NuConverged ? NuTrue : NuFalse;
}

int CNuAssociationReport::GetCause() const {
  const FitFailure& failure = Data().failure;
  if (const auto* fit = std::get_if<CNuBestfitException>(&failure)) return fit->GetCause();
  if (const auto* operation = std::get_if<CNuOperationException>(&failure)) return operation->GetCause();
  return 0;
}

void CNuAssociationReport::Require() const {
  const ReportData& data = Data();
  if (const auto* fit = std::get_if<CNuBestfitException>(&data.failure)) throw CNuBestfitException(*fit);
  if (const auto* operation = std::get_if<CNuOperationException>(&data.failure))
    throw CNuOperationException(*operation);
  if (data.end == NuCancelled) FailOperation(NuOperationFailed, "cancelled", "CNuAssociation::Fit");
  if (data.end != NuConverged) FailOperation(NuOperationNotReported, kReport, "CNuAssociationReport::Require");
}

long CNuAssociationReport::GetSteps() const {
  return Data().steps;
}

double CNuAssociationReport::GetLastStep() const {
  return Data().lastStep;
}

double CNuAssociationReport::GetForm() const {
  return FormOf(Data(), "GetForm").form;
}

double CNuAssociationReport::GetPeak() const {
  return FormOf(Data(), "GetPeak").peak;
}

double CNuAssociationReport::GetValley() const {
  return FormOf(Data(), "GetValley").valley;
}

double CNuAssociationReport::GetRootMeanSquare() const {
  return FormOf(Data(), "GetRootMeanSquare").rootMeanSquare;
}

double CNuAssociationReport::GetSumSquares() const {
  return FormOf(Data(), "GetSumSquares").sumSquares;
}

const CNuDoubleArray& CNuAssociationReport::GetDeviations() const {
  RequireDetail(Data(), NuDetailDeviations, "GetDeviations");
  return Data().deviations;
}

int CNuAssociationReport::GetHighestPoint() const {
  RequireDetail(Data(), NuDetailDeviations, "GetHighestPoint");
  return Data().form.highest;
}

int CNuAssociationReport::GetLowestPoint() const {
  RequireDetail(Data(), NuDetailDeviations, "GetLowestPoint");
  return Data().form.lowest;
}

int CNuAssociationReport::GetNumberContacts() const {
  return ContactsOf(Data(), "GetNumberContacts").points.GetSize();
}

const CNuIntArray& CNuAssociationReport::GetContactPoints() const {
  return ContactsOf(Data(), "GetContactPoints").points;
}

const CNuIntArray& CNuAssociationReport::GetContactSides() const {
  return ContactsOf(Data(), "GetContactSides").sides;
}

const CNuDoubleArray& CNuAssociationReport::GetMultipliers() const {
  return ContactsOf(Data(), "GetMultipliers").multipliers;
}

ENuBoolean CNuAssociationReport::IsGlobal() const {
  return Data().end == NuConverged && Data().isGlobal ? NuTrue : NuFalse;
}

double CNuAssociationReport::GetBound() const {
  if (!Data().bound) FailOperation(NuOperationNotReported, kReport, "GetBound");
  return *Data().bound;
}

double CNuAssociationReport::GetGap() const {
  if (!Data().bound) FailOperation(NuOperationNotReported, kReport, "GetGap");
  return Data().value - *Data().bound;
}

const char* CNuAssociationReport::Explain() const {
  const ReportData& data = Data();
  if (data.explanation) return data.explanation->text.c_str();
  if (const auto* fit = std::get_if<CNuBestfitException>(&data.failure)) return NuCauseText(*fit);
  if (const auto* operation = std::get_if<CNuOperationException>(&data.failure)) return NuCauseText(*operation);
  FailOperation(NuOperationNotReported, kReport, "Explain");
}

const char* CNuAssociationReport::GetWeakestParameter() const {
  return ExplanationOf(Data(), "GetWeakestParameter").parameter;
}

double CNuAssociationReport::GetWeakestUncertainty() const {
  return ExplanationOf(Data(), "GetWeakestUncertainty").uncertainty;
}

double CNuAssociationReport::GetCoverage() const {
  return ExplanationOf(Data(), "GetCoverage").arc;
}

ENuBoolean CNuAssociationReport::GetProbingPlace(CNuPoint* place) const {
  const ReportedExplanation& explanation = ExplanationOf(Data(), "GetProbingPlace");
  if (!explanation.hasProbe) return NuFalse;
  Output(place, ToPoint(explanation.probe));
  return NuTrue;
}

CNuCertificate CNuAssociationReport::GetCertificate() const {
  const ReportData& data = Data();
  const ReportedContacts& contacts = ContactsOf(data, "GetCertificate");
  if (!data.hasCertificate) FailOperation(NuOperationUnsupported, kReport, "GetCertificate");
  CNuCertificate certificate(data.criterion, contacts.points, contacts.sides, contacts.multipliers);
  if (data.fixed.radius) certificate.FixRadius();
  if (data.fixed.majorRadius) certificate.FixMajorRadius();
  if (data.fixed.semiAngle) certificate.FixSemiAngle();
  if (data.fixed.direction) certificate.FixDirection();
  if (data.fixed.point) certificate.FixPoint(ToPoint(*data.fixed.point));
  return certificate;
}
