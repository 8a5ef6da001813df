#ifndef NU_ENGINE_BASE_PYTHAG_H
#define NU_ENGINE_BASE_PYTHAG_H

#include <cmath>
#include <utility>

#include "nu/engine/rooms.h"

namespace nu::engine::base {

// NuPythag for a given value of NuGetZero(), which loops read once. The ratio of equal magnitudes is 1 also where both
// are infinite, so that the result is infinite and not NaN. Every comparison is written so that a NaN among the
// arguments reaches the result.
inline double Pythag(double a, double b, double c, double zero) {
  double p = std::fabs(a);
  double q = std::fabs(b);
  double r = std::fabs(c);
  if (p < q) std::swap(p, q);
  if (p < r) std::swap(p, r);
  if (p < zero) return 0.0 * (q + r);
  const double rp = r == p ? 1.0 : r / p;
  const double qp = q == p ? 1.0 : q / p;
  return p * std::sqrt(rp * rp + qp * qp + 1.0);
}

}  // namespace nu::engine::base

#endif
