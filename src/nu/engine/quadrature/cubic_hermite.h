#ifndef NU_ENGINE_QUADRATURE_CUBIC_HERMITE_H
#define NU_ENGINE_QUADRATURE_CUBIC_HERMITE_H

#include <algorithm>
#include <cmath>

#include "nu/engine/rooms.h"

namespace nu::engine::quadrature {

// A place x among ascending nodes: between node i and the next one, the share t of the way.
struct Place {
  int i;
  double width;
  double t;
};

// n >= 2, x[0] <= at <= x[n - 1]. At a node t is exactly 0, at the last one exactly 1.
inline Place Locate(const double* x, int n, double at) {
  const double* next = std::upper_bound(x + 1, x + n - 1, at);
  const int i = static_cast<int>(next - x) - 1;
  const double width = x[i + 1] - x[i];
  return {i, width, (at - x[i]) / width};
}

// The cubic with values y0, y1 and derivatives k0, k1 at the ends, as the chord and what bends away from it: exact at
// the ends, and a chord where both derivatives are its slope.
inline double CubicValue(const Place& p, double y0, double y1, double k0, double k1) {
  if (p.t == 0.0) return y0;
  if (p.t == 1.0) return y1;
  const double slope = (y1 - y0) / p.width;
  const double rest = 1.0 - p.t;
  return std::lerp(y0, y1, p.t) + p.width * (p.t * rest * (rest * (k0 - slope) - p.t * (k1 - slope)));
}

inline double CubicDerivative(const Place& p, double y0, double y1, double k0, double k1) {
  if (p.t == 0.0) return k0;
  if (p.t == 1.0) return k1;
  const double slope = (y1 - y0) / p.width;
  const double rest = 1.0 - p.t;
  return slope + rest * (1.0 - 3.0 * p.t) * (k0 - slope) + p.t * (3.0 * p.t - 2.0) * (k1 - slope);
}

}  // namespace nu::engine::quadrature

#endif
