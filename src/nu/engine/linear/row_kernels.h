#ifndef NU_ENGINE_LINEAR_ROW_KERNELS_H
#define NU_ENGINE_LINEAR_ROW_KERNELS_H

#include "nu/engine/base/lanes.h"

namespace nu::engine::linear {

// Pieces of hot loops over contiguous rows, meant to be inlined into NU_KERNEL functions.

// Length of a row that is filled up with zeros to whole packs, so that no loop has a tail.
constexpr int Padded(int n) {
  return (n + kLanes - 1) / kLanes * kLanes;
}

// Keeps the compiler from forming vectors of values that have just been stored one by one: such a load waits for all
// the stores to leave the core, which in short substitutions costs more than the arithmetic.
NU_ALWAYS_INLINE double KeepScalar(double value) {
#if defined(__GNUC__) && defined(__SSE2__)
  __asm__("" : "+x"(value));
#endif
  return value;
}

// Sum of x(i) * y(i) over kLanes interleaved partial sums; short rows are summed in order.
NU_ALWAYS_INLINE double DotRow(const double* x, const double* y, int n) {
  int i = 0;
  double sum = 0.0;
  if (n >= kLanes) {
    Lanes sums = {};
    for (; i + kLanes <= n; i += kLanes) {
      Lanes left, right;
      Load(x + i, left);
      Load(y + i, right);
      sums += left * right;
    }
    sum = Sum(sums);
  }
  for (; i < n; ++i) sum = KeepScalar(sum + x[i] * y[i]);
  return sum;
}

}  // namespace nu::engine::linear

#endif
