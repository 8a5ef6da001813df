#ifndef NU_ENGINE_LINEAR_LU_SINGULARITY_H
#define NU_ENGINE_LINEAR_LU_SINGULARITY_H

#include <cstddef>

#include "nu/engine/linear/lu.h"

namespace nu::engine::linear {

// Whether changes of the elements of A by at most n * `tolerance` of themselves can make it singular, as far as an
// estimate in O(n^2) finds them: its inverse then holds no digit that the elements determine. A true answer is proven,
// up to rounding, by a perturbation of that size; the scales of rows and columns do not matter. `rows` are the row
// pointers of A; lu, ld and permutation come from FactorLu, which has found the pivot `weakest` to be the weakest.
bool HasSingularNeighbour(const double* const* rows, const double* lu, int n, std::ptrdiff_t ld, const int* permutation,
                          int weakest, double tolerance);

// Without a weak pivot the rank is certain.
inline bool IsSingularToRounding(const double* const* rows, const double* lu, int n, std::ptrdiff_t ld,
                                 const int* permutation, const LuResult& result, double tolerance) {
  return result.singular ||
         (result.weakest >= 0 && HasSingularNeighbour(rows, lu, n, ld, permutation, result.weakest, tolerance));
}

}  // namespace nu::engine::linear

#endif
