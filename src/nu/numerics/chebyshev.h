#ifndef NU_NUMERICS_CHEBYSHEV_H
#define NU_NUMERICS_CHEBYSHEV_H

#include "nu/export.h"
#include "nu/foundation/object.h"
#include "nu/numerics/polynomial.h"

// The Chebyshev polynomial of the first kind T_n as a polynomial in powers of x. The coefficients are those of the
// recurrence T_n = 2x T_(n-1) - T_(n-2) in double arithmetic: exact up to degree 80.
class NU_EXPORT CNuChebyshevPolynomial : public CNuAlgebra {
 public:
  // Fails with CNuConstructionException ("CNuChebyshevPolynomial", "degree"): cause 2, n < 0. No memory:
  // CNuMemoryException.
  explicit CNuChebyshevPolynomial(int n);
  CNuChebyshevPolynomial(const CNuChebyshevPolynomial&) = default;
  CNuChebyshevPolynomial(CNuChebyshevPolynomial&&) noexcept = default;
  CNuChebyshevPolynomial& operator=(const CNuChebyshevPolynomial&) = default;
  CNuChebyshevPolynomial& operator=(CNuChebyshevPolynomial&&) noexcept = default;
  ~CNuChebyshevPolynomial() override;

  // The same polynomial in powers of x.
  CNuPolynomial ToPolynomial() const { return m_polynomial; }

 private:
  CNuPolynomial m_polynomial;
};

// A function on [a, b] as the truncated series c_0 / 2 + c_1 T_1(y) + ... + c_n T_n(y), where y runs from -1 to 1 while
// x runs from a to b. For smooth functions it lies close to the minimax polynomial of degree n. Until it is fitted it
// is zero everywhere.
class NU_EXPORT CNuChebyshevPolynomialExpression : public CNuAlgebra {
 public:
  // Fails with CNuConstructionException ("CNuChebyshevPolynomialExpression", "degree"): cause 2, n < 0.
  explicit CNuChebyshevPolynomialExpression(int n);
  CNuChebyshevPolynomialExpression(const CNuChebyshevPolynomialExpression&) = default;
  CNuChebyshevPolynomialExpression(CNuChebyshevPolynomialExpression&&) noexcept = default;
  CNuChebyshevPolynomialExpression& operator=(const CNuChebyshevPolynomialExpression&) = default;
  CNuChebyshevPolynomialExpression& operator=(CNuChebyshevPolynomialExpression&&) noexcept = default;
  ~CNuChebyshevPolynomialExpression() override;

  // Fits f by its values at the n + 11 Chebyshev nodes, each asked once. A value that is not finite spoils the
  // coefficients.
  // Fails with CNuOperationException ("data checking"): cause 41, not a < b, b - a overflows, or f is null. No memory:
  // CNuMemoryException. These, and what f throws, leave the expression unchanged.
  void FitMinMax(double a, double b, double (*f)(double));

  // Value and derivative, both ends of the interval included.
  // Fails with CNuOperationException ("data checking"): cause 40, x is outside [a, b], for the value with a and b.
  double ValueAt(double x) const;
  double DerivativeAt(double x) const;

  // The same polynomial in powers of x, of degree n; zero of degree 0 until fitted. No memory: CNuMemoryException.
  CNuPolynomial ToPolynomial() const;

 private:
  bool IsFitted() const { return m_coefficients.GetDegree() > 0; }
  // The place of x in [a, b], from -1 to 1.
  double Place(double x) const;

  int m_degree;
  double m_a = 0.0;
  double m_b = 0.0;
  CNuPolynomial m_coefficients;  // c_0 and on; ten more than the series uses
};

#endif
