// Every public operation with its first, second, ... allocation failing, over arguments of several kinds, and with some
// of them failing over large ones: it ends in CNuMemoryException, keeps no memory, and leaves its arguments as they
// were.

#include "operations/operations.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "operations/pool.h"

namespace {

using namespace nu::fuzz;

// The same arguments on every machine. Bytes below 128 are plain numbers, with which most operations succeed.
std::vector<std::uint8_t> Bytes(std::uint64_t seed, int plain) {
  std::mt19937_64 random(seed);
  std::vector<std::uint8_t> bytes(400);
  for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random() % (plain != 0 ? 128 : 256));
  return bytes;
}

TEST(Operations, AreManyAndEachHasAName) {
  EXPECT_GT(AllOperations().size(), 1300u);
  for (const Operation& operation : AllOperations()) EXPECT_NE(operation.name[0], '\0');
}

TEST(Operations, EndAsDocumentedWhenAnyAllocationFails) {
  constexpr int kArguments = 4;
  std::uint64_t seed = 0;
  for (const Operation& operation : AllOperations()) {
    for (int i = 0; i < kArguments; ++i) {
      const std::vector<std::uint8_t> bytes = Bytes(++seed, i % 2);
      Input input(bytes.data(), bytes.size());
      Pool pool(input);
      pool.SetMode(CallMode::kEveryAllocation);
      pool.Run(operation);
      EXPECT_TRUE(pool.Problems().empty()) << pool.Problems()[0] << ", arguments " << i;
    }
  }
}

// With 1e5 points, numbers or rows in every set.
TEST(Operations, EndAsDocumentedWhenSomeAllocationsFailOverLargeSets) {
  std::uint64_t seed = 1u << 20;
  for (const Operation& operation : AllOperations()) {
    const std::vector<std::uint8_t> bytes = Bytes(++seed, 1);
    Input input(bytes.data(), bytes.size());
    input.SetLarge(true);
    Pool pool(input);
    pool.SetMode(CallMode::kSomeAllocations);
    pool.Run(operation);
    EXPECT_TRUE(pool.Problems().empty()) << pool.Problems()[0];
  }
}

}  // namespace
