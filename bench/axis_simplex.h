#ifndef NU_BENCH_AXIS_SIMPLEX_H
#define NU_BENCH_AXIS_SIMPLEX_H

#include <algorithm>
#include <cmath>
#include <limits>

#include "clouds.h"

#ifdef NU_BENCH_GSL
#include <gsl/gsl_multimin.h>

// An axis in space for which some function of the points' distances is the least, by what GSL has for functions with
// kinks, the downhill simplex, from the principal axis.
namespace bench {

// The points along an axis: z, centred.
struct AlongAxis {
  Cloud local;
  double half = 0.0;
  double (*value)(double low, double high) = nullptr;  // of the least and the largest distance
};

inline Xyz Unit(const Xyz& v) {
  const double length = std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
  return {v.x / length, v.y / length, v.z / length};
}

inline Xyz Cross(const Xyz& a, const Xyz& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

// The points along their principal axis, by the power method.
inline AlongAxis AlongPrincipalAxis(const Cloud& points) {
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
  AlongAxis axis;
  for (const Xyz& p : points) {
    const double x = p.x - mean.x, y = p.y - mean.y, z = p.z - mean.z;
    axis.local.push_back({x * u.x + y * u.y + z * u.z, x * v.x + y * v.y + z * v.z, x * d.x + y * d.y + z * d.z});
    axis.half = std::max(axis.half, std::fabs(axis.local.back().z));
  }
  return axis;
}

inline double ValueAt(const gsl_vector* x, void* data) {
  const AlongAxis& axis = *static_cast<const AlongAxis*>(data);
  const double a = gsl_vector_get(x, 0), b = gsl_vector_get(x, 1);
  const double c = gsl_vector_get(x, 2) / axis.half, d = gsl_vector_get(x, 3) / axis.half;
  double smallest = std::numeric_limits<double>::infinity();
  double largest = 0.0;
  for (const Xyz& p : axis.local) {
    const double u = p.x - a, v = p.y - b, w = p.z;
    const double across[3] = {v - w * d, w * c - u, u * d - v * c};
    const double square = across[0] * across[0] + across[1] * across[1] + across[2] * across[2];
    smallest = std::min(smallest, square);
    largest = std::max(largest, square);
  }
  const double length = std::sqrt(1.0 + c * c + d * d);
  return axis.value(std::sqrt(smallest) / length, std::sqrt(largest) / length);
}

// Started again at its result until that brings less than a nanometre: the simplex flattens at kinks.
inline double SimplexOverAxes(const Cloud& points, double (*value)(double low, double high)) {
  AlongAxis axis = AlongPrincipalAxis(points);
  axis.value = value;
  gsl_multimin_function problem{ValueAt, 4, &axis};
  gsl_vector* x = gsl_vector_calloc(4);
  gsl_vector* step = gsl_vector_alloc(4);
  gsl_multimin_fminimizer* simplex = gsl_multimin_fminimizer_alloc(gsl_multimin_fminimizer_nmsimplex2, 4);
  double best = ValueAt(x, &axis);
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
  return best;
}

}  // namespace bench
#endif

#endif
