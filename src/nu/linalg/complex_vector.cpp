#include "nu/linalg/complex_vector.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "nu/foundation/internal/array_rules.h"
#include "nu/linalg/complex_matrix.h"
#include "nu/linalg/vector.h"

using namespace nu::internal;

namespace {

constexpr const char* kClass = "CNuComplexVector";

// 2^1000 brings any number near 1, and neither it nor its inverse meets the ends of the exponent range.
constexpr int kWidestScale = 1000;

void RequireSameSize(const CNuComplexVector& a, const CNuComplexVector& b, const char* what) {
  if (a.GetSize() != b.GetSize()) FailOperation(NuOperationSizeMismatch, what, kClass);
}

}  // namespace

CNuComplexVector::CNuComplexVector(int n) : CNuAlgebra(NuTypeComplexVector) {
  if (n < 1) throw CNuConstructionException(NuConstructionSize, "CNuComplexVector", "size", 0, 0);
  Init(n);
}

CNuComplexVector::CNuComplexVector(const CNuVector& re) : CNuComplexVector(re.GetSize()) {
  for (int i = 0; i < m_size; ++i) m_data[i] = {re[i], 0.0};
}

CNuComplexVector::CNuComplexVector(const CNuVector& re, const CNuVector& im) : CNuComplexVector(re.GetSize()) {
  if (im.GetSize() != m_size) FailOperation(NuOperationSizeMismatch, "operation", "CNuComplexVector");
  for (int i = 0; i < m_size; ++i) m_data[i] = {re[i], im[i]};
}

CNuComplexVector::CNuComplexVector(const CNuComplexVector& other) : CNuAlgebra(NuTypeComplexVector) {
  if (other.m_size == 0) return;
  Init(other.m_size);
  std::copy_n(other.m_data, m_size, m_data);
}

CNuComplexVector::CNuComplexVector(CNuComplexVector&& other) noexcept
    : CNuAlgebra(other), m_data(std::exchange(other.m_data, nullptr)), m_size(std::exchange(other.m_size, 0)) {}

CNuComplexVector& CNuComplexVector::operator=(CNuComplexVector other) noexcept {
  std::swap(m_data, other.m_data);
  std::swap(m_size, other.m_size);
  return *this;
}

CNuComplexVector::~CNuComplexVector() {
  ReleaseElements(m_data, m_size);
}

void CNuComplexVector::Init(int n) {
  m_data = AllocateElements<CNuComplex>(n, "CNuComplexVector::Init()");
  m_size = n;
}

void CNuComplexVector::CheckIndex(int i) const {
  RequireIndex(i, m_size, "element operator[]", "CNuComplexVector");
}

CNuComplex& CNuComplexVector::operator[](int i) {
  CheckIndex(i);
  return m_data[i];
}

CNuComplex CNuComplexVector::operator[](int i) const {
  CheckIndex(i);
  return m_data[i];
}

CNuComplexVector CNuComplexVector::operator+(const CNuComplexVector& b) const {
  RequireSameSize(*this, b, "operator+");
  CNuComplexVector result(*this);
  return std::move(result += b);
}

CNuComplexVector CNuComplexVector::operator-(const CNuComplexVector& b) const {
  RequireSameSize(*this, b, "operator-");
  CNuComplexVector result(*this);
  return std::move(result -= b);
}

CNuComplexVector CNuComplexVector::operator-() const {
  CNuComplexVector result(*this);
  for (int i = 0; i < m_size; ++i) result.m_data[i] = -m_data[i];
  return result;
}

CNuComplexVector& CNuComplexVector::operator+=(const CNuComplexVector& b) {
  RequireSameSize(*this, b, "operator+=");
  for (int i = 0; i < m_size; ++i) m_data[i] += b.m_data[i];
  return *this;
}

CNuComplexVector& CNuComplexVector::operator-=(const CNuComplexVector& b) {
  RequireSameSize(*this, b, "operator-=");
  for (int i = 0; i < m_size; ++i) m_data[i] -= b.m_data[i];
  return *this;
}

CNuComplex CNuComplexVector::operator%(const CNuComplexVector& b) const {
  RequireSameSize(*this, b, "operator%");
  CNuComplex sum;
  for (int i = 0; i < m_size; ++i) sum += m_data[i] * b.m_data[i];
  return sum;
}

CNuComplex CNuComplexVector::InnerProduct(const CNuComplexVector& v) const {
  if (m_size != v.m_size) FailOperation(NuOperationSizeMismatch, "operation", "CNuComplexVector::InnerProduct()");
  CNuComplex sum;
  for (int i = 0; i < m_size; ++i) sum += m_data[i].Conjugate() * v.m_data[i];
  return sum;
}

CNuComplexVector CNuComplexVector::operator*(const CNuComplexMatrix& m) const {
  if (m_size != m.GetRowSize()) FailOperation(NuOperationSizeMismatch, "operator*", kClass);
  CNuComplexVector result(m.GetColumnSize());
  for (int i = 0; i < m_size; ++i) {
    const CNuComplex* row = m.m_data + i * result.m_size;
    for (int j = 0; j < result.m_size; ++j) result.m_data[j] += m_data[i] * row[j];
  }
  return result;
}

CNuComplexVector CNuComplexVector::operator*(double f) const {
  RequireNumericFactor(f, "operator*", kClass);
  CNuComplexVector result(*this);
  return std::move(result *= f);
}

CNuComplexVector CNuComplexVector::operator*(const CNuComplex& f) const {
  RequireNumericFactor(f.Modulus(), "operator*", kClass);
  CNuComplexVector result(*this);
  return std::move(result *= f);
}

