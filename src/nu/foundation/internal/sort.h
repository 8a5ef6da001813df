#ifndef NU_FOUNDATION_INTERNAL_SORT_H
#define NU_FOUNDATION_INTERNAL_SORT_H

namespace nu::internal {

void Sort(int n, double* a);
void SortIndex(int n, const double* a, int* index);
void SortTogether(int n, double* a, double* b);

}  // namespace nu::internal

#endif
