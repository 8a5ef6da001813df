#ifndef NU_LINALG_INTERNAL_ROW_KERNELS_H
#define NU_LINALG_INTERNAL_ROW_KERNELS_H

#include "nu/foundation/internal/simd.h"

namespace nu::internal {

// Loops over contiguous rows, meant to be inlined into NU_KERNEL functions.

// Keeps the compiler from forming vectors of values that have just been stored one by one: such a load waits for all
// the stores to leave the core, which in short substitutions costs more than the arithmetic.
NU_ALWAYS_INLINE double KeepScalar(double value) {
#if defined(__GNUC__) && (defined(__x86_64__) || defined(__i386__)) && defined(__SSE2__)
  __asm__("" : "+x"(value));
#endif
  return value;
}

// Sum of x(i) * y(i) over kLanes interleaved partial sums; short rows are summed in order.
NU_ALWAYS_INLINE double DotRow(const double* x, const double* y, int n) {
  double lane[kLanes] = {};
  int i = 0;
  for (; i + kLanes <= n; i += kLanes)
    for (int l = 0; l < kLanes; ++l) lane[l] += x[i + l] * y[i + l];
  double sum = i > 0 ? SumLanes(lane) : 0.0;
  for (; i < n; ++i) sum += x[i] * y[i];
  return sum;
}

// y += f * x.
NU_ALWAYS_INLINE void AddScaledRow(double f, const double* __restrict x, double* __restrict y, int n) {
  for (int i = 0; i < n; ++i) y[i] += f * x[i];
}

}  // namespace nu::internal

#endif
