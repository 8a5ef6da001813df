#ifndef NU_FUZZ_OPERATIONS_ARGUMENTS_H
#define NU_FUZZ_OPERATIONS_ARGUMENTS_H

#include <cmath>
#include <cstring>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>

#include "operations/pool.h"

// From the type of a function to a call with arguments of the pool.
namespace nu::fuzz {

// Functions of hosts: smooth, with a pole, with a step, of no number, and one that fails.
template<class... Numbers>
double Smooth(Numbers... x) {
  return (0.5 + ... + std::sin(x));
}
template<class... Numbers>
double Pole(Numbers... x) {
  return 1.0 / (0.0 + ... + x);
}
template<class... Numbers>
double Step(Numbers... x) {
  return (0.0 + ... + x) < 0.3 ? 0.0 : 1.0;
}
template<class... Numbers>
double Undefined(Numbers... x) {
  return std::sqrt(-1.0 - (0.0 + ... + (x * x)));
}
template<class... Numbers>
double Failing(Numbers...) {
  throw CNuOperationException(NuOperationFailed, "function", "host", 0, 0, 0.0, 0.0);
}

template<class T>
struct Take;  // Take<T>::From(pool) is a value for a parameter of type T

template<>
struct Take<double> {
  static double From(Pool& pool) { return pool.Values().Number(); }
};
template<class T>
requires std::is_integral_v<T>
struct Take<T> {
  static T From(Pool& pool) { return static_cast<T>(pool.Values().Integer()); }
};
template<class T>
requires std::is_enum_v<T>
struct Take<T> {
  // What the bits of an enumeration hold that has no underlying type: more is not defined.
  static T From(Pool& pool) { return static_cast<T>(pool.Values().Below(std::is_same_v<T, ENuBoolean> ? 2 : 4)); }
};
template<class T>
requires std::is_class_v<T>
struct Take<T> {
  static T From(Pool& pool) { return pool.Read<T>(); }
};
template<class T>
struct Take<T&> {
  static T& From(Pool& pool) {
    if constexpr (std::is_const_v<T>)
      return pool.Read<std::remove_const_t<T>>();
    else
      return pool.Pick<T>();
  }
};
template<class T>
struct Take<T&&> {
  static T&& From(Pool& pool) { return std::move(pool.Pick<T>()); }
};
template<class T>
requires std::is_class_v<T>
struct Take<T*> {
  static T* From(Pool& pool) { return pool.IsNull() ? nullptr : &Take<T&>::From(pool); }
};
template<class T>
requires(std::is_arithmetic_v<T> || std::is_enum_v<T>) struct Take<T*> {
  static T* From(Pool& pool) { return pool.IsNull() ? nullptr : &pool.Output<T>(); }
};
template<>
struct Take<CNuObject*> {
  static CNuObject* From(Pool& pool) { return pool.Lasting(); }
};
template<>
struct Take<const char*> {
  static const char* From(Pool& pool) { return pool.IsNull() ? nullptr : pool.FileName(); }
};
template<class... Numbers>
struct Take<double (*)(Numbers...)> {
  static auto From(Pool& pool) {
    constexpr double (*functions[])(Numbers...) = {Smooth<Numbers...>, Pole<Numbers...>, Step<Numbers...>,
                                                   Undefined<Numbers...>, Failing<Numbers...>};
    return functions[pool.Values().Below(5)];
  }
};

// What a call returned goes into the pool.
template<class Result>
void Keep(Pool& pool, Result&& result) {
  using Type = std::decay_t<Result>;
  pool.Record(result);
  if constexpr (std::is_same_v<Type, CNuBoundedCurve*>)
    pool.Own(result);
  else if constexpr (kIsPooled<Type>)
    pool.Store(std::forward<Result>(result));
}

// An element that a call refers to is changed.
template<class T>
void Change(Pool& pool, T& element, const void* object) {
  if constexpr (!std::is_const_v<T> && (std::is_same_v<T, double> || kIsPooled<T>)) {
    if (static_cast<const void*>(&element) != object)
      element = Take<std::conditional_t<std::is_same_v<T, double>, double, T&>>::From(pool);
  }
}

template<class Result, class... Arguments, class Call>
void Perform(Pool& pool, const void* object, const Call& call) {
  std::tuple<Arguments...> arguments{Take<Arguments>::From(pool)...};
  const auto apply = [&]() -> Result {
    return std::apply([&](auto&... values) -> Result { return call(static_cast<Arguments&&>(values)...); }, arguments);
  };
  if constexpr (std::is_void_v<Result>) {
    pool.Make(apply);
  } else if constexpr (std::is_reference_v<Result>) {
    std::remove_reference_t<Result>* element = nullptr;
    if (pool.Make([&] { element = &apply(); })) Change(pool, *element, object);
  } else {
    std::optional<Result> result;
    if (pool.Make([&] { result.emplace(apply()); })) Keep(pool, std::move(*result));
  }
}

template<auto kFunction>
struct Called;
template<class Result, class Class, class... Arguments, Result (Class::*kMember)(Arguments...)>
struct Called<kMember> {
  static void Run(Pool& pool) {
    Class& object = pool.Pick<Class>();
    Perform<Result, Arguments...>(pool, &object, [&](Arguments... values) -> Result {
      return (object.*kMember)(static_cast<Arguments&&>(values)...);
    });
  }
};
template<class Result, class Class, class... Arguments, Result (Class::*kMember)(Arguments...) const>
struct Called<kMember> {
  static void Run(Pool& pool) {
    const Class& object = pool.Read<Class>();
    Perform<Result, Arguments...>(pool, &object, [&](Arguments... values) -> Result {
      return (object.*kMember)(static_cast<Arguments&&>(values)...);
    });
  }
};
template<class Result, class... Arguments, Result (*kFunction)(Arguments...)>
struct Called<kFunction> {
  static void Run(Pool& pool) {
    Perform<Result, Arguments...>(
        pool, nullptr, [&](Arguments... values) -> Result { return kFunction(static_cast<Arguments&&>(values)...); });
  }
};

// The same with large tolerances and small counts, where finer ones cost millions of steps by contract.
template<auto kFunction>
struct CalledCoarsely {
  static void Run(Pool& pool) {
    pool.Values().SetCoarse(true);
    Called<kFunction>::Run(pool);
    pool.Values().SetCoarse(false);
  }
};

template<class Class, class Signature>
struct Constructed;
template<class Class, class... Arguments>
struct Constructed<Class, void(Arguments...)> {
  static void Run(Pool& pool) {
    Perform<Class, Arguments...>(pool, nullptr,
                                 [](Arguments... values) { return Class(static_cast<Arguments&&>(values)...); });
  }
};

}  // namespace nu::fuzz

#endif
