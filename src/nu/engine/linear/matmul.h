#ifndef NU_ENGINE_LINEAR_MATMUL_H
#define NU_ENGINE_LINEAR_MATMUL_H

#include <cstddef>

#include "nu/engine/rooms.h"

namespace nu::engine::linear {

// A block of doubles seen as a matrix: element (i, j) is data[i * rowStep + j * columnStep], so that a transpose costs
// nothing.
struct MatrixView {
  const double* data;
  std::ptrdiff_t rowStep;
  std::ptrdiff_t columnStep = 1;

  MatrixView Transposed() const { return {data, columnStep, rowStep}; }
};

// c = a * b, c += a * b and c -= a * b with a rows x inner, b inner x columns and c rows x columns, row-major with
// leading dimension ldc. Element (i, j) sums a(i, k) * b(k, j) in increasing k, starting from 0 or from c(i, j); c
// overlaps neither factor. Blocked after Goto and van de Geijn, "Anatomy of high-performance matrix multiplication",
// 2008.
void Multiply(MatrixView a, MatrixView b, double* c, std::ptrdiff_t ldc, int rows, int inner, int columns);
void AddProduct(MatrixView a, MatrixView b, double* c, std::ptrdiff_t ldc, int rows, int inner, int columns);
void SubtractProduct(MatrixView a, MatrixView b, double* c, std::ptrdiff_t ldc, int rows, int inner, int columns);

}  // namespace nu::engine::linear

#endif
