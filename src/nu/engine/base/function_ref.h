#ifndef NU_ENGINE_BASE_FUNCTION_REF_H
#define NU_ENGINE_BASE_FUNCTION_REF_H

#include "nu/engine/rooms.h"

namespace nu::engine::base {

template<class Signature>
class FunctionRef;

// A reference to a callable for the duration of a call: two pointers, no allocation, no template in its users.
template<class Result, class... Arguments>
class FunctionRef<Result(Arguments...)> {
 public:
  template<class Callable>
  FunctionRef(const Callable& callable)  // NOLINT(google-explicit-constructor): a parameter type, made to convert to
      : m_callable(&callable), m_call([](const void* object, Arguments... arguments) -> Result {
          return (*static_cast<const Callable*>(object))(arguments...);
        }) {}

  Result operator()(Arguments... arguments) const { return m_call(m_callable, arguments...); }

 private:
  const void* m_callable;
  Result (*m_call)(const void*, Arguments...);
};

}  // namespace nu::engine::base

#endif
