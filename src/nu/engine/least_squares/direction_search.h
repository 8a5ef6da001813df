#ifndef NU_ENGINE_LEAST_SQUARES_DIRECTION_SEARCH_H
#define NU_ENGINE_LEAST_SQUARES_DIRECTION_SEARCH_H

#include <algorithm>
#include <array>
#include <cmath>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/points/fourth_moments.h"

// How the starts look for the direction of an axis: many directions are judged, and the best ones refined.
namespace nu::engine::least_squares {

// A surface is clear when the root mean square of its deviations is this part of that from the best plane: what makes a
// wrong direction wrong is of the size of the latter.
inline constexpr double kClear = 0.03;

// Steps of a refinement that is compared with others.
inline constexpr int kTrialSteps = 30;

// The best of the surfaces that descents have found.
template<class Model>
struct BestFit {
  // Sums within the rounding errors of the coordinates are as good as each other, and then the smaller surface counts:
  // the order in which they are found must not.
  template<class Fit>
  void Take(Fit& fit, double scale) {
    const double found = fit.DeviationsNow().sumSquares * scale * scale;
    const double level = fit.RoundingLevel();
    const bool isSame = found <= level && sumSquares <= level;
    if (isSame ? fit.Model().Radius() < model.Radius() : found < sumSquares) *this = {fit.Model(), found};
  }

  Model model;
  double sumSquares = kInfinity;
};

// Of each kind.
inline constexpr int kDirections = 64;
using Directions = std::array<Vec3, kDirections>;

// Evenly over half a sphere: equal steps in height, turned by the golden angle from one to the next.
inline Directions EvenDirections() {
  Directions directions;
  constexpr double kGoldenAngle = 2.3999632297286533;
  for (int k = 0; k < kDirections; ++k) {
    const double z = (k + 0.5) / kDirections;
    const double across = std::sqrt(1.0 - z * z);
    const auto [sine, cosine] = SinCos(kGoldenAngle * k);
    directions[static_cast<std::size_t>(k)] = {across * cosine, across * sine, z};
  }
  return directions;
}

// The best directions of a set that is even as seen by points that are stretched along their principal axes.
template<class Judge, class Try>
void TryBestOf(const Directions& even, const Vec3& stretch, int trials, Judge judge, Try tryDirection) {
  // No two that are tried are closer than this cosine, before the stretch.
  constexpr double kSameDirection = 0.93;
  constexpr double kDone = kInfinity;
  std::array<double, kDirections> value;
  Directions direction;
  for (std::size_t k = 0; k < kDirections; ++k) {
    direction[k] = Unit({stretch.x * even[k].x, stretch.y * even[k].y, stretch.z * even[k].z});
    value[k] = judge(direction[k]);
  }
  for (int trial = 0; trial < trials; ++trial) {
    const std::size_t best = static_cast<std::size_t>(std::min_element(value.begin(), value.end()) - value.begin());
    if (!(value[best] < kDone)) return;
    tryDirection(direction[best]);
    for (std::size_t k = 0; k < kDirections; ++k)
      if (std::fabs(Dot(even[k], even[best])) > kSameDirection) value[k] = kDone;
  }
}

// `judge` gives the mean square of the deviations that a direction will leave, about. Directions are unit vectors in
// the principal frame. Of each kind up to so many are tried.
template<class Judge, class Try>
void TryDirections(const FourthMoments& moments, int trials, Judge judge, Try tryDirection) {
  // As they are; denser where the points extend, for flat and slender sets; denser across, for short ones.
  const double b = moments.spread[1] / moments.spread[0];
  const double c = moments.spread[2] / moments.spread[0];
  const Directions even = EvenDirections();
  for (const Vec3& stretch : {Vec3{1.0, 1.0, 1.0}, Vec3{1.0, b, c}, Vec3{b * c, c, b}})
    TryBestOf(even, stretch, trials, judge, tryDirection);
}

}  // namespace nu::engine::least_squares

#endif
