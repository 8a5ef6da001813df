#ifndef NU_FOUNDATION_INTERNAL_FAILURES_H
#define NU_FOUNDATION_INTERNAL_FAILURES_H

#include <cmath>
#include <new>
#include <stdexcept>

#include "nu/foundation/exceptions.h"
#include "nu/foundation/tolerances.h"

// The guards that many classes share, one line at the call site. `what` and `where` are the texts of the exception.
namespace nu::internal {

[[noreturn]] inline void FailOperation(int cause, const char* what, const char* where, int lower = 0, int upper = 0) {
  throw CNuOperationException(cause, what, where, lower, upper, 0.0, 0.0);
}

// An index range that ends at size - 1.
inline void RequireIndex(int i, int size, const char* what, const char* where) {
  if (i < 0 || i >= size) FailOperation(NuOperationIndex, what, where, 0, size - 1);
}

// The factor of a product. A NaN is not above the limit and passes.
inline void RequireFactor(double f, const char* what, const char* where) {
  if (std::fabs(f) > NuGetLarge()) FailOperation(NuOperationLargeFactor, what, where);
}

// The same for classes that refuse a NaN as well.
inline void RequireNumericFactor(double f, const char* what, const char* where) {
  if (!(std::fabs(f) <= NuGetLarge())) FailOperation(NuOperationLargeFactor, what, where);
}

// A divisor whose magnitude is below NuGetZero() is refused. A NaN is not below it and passes.
inline void RequireDivisor(double d, const char* what, const char* where) {
  if (std::fabs(d) < NuGetZero()) FailOperation(NuOperationZeroDivisor, what, where);
}

// Runs an operation that allocates outside the objects of the library: every lack of memory is one failure, also that
// of a size which no memory can hold. The result is made in place, which it would not be if returned from a
// function-try-block.
template<class Operation>
auto WithMemory(const char* where, const Operation& operation) {
  try {
    return operation();
  } catch (const std::bad_alloc&) {
    throw CNuMemoryException(where);
  } catch (const std::length_error&) {
    throw CNuMemoryException(where);
  }
}

}  // namespace nu::internal

#endif
