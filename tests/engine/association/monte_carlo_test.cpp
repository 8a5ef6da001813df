#include "nu/engine/association/monte_carlo.h"

#include <gtest/gtest.h>

#include "nu/curves/circle.h"
#include "nu/engine/association/covariance.h"
#include "nu/engine/association/random_normals.h"
#include "nu/geometry/internal/point_set.h"
#include "support/clouds.h"

namespace {

using namespace nu::internal;
using namespace nu::test;

// The known answers that the authors publish with their generator.
TEST(RandomNormals, DrawThePublishedWords) {
  const struct {
    RandomWords counter;
    std::uint32_t key[2];
    RandomWords words;
  } known[] = {
      {{{0, 0, 0, 0}}, {0, 0}, {{0x6627e8d5, 0xe169c58d, 0xbc57ac4c, 0x9b00dbd8}}},
      {{{~0U, ~0U, ~0U, ~0U}}, {~0U, ~0U}, {{0x408f276d, 0x41c83b0e, 0xa20bc7c6, 0x6d5451fd}}},
      {{{0x243f6a88, 0x85a308d3, 0x13198a2e, 0x03707344}},
       {0xa4093822, 0x299f31d0},
       {{0xd16cfe09, 0x94fdcceb, 0x5001e420, 0x24126ea1}}},
  };
  for (const auto& k : known) {
    const RandomWords words = PhiloxWords(k.counter, k.key[0], k.key[1]);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(words.word[i], k.words.word[i]);
  }
}

// Moments up to the fourth and the correlation of neighbours and streams, within five of their own deviations.
TEST(RandomNormals, AreNormalAndIndependent) {
  constexpr int kCount = 200000;
  RandomNormals normals(42, 0), other(42, 1);
  double sum[6] = {}, before = 0.0;
  for (int i = 0; i < kCount; ++i) {
    const double x = normals.Next();
    sum[0] += x;
    sum[1] += x * x - 1.0;
    sum[2] += x * x * x;
    sum[3] += x * x * x * x - 3.0;
    sum[4] += x * before;
    sum[5] += x * other.Next();
    before = x;
  }
  const double variance[] = {1.0, 2.0, 15.0, 96.0, 1.0, 1.0};
  for (int k = 0; k < 6; ++k) EXPECT_LT(std::fabs(sum[k]), 5.0 * std::sqrt(variance[k] * kCount)) << k;
}

TEST(MonteCarlo, ReproducesTheCovarianceOfACircle) {
  Random random(1);
  const CNuPointArray points = CircleCloud(random, 25, 5.0, 70.0, 0.0);
  const Feature circle{FeatureKind::circle, {{}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}, {5.0, 0.0}};
  MonteCarloProblem problem{ViewOf(points), {1e-4, 1e-4, 0.0}};
  problem.samples = 2000;
  const auto fit = [](PointView moved, double* values) {
    CNuPointArray cloud(static_cast<int>(moved.Size()));
    for (std::size_t i = 0; i < moved.Size(); ++i) cloud.Add({moved[i][0], moved[i][1], moved[i][2]});
    CNuCircle found(1.0);
    found.Fit(cloud, 100);
    values[0] = found.GetRadius();
    values[1] = found.GetCentre().y();
    return true;
  };
  SampledValue sampled[2], again[2];
  EXPECT_EQ(SampleFits(problem, 2, fit, sampled), 2000);
  const Covariance c = CovarianceOf(ViewOf(points), nullptr, circle, ~0U);
  const double expected[] = {1e-4 * UncertaintyPerUnit(c, UnknownGradient(kSize0)),
                             1e-4 * UncertaintyPerUnit(c, UnknownGradient(kShiftY))};
  for (int k = 0; k < 2; ++k) {
    EXPECT_NEAR(sampled[k].deviation / expected[k], 1.0, 5.0 / std::sqrt(4000.0));
    EXPECT_NEAR(sampled[k].mean, k == 0 ? 5.0 : 0.0, 5.0 * expected[k] / std::sqrt(2000.0));
    // A quantile of 2.5 % has the variance p (1 - p) / (n density^2): 0.06 standard deviations here.
    EXPECT_NEAR((sampled[k].high - sampled[k].mean) / expected[k], 1.96, 5.0 * 0.06);
    EXPECT_NEAR((sampled[k].low - sampled[k].mean) / expected[k], -1.96, 5.0 * 0.06);
  }
  // Same seed, same bits; fits that fail or give no number do not count.
  problem.samples = 50;
  int calls = 0;
  const auto some = [&](PointView moved, double* values) {
    values[0] = moved[3][0];
    values[1] = ++calls % 5 == 0 ? kNaN : moved[7][1];
    return calls % 2 == 0;
  };
  EXPECT_EQ(SampleFits(problem, 2, some, sampled), 20);
  calls = 0;
  SampleFits(problem, 2, some, again);
  EXPECT_EQ(sampled[0].low, again[0].low);
  EXPECT_EQ(sampled[1].mean, again[1].mean);
  problem.samples = 0;
  EXPECT_EQ(SampleFits(problem, 2, fit, sampled), 0);
  EXPECT_TRUE(std::isnan(sampled[0].mean));
}

TEST(MonteCarlo, LeavesOutOneContactAtATime) {
  const CNuPointArray points = PointsOf({{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {5.0, 0.0, 0.0}, {9.0, 0.0, 0.0}});
  const std::size_t contact[] = {0, 3, 1};
  double change[3];
  const auto length = [&](PointView rest, std::size_t without) {
    double low = kInf, high = -kInf;
    for (std::size_t i = 0; i < rest.Size(); ++i) {
      low = std::min(low, rest[i][0]);
      high = std::max(high, rest[i][0]);
      EXPECT_NE(rest[i][0], points[static_cast<int>(without)].x());
    }
    return high - low;
  };
  FindSensitivities(ViewOf(points), contact, 3, 9.0, length, change);
  EXPECT_EQ(change[0], -1.0);
  EXPECT_EQ(change[1], -4.0);
  EXPECT_EQ(change[2], 0.0);
}

}  // namespace
