#ifndef NU_ENGINE_POINTS_SMALL_SYSTEMS_H
#define NU_ENGINE_POINTS_SMALL_SYSTEMS_H

#include <algorithm>
#include <cmath>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/linear/small_svd.h"
#include "nu/engine/linear/tall_qr.h"
#include "nu/engine/points/point_blocks.h"

// The few equations that a step of a fit comes down to.
namespace nu::engine::points {

// The finished reduction of all points' rows: `fill(block, begin, end, reduction)` writes those of the points from
// `begin` to `end` from the top of its columns on. It may write on to the next multiple of kLanes.
template<class Fill>
TallReduction ReduceRows(PointBlocks& points, int columns, Fill fill) {
  TallReduction reduction(columns);
  points.ForEach([&](const PointBlock& block) {
    for (std::size_t begin = 0; begin < block.size; begin += TallReduction::kBlockRows) {
      const std::size_t rows = std::min<std::size_t>(TallReduction::kBlockRows, block.size - begin);
      fill(block, begin, begin + rows, reduction);
      reduction.AbsorbBlock(static_cast<int>(rows));
    }
  });
  reduction.Finish();
  return reduction;
}

struct ReducedSolution {
  bool finite = false;
  bool determined = false;  // the columns are independent beyond rounding errors of the coordinates in them
};

// Of a finished reduction with N unknowns and one right-hand side, the solution of least length in columns of unit
// length.
template<int N>
ReducedSolution SolveReduced(const TallReduction& reduction, double (&x)[N]) {
  constexpr double kSingular = N * kEpsilon;
  // Rounding errors of the coordinates in columns of unit length are of this size.
  constexpr double kUndetermined = 64.0 * kEpsilon;
  double scaled[N][N] = {};
  double norm[N];
  for (int j = 0; j < N; ++j) {
    norm[j] = 0.0;
    for (int i = 0; i <= j; ++i) norm[j] = Hypot(norm[j], reduction.R(i, j));
    for (int i = 0; i <= j && norm[j] > 0.0; ++i) scaled[j][i] = reduction.R(i, j) / norm[j];
  }
  const SmallSvd<N> svd = SvdOfColumns(scaled);
  if (!std::isfinite(svd.value[0])) return {};
  std::fill_n(x, N, 0.0);
  for (int k = 0; k < N; ++k) {
    if (!(svd.value[k] > kSingular * svd.value[0])) break;
    double part = 0.0;
    for (int i = 0; i < N; ++i) part += svd.work[k][i] * reduction.R(i, N);
    for (int j = 0; j < N; ++j)
      if (norm[j] > 0.0) x[j] += svd.axis[k][j] * (part / svd.value[k] / svd.value[k]) / norm[j];
  }
  return {.finite = true, .determined = svd.value[N - 1] > kUndetermined * svd.value[0]};
}

}  // namespace nu::engine::points

#endif
