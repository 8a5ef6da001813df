#include "nu/foundation/tolerances.h"

#include <gtest/gtest.h>

#include <cmath>
#include <thread>
#include <vector>

namespace {

constexpr struct {
  double (*get)();
  void (*set)(double);
  double standard;
} kTolerances[] = {
    {NuGetTol, NuSetTol, 4.45e-16},
    {NuGetLarge, NuSetLarge, 1e300},
    {NuGetZero, NuSetZero, 1e-300},
    {NuGetSqrtTol, NuSetSqrtTol, 1.5e-8},
    {NuGetLengthTol, NuSetLengthTol, 1e-12},
    {NuGetMinEdgeLength, NuSetMinEdgeLength, 1e-9},
    {NuGetDegreeTol, NuSetDegreeTol, 2.777777777778e-10},
    {NuGetRadianTol, NuSetRadianTol, 4.848136811094e-12},
    {NuGetMinAngle, NuSetMinAngle, 2.777777777778e-8},
};

// Threads that come and go, and some that live at the same time: each starts with the defaults, whatever the others
// set, and each tolerance takes any value and leaves the others alone.
TEST(Tolerances, BelongToOneThreadEach) {
  for (int round = 0; round < 3; ++round) {
    std::vector<std::thread> threads;
    for (int t = 1; t <= 8; ++t) {
      threads.emplace_back([t] {
        for (const auto& tolerance : kTolerances) ASSERT_EQ(tolerance.get(), tolerance.standard);
        for (int step = -500; step < 500; ++step) {
          for (const auto& tolerance : kTolerances) tolerance.set(step * t * tolerance.standard);
          for (const auto& tolerance : kTolerances) ASSERT_EQ(tolerance.get(), step * t * tolerance.standard);
        }
        NuSetTol(std::nan(""));
        ASSERT_TRUE(std::isnan(NuGetTol()));
      });
    }
    for (std::thread& thread : threads) thread.join();
  }
  EXPECT_EQ(NuGetTol(), 4.45e-16);
}

}  // namespace
