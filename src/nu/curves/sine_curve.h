#ifndef NU_CURVES_SINE_CURVE_H
#define NU_CURVES_SINE_CURVE_H

#include "nu/export.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"
#include "nu/geometry/fit_result.h"

// The curve y = a sin(b x + c) + d over x, with a and b above 0; b x + c in radians.
class NU_EXPORT CNuSineCurve : public CNuTrigonometry {
 public:
  // Fails with CNuConstructionException ("CNuSineCurve"):
  //   8  a or b is not above 0, or not finite
  CNuSineCurve(double a, double b, double c, double d);
  CNuSineCurve(const CNuSineCurve&) = default;
  CNuSineCurve& operator=(const CNuSineCurve&) = default;
  ~CNuSineCurve() override;

  // The four coefficients; b is in radians per length, c in radians.
  void GetData(double* a, double* b, double* c, double* d) const;

  // To a few roundings of |a| + |d| (of a b for the derivative), however many periods away x is; NaN where b x is not
  // finite.
  double ValueAt(double x) const;
  double DerivativeAt(double x) const;

  // 2 pi / b.
  double Period() const;

  // Least-squares curve through the points (x, y), whatever their z: minimises the sum of the squared y - ValueAt(x)
  // over all frequencies b up to the Nyquist limit, which is pi over the spacing of the points. The spacing is the
  // median distance of neighbours in x, but not above the mean distance and not below a quarter of it; points closer in
  // x than a thousandth of the mean distance count as one place. c is in [0, 2 pi). Of frequencies that fit equally
  // well, as few points allow, the lowest is taken. A scan of all frequencies starts the fit (M. Zechmeister, M.
  // Kuerster, Astronomy & Astrophysics 496, 2009). Variable projection refines it (G. H. Golub, V. Pereyra, SIAM J.
  // Numer. Anal. 10, 1973) until a step changes the curve at the points by less than NuGetTol() of their range in y, in
  // the root mean square, or by rounding only. The time grows as n log n.
  // Fails with CNuBestfitException ("CNuSineCurve"), the curve and the outputs unchanged:
  //   13  maxIter < 1     1  fewer than 4 points     2  fewer than 4 points whose x are NuGetLengthTol() apart
  //   6  the y differ by no more than NuGetLengthTol()
  //   11  no curve is best: a straight line or a parabola fits better than every period
  //   12  maxIter, or 100 000, steps were used up, even by the one that converged
  void Fit(const CNuPointArray& points, long maxIter);
  void Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, double* form, double* sumSquares, long maxIter);

 private:
  double m_a;
  double m_b;
  double m_c;
  double m_d;
};

#endif
