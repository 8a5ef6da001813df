#include "nu/engine/base/large_pages.h"

#include <cerrno>
#include <cstdint>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace nu::engine::base {

void AdviseLargePages([[maybe_unused]] void* block, [[maybe_unused]] std::size_t bytes) noexcept {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
  constexpr std::uintptr_t kLargePage = std::uintptr_t{1} << 21;
  if (bytes < 2 * kLargePage) return;
  const auto begin = reinterpret_cast<std::uintptr_t>(block);
  const std::uintptr_t skipped = (kLargePage - begin % kLargePage) % kLargePage;
  // Advice that the system refuses is not a failure, and no caller looks for its error number.
  const int before = errno;
  static_cast<void>(
      madvise(static_cast<char*>(block) + skipped, (bytes - skipped) / kLargePage * kLargePage, MADV_HUGEPAGE));
  errno = before;
#endif
}

}  // namespace nu::engine::base
