#include "nu/linalg/complex_matrix.h"

#include <algorithm>
#include <climits>
#include <utility>

#include "nu/foundation/internal/array_rules.h"
#include "nu/linalg/complex_vector.h"
#include "nu/linalg/internal/block_checks.h"
#include "nu/linalg/matrix.h"

using namespace nu::internal;

namespace {

constexpr const char* kClass = "CNuComplexMatrix";

template<class Matrix>
void RequireSameShape(const Matrix& a, const Matrix& b, const char* what) {
  nu::internal::RequireSameShape(a, b, what, kClass);
}

}  // namespace

CNuComplexMatrix::CNuComplexMatrix(int rows, int columns) : CNuAlgebra(NuTypeComplexMatrix) {
  if (rows < 1 || columns < 1)
    throw CNuConstructionException(NuConstructionSize, "CNuComplexMatrix", "number of rows/columns", 0, 0);
  Init(rows, columns);
}

CNuComplexMatrix::CNuComplexMatrix(const CNuMatrix& re) : CNuComplexMatrix(re.GetRowSize(), re.GetColumnSize()) {
  for (int i = 0; i < m_rows; ++i) {
    for (int j = 0; j < m_columns; ++j) Element(i, j) = {re.GetData()[i][j], 0.0};
  }
}

CNuComplexMatrix::CNuComplexMatrix(const CNuMatrix& re, const CNuMatrix& im)
    : CNuComplexMatrix(re.GetRowSize(), re.GetColumnSize()) {
  RequireSameShape(re, im, "operation");
  for (int i = 0; i < m_rows; ++i) {
    for (int j = 0; j < m_columns; ++j) Element(i, j) = {re.GetData()[i][j], im.GetData()[i][j]};
  }
}

CNuComplexMatrix::CNuComplexMatrix(const CNuComplexMatrix& other) : CNuAlgebra(NuTypeComplexMatrix) {
  if (other.m_rows == 0) return;
  Init(other.m_rows, other.m_columns);
  std::copy_n(other.m_data, m_rows * m_columns, m_data);
}

CNuComplexMatrix::CNuComplexMatrix(CNuComplexMatrix&& other) noexcept
    : CNuAlgebra(other),
      m_data(std::exchange(other.m_data, nullptr)),
      m_rows(std::exchange(other.m_rows, 0)),
      m_columns(std::exchange(other.m_columns, 0)) {}

CNuComplexMatrix& CNuComplexMatrix::operator=(CNuComplexMatrix other) noexcept {
  std::swap(m_data, other.m_data);
  std::swap(m_rows, other.m_rows);
  std::swap(m_columns, other.m_columns);
  return *this;
}

CNuComplexMatrix::~CNuComplexMatrix() {
  ReleaseElements(m_data, m_rows * m_columns);
}

void CNuComplexMatrix::Init(int rows, int columns) {
  if (rows > INT_MAX / columns) throw CNuMemoryException("CNuComplexMatrix::Init()");
  m_data = AllocateElements<CNuComplex>(rows * columns, "CNuComplexMatrix::Init()");
  m_rows = rows;
  m_columns = columns;
}

int CNuComplexMatrix::IndexOf(int i, int j) const {
  RequireIndex(i, m_rows, "operation", "CNuComplexMatrix::Element()");
  RequireIndex(j, m_columns, "operation", "CNuComplexMatrix::Element()");
  return i * m_columns + j;
}

CNuComplexVector CNuComplexMatrix::GetRowVector(int i) const {
  RequireIndex(i, m_rows, "operation", "CNuComplexMatrix::GetRowVector()");
  CNuComplexVector v(m_columns);
  std::copy_n(m_data + i * m_columns, m_columns, v.GetData());
  return v;
}

CNuComplexVector CNuComplexMatrix::GetColumnVector(int j) const {
  RequireIndex(j, m_columns, "operation", "CNuComplexMatrix::GetColumnVector()");
  CNuComplexVector v(m_rows);
  for (int i = 0; i < m_rows; ++i) v.GetData()[i] = m_data[i * m_columns + j];
  return v;
}

void CNuComplexMatrix::SetRowVector(int i, const CNuComplexVector& v) {
  constexpr const char* where = "CNuComplexMatrix::SetRowVector()";
  RequireIndex(i, m_rows, "operation", where);
  if (v.GetSize() != m_columns) FailOperation(NuOperationSizeMismatch, "operation", where);
  std::copy_n(v.GetData(), m_columns, m_data + i * m_columns);
}

