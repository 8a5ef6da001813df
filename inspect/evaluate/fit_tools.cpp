#include "evaluate/fit_tools.h"

#include <climits>

Vec3 AxisAcross(const Vec3& z, std::size_t preferred) {
  constexpr double kNearlyParallel = 0.9;
  if (std::fabs(z[preferred]) > kNearlyParallel) preferred = (preferred + 1) % 3;
  Vec3 x{};
  x[preferred] = 1;
  const double along = z[preferred];
  return Unit({x[0] - along * z[0], x[1] - along * z[1], x[2] - along * z[2]});
}

Frame FrameAlong(const CNuPoint& origin, const CNuVector& direction) {
  const Vec3 z = ToVec3(direction);
  const Vec3 x = AxisAcross(z, 0);
  return {ToVec3(origin), x, Cross(z, x), z};
}

ENuBoolean SearchProgress::Show(void* context, long step, double, double) {
  auto* const search = static_cast<SearchProgress*>(context);
  search->m_progress.Show(static_cast<double>(step) / search->m_boxes);
  return NuTrue;
}

CNuAssociation AssociationOf(const std::vector<Vec3>& points) {
  // Coordinates that were projected, and the tests of the fits for points that coincide or lie in one plane, are good
  // to this part of the size of the part.
  constexpr double kSameLength = 1e-9;
  if (points.size() > INT_MAX) throw FitFailure("more points than the library can count");
  CNuAssociation association(points.data()->data(), static_cast<int>(points.size()));
  association.SetTolerance(kSameLength * SizeOf(points));
  association.SetDetails(NuDetailDeviations | NuDetailUncertainty | NuDetailContacts | NuDetailExplanation);
  return association;
}

namespace {

Uncertainty UncertaintyOf(const CNuAssociationReport& report) {
  CNuPoint origin;
  CNuVector x;
  CNuVector y;
  CNuVector z;
  report.GetParameterFrame(&origin, &x, &y, &z);
  Uncertainty result{{ToVec3(origin), ToVec3(x), ToVec3(y), ToVec3(z)},
                     {},
                     {},
                     report.GetDegreesOfFreedom(),
                     report.GetStandardDeviation()};
  const CNuMatrix covariance = report.GetCovariance();
  const int count = report.GetNumberParameters();
  for (int i = 0; i < count; ++i) {
    result.changes.push_back(
        {report.GetParameterName(i), report.IsParameterAngle(i) == NuTrue, report.GetStandardUncertainty(i)});
    result.covariance.emplace_back();
    for (int j = 0; j < count; ++j) result.covariance.back().push_back(covariance.GetElement(i, j));
  }
  return result;
}

std::vector<Contact> ContactsOf(const CNuAssociationReport& report) {
  std::vector<Contact> contacts;
  for (int i = 0; i < report.GetNumberContacts(); ++i) {
    const auto index = static_cast<std::size_t>(report.GetContactPoints()[i]);
    contacts.push_back({index, report.GetContactSides()[i] > 0, report.GetMultipliers()[i]});
  }
  return contacts;
}

}  // namespace

void TakeReport(const CNuAssociationReport& report, const std::vector<Vec3>& points, Inspection* result) {
  result->form = report.GetForm();
  result->sumSquares = report.GetSumSquares();
  const CNuDoubleArray& deviations = report.GetDeviations();
  for (std::size_t i = 0; i < points.size(); ++i) {
    result->local.push_back(result->frame.ToLocal(points[i]));
    result->deviations.push_back(deviations[static_cast<int>(i)]);
  }
  result->isGlobal = report.IsGlobal() == NuTrue;
  if (report.GetCriterion() == NuLeastSquares) {
    result->uncertainty = UncertaintyOf(report);
    result->explanation = report.Explain();
  } else {
    result->contacts = ContactsOf(report);
  }
}

Certificate CertificateOf(const CNuAssociationReport& report, const std::vector<Vec3>& points,
                          const CNuGeometry& feature) {
  constexpr double kRoundings = 1e-14;  // of coordinates
  const CNuCertificateVerdict verdict = report.GetCertificate().Check(
      points.data()->data(), static_cast<int>(points.size()), 3, feature, kRoundings * SizeOf(points));
  return {verdict.Holds() == NuTrue, verdict.GetGap(), verdict.GetRadius()};
}

void AddRadii(ENuCriterion criterion, Inspection* result) {
  const auto add = [result](const char* name, double length) { result->parameters.push_back(Length(name, length)); };
  add("radius", result->radius);
  add("diameter", 2 * result->radius);
  if (criterion != NuMinimumZone) return;
  add("inner radius", result->radius - result->LargestInwards());
  add("outer radius", result->radius + result->LargestOutwards());
}

void MeasureFromTube(double radius, Inspection* result) {
  result->sumSquares = 0;
  for (double& deviation : result->deviations) {
    deviation -= radius;
    result->sumSquares += deviation * deviation;
  }
  result->form = result->deviations[result->IndexOfMax()] - result->deviations[result->IndexOfMin()];
}
