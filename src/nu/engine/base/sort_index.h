#ifndef NU_ENGINE_BASE_SORT_INDEX_H
#define NU_ENGINE_BASE_SORT_INDEX_H

#include <algorithm>
#include <numeric>
#include <utility>

#include "nu/engine/rooms.h"

namespace nu::engine::base {

// The stable permutation that puts 0 .. n-1 in the order of `before`; a few elements are inserted, which allocates
// nothing.
template<class Before>
void SortIndex(int n, int* order, Before before) {
  constexpr int kFew = 16;
  std::iota(order, order + n, 0);
  if (n > kFew) return std::stable_sort(order, order + n, before);
  for (int i = 1; i < n; ++i)
    for (int k = i; k > 0 && before(order[k], order[k - 1]); --k) std::swap(order[k], order[k - 1]);
}

// The order in which the rows of a block enter a reduction: as they are, or by descending size when the block is
// graded. Reflections keep the small parts of a graded block apart from the large ones only when these come first.
inline void ChooseOrder(const double* rowLargest, int n, int* order) {
  constexpr double kGraded = 0x1p20;
  const auto [low, high] = std::minmax_element(rowLargest, rowLargest + n);
  if (*high > kGraded * *low) {
    SortIndex(n, order, [rowLargest](int i, int j) { return rowLargest[i] > rowLargest[j]; });
  } else {
    std::iota(order, order + n, 0);
  }
}

}  // namespace nu::engine::base

#endif
