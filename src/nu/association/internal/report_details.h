#ifndef NU_ASSOCIATION_INTERNAL_REPORT_DETAILS_H
#define NU_ASSOCIATION_INTERNAL_REPORT_DETAILS_H

#include <optional>

#include "nu/association/internal/association_state.h"
#include "nu/association/internal/report_data.h"
#include "nu/engine/association/contact_account.h"
#include "nu/engine/points/form_statistics.h"

namespace nu::internal {

// The feature from which deviations count: of the kind that the criterion has for these points. Lines in a plane and
// circles in space are kinds of their own.
Feature AccountedFeature(const Feature& feature, ENuCriterion criterion, PointView points, double tol);

// A cone as its points are meant: from both nappes where that leaves so little of what one nappe leaves as the
// least-squares fit asks for. Other features as they are.
Feature WithNappes(const Feature& feature, PointView points);

// What the fit tells of its own.
struct PlainForm {
  std::optional<double> form;          // of least squares, or the width of the zone
  std::optional<double> sumSquares;    // of least squares, weighted
  std::optional<Deviations> extremes;  // of plain least squares
};

// How the contacts of a report are found: of least squares with a side of material, and of the other criteria.
ContactCriterion ContactCriterionOf(ENuCriterion criterion, ENuMaterialSide side);
ContactAccount ContactsOf(const AssociationState& state, UnknownMask free, const ReportData& data);

// The feature of a report in the frame of its parameters, with its origin next to the mean of the points unless it is
// fixed.
Feature ParameterFeature(const AssociationState& state, const ReportData& data);

// The zone of a feature; of a curve, the diameter of the tube around it.
double FormOf(PointView points, const Feature& feature);

// Fills in what was asked for, of a fit that has converged with this feature.
void FillDetails(const AssociationState& state, const Feature& feature, const PlainForm& plain, ReportData* data);

}  // namespace nu::internal

#endif
