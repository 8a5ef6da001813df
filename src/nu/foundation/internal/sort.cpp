#include "nu/foundation/internal/sort.h"

namespace nu::internal {

void Sort(int n, double* a) {
  for (int i = 1; i < n; ++i) {
    const double key = a[i];
    int j = i;
    for (; j > 0 && a[j - 1] > key; --j) a[j] = a[j - 1];
    a[j] = key;
  }
}

void SortIndex(int n, const double* a, int* index) {
  for (int i = 0; i < n; ++i) {
    int j = i;
    for (; j > 0 && a[index[j - 1]] > a[i]; --j) index[j] = index[j - 1];
    index[j] = i;
  }
}

void SortTogether(int n, double* a, double* b) {
  for (int i = 1; i < n; ++i) {
    const double key = a[i];
    const double companion = b[i];
    int j = i;
    for (; j > 0 && a[j - 1] > key; --j) {
      a[j] = a[j - 1];
      b[j] = b[j - 1];
    }
    a[j] = key;
    b[j] = companion;
  }
}

}  // namespace nu::internal
