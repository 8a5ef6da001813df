// Every public operation with its first, second, ... allocation failing, over arguments of several kinds, and with some
// of them failing over large ones: it ends in CNuMemoryException, keeps no memory, and leaves its arguments as they
// were. On eight threads at once it gives what it gives alone.

#include "operations/operations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <random>
#include <thread>
#include <utility>
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

std::uint64_t Number(const Operation& operation) {
  return static_cast<std::uint64_t>(&operation - AllOperations().data());
}

// What the library declares and does not offer.
bool AlwaysFails(const Operation& operation) {
  constexpr const char* kNames[] = {"CNuLinearEquSys::SetEquality(", "CNuLinearEquSys::SetInequality(",
                                    "CNuLinearEquSys::SetLeastDistance(", "CNuLinearEquSys::Solve()",
                                    "CNuTorSurf::IntersectWith("};
  return std::any_of(std::begin(kNames), std::end(kNames),
                     [&](const char* name) { return std::strncmp(operation.name, name, std::strlen(name)) == 0; });
}

TEST(Operations, AreManyAndEachHasAName) {
  EXPECT_GT(AllOperations().size(), 1300u);
  for (const Operation& operation : AllOperations()) EXPECT_NE(operation.name[0], '\0');
}

// Whether the operation ends in a result; `mode` tells what fails meanwhile.
bool Succeeds(const Operation& operation, CallMode mode, int i, bool isLarge = false) {
  const std::vector<std::uint8_t> bytes = Bytes(1000 * Number(operation) + i, i % 2);
  Input input(bytes.data(), bytes.size());
  input.SetLarge(isLarge);
  Pool pool(input);
  pool.SetMode(mode);
  pool.Run(operation);
  EXPECT_TRUE(pool.Problems().empty()) << pool.Problems()[0] << ", arguments " << i;
  return pool.HasSucceeded();
}

// With several arguments, and on with those that it succeeds with.
TEST(Operations, EndAsDocumentedWhenAnyAllocationFails) {
  constexpr int kArguments = 4, kMost = 3000;
  for (const Operation& operation : AllOperations()) {
    bool hasSucceeded = false;
    for (int i = 0; i < kArguments; ++i) hasSucceeded |= Succeeds(operation, CallMode::kEveryAllocation, i);
    for (int i = kArguments; i < kMost && !hasSucceeded; ++i)
      hasSucceeded = Succeeds(operation, CallMode::kPlain, i) && Succeeds(operation, CallMode::kEveryAllocation, i);
    EXPECT_NE(hasSucceeded, AlwaysFails(operation)) << operation.name;
  }
}

// What an operation leaves behind where threads read the same objects and write to their own, and whether it succeeds.
// A coarse thread takes any step for converged.
std::pair<Bits, bool> Outcome(const Operation& operation, int i, Pool& shared, bool isCoarse) {
  const std::vector<std::uint8_t> bytes = Bytes(1000 * Number(operation) + i, 1);
  Input input(bytes.data(), bytes.size());
  Pool pool(input);
  pool.Share(shared);
  if (isCoarse) NuSetTol(1e-3);
  pool.Run(operation);
  EXPECT_TRUE(pool.Problems().empty()) << pool.Problems()[0] << ", arguments " << i;
  return {pool.Recorded(), pool.HasSucceeded()};
}

TEST(OperationsConcurrency, EachGivesOnEightThreadsWhatItGivesAlone) {
  constexpr int kMost = 10;
  constexpr std::size_t kThreads = 8;
  const std::vector<std::uint8_t> bytes = Bytes(1, 1);
  Input input(bytes.data(), bytes.size());
  Pool shared(input);
  shared.FillAll();
  const std::vector<Operation>& operations = AllOperations();
  std::vector<int> arguments;  // of each operation, such that it succeeds
  for (const Operation& operation : operations) {
    int i = 0;
    while (i < kMost && !Outcome(operation, i, shared, false).second) ++i;
    arguments.push_back(i);
  }
  EXPECT_LT(std::count(arguments.begin(), arguments.end(), kMost), static_cast<std::ptrdiff_t>(operations.size() / 10));
  // Threads start at different operations.
  const auto run = [&](std::size_t thread) {
    std::vector<Bits> outcomes(operations.size());
    for (std::size_t k = 0; k < outcomes.size(); ++k) {
      const std::size_t at = (k + thread * outcomes.size() / kThreads) % outcomes.size();
      outcomes[at] = Outcome(operations[at], arguments[at], shared, thread % 2 == 1).first;
    }
    return outcomes;
  };
  const std::vector<Bits> alone[] = {run(0), run(1)};
  EXPECT_NE(alone[0], alone[1]);
  std::vector<Bits> found[kThreads];
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < kThreads; ++t) threads.emplace_back([&, t] { found[t] = run(t); });
  for (std::thread& thread : threads) thread.join();
  for (std::size_t t = 0; t < kThreads; ++t) {
    for (std::size_t k = 0; k < operations.size(); ++k)
      EXPECT_EQ(found[t][k], alone[t % 2][k]) << operations[k].name << ", thread " << t;
  }
}

// With 1e5 points, numbers or rows in every set.
TEST(Operations, EndAsDocumentedWhenSomeAllocationsFailOverLargeSets) {
  for (const Operation& operation : AllOperations()) Succeeds(operation, CallMode::kSomeAllocations, 1, true);
}

}  // namespace
