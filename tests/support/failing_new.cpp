#include "support/failing_new.h"

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>
#if defined(_WIN32) || defined(__GLIBC__)
#include <malloc.h>
#endif

namespace {

thread_local long allocationsUntilFailure = -1;
thread_local long liveAllocations = 0;
thread_local long liveBytes = 0;
thread_local long peakBytes = 0;
thread_local std::size_t largestAllocation = std::numeric_limits<std::size_t>::max();

// Known where the C library is GNU's.
long SizeOf([[maybe_unused]] void* memory) {
#ifdef __GLIBC__
  return static_cast<long>(malloc_usable_size(memory));
#else
  return 0;
#endif
}

// Windows has no aligned_alloc, and what it aligns it wants back by a function of its own.
void* Allocate(std::size_t unit, std::size_t size) {
#ifdef _WIN32
  return _aligned_malloc(size, unit);
#else
  return std::aligned_alloc(unit, size);
#endif
}

void Release(void* memory) {
#ifdef _WIN32
  _aligned_free(memory);
#else
  std::free(memory);
#endif
}

}  // namespace

void nu::test::FailAllocation(long k) {
  allocationsUntilFailure = k;
}

bool nu::test::AllocationHasFailed() {
  return allocationsUntilFailure < 0;
}

void nu::test::FailAllocationsAbove(std::size_t bytes) {
  largestAllocation = bytes;
}

long nu::test::LiveAllocations() {
  return liveAllocations;
}

long nu::test::AllocationsUntilFailure() {
  return allocationsUntilFailure;
}

long nu::test::LiveBytes() {
  return liveBytes;
}

long nu::test::PeakBytes() {
  return peakBytes;
}

void nu::test::MarkPeak() {
  peakBytes = liveBytes;
}

// The array and nothrow forms of the standard library end in these two; those of a sanitizer do not, so all are here.
void* operator new(std::size_t size, std::align_val_t alignment) {
  if (allocationsUntilFailure >= 0 && allocationsUntilFailure-- == 0) throw std::bad_alloc();
  if (size > largestAllocation) throw std::bad_alloc();
  const std::size_t unit = static_cast<std::size_t>(alignment);
  void* memory = Allocate(unit, (size / unit + 1) * unit);
  if (memory == nullptr) throw std::bad_alloc();
  ++liveAllocations;
  liveBytes += SizeOf(memory);
  if (liveBytes > peakBytes) peakBytes = liveBytes;
  return memory;
}

void* operator new(std::size_t size) {
  return operator new (size, std::align_val_t{alignof(std::max_align_t)});
}

void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
  try {
    return operator new(size, alignment);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void* operator new(std::size_t size, const std::nothrow_t& form) noexcept {
  return operator new (size, std::align_val_t{alignof(std::max_align_t)}, form);
}

void* operator new[](std::size_t size) {
  return operator new(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& form) noexcept {
  return operator new(size, form);
}

void* operator new[](std::size_t size, std::align_val_t alignment) {
  return operator new(size, alignment);
}

void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t& form) noexcept {
  return operator new(size, alignment, form);
}

void operator delete(void* memory) noexcept {
  if (memory != nullptr) {
    --liveAllocations;
    liveBytes -= SizeOf(memory);
  }
  Release(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}

void operator delete(void* memory, std::align_val_t) noexcept {
  operator delete(memory);
}

void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
  operator delete(memory);
}

void operator delete[](void* memory) noexcept {
  operator delete(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
  operator delete(memory);
}

void operator delete[](void* memory, std::align_val_t) noexcept {
  operator delete(memory);
}

void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
  operator delete(memory);
}
