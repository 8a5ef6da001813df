// What do the minimum-zone lines cost? In a plane the peer is a plain convex hull with rotating calipers; in space it
// is what GSL has for functions with kinks, the downhill simplex, from the principal axis.

#include <algorithm>
#include <cmath>

#include "inputs.h"
#include "nu/geometry/line.h"
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

const auto kPoints = [](const Cloud& cloud) { return bench::ToPoints(cloud); };
const auto kCloud = [](const Cloud& cloud) { return cloud; };
const auto kOne = [](double x) { return Numbers{x}; };

double Zone(const CNuPointArray& points) {
  double width;
  CNuLine().FitMinZone(points, &width, kTol, kSteps);
  return width;
}

// A straightness profile: waves of 20 um over 150 mm, with noise.
Cloud Profile(int n) {
  return bench::Scatter(n, 131, [](bench::Dice& d) {
    const double x = d.Between(0, 150);
    return Xyz{420.0 + x, 0.3 * x - 310.0 + 0.02 * std::sin(0.1 * x) + d.Normal(bench::kNoise), 95.0};
  });
}

double TurnOf(const Xyz& p, const Xyz& q, const Xyz& r) {
  return (q.x - p.x) * (r.y - p.y) - (q.y - p.y) * (r.x - p.x);
}

// Andrew's monotone chain, then calipers.
double StripWidth(Cloud points) {
  std::sort(points.begin(), points.end(),
            [](const Xyz& a, const Xyz& b) { return a.x != b.x ? a.x < b.x : a.y < b.y; });
  Cloud hull(2 * points.size());
  std::size_t k = 0;
  const auto take = [&](const Xyz& p, std::size_t least) {
    while (k >= least + 2 && TurnOf(hull[k - 2], hull[k - 1], p) <= 0) --k;
    hull[k++] = p;
  };
  for (const Xyz& p : points) take(p, 0);
  const std::size_t lower = k - 1;
  for (std::size_t i = points.size() - 1; i-- > 0;) take(points[i], lower);
  const std::size_t n = k - 1;
  double least = std::numeric_limits<double>::infinity();
  std::size_t apex = 1;
  for (std::size_t i = 0; i < n; ++i) {
    const Xyz& p = hull[i];
    const Xyz& q = hull[i + 1];
    while (TurnOf(p, q, hull[(apex + 1) % n]) > TurnOf(p, q, hull[apex % n])) ++apex;
    least = std::min(least, TurnOf(p, q, hull[apex % n]) / std::hypot(q.x - p.x, q.y - p.y));
  }
  return least;
}

#ifdef NU_BENCH_GSL
struct Axis {
  Cloud local;  // along z, centred
  double half = 0.0;
};

Xyz Unit(const Xyz& v) {
  const double length = std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
  return {v.x / length, v.y / length, v.z / length};
}

Xyz Cross(const Xyz& a, const Xyz& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

// The points along their principal axis, by the power method.
Axis AlongPrincipalAxis(const Cloud& points) {
  Xyz mean{0, 0, 0};
  for (const Xyz& p : points) mean.x += p.x, mean.y += p.y, mean.z += p.z;
  const double n = static_cast<double>(points.size());
  mean = {mean.x / n, mean.y / n, mean.z / n};
  double s[6] = {};
  for (const Xyz& p : points) {
    const double x = p.x - mean.x, y = p.y - mean.y, z = p.z - mean.z;
    s[0] += x * x, s[1] += y * y, s[2] += z * z, s[3] += x * y, s[4] += x * z, s[5] += y * z;
  }
  Xyz d{1, 1, 1};
  for (int k = 0; k < 20; ++k) {
    d = Unit({s[0] * d.x + s[3] * d.y + s[4] * d.z, s[3] * d.x + s[1] * d.y + s[5] * d.z,
              s[4] * d.x + s[5] * d.y + s[2] * d.z});
  }
  const Xyz u = Unit(Cross(d, std::fabs(d.x) < 0.5 ? Xyz{1, 0, 0} : Xyz{0, 1, 0}));
  const Xyz v = Cross(d, u);
  Axis axis;
  for (const Xyz& p : points) {
    const double x = p.x - mean.x, y = p.y - mean.y, z = p.z - mean.z;
    axis.local.push_back({x * u.x + y * u.y + z * u.z, x * v.x + y * v.y + z * v.z, x * d.x + y * d.y + z * d.z});
    axis.half = std::max(axis.half, std::fabs(axis.local.back().z));
  }
  return axis;
}

double LargestDistance(const gsl_vector* x, void* data) {
  const Axis& axis = *static_cast<const Axis*>(data);
  const double a = gsl_vector_get(x, 0), b = gsl_vector_get(x, 1);
  const double c = gsl_vector_get(x, 2) / axis.half, d = gsl_vector_get(x, 3) / axis.half;
  double largest = 0.0;
  for (const Xyz& p : axis.local) {
    const double u = p.x - a, v = p.y - b, w = p.z;
    const double across[3] = {v - w * d, w * c - u, u * d - v * c};
    largest = std::max(largest, across[0] * across[0] + across[1] * across[1] + across[2] * across[2]);
  }
  return std::sqrt(largest / (1.0 + c * c + d * d));
}

// Started again at its result until that brings less than a nanometre: the simplex flattens at kinks.
double SimplexZone(const Cloud& points) {
  Axis axis = AlongPrincipalAxis(points);
  gsl_multimin_function problem{LargestDistance, 4, &axis};
  gsl_vector* x = gsl_vector_calloc(4);
  gsl_vector* step = gsl_vector_alloc(4);
  gsl_multimin_fminimizer* simplex = gsl_multimin_fminimizer_alloc(gsl_multimin_fminimizer_nmsimplex2, 4);
  double best = LargestDistance(x, &axis);
  for (double gain = 1.0; gain > 1e-6;) {
    gsl_vector_set_all(step, 0.2 * best);
    gsl_multimin_fminimizer_set(simplex, &problem, x, step);
    for (int k = 0; k < 1000 && gsl_multimin_fminimizer_size(simplex) > 1e-7; ++k)
      gsl_multimin_fminimizer_iterate(simplex);
    gain = best - simplex->fval;
    best = std::min(best, simplex->fval);
    gsl_vector_memcpy(x, simplex->x);
  }
  gsl_multimin_fminimizer_free(simplex);
  gsl_vector_free(step);
  gsl_vector_free(x);
  return 2.0 * best;
}
#endif

const bool kAsked = [] {
  Question<Cloud>("minzone_line2", 1e-9, Profile)
      .Ask("nu", kPoints, Zone, kOne)
      .Ask("andrew", kCloud, StripWidth, kOne)
      .Over({100, 1000, 100000, 1000000});
  // The simplex is an anchor: it ends within some tenths of a micrometre.
  Question<Cloud> line("minzone_line3", 1e-3, bench::Edge);
  line.Ask("nu", kPoints, Zone, kOne);
#ifdef NU_BENCH_GSL
  line.Ask("gsl_simplex", kCloud, SimplexZone, kOne, 10000);
#endif
  line.Over({100, 1000, 10000, 100000, 1000000});
  return true;
}();

}  // namespace
