#ifndef NU_LINALG_COMPLEX_H
#define NU_LINALG_COMPLEX_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"

// A complex number in Cartesian form. Results are new values; only the compound assignments change the object. Failures
// are CNuOperationException, unless stated otherwise, and leave the operands as they were.
class NU_EXPORT CNuComplex : public CNuAlgebra {
 public:
  // 0, and re + i im.
  CNuComplex() : CNuComplex(0.0, 0.0) {}
  CNuComplex(double re, double im) : CNuAlgebra(NuTypeComplex), m_re(re), m_im(im) {}
  CNuComplex(const CNuComplex&) = default;
  CNuComplex& operator=(const CNuComplex&) = default;
  ~CNuComplex() override = default;

  // The real and the imaginary part.
  double r() const { return m_re; }
  double i() const { return m_im; }
  void GetData(double* re, double* im) const;

  // sqrt(re^2 + im^2) without overflow; 0 when both parts are below NuGetZero() in magnitude.
  double Modulus() const;
  // re - i im.
  CNuComplex Conjugate() const;
  // Modulus and argument, the argument in [0, 2 pi) radians. Fails with CNuConstructionException ("CNuComplexPolar"):
  //   5  "modulus": zero within NuGetZero(), beyond the range of double, or NaN
  CNuComplexPolar ToPolarForm() const;

  // |re| < tol and |im| < tol
  ENuBoolean IsZero(double tol) const;
  // |im| < tol
  ENuBoolean IsReal(double tol) const;
  // |im| >= tol and |re| < tol: zero is not imaginary
  ENuBoolean IsImaginary(double tol) const;
  // Both parts differ by less than tol.
  ENuBoolean IsEqual(const CNuComplex& c, double tol) const;

  // Sums and differences, part by part.
  CNuComplex operator+(const CNuComplex& c) const;
  CNuComplex operator-(const CNuComplex& c) const;
  CNuComplex& operator+=(const CNuComplex& c);
  CNuComplex& operator-=(const CNuComplex& c);
  CNuComplex operator-() const;
  // (ac - bd, ad + bc), as written.
  CNuComplex operator*(const CNuComplex& c) const;
  // Scaled by the larger part of the divisor (R. L. Smith, Algorithm 116, Comm. ACM 5, 1962). A zero divisor is not
  // refused and gives parts that are not finite.
  CNuComplex operator/(const CNuComplex& c) const;
  // Fail, named by the operator:
  //   7  factor: |f| > NuGetLarge(), or NaN     6  divisor: |d| < NuGetZero(), or NaN
  CNuComplex operator*(double f) const;
  CNuComplex& operator*=(double f);
  CNuComplex operator/(double d) const;
  CNuComplex& operator/=(double d);

  // The principal square root: its real part is never negative, and on the negative real axis the imaginary part is
  // positive whatever the sign of a zero imaginary part. Zero within NuGetZero() gives 0.
  CNuComplex Sqrt() const;
  // The n-th power, and all n-th roots counter-clockwise, the first at 1/n of the argument. Both use the polar form,
  // but the roots of a finite number always exist. Fail ("calculation"):
  //   2  n < 1     7  Power: the modulus is above NuGetLarge()     else as ToPolarForm
  CNuComplex Power(int n) const;
  CNuComplexArray Roots(int n) const;

 private:
  double m_re;
  double m_im;
};

// f c, with the failure of c f.
NU_EXPORT CNuComplex operator*(double f, const CNuComplex& c);

#endif
