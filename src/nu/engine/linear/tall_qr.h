#ifndef NU_ENGINE_LINEAR_TALL_QR_H
#define NU_ENGINE_LINEAR_TALL_QR_H

#include <cstddef>
#include <memory>

#include "nu/engine/rooms.h"

namespace nu::engine::linear {

class TallReflectors;

// The triangle of a tall matrix, built while its rows stream past: blocks of rows are stacked under the running
// triangle and reduced by Householder steps (Golub & Van Loan, Matrix Computations, 4th ed., 5.2 and 6.5.2), so memory
// depends on the number of columns alone and the condition is never squared. Right-hand sides travel as the last
// columns:
//
//   TallReduction reduction(k + 1);                      // k unknowns, one right-hand side
//   for (each block of up to kBlockRows rows) {
//     fill reduction.Column(j)[0 .. rows) for every j;   // or hand over rows with AddRows
//     reduction.AbsorbBlock(rows);
//   }
//   reduction.Finish();
//   // R(i, j) for i <= j < k is the triangle, R(i, k) is Q^T b, |R(k, k)| the norm of the residual.
//
// Columns may differ in size by any power; entries up to 1e150 do not overflow. A NaN or an infinity in column j leaves
// NaN in R(j, j) and in every later column. The result depends on how the rows fall into blocks (AddRows always fills
// whole blocks), not on the instruction set.
class TallReduction {
 public:
  static constexpr int kBlockRows = 256;

  // `columns` includes the right-hand sides and is at least 1; `rows` is the largest number of rows in a block. Throws
  // std::bad_alloc.
  explicit TallReduction(int columns, int rows = kBlockRows);

  int Columns() const { return m_columns; }

  // Keeps the reflectors of every block, of all columns but the last, for later right-hand sides. To be called before
  // the first row.
  void KeepReflectors(TallReflectors* reflectors);

  // The place for a block of values of column j, aligned to a cache line. AbsorbBlock destroys them.
  double* Column(int j) { return m_block + j * m_stride; }

  // Stacks the first `rows` values of every column under the triangle and reduces the stack.
  void AbsorbBlock(int rows);

  // Adds rows given by their pointers, the first columns from row[i] and, unless null, the last one from rhs[i].
  // Rows are collected until a block is full: call Finish in the end, and do not mix with Column and AbsorbBlock.
  void AddRows(const double* const* row, const double* rhs, int count);

  // Absorbs what AddRows has collected.
  void Finish();

  double R(int i, int j) const { return m_triangle[static_cast<std::ptrdiff_t>(i) * m_columns + j]; }

 private:
  int m_columns;
  int m_blockRows;
  int m_collected = 0;
  TallReflectors* m_reflectors = nullptr;
  std::ptrdiff_t m_stride;
  std::unique_ptr<double[]> m_memory;  // the block from a cache line on, the triangle, scratch for one reduction
  double* m_block;
  double* m_triangle;
};

// The orthogonal factor of a reduction of `rows` x `unknowns` in whole blocks, as its reflectors; takes about as many
// doubles as the matrix.
class TallReflectors {
 public:
  TallReflectors(int unknowns, int rows);

  // Computes the first `unknowns` components of Q^T b for b of `rows` components, with the bits that the reduction
  // gives for b as its last column.
  void Apply(const double* b, double* projected) const;

 private:
  friend class TallReduction;

  // The place where the next block of rows is reduced, with a column for the right-hand side. The heads and factors of
  // the reflectors take the place of that column afterwards.
  double* NextBlock() const { return m_first + m_used; }
  void Keep(const double* head, const double* tau);

  int m_unknowns;
  int m_rows;
  std::ptrdiff_t m_stride;
  std::size_t m_used = 0;
  std::unique_ptr<double[]> m_values;
  double* m_first;  // on a cache line
};

}  // namespace nu::engine::linear

#endif
