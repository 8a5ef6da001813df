#include "nu/engine/base/error_free.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace {

using namespace nu::internal;

// Whatever the processor offers, both ways to the error of a product give the same bits.
void ExpectSameBits(double a, double b) {
  const double error = ProductError(a, b);
  const double byHalves = ProductErrorByHalves(a, b);
  const bool same = std::isnan(error) ? std::isnan(byHalves)
                                      : std::bit_cast<std::uint64_t>(error) == std::bit_cast<std::uint64_t>(byHalves);
  if (!same) ADD_FAILURE() << std::hexfloat << a << " * " << b << ": " << error << ", by halves " << byHalves;
}

// The low half of the 106 digits of a product, in integers.
TEST(ErrorFree, ProductAndItsErrorAreTheExactProduct) {
  __extension__ using Wide = __int128;
  std::mt19937_64 random(5);
  for (int i = 0; i < 200'000; ++i) {
    const auto x = static_cast<std::int64_t>(random()) >> (11 + random() % 30);
    const auto y = static_cast<std::int64_t>(random()) >> (11 + random() % 30);
    const int shift = static_cast<int>(random() % 900) - 450;
    const double a = std::ldexp(static_cast<double>(x), shift);
    const double b = std::ldexp(static_cast<double>(y), 1 - shift / 2);
    const double unit = std::ldexp(1.0, shift + 1 - shift / 2);
    const double product = static_cast<double>(x) * static_cast<double>(y);
    const auto error = static_cast<double>(static_cast<Wide>(x) * y - static_cast<Wide>(product));
    ASSERT_EQ(ProductErrorByHalves(a, b), error * unit) << x << " * " << y << " * 2^" << shift;
    ExpectSameBits(a, b);
  }
}

TEST(ErrorFree, BothWaysToTheErrorOfAProductGiveTheSameBits) {
  using Limits = std::numeric_limits<double>;
  std::vector<double> nasty = {0.0,           -0.0,          Limits::infinity(),   Limits::quiet_NaN(),
                               Limits::max(), Limits::min(), Limits::denorm_min(), 0x1.fffffffffffffp-1023};
  for (int exponent = -1074; exponent <= 1023; exponent += exponent < -900 || exponent > 900 ? 3 : 29) {
    const double power = std::ldexp(1.0, exponent);
    for (const double x : {1.0, 1.0 + 0x1p-52, 1.0 / 3.0, -0x1.fffffffffffffp+0}) nasty.push_back(power * x);
  }
  for (const double a : nasty) {
    for (const double b : nasty) ExpectSameBits(a, b);
  }
  std::mt19937_64 random(7);
  for (int i = 0; i < 1'000'000; ++i) ExpectSameBits(std::bit_cast<double>(random()), std::bit_cast<double>(random()));
}

// Random sixty-bit cancellation: the rounded result is known from integers.
TEST(ErrorFree, DifferenceOfProductsKeepsItsDigits) {
  __extension__ using Wide = __int128;
  std::mt19937_64 random(11);
  for (int i = 0; i < 100'000; ++i) {
    const auto a = static_cast<std::int64_t>(random() >> 11), b = static_cast<std::int64_t>(random() >> 11);
    const std::int64_t c = a + static_cast<std::int64_t>(random() % 8), d = b - static_cast<std::int64_t>(random() % 8);
    const auto exact = static_cast<double>(static_cast<Wide>(a) * b - static_cast<Wide>(c) * d);
    const double found = nu::internal::DifferenceOfProducts(static_cast<double>(a), static_cast<double>(b),
                                                            static_cast<double>(c), static_cast<double>(d));
    ASSERT_NEAR(found, exact, std::fabs(exact) * std::numeric_limits<double>::epsilon())
        << a << ' ' << b << ' ' << c << ' ' << d;
  }
  const double large = 1e300;
  EXPECT_EQ(nu::internal::DifferenceOfProducts(large, large, 1.0, 1.0), std::numeric_limits<double>::infinity());
}

}  // namespace
