#include "evaluate/roundness_filter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

constexpr double kRadius = 12.5;
constexpr double kAmplitude = 0.004;
constexpr Vec3 kCentre = {3, -7, 11};
constexpr int kPoints = 3600;
constexpr double kFullTurn = 2 * std::numbers::pi;

// A circle with undulations of these numbers per revolution, all of one amplitude.
std::vector<Vec3> Profile(const std::vector<int>& undulations, double shift = 0) {
  std::vector<Vec3> points;
  for (int i = 0; i < kPoints; ++i) {
    const double t = kFullTurn * i / kPoints + shift * std::sin(kFullTurn * i / kPoints);
    double radius = kRadius;
    for (const int n : undulations) radius += kAmplitude * std::cos(n * t + 0.3);
    points.push_back({kCentre[0] + radius * std::cos(t), kCentre[1] + radius * std::sin(t), kCentre[2]});
  }
  return points;
}

double RadialDeviation(const Vec3& point) {
  return std::hypot(point[0] - kCentre[0], point[1] - kCentre[1]) - kRadius;
}

// The part of the amplitude that the profile has at n undulations, by its Fourier coefficient.
double PartAt(int n, const std::vector<Vec3>& points) {
  double a = 0;
  double b = 0;
  for (int i = 0; i < kPoints; ++i) {
    const double deviation = RadialDeviation(points[static_cast<std::size_t>(i)]);
    a += deviation * std::cos(n * kFullTurn * i / kPoints);
    b += deviation * std::sin(n * kFullTurn * i / kPoints);
  }
  return 2 * std::hypot(a, b) / kPoints / kAmplitude;
}

// ISO 16610-21: a sine of the wavelength L keeps the part exp(-pi (alpha Lc / L)^2) of its amplitude with
// alpha = sqrt(ln 2 / pi): 50 % at the cutoff Lc. Around a circle, Lc / L is the ratio of the undulations.
double Transmission(int undulations, int cutoff) {
  const double alpha = std::sqrt(std::numbers::ln2 / std::numbers::pi);
  const double ratio = alpha * undulations / cutoff;
  return std::exp(-std::numbers::pi * ratio * ratio);
}

TEST(RoundnessFilter, PassesWhatTheStandardSays) {
  constexpr double kRounding = 1e-11;  // of deviations that are 3000 times smaller than coordinates
  EXPECT_NEAR(Transmission(50, 50), 0.5, 1e-15);
  for (const int cutoff : {15, 50, 150}) {
    EXPECT_NEAR(PartAt(cutoff, FilteredRoundness(Profile({cutoff}), cutoff)), 0.5, kRounding);
    const std::vector<int> undulations = {2, 5, cutoff / 2, cutoff, 2 * cutoff, 3 * cutoff};
    const std::vector<Vec3> filtered = FilteredRoundness(Profile(undulations), cutoff);
    for (const int n : undulations) {
      EXPECT_NEAR(PartAt(n, filtered), Transmission(n, cutoff), kRounding) << n << " undulations, cutoff " << cutoff;
    }
  }
}

// Points that stand denser on one side do not draw the profile to them.
TEST(RoundnessFilter, KeepsACircleWhereverItsPointsAre) {
  for (const Vec3& point : FilteredRoundness(Profile({}, 0.6), 50)) EXPECT_NEAR(RadialDeviation(point), 0, 1e-13);
  double largest = 0;
  const std::vector<Vec3> uneven = Profile({3}, 0.6);
  const std::vector<Vec3> filtered = FilteredRoundness(uneven, 150);
  for (std::size_t i = 0; i < uneven.size(); ++i) {
    const double expected = Transmission(3, 150) * RadialDeviation(uneven[i]);
    largest = std::max(largest, std::fabs(RadialDeviation(filtered[i]) - expected));
  }
  EXPECT_LT(largest, 1e-3 * kAmplitude);  // the arcs follow the density to second order
}

TEST(RoundnessFilter, RefusesGaps) {
  std::vector<Vec3> open = Profile({3});
  open.resize(open.size() - 40);  // 4 degrees; half an undulation of 50 is 3.6, of 15 it is 12
  EXPECT_THROW(FilteredRoundness(open, 50), FitFailure);
  EXPECT_NO_THROW(FilteredRoundness(open, 15));
}

}  // namespace
