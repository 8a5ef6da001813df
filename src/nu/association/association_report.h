#ifndef NU_ASSOCIATION_ASSOCIATION_REPORT_H
#define NU_ASSOCIATION_ASSOCIATION_REPORT_H

#include <memory>

#include "nu/association/criteria.h"
#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"

namespace nu::internal {
struct ReportData;
}  // namespace nu::internal

// What an association tells about a fit: how it ended, how far the points are from the feature, and what else was asked
// for. It is a value that never changes: copies share its data, on all threads, and outlive the association and the
// points. Lengths are in the unit of the coordinates.
//
// What a report does not hold fails with CNuOperationException (the operation, "report"):
//   49  it was not asked for by CNuAssociation::SetDetails, or the fit did not converge
//   45  this kind of feature or criterion does not have it
class NU_EXPORT CNuAssociationReport {
 public:
  // Of no fit: the end is NuNoOptimum, all else is 0 or missing.
  CNuAssociationReport();
  explicit CNuAssociationReport(std::shared_ptr<const nu::internal::ReportData> data);
  CNuAssociationReport(const CNuAssociationReport&);
  CNuAssociationReport& operator=(const CNuAssociationReport&);
  ~CNuAssociationReport();

  ENuCriterion GetCriterion() const;
  // NuTypeLine, NuTypeCylSurf, ...; NuTypeNone of no fit.
  CNuObject::ENuObjectType GetFeatureType() const;
  int GetNumberPoints() const;
  // The sum of ENuReportDetails that was asked for.
  int GetDetails() const;

  // How the fit ended.
  ENuAssociationEnd GetEnd() const;
  ENuBoolean HasConverged() const;
  // 0 where it converged or was cancelled, else the number of ENuBestfitCause; of a cone or cylinder it may be
  // NuOperationFailed, from CNuSurface::QuadricAxes.
  int GetCause() const;
  // Throws what the plain fit of the feature would have thrown: CNuBestfitException, or CNuOperationException of the
  // same sources. A cancelled fit throws CNuOperationException (NuOperationFailed, "cancelled", "CNuAssociation::Fit").
  // Does nothing where the fit converged.
  void Require() const;

  // The steps of the iteration, or the passes over the points of a method without steps, and the length of the last
  // step; 0 for a feature that is computed directly.
  long GetSteps() const;
  double GetLastStep() const;

  // NuDetailForm. ISO 12181, 12780, 12781 and 12180 name them RONt, STRt, FLTt and CYLt with p, v and q in place of t.
  // Peak is the largest deviation and valley the magnitude of the smallest, or 0 where all points lie on the other
  // side; form is their sum T, and that of a line in space the diameter of the cylinder that holds the points. Of a
  // minimum zone it is the width. Q is the root of the mean of the squared deviations, weighted where there are
  // weights, and the sum that of the squares times the weights, which is what least squares minimise.
  double GetForm() const;
  double GetPeak() const;
  double GetValley() const;
  double GetRootMeanSquare() const;
  double GetSumSquares() const;

  // NuDetailDeviations. One per point, in their order: positive outside, or on the side of the normal of a plane; of a
  // line in the plane z = const, to the left of its direction; of a line in space the distance, which has no sign.
  const CNuDoubleArray& GetDeviations() const;
  // The indices of the largest and the smallest deviation, of equal ones the first.
  int GetHighestPoint() const;
  int GetLowestPoint() const;

 private:
  const nu::internal::ReportData& Data() const;

  std::shared_ptr<const nu::internal::ReportData> m_data;
};

#endif
