#include "nu/engine/least_squares/gauss_newton.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace nu::engine::least_squares {
namespace {

// A problem whose steps have the squared lengths of a sequence, and never reach rounding.
struct Sequence {
  std::function<double(long)> squaredLength;
  long solved = 0;

  GaussNewtonStep SolveStep() { return {.solvable = true, .squaredLength = squaredLength(++solved)}; }
  void TakeStep() {}
};

std::function<double(long)> FallingBy(double rate) {
  return [rate](long k) { return std::exp(-rate * static_cast<double>(k)); };
}

TEST(CreepRule, EndsWhatWillNotArriveAndNothingElse) {
  constexpr long kLimit = 400;
  constexpr double kTarget = 1e-9;  // exp(-20.7)
  const CreepRule rule = {8, 100.0, 2};
  const auto constant = [](long) { return 1.0; };
  const auto restless = [](long k) { return k % 8 == 3 ? std::exp(-0.4 * static_cast<double>(k)) : 1.0; };
  const auto inJumps = [](long k) { return std::exp(-3.0 * static_cast<double>(k / 16)); };
  const auto swinging = [](long k) { return k % 16 < 9 && k % 16 > 0 ? 1.0 : 0.5; };
  const auto atRounding = [](long k) { return k == 1 ? 1.0 : 0.5 * kEpsilon * kEpsilon; };
  const struct {
    const char* what;
    std::function<double(long)> squaredLength;
    CreepRule rule;
    double tolerance;
    GaussNewtonEnd end;
    long count;
  } cases[] = {
      {"the first stretch has no rate", constant, rule, kTarget, GaussNewtonEnd::limitReached, 24},
      {"as many slow stretches as are given", constant, {8, 100.0, 4}, kTarget, GaussNewtonEnd::limitReached, 40},
      {"of the length that is given", constant, {5, 100.0, 2}, kTarget, GaussNewtonEnd::limitReached, 15},
      {"no rule", constant, kNoCreeping, kTarget, GaussNewtonEnd::limitReached, kLimit},
      {"207 steps away", FallingBy(0.1), rule, kTarget, GaussNewtonEnd::limitReached, 24},
      {"of the 300 that are given", FallingBy(0.1), {8, 300.0, 2}, kTarget, GaussNewtonEnd::converged, 208},
      {"83 steps away", FallingBy(0.25), rule, kTarget, GaussNewtonEnd::converged, 83},
      {"growth", FallingBy(-0.1), rule, kTarget, GaussNewtonEnd::limitReached, 24},
      {"the least of a stretch counts", restless, rule, kTarget, GaussNewtonEnd::converged, 59},
      {"a fast stretch makes up for a slow one", inJumps, rule, kTarget, GaussNewtonEnd::converged, 112},
      {"the rate is that of the last stretch", swinging, {8, 300.0, 2}, kTarget, GaussNewtonEnd::limitReached, kLimit},
      {"no target is below rounding", atRounding, rule, 0.0, GaussNewtonEnd::limitReached, kLimit},
  };
  for (const auto& c : cases) {
    Sequence problem{c.squaredLength};
    long count;
    const GaussNewtonEnd end = RunGaussNewton(problem,
                                              {.tolerance = c.tolerance,
                                               .large = 1e30,
                                               .limit = kLimit,
                                               .takesLastStep = true,
                                               .endsAtGrowth = false,
                                               .endsBeforeLimit = false,
                                               .creeping = c.rule},
                                              count);
    EXPECT_EQ(static_cast<int>(end), static_cast<int>(c.end)) << c.what;
    EXPECT_EQ(count, c.count) << c.what;
  }
}

}  // namespace
}  // namespace nu::engine::least_squares
