#ifndef NU_ENGINE_LINEAR_NNLS_H
#define NU_ENGINE_LINEAR_NNLS_H

#include "nu/engine/linear/tall_qr.h"

namespace nu::engine::linear {

// min |A x - b| subject to x >= 0, from the finished reduction of [A b] (Lawson & Hanson, Solving Least Squares
// Problems, 1974, chapter 23). An unknown enters while its share of the gradient, A_j . (b - A x), is above
// `tolerance`; at the end every unknown is either positive with a vanishing gradient, or 0 with a gradient that is not
// above the tolerance. Columns that depend on the positive ones within rounding stay at 0. False when 10 exchanges per
// unknown do not end it (x, of n components, is then the last feasible point) and when the input is not finite. Throws
// std::bad_alloc.
bool SolveNonNegative(const TallReduction& reduction, double tolerance, double* x);

}  // namespace nu::engine::linear

#endif
