#include "nu/linalg/complex_matrix.h"

#include <algorithm>
#include <climits>
#include <utility>

#include "nu/foundation/internal/array_rules.h"
#include "nu/linalg/matrix.h"

CNuComplexMatrix::CNuComplexMatrix(int rows, int columns) : CNuAlgebra(NuTypeComplexMatrix) {
  if (rows < 1 || columns < 1) throw CNuConstructionException(1, "CNuComplexMatrix", "number of rows/columns", 0, 0);
  Init(rows, columns);
}

CNuComplexMatrix::CNuComplexMatrix(const CNuMatrix& re) : CNuComplexMatrix(re.GetRowSize(), re.GetColumnSize()) {
  for (int i = 0; i < m_rows; ++i) {
    for (int j = 0; j < m_columns; ++j) Element(i, j) = {re.GetData()[i][j], 0.0};
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
  nu::internal::ReleaseElements(m_data, m_rows * m_columns);
}

void CNuComplexMatrix::Init(int rows, int columns) {
  if (rows > INT_MAX / columns) throw CNuMemoryException("CNuComplexMatrix::Init()");
  m_data = nu::internal::AllocateElements<CNuComplex>(rows * columns, "CNuComplexMatrix::Init()");
  m_rows = rows;
  m_columns = columns;
}

int CNuComplexMatrix::IndexOf(int i, int j) const {
  nu::internal::RequireIndex(i, m_rows, "operation", "CNuComplexMatrix::Element()");
  nu::internal::RequireIndex(j, m_columns, "operation", "CNuComplexMatrix::Element()");
  return i * m_columns + j;
}

CNuMatrix::operator CNuComplexMatrix() const {
  return CNuComplexMatrix(*this);
}
