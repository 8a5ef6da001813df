#ifndef NU_ASSOCIATION_INTERNAL_EXPLANATION_H
#define NU_ASSOCIATION_INTERNAL_EXPLANATION_H

#include "nu/association/internal/association_state.h"
#include "nu/association/internal/report_data.h"

// Reasons in geometry, as data and as sentences.
namespace nu::internal {

// Of a fit that has converged, from the feature of the report.
void ExplainFit(const AssociationState& state, UnknownMask free, ReportData* data);

// Of one that has not, where it was asked for.
void ExplainFailure(const AssociationState& state, double tol, ReportData* data);

}  // namespace nu::internal

#endif
