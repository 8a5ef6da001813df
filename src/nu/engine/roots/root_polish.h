#ifndef NU_ENGINE_ROOTS_ROOT_POLISH_H
#define NU_ENGINE_ROOTS_ROOT_POLISH_H

#include "nu/engine/roots/found_root.h"

namespace nu::engine::roots {

// The tolerances are in the units of the polynomial that is polished.
struct PolishRules {
  double zero;   // values and slopes not above it count as zero
  double large;  // the first Newton step must be shorter
  double step;   // the first step of the search
};

// Polishes the real ones among all roots of a real polynomial, by Newton's method and a short search, on values with
// twice the working precision: a root ends at the nearest number, and the two roots of a near tangent are separated. A
// double root that has come as a pair with im = 0 is split first, into two roots, for which there must be room; the new
// count is returned. A root never moves to the place of its neighbour, where plain steps would lose it. scratch holds
// degree + 1 + count numbers.
int PolishRealRoots(const double* c, int degree, const PolishRules& rules, FoundRoot* roots, int count,
                    double* scratch);

}  // namespace nu::engine::roots

#endif
