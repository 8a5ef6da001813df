#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "nu/foundation/numeric_helpers.h"
#include "support/clouds.h"
#include "support/failing_new.h"

namespace {

using namespace nu::test;

std::vector<int> InsertionOrder(const std::vector<double>& a) {
  std::vector<int> index;
  for (int i = 0; i < static_cast<int>(a.size()); ++i) {
    auto place = index.end();
    while (place != index.begin() && a[*(place - 1)] > a[i]) --place;
    index.insert(place, i);
  }
  return index;
}

void ExpectSortedAsByInsertion(const std::vector<double>& a, bool shortOfMemory) {
  const int n = static_cast<int>(a.size());
  const std::vector<int> expected = InsertionOrder(a);
  std::vector<int> index(a.size(), -1);
  std::vector<double> values = a;
  std::vector<double> keys = a;
  std::vector<double> companions;
  for (int i = 0; i < n; ++i) companions.push_back(i);
  const long failing = shortOfMemory ? 0 : -1;
  FailAllocation(failing);
  NuSort(n, a.data(), index.data());
  FailAllocation(failing);
  NuSort(n, values.data());
  FailAllocation(failing);
  NuSort(n, keys.data(), companions.data());
  FailAllocation(-1);
  ASSERT_EQ(index, expected);
  for (int i = 0; i < n; ++i) {
    const auto bits = std::bit_cast<std::uint64_t>(a[expected[i]]);
    ASSERT_EQ(std::bit_cast<std::uint64_t>(values[i]), bits) << i;
    ASSERT_EQ(std::bit_cast<std::uint64_t>(keys[i]), bits) << i;
    ASSERT_EQ(companions[i], expected[i]);
  }
}

// Every generator with every size, with and without memory for a copy.
TEST(Sort, GivesTheOrderOfTheInsertionSort) {
  std::mt19937_64 random(5);
  std::uniform_real_distribution<double> uniform(-1000.0, 1000.0);
  const double hostile[] = {0.0,  -0.0,   kNaN,    -kNaN, kInf,   -kInf,      1.0,
                            -1.0, 5e-324, -5e-324, 1e308, -1e308, 1.0 + 1e-15};
  const double tame[] = {0.0, -0.0, 1.0, 1.0 + 1e-15, 1.0 + 2e-15, 1e-300, -7.0};
  const auto draw = [&](int kind, int i) -> double {
    switch (kind) {
      case 0:
        return uniform(random);
      case 1:
        return std::floor(uniform(random) / 100.0);
      case 2:
        return hostile[random() % std::size(hostile)];
      case 3:
        return tame[random() % std::size(tame)];
      case 4:
        return random() % 200 == 0 ? kNaN : uniform(random);
      case 5:
        return 1e6 + 1e-9 * static_cast<double>(random() % 1000000);
      case 6:
        return std::bit_cast<double>(random());
      case 7:
        return -i;
      default:
        return i;
    }
  };
  for (const bool shortOfMemory : {false, true}) {
    for (const int n : {0, 1, 2, 3, 20, 47, 48, 49, 50, 200, 1000, 7000}) {
      for (int kind = 0; kind < 9; ++kind) {
        SCOPED_TRACE(testing::Message() << "n " << n << ", kind " << kind << ", short of memory " << shortOfMemory);
        std::vector<double> a;
        for (int i = 0; i < n; ++i) a.push_back(draw(kind, i));
        ExpectSortedAsByInsertion(a, shortOfMemory);
      }
    }
  }
}

}  // namespace
