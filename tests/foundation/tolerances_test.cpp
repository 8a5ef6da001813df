#include "nu/foundation/tolerances.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
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

void ExpectDefaultsBut(std::size_t changed) {
  for (std::size_t i = 0; i < std::size(kTolerances); ++i) {
    EXPECT_TRUE(i == changed || kTolerances[i].get() == kTolerances[i].standard) << i;
  }
}

TEST(Tolerances, EachIsIndependentAndTakesAnyValue) {
  const double values[] = {-1.0, 0.0, 1e-6, std::numeric_limits<double>::infinity(), std::nan("")};
  std::thread([&] {
    for (std::size_t i = 0; i < std::size(kTolerances); ++i) {
      for (const double value : values) {
        kTolerances[i].set(value);
        const double stored = kTolerances[i].get();
        EXPECT_TRUE(stored == value || (std::isnan(stored) && std::isnan(value)));
        ExpectDefaultsBut(i);
      }
      kTolerances[i].set(kTolerances[i].standard);
    }
  }).join();
}

// Threads that come and go, and some that live at the same time: whatever one sets is seen by none of the others.
TEST(Tolerances, EachThreadStartsWithTheDefaults) {
  for (int round = 0; round < 4; ++round) {
    std::vector<std::thread> threads;
    for (int t = 1; t <= 8; ++t) {
      threads.emplace_back([t] {
        ExpectDefaultsBut(std::size(kTolerances));
        for (int step = 0; step < 1000; ++step) {
          for (const auto& tolerance : kTolerances) tolerance.set(t + step);
          for (const auto& tolerance : kTolerances) ASSERT_EQ(tolerance.get(), t + step);
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
  }
  ExpectDefaultsBut(std::size(kTolerances));
}

}  // namespace
