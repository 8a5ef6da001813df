#ifndef NU_ENGINE_BASE_LANES_H
#define NU_ENGINE_BASE_LANES_H

#include <cmath>
#include <cstring>

#include "nu/engine/base/simd.h"

namespace nu::engine::base {

// Eight doubles for kernels whose accumulators have to stay in registers. The compiler splits them where registers are
// narrower; the bits are the same. Operators act lane by lane, comparisons select with ?:. They are passed by reference
// only, because the calling convention depends on the instruction set.
using Lanes = double __attribute__((vector_size(kLanes * sizeof(double))));

NU_ALWAYS_INLINE void Load(const double* from, Lanes& lanes) {
  std::memcpy(&lanes, from, sizeof(Lanes));
}

NU_ALWAYS_INLINE void Store(const Lanes& lanes, double* to) {
  std::memcpy(to, &lanes, sizeof(Lanes));
}

NU_ALWAYS_INLINE void TakeSquareRoot(Lanes& lanes) {
  for (int l = 0; l < kLanes; ++l) lanes[l] = std::sqrt(lanes[l]);
}

// Selections in hot loops. As loops they take one instruction in registers of four lanes, too, where g++ 12 makes ?: of
// all eight a comparison and a branchless choice per lane.
NU_ALWAYS_INLINE void TakeSmaller(const Lanes& other, Lanes& lanes) {
  NU_LANE_LOOP
  for (int l = 0; l < kLanes; ++l) lanes[l] = other[l] < lanes[l] ? other[l] : lanes[l];
}
NU_ALWAYS_INLINE void TakeLarger(const Lanes& other, Lanes& lanes) {
  NU_LANE_LOOP
  for (int l = 0; l < kLanes; ++l) lanes[l] = other[l] > lanes[l] ? other[l] : lanes[l];
}
// Where a is smaller than b.
NU_ALWAYS_INLINE void TakeWhereLess(const Lanes& a, const Lanes& b, const Lanes& other, Lanes& lanes) {
  NU_LANE_LOOP
  for (int l = 0; l < kLanes; ++l) lanes[l] = a[l] < b[l] ? other[l] : lanes[l];
}

NU_ALWAYS_INLINE double Sum(const Lanes& lanes) {
  double lane[kLanes];
  Store(lanes, lane);
  return SumLanes(lane);
}

NU_ALWAYS_INLINE double Smallest(const Lanes& lanes) {
  double smallest = lanes[0];
  for (int l = 1; l < kLanes; ++l) smallest = lanes[l] < smallest ? lanes[l] : smallest;
  return smallest;
}

NU_ALWAYS_INLINE double Largest(const Lanes& lanes) {
  double largest = lanes[0];
  for (int l = 1; l < kLanes; ++l) largest = lanes[l] > largest ? lanes[l] : largest;
  return largest;
}

}  // namespace nu::engine::base

#endif
