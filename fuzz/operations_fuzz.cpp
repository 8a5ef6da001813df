// Sequences of all public operations over a pool of values, with allocations that fail: each call ends in a result or
// in an exception of the library, a failure leaves the arguments as they were, and no memory is kept.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "operations/operations.h"
#include "operations/pool.h"

namespace {

// The longest sequence: what is left of an input is values.
constexpr int kMostCalls = 24;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace nu::fuzz;
  Input input(data, size);
  Pool pool(input);
  const bool fails = input.Byte() % 4 == 3;
  for (int call = 0; call < kMostCalls && !input.IsAtEnd(); ++call) {
    const unsigned high = input.Byte();
    const Operation& operation = OperationOf(static_cast<std::uint16_t>(256u * high + input.Byte()));
    pool.SetMode(fails && input.Byte() % 4 == 0 ? CallMode::kOneFailure : CallMode::kPlain);
    pool.Run(operation);
  }
  for (const std::string& problem : pool.Problems()) std::fprintf(stderr, "%s\n", problem.c_str());
  if (!pool.Problems().empty()) std::abort();
  return 0;
}
