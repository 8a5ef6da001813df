#ifndef NU_ENGINE_ROOTS_POWER_SCALE_H
#define NU_ENGINE_ROOTS_POWER_SCALE_H

#include <cmath>
#include <cstdint>
#include <cstring>

#include "nu/engine/rooms.h"

// Exponents and powers of two. Changing the unit of x and of p(x) by powers of two brings coefficients of any size into
// range without rounding.
namespace nu::engine::roots {

// Returns the exponent e with 2^e <= |x| < 2^(e+1) of a normal number; at most -1022 for smaller ones, 1024 for others.
inline int ExponentOf(double x) {
  std::uint64_t bits;
  std::memcpy(&bits, &x, sizeof bits);
  return static_cast<int>(bits >> 52 & 0x7ff) - 1023 + (bits << 1 < std::uint64_t{1} << 53 ? 1 : 0);
}

// Returns x * 2^e, rounded once if it leaves the normal numbers.
inline double TimesPower(double x, int e) {
  if (e < -1022 || e > 1023) return std::ldexp(x, e);
  const std::uint64_t bits = static_cast<std::uint64_t>(e + 1023) << 52;
  double power;
  std::memcpy(&power, &bits, sizeof power);
  return x * power;
}

}  // namespace nu::engine::roots

#endif
