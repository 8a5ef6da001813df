#include "nu/engine/linear/matmul.h"

#include <algorithm>
#include <cstring>

#include "nu/engine/base/simd.h"
#include "nu/engine/base/workspace.h"
#include "nu/engine/linear/row_kernels.h"

namespace nu::engine::linear {
namespace {

// One register tile of c is kTileRows x kTileColumns: 8 accumulators of 512 bits, 16 of 256.
constexpr int kTileRows = 4;
constexpr int kTileColumns = 2 * kLanes;
// A packed strip of b (kDepth x kTileColumns) stays in the first-level cache, a packed part of a in the second.
constexpr int kDepth = 256;
constexpr int kPanelRows = 96;
constexpr int kPanelColumns = 256;
// Below this many multiplications packing costs more than it saves.
constexpr double kPackedWork = 512.0;
// Packed operands of up to 16 rows stay on the stack.
constexpr int kInlineDoubles = 512;

// Computes tile += a * b over packed strips; a holds kTileRows values per k, b kTileColumns.
NU_ALWAYS_INLINE void UpdateTile(const double* a, const double* b, int depth, double* c, std::ptrdiff_t ldc) {
  Lanes sum[kTileRows][2];
  for (int i = 0; i < kTileRows; ++i) {
    std::memcpy(&sum[i][0], c + i * ldc, sizeof(Lanes));
    std::memcpy(&sum[i][1], c + i * ldc + kLanes, sizeof(Lanes));
  }
  for (int k = 0; k < depth; ++k, a += kTileRows, b += kTileColumns) {
    Lanes left, right;
    std::memcpy(&left, b, sizeof(Lanes));
    std::memcpy(&right, b + kLanes, sizeof(Lanes));
    for (int i = 0; i < kTileRows; ++i) {
      sum[i][0] += a[i] * left;
      sum[i][1] += a[i] * right;
    }
  }
  for (int i = 0; i < kTileRows; ++i) {
    std::memcpy(c + i * ldc, &sum[i][0], sizeof(Lanes));
    std::memcpy(c + i * ldc + kLanes, &sum[i][1], sizeof(Lanes));
  }
}

// Updates a tile that exceeds the edge of c, in a copy.
NU_ALWAYS_INLINE void UpdateEdge(const double* a, const double* b, int depth, double* c, std::ptrdiff_t ldc, int rows,
                                 int columns) {
  double tile[kTileRows * kTileColumns] = {};
  for (int i = 0; i < rows; ++i) std::copy_n(c + i * ldc, columns, tile + i * kTileColumns);
  UpdateTile(a, b, depth, tile, kTileColumns);
  for (int i = 0; i < rows; ++i) std::copy_n(tile + i * kTileColumns, columns, c + i * ldc);
}

NU_KERNEL void UpdatePanel(const double* a, const double* b, int rows, int depth, int columns, double* c,
                           std::ptrdiff_t ldc) {
  for (int j = 0; j < columns; j += kTileColumns) {
    const int width = std::min(kTileColumns, columns - j);
    for (int i = 0; i < rows; i += kTileRows) {
      const int height = std::min(kTileRows, rows - i);
      const double* aStrip = a + static_cast<std::ptrdiff_t>(i) * depth;
      const double* bStrip = b + static_cast<std::ptrdiff_t>(j) * depth;
      double* tile = c + i * ldc + j;
      if (height == kTileRows && width == kTileColumns) {
        UpdateTile(aStrip, bStrip, depth, tile, ldc);
      } else {
        UpdateEdge(aStrip, bStrip, depth, tile, ldc, height, width);
      }
    }
  }
}

// Packs strips of kTileRows rows, one value per row for each k, with zeros for missing rows; the factor `sign` is
// exact.
void PackRows(MatrixView a, int rows, int depth, double sign, double* packed) {
  for (int i = 0; i < rows; i += kTileRows) {
    const int height = std::min(kTileRows, rows - i);
    const double* strip = a.data + i * a.rowStep;
    for (int k = 0; k < depth; ++k, packed += kTileRows)
      for (int r = 0; r < kTileRows; ++r) packed[r] = r < height ? sign * strip[r * a.rowStep + k * a.columnStep] : 0.0;
  }
}

void PackColumns(MatrixView b, int depth, int columns, double* packed) {
  for (int j = 0; j < columns; j += kTileColumns) {
    const int width = std::min(kTileColumns, columns - j);
    const double* strip = b.data + j * b.columnStep;
    for (int k = 0; k < depth; ++k, packed += kTileColumns) {
      const double* row = strip + k * b.rowStep;
      if (width == kTileColumns && b.columnStep == 1) {
        std::memcpy(packed, row, kTileColumns * sizeof(double));
        continue;
      }
      for (int l = 0; l < kTileColumns; ++l) packed[l] = l < width ? row[l * b.columnStep] : 0.0;
    }
  }
}

void UpdatePacked(MatrixView a, MatrixView b, double sign, double* c, std::ptrdiff_t ldc, int rows, int inner,
                  int columns) {
  const int depthLimit = std::min(kDepth, inner);
  const auto roundUp = [](int n, int step) { return (n + step - 1) / step * step; };
  const std::size_t aSize = static_cast<std::size_t>(roundUp(std::min(kPanelRows, rows), kTileRows)) * depthLimit;
  const std::size_t bSize =
      static_cast<std::size_t>(roundUp(std::min(kPanelColumns, columns), kTileColumns)) * depthLimit;
  Workspace<kInlineDoubles> work(aSize + bSize);
  double* aPacked = work.Take(aSize);
  double* bPacked = work.Take(bSize);
  for (int j = 0; j < columns; j += kPanelColumns) {
    const int width = std::min(kPanelColumns, columns - j);
    for (int k = 0; k < inner; k += kDepth) {
      const int depth = std::min(kDepth, inner - k);
      PackColumns({b.data + k * b.rowStep + j * b.columnStep, b.rowStep, b.columnStep}, depth, width, bPacked);
      for (int i = 0; i < rows; i += kPanelRows) {
        const int height = std::min(kPanelRows, rows - i);
        PackRows({a.data + i * a.rowStep + k * a.columnStep, a.rowStep, a.columnStep}, height, depth, sign, aPacked);
        UpdatePanel(aPacked, bPacked, height, depth, width, c + i * ldc + j, ldc);
      }
    }
  }
}

// Adds the rows of b one after the other; the clones are faster only once a row fills several registers.
template<bool kSubtract>
NU_ALWAYS_INLINE void UpdateRows(MatrixView a, MatrixView b, double* c, std::ptrdiff_t ldc, int rows, int inner,
                                 int columns) {
  for (int i = 0; i < rows; ++i) {
    double* row = c + i * ldc;
    for (int k = 0; k < inner; ++k) {
      const double factor = a.data[i * a.rowStep + k * a.columnStep];
      const double* other = b.data + k * b.rowStep;
      const std::ptrdiff_t step = b.columnStep;
      if (step == 1) {
        for (int j = 0; j < columns; ++j) row[j] = kSubtract ? row[j] - factor * other[j] : row[j] + factor * other[j];
      } else {
        for (int j = 0; j < columns; ++j)
          row[j] = kSubtract ? row[j] - factor * other[j * step] : row[j] + factor * other[j * step];
      }
    }
  }
}

// Products with a small constant inner size and width stay in registers.
template<int kN>
NU_ALWAYS_INLINE void MultiplySmall(MatrixView a, MatrixView b, double* c, std::ptrdiff_t ldc, int rows) {
  for (int i = 0; i < rows; ++i) {
    double sum[kN] = {};
    for (int k = 0; k < kN; ++k)
      for (int j = 0; j < kN; ++j) sum[j] += a.data[i * a.rowStep + k * a.columnStep] * b.data[k * b.rowStep + j];
    for (int j = 0; j < kN; ++j) c[i * ldc + j] = sum[j];
  }
}

// Copies the rows of b to whole packs. What fills a pack up only reaches columns that c does not have: mostly it is the
// begin of the next row.
template<int kPacks>
NU_ALWAYS_INLINE void CopyToPacks(MatrixView b, int inner, int columns, double* packs) {
  constexpr int width = kPacks * kLanes;
  for (int k = 0; k < inner; ++k, packs += width) {
    const double* row = b.data + k * b.rowStep;
    if (b.columnStep == 1 && (inner - 1 - k) * b.rowStep + columns >= width) {
      std::memcpy(packs, row, width * sizeof(double));
    } else {
      for (int j = 0; j < width; ++j) packs[j] = j < columns ? KeepScalar(row[j * b.columnStep]) : 0.0;
    }
  }
}

// Computes c = a * b for up to two packs of columns and kTileColumns rows of b. Where the rows of c follow each other,
// whole packs are stored and the next row replaces what is too much.
template<int kPacks>
NU_ALWAYS_INLINE void MultiplyPacks(MatrixView a, MatrixView b, double* c, std::ptrdiff_t ldc, int rows, int inner,
                                    int columns) {
  constexpr int width = kPacks * kLanes;
  alignas(64) double packs[width * kTileColumns];
  CopyToPacks<kPacks>(b, inner, columns, packs);
  for (int i = 0; i < rows; ++i, c += ldc) {
    Lanes sum[kPacks] = {};
    for (int k = 0; k < inner; ++k) {
      const double factor = a.data[i * a.rowStep + k * a.columnStep];
      for (int p = 0; p < kPacks; ++p) {
        Lanes other;
        Load(packs + k * width + p * kLanes, other);
        sum[p] += factor * other;
      }
    }
    if (ldc == columns && (rows - i) * ldc >= width) {
      for (int p = 0; p < kPacks; ++p) Store(sum[p], c + p * kLanes);
    } else {
      double row[width];
      for (int p = 0; p < kPacks; ++p) Store(sum[p], row + p * kLanes);
      for (int j = 0; j < columns; ++j) c[j] = KeepScalar(row[j]);
    }
  }
}

NU_KERNEL void MultiplyNarrow(MatrixView a, MatrixView b, double* c, std::ptrdiff_t ldc, int rows, int inner,
                              int columns) {
  if (columns <= kLanes) {
    MultiplyPacks<1>(a, b, c, ldc, rows, inner, columns);
  } else {
    MultiplyPacks<2>(a, b, c, ldc, rows, inner, columns);
  }
}

bool IsPackingWorthwhile(int rows, int inner, int columns) {
  return static_cast<double>(rows) * inner * columns >= kPackedWork && rows >= kTileRows && columns > kLanes / 2;
}

}  // namespace

void AddProduct(MatrixView a, MatrixView b, double* c, std::ptrdiff_t ldc, int rows, int inner, int columns) {
  if (IsPackingWorthwhile(rows, inner, columns)) return UpdatePacked(a, b, 1.0, c, ldc, rows, inner, columns);
  UpdateRows<false>(a, b, c, ldc, rows, inner, columns);
}

void SubtractProduct(MatrixView a, MatrixView b, double* c, std::ptrdiff_t ldc, int rows, int inner, int columns) {
  if (IsPackingWorthwhile(rows, inner, columns)) return UpdatePacked(a, b, -1.0, c, ldc, rows, inner, columns);
  UpdateRows<true>(a, b, c, ldc, rows, inner, columns);
}

void Multiply(MatrixView a, MatrixView b, double* c, std::ptrdiff_t ldc, int rows, int inner, int columns) {
  if (inner == columns && b.columnStep == 1) {
    if (inner == 3) return MultiplySmall<3>(a, b, c, ldc, rows);
    if (inner == 4) return MultiplySmall<4>(a, b, c, ldc, rows);
  }
  if (inner <= kTileColumns && columns <= kTileColumns) return MultiplyNarrow(a, b, c, ldc, rows, inner, columns);
  for (int i = 0; i < rows; ++i) std::fill_n(c + i * ldc, columns, 0.0);
  AddProduct(a, b, c, ldc, rows, inner, columns);
}

}  // namespace nu::engine::linear
