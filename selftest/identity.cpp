#include "identity.h"

#include <ctime>
#include <string_view>

#include "build_flags.h"
#include "nu/nu.h"

namespace {

std::string Compiler() {
#if defined(__clang__)
  return "clang " __clang_version__;
#elif defined(__GNUC__)
  return "g++ " __VERSION__;
#elif defined(_MSC_VER)
  return "MSVC " + std::to_string(_MSC_FULL_VER);
#else
  return "unknown";
#endif
}

std::string StandardLibrary() {
#if defined(_LIBCPP_VERSION)
  return "libc++ " + std::to_string(_LIBCPP_VERSION);
#elif defined(__GLIBCXX__)
  return "libstdc++ " + std::to_string(_GLIBCXX_RELEASE);
#elif defined(_MSC_VER)
  return "that of MSVC";
#else
  return "unknown";
#endif
}

std::string Platform() {
#if defined(_WIN32)
  std::string platform = "Windows";
#elif defined(__APPLE__)
  std::string platform = "macOS";
#elif defined(__linux__)
  std::string platform = "Linux";
#else
  std::string platform = "unknown system";
#endif
#if defined(__x86_64__) || defined(_M_X64)
  return platform + ", x86-64";
#elif defined(__aarch64__) || defined(_M_ARM64)
  return platform + ", AArch64";
#elif defined(__i386__) || defined(_M_IX86)
  return platform + ", x86";
#else
  return platform + ", " + std::to_string(8 * sizeof(void*)) + "-bit addresses";
#endif
}

// What the program was compiled for, and what the processor has beyond it, for which g++ on Linux makes kernels too.
std::string InstructionSet() {
#if defined(__AVX512F__)
  std::string set = "compiled for AVX-512";
#elif defined(__AVX2__)
  std::string set = "compiled for AVX2";
#elif defined(__SSE2__) || defined(_M_X64)
  std::string set = "compiled for SSE2";
#else
  std::string set = "compiled for the baseline";
#endif
#if (defined(__x86_64__) || defined(__i386__)) && defined(__GNUC__)
  __builtin_cpu_init();
  set += __builtin_cpu_supports("avx512f") != 0 ? "; the processor has AVX-512"
         : __builtin_cpu_supports("avx2") != 0  ? "; the processor has AVX2"
                                                : "; the processor has no AVX2";
#endif
  return set;
}

// Without CMake's mark of options that belong together.
std::string Flags() {
  std::string flags = NU_SELFTEST_FLAGS;
  constexpr std::string_view kMark = "SHELL:";
  for (std::size_t at = flags.find(kMark); at != std::string::npos; at = flags.find(kMark))
    flags.erase(at, kMark.size());
  return flags;
}

}  // namespace

std::vector<std::pair<std::string, std::string>> Identity() {
  const std::time_t now = std::time(nullptr);
  char date[32];
  std::strftime(date, sizeof date, "%Y-%m-%d %H:%M UTC", std::gmtime(&now));
  return {{"date", date},
          {"library", "Nu " + std::to_string(NuMajorVersionLabel) + "." + std::to_string(NuMinorVersionLabel) + "." +
                          std::to_string(NuBuildVersionLabel)},
          {"platform", Platform()},
          {"compiler", Compiler()},
          {"standard library", StandardLibrary()},
          {"build type", NU_SELFTEST_BUILD_TYPE},
          {"flags", Flags()},
          {"instruction set", InstructionSet()}};
}
