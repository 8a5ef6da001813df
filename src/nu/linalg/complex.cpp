#include "nu/linalg/complex.h"

#include <cmath>

#include "nu/engine/base/elementary.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/foundation/numeric_helpers.h"
#include "nu/linalg/complex_array.h"
#include "nu/linalg/complex_polar.h"

using namespace nu::internal;

namespace {

// Unlike the divisors of vectors and matrices a NaN is refused.
void RequireNumericDivisor(double d, const char* what, const char* where) {
  if (!(std::fabs(d) >= NuGetZero())) FailOperation(NuOperationZeroDivisor, what, where);
}

}  // namespace

void CNuComplex::GetData(double* re, double* im) const {
  Output(re, m_re);
  Output(im, m_im);
}

double CNuComplex::Modulus() const {
  return NuPythag(m_re, m_im);
}

CNuComplex CNuComplex::Conjugate() const {
  return {m_re, -m_im};
}

CNuComplexPolar CNuComplex::ToPolarForm() const {
  const double modulus = Modulus();
  // Neither zero nor a number whose modulus is beyond the range of double has a polar form, and it is the polar
  // constructor that says so.
  if (IsZero(NuGetZero()) || std::isinf(modulus)) return {0.0, 0.0};
  return {modulus, NuArcCosSin(m_re / modulus, m_im / modulus)};
}

ENuBoolean CNuComplex::IsZero(double tol) const {
  return std::fabs(m_re) < tol && std::fabs(m_im) < tol ? NuTrue : NuFalse;
}

ENuBoolean CNuComplex::IsReal(double tol) const {
  return std::fabs(m_im) < tol ? NuTrue : NuFalse;
}

ENuBoolean CNuComplex::IsImaginary(double tol) const {
  return std::fabs(m_im) >= tol && std::fabs(m_re) < tol ? NuTrue : NuFalse;
}

ENuBoolean CNuComplex::IsEqual(const CNuComplex& c, double tol) const {
  return std::fabs(m_re - c.m_re) < tol && std::fabs(m_im - c.m_im) < tol ? NuTrue : NuFalse;
}

CNuComplex CNuComplex::operator+(const CNuComplex& c) const {
  return {m_re + c.m_re, m_im + c.m_im};
}

CNuComplex CNuComplex::operator-(const CNuComplex& c) const {
  return {m_re - c.m_re, m_im - c.m_im};
}

CNuComplex& CNuComplex::operator+=(const CNuComplex& c) {
  return *this = *this + c;
}

CNuComplex& CNuComplex::operator-=(const CNuComplex& c) {
  return *this = *this - c;
}

CNuComplex CNuComplex::operator-() const {
  return {-m_re, -m_im};
}

CNuComplex CNuComplex::operator*(const CNuComplex& c) const {
  return {m_re * c.m_re - m_im * c.m_im, m_re * c.m_im + m_im * c.m_re};
}

CNuComplex CNuComplex::operator/(const CNuComplex& c) const {
  if (std::fabs(c.m_re) >= std::fabs(c.m_im)) {
    const double ratio = c.m_im / c.m_re;
    const double den = c.m_re + ratio * c.m_im;
    return {(m_re + ratio * m_im) / den, (m_im - ratio * m_re) / den};
  }
  const double ratio = c.m_re / c.m_im;
  const double den = c.m_im + ratio * c.m_re;
  return {(m_re * ratio + m_im) / den, (m_im * ratio - m_re) / den};
}

CNuComplex CNuComplex::operator*(double f) const {
  RequireNumericFactor(f, "operator*", "CNuComplex");
  return {m_re * f, m_im * f};
}

CNuComplex& CNuComplex::operator*=(double f) {
  RequireNumericFactor(f, "operator*=", "CNuComplex");
  m_re *= f;
  m_im *= f;
  return *this;
}

CNuComplex operator*(double f, const CNuComplex& c) {
  return c * f;
}

CNuComplex CNuComplex::operator/(double d) const {
  RequireNumericDivisor(d, "operator/", "CNuComplex");
  return {m_re / d, m_im / d};
}

CNuComplex& CNuComplex::operator/=(double d) {
  RequireNumericDivisor(d, "operator/=", "CNuComplex");
  m_re /= d;
  m_im /= d;
  return *this;
}

CNuComplex CNuComplex::Sqrt() const {
  if (IsZero(NuGetZero())) return {0.0, 0.0};
  const double x = std::fabs(m_re);
  const double y = std::fabs(m_im);
  const double r = x >= y ? y / x : x / y;
  const double hypotenuse = std::sqrt(1.0 + r * r);
  const double w =
      x >= y ? std::sqrt(x) * std::sqrt((1.0 + hypotenuse) / 2.0) : std::sqrt(y) * std::sqrt((r + hypotenuse) / 2.0);
  if (m_re >= 0.0) return {w, m_im / (2.0 * w)};
  const double s = m_im >= 0.0 ? w : -w;
  return {m_im / (2.0 * s), s};
}

CNuComplex CNuComplex::Power(int n) const {
  if (n < 1) FailOperation(NuOperationRoot, "calculation", "CNuComplex::Power()");
  if (std::isinf(Modulus())) FailOperation(NuOperationLargeFactor, "calculation", "CNuComplexPolar::Power()");
  return ToPolarForm().Power(n).ToCartesianForm();
}

CNuComplexArray CNuComplex::Roots(int n) const {
  if (n < 1) FailOperation(NuOperationRoot, "calculation", "CNuComplex::Roots()", 1);
  // Half of a number whose modulus is beyond the range of double has a polar form; its roots are in that range again.
  const bool isBeyond = std::isinf(Modulus());
  const CNuComplex within = isBeyond ? CNuComplex(0.5 * m_re, 0.5 * m_im) : *this;
  const double factor = isBeyond ? Pow(2.0, 1.0 / n) : 1.0;
  const CNuComplexPolarArray polar = within.ToPolarForm().Roots(n);
  CNuComplexArray roots(n);
  for (int k = 0; k < n; ++k) {
    const CNuComplex root = polar[k].ToCartesianForm();
    roots.Add({factor * root.r(), factor * root.i()});
  }
  return roots;
}
