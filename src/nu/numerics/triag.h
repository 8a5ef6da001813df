#ifndef NU_NUMERICS_TRIAG_H
#define NU_NUMERICS_TRIAG_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/foundation/object.h"

// The wave a cos u + b sin u + c, u in radians, which is also A cos(u - phase) + c with the amplitude A >= 0.
class NU_EXPORT CNuTriag : public CNuTrigonometry {
 public:
  // The coefficients are taken as they are.
  CNuTriag(double a, double b, double c);
  CNuTriag(const CNuTriag&) = default;
  CNuTriag& operator=(const CNuTriag&) = default;
  ~CNuTriag() override;

  // The three coefficients.
  void GetData(double* a, double* b, double* c) const;

  // To a rounding of |a| + |b| + |c|, for every finite u; NaN for others.
  double ValueAt(double u) const;
  double DerivativeAt(double u) const;

  // A = sqrt(a^2 + b^2), without overflow.
  double Amplitude() const;
  // Where the maximum lies, in radians in [0, 2 pi); 0 for a constant. A NaN among a and b gives NaN.
  double Phase() const;

  // Every coefficient smaller than tol in magnitude; every two coefficients closer than tol.
  ENuBoolean IsZero(double tol) const;
  ENuBoolean IsEqual(const CNuTriag& t, double tol) const;

  // Sums, differences and the negative, coefficient by coefficient.
  CNuTriag operator+(const CNuTriag& t) const;
  CNuTriag operator-(const CNuTriag& t) const;
  CNuTriag operator-() const;
  CNuTriag& operator+=(const CNuTriag& t);
  CNuTriag& operator-=(const CNuTriag& t);
  // Fails with CNuOperationException: cause 7, a factor above NuGetLarge(); cause 6, a divisor below NuGetZero().
  CNuTriag operator*(double f) const;
  CNuTriag operator/(double d) const;
  CNuTriag& operator*=(double f);
  CNuTriag& operator/=(double d);

 private:
  double m_a;
  double m_b;
  double m_c;
};

// f t, with the failure of t f.
NU_EXPORT CNuTriag operator*(double f, const CNuTriag& t);

#endif
