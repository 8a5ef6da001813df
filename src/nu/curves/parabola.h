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
  // A focal length that is not above 0 and finite: cause 5, "focal-length"; after that, for both
  // vectors: not three components, cause 4; zero within NuGetZero() or not finite, cause 3; not
  // orthogonal within NuGetRadianTol(), cause 8. They are normalised, and the x axis made
  // orthogonal to the normal; it is (1, 0, 0), or any direction across a given normal, if not
  // given, and the normal (0, 0, 1). A focal length alone leaves the parabola without a position.
  explicit CNuParabola(double f);
  CNuParabola(double f, const CNuPoint& vertex);
  CNuParabola(double f, const CNuPoint& vertex, const CNuVector& normal);
  CNuParabola(double f, const CNuPoint& vertex, const CNuVector& xAxis, const CNuVector& normal);

  double GetFocalLength() const { return m_f; }
  CNuPoint GetVertex() const;
  CNuVector GetNormal() const;
  CNuVector GetXaxis() const;
  CNuPlane GetPlane() const;
  void GetData(double* f, CNuPoint* vertex, CNuVector* xAxis, CNuVector* normal) const;

  // Of a point from the curve; one within NuGetLengthTol() of its plane counts as lying in it.
  double DistanceTo(const CNuPoint& p) const;

  // The points common to both, 0 to 2; returns how many there are. As for lines, cause 45 for what is not finite. What
  // comes as close as NuGetLengthTol(), or as the rounding of the coordinates, touches. With a line as CNuLine says, in
  // its order; with a plane in the order of this normal x the plane's, none for a plane that holds the parabola in the
  // same sense, or that is parallel to its plane within NuGetDegreeTol().
  int IntersectWith(const CNuLine& line, CNuPoint* p1, CNuPoint* p2) const;
  int IntersectWith(const CNuPlane& plane, CNuPoint* p1, CNuPoint* p2) const;

  // The n points t, +-2 sqrt(f t) for t in even steps from t0 to t1, with + on side 0 and - on side 1. There is nothing
  // at t < 0, so a range that starts there is taken from 0 on. CNuOperationException: n below 2 or above 10,000,000:
  // cause 12; a range that is not finite, ends at 0 or below or on which a point overflows, or another side: cause 14;
  // t0 not below t1: cause 15.
  CNuPointArray ToPointArray(int n, double t0, double t1, int side) const;
  CNuPolyline ToPolyline(int n, double t0, double t1, int side) const;

  // Least-squares parabola in the least-squares plane of the points: the sum of the squared orthogonal distances in
  // that plane (S. J. Ahn, W. Rauh, H.-J. Warnecke, Pattern Recognition 34, 2001) is least. Direct algebraic fits start
  // it; Gauss-Newton steps and, where those slow down, Newton steps in a trust region (J. J. More, D. C. Sorensen, SIAM
  // J. Scientific and Statistical Computing 4, 1983) refine the coefficients of the equation. For points that are not
  // clearly on one curve the best of some thirty descents is taken. The fit ends with a step, taken all the same, whose
  // squared length is below NuGetTol(), relative to a spread of the points below 1, or that is down to rounding, or
  // when ten steps have gained nothing. `formError` receives the largest minus the smallest signed distance,
  // `sumSquares` the sum of the squared ones. CNuBestfitException, for which the parabola and the outputs stay as they
  // were: cause 13 (size 0) for a limit below 1, before all else; cause 1 (size 5) below five points; cause 2 (size 4)
  // without four that are NuGetLengthTol() apart; cause 3 of the plane, named "CNuPlane"; cause 11 (size 0) for
  // coordinates that are not finite, points that no parabola fits and whatever else fails on the way; cause 12 (size 0)
  // when no step before the last permitted one ended the fit. FitEx throws cause 13 only: NuFitNoConvergence stands for
  // cause 12, NuFitFailure for every other failure.
  void Fit(const CNuPointArray& points, long maxIter);
  void Fit(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter);

 private:
  double m_f;
};

#endif
