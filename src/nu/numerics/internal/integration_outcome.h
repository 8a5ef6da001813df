#ifndef NU_NUMERICS_INTERNAL_INTEGRATION_OUTCOME_H
#define NU_NUMERICS_INTERNAL_INTEGRATION_OUTCOME_H

#include "nu/engine/quadrature/quadrature.h"
#include "nu/foundation/internal/failures.h"

namespace nu::internal {

inline constexpr int kNotFinite = 43;
inline constexpr int kLimitReached = 44;

// The failures that the classes of integration share; `where` names the operation.
inline void RequireConverged(const Quadrature& q, const char* where) {
  if (q.end == QuadratureEnd::noMemory) throw CNuMemoryException(where);
  if (q.end == QuadratureEnd::notFinite) FailOperation(kNotFinite, "operation", where);
  if (q.end == QuadratureEnd::limitReached) FailOperation(kLimitReached, "operation", where);
}

// A null pointer has no finite values.
template<class... Functions>
void RequireFunctions(const char* where, Functions... functions) {
  const bool all = (... && static_cast<bool>(functions));
  if (!all) FailOperation(kNotFinite, "operation", where);
}

}  // namespace nu::internal

#endif
