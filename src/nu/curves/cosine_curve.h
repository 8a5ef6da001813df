#ifndef NU_CURVES_COSINE_CURVE_H
#define NU_CURVES_COSINE_CURVE_H

#include "nu/export.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"
#include "nu/geometry/fit_result.h"

// The curve y = a cos(b x + c) + d over x, with a and b above 0; b x + c in radians.
class NU_EXPORT CNuCosineCurve : public CNuTrigonometry {
 public:
  // Fails with CNuConstructionException ("CNuCosineCurve"):
  //   8  a or b is not above 0, or not finite
  CNuCosineCurve(double a, double b, double c, double d);
  CNuCosineCurve(const CNuCosineCurve&) = default;
  CNuCosineCurve& operator=(const CNuCosineCurve&) = default;
  ~CNuCosineCurve() override;

  // The four coefficients; b is in radians per length, c in radians.
  void GetData(double* a, double* b, double* c, double* d) const;

  // To a few roundings of |a| + |d| (of a b for the derivative), however many periods away x is; NaN where b x is not
  // finite.
  double ValueAt(double x) const;
  double DerivativeAt(double x) const;

  // 2 pi / b.
  double Period() const;

  // Least-squares curve as CNuSineCurve::Fit.
  // Fails with CNuBestfitException ("CNuCosineCurve"), the curve and the outputs unchanged, as CNuSineCurve::Fit.
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
