#ifndef NU_CURVES_ELLIPSE_H
#define NU_CURVES_ELLIPSE_H

#include "nu/curves/curve.h"
#include "nu/export.h"
#include "nu/geometry/fit_result.h"
#include "nu/geometry/point.h"
#include "nu/linalg/vector.h"

// The ellipse x^2/a^2 + y^2/b^2 = 1, a >= b, in the xy plane of its frame: the origin is the centre and the x axis the
// direction of the semi-axis a. Without a position its frame is the global one.
class NU_EXPORT CNuEllipse : public CNuCurve {
 public:
  // Semi-axes alone leave the ellipse without a position. The vectors are normalised, and the x axis is made orthogonal
  // to the normal. Without them the normal is (0, 0, 1) and the x axis (1, 0, 0); with a normal alone the x axis is any
  // direction across it.
  // Fails with CNuConstructionException ("CNuEllipse"), checked in this order:
  //   5  "semi-axis": a or b is not above 0, or not finite     7  "semi-axis": a < b
  //   4  a vector has not three components     3  a vector is zero within NuGetZero(), or not finite
  //   8  the vectors are not orthogonal within NuGetRadianTol()
  CNuEllipse(double a, double b);
  CNuEllipse(double a, double b, const CNuPoint& centre);
  CNuEllipse(double a, double b, const CNuPoint& centre, const CNuVector& normal);
  CNuEllipse(double a, double b, const CNuPoint& centre, const CNuVector& xAxis, const CNuVector& normal);

  // Along the x axis and across it.
  double GetSemiAxisA() const { return m_a; }
  double GetSemiAxisB() const { return m_b; }
  // Centre, unit normal, unit x axis and plane in global coordinates; both semi-axes with them.
  CNuPoint GetCentre() const;
  CNuVector GetNormal() const;
  CNuVector GetXaxis() const;
  CNuPlane GetPlane() const;
  void GetData(double* a, double* b, CNuPoint* centre, CNuVector* xAxis, CNuVector* normal) const;

  // The distance of a point from the curve. A point within NuGetLengthTol() of its plane counts as lying in it.
  double DistanceTo(const CNuPoint& p) const;

  // The points common to both; returns their number, 0 to 2. What comes as close as NuGetLengthTol(), or as the
  // rounding of the coordinates, touches. The points are in the order of the line or, with a plane, of the cross
  // product of this normal and the plane's. A plane has no common points with an ellipse that lies in it with the same
  // sense.
  // Fails with CNuOperationException, p1 and p2 unchanged:
  //   45  the curve, the line or the plane is not finite
  int IntersectWith(const CNuLine& line, CNuPoint* p1, CNuPoint* p2) const;
  int IntersectWith(const CNuPlane& plane, CNuPoint* p1, CNuPoint* p2) const;

  // The n points a cos u, b sin u for u in even steps of a full turn, counter-clockwise about the normal; the last is
  // the first again.
  // Fails with CNuOperationException ("CNuEllipse::ToPolyline/PointArray()", "conversion"):
  //   12  n below 2 or above 10,000,000
  CNuPointArray ToPointArray(int n) const;
  CNuPolyline ToPolyline(int n) const;

  // Least-squares ellipse in the least-squares plane of the points: minimises the sum of squared orthogonal distances
  // in that plane (S. J. Ahn, W. Rauh, H.-J. Warnecke, Pattern Recognition 34, 2001). Direct algebraic fits start it.
  // Gauss-Newton steps, and Newton steps where those slow down, refine the coefficients of the equation, damped as
  // D. W. Marquardt, J. SIAM 11, 1963, does it. For points that are not clearly on one curve the best of some thirty
  // descents is taken. The fit ends with a step, taken all the same, whose squared length is below NuGetTol(), relative
  // to a spread of the points below 1, or that gains no more than rounding.
  // Fails with CNuBestfitException ("CNuEllipse"), the ellipse and the outputs unchanged:
  //   13  maxIter < 1     1  fewer than 5 points     2  fewer than 5 distinct points
  //   3  as CNuPlane::Fit, named "CNuPlane"
  //   11  no ellipse is best, as parabolas or lines fit better; no optimum within 100 steps or in sight
  //   12  maxIter steps were used up, even by the one that converged
  void Fit(const CNuPointArray& points, long maxIter);
  void Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, double* form, double* sumSquares, long maxIter);

 private:
  friend struct nu::internal::FeatureAccess;

  double m_a;
  double m_b;
};

#endif
