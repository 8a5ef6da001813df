#ifndef NU_FOUNDATION_INTERNAL_OUTPUTS_H
#define NU_FOUNDATION_INTERNAL_OUTPUTS_H

#include <utility>

namespace nu::internal {

// Stores a result through a pointer output of the interface: null is skipped. Operations store all their results last
// and in the order of their parameters.
template<class T, class Value>
void Output(T* target, Value&& value) {
  if (target != nullptr) *target = std::forward<Value>(value);
}

}  // namespace nu::internal

#endif
