#ifndef NU_ENGINE_BASE_WORKSPACE_H
#define NU_ENGINE_BASE_WORKSPACE_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "nu/engine/rooms.h"

namespace nu::engine::base {

// Scratch doubles, not initialised: on the stack while there are few of them, else in one heap block. The matrices of
// metrology have up to ten rows, for which an allocation costs more than the arithmetic.
template<int kInline>
class Workspace {
 public:
  explicit Workspace(std::size_t count)
      : m_heap(count > kInline ? new double[count + kLine] : nullptr),
        m_data(m_heap ? FirstOfLine(m_heap.get()) : m_inline) {}
  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;

  double* Data() { return m_data; }
  // Returns the next `count` doubles of the block.
  double* Take(std::size_t count) {
    double* part = m_data + m_taken;
    m_taken += count;
    return part;
  }

 private:
  // The size of a cache line, so that padded rows never straddle two.
  static constexpr std::size_t kLine = 64 / sizeof(double);
  static double* FirstOfLine(double* block) {
    const std::size_t past = reinterpret_cast<std::uintptr_t>(block) / sizeof(double) % kLine;
    return block + (kLine - past) % kLine;
  }

  std::unique_ptr<double[]> m_heap;
  double* m_data;
  std::size_t m_taken = 0;
  alignas(64) double m_inline[kInline];
};

// Elements, not initialised: inside their owner while there are few. Without alignment beyond the usual, for which
// allocators charge small objects dearly.
template<class T, int kInline>
class SmallArray {
 public:
  explicit SmallArray(std::size_t count) : m_heap(count > kInline ? new T[count] : nullptr) {}
  T* Data() { return m_heap ? m_heap.get() : m_inline; }
  const T* Data() const { return m_heap ? m_heap.get() : m_inline; }

 private:
  std::unique_ptr<T[]> m_heap;
  T m_inline[kInline];
};

}  // namespace nu::engine::base

#endif
