// Allocations fail while the part of a plan is evaluated: std::bad_alloc or CNuMemoryException ends it, or a feature
// fails and says so; nothing leaks, and no value differs from that of an undisturbed run. The library of TOML that
// reads plans cannot pass the lack of memory on everywhere; it ends the program with a message there.

#include <gtest/gtest.h>
#include <nu/nu.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <new>
#include <string>

#include "evaluate/part.h"
#include "plan/plan_reader.h"
#include "run.h"
#include "support/failing_new.h"

namespace {

using namespace nu::test;

const std::string kPlan = (std::filesystem::absolute(NU_DATA_DIR) / "parts" / "carrier.toml").generic_string();

// Runs with `samples` of the allocations failing, one at a time, spread over all; counts those that end it.
int FailSome(long samples, const std::function<void()>& run) {
  constexpr long kMany = 1L << 40;
  FailAllocation(kMany);
  run();
  const long all = kMany - AllocationsUntilFailure();
  int ends = 0;
  for (long i = 0; i < samples; ++i) {
    const long live = LiveAllocations();
    FailAllocation(i * all / samples);
    try {
      run();
    } catch (const std::bad_alloc&) {
      ++ends;
    } catch (const CNuMemoryException&) {
      ++ends;
    }
    EXPECT_TRUE(AllocationHasFailed()) << i;
    FailAllocation(-1);
    EXPECT_EQ(LiveAllocations(), live) << i;
  }
  return ends;
}

TEST(FailingAllocations, OfAPartThatIsEvaluated) {
  const PartPlan plan = ReadPlan(kPlan, false);
  const PartResult whole = EvaluatePart(plan, {});
  const int ends = FailSome(100, [&] {
    const PartResult part = EvaluatePart(plan, {});
    ASSERT_EQ(part.characteristics.size(), whole.characteristics.size());
    for (std::size_t i = 0; i < part.characteristics.size(); ++i) {
      const Characteristic &given = part.characteristics[i], &right = whole.characteristics[i];
      if (given.verdict == Verdict::kFailed)
        EXPECT_NE(given.failure, "") << given.name;
      else
        EXPECT_EQ(given.measured, right.measured) << given.name;
    }
  });
  EXPECT_GT(ends, 50);
}

// What main does with it.
[[noreturn]] void ReadAfter(long allocations) {
  ComplainOfMemoryAtTermination();
  FailAllocation(allocations);
  try {
    static_cast<void>(ReadPlan(kPlan, false));
  } catch (const std::bad_alloc&) {
    std::_Exit(Complain(kOutOfMemory, kBadInput));
  } catch (const CNuMemoryException&) {
    std::_Exit(Complain(kOutOfMemory, kBadInput));
  } catch (const std::exception& error) {
    std::_Exit(Complain(error.what(), kBadInput));
  }
  std::_Exit(kWithinTolerance);
}

TEST(FailingAllocations, DeathOfAPlanThatIsRead) {
  constexpr long kMany = 1L << 40, kSamples = 60;
  FailAllocation(kMany);
  static_cast<void>(ReadPlan(kPlan, false));
  const long all = kMany - AllocationsUntilFailure();
  FailAllocation(-1);
  // The library reads numbers through streams, which do not tell lack of memory from a wrong number.
  const std::string messages = std::string(kOutOfMemory) + "|could not be interpreted";
  for (long i = 0; i < kSamples; ++i)
    EXPECT_EXIT(ReadAfter(i * all / kSamples), testing::ExitedWithCode(kBadInput), messages) << i;
}

}  // namespace
