#include "nu/engine/linear/tall_factor.h"

#include "nu/engine/linear/householder.h"

namespace nu::engine::linear {
namespace {

// Multiplies columns first .. last-1 by I - tau w w^T, where w is 1 in the row of `heads` and v below it.
NU_KERNEL void ReflectColumns(const double* v, double tau, int length, double* columns, int first, int last,
                              double* heads, std::ptrdiff_t headStep) {
  for (int k = first; k < last; ++k) {
    double* column = columns + static_cast<std::ptrdiff_t>(k) * length;
    const double f = tau * (heads[k * headStep] + DotRow(v, column, length));
    heads[k * headStep] -= f;
    for (int i = 0; i < length; i += kLanes) {
      Lanes x, y;
      Load(column + i, x);
      Load(v + i, y);
      x -= f * y;
      Store(x, column + i);
    }
  }
}

}  // namespace

TallFactor::TallFactor(double* a, int rows, int columns, std::ptrdiff_t ld)
    : m_a(a),
      m_rows(rows),
      m_columns(columns),
      m_ld(ld),
      m_length(Padded(std::max(columns, std::min(kChunk, rows - columns)))),
      m_tau(static_cast<std::size_t>(Chunks()) * columns),
      m_buffer(2 * static_cast<std::size_t>(m_length) * columns) {}

void TallFactor::LoadChunk(int chunk, double scale, double* columns) const {
  const int rows = ChunkRows(chunk);
  const double* source = m_a + ChunkStart(chunk) * m_ld;
  for (int j = 0; j < m_columns; ++j) {
    double* column = columns + static_cast<std::ptrdiff_t>(j) * m_length;
    for (int i = 0; i < rows; ++i) column[i] = scale * source[i * m_ld + j];
    std::fill(column + rows, column + m_length, 0.0);
  }
}

void TallFactor::StoreChunk(int chunk, const double* columns) const {
  RowsToColumns(columns, m_length, nullptr, nullptr, m_columns, ChunkRows(chunk), m_a + ChunkStart(chunk) * m_ld, m_ld);
}

void TallFactor::Reduce(double scale, double* r, std::ptrdiff_t ldr) {
  double* columns = m_buffer.Data();
  double* tau = m_tau.Data();
  for (int chunk = 0; chunk < Chunks(); ++chunk, tau += m_columns) {
    LoadChunk(chunk, scale, columns);
    for (int j = 0; j < m_columns; ++j) {
      double* own = columns + static_cast<std::ptrdiff_t>(j) * m_length;
      double* heads = r + j * ldr;
      std::ptrdiff_t headStep = 1;
      if (chunk == 0) {
        // The triangle is still part of the chunk; the rows above the reflection are final.
        for (int i = 0; i < m_columns; ++i) r[i * ldr + j] = i <= j ? own[i] : 0.0;
        std::fill_n(own, j + 1, 0.0);
        heads = columns + j;
        headStep = m_length;
      }
      const Reflection h = MakeReflection(r[j * ldr + j], own, m_length);
      tau[j] = h.tau;
      r[j * ldr + j] = h.beta;
      ReflectColumns(own, h.tau, m_length, columns, j + 1, m_columns, heads, headStep);
    }
    StoreChunk(chunk, columns);
  }
}

void TallFactor::Expand(double* x, std::ptrdiff_t ldx) {
  double* vectors = m_buffer.Data();
  double* columns = vectors + static_cast<std::ptrdiff_t>(m_length) * m_columns;
  for (int chunk = Chunks() - 1; chunk >= 0; --chunk) {
    const double* tau = m_tau.Data() + static_cast<std::ptrdiff_t>(chunk) * m_columns;
    LoadChunk(chunk, 1.0, vectors);
    std::fill_n(columns, static_cast<std::ptrdiff_t>(m_length) * m_columns, 0.0);
    for (int k = 0; chunk == 0 && k < m_columns; ++k)
      std::copy_n(x + k * ldx, m_columns, columns + static_cast<std::ptrdiff_t>(k) * m_length);
    for (int j = m_columns - 1; j >= 0; --j) {
      double* heads = chunk == 0 ? columns + j : x + j;
      ReflectColumns(vectors + static_cast<std::ptrdiff_t>(j) * m_length, tau[j], m_length, columns, 0, m_columns,
                     heads, chunk == 0 ? m_length : ldx);
    }
    StoreChunk(chunk, columns);
  }
}

}  // namespace nu::engine::linear
