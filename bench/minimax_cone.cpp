// What does the minimum-zone cone cost? The peer is what GSL has for functions with kinks, the downhill simplex; it is
// given the nominal cone to start from, which the library finds itself.

#include <algorithm>
#include <cmath>

#include "inputs.h"
#include "nu/surfaces/cone.h"
#include "question.h"

#ifdef NU_BENCH_GSL
#include <gsl/gsl_multimin.h>
#endif

namespace {

using bench::Cloud;
using bench::Numbers;
using bench::Question;
using bench::Xyz;

constexpr double kTol = 1e-9;
constexpr long kSteps = 1000;
constexpr double kSemiAngle = 20.0 * bench::kTwoPi / 360.0;

// 200 degrees of a taper, from 40 to 120 along the generators, 5 um of noise. The simplex sees it where it was drawn.
Xyz OnTaper(bench::Dice& d) {
  const double turn = d.Between(0, bench::kTwoPi / 1.8), along = d.Between(40, 120), out = d.Normal(bench::kNoise);
  const double radius = along * std::sin(kSemiAngle) + out * std::cos(kSemiAngle);
  return {radius * std::cos(turn), radius * std::sin(turn), along * std::cos(kSemiAngle) - out * std::sin(kSemiAngle)};
}
Cloud Taper(int n) {
  return bench::Scatter(n, 151, OnTaper);
}

const auto kPoints = [](const Cloud& cloud) {
  Cloud placed;
  for (const Xyz& p : cloud) placed.push_back(bench::OnTable(p.x, p.y, p.z));
  return bench::ToPoints(placed);
};
// Peers, if there are any, take the points as they are.
[[maybe_unused]] const auto kCloud = [](const Cloud& cloud) { return cloud; };
const auto kOne = [](double x) { return Numbers{x}; };

double Zone(const CNuPointArray& points) {
  CNuConSurf cone(45.0);
  double width;
  cone.FitMinZone(points, &width, kTol, kSteps);
  return width;
}

#ifdef NU_BENCH_GSL
constexpr double kMiddle = 75.0;  // along the axis
constexpr double kHalf = 40.0;

// A shift of the axis in the middle, its tilt as the way at the ends, and that of the generators.
double Width(const gsl_vector* x, void* data) {
  const Cloud& points = *static_cast<const Cloud*>(data);
  const double a = gsl_vector_get(x, 0), b = gsl_vector_get(x, 1);
  const double c = gsl_vector_get(x, 2) / kHalf, d = gsl_vector_get(x, 3) / kHalf;
  const double angle = kSemiAngle + gsl_vector_get(x, 4) / kHalf;
  const double cosine = std::cos(angle), sine = std::sin(angle), unit = 1.0 / std::sqrt(1.0 + c * c + d * d);
  double least = 1e300, most = -1e300;
  for (const Xyz& p : points) {
    const double u = p.x - a, v = p.y - b, w = p.z - kMiddle;
    const double along = (u * c + v * d + w) * unit;
    const double rho = std::sqrt(std::max(0.0, u * u + v * v + w * w - along * along));
    const double deviation = rho * cosine - along * sine;
    least = std::min(least, deviation);
    most = std::max(most, deviation);
  }
  return most - least;
}

// Started again at its result until that brings less than a nanometre: the simplex flattens at kinks.
double SimplexZone(const Cloud& cloud) {
  Cloud points = cloud;
  gsl_multimin_function problem{Width, 5, &points};
  gsl_vector* x = gsl_vector_calloc(5);
  gsl_vector* step = gsl_vector_alloc(5);
  gsl_multimin_fminimizer* simplex = gsl_multimin_fminimizer_alloc(gsl_multimin_fminimizer_nmsimplex2, 5);
  double best = Width(x, &points);
  for (double gain = 1.0; gain > 1e-6;) {
    gsl_vector_set_all(step, 0.2 * best);
    gsl_multimin_fminimizer_set(simplex, &problem, x, step);
    for (int k = 0; k < 2000 && gsl_multimin_fminimizer_size(simplex) > 1e-7; ++k)
      gsl_multimin_fminimizer_iterate(simplex);
    gain = best - simplex->fval;
    best = std::min(best, simplex->fval);
    gsl_vector_memcpy(x, simplex->x);
  }
  gsl_multimin_fminimizer_free(simplex);
  gsl_vector_free(step);
  gsl_vector_free(x);
  return best;
}
#endif

const bool kAsked = [] {
  // The simplex is an anchor: it ends within a micrometre or so.
  Question<Cloud> question("minzone_cone", 2e-3, Taper);
  question.Ask("nu", kPoints, Zone, kOne);
#ifdef NU_BENCH_GSL
  question.Ask("gsl_simplex", kCloud, SimplexZone, kOne, 10000);
#endif
  question.Over({100, 1000, 10000, 100000, 1000000});
  return true;
}();

}  // namespace
