#ifndef NU_ASSOCIATION_ASSOCIATION_H
#define NU_ASSOCIATION_ASSOCIATION_H

#include <memory>

#include "nu/association/association_report.h"
#include "nu/association/criteria.h"
#include "nu/association/sampled_fit.h"
#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/fwd.h"

namespace nu::internal {
struct AssociationOptions;
struct AssociationState;
}  // namespace nu::internal

// Called once per step with its number from 1 on, the value that is minimised and the length of the step, NaN where
// they are not known yet. NuFalse cancels the fit. What it throws passes through Fit, which leaves the feature as it
// is.
using NuStepMonitor = ENuBoolean (*)(void* context, long step, double objective, double stepLength);

// Fits with options, which account for themselves in a report. Without options a fit gives the same feature, bit for
// bit, as the member Fit, FitMinZone, FitMin or FitMax of the feature's class.
//
// Features and criteria:
//   least squares           all: line, plane, circle, ellipse, hyperbola, parabola, sphere, cylinder, cone, torus
//   minimum zone            line, plane, circle, sphere, cylinder, cone, torus
//   minimum circumscribed   circle, sphere, cylinder
//   maximum inscribed       circle, sphere, cylinder
// The minimum zone of a torus is CNuTorSurf::FitMin: the thinnest tube that holds the points, its minor radius.
//
// Options stay until they are changed. An option that a feature or criterion does not have fails when the fit is asked
// for, before anything is done: CNuOperationException ("association", the operation):
//   45  the feature has no such criterion; weights without least squares; a side of material with a circumscribed or an
//       inscribed feature; a radius, direction, point or semi-angle that the feature does not have; a start of another
//       class; several fixed parameters that contradict each other
//   5  the number of weights is not that of the points
// The torus by least squares has the causes 1 (fewer than 7 points), 11 and 12 of "CNuTorSurf"; fits with options those
// of the plain fit that starts them, or 11 and 12 of the class.
// A fit that cannot be carried out does not throw: its report says why, and Require() throws. The feature changes when
// the fit has converged, and only then. Lack of memory is CNuMemoryException.
//
// Fits are const: several threads may fit one association at once, as long as none changes it.
class NU_EXPORT CNuAssociation {
 public:
  // The points are borrowed: they must outlive the association and stay as they are.
  explicit CNuAssociation(const CNuPointArray& points);
  explicit CNuAssociation(CNuPointArray&&) = delete;
  // The same for a block of `count` points: x, y, z of point i at xyz[i * stride], stride >= 3.
  // Fails with CNuOperationException ("association", "CNuAssociation"):
  //   1  count is negative, xyz is null with a count above 0, or stride is below 3
  CNuAssociation(const double* xyz, int count, int stride = 3);
  CNuAssociation(const CNuAssociation& other);
  CNuAssociation& operator=(const CNuAssociation& other);
  ~CNuAssociation();

  // The number of points as they are now, after additions and removals.
  int GetNumberPoints() const;

  // More or fewer points. The first change takes a copy of the points, and the caller's are needed no longer. Additions
  // take time in proportion to the points that are added, a removal in proportion to all points. Weights
  // of points that stay are kept; those of new points are 1, or those of the other association. Merging takes over the
  // points of the other association and nothing else: parts of a cloud that were fitted apart, on several threads, are
  // fitted together from then on, and Refit leads from the optimum of a part to that of the whole.
  // Fail with CNuOperationException ("association", the operation), the points unchanged:
  //   1  as the constructor of a block     14  more points than an int can count
  //   3  the index of a point to remove, with the range     41  a point to remove that is not among the points
  void Add(const CNuPointArray& points);
  void Add(const double* xyz, int count, int stride = 3);
  void Remove(const CNuIntArray& indices);
  // Each point removes one of the same coordinates, the first of them.
  void Remove(const CNuPointArray& points);
  // Adds the points of the other association, as above.
  void Merge(const CNuAssociation& other);

