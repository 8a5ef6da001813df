#ifndef NU_ENGINE_LINEAR_ROTATIONS_H
#define NU_ENGINE_LINEAR_ROTATIONS_H

#include <cstddef>
#include <memory>

#include "nu/engine/rooms.h"

namespace nu::engine::linear {

// Plane rotations of rows of a block, collected and then applied to one strip of columns after the other: a strip stays
// in the cache while the rotations pass over it, and the iteration that computes them never waits for the block.
struct Rotation {
  double c, s;
  int row, other;
};

// Memory for the rotations of a block of n rows: of several sweeps when n is large.
class RotationStore {
 public:
  explicit RotationStore(int n)
      : m_heap(n > kSmall ? new Rotation[kSweeps * static_cast<std::size_t>(n)] : nullptr),
        m_capacity(n > kSmall ? kSweeps * n : kLocal) {}
  Rotation* Data() { return m_heap ? m_heap.get() : m_local; }
  int Capacity() const { return m_capacity; }

 private:
  static constexpr int kSmall = 16;
  static constexpr int kLocal = 128;
  static constexpr int kSweeps = 24;

  std::unique_ptr<Rotation[]> m_heap;
  int m_capacity;
  Rotation m_local[kLocal];
};

class RotationQueue {
 public:
  // The block has rows of `width` doubles, in whole packs.
  RotationQueue(double* block, std::ptrdiff_t ld, int width, RotationStore& store)
      : m_block(block), m_ld(ld), m_width(width), m_queue(store.Data()), m_capacity(store.Capacity()) {}

  // Sets row <- c * row + s * other, other <- c * other - s * row.
  void Rotate(int row, int other, double c, double s) {
    if (m_size == m_capacity) Flush();
    m_queue[m_size++] = {c, s, row, other};
  }
  // Returns the place of the next `count` rotations, all of which the caller fills in; at most the number of rows.
  Rotation* Take(int count) {
    if (m_size + count > m_capacity) Flush();
    m_size += count;
    return m_queue + m_size - count;
  }
  void Flush();

 private:
  double* m_block;
  std::ptrdiff_t m_ld;
  int m_width;
  Rotation* m_queue;
  int m_capacity;
  int m_size = 0;
};

}  // namespace nu::engine::linear

#endif
