#include "batch/statistics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace {

constexpr double kRounding = 1e-13;

// Mean 16, s = 2 and the limits 8 and 20 are the example of the NIST/SEMATECH e-Handbook of Statistical Methods,
// section 6.1.6: Cp = 1.0 and Cpk = 0.6667 from that s. The mean moving range is 2.
TEST(Capability, IsThatOfThePublishedExample) {
  const Capability found = CapabilityOf({14, 16, 18}, 8.0, 20.0);
  EXPECT_EQ(found.count, 3U);
  EXPECT_EQ(found.mean, 16);
  EXPECT_EQ(found.smallest, 14);
  EXPECT_EQ(found.largest, 18);
  EXPECT_EQ(found.deviationOverall, 2);
  EXPECT_NEAR(*found.pp, 1.0, kRounding);
  EXPECT_NEAR(*found.ppk, 2.0 / 3, kRounding);
  const double d2 = 2 / std::sqrt(std::numbers::pi);  // 1.128, the constant of control charts for two values
  EXPECT_NEAR(found.deviationWithin, 2 / d2, kRounding);
  EXPECT_NEAR(*found.cp, 12 / (6 * 2 / d2), kRounding);
  EXPECT_NEAR(*found.cpk, 4 / (3 * 2 / d2), kRounding);
}

// The chart of single values in section 6.3.2.3 of the same handbook: mean 50.81, mean moving range 1.8778, and with
// three standard deviations the control limits 55.8041 and 45.8159.
TEST(Capability, TakesTheSpreadWithinFromMovingRanges) {
  const Capability found =
      CapabilityOf({49.6, 47.6, 49.9, 51.3, 47.8, 51.2, 52.6, 52.4, 53.6, 52.1}, std::nullopt, std::nullopt);
  EXPECT_NEAR(found.mean, 50.81, kRounding * 51);
  EXPECT_NEAR(found.deviationWithin * 2 / std::sqrt(std::numbers::pi), 1.8778, 5e-5);
  EXPECT_NEAR(found.mean + 3 * found.deviationWithin, 55.8041, 2e-3);  // the handbook rounds d2 to 1.128
  EXPECT_NEAR(found.mean - 3 * found.deviationWithin, 45.8159, 2e-3);
  EXPECT_FALSE(found.pp || found.ppk || found.cp || found.cpk);
}

TEST(Capability, HoldsItsLaws) {
  const std::vector<double> values = {0.3, -0.1, 0.25, 0.05, 0.4, -0.2};
  const Capability base = CapabilityOf(values, -1.0, 1.0);
  // Another unit and another nominal value change no index.
  std::vector<double> moved(values.size());
  std::transform(values.begin(), values.end(), moved.begin(), [](double value) { return 1000 * value + 7; });
  const Capability other = CapabilityOf(moved, -993.0, 1007.0);
  constexpr double kDigits = 1e-12;
  for (const auto& [a, b] : {std::pair(base.pp, other.pp), std::pair(base.ppk, other.ppk), std::pair(base.cp, other.cp),
                             std::pair(base.cpk, other.cpk)}) {
    EXPECT_NEAR(*a, *b, kDigits);
  }
  EXPECT_LE(*base.ppk, *base.pp);
  EXPECT_LE(*base.cpk, *base.cp);
  // The order matters to the spread within alone.
  const Capability sorted = CapabilityOf({-0.2, -0.1, 0.05, 0.25, 0.3, 0.4}, -1.0, 1.0);
  EXPECT_NEAR(sorted.deviationOverall, base.deviationOverall, kDigits);
  EXPECT_LT(sorted.deviationWithin, base.deviationWithin);
  // One limit has an index to that side, and no index of both.
  const Capability upper = CapabilityOf(values, std::nullopt, 1.0);
  EXPECT_FALSE(upper.pp || upper.cp);
  EXPECT_NEAR(*upper.ppk, (1 - upper.mean) / (3 * upper.deviationOverall), kDigits);
  // A mean outside the limits is negative.
  EXPECT_LT(*CapabilityOf(values, 1.0, 2.0).cpk, 0);
}

TEST(Capability, HasNothingToSayOfFewOrEqualParts) {
  EXPECT_EQ(CapabilityOf({}, 0.0, 1.0).count, 0U);
  const Capability one = CapabilityOf({0.5}, 0.0, 1.0);
  EXPECT_EQ(one.mean, 0.5);
  EXPECT_FALSE(one.pp || one.ppk || one.cp || one.cpk);
  EXPECT_EQ(*CapabilityOf({0.5, 0.5}, 0.0, 1.0).cp, std::numeric_limits<double>::infinity());
  EXPECT_EQ(*CapabilityOf({1.5, 1.5}, 0.0, 1.0).ppk, -std::numeric_limits<double>::infinity());
}

}  // namespace
