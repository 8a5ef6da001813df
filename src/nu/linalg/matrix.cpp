#include "nu/linalg/matrix.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <new>
#include <utility>

#include "nu/foundation/internal/failures.h"
#include "nu/linalg/internal/block_checks.h"
#include "nu/linalg/vector.h"

using namespace nu::internal;

namespace {

void RequireSameShape(const CNuMatrix& a, const CNuMatrix& b, const char* what) {
  nu::internal::RequireSameShape(a, b, what, "CNuMatrix");
}

}  // namespace

CNuMatrix::CNuMatrix() : CNuAlgebra(NuTypeMatrix) {
  Init(4, 4);
}

CNuMatrix::CNuMatrix(int rows, int columns) : CNuAlgebra(NuTypeMatrix) {
  if (rows < 1 || columns < 1)
    throw CNuConstructionException(NuConstructionSize, "CNuMatrix", "number of rows/columns", 0, 0);
  Init(rows, columns);
}

CNuMatrix::CNuMatrix(int rows, int columns, Unset) : CNuAlgebra(NuTypeMatrix) {
  Allocate(rows, columns, "CNuMatrix::Init()");
}

CNuMatrix::CNuMatrix(const CNuMatrix& other) : CNuAlgebra(NuTypeMatrix) {
  Copy(other);
}

CNuMatrix::CNuMatrix(CNuMatrix&& other) noexcept : CNuAlgebra(NuTypeMatrix) {
  Take(other);
}

CNuMatrix& CNuMatrix::operator=(const CNuMatrix& other) {
  if (this != &other) Copy(other);
  return *this;
}

CNuMatrix& CNuMatrix::operator=(CNuMatrix&& other) noexcept {
  if (this == &other) return *this;
  Release();
  Take(other);
  return *this;
}

// Gives the matrix room for rows x columns elements, whose values are not set; the old elements are gone. Nothing
// changes when the room cannot be had.
void CNuMatrix::Allocate(int rows, int columns, const char* where) {
  const std::size_t r = static_cast<std::size_t>(rows);
  const std::size_t c = static_cast<std::size_t>(columns);
  void* block = nullptr;
  if (rows > kLocalRows || r * c > kLocalElements) {
    // The product of two ints fits std::size_t where that has 64 bits; elsewhere it may not.
    if (c > (SIZE_MAX / sizeof(double) - r) / r) throw CNuMemoryException(where);
    block = ::operator new(r * sizeof(double*) + sizeof(double) + r * c * sizeof(double), std::nothrow);
    if (block == nullptr) throw CNuMemoryException(where);
  }
  Release();
  double* elements = m_localElements;
  m_data = m_localRows;
  if (block != nullptr) {
    m_block = block;
    m_data = static_cast<double**>(block);
    // Behind the row pointers, at the next place where doubles may lie.
    const std::size_t head = (r * sizeof(double*) + sizeof(double) - 1) / sizeof(double) * sizeof(double);
    elements = reinterpret_cast<double*>(static_cast<char*>(block) + head);
  }
  for (std::size_t i = 0; i < r; ++i) m_data[i] = elements + i * c;
  m_rows = rows;
  m_columns = columns;
}

void CNuMatrix::Init(int rows, int columns) {
  Allocate(rows, columns, "CNuMatrix::Init()");
  std::fill_n(m_data[0], static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns), 0.0);
}

void CNuMatrix::Copy(const CNuMatrix& other) {
  if (other.m_rows == 0) return Release();
  if (m_rows != other.m_rows || m_columns != other.m_columns) {
    Allocate(other.m_rows, other.m_columns, "CNuMatrix::Copy()");
  }
  CopyElements(other);
}

// Rows that follow each other in memory, as they do unless the host has exchanged them, are copied in one piece.
void CNuMatrix::CopyElements(const CNuMatrix& other) {
  const auto follows = [columns = m_columns](double* const* row) { return row[0] == row[-1] + columns; };
  for (int first = 0, next = 1; first < m_rows; first = next++) {
    while (next < m_rows && follows(m_data + next) && follows(other.m_data + next)) ++next;
    std::copy_n(other.m_data[first], static_cast<std::ptrdiff_t>(next - first) * m_columns, m_data[first]);
  }
}

// The block is kept on its own, so that row pointers which the host has exchanged do not matter here.
void CNuMatrix::Release() noexcept {
  if (m_block != nullptr) ::operator delete(m_block);
  m_block = nullptr;
  m_data = nullptr;
  m_rows = 0;
  m_columns = 0;
}

// Expects an empty target; leaves the source without rows when it gives its block away.
void CNuMatrix::Take(CNuMatrix& other) noexcept {
  m_rows = other.m_rows;
  m_columns = other.m_columns;
  if (other.m_block == nullptr) {
    m_data = m_localRows;
    for (int i = 0; i < m_rows; ++i) m_data[i] = m_localElements + i * m_columns;
    CopyElements(other);
    return;
  }
  m_block = other.m_block;
  m_data = other.m_data;
  other.m_block = nullptr;
  other.Release();
}

