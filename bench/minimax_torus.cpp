// What does the minimum torus cost, the thinnest tube that holds all points? The peer is what GSL has for functions
// with kinks, the downhill simplex, from the circle that the points were drawn about.

#include <algorithm>
#include <cmath>

#include "inputs.h"
#include "nu/surfaces/torus.h"
#include "question.h"

#ifdef NU_BENCH_GSL
#include <gsl/gsl_multimin.h>
#endif

namespace {

using bench::Cloud;
using bench::Numbers;
using bench::Question;
using bench::Xyz;

constexpr double kMajor = 40.0;
constexpr double kMinor = 10.0;

// A pipe bend: two thirds around, and two thirds of its section.
template<class Place>
Cloud Bend(int n, Place place) {
  return bench::Scatter(n, 141, [&](bench::Dice& d) {
    const double around = d.Between(0, 240.0 / 360.0 * bench::kTwoPi);
    const double turn = d.Between(-120.0 / 360.0 * bench::kTwoPi, 120.0 / 360.0 * bench::kTwoPi);
    const double radius = kMinor + d.Normal(bench::kNoise);
    const double rho = kMajor + radius * std::cos(turn);
    return place(rho * std::cos(around), rho * std::sin(around), radius * std::sin(turn));
  });
}

double MinorRadius(const CNuPointArray& points) {
  CNuTorSurf torus(2.0, 1.0);
  torus.FitMin(points, 1e-9, 1000);
  return torus.GetMinorRadius();
}

#ifdef NU_BENCH_GSL
// The circle is shifted by the first three numbers, tilted by the next two as far as they say at its rim, and widened
// by the last.
double LargestDistance(const gsl_vector* x, void* data) {
  const auto get = [x](std::size_t i) { return gsl_vector_get(x, i); };
  const double a = get(3) / kMajor, b = get(4) / kMajor, c = std::sqrt(1.0 / (1.0 + a * a + b * b));
  double largest = 0.0;
  for (const Xyz& p : *static_cast<const Cloud*>(data)) {
    const double u = p.x - get(0), v = p.y - get(1), w = p.z - get(2);
    const double height = c * (w + a * u + b * v);
    const double across = std::sqrt(std::max(0.0, u * u + v * v + w * w - height * height)) - kMajor - get(5);
    largest = std::max(largest, across * across + height * height);
  }
  return std::sqrt(largest);
}

// Started again at its result until that brings less than a nanometre: the simplex flattens at kinks.
double SimplexRadius(const Cloud& points) {
  constexpr std::size_t unknowns = 6;
  Cloud local(points);
  gsl_multimin_function problem{LargestDistance, unknowns, &local};
  gsl_vector* x = gsl_vector_calloc(unknowns);
  gsl_vector* step = gsl_vector_alloc(unknowns);
  gsl_multimin_fminimizer* simplex = gsl_multimin_fminimizer_alloc(gsl_multimin_fminimizer_nmsimplex2, unknowns);
  double best = LargestDistance(x, &local);
  for (double gain = 1.0; gain > 1e-6;) {
    gsl_vector_set_all(step, 0.05 * best);
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
  const auto one = [](double x) { return Numbers{x}; };
  // The simplex is an anchor: it ends within some micrometres.
  Question<int> question("fitmin_torus", 1e-3, [](int n) { return n; });
  question.Ask(
      "nu", [](int n) { return bench::ToPoints(Bend(n, bench::OnTable)); }, MinorRadius, one);
#ifdef NU_BENCH_GSL
  const auto inPlace = [](double x, double y, double z) { return Xyz{x, y, z}; };
  question.Ask(
      "gsl_simplex", [inPlace](int n) { return Bend(n, inPlace); }, SimplexRadius, one, 10000);
#endif
  question.Over({100, 1000, 10000, 100000, 1000000});
  return true;
}();

}  // namespace
