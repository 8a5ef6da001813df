#ifndef NU_CURVES_PARABOLA_H
#define NU_CURVES_PARABOLA_H

#include "nu/curves/curve.h"
#include "nu/export.h"
#include "nu/geometry/fit_result.h"
#include "nu/geometry/point.h"
#include "nu/linalg/vector.h"

// The parabola y^2 = 4 f x in the xy plane of its frame: the origin is the vertex, the x axis the axis of the parabola
// in the direction in which it opens, f the focal length. Without a position its frame is the global one.
class NU_EXPORT CNuParabola : public CNuCurve {
 public:
  // A focal length alone leaves the parabola without a position. The vectors are normalised, and the x axis is made
  // orthogonal to the normal. Without them the normal is (0, 0, 1) and the x axis (1, 0, 0); with a normal alone the x
  // axis is any direction across it.
  // Fails with CNuConstructionException ("CNuParabola"), checked in this order:
  //   5  "focal-length": f is not above 0, or not finite
  //   4  a vector has not three components     3  a vector is zero within NuGetZero(), or not finite
  //   8  the vectors are not orthogonal within NuGetRadianTol()
  explicit CNuParabola(double f);
  CNuParabola(double f, const CNuPoint& vertex);
  CNuParabola(double f, const CNuPoint& vertex, const CNuVector& normal);
  CNuParabola(double f, const CNuPoint& vertex, const CNuVector& xAxis, const CNuVector& normal);

  // The distance from vertex to focus; vertex, unit normal, unit x axis and plane in global coordinates.
  double GetFocalLength() const { return m_f; }
  CNuPoint GetVertex() const;
  CNuVector GetNormal() const;
  CNuVector GetXaxis() const;
  CNuPlane GetPlane() const;
  void GetData(double* f, CNuPoint* vertex, CNuVector* xAxis, CNuVector* normal) const;

  // The distance of a point from the curve. A point within NuGetLengthTol() of its plane counts as lying in it.
  double DistanceTo(const CNuPoint& p) const;

  // The points common to both; returns their number, 0 to 2. What comes as close as NuGetLengthTol(), or as the
  // rounding of the coordinates, touches. The points are in the order of the line or, with a plane, of the cross
  // product of this normal and the plane's. A plane has no common points with a parabola that lies in it with the same
  // sense, or that is parallel to its plane within NuGetDegreeTol().
  // Fails with CNuOperationException, p1 and p2 unchanged:
  //   45  the curve, the line or the plane is not finite
  int IntersectWith(const CNuLine& line, CNuPoint* p1, CNuPoint* p2) const;
  int IntersectWith(const CNuPlane& plane, CNuPoint* p1, CNuPoint* p2) const;

  // The n points t, +-2 sqrt(f t) for t in even steps from t0 to t1, with + on side 0 and - on side 1. The curve has no
  // points at t < 0, so a range that starts there is taken from 0 on.
  // Fails with CNuOperationException ("CNuParabola::ToPolyline/PointArray()", "conversion"), checked in this order:
  //   12  n below 2 or above 10,000,000     14  t0 or t1 is not finite     15  t0 is not below t1
  //   14  side is neither 0 nor 1, t1 is not above 0, or a point overflows
  CNuPointArray ToPointArray(int n, double t0, double t1, int side) const;
  CNuPolyline ToPolyline(int n, double t0, double t1, int side) const;

  // Least-squares parabola in the least-squares plane of the points: minimises the sum of squared orthogonal distances
  // in that plane (S. J. Ahn, W. Rauh, H.-J. Warnecke, Pattern Recognition 34, 2001). Direct algebraic fits start it.
  // Gauss-Newton steps, and Newton steps where those slow down, refine the coefficients of the equation, damped as
  // D. W. Marquardt, J. SIAM 11, 1963, does it. For points that are not clearly on one curve the best of some thirty
  // descents is taken. The fit ends with a step, taken all the same, whose squared length is below NuGetTol(), relative
  // to a spread of the points below 1, or that gains no more than rounding.
  // Fails with CNuBestfitException ("CNuParabola"), the parabola and the outputs unchanged:
  //   13  maxIter < 1     1  fewer than 5 points     2  fewer than 4 distinct points
  //   3  as CNuPlane::Fit, named "CNuPlane"
  //   11  the points do not determine a parabola, or one with a vertex farther away than 2^26 of their sizes, whose
  //       numbers, rounded, give another form; no optimum within 100 steps or in sight
  //   12  maxIter steps were used up, even by the one that converged
  void Fit(const CNuPointArray& points, long maxIter);
  void Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, double* form, double* sumSquares, long maxIter);

 private:
  friend struct nu::internal::FeatureAccess;

  double m_f;
};

#endif
