#ifndef NU_ENGINE_BASE_SORT_H
#define NU_ENGINE_BASE_SORT_H

#include "nu/engine/rooms.h"

namespace nu::engine::base {

// Ascending and stable: the result of a straight insertion sort in which an element moves left only past strictly
// greater ones, for every input. The two zeros are equal; a NaN is never crossed, so the stretches between NaNs are
// sorted each for itself. n log n in every case and in place when there is no memory for a copy.
void Sort(int n, double* a) noexcept;
// index[0..n-1] becomes the permutation that sorts a.
void SortIndex(int n, const double* a, int* index) noexcept;
// Applies the same permutation to b.
void SortTogether(int n, double* a, double* b) noexcept;

}  // namespace nu::engine::base

#endif
