#ifndef NU_LINALG_COMPLEX_MATRIX_H
#define NU_LINALG_COMPLEX_MATRIX_H

#include "nu/export.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"
#include "nu/linalg/complex.h"

// A dense complex matrix of at least one row and column. Copies are deep. No memory: CNuMemoryException.
class NU_EXPORT CNuComplexMatrix : public CNuAlgebra {
 public:
  // rows x columns zeros. Either below 1: CNuConstructionException cause 1, "number of rows/columns".
  CNuComplexMatrix(int rows, int columns);
  // The same elements with zero imaginary parts.
  explicit CNuComplexMatrix(const CNuMatrix& re);
  CNuComplexMatrix(const CNuComplexMatrix& other);
  CNuComplexMatrix(CNuComplexMatrix&& other) noexcept;
  CNuComplexMatrix& operator=(CNuComplexMatrix other) noexcept;
  ~CNuComplexMatrix() override;

  int GetRowSize() const { return m_rows; }
  int GetColumnSize() const { return m_columns; }

  // Element (i, j). Out of range: cause 3 with the valid range.
  CNuComplex& Element(int i, int j) { return m_data[IndexOf(i, j)]; }
  CNuComplex Element(int i, int j) const { return m_data[IndexOf(i, j)]; }

 private:
  void Init(int rows, int columns);
  int IndexOf(int i, int j) const;

  CNuComplex* m_data = nullptr;  // row by row
  int m_rows = 0;
  int m_columns = 0;
};

#endif
