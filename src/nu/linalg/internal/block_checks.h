#ifndef NU_LINALG_INTERNAL_BLOCK_CHECKS_H
#define NU_LINALG_INTERNAL_BLOCK_CHECKS_H

#include "nu/foundation/internal/failures.h"

// The checks that real and complex matrices share.
namespace nu::internal {

template<class Matrix>
void RequireSameShape(const Matrix& a, const Matrix& b, const char* what, const char* where) {
  if (a.GetRowSize() != b.GetRowSize() || a.GetColumnSize() != b.GetColumnSize())
    FailOperation(NuOperationSizeMismatch, what, where);
}

// Rows r1 to r2 and columns c1 to c2, all included.
template<class Matrix>
void RequireBlock(const Matrix& a, int r1, int r2, int c1, int c2, const char* where) {
  if (r1 > r2 || c1 > c2) FailOperation(NuOperationRange, "operation", where);
  if (r1 < 0 || r2 >= a.GetRowSize()) FailOperation(NuOperationIndex, "operation", where, 0, a.GetRowSize() - 1);
  if (c1 < 0 || c2 >= a.GetColumnSize()) FailOperation(NuOperationIndex, "operation", where, 0, a.GetColumnSize() - 1);
}

}  // namespace nu::internal

#endif
