#include "nu/engine/linear/rotations.h"

#include "nu/engine/linear/row_kernels.h"

namespace nu::engine::linear {
namespace {

// A strip has enough columns to hide the latency from one rotation to the next, and is narrow enough for 500 rows to
// stay in the second-level cache.
constexpr int kStrip = 8;  // packs

// Rotations come in chains of neighbouring rows. The row that two of them share is kept in registers: in a rising chain
// the `row` of one is the `other` of the next, in a falling chain the reverse. Returns the end of the chain.
template<bool kRising, int kPacks>
NU_ALWAYS_INLINE int RotateChain(double* block, std::ptrdiff_t ld, const Rotation* queue, int first, int size) {
  Lanes carried[kPacks];
  double* from = block + (kRising ? queue[first].other : queue[first].row) * ld;
  for (int p = 0; p < kPacks; ++p) Load(from + p * kLanes, carried[p]);
  for (int k = first;;) {
    const double c = queue[k].c;
    const double s = kRising ? queue[k].s : -queue[k].s;
    double* to = block + (kRising ? queue[k].row : queue[k].other) * ld;
    for (int p = 0; p < kPacks; ++p) {
      Lanes x;
      Load(to + p * kLanes, x);
      const Lanes turned = c * carried[p] - s * x;
      carried[p] = c * x + s * carried[p];
      Store(turned, from + p * kLanes);
    }
    from = to;
    if (++k < size && block + (kRising ? queue[k].other : queue[k].row) * ld == to) continue;
    for (int p = 0; p < kPacks; ++p) Store(carried[p], to + p * kLanes);
    return k;
  }
}

template<int kPacks>
NU_ALWAYS_INLINE void RotateStrip(double* block, std::ptrdiff_t ld, const Rotation* queue, int size) {
  for (int k = 0; k < size;) {
    const bool rising = k + 1 < size && queue[k + 1].other == queue[k].row;
    k = rising ? RotateChain<true, kPacks>(block, ld, queue, k, size)
               : RotateChain<false, kPacks>(block, ld, queue, k, size);
  }
}

NU_KERNEL void RotateAll(double* block, std::ptrdiff_t ld, int width, const Rotation* queue, int size) {
  int j = 0;
  for (; j + kStrip * kLanes <= width; j += kStrip * kLanes) RotateStrip<kStrip>(block + j, ld, queue, size);
  for (; j + 3 * kLanes <= width; j += 3 * kLanes) RotateStrip<3>(block + j, ld, queue, size);
  for (; j + 2 * kLanes <= width; j += 2 * kLanes) RotateStrip<2>(block + j, ld, queue, size);
  for (; j < width; j += kLanes) RotateStrip<1>(block + j, ld, queue, size);
}

}  // namespace

void RotationQueue::Flush() {
  if (m_size > 0) RotateAll(m_block, m_ld, m_width, m_queue, m_size);
  m_size = 0;
}

}  // namespace nu::engine::linear
