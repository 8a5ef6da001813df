#ifndef NU_NUMERICS_TRIAG_POLYNOMIAL_H
#define NU_NUMERICS_TRIAG_POLYNOMIAL_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"

// A trigonometric polynomial: the sum of a_k cos ku + b_k sin ku for k = 0..n, u in radians. a_0 is the constant term;
// b_0 is stored with the others and has no meaning. Copies are deep. No memory: CNuMemoryException.
class NU_EXPORT CNuTriagPolynomial : public CNuTrigonometry {
 public:
  // Degree n with zero coefficients. Fails with CNuConstructionException ("degree"): cause 2, n < 0.
  explicit CNuTriagPolynomial(int n = 0);
  // The wave as a polynomial of degree 1.
  explicit CNuTriagPolynomial(const CNuTriag& t);
  CNuTriagPolynomial(const CNuTriagPolynomial& other);
  CNuTriagPolynomial& operator=(CNuTriagPolynomial other) noexcept;
  ~CNuTriagPolynomial() override;

  // The degree n as stored, whether or not its coefficients are 0.
  int GetDegree() const { return m_degree; }
  // The coefficients by ascending k, GetDegree() + 1 of each.
  const double* GetCosData() const { return m_cos; }
  const double* GetSinData() const { return m_sin; }

  // a_k and b_k. Fails with CNuOperationException: cause 4, k is out of range, with the valid range.
  double& Cos(int k);
  double Cos(int k) const;
  double& Sin(int k);
  double Sin(int k) const;

  // The error is below eps times the sum of |a_k| + |b_k| for the value and 2 eps times the sum of k(|a_k| + |b_k|) for
  // the derivative, for every u (Ogita, Rump and Oishi, SIAM J. Sci. Comput. 26 (2005) 1955). NaN for a u that is not
  // finite, or overflows times n.
  double ValueAt(double u) const;
  double DerivativeAt(double u) const;

  // The sum and the difference have the larger degree, the product the sum of the degrees, whatever cancels.
  CNuTriagPolynomial operator+(const CNuTriagPolynomial& p) const;
  CNuTriagPolynomial operator-(const CNuTriagPolynomial& p) const;
  CNuTriagPolynomial operator*(const CNuTriagPolynomial& p) const;
  CNuTriagPolynomial operator-() const;
  CNuTriagPolynomial& operator+=(const CNuTriagPolynomial& p);
  CNuTriagPolynomial& operator-=(const CNuTriagPolynomial& p);
  CNuTriagPolynomial& operator*=(const CNuTriagPolynomial& p);
  // Fails with CNuOperationException: cause 7, a factor above NuGetLarge(); cause 6, a divisor below NuGetZero().
  CNuTriagPolynomial operator*(double f) const;
  CNuTriagPolynomial operator/(double d) const;
  CNuTriagPolynomial& operator*=(double f);
  CNuTriagPolynomial& operator/=(double d);

  // Drops the highest harmonics while both coefficients are below tol in magnitude, never the constant term. The
  // storage keeps its size.
  void Simplify(double tol);

  // Every coefficient smaller than tol in magnitude; the same degree and every two coefficients closer than tol.
  ENuBoolean IsZero(double tol) const;
  ENuBoolean IsEqual(const CNuTriagPolynomial& p, double tol) const;

 private:
  void AddScaled(const CNuTriagPolynomial& p, double f);

  int m_degree;
  int m_reserved;  // coefficients in the one block of both
  double* m_cos;
  double* m_sin;
};

// f p, with the failure of p f.
NU_EXPORT CNuTriagPolynomial operator*(double f, const CNuTriagPolynomial& p);

#endif
