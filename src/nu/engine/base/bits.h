#ifndef NU_ENGINE_BASE_BITS_H
#define NU_ENGINE_BASE_BITS_H

#include <cstdint>
#include <cstring>

#include "nu/engine/rooms.h"

namespace nu::engine::base {

// The representation of a double and back: std::bit_cast, which older standard libraries lack.
inline std::uint64_t BitsOf(double x) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &x, sizeof bits);
  return bits;
}
inline double FromBits(std::uint64_t bits) {
  double x = 0.0;
  std::memcpy(&x, &bits, sizeof x);
  return x;
}

}  // namespace nu::engine::base

#endif