CNuComplexVector& CNuComplexVector::operator*=(double f) {
  RequireNumericFactor(f, "operator*=", kClass);
  for (int i = 0; i < m_size; ++i) m_data[i] = {m_data[i].r() * f, m_data[i].i() * f};
  return *this;
}

// The factor may be a component of this vector.
CNuComplexVector& CNuComplexVector::operator*=(const CNuComplex& f) {
  const CNuComplex factor = f;
  RequireNumericFactor(factor.Modulus(), "operator*=", kClass);
  for (int i = 0; i < m_size; ++i) m_data[i] = m_data[i] * factor;
  return *this;
}

CNuComplexVector operator*(double f, const CNuComplexVector& v) {
  return v * f;
}

CNuComplexVector operator*(const CNuComplex& f, const CNuComplexVector& v) {
  return v * f;
}

CNuComplexVector CNuComplexVector::operator/(double d) const {
  RequireDivisor(d, "operator/", kClass);
  CNuComplexVector result(*this);
  return std::move(result /= d);
}

CNuComplexVector CNuComplexVector::operator/(const CNuComplex& d) const {
  RequireDivisor(d.Modulus(), "operator/", kClass);
  CNuComplexVector result(*this);
  return std::move(result /= d);
}

CNuComplexVector& CNuComplexVector::operator/=(double d) {
  RequireDivisor(d, "operator/=", kClass);
  for (int i = 0; i < m_size; ++i) m_data[i] = {m_data[i].r() / d, m_data[i].i() / d};
  return *this;
}

CNuComplexVector& CNuComplexVector::operator/=(const CNuComplex& d) {
  const CNuComplex divisor = d;
  RequireDivisor(divisor.Modulus(), "operator/=", kClass);
  for (int i = 0; i < m_size; ++i) m_data[i] = m_data[i] / divisor;
  return *this;
}

// The power of two next to the largest part; 0 where scaling has nothing to save.
int CNuComplexVector::ScaleExponent() const {
  double largest = 0.0;
  for (int i = 0; i < m_size; ++i) largest = std::max({largest, std::fabs(m_data[i].r()), std::fabs(m_data[i].i())});
  if (!(largest > 0.0) || !std::isfinite(largest)) return 0;
  return std::clamp(std::ilogb(largest), -kWidestScale, kWidestScale);
}

double CNuComplexVector::ScaledMagnitude(int exponent) const {
  const double scale = std::ldexp(1.0, -exponent);
  double sum = 0.0;
  for (int i = 0; i < m_size; ++i) {
    const double re = m_data[i].r() * scale;
    const double im = m_data[i].i() * scale;
    sum += re * re + im * im;
  }
  return std::sqrt(sum);
}

double CNuComplexVector::Magnitude() const {
  const int exponent = ScaleExponent();
  return std::ldexp(ScaledMagnitude(exponent), exponent);
}

void CNuComplexVector::Normalise() {
  const int exponent = ScaleExponent();
  const double length = ScaledMagnitude(exponent);
  if (!std::isfinite(length) || !(length > 0.0) || !(std::ldexp(length, exponent) > NuGetZero())) return;
  const double scale = std::ldexp(1.0, -exponent);
  for (int i = 0; i < m_size; ++i) {
    m_data[i] = {m_data[i].r() * scale / length, m_data[i].i() * scale / length};
  }
}

CNuComplexVector CNuComplexVector::Conjugate() const {
  CNuComplexVector result(*this);
  for (int i = 0; i < m_size; ++i) result.m_data[i] = m_data[i].Conjugate();
  return result;
}

CNuVector CNuComplexVector::RealPart() const {
  CNuVector result(m_size);
  for (int i = 0; i < m_size; ++i) result[i] = m_data[i].r();
  return result;
}

CNuVector CNuComplexVector::ImaginaryPart() const {
  CNuVector result(m_size);
  for (int i = 0; i < m_size; ++i) result[i] = m_data[i].i();
  return result;
}

ENuBoolean CNuComplexVector::IsZero(double tol) const {
  return std::all_of(m_data, m_data + m_size, [tol](const CNuComplex& z) { return z.IsZero(tol) == NuTrue; }) ? NuTrue
                                                                                                              : NuFalse;
}

ENuBoolean CNuComplexVector::IsReal(double tol) const {
  return std::all_of(m_data, m_data + m_size, [tol](const CNuComplex& z) { return z.IsReal(tol) == NuTrue; }) ? NuTrue
                                                                                                              : NuFalse;
}

ENuBoolean CNuComplexVector::IsEqual(const CNuComplexVector& v, double tol) const {
  const auto isEqual = [tol](const CNuComplex& a, const CNuComplex& b) { return a.IsEqual(b, tol) == NuTrue; };
  return std::equal(m_data, m_data + m_size, v.m_data, v.m_data + v.m_size, isEqual) ? NuTrue : NuFalse;
}

CNuComplexVector CNuComplexVector::SubVector(int i, int j) const {
  constexpr const char* where = "CNuComplexVector::SubVector(i, j)";
  if (i < 0 || j >= m_size) FailOperation(NuOperationIndex, "operation", where, 0, m_size - 1);
  if (i > j) FailOperation(NuOperationRange, "operation", where);
  CNuComplexVector result(j - i + 1);
  std::copy(m_data + i, m_data + j + 1, result.m_data);
  return result;
}

CNuVector::operator CNuComplexVector() const {
  return CNuComplexVector(*this);
}
