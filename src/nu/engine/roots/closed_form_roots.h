#ifndef NU_ENGINE_ROOTS_CLOSED_FORM_ROOTS_H
#define NU_ENGINE_ROOTS_CLOSED_FORM_ROOTS_H

#include "nu/engine/roots/found_root.h"

namespace nu::engine::roots {

// Real polynomials c_0 + c_1 x + ... of degree 1 to 4 with p(0) and the leading coefficient not 0. Each returns how
// many entries it wrote.
int SolveLinear(const double* c, FoundRoot* roots);

// Solves by the larger root and an exact discriminant. A pair whose real part is a double root of coefficients half a
// rounding away counts as a double real root.
int SolveQuadratic(const double* c, FoundRoot* roots);

// Finds one root by Cardano's formula or, where the discriminant shows that all three are real, by its trigonometric
// form, improves it by Newton's method and divides by it. The coefficients are of moderate size and so are their
// ratios.
int SolveCubic(const double* c, FoundRoot* roots);

// Factors into two quadratics by the largest root of the resolvent cubic (Ferrari) and improves both by Newton's
// method. The coefficients are of moderate size and so are their ratios. A root of the resolvent not above lengthTol
// gives no linear term.
int SolveQuartic(const double* c, double lengthTol, FoundRoot* roots);

}  // namespace nu::engine::roots

#endif
