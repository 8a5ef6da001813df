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

  // The criterion of the fit; NuLeastSquares of no fit.
  ENuCriterion GetCriterion() const;
  // NuTypeLine, NuTypeCylSurf, ...; NuTypeNone of no fit.
  CNuObject::ENuObjectType GetFeatureType() const;
  // The number of points of the fit.
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
  // minimum zone it is the width. Q is the root of the mean of the squared deviations. The sum is that of
  // the squares times the weights, which is what least squares minimise; the other values do not count weights.
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

  // NuDetailUncertainty, of least squares without a side of material. With one the deviations do not scatter about 0:
  // their squares do not tell how uncertain a point is, and the feature follows the outermost points. How such a fit,
  // and one by another criterion, spreads for a known uncertainty of the points is for CNuAssociation::MonteCarlo and,
  // per unit, GetWeakestUncertainty to tell. The parameters are changes of the feature in a frame of its own; angles
  // are in degrees. The first three are shifts of the origin along x, y and z, then come tilts of z towards x and y,
  // the turn about z and the sizes; a feature has those that move it and are not fixed. The origin is next to the mean
  // of the points where the feature leaves it free: on the axis, in the plane. z is the direction of a line, an axis or
  // a normal; a line in the plane z = const runs along x. All of it follows from a triangular factor of the derivatives
  // at the optimum, not from normal equations.
  void GetParameterFrame(CNuPoint* origin, CNuVector* x, CNuVector* y, CNuVector* z) const;
  int GetNumberParameters() const;
  // "shift x", "tilt y", "turn", "radius", "major radius", "semi-angle", ... The text lives as long as the program.
  // Fail with CNuOperationException ("report", the operation): cause 3, i is out of range, with the range.
  const char* GetParameterName(int i) const;
  ENuBoolean IsParameterAngle(int i) const;
  // Of the parameters in their order; infinite where the points do not determine one.
  double GetStandardUncertainty(int i) const;
  // Their covariances, one row and column per parameter; infinite where the points do not determine one.
  CNuMatrix GetCovariance() const;
  // The points less the free parameters; a point counts twice of a line in space and once of all others.
  int GetDegreesOfFreedom() const;
  // Of a point of weight 1, from the residuals; infinite without a degree of freedom.
  double GetStandardDeviation() const;
  // The largest by the smallest singular value of the derivatives, with lengths and angles in proportion to the size of
  // the points; infinite where the points do not determine the feature.
  double GetCondition() const;
  // Of what follows from the parameters: of the axis at a height above the origin of the frame, in the direction across
  // it that is the most uncertain; of the surface, the curve or the plane next to a place, along its normal.
  double GetAxisUncertainty(double height) const;
  double GetSurfaceUncertainty(const CNuPoint& place) const;

  // NuDetailContacts, of the other criteria, and of least squares with a side of material. The points that hold the
  // feature come first: those with a multiplier, which is never negative, and of which the sum is 1. It is by how much
  // half of the zone, or the radius, grows with a move of the point outwards; of least squares and of a feature of a
  // fixed size, with a side of material, it is the part that the point has in what holds the feature. Others only touch
  // a boundary. Side is 1 on the outer boundary and -1 on the inner one.
  int GetNumberContacts() const;
  const CNuIntArray& GetContactPoints() const;
  const CNuIntArray& GetContactSides() const;
  const CNuDoubleArray& GetMultipliers() const;
  // These, with what was fixed: anybody can check from the points and the feature that no feature nearby is better. 45
  // with a side of material for least squares and for a feature of a fixed size.
  CNuCertificate GetCertificate() const;

  // Whether the feature is proven to be the best of all of its kind. Fit proves it of least-squares lines and planes,
  // of the minimum zones of planes, of circles and of lines in their plane, of circumscribed circles and spheres, and
  // of inscribed circles; ProveGlobally of others, where its budget suffices.
  ENuBoolean IsGlobal() const;
  // Of ProveGlobally: no feature has a smaller zone or radius than the bound, which is below that of the feature by the
  // gap, in lengths. 49 without it.
  double GetBound() const;
  double GetGap() const;

  // NuDetailExplanation. Why the feature is as uncertain as it is, in a sentence, or why there is none, with what
  // helps; of a failure that was not asked about the text of its cause. Angles are in degrees, lengths in the unit of
  // the coordinates, uncertainties per such unit. It lives as long as the report.
  const char* Explain() const;
  // Of a fit that converged: the name of the parameter that the points determine least, and its standard uncertainty
  // per unit of that of the points, in degrees per unit of length for an angle; infinite where it is not determined.
  // Least squares depend on all points, with a side of material on all points and the contacts; the other criteria
  // depend on their contacts alone. It holds while the points move by less than what brings in other contacts.
  const char* GetWeakestParameter() const;
  double GetWeakestUncertainty() const;
  // The part of a full turn, in degrees, that the points cover about the axis or the normal of a round feature; half of
  // the opening of a cap of a sphere that holds them; 0 for other features.
  double GetCoverage() const;
  // Whether one more point would help, and where it would help that parameter most: on the feature.
  ENuBoolean GetProbingPlace(CNuPoint* place) const;

 private:
  friend class CNuAssociation;

  const nu::internal::ReportData& Data() const;

  std::shared_ptr<const nu::internal::ReportData> m_data;
};

#endif
