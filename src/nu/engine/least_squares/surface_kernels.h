#ifndef NU_ENGINE_LEAST_SQUARES_SURFACE_KERNELS_H
#define NU_ENGINE_LEAST_SQUARES_SURFACE_KERNELS_H

#include "nu/engine/least_squares/damped_gauss_newton.h"
#include "nu/engine/points/point_lanes.h"

// The loops over a block of points that the fits of all surfaces share: the bodies of kernels. A surface, prepared for
// them, has
//
//   static constexpr int kUnknowns;
//   void Deviate(block, i, Lanes& e) const: the deviations of the eight points from i on;
//   void Deviate(block, i, Lanes& e, Lanes (&column)[kUnknowns]) const: and their derivatives, for least squares less
//     the sign.
namespace nu::engine::least_squares {

// The entries of a triangle of n rows.
constexpr int TriangleSize(int n) {
  return n * (n + 1) / 2;
}

// The distance d of points from an axis, or a centre, less their height h over it, without cancellation: with the
// squared distance across, d - |h| is square / (d + |h|).
NU_ALWAYS_INLINE void FindLift(const Lanes& h, const Lanes& square, Lanes& lift) {
  Lanes d = h * h + square;
  TakeSquareRoot(d);
  const Lanes far = d + (h > 0.0 ? h : -h);
  const Lanes quotient = square / far;
  lift = h > 0.0 ? quotient : far;
}

// Also 1 / d, or 0 where there is no direction.
NU_ALWAYS_INLINE void FindLift(const Lanes& h, const Lanes& square, Lanes& lift, Lanes& inverseDistance) {
  Lanes d = h * h + square;
  TakeSquareRoot(d);
  const Lanes far = d + (h > 0.0 ? h : -h);
  const Lanes product = d * far;
  const Lanes quotient = 1.0 / product;
  const Lanes inverse = product > 0.0 ? quotient : Lanes{};
  lift = h > 0.0 ? square * inverse * d : far;
  inverseDistance = inverse * far;
}

template<class Surface>
NU_ALWAYS_INLINE void DeviationsBody(const PointBlock& block, const Surface& given, Deviations& found) {
  const Surface surface = given;
  Lanes square = {};
  LaneExtremes extremes;
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes e, weight;
    surface.Deviate(block, i, e);
    extremes.Add(e);
    Load(block.Weights(i), weight);
    e *= weight;
    square += e * e;
  }
  found = {Sum(square), extremes.Smallest(), extremes.Largest()};
}

// Each deviation, and the extreme ones.
template<class Surface>
NU_ALWAYS_INLINE void EachDeviationBody(const PointBlock& block, const Surface& given, double* deviation,
                                        double& smallest, double& largest) {
  const Surface surface = given;
  LaneExtremes extremes;
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes e;
    surface.Deviate(block, i, e);
    Store(e, deviation + i);
    extremes.Add(e);
  }
  smallest = extremes.Smallest();
  largest = extremes.Largest();
}

// The columns times their factors, and the deviations, to the bit as they are without columns, of the points from
// `begin` to `end`, from the top of each array on. What is written ends with a multiple of kLanes.
template<class Surface>
NU_ALWAYS_INLINE void RowsBody(const PointBlock& block, std::size_t begin, std::size_t end, const Surface& given,
                               const double (&factor)[Surface::kUnknowns], double* const (&to)[Surface::kUnknowns],
                               double* deviation) {
  const Surface surface = given;
  for (std::size_t i = begin; i < end; i += kLanes) {
    Lanes e;
    Lanes column[Surface::kUnknowns];
    surface.Deviate(block, i, e, column);
    surface.Deviate(block, i, e);
    Store(e, deviation + (i - begin));
    for (int k = 0; k < Surface::kUnknowns; ++k) Store(factor[k] * column[k], to[k] + (i - begin));
  }
}

// The finished rows (columns | deviation) of all points.
template<class Surface>
TallReduction ReduceSurface(PointBlocks& points, const Surface& surface) {
  constexpr int K = Surface::kUnknowns;
  const auto fill = [&](const PointBlock& block, std::size_t begin, std::size_t end, TallReduction& reduction) {
    double factor[K];
    double* to[K];
    for (int k = 0; k < K; ++k) {
      factor[k] = 1.0;
      to[k] = reduction.Column(k);
    }
    RowsBody(block, begin, end, surface, factor, to, reduction.Column(K));
  };
  return ReduceRows(points, K + 1, fill);
}

// Of a surface whose first column is 1, or -1 for some points, and which has further sums:
//
//   static constexpr int kExtras;
//   void AddExtras(block, i, weight, Lanes* sum) const.
//
// In this order: each column but the first, its product with the deviation and with the columns up to it; the
// deviation, its square; the extras.
template<class Surface>
inline constexpr int kSums = Surface::kUnknowns*(Surface::kUnknowns + 3) / 2 + Surface::kExtras;

template<class Surface>
NU_ALWAYS_INLINE void ProductsBody(const PointBlock& block, const Surface& given, double (&sums)[kSums<Surface>],
                                   Deviations& found) {
  const Surface surface = given;
  Lanes sum[kSums<Surface>] = {};
  LaneExtremes extremes;
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes e, weight;
    Lanes column[Surface::kUnknowns];
    surface.Deviate(block, i, e, column);
    extremes.Add(e);
    Load(block.Weights(i), weight);
    e *= weight;
    int next = 0;
    for (int j = 1; j < Surface::kUnknowns; ++j) {
      column[j] *= weight;
      sum[next++] += column[j] * column[0];
      sum[next++] += column[j] * e;
      for (int k = 1; k <= j; ++k) sum[next++] += column[j] * column[k];
    }
    sum[next++] += e * column[0];
    sum[next++] += e * e;
    if constexpr (Surface::kExtras > 0) surface.AddExtras(block, i, weight, sum + next);
  }
  for (int k = 0; k < kSums<Surface>; ++k) sums[k] = Sum(sum[k]);
  found = {0.0, extremes.Smallest(), extremes.Largest()};
}

// `kernel` is ProductsBody; the extras remain in `total`.
template<class Surface, class Kernel>
StepSystem<Surface::kUnknowns> SystemOf(PointBlocks& points, const Surface& surface, Kernel kernel,
                                        BlockSums<kSums<Surface>>& total) {
  StepSystem<Surface::kUnknowns> system;
  total = SumOver<kSums<Surface>>(points, system.deviations,
                                  [&](const PointBlock& block, double(&sums)[kSums<Surface>], Deviations& part) {
                                    kernel(block, surface, sums, part);
                                  });
  system.product[0][0] = system.count = static_cast<double>(points.Size());
  int next = 0;
  for (int j = 1; j < Surface::kUnknowns; ++j) {
    system.product[j][0] = system.product[0][j] = total[next++];
    system.right[j] = total[next++];
    for (int k = 1; k <= j; ++k) system.product[j][k] = system.product[k][j] = total[next++];
  }
  system.right[0] = total[next++];
  system.deviations.sumSquares = total[next];
  return system;
}

}  // namespace nu::engine::least_squares

#endif
