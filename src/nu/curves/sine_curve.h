#ifndef NU_CURVES_SINE_CURVE_H
#define NU_CURVES_SINE_CURVE_H

#include "nu/export.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"
#include "nu/geometry/fit_result.h"

// The curve y = a sin(b x + c) + d over x, with a and b above 0; b x + c in radians.
class NU_EXPORT CNuSineCurve : public CNuTrigonometry {
 public:
  // a or b not above 0, or not finite: CNuConstructionException cause 8.
  CNuSineCurve(double a, double b, double c, double d);
  CNuSineCurve(const CNuSineCurve&) = default;
  CNuSineCurve& operator=(const CNuSineCurve&) = default;
  ~CNuSineCurve() override;

  void GetData(double* a, double* b, double* c, double* d) const;

  // To a few roundings of |a| + |d| (of a b for the derivative), however many periods away x is; NaN where b x is not
  // finite.
  double ValueAt(double x) const;
  double DerivativeAt(double x) const;

  // 2 pi / b.
  double Period() const;

  // Least-squares curve through the points (x, y), whatever their z: the sum of the squared y - ValueAt(x) is least
  // among all frequencies b up to the Nyquist limit, which is pi over the spacing of the points. The spacing is the
  // median distance of neighbours in x, but not above the mean distance and not below a quarter of it; points closer in
  // x than a thousandth of the mean distance count as one place. c is in [0, 2 pi). Of frequencies that fit equally
  // well, as few points allow, the lowest is taken. A scan of all frequencies starts the fit (M. Zechmeister,
  // M. Kuerster, Astronomy & Astrophysics 496, 2009), variable projection refines it (G. H. Golub, V. Pereyra, SIAM J.
  // Numer. Anal. 10, 1973) until a step changes the curve at the points by less than NuGetTol() of their range in y, in
  // the root mean square, or is down to rounding. The time grows as n log n. `formError` receives the largest minus the
  // smallest y - ValueAt(x), `sumSquares` the sum of the squared ones. CNuBestfitException, for which the curve and the
  // outputs stay as they were: cause 13 (size 0) for a limit below 1, before all else; cause 1 (size 4) below four
  // points; cause 11 (size 0) for coordinates that are not finite; cause 2 (size 4) without four x that are
  // NuGetLengthTol() apart; cause 6 (size 0) when the y differ by no more than NuGetLengthTol(); cause 11 (size 0) when
  // no curve is best, because a straight line or a parabola fits better than every period, and for whatever else fails
  // on the way; cause 12 (size 0) when no step before the last permitted one ended the fit, or after 100 000. FitEx
  // throws cause 13 only: NuFitNoConvergence stands for cause 12, NuFitFailure for every other failure.
  void Fit(const CNuPointArray& points, long maxIter);
  void Fit(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter);

 private:
  double m_a;
  double m_b;
  double m_c;
  double m_d;
};

#endif
