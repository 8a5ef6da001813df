#ifndef NU_ENGINE_ASSOCIATION_ENCLOSURE_OPERATORS_H
#define NU_ENGINE_ASSOCIATION_ENCLOSURE_OPERATORS_H

#include <algorithm>

namespace nu::engine::association {

// What enclosures of any order, derived from this with themselves as F, make of their own += and *= and their bounds.
template<class F>
struct EnclosureOperators {
  friend F operator+(F a, const F& b) { return a += b; }
  friend F operator*(double factor, F a) { return a *= factor; }
  friend F operator-(F a, const F& b) { return a += -1.0 * b; }
  friend F operator-(F a, double b) {
    a.value -= b;
    return a;
  }
  friend F operator-(double a, const F& b) {
    F difference = -1.0 * b;
    difference.value += a;
    return difference;
  }

  // |x| is x with the sign of its middle, and where that is negative twice as much above it. Where x may be 0 the error
  // shrinks no faster than the box.
  friend F Magnitude(const F& x) {
    F result = (x.value < 0.0 ? -1.0 : 1.0) * x;
    result.high += 2.0 * std::max(0.0, -result.Least());
    return result;
  }
};

}  // namespace nu::engine::association

#endif
