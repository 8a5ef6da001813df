#ifndef NU_ENGINE_ROOTS_LAGUERRE_H
#define NU_ENGINE_ROOTS_LAGUERRE_H

#include "nu/engine/roots/found_root.h"

namespace nu::engine::roots {

struct LaguerreRules {
  double tol;      // steps shorter than this end the iteration
  double sqrtTol;  // denominators below this times |p(x)| give no step
};

// All roots of a real polynomial with p(0) and the leading coefficient not 0, one after the other: Laguerre's iteration
// from x = 0, then division by the root or by the quadratic factor of the pair. Destroys w, which holds the
// coefficients; scratch takes degree + 1 numbers. Returns how many entries were written.
//
// The division runs from both ends and meets where |c_i x^i| is largest, which loses no digits whatever the order of
// the roots is (G. Peters and J. H. Wilkinson, Practical problems arising in the solution of polynomial equations,
// J. Inst. Math. Appl. 8, 1971).
int FindByDeflation(double* w, int degree, double* scratch, const LaguerreRules& rules, FoundRoot* roots);

// Does the same for complex coefficients: w and scratch hold the real parts and, degree + 1 later, the imaginary ones.
int FindByComplexDeflation(double* w, int degree, double* scratch, const LaguerreRules& rules, FoundRoot* roots);

}  // namespace nu::engine::roots

#endif
