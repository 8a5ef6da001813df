#include "nu/numerics/triag_polynomial.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <utility>

#include "nu/engine/roots/trig_sum.h"
#include "nu/foundation/internal/array_rules.h"
#include "nu/foundation/internal/failures.h"
#include "nu/numerics/triag.h"

using namespace nu::internal;

namespace {

constexpr int kMostDegree = INT_MAX / 2 - 1;
constexpr const char* kInit = "CNuTriagPolynomial::Init()";

// A degree whose coefficients cannot be counted is one for which there is no memory.
int CoefficientsOf(int degree) {
  if (degree < 0) throw CNuConstructionException(NuConstructionNegativeSize, "CNuTriagPolynomial", "degree", 0, 0);
  if (degree > kMostDegree) throw CNuMemoryException(kInit);
  return 2 * (degree + 1);
}

int DegreeOfProduct(int n, int m) {
  if (n > kMostDegree - m) throw CNuMemoryException(kInit);
  return n + m;
}

void RequireHarmonic(int k, int degree, const char* where) {
  if (k < 0 || k > degree) FailOperation(NuOperationCoefficient, "operation", where, 0, degree);
}

}  // namespace

CNuTriagPolynomial::CNuTriagPolynomial(int n)
    : CNuTrigonometry(NuTypeTriagPolynomial),
      m_degree(n),
      m_reserved(CoefficientsOf(n)),
      m_cos(AllocateElements<double>(m_reserved, kInit)),
      m_sin(m_cos + n + 1) {}

CNuTriagPolynomial::CNuTriagPolynomial(const CNuTriag& t) : CNuTriagPolynomial(1) {
  t.GetData(&m_cos[1], &m_sin[1], &m_cos[0]);
}

CNuTriagPolynomial::CNuTriagPolynomial(const CNuTriagPolynomial& other) : CNuTriagPolynomial(other.m_degree) {
  std::copy_n(other.m_cos, m_degree + 1, m_cos);
  std::copy_n(other.m_sin, m_degree + 1, m_sin);
}

CNuTriagPolynomial& CNuTriagPolynomial::operator=(CNuTriagPolynomial other) noexcept {
  std::swap(m_degree, other.m_degree);
  std::swap(m_reserved, other.m_reserved);
  std::swap(m_cos, other.m_cos);
  std::swap(m_sin, other.m_sin);
  return *this;
}

CNuTriagPolynomial::~CNuTriagPolynomial() {
  ReleaseElements(m_cos, m_reserved);
}

double& CNuTriagPolynomial::Cos(int k) {
  RequireHarmonic(k, m_degree, "CNuTriagPolynomial::Cos()");
  return m_cos[k];
}

double CNuTriagPolynomial::Cos(int k) const {
  RequireHarmonic(k, m_degree, "CNuTriagPolynomial::Cos()");
  return m_cos[k];
}

double& CNuTriagPolynomial::Sin(int k) {
  RequireHarmonic(k, m_degree, "CNuTriagPolynomial::Sin()");
  return m_sin[k];
}

double CNuTriagPolynomial::Sin(int k) const {
  RequireHarmonic(k, m_degree, "CNuTriagPolynomial::Sin()");
  return m_sin[k];
}

double CNuTriagPolynomial::ValueAt(double u) const {
  return TrigValue(m_cos, m_sin, m_degree, u);
}

double CNuTriagPolynomial::DerivativeAt(double u) const {
  return TrigDerivative(m_cos, m_sin, m_degree, u);
}

void CNuTriagPolynomial::AddScaled(const CNuTriagPolynomial& p, double f) {
  for (int k = 0; k <= p.m_degree; ++k) {
    m_cos[k] += f * p.m_cos[k];
    m_sin[k] += f * p.m_sin[k];
  }
}

CNuTriagPolynomial CNuTriagPolynomial::operator+(const CNuTriagPolynomial& p) const {
  CNuTriagPolynomial sum(std::max(m_degree, p.m_degree));
  sum.AddScaled(*this, 1.0);
  sum.AddScaled(p, 1.0);
  return sum;
}

CNuTriagPolynomial CNuTriagPolynomial::operator-(const CNuTriagPolynomial& p) const {
  CNuTriagPolynomial difference(std::max(m_degree, p.m_degree));
  difference.AddScaled(*this, 1.0);
  difference.AddScaled(p, -1.0);
  return difference;
}

CNuTriagPolynomial CNuTriagPolynomial::operator*(const CNuTriagPolynomial& p) const {
  CNuTriagPolynomial product(DegreeOfProduct(m_degree, p.m_degree));
  AddTrigProduct(m_cos, m_sin, m_degree, p.m_cos, p.m_sin, p.m_degree, product.m_cos, product.m_sin);
  return product;
}

CNuTriagPolynomial CNuTriagPolynomial::operator-() const {
  return *this * -1.0;
}

CNuTriagPolynomial& CNuTriagPolynomial::operator+=(const CNuTriagPolynomial& p) {
  return *this = *this + p;
}

CNuTriagPolynomial& CNuTriagPolynomial::operator-=(const CNuTriagPolynomial& p) {
  return *this = *this - p;
}

CNuTriagPolynomial& CNuTriagPolynomial::operator*=(const CNuTriagPolynomial& p) {
  return *this = *this * p;
}

CNuTriagPolynomial CNuTriagPolynomial::operator*(double f) const {
  RequireFactor(f, "operator*", "CNuTriagPolynomial");
  return CNuTriagPolynomial(*this) *= f;
}

CNuTriagPolynomial CNuTriagPolynomial::operator/(double d) const {
  RequireDivisor(d, "operator/", "CNuTriagPolynomial");
  return CNuTriagPolynomial(*this) /= d;
}

CNuTriagPolynomial& CNuTriagPolynomial::operator*=(double f) {
  RequireFactor(f, "operator*=", "CNuTriagPolynomial");
  for (int k = 0; k <= m_degree; ++k) {
    m_cos[k] *= f;
    m_sin[k] *= f;
  }
  return *this;
}

CNuTriagPolynomial& CNuTriagPolynomial::operator/=(double d) {
  RequireDivisor(d, "operator/=", "CNuTriagPolynomial");
  for (int k = 0; k <= m_degree; ++k) {
    m_cos[k] /= d;
    m_sin[k] /= d;
  }
  return *this;
}

CNuTriagPolynomial operator*(double f, const CNuTriagPolynomial& p) {
  return p * f;
}

void CNuTriagPolynomial::Simplify(double tol) {
  while (m_degree > 0 && std::fabs(m_cos[m_degree]) < tol && std::fabs(m_sin[m_degree]) < tol) --m_degree;
}

ENuBoolean CNuTriagPolynomial::IsZero(double tol) const {
  bool zero = std::fabs(m_cos[0]) < tol;
  for (int k = 1; k <= m_degree; ++k) zero = zero && std::fabs(m_cos[k]) < tol && std::fabs(m_sin[k]) < tol;
  return zero ? NuTrue : NuFalse;
}

ENuBoolean CNuTriagPolynomial::IsEqual(const CNuTriagPolynomial& p, double tol) const {
  return m_degree == p.m_degree && (*this - p).IsZero(tol) ? NuTrue : NuFalse;
}
