#ifndef NU_NUMERICS_INTERNAL_INTEGRATION_OUTCOME_H
#define NU_NUMERICS_INTERNAL_INTEGRATION_OUTCOME_H

#include "nu/engine/quadrature/quadrature.h"
#include "nu/foundation/internal/failures.h"

namespace nu::internal {

// The failures that the classes of integration share; `where` names the operation.
inline void RequireConverged(const Quadrature& q, const char* where) {
  if (q.end == QuadratureEnd::noMemory) throw CNuMemoryException(where);
  if (q.end == QuadratureEnd::notFinite) FailOperation(NuOperationIntegrand, "operation", where);
  if (q.end == QuadratureEnd::limitReached) FailOperation(NuOperationIntegrationLimit, "operation", where);
}

// A null pointer has no finite values.
template<class... Functions>
void RequireFunctions(const char* where, Functions... functions) {
  const bool all = (... && static_cast<bool>(functions));
  if (!all) FailOperation(NuOperationIntegrand, "operation", where);
}

}  // namespace nu::internal

#endif
