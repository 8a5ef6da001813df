#ifndef NU_ENGINE_ROOTS_TRIG_ROOTS_H
#define NU_ENGINE_ROOTS_TRIG_ROOTS_H

#include <vector>

#include "nu/engine/rooms.h"

namespace nu::engine::roots {

// The roots in [0, 2 pi) of the sum of a[k] cos ku + b[k] sin ku for k = 0..n, ascending, each as often as its
// multiplicity; b[0] is not read. The coefficients must be finite. A constant, 0 as well, has none.
//
// An extremum whose value is at most kCoefficientRoundings eps times the sum of the harmonics' magnitudes touches zero:
// a root of even multiplicity, as often the same value. Neighbouring extrema that all touch make one root. Coefficients
// that are sums of ten to twenty products, as those of intersecting quadrics are, are off by about that, so a smaller
// value cannot be told from zero.
inline constexpr double kCoefficientRoundings = 16.0;

std::vector<double> TrigRoots(const double* a, const double* b, int n);

}  // namespace nu::engine::roots

#endif