void CNuComplexMatrix::SetColumnVector(int j, const CNuComplexVector& v) {
  constexpr const char* where = "CNuComplexMatrix::SetColumnVector()";
  RequireIndex(j, m_columns, "operation", where);
  if (v.GetSize() != m_rows) FailOperation(NuOperationSizeMismatch, "operation", where);
  for (int i = 0; i < m_rows; ++i) m_data[i * m_columns + j] = v.GetData()[i];
}

CNuComplexMatrix CNuComplexMatrix::SubMatrix(int r1, int r2, int c1, int c2) const {
  RequireBlock(*this, r1, r2, c1, c2, "CNuComplexMatrix::SubMatrix()");
  CNuComplexMatrix result(r2 - r1 + 1, c2 - c1 + 1);
  for (int i = 0; i < result.m_rows; ++i)
    std::copy_n(m_data + (r1 + i) * m_columns + c1, result.m_columns, result.m_data + i * result.m_columns);
  return result;
}

// A block of the shape of the whole matrix that is the matrix itself changes nothing.
void CNuComplexMatrix::SetSubMatrix(int r1, int r2, int c1, int c2, const CNuComplexMatrix& m) {
  constexpr const char* where = "CNuComplexMatrix::SetSubMatrix()";
  RequireBlock(*this, r1, r2, c1, c2, where);
  if (m.m_rows != r2 - r1 + 1 || m.m_columns != c2 - c1 + 1) FailOperation(NuOperationSizeMismatch, "operation", where);
  if (this == &m) return;
  for (int i = 0; i < m.m_rows; ++i)
    std::copy_n(m.m_data + i * m.m_columns, m.m_columns, m_data + (r1 + i) * m_columns + c1);
}

CNuComplexMatrix CNuComplexMatrix::Identity(int n) {
  CNuComplexMatrix result(n, n);
  for (int i = 0; i < n; ++i) result.Element(i, i) = {1.0, 0.0};
  return result;
}

CNuComplexMatrix CNuComplexMatrix::DiagonalMatrix(const CNuComplexVector& v) {
  CNuComplexMatrix result(v.GetSize(), v.GetSize());
  for (int i = 0; i < v.GetSize(); ++i) result.Element(i, i) = v.GetData()[i];
  return result;
}

CNuComplex CNuComplexMatrix::Trace() const {
  if (m_rows != m_columns) FailOperation(NuOperationMatrix, "calculation", "CNuComplexMatrix::Trace()");
  CNuComplex trace;
  for (int i = 0; i < m_rows; ++i) trace += m_data[i * m_columns + i];
  return trace;
}

CNuComplexMatrix CNuComplexMatrix::Transpose() const {
  CNuComplexMatrix result(m_columns, m_rows);
  for (int i = 0; i < m_columns; ++i) {
    for (int j = 0; j < m_rows; ++j) result.m_data[i * m_rows + j] = m_data[j * m_columns + i];
  }
  return result;
}

CNuComplexMatrix CNuComplexMatrix::ConjugateTranspose() const {
  CNuComplexMatrix result = Transpose();
  for (int k = 0; k < m_rows * m_columns; ++k) result.m_data[k] = result.m_data[k].Conjugate();
  return result;
}

CNuMatrix CNuComplexMatrix::RealPart() const {
  CNuMatrix result(m_rows, m_columns);
  for (int k = 0; k < m_rows * m_columns; ++k) result.GetData()[0][k] = m_data[k].r();
  return result;
}

CNuMatrix CNuComplexMatrix::ImaginaryPart() const {
  CNuMatrix result(m_rows, m_columns);
  for (int k = 0; k < m_rows * m_columns; ++k) result.GetData()[0][k] = m_data[k].i();
  return result;
}

CNuComplexMatrix CNuComplexMatrix::operator+(const CNuComplexMatrix& b) const {
  RequireSameShape(*this, b, "operator+");
  CNuComplexMatrix result(*this);
  return std::move(result += b);
}

CNuComplexMatrix CNuComplexMatrix::operator-(const CNuComplexMatrix& b) const {
  RequireSameShape(*this, b, "operator-");
  CNuComplexMatrix result(*this);
  return std::move(result -= b);
}

CNuComplexMatrix& CNuComplexMatrix::operator+=(const CNuComplexMatrix& b) {
  RequireSameShape(*this, b, "operator+=");
  for (int k = 0; k < m_rows * m_columns; ++k) m_data[k] += b.m_data[k];
  return *this;
}

CNuComplexMatrix& CNuComplexMatrix::operator-=(const CNuComplexMatrix& b) {
  RequireSameShape(*this, b, "operator-=");
  for (int k = 0; k < m_rows * m_columns; ++k) m_data[k] -= b.m_data[k];
  return *this;
}

