#ifndef NU_ENGINE_LINEAR_HOUSEHOLDER_H
#define NU_ENGINE_LINEAR_HOUSEHOLDER_H

#include <cstddef>

#include "nu/engine/rooms.h"

namespace nu::engine::linear {

// Elementary reflections H = I - tau v v^T, and the passes over a block that apply them. All rows are padded with zeros
// to whole packs; a column range starts at the pack that holds its first column, where vectors are zero as well.

// The power of two that brings the largest element of a finite block to the working size, before anything is squared:
// squares neither overflow nor, down to 1e-260 of the largest element, lose digits.
double ScaleToWorkingSize(double largest);

// Sums of squares below kNegligibleSquares may have lost digits to underflow; their roots are negligible beside the
// working size.
inline constexpr double kNegligible = 0x1p-480;
inline constexpr double kNegligibleSquares = kNegligible * kNegligible;

struct BlockSize {
  double largest = 0.0;  // largest |element|
  bool finite = true;
};
// `rowLargest`, unless null, receives the largest |element| of each row.
BlockSize MeasureBlock(const double* a, int rows, int columns, std::ptrdiff_t ld, double* rowLargest = nullptr);

struct Reflection {
  double tau = 0.0;   // 0: the identity
  double beta = 0.0;  // what H makes of x: beta in front, zeros behind
};
// Replaces x[0 .. n-1] by v, whose first component is 1. A tail that is negligible beside the working size is dropped.
Reflection MakeReflection(double* x, int n);
// The same with the first component apart from the other n, which are kept below a leading 1.
Reflection MakeReflection(double head, double* x, int n);

// One row-wise update a(i) -= f[i] * y + g[i] * v of rows first .. last-1, columns from .. to, and in the same pass
// over the memory the products with the updated rows: dot[i] = a(i) . r, and sum += s[i] * a(i).
void UpdateAndDot(double* a, std::ptrdiff_t ld, int first, int last, int from, int to, const double* f, const double* y,
                  const double* g, const double* v, const double* r, double* dot);
void UpdateAndSum(double* a, std::ptrdiff_t ld, int first, int last, int from, int to, const double* f, const double* y,
                  const double* g, const double* v, const double* s, double* sum);
void UpdateDotAndSum(double* a, std::ptrdiff_t ld, int first, int last, int from, int to, const double* f,
                     const double* y, const double* g, const double* v, const double* r, double* dot, const double* s,
                     double* sum);
// Computes dot[i] = a(i) . r.
void DotRows(const double* a, std::ptrdiff_t ld, int first, int last, int from, int to, const double* r, double* dot);
double Dot(const double* x, const double* y, int n);

// q = (H_0 H_1 ... H_{count-1})^T, n x n with padded rows of ldq; row k of v holds the vector of H_k, zero before
// component k + offset. Blocked in the compact form I - V T V^T of Schreiber and Van Loan, 1989.
void FormTransposedProduct(const double* v, std::ptrdiff_t ldv, const double* tau, int count, int offset, double* q,
                           std::ptrdiff_t ldq, int n);

// to(place[i], j) = from(order[j], i): rows of a block become columns. A null order or place leaves the order as it is.
void RowsToColumns(const double* from, std::ptrdiff_t ldFrom, const int* order, const int* place, int rows, int columns,
                   double* to, std::ptrdiff_t ldTo);

}  // namespace nu::engine::linear

#endif