  // One weight per point, of its squared deviation: n times the weight is the same as the point n times, and a weight
  // of 0 leaves the point out, on whichever side it lies. Least squares only. Fails with CNuOperationException
  // ("association", the operation):
  //   5  their number is not that of the points     1  one is negative or not finite, or none is positive
  void SetWeights(const CNuDoubleArray& weights);
  // All weights are 1 again.
  void ReleaseWeights();

  // Parameters that keep their value. The radius: of a circle, sphere or cylinder, the minor one of a torus. The
  // major radius: of a torus. The semi-angle in degrees: of a cone. The direction: of a line, the axis of a cylinder,
  // cone or torus, the normal of a plane or of the plane of a curve. The point: the centre of a circle, ellipse,
  // hyperbola, sphere or torus, the vertex of a parabola, the apex of a cone; on a line, a plane or the axis of a
  // cylinder. A sense of a fixed direction is kept.
  // Fails with CNuOperationException ("association", the operation):
  //   1  a radius that is not above 0, an angle that is not strictly between 0 and 90, what is not finite
  //   10  direction has not three components     9  direction is zero within NuGetZero()
  void FixRadius(double radius);
  void FixMajorRadius(double majorRadius);
  void FixSemiAngle(double semiAngle);
  void FixDirection(const CNuVector& direction);
  void FixPoint(const CNuPoint& point);
  // The parameter is free again.
  void ReleaseRadius();
  void ReleaseMajorRadius();
  void ReleaseSemiAngle();
  void ReleaseDirection();
  void ReleasePoint();

  // Least squares and minimum zone: all points on this side of the feature or on it. Of a plane the side is that of the
  // normal of the start or of the fixed direction, else of the least-squares plane, and the result keeps that sense.
  void RestrictToMaterialSide(ENuMaterialSide side);

  // The start of the iteration, which then leads to the optimum next to it. For features of the same class only.
  void StartFrom(const CNuLine& start);
  void StartFrom(const CNuPlane& start);
  void StartFrom(const CNuCircle& start);
  void StartFrom(const CNuEllipse& start);
  void StartFrom(const CNuHyperbola& start);
  void StartFrom(const CNuParabola& start);
  void StartFrom(const CNuSphSurf& start);
  void StartFrom(const CNuCylSurf& start);
  void StartFrom(const CNuConSurf& start);
  void StartFrom(const CNuTorSurf& start);
  // The start of the plain fits again.
  void ReleaseStart();

  // The `maxIter` of the plain fits; 1000 unless set. Fails with CNuOperationException: cause 1, below 1.
  void SetMaxSteps(long maxSteps);
  // The length tolerance of the fits, `tol` of the plain ones; NuGetLengthTol() of the thread that fits unless set.
  // Fails with CNuOperationException: cause 1, negative or not finite.
  void SetTolerance(double tol);
  // Null watches nothing. Called on the thread that fits, and for that fit only.
  void SetMonitor(NuStepMonitor monitor, void* context);
  // What reports hold: a sum of ENuReportDetails, NuDetailForm unless set. Fails with CNuOperationException: cause 1,
  // a number that is no such sum.
  void SetDetails(int details);

  // Fits the feature. A null pointer fits all the same and leaves the report alone.
  CNuAssociationReport Fit(ENuCriterion criterion, CNuLine* feature) const;
  CNuAssociationReport Fit(ENuCriterion criterion, CNuPlane* feature) const;
  CNuAssociationReport Fit(ENuCriterion criterion, CNuCircle* feature) const;
  CNuAssociationReport Fit(ENuCriterion criterion, CNuEllipse* feature) const;
  CNuAssociationReport Fit(ENuCriterion criterion, CNuHyperbola* feature) const;
  CNuAssociationReport Fit(ENuCriterion criterion, CNuParabola* feature) const;
  CNuAssociationReport Fit(ENuCriterion criterion, CNuSphSurf* feature) const;
  CNuAssociationReport Fit(ENuCriterion criterion, CNuCylSurf* feature) const;
  CNuAssociationReport Fit(ENuCriterion criterion, CNuConSurf* feature) const;
  CNuAssociationReport Fit(ENuCriterion criterion, CNuTorSurf* feature) const;

