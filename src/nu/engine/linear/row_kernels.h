#ifndef NU_ENGINE_LINEAR_ROW_KERNELS_H
#define NU_ENGINE_LINEAR_ROW_KERNELS_H

#include <cstring>

#include "nu/engine/base/simd.h"

namespace nu::engine::linear {

// Pieces of hot loops over contiguous rows, meant to be inlined into NU_KERNEL functions.

// kLanes doubles that the compiler keeps in as few registers as the machine has them wide.
#if defined(__GNUC__)
using Pack = double __attribute__((vector_size(kLanes * sizeof(double))));
NU_ALWAYS_INLINE double Lane(const Pack& pack, int l) {
  return pack[l];
}
NU_ALWAYS_INLINE void SetLane(Pack& pack, int l, double value) {
  pack[l] = value;
}
#else
struct Pack {
  double lane[kLanes];
};
inline Pack operator*(double f, const Pack& p) {
  Pack r;
  for (int l = 0; l < kLanes; ++l) r.lane[l] = f * p.lane[l];
  return r;
}
inline Pack operator*(const Pack& a, const Pack& b) {
  Pack r;
  for (int l = 0; l < kLanes; ++l) r.lane[l] = a.lane[l] * b.lane[l];
  return r;
}
inline Pack operator+(Pack a, const Pack& b) {
  for (int l = 0; l < kLanes; ++l) a.lane[l] += b.lane[l];
  return a;
}
inline Pack operator-(Pack a, const Pack& b) {
  for (int l = 0; l < kLanes; ++l) a.lane[l] -= b.lane[l];
  return a;
}
inline Pack& operator+=(Pack& a, const Pack& b) {
  return a = a + b;
}
inline Pack& operator-=(Pack& a, const Pack& b) {
  return a = a - b;
}
inline double Lane(const Pack& pack, int l) {
  return pack.lane[l];
}
inline void SetLane(Pack& pack, int l, double value) {
  pack.lane[l] = value;
}
#endif

// Packs travel by reference: their calling convention depends on the instruction set.
NU_ALWAYS_INLINE void Load(const double* from, Pack& pack) {
  std::memcpy(&pack, from, sizeof(Pack));
}
NU_ALWAYS_INLINE void Store(const Pack& pack, double* to) {
  std::memcpy(to, &pack, sizeof(Pack));
}
NU_ALWAYS_INLINE double SumPack(const Pack& pack) {
  double lane[kLanes];
  Store(pack, lane);
  return SumLanes(lane);
}

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
    Pack sums = {};
    for (; i + kLanes <= n; i += kLanes) {
      Pack left, right;
      Load(x + i, left);
      Load(y + i, right);
      sums += left * right;
    }
    sum = SumPack(sums);
  }
  for (; i < n; ++i) sum = KeepScalar(sum + x[i] * y[i]);
  return sum;
}

}  // namespace nu::engine::linear

#endif
