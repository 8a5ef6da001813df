#ifndef NU_ENGINE_BASE_LARGE_PAGES_H
#define NU_ENGINE_BASE_LARGE_PAGES_H

#include <cstddef>
#include <memory>
#include <vector>

#include "nu/engine/rooms.h"

namespace nu::engine::base {

// Asks the system to back a fresh block by large pages where it offers them, before anything is written to the block.
// With small ones the first write to each costs more than most passes over a million points. Changes no value; does
// nothing for blocks of less than two large pages.
void AdviseLargePages(void* block, std::size_t bytes) noexcept;

template<class T>
struct LargePageAllocator {
  using value_type = T;

  LargePageAllocator() = default;
  template<class U>
  LargePageAllocator(const LargePageAllocator<U>&) noexcept {}

  T* allocate(std::size_t count) {
    T* block = std::allocator<T>().allocate(count);
    AdviseLargePages(block, count * sizeof(T));  // NOLINT(bugprone-sizeof-expression): elements may be pointers
    return block;
  }
  void deallocate(T* block, std::size_t count) noexcept { std::allocator<T>().deallocate(block, count); }
  bool operator==(const LargePageAllocator&) const = default;
};

// For what may grow with the number of points.
template<class T>
using LargeVector = std::vector<T, LargePageAllocator<T>>;

}  // namespace nu::engine::base

#endif