CNuComplexMatrix CNuComplexMatrix::operator-() const {
  CNuComplexMatrix result(*this);
  for (int k = 0; k < m_rows * m_columns; ++k) result.m_data[k] = -m_data[k];
  return result;
}

CNuComplexVector CNuComplexMatrix::operator*(const CNuComplexVector& v) const {
  if (m_columns != v.GetSize()) FailOperation(NuOperationSizeMismatch, "operator*", kClass);
  CNuComplexVector result(m_rows);
  for (int i = 0; i < m_rows; ++i) {
    CNuComplex sum;
    for (int k = 0; k < m_columns; ++k) sum += m_data[i * m_columns + k] * v.GetData()[k];
    result.GetData()[i] = sum;
  }
  return result;
}

CNuComplexMatrix CNuComplexMatrix::operator*(double f) const {
  RequireFactor(f, "operator*", kClass);
  CNuComplexMatrix result(*this);
  return std::move(result *= f);
}

CNuComplexMatrix CNuComplexMatrix::operator*(const CNuComplex& f) const {
  RequireFactor(f.Modulus(), "operator*", kClass);
  CNuComplexMatrix result(*this);
  return std::move(result *= f);
}

CNuComplexMatrix& CNuComplexMatrix::operator*=(double f) {
  RequireFactor(f, "operator*=", kClass);
  for (int k = 0; k < m_rows * m_columns; ++k) m_data[k] = {m_data[k].r() * f, m_data[k].i() * f};
  return *this;
}

// The factor may be an element of this matrix.
CNuComplexMatrix& CNuComplexMatrix::operator*=(const CNuComplex& f) {
  const CNuComplex factor = f;
  RequireFactor(factor.Modulus(), "operator*=", kClass);
  for (int k = 0; k < m_rows * m_columns; ++k) m_data[k] = m_data[k] * factor;
  return *this;
}

CNuComplexMatrix operator*(double f, const CNuComplexMatrix& m) {
  return m * f;
}

CNuComplexMatrix operator*(const CNuComplex& f, const CNuComplexMatrix& m) {
  return m * f;
}

CNuComplexMatrix CNuComplexMatrix::operator/(double d) const {
  RequireDivisor(d, "operator/", kClass);
  CNuComplexMatrix result(*this);
  return std::move(result /= d);
}

CNuComplexMatrix CNuComplexMatrix::operator/(const CNuComplex& d) const {
  RequireDivisor(d.Modulus(), "operator/", kClass);
  CNuComplexMatrix result(*this);
  return std::move(result /= d);
}

CNuComplexMatrix& CNuComplexMatrix::operator/=(double d) {
  RequireDivisor(d, "operator/=", kClass);
  for (int k = 0; k < m_rows * m_columns; ++k) m_data[k] = {m_data[k].r() / d, m_data[k].i() / d};
  return *this;
}

CNuComplexMatrix& CNuComplexMatrix::operator/=(const CNuComplex& d) {
  const CNuComplex divisor = d;
  RequireDivisor(divisor.Modulus(), "operator/=", kClass);
  for (int k = 0; k < m_rows * m_columns; ++k) m_data[k] = m_data[k] / divisor;
  return *this;
}

ENuBoolean CNuComplexMatrix::IsZero(double tol) const {
  return std::all_of(m_data, m_data + m_rows * m_columns,
                     [tol](const CNuComplex& z) { return z.IsZero(tol) == NuTrue; })
             ? NuTrue
             : NuFalse;
}

ENuBoolean CNuComplexMatrix::IsEqual(const CNuComplexMatrix& b, double tol) const {
  if (m_rows != b.m_rows || m_columns != b.m_columns) return NuFalse;
  const auto isEqual = [tol](const CNuComplex& y, const CNuComplex& z) { return y.IsEqual(z, tol) == NuTrue; };
  return std::equal(m_data, m_data + m_rows * m_columns, b.m_data, isEqual) ? NuTrue : NuFalse;
}

ENuBoolean CNuComplexMatrix::IsHermitian(double tol) const {
  if (m_rows != m_columns) return NuFalse;
  for (int i = 0; i < m_rows; ++i) {
    for (int j = i; j < m_columns; ++j) {
      if (!m_data[i * m_columns + j].IsEqual(m_data[j * m_columns + i].Conjugate(), tol)) return NuFalse;
    }
  }
  return NuTrue;
}

ENuBoolean CNuComplexMatrix::IsUnitary(double tol) const {
  if (m_rows != m_columns || m_rows == 0) return NuFalse;
  return (*this * ConjugateTranspose()).IsEqual(Identity(m_rows), tol);
}

CNuMatrix::operator CNuComplexMatrix() const {
  return CNuComplexMatrix(*this);
}
