#include "support/failing_new.h"

#include <cstdlib>
#include <new>

namespace {

thread_local long allocationsUntilFailure = -1;
thread_local long liveAllocations = 0;

}  // namespace

void nu::test::FailAllocation(long k) {
  allocationsUntilFailure = k;
}

long nu::test::LiveAllocations() {
  return liveAllocations;
}

void* operator new(std::size_t size) {
  if (allocationsUntilFailure >= 0 && allocationsUntilFailure-- == 0) throw std::bad_alloc();
  void* memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  ++liveAllocations;
  return memory;
}

void operator delete(void* memory) noexcept {
  if (memory != nullptr) --liveAllocations;
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}
