#ifndef NU_ENGINE_LINEAR_SVD_H
#define NU_ENGINE_LINEAR_SVD_H

#include <cstddef>

#include "nu/engine/rooms.h"

namespace nu::engine::linear {

// A = U diag(w) V^T of the rows x columns block a (row-major, leading dimension ld), which U replaces; w takes
// `columns` values >= 0 in no order, v (leading dimension ldv) the square orthogonal V. With fewer rows than columns
// the values beyond the rows are 0 and so are their columns of U. Values not above `tolerance` * largest value * larger
// dimension become exactly 0; a coupling is negligible when it changes the norm of the bidiagonal form by less than
// `zero`. False when a value is not found within 124 sweeps or an element is not finite.
//
// Golub and Reinsch, Numerische Mathematik 14 (1970) 403. More rows than columns are first reduced to a triangle, in
// one pass over the rows, and U is formed in a second one.
bool DecomposeSingular(double* a, int rows, int columns, std::ptrdiff_t ld, double* w, double* v, std::ptrdiff_t ldv,
                       double tolerance, double zero);

}  // namespace nu::engine::linear

#endif
