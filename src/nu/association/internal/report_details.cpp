#include "nu/association/internal/report_details.h"

#include <algorithm>
#include <cmath>

#include "nu/association/internal/constrained_fits.h"
#include "nu/association/internal/explanation.h"
#include "nu/engine/association/form_parameters.h"
#include "nu/engine/least_squares/cone_start.h"
#include "nu/engine/points/alignment.h"
#include "nu/engine/points/principal_direction.h"
#include "nu/geometry/internal/fit_guards.h"

namespace nu::internal {
namespace {

Feature LineInPlane(const Feature& line, const Vec3& normal) {
  const Vec3& x = line.frame.z;
  const Vec3 z = Unit(Rejection(normal, x));
  return {FeatureKind::lineInPlane, {line.frame.origin, x, Cross(z, x), z}};
}

// As CNuLine has it: least squares know lines in a plane z = const only, the zone in any.
Feature AccountedLine(const Feature& line, ENuCriterion criterion, PointView points, double tol) {
  if (HaveOneHeight(points)) return LineInPlane(line, {0.0, 0.0, 1.0});
  if (criterion != NuMinimumZone || LieOnOneLine(points, tol) || !LieInOnePlane(points, tol)) return line;
  PointBlocks blocks(points, LoadVec3(points[points.Size() / 2]));
  return LineInPlane(line, FindPrincipalDirection(blocks, Extent::smallest).direction);
}

// A distance has no sign: the points lie within a cylinder or a tube.
double FormOf(const FormParameters& found, FeatureKind kind) {
  return IsDistance(kind) ? 2.0 * found.peak : found.total;
}

// The form and the sum of squares are those of the plain fit, to the bit, where it has them.
void FillForm(const AssociationState& state, const Feature& feature, const PlainForm& plain, ReportData* data) {
  const bool wantsAll = (data->details & NuDetailDeviations) == NuDetailDeviations;
  const int count = data->points;
  if (!wantsAll && plain.extremes) {
    const double sum = plain.extremes->sumSquares;
    data->form = {.form = *plain.form,
                  .peak = std::max(plain.extremes->largest, 0.0),
                  .valley = std::max(-plain.extremes->smallest, 0.0),
                  .rootMeanSquare = std::sqrt(sum / count),
                  .sumSquares = sum};
    return;
  }
  if (wantsAll) {
    data->deviations = CNuDoubleArray(count);
    for (int i = 0; i < count; ++i) data->deviations.Add(0.0);
  }
  const FormParameters found = FindForm(state.points, feature, wantsAll ? data->deviations.GetData() : nullptr);
  ReportedForm& form = data->form;
  form.peak = found.peak;
  form.valley = found.valley;
  form.form = plain.form.value_or(FormOf(found, feature.kind));
  form.rootMeanSquare = found.rootMeanSquare;
  form.sumSquares = plain.sumSquares.value_or(found.rootMeanSquare * found.rootMeanSquare * count);
  form.highest = static_cast<int>(found.peakIndex);
  form.lowest = static_cast<int>(found.valleyIndex);
}

void FillContacts(const AssociationState& state, UnknownMask free, ReportData* data) {
  const ContactAccount account = ContactsOf(state, free, *data);
  ReportedContacts& contacts = data->contacts.emplace();
  for (int k = 0; k < account.count; ++k) {
    const ContactPoint& contact = account.contact[k];
    contacts.points.Add(static_cast<int>(contact.index));
    contacts.sides.Add(contact.side > 0.0 ? 1 : -1);
    contacts.multipliers.Add(contact.multiplier);
  }
}

Feature InParameterFrame(const AssociationState& state, const Feature& feature) {
  return state.options.fixed.point ? feature : CentredOn(state.points, feature);
}

double ValueOf(const ReportData& data) {
  const bool isRadius = data.criterion == NuMinimumCircumscribed || data.criterion == NuMaximumInscribed;
  return isRadius ? data.feature.size[0] : data.form.form;
}

}  // namespace

ContactCriterion ContactCriterionOf(ENuCriterion criterion, ENuMaterialSide side) {
  if (criterion == NuMinimumCircumscribed) return ContactCriterion::circumscribed;
  if (criterion == NuMaximumInscribed) return ContactCriterion::inscribed;
  return side == NuEitherSide ? ContactCriterion::zone : ContactCriterion::oneSidedZone;
}

ContactAccount ContactsOf(const AssociationState& state, UnknownMask free, const ReportData& data) {
  const AssociationOptions& options = state.options;
  if (data.criterion == NuLeastSquares)
    return FindContactsOfSquares(state.points, WeightsOf(options), data.feature, options.side == NuOutside, free);
  return FindContacts(state.points, data.feature, ContactCriterionOf(data.criterion, options.side), free);
}

Feature AccountedFeature(const Feature& feature, ENuCriterion criterion, PointView points, double tol) {
  Feature accounted = feature;
  if (feature.kind == FeatureKind::line) accounted = AccountedLine(feature, criterion, points, tol);
  if (criterion != NuMinimumZone) return accounted;
  if (feature.kind == FeatureKind::torus) accounted.kind = FeatureKind::circleInSpace;
  if (feature.kind == FeatureKind::circle && !LieInOnePlane(points, tol)) accounted.kind = FeatureKind::circleInSpace;
  return accounted;
}

Feature WithNappes(const Feature& feature, PointView points) {
  if (feature.kind != FeatureKind::cone || points.Size() == 0) return feature;
  Feature both = feature;
  both.bothNappes = true;
  const double one = FindForm(points, feature, nullptr).rootMeanSquare;
  const double part = FindForm(points, both, nullptr).rootMeanSquare / one;
  return part * part <= kBothNappes ? both : feature;
}

Feature ParameterFeature(const AssociationState& state, const ReportData& data) {
  return data.isCentred ? data.feature : InParameterFrame(state, data.feature);
}

double FormOf(PointView points, const Feature& feature) {
  return FormOf(FindForm(points, feature, nullptr), feature.kind);
}

void FillDetails(const AssociationState& state, const Feature& feature, const PlainForm& plain, ReportData* data) {
  if (data->details != NuDetailNone) FillForm(state, feature, plain, data);
  const AssociationOptions& options = state.options;
  const UnknownMask free = UnknownsOf(feature.kind) & ~FixedUnknowns(options.fixed, feature.kind);
  data->feature = feature;
  data->isCentred = (data->details & ~NuDetailDeviations) != 0;
  if (data->isCentred) data->feature = InParameterFrame(state, feature);
  if ((data->details & NuDetailUncertainty) != 0 && data->criterion == NuLeastSquares && options.side == NuEitherSide)
    data->covariance = CovarianceOf(state.points, WeightsOf(options), data->feature, free);
  const bool isHeld = data->criterion != NuLeastSquares || options.side != NuEitherSide;
  if ((data->details & NuDetailContacts) != 0 && isHeld) FillContacts(state, free, data);
  // The zone on one side is the free one, shifted by half of its width.
  data->hasCertificate =
      data->criterion != NuLeastSquares && (options.side == NuEitherSide || Contains(free, OffsetOf(feature.kind)));
  data->value = ValueOf(*data);
  if ((data->details & NuDetailExplanation) != 0) ExplainFit(state, free, data);
}

}  // namespace nu::internal
