#include "nu/numerics/polynomial.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <utility>

#include "nu/foundation/internal/failures.h"
#include "nu/foundation/numeric_helpers.h"
#include "nu/numerics/chebyshev.h"

using namespace nu::internal;

namespace {

constexpr const char* kClass = "CNuPolynomial";
constexpr const char* kCopy = "CNuPolynomial::Copy()";

double CoefficientOrZero(const CNuPolynomial& p, int i) {
  return i <= p.GetDegree() ? p.GetData()[i] : 0.0;
}

}  // namespace

CNuPolynomial::CNuPolynomial(int n, const char* where)
    : CNuAlgebra(NuTypePolynomial), m_degree(n), m_data(m_local), m_local{} {
  if (n < kLocal) return;
  if (n == INT_MAX) throw CNuMemoryException(where);  // the coefficients cannot be counted
  m_data = WithMemory(where, [&] { return new double[static_cast<std::size_t>(n) + 1](); });
}

CNuPolynomial::CNuPolynomial(int n)
    : CNuPolynomial(n >= 0 ? n : throw CNuConstructionException(NuConstructionNegativeSize, kClass, "degree", 0, 0),
                    "CNuPolynomial()") {}

CNuPolynomial::CNuPolynomial(const CNuPolynomial& other) : CNuPolynomial(other.m_degree, kCopy) {
  std::copy_n(other.m_data, m_degree + 1, m_data);
  if (other.m_chebyshev == nullptr) return;
  m_chebyshev = WithMemory(kCopy, [&] { return new CNuChebyshevPolynomialExpression(*other.m_chebyshev); });
}

CNuPolynomial::CNuPolynomial(CNuPolynomial&& other) noexcept : CNuPolynomial(0, kCopy) {
  Take(other);
}

CNuPolynomial& CNuPolynomial::operator=(const CNuPolynomial& other) {
  if (this != &other) *this = CNuPolynomial(other);
  return *this;
}

CNuPolynomial& CNuPolynomial::operator=(CNuPolynomial&& other) noexcept {
  if (this != &other) Take(other);
  return *this;
}

CNuPolynomial::~CNuPolynomial() {
  if (m_data != m_local) delete[] m_data;
  delete m_chebyshev;
}

CNuPolynomial CNuPolynomial::WithoutExpression() const {
  CNuPolynomial copy(m_degree);
  std::copy_n(m_data, m_degree + 1, copy.m_data);
  return copy;
}

// Leaves the source the zero polynomial.
void CNuPolynomial::Take(CNuPolynomial& other) noexcept {
  if (m_data != m_local) delete[] m_data;
  delete m_chebyshev;
  std::copy_n(other.m_local, kLocal, m_local);
  m_data = other.m_data == other.m_local ? m_local : std::exchange(other.m_data, other.m_local);
  m_degree = std::exchange(other.m_degree, 0);
  m_chebyshev = std::exchange(other.m_chebyshev, nullptr);
  other.m_local[0] = 0.0;
}

double& CNuPolynomial::operator[](int i) {
  if (i < 0 || i > m_degree) FailIndex();
  return m_data[i];
}

double CNuPolynomial::operator[](int i) const {
  if (i < 0 || i > m_degree) FailIndex();
  return m_data[i];
}

void CNuPolynomial::FailIndex() const {
  FailOperation(NuOperationIndex, "element operator[]", kClass, 0, m_degree);
}

ENuBoolean CNuPolynomial::IsZero(double tol) const {
  return std::all_of(m_data, m_data + m_degree + 1, [tol](double c) { return std::fabs(c) < tol; }) ? NuTrue : NuFalse;
}

ENuBoolean CNuPolynomial::IsEqual(const CNuPolynomial& p, double tol) const {
  return NuIsEqual(m_degree + 1, p.m_degree + 1, m_data, p.m_data, tol);
}

CNuPolynomial CNuPolynomial::operator+(const CNuPolynomial& p) const {
  CNuPolynomial sum(std::max(m_degree, p.m_degree));
  for (int i = 0; i <= sum.m_degree; ++i) sum.m_data[i] = CoefficientOrZero(*this, i) + CoefficientOrZero(p, i);
  sum.Simplify();
  return sum;
}

