#ifndef NU_ENGINE_LINEAR_TALL_FACTOR_H
#define NU_ENGINE_LINEAR_TALL_FACTOR_H

#include <algorithm>
#include <cstddef>

#include "nu/engine/base/workspace.h"
#include "nu/engine/linear/row_kernels.h"

namespace nu::engine::linear {

// The QR factorisation of a row-major block with more rows than columns, in place and in two passes over the memory.
// The first `columns` rows are reduced to a triangle; every further chunk of rows is reduced against it and replaced by
// its reflections. The second pass forms Q times a small matrix, chunk by chunk in reverse.
class TallFactor {
 public:
  TallFactor(double* a, int rows, int columns, std::ptrdiff_t ld);

  // Factors the block times `scale` (a power of two) and leaves R in the columns x columns block r.
  void Reduce(double scale, double* r, std::ptrdiff_t ldr);

  // Replaces the block, after Reduce, by Q X. Row k of the padded block x is column k of X; it is destroyed.
  void Expand(double* x, std::ptrdiff_t ldx);

 private:
  static constexpr int kChunk = 256;
  static constexpr int kInline = 1024;

  int Chunks() const { return 1 + (m_rows - m_columns + kChunk - 1) / kChunk; }
  int ChunkStart(int chunk) const { return chunk == 0 ? 0 : m_columns + (chunk - 1) * kChunk; }
  int ChunkRows(int chunk) const { return chunk == 0 ? m_columns : std::min(kChunk, m_rows - ChunkStart(chunk)); }
  void LoadChunk(int chunk, double scale, double* columns) const;
  void StoreChunk(int chunk, const double* columns) const;

  double* m_a;
  int m_rows;
  int m_columns;
  std::ptrdiff_t m_ld;
  int m_length;  // the padded length of a column of a chunk
  Workspace<kInline> m_tau;
  Workspace<2 * kInline> m_buffer;
};

}  // namespace nu::engine::linear

#endif
