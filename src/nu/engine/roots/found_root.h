#ifndef NU_ENGINE_ROOTS_FOUND_ROOT_H
#define NU_ENGINE_ROOTS_FOUND_ROOT_H

#include "nu/engine/rooms.h"

namespace nu::engine::roots {

// A root, or a root of a real polynomial together with its conjugate, which has the same digits. A pair has im >= 0,
// and im = 0 makes it a double real root.
struct FoundRoot {
  double re;
  double im;
  bool pair;
};

// The polynomial c_0 + c_1 x + ... + c_n x^n; im is null where all coefficients are real.
struct Coefficients {
  const double* re;
  const double* im;
  int degree;
};

// The relative residual |p(x)| / sum |c_i| |x|^i is compared with multiples of this.
inline constexpr double kRounding = 0x1p-52;

// Below this multiple of the rounding the residual of a polynomial of this degree is not distinguished from 0.
inline double ResidualLimit(int degree) {
  return 2.0 * degree * kRounding;
}

}  // namespace nu::engine::roots

#endif
