#ifndef NU_ENGINE_MINIMAX_MINIMAX_ROWS_H
#define NU_ENGINE_MINIMAX_MINIMAX_ROWS_H

#include <algorithm>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/rooms.h"

namespace nu::engine::minimax {

// So many rows at most take part in a step of a minimax problem.
inline constexpr int kMostRows = 256;

// What the deviations in question do near the current parameters: a step s of K unknowns brings row i to about
// value[i] + gradient[0][i] * s[0] + ... . A point that may deviate to both sides has a row for each.
template<int K>
struct MinimaxRows {
  int size = 0;
  alignas(64) double value[kMostRows];
  alignas(64) double gradient[K][kMostRows];

  // NaN without a row.
  double Largest() const { return size > 0 ? *std::max_element(value, value + size) : kQuietNaN; }

  double After(const double (&step)[K], int i) const {
    double sum = value[i];
    for (int k = 0; k < K; ++k) sum += gradient[k][i] * step[k];
    return sum;
  }

  // The row not taken that is the largest after the step; -1 when none is above `limit`.
  int LargestAfter(const double (&step)[K], const bool (&taken)[kMostRows], double limit) const {
    double after[kMostRows];
    std::copy_n(value, size, after);
    for (int k = 0; k < K; ++k) {
      const double s = step[k];
      for (int i = 0; i < size; ++i) after[i] += gradient[k][i] * s;
    }
    int found = -1;
    for (int i = 0; i < size; ++i) {
      if (!(after[i] > limit) || taken[i]) continue;
      limit = after[i];
      found = i;
    }
    return found;
  }
};

// The rows that hold a solution, with their Lagrange multipliers: none negative, and their sum is 1.
template<int K>
struct MinimaxContacts {
  int count = 0;
  int row[K + 1];
  double multiplier[K + 1];

  void Add(int newRow, double newMultiplier) {
    row[count] = newRow;
    multiplier[count] = newMultiplier;
    ++count;
  }
  void Drop(int k) {
    --count;
    for (; k < count; ++k) {
      row[k] = row[k + 1];
      multiplier[k] = multiplier[k + 1];
    }
  }
};

}  // namespace nu::engine::minimax

#endif
