#include "nu/engine/linear/rotations.h"

#include "nu/engine/linear/row_kernels.h"

namespace nu::engine::linear {
namespace {

// A strip has enough columns to hide the latency from one rotation to the next, and is narrow enough for 500 rows to
// stay in the second-level cache.
constexpr int kStrip = 8;  // packs

// Rotations come in chains of neighbouring rows. The row that two of them share is kept in registers: in a rising chain
// the `row` of one is the `other` of the next, in a falling chain the reverse. Returns the end of the chain.
template<int kPacks>
NU_ALWAYS_INLINE int RotateRising(double* block, std::ptrdiff_t ld, const Rotation* queue, int first, int size) {
  Lanes carried[kPacks];
  for (int p = 0; p < kPacks; ++p) Load(block + queue[first].other * ld + p * kLanes, carried[p]);
  int k = first;
  for (;;) {
    const double c = queue[k].c;
    const double s = queue[k].s;
    const double* row = block + queue[k].row * ld;
    double* other = block + queue[k].other * ld;
    for (int p = 0; p < kPacks; ++p) {
      Lanes x;
      Load(row + p * kLanes, x);
      const Lanes turned = c * carried[p] - s * x;
      carried[p] = c * x + s * carried[p];
      Store(turned, other + p * kLanes);
    }
    if (++k == size || queue[k].other != queue[k - 1].row) break;
  }
  for (int p = 0; p < kPacks; ++p) Store(carried[p], block + queue[k - 1].row * ld + p * kLanes);
  return k;
}

template<int kPacks>
NU_ALWAYS_INLINE int RotateFalling(double* block, std::ptrdiff_t ld, const Rotation* queue, int first, int size) {
  Lanes carried[kPacks];
  for (int p = 0; p < kPacks; ++p) Load(block + queue[first].row * ld + p * kLanes, carried[p]);
  int k = first;
  for (;;) {
    const double c = queue[k].c;
    const double s = queue[k].s;
    double* row = block + queue[k].row * ld;
    const double* other = block + queue[k].other * ld;
    for (int p = 0; p < kPacks; ++p) {
      Lanes y;
      Load(other + p * kLanes, y);
      const Lanes turned = c * carried[p] + s * y;
      carried[p] = c * y - s * carried[p];
      Store(turned, row + p * kLanes);
    }
    if (++k == size || queue[k].row != queue[k - 1].other) break;
  }
  for (int p = 0; p < kPacks; ++p) Store(carried[p], block + queue[k - 1].other * ld + p * kLanes);
  return k;
}

template<int kPacks>
NU_ALWAYS_INLINE void RotateStrip(double* block, std::ptrdiff_t ld, const Rotation* queue, int size) {
  for (int k = 0; k < size;) {
    const bool rising = k + 1 < size && queue[k + 1].other == queue[k].row;
    k = rising ? RotateRising<kPacks>(block, ld, queue, k, size) : RotateFalling<kPacks>(block, ld, queue, k, size);
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
