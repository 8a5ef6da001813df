// What do the library's elementary functions cost, beside those of the C library?

#include "nu/engine/base/elementary.h"

#include <cmath>

#include "clouds.h"
#include "question.h"

namespace {

using bench::Numbers;
using bench::Question;

// Relative to results above 1: a few units in the last place of the peers.
constexpr double kTolerance = 1e-14;
const auto kSame = [](const Numbers& x) { return x; };

// Every argument with the next one, for functions of two.
template<class Function>
auto OverAll(Function function) {
  return [=](const Numbers& x) {
    Numbers result(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) result[i] = function(x[i], x[(i + 1) % x.size()]);
    return result;
  };
}

template<class Own, class Standard>
void Ask(const char* name, double low, double high, Own own, Standard standard) {
  Question<Numbers>(std::string("elementary_") + name, kTolerance,
                    [=](int n) {
                      bench::Dice dice(31);
                      Numbers arguments(static_cast<std::size_t>(n));
                      for (double& x : arguments) x = dice.Between(low, high);
                      return arguments;
                    })
      .Ask("nu", kSame, OverAll(own), kSame)
      .Ask("std", kSame, OverAll(standard), kSame)
      .Over({10000});
}

#define ASK_ONE(name, Name, low, high)                                          \
  Ask(                                                                          \
      #name, low, high, [](double x, double) { return nu::internal::Name(x); }, \
      [](double x, double) { return std::name(x); })
#define ASK_TWO(name, Name, low, high)                                               \
  Ask(                                                                               \
      #name, low, high, [](double x, double y) { return nu::internal::Name(x, y); }, \
      [](double x, double y) { return std::name(x, y); })

const bool kAsked = [] {
  ASK_ONE(sin, Sin, -7.0, 7.0);
  ASK_ONE(cos, Cos, -7.0, 7.0);
  ASK_ONE(tan, Tan, -1.5, 1.5);
  ASK_ONE(asin, Asin, -1.0, 1.0);
  ASK_ONE(acos, Acos, -1.0, 1.0);
  ASK_ONE(atan, Atan, -7.0, 7.0);
  ASK_TWO(atan2, Atan2, -1.0, 1.0);
  ASK_ONE(exp, Exp, -3.0, 3.0);
  ASK_ONE(log, Log, 1.0, 10.0);
  ASK_TWO(pow, Pow, 0.1, 3.0);
  ASK_ONE(sinh, Sinh, -3.0, 3.0);
  ASK_ONE(cosh, Cosh, -3.0, 3.0);
  ASK_ONE(asinh, Asinh, -7.0, 7.0);
  ASK_ONE(acosh, Acosh, 1.0, 10.0);
  ASK_ONE(cbrt, Cbrt, 1.0, 10.0);
  ASK_TWO(hypot, Hypot, -10.0, 10.0);
  Ask(
      "hypot3", -10.0, 10.0, [](double x, double y) { return nu::internal::Hypot(x, y, 1.0); },
      [](double x, double y) { return std::hypot(x, y, 1.0); });
  Ask(
      "sincos", -7.0, 7.0,
      [](double x, double) {
        const auto [sine, cosine] = nu::internal::SinCos(x);
        return sine * cosine;
      },
      [](double x, double) { return std::sin(x) * std::cos(x); });
  return true;
}();

}  // namespace
