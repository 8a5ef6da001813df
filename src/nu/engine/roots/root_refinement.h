#ifndef NU_ENGINE_ROOTS_ROOT_REFINEMENT_H
#define NU_ENGINE_ROOTS_ROOT_REFINEMENT_H

#include "nu/engine/roots/found_root.h"

namespace nu::engine::roots {

// Improves approximate roots on the polynomial itself: Laguerre's step with all other roots divided out, which leaves
// m = 1 and therefore x' = x - 1 / (p'/p - sum 1 / (x - x_j)) (O. Aberth, Iteration methods for finding all zeros of a
// polynomial simultaneously, Math. Comp. 27, 1973): two approximations cannot end at one simple root. Every root whose
// relative residual is above `enough` takes one step and keeps it if its residual falls; those above ResidualLimit go
// on. `reversed` holds the coefficients from the top down. ratios receives the relative residuals, scratch holds 3
// numbers per root. False when a root stays above the limit.
bool RefineRoots(const Coefficients& p, const Coefficients& reversed, double enough, FoundRoot* roots, int count,
                 double* ratios, double* scratch);

// Computes |p(x)| / sum |c_i| |x|^i at the given points, without a step.
void RelativeResiduals(const Coefficients& p, const Coefficients& reversed, const FoundRoot* points, int count,
                       double* ratios);

}  // namespace nu::engine::roots

#endif