void CNuMatrix::FailIndex(int i) const {
  const int upper = i < 0 || i >= m_rows ? m_rows - 1 : m_columns - 1;
  FailOperation(NuOperationIndex, "operation", "CNuMatrix::Element()", 0, upper);
}

CNuVector CNuMatrix::GetRowVector(int i) const {
  RequireIndex(i, m_rows, "operation", "CNuMatrix::GetRowVector()");
  CNuVector v(m_columns);
  std::copy_n(m_data[i], m_columns, v.GetData());
  return v;
}

CNuVector CNuMatrix::GetColumnVector(int j) const {
  RequireIndex(j, m_columns, "operation", "CNuMatrix::GetColumnVector()");
  CNuVector v(m_rows);
  for (int i = 0; i < m_rows; ++i) v.GetData()[i] = m_data[i][j];
  return v;
}

void CNuMatrix::SetRowVector(int i, const CNuVector& v) {
  constexpr const char* where = "CNuMatrix::SetRowVector()";
  RequireIndex(i, m_rows, "operation", where);
  if (v.GetSize() != m_columns) FailOperation(NuOperationSizeMismatch, "operation", where);
  std::copy_n(v.GetData(), m_columns, m_data[i]);
}

void CNuMatrix::SetColumnVector(int j, const CNuVector& v) {
  constexpr const char* where = "CNuMatrix::SetColumnVector()";
  RequireIndex(j, m_columns, "operation", where);
  if (v.GetSize() != m_rows) FailOperation(NuOperationSizeMismatch, "operation", where);
  for (int i = 0; i < m_rows; ++i) m_data[i][j] = v.GetData()[i];
}

CNuMatrix CNuMatrix::SubMatrix(int r1, int r2, int c1, int c2) const {
  RequireBlock(*this, r1, r2, c1, c2, "CNuMatrix::SubMatrix()");
  CNuMatrix result(r2 - r1 + 1, c2 - c1 + 1);
  for (int i = 0; i < result.m_rows; ++i) std::copy_n(m_data[r1 + i] + c1, result.m_columns, result.m_data[i]);
  return result;
}

void CNuMatrix::SetSubMatrix(int r1, int r2, int c1, int c2, const CNuMatrix& m) {
  constexpr const char* where = "CNuMatrix::SetSubMatrix()";
  RequireBlock(*this, r1, r2, c1, c2, where);
  if (m.m_rows != r2 - r1 + 1 || m.m_columns != c2 - c1 + 1) FailOperation(NuOperationSizeMismatch, "operation", where);
  for (int i = 0; i < m.m_rows; ++i) std::copy_n(m.m_data[i], m.m_columns, m_data[r1 + i] + c1);
}

CNuMatrix CNuMatrix::Identity(int n) {
  CNuMatrix result(n, n);
  for (int i = 0; i < n; ++i) result.m_data[i][i] = 1.0;
  return result;
}

CNuMatrix CNuMatrix::DiagonalMatrix(const CNuVector& v) {
  CNuMatrix result(v.GetSize(), v.GetSize());
  for (int i = 0; i < v.GetSize(); ++i) result.m_data[i][i] = v.GetData()[i];
  return result;
}

// In tiles, so that neither matrix is walked across its rows for long.
CNuMatrix CNuMatrix::Transpose() const {
  constexpr int tile = 16;
  CNuMatrix result(m_columns, m_rows);
  for (int i0 = 0; i0 < m_rows; i0 += tile) {
    for (int j0 = 0; j0 < m_columns; j0 += tile) {
      const int iEnd = std::min(i0 + tile, m_rows);
      const int jEnd = std::min(j0 + tile, m_columns);
      for (int i = i0; i < iEnd; ++i) {
        for (int j = j0; j < jEnd; ++j) result.m_data[j][i] = m_data[i][j];
      }
    }
  }
  return result;
}

// One pass over the rows: every element is still summed in the order of the rows, and a tall matrix is read once.
CNuMatrix CNuMatrix::PreMultiplyTranspose() const {
  CNuMatrix result(m_columns, m_columns);
  for (int k = 0; k < m_rows; ++k) {
    const double* row = m_data[k];
    for (int i = 0; i < m_columns; ++i) {
      const double factor = row[i];
      double* target = result.m_data[i];
      for (int j = i; j < m_columns; ++j) target[j] += factor * row[j];
    }
  }
  for (int i = 1; i < m_columns; ++i) {
    for (int j = 0; j < i; ++j) result.m_data[i][j] = result.m_data[j][i];
  }
  return result;
}

