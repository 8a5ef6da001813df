#ifndef NU_NUMERICS_INTERNAL_INTERPOLATION_GUARDS_H
#define NU_NUMERICS_INTERNAL_INTERPOLATION_GUARDS_H

#include <cmath>

#include "nu/foundation/double_array.h"
#include "nu/foundation/internal/failures.h"

// The checks that the classes of interpolation share.
namespace nu::internal {

inline constexpr const char* kArrayChecking = "array data checking";

inline void RequireFinite(const double* values, int count, const char* what, const char* where) {
  for (int i = 0; i < count; ++i) {
    if (!std::isfinite(values[i])) FailOperation(NuOperationData, what, where);
  }
}

// Two or more finite, strictly increasing values whose differences do not overflow.
inline void RequireGrid(const CNuDoubleArray& x, const char* what, const char* where) {
  if (x.GetSize() < 2) FailOperation(NuOperationData, what, where);
  for (int i = 1; i < x.GetSize(); ++i) {
    if (!(x[i - 1] < x[i])) FailOperation(NuOperationData, what, where);
  }
  if (!std::isfinite(x.Last() - x.First())) FailOperation(NuOperationData, what, where);
}

// Also for a NaN, and for the empty grid of an object that was moved from.
inline void RequireInside(const CNuDoubleArray& x, double at, const char* where) {
  const bool empty = x.GetSize() == 0;
  const double lower = empty ? 0.0 : x.First();
  const double upper = empty ? 0.0 : x.Last();
  if (empty || !(at >= lower && at <= upper))
    throw CNuOperationException(NuOperationOutside, "data checking", where, 0, 0, lower, upper);
}

}  // namespace nu::internal

#endif