CNuPolynomial CNuPolynomial::operator-(const CNuPolynomial& p) const {
  CNuPolynomial difference(std::max(m_degree, p.m_degree));
  for (int i = 0; i <= difference.m_degree; ++i)
    difference.m_data[i] = CoefficientOrZero(*this, i) - CoefficientOrZero(p, i);
  difference.Simplify();
  return difference;
}

CNuPolynomial CNuPolynomial::operator*(const CNuPolynomial& p) const {
  if (p.m_degree > INT_MAX - m_degree) throw CNuMemoryException("CNuPolynomial()");
  CNuPolynomial product(m_degree + p.m_degree);
  for (int i = 0; i <= m_degree; ++i) {
    for (int j = 0; j <= p.m_degree; ++j) product.m_data[i + j] += m_data[i] * p.m_data[j];
  }
  product.Simplify();
  return product;
}

CNuPolynomial CNuPolynomial::operator-() const {
  CNuPolynomial negative(WithoutExpression());
  for (int i = 0; i <= m_degree; ++i) negative.m_data[i] = -m_data[i];
  return negative;
}

CNuPolynomial CNuPolynomial::operator+(double s) const {
  CNuPolynomial sum(WithoutExpression());
  return std::move(sum += s);
}

CNuPolynomial CNuPolynomial::operator-(double s) const {
  CNuPolynomial difference(WithoutExpression());
  return std::move(difference -= s);
}

CNuPolynomial CNuPolynomial::operator*(double s) const {
  RequireFactor(s, "operator*", kClass);
  CNuPolynomial product(WithoutExpression());
  return std::move(product *= s);
}

CNuPolynomial CNuPolynomial::operator/(double s) const {
  RequireDivisor(s, "operator/", kClass);
  CNuPolynomial quotient(WithoutExpression());
  return std::move(quotient /= s);
}

CNuPolynomial& CNuPolynomial::operator+=(double s) {
  m_data[0] += s;
  return *this;
}

CNuPolynomial& CNuPolynomial::operator-=(double s) {
  m_data[0] -= s;
  return *this;
}

CNuPolynomial& CNuPolynomial::operator*=(double s) {
  RequireFactor(s, "operator*=", kClass);
  for (int i = 0; i <= m_degree; ++i) m_data[i] *= s;
  return *this;
}

CNuPolynomial& CNuPolynomial::operator/=(double s) {
  RequireDivisor(s, "operator/=", kClass);
  for (int i = 0; i <= m_degree; ++i) m_data[i] /= s;
  return *this;
}

CNuPolynomial operator*(double s, const CNuPolynomial& p) {
  return p * s;
}

double CNuPolynomial::ValueAt(double x) const {
  if (m_chebyshev != nullptr) return m_chebyshev->ValueAt(x);
  double value = m_data[m_degree];
  for (int i = m_degree - 1; i >= 0; --i) value = value * x + m_data[i];
  return value;
}

double CNuPolynomial::DerivativeAt(double x) const {
  if (m_chebyshev != nullptr) return m_chebyshev->DerivativeAt(x);
  double derivative = 0.0;
  double value = m_data[m_degree];
  for (int i = m_degree - 1; i >= 0; --i) {
    derivative = derivative * x + value;
    value = value * x + m_data[i];
  }
  return derivative;
}

void CNuPolynomial::Simplify() {
  const double zero = NuGetZero();
  while (m_degree > 0 && std::fabs(m_data[m_degree]) < zero) --m_degree;
}

void CNuPolynomial::FitMinMax(double a, double b, double (*f)(double)) {
  CNuChebyshevPolynomialExpression expression(m_degree);
  expression.FitMinMax(a, b, f);
  CNuPolynomial fitted(expression.ToPolynomial());
  fitted.m_chebyshev = WithMemory(kCopy, [&] { return new CNuChebyshevPolynomialExpression(std::move(expression)); });
  Take(fitted);
}
