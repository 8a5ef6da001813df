#include "nu/engine/base/elementary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/clouds.h"

namespace {

using namespace nu::internal;

using nu::test::kInf;
using nu::test::kNaN;
using nu::test::Random;

// What takes one argument does not read the second.
using Function = double (*)(double, double);
struct Entry {
  Function own, standard;
  double low, high;  // of the arguments for the comparison with the standard library
};

#define NU_ONE(name, Name, low, high)                                                                                  \
  std::make_pair(#name, Entry{[](double x, double) { return Name(x); }, [](double x, double) { return std::name(x); }, \
                              low, high})
#define NU_TWO(name, Name, low, high)                                        \
  std::make_pair(#name, Entry{[](double x, double y) { return Name(x, y); }, \
                              [](double x, double y) { return std::name(x, y); }, low, high})

const std::map<std::string, Entry> kFunctions = {
    NU_ONE(sin, Sin, -10, 10),   NU_ONE(cos, Cos, -10, 10),  NU_ONE(tan, Tan, -10, 10),   NU_ONE(asin, Asin, -1, 1),
    NU_ONE(acos, Acos, -1, 1),   NU_ONE(atan, Atan, -5, 5),  NU_TWO(atan2, Atan2, -1, 1), NU_ONE(exp, Exp, -700, 700),
    NU_ONE(log, Log, 0, 3),      NU_TWO(pow, Pow, 0, 20),    NU_ONE(sinh, Sinh, -5, 5),   NU_ONE(cosh, Cosh, -5, 5),
    NU_ONE(asinh, Asinh, -5, 5), NU_ONE(acosh, Acosh, 1, 5), NU_ONE(cbrt, Cbrt, -30, 30), NU_TWO(hypot, Hypot, -1, 1)};

std::uint64_t BitsOf(double x) {
  return std::isnan(x) ? ~std::uint64_t{0} : std::bit_cast<std::uint64_t>(x);
}

TEST(Elementary, KnownValuesAreMetToTheLastDigit) {
  std::ifstream file(NU_DATA_DIR "/elementary_values.txt");
  std::string line;
  int cases = 0;
  while (std::getline(file, line)) {
    std::istringstream words(line);
    std::string name, word;
    words >> name;
    if (name == "#") continue;
    std::vector<double> values;
    while (words >> word) values.push_back(std::strtod(word.c_str(), nullptr));
    const double expected = values.back();
    values.back() = 0.0;
    values.resize(4);
    const bool isSpatial = std::count(line.begin(), line.end(), ' ') == 4;
    const double result =
        isSpatial ? Hypot(values[0], values[1], values[2]) : kFunctions.at(name).own(values[0], values[1]);
    EXPECT_EQ(BitsOf(result), BitsOf(expected)) << line << ": " << result;
    ++cases;
  }
  EXPECT_GT(cases, 500);
  for (const auto& [name, function] : kFunctions) EXPECT_TRUE(std::isnan(function.own(kNaN, 2.0))) << name;
}

[[maybe_unused]] double UlpOf(double x) {
  return std::nextafter(std::fabs(x), kInf) - std::fabs(x);
}

// The hash pins the bits for every compiler, level of optimisation and processor.
TEST(Elementary, RandomArgumentsGiveThePinnedBitsNearTheStandardLibrary) {
  Random random(20);
  std::uint64_t hash = 0xcbf29ce484222325;
  for (const auto& [name, entry] : kFunctions) {
    for (int i = 0; i < 2000; ++i) {
      const double x = random.Uniform(entry.low, entry.high);
      const double y = random.Uniform(entry.low, entry.high);
      const double own = entry.own(x, y);
#ifndef _WIN32  // some functions of the C library there are off by more
      const double standard = entry.standard(x, y);
      ASSERT_LE(std::fabs(own - standard), 4.0 * UlpOf(standard)) << name << ' ' << x << ' ' << y;
#endif
      hash = (hash ^ BitsOf(own)) * 0x100000001b3;
    }
  }
  EXPECT_EQ(hash, 16598185761905906045u);
}

TEST(Elementary, SymmetriesAndExactResultsHold) {
  Random random(21);
  const auto next = [&] { return std::ldexp(random.Uniform(1.0, 2.0), random.Below(40) - 30); };
  for (int i = 0; i < 5000; ++i) {
    const double x = next(), y = next(), z = next();
    for (const char* odd : {"sin", "tan", "asin", "atan", "sinh", "asinh", "cbrt"}) {
      const double result = kFunctions.at(odd).own(x, 0.0);
      ASSERT_EQ(BitsOf(kFunctions.at(odd).own(-x, 0.0)), BitsOf(-result)) << odd << x;
    }
    ASSERT_EQ(Cos(-x), Cos(x));
    ASSERT_EQ(Atan2(-x, y), -Atan2(x, y));
    ASSERT_TRUE(Hypot(x, y) == Hypot(-y, x) && Hypot(x, y, z) == Hypot(z, -x, y) && Hypot(x, y, z) == Hypot(y, x, z));
    const SineCosine both = SinCos(x);
    ASSERT_TRUE(both.sine == Sin(x) && both.cosine == Cos(x)) << x;
    const double a = 1.0 + random.Below(3000), b = 1.0 + random.Below(3000);
    ASSERT_EQ(Hypot(a * a - b * b, 2.0 * a * b), a * a + b * b);
    ASSERT_TRUE(Pow(a, 3.0) == a * a * a && Pow(-a, 4.0) == a * a * a * a && Pow(a * a, 0.5) == a &&
                Cbrt(-a * a * a) == -a);
  }
}

}  // namespace
