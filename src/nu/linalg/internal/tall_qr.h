#ifndef NU_LINALG_INTERNAL_TALL_QR_H
#define NU_LINALG_INTERNAL_TALL_QR_H

#include <cstddef>
#include <memory>
#include <new>

namespace nu::internal {

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

  // `columns` counts the right-hand sides too and is at least 1. Throws std::bad_alloc.
  explicit TallReduction(int columns);

  int Columns() const { return m_columns; }

  // Room for kBlockRows values of column j of the open block, aligned to a cache line. AbsorbBlock spoils it.
  double* Column(int j) { return m_block.get() + static_cast<std::size_t>(j) * kStride; }

  // Stacks the first `rows` <= kBlockRows values of every column under the triangle and reduces.
  void AbsorbBlock(int rows);

  // Adds rows given by their pointers, the first columns from row[i] and, unless null, the last one from rhs[i].
  // Rows are collected until a block is full: call Finish in the end, and do not mix with Column and AbsorbBlock.
  void AddRows(const double* const* row, const double* rhs, int count);

  // Absorbs what AddRows has collected.
  void Finish();

  double R(int i, int j) const { return m_triangle[static_cast<std::size_t>(i) * m_columns + j]; }

 private:
  // Off the powers of two, so that neighbouring columns do not share cache sets.
  static constexpr std::size_t kStride = kBlockRows + 8;

  struct AlignedDelete {
    void operator()(double* block) const { ::operator delete[](block, std::align_val_t{64}); }
  };

  int m_columns;
  int m_collected = 0;
  std::unique_ptr<double[], AlignedDelete> m_block;
  std::unique_ptr<double[]> m_triangle;
  std::unique_ptr<double[]> m_dots;  // work of one block
};

}  // namespace nu::internal

#endif
