#ifndef NU_ENGINE_BASE_SIMD_H
#define NU_ENGINE_BASE_SIMD_H

#include "nu/engine/rooms.h"

// Hot loops run over eight lanes whatever the register width of the machine is. The lanes are summed in one fixed
// order and nothing is contracted, so a clone for wider registers gives the bits of the plain one.

// NU_KERNEL marks a hot function: the compiler emits it once per instruction set and the loader picks the clone.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && defined(__gnu_linux__) && \
    !defined(NU_NO_KERNEL_CLONES)
#define NU_KERNEL __attribute__((target_clones("avx512f", "avx2", "default")))
#else
#define NU_KERNEL
#endif

#if defined(__GNUC__)
#define NU_ALWAYS_INLINE inline __attribute__((always_inline))
#else
#define NU_ALWAYS_INLINE inline
#endif

// To be put before a loop over the lanes. GCC would otherwise unroll it and vectorise across the outer loop, with
// shuffles; as a loop it becomes one vector instruction per operation.
#if defined(__GNUC__) && !defined(__clang__)
#define NU_LANE_LOOP _Pragma("GCC unroll 1")
#else
#define NU_LANE_LOOP
#endif

namespace nu::engine::base {

inline constexpr int kLanes = 8;

// Adds in one fixed tree: neighbours at distance 4, then 2, then 1.
NU_ALWAYS_INLINE double SumLanes(const double* lane) {
  return ((lane[0] + lane[4]) + (lane[2] + lane[6])) + ((lane[1] + lane[5]) + (lane[3] + lane[7]));
}

}  // namespace nu::engine::base

#endif
