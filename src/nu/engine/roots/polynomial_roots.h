#ifndef NU_ENGINE_ROOTS_POLYNOMIAL_ROOTS_H
#define NU_ENGINE_ROOTS_POLYNOMIAL_ROOTS_H

#include "nu/engine/roots/found_root.h"

namespace nu::engine::roots {

// The tolerances of the host. Any of them may be 0, negative, infinite or NaN.
struct RootRules {
  double tol;
  double sqrtTol;
  double zero;
  double large;
  double lengthTol;
};

// The degree that remains when leading coefficients that are 0 or below `zero` are dropped, at least 0; -1 when a
// coefficient is not finite.
int EffectiveDegree(const Coefficients& p, double zero);

// All roots of a polynomial of effective degree >= 1, each as often as its multiplicity; roots takes p.degree entries.
// The closed forms of degree 2 to 4 and the polishing of real roots are for real polynomials alone. Returns how many
// entries were written; roots beyond the range of numbers are left out. Throws std::bad_alloc.
int FindRoots(const Coefficients& p, bool closedFormsAndPolish, const RootRules& rules, FoundRoot* roots);

}  // namespace nu::engine::roots

#endif
