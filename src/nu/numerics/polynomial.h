#ifndef NU_NUMERICS_POLYNOMIAL_H
#define NU_NUMERICS_POLYNOMIAL_H

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"

// A real polynomial c_0 + c_1 x + ... + c_n x^n. It may carry a Chebyshev expression, set by FitMinMax, which then
// gives its values instead of the coefficients. Copies are deep. No memory: CNuMemoryException.
class NU_EXPORT CNuPolynomial : public CNuAlgebra {
 public:
  // Degree n with zero coefficients. Fails with CNuConstructionException ("CNuPolynomial", "degree"): cause 2, n < 0.
  explicit CNuPolynomial(int n = 0);
  CNuPolynomial(const CNuPolynomial& other);
  CNuPolynomial(CNuPolynomial&& other) noexcept;
  CNuPolynomial& operator=(const CNuPolynomial& other);
  CNuPolynomial& operator=(CNuPolynomial&& other) noexcept;
  ~CNuPolynomial() override;

  // The degree n as stored, whether or not the leading coefficient is 0.
  int GetDegree() const { return m_degree; }
  // The n + 1 coefficients by ascending power.
  const double* GetData() const { return m_data; }
  double* GetData() { return m_data; }

  // The coefficient of x^i. Fails with CNuOperationException: cause 3, i is out of range, with the valid range.
  double& operator[](int i);
  double operator[](int i) const;

  // Every coefficient smaller than tol in magnitude.
  ENuBoolean IsZero(double tol) const;
  // The same degree and, by NuIsEqual with tol, the same coefficients.
  ENuBoolean IsEqual(const CNuPolynomial& p, double tol) const;

  // Results carry no Chebyshev expression. With a polynomial they are simplified, with a number they are not.
  CNuPolynomial operator+(const CNuPolynomial& p) const;
  CNuPolynomial operator-(const CNuPolynomial& p) const;
  CNuPolynomial operator*(const CNuPolynomial& p) const;
  // Every coefficient negated, without a Chebyshev expression.
  CNuPolynomial operator-() const;
  // The constant term alone changes.
  CNuPolynomial operator+(double s) const;
  CNuPolynomial operator-(double s) const;
  CNuPolynomial& operator+=(double s);
  CNuPolynomial& operator-=(double s);
  // Fails with CNuOperationException: cause 7, a factor above NuGetLarge(); cause 6, a divisor below NuGetZero().
  CNuPolynomial operator*(double s) const;
  CNuPolynomial operator/(double s) const;
  CNuPolynomial& operator*=(double s);
  CNuPolynomial& operator/=(double s);

  // By Horner's rule, or of the Chebyshev expression, whose failures are those of its ValueAt and DerivativeAt.
  double ValueAt(double x) const;
  double DerivativeAt(double x) const;

  // Drops leading coefficients below NuGetZero(), never the constant term. The storage keeps its size.
  void Simplify();

  // Least squares over the polynomials of this degree; drops the Chebyshev expression. Coefficients that the samples do
  // not determine (fewer samples than coefficients; singular values of the powers below 1e-10 of the largest, or below
  // NuGetTol() of it) come out as small as possible. Those below 1e-10 become exactly 0. residualSum, unless null,
  // receives the sum of squared residuals, 0 where it is below NuGetTol().
  // Fails with CNuOperationException, the polynomial and the output unchanged; checked in this order:
  //    5  "data checking": x and y differ in size
  //   46  "calculation": an x, a y or a power of an x is not finite, or a singular value is not found
  // No samples: CNuConstructionException cause 1, that of a matrix without rows.
  void Fit(const CNuDoubleArray& x, const CNuDoubleArray& y);
  void Fit(const CNuDoubleArray& x, const CNuDoubleArray& y, double* residualSum);

  // The polynomial of the same degree that is nearly the best on [a, b] in the largest error, by a truncated Chebyshev
  // series; values then come from that series, also after changes of coefficients, until the polynomial is assigned
  // or fitted again. Failures are those of CNuChebyshevPolynomialExpression::FitMinMax.
  void FitMinMax(double a, double b, double (*f)(double));

 private:
  static constexpr int kLocal = 5;

  CNuPolynomial(int n, const char* where);
  CNuPolynomial WithoutExpression() const;
  void Take(CNuPolynomial& other) noexcept;
  [[noreturn]] void FailIndex() const;

  int m_degree;
  double* m_data;
  double m_local[kLocal];
  CNuChebyshevPolynomialExpression* m_chebyshev = nullptr;
};

// s p, with the failure of p s.
NU_EXPORT CNuPolynomial operator*(double s, const CNuPolynomial& p);

#endif
