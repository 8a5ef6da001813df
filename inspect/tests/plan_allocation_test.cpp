// Allocations fail while the part of a plan is evaluated: std::bad_alloc or CNuMemoryException ends it, or a feature
// fails and says so; nothing leaks, and no value differs from that of an undisturbed run. The plan itself is read by a
// library of TOML that ends the program where memory runs out.

#include <gtest/gtest.h>
#include <nu/nu.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <new>
#include <string>

#include "evaluate/part.h"
#include "plan/plan_reader.h"
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

}  // namespace