CNuMatrix CNuMatrix::PostMultiplyTranspose() const {
  CNuMatrix result(m_rows, m_rows);
  for (int i = 0; i < m_rows; ++i) {
    for (int j = i; j < m_rows; ++j) {
      double sum = 0.0;
      for (int k = 0; k < m_columns; ++k) sum += m_data[i][k] * m_data[j][k];
      result.m_data[i][j] = result.m_data[j][i] = sum;
    }
  }
  return result;
}

double CNuMatrix::Trace() const {
  if (m_rows != m_columns) FailOperation(NuOperationMatrix, "calculation", "CNuMatrix::Trace()");
  double trace = 0.0;
  for (int i = 0; i < m_rows; ++i) trace += m_data[i][i];
  return trace;
}

CNuMatrix CNuMatrix::operator+(const CNuMatrix& b) const {
  RequireSameShape(*this, b, "operator+");
  CNuMatrix result(*this);
  return std::move(result += b);
}

CNuMatrix CNuMatrix::operator-(const CNuMatrix& b) const {
  RequireSameShape(*this, b, "operator-");
  CNuMatrix result(*this);
  return std::move(result -= b);
}

CNuMatrix& CNuMatrix::operator+=(const CNuMatrix& b) {
  RequireSameShape(*this, b, "operator+=");
  for (int i = 0; i < m_rows; ++i) {
    for (int j = 0; j < m_columns; ++j) m_data[i][j] += b.m_data[i][j];
  }
  return *this;
}

CNuMatrix& CNuMatrix::operator-=(const CNuMatrix& b) {
  RequireSameShape(*this, b, "operator-=");
  for (int i = 0; i < m_rows; ++i) {
    for (int j = 0; j < m_columns; ++j) m_data[i][j] -= b.m_data[i][j];
  }
  return *this;
}

CNuMatrix CNuMatrix::operator-() const {
  CNuMatrix result(*this);
  for (int i = 0; i < m_rows; ++i) {
    for (int j = 0; j < m_columns; ++j) result.m_data[i][j] = -m_data[i][j];
  }
  return result;
}

CNuVector CNuMatrix::operator*(const CNuVector& v) const {
  if (m_columns != v.GetSize()) FailOperation(NuOperationSizeMismatch, "operator*", "CNuMatrix");
  CNuVector result(m_rows);
  const double* x = v.GetData();
  for (int i = 0; i < m_rows; ++i) {
    double sum = 0.0;
    for (int k = 0; k < m_columns; ++k) sum += m_data[i][k] * x[k];
    result.GetData()[i] = sum;
  }
  return result;
}

CNuMatrix CNuMatrix::operator*(double f) const {
  RequireFactor(f, "operator*", "CNuMatrix");
  CNuMatrix result(*this);
  return std::move(result *= f);
}

CNuMatrix& CNuMatrix::operator*=(double f) {
  RequireFactor(f, "operator*=", "CNuMatrix");
  for (int i = 0; i < m_rows; ++i) {
    for (int j = 0; j < m_columns; ++j) m_data[i][j] *= f;
  }
  return *this;
}

CNuMatrix operator*(double f, const CNuMatrix& m) {
  return m * f;
}

CNuMatrix CNuMatrix::operator/(double d) const {
  RequireDivisor(d, "operator/", "CNuMatrix");
  CNuMatrix result(*this);
  return std::move(result /= d);
}

CNuMatrix& CNuMatrix::operator/=(double d) {
  RequireDivisor(d, "operator/=", "CNuMatrix");
  for (int i = 0; i < m_rows; ++i) {
    for (int j = 0; j < m_columns; ++j) m_data[i][j] /= d;
  }
  return *this;
}

ENuBoolean CNuMatrix::IsZero(double tol) const {
  for (int i = 0; i < m_rows; ++i) {
    for (int j = 0; j < m_columns; ++j) {
      if (!(std::fabs(m_data[i][j]) < tol)) return NuFalse;
    }
  }
  return NuTrue;
}

ENuBoolean CNuMatrix::IsEqual(const CNuMatrix& b, double tol) const {
  if (m_rows != b.m_rows || m_columns != b.m_columns) return NuFalse;
  for (int i = 0; i < m_rows; ++i) {
    for (int j = 0; j < m_columns; ++j) {
      if (!(std::fabs(m_data[i][j] - b.m_data[i][j]) < tol)) return NuFalse;
    }
  }
  return NuTrue;
}

ENuBoolean CNuMatrix::IsSymmetric(double tol) const {
  if (m_rows != m_columns) return NuFalse;
  for (int i = 0; i < m_rows; ++i) {
    for (int j = i + 1; j < m_columns; ++j) {
      if (!(std::fabs(m_data[i][j] - m_data[j][i]) < tol)) return NuFalse;
    }
  }
  return NuTrue;
}

ENuBoolean CNuMatrix::IsOrthogonal(double tol) const {
  if (m_rows != m_columns || m_rows == 0) return NuFalse;
  return PostMultiplyTranspose().IsEqual(Identity(m_rows), tol);
}
