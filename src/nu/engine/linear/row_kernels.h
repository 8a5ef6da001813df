#ifndef NU_ENGINE_LINEAR_ROW_KERNELS_H
#define NU_ENGINE_LINEAR_ROW_KERNELS_H

#include "nu/engine/base/lanes.h"

namespace nu::engine::linear {

// Parts of hot loops over contiguous rows, inlined into NU_KERNEL functions.

// The length of a row that is filled up with zeros to whole packs of kLanes, so that no loop has a tail.
constexpr int Padded(int n) {
  return (n + kLanes - 1) / kLanes * kLanes;
}

// Prevents the compiler from forming vectors of values that have just been stored one by one: such a load waits for all
// the stores to leave the core, which in short substitutions costs more than the arithmetic.
NU_ALWAYS_INLINE double KeepScalar(double value) {
#if defined(__GNUC__) && defined(__SSE2__)
  __asm__("" : "+x"(value));
#endif
  return value;
}

// Returns the sum of x(i) * y(i) in kLanes interleaved partial sums; short rows are summed in order.
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