  // The same from `feature`, in a few steps where it is near to the optimum: that of the points before some were added
  // or removed. Where these steps reach no optimum, or where `feature` is null, it is Fit.
  CNuAssociationReport Refit(ENuCriterion criterion, CNuLine* feature) const;
  CNuAssociationReport Refit(ENuCriterion criterion, CNuPlane* feature) const;
  CNuAssociationReport Refit(ENuCriterion criterion, CNuCircle* feature) const;
  CNuAssociationReport Refit(ENuCriterion criterion, CNuEllipse* feature) const;
  CNuAssociationReport Refit(ENuCriterion criterion, CNuHyperbola* feature) const;
  CNuAssociationReport Refit(ENuCriterion criterion, CNuParabola* feature) const;
  CNuAssociationReport Refit(ENuCriterion criterion, CNuSphSurf* feature) const;
  CNuAssociationReport Refit(ENuCriterion criterion, CNuCylSurf* feature) const;
  CNuAssociationReport Refit(ENuCriterion criterion, CNuConSurf* feature) const;
  CNuAssociationReport Refit(ENuCriterion criterion, CNuTorSurf* feature) const;

  // Fits, and looks for a better feature anywhere: a branch and bound over centres, directions and sizes bounds the
  // criterion from below, by `budget` boxes at most, of which a million take some seconds. A better optimum is taken
  // over. The report holds the bound: GetBound, GetGap, IsGlobal. Minimum zones, and circumscribed circles, spheres and
  // cylinders, without fixed parameters, sides and starts. The bound on a cone holds for all cones of which one nappe
  // holds the points, and where they are spread over both, which takes some times as many boxes, for those of two.
  // After the steps of the fit the monitor gets the progress of the search, after every thousand boxes or so: their
  // number so far, the zone or the radius, and the gap in the place of the length of the step. Where it cancels, the
  // end is NuCancelled, the feature stays as it is, and the report holds the bound and the gap so far.
  // Fails as Fit does, and with CNuOperationException ("association", "ProveGlobally"):
  //   1  budget < 1     45  any other criterion or option
  CNuAssociationReport ProveGlobally(ENuCriterion criterion, CNuLine* feature, long budget) const;
  CNuAssociationReport ProveGlobally(ENuCriterion criterion, CNuPlane* feature, long budget) const;
  CNuAssociationReport ProveGlobally(ENuCriterion criterion, CNuCircle* feature, long budget) const;
  CNuAssociationReport ProveGlobally(ENuCriterion criterion, CNuSphSurf* feature, long budget) const;
  CNuAssociationReport ProveGlobally(ENuCriterion criterion, CNuCylSurf* feature, long budget) const;
  CNuAssociationReport ProveGlobally(ENuCriterion criterion, CNuConSurf* feature, long budget) const;
  CNuAssociationReport ProveGlobally(ENuCriterion criterion, CNuTorSurf* feature, long budget) const;

  // What each contact of a fit of this association is worth: by how much the width of the zone or the radius changes
  // without the point, of least squares with a side of material the sum of squares, in the order of
  // report.GetContactPoints(). The zone of a feature of a fixed size is its largest deviation, without a side twice
  // that. NaN where no optimum is found without the point.
  // Fails with CNuOperationException:
  //   49  ("report")  the report holds no contacts     45  ("report")  it is of least squares without a side
  //   5  ("association", "Sensitivity")  it is of another number of points
  CNuDoubleArray Sensitivity(const CNuAssociationReport& report) const;

  // How the fit of the report spreads when every point is moved at random, normally distributed with the standard
  // deviation `sigma` along each axis (JCGM 101:2008). The same seed gives the same bits on every machine.
  // Fails with CNuOperationException:
  //   49  ("report")  the report holds no details     5  ("association", "MonteCarlo")  it is of other points
  //   1  ("association", "MonteCarlo")  sigma is negative or not finite; samples is below 2 or above 10,000,000
  CNuSampledFit MonteCarlo(const CNuAssociationReport& report, double sigma, int samples, unsigned seed) const;

 private:
  friend class CNuAssociationPart;

  nu::internal::AssociationOptions& Options();

  std::shared_ptr<nu::internal::AssociationState> m_state;
};

#endif
