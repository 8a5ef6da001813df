#ifndef NU_ENGINE_ROOTS_CHEBYSHEV_SERIES_H
#define NU_ENGINE_ROOTS_CHEBYSHEV_SERIES_H

#include "nu/engine/rooms.h"

namespace nu::engine::roots {

// The variable of a series: y = stretch (x - centre).
struct SeriesFrame {
  double centre;
  double stretch;
};

// Writes constant + c_1 T_1(y) + ... + c_n T_n(y) in powers of x: p[0..n]. `work` has room for n + 1 values; c[0] is
// not read.
void SeriesToPowers(double constant, const double* c, int n, const SeriesFrame& frame, double* p, double* work);

}  // namespace nu::engine::roots

#endif
