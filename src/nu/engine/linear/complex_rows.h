#ifndef NU_ENGINE_LINEAR_COMPLEX_ROWS_H
#define NU_ENGINE_LINEAR_COMPLEX_ROWS_H

#include <cstddef>

#include "nu/engine/base/complex_number.h"
#include "nu/engine/linear/row_kernels.h"

namespace nu::engine::linear {

// A complex block whose rows hold the real parts first and the imaginary parts behind them, each padded with zeros to
// whole packs: a loop over a row fills registers without shuffling. A complex vector is one such row.
struct ComplexRows {
  double* data;
  int rows;
  int columns;
  int width;  // from a real part to its imaginary part

  ComplexRows(double* block, int rowCount, int columnCount)
      : data(block), rows(rowCount), columns(columnCount), width(Padded(columnCount)) {}
  static std::size_t Size(int rowCount, int columnCount) {
    return static_cast<std::size_t>(rowCount) * 2 * static_cast<std::size_t>(Padded(columnCount));
  }
  double* Row(int i) const { return data + static_cast<std::ptrdiff_t>(i) * 2 * width; }
  double& Re(int i, int j) const { return Row(i)[j]; }
  double& Im(int i, int j) const { return Row(i)[width + j]; }
};

// Overloaded for complex packs below.
using base::Load;
using base::Store;
using base::Sum;

// A pack of complex numbers and the steps of the loops over rows.
struct ComplexPack {
  Lanes re, im;
};
NU_ALWAYS_INLINE void Load(const double* from, int width, ComplexPack& pack) {
  Load(from, pack.re);
  Load(from + width, pack.im);
}
NU_ALWAYS_INLINE void Store(const ComplexPack& pack, double* to, int width) {
  Store(pack.re, to);
  Store(pack.im, to + width);
}
// a += f x and a += f conj(x)
NU_ALWAYS_INLINE void AddMultiple(ComplexPack& a, Complex f, const ComplexPack& x) {
  a.re += f.re * x.re - f.im * x.im;
  a.im += f.re * x.im + f.im * x.re;
}
NU_ALWAYS_INLINE void AddConjugateMultiple(ComplexPack& a, Complex f, const ComplexPack& x) {
  a.re += f.re * x.re + f.im * x.im;
  a.im += f.im * x.re - f.re * x.im;
}
// sum += a x and sum += a conj(x)
NU_ALWAYS_INLINE void AddProducts(ComplexPack& sum, const ComplexPack& a, const ComplexPack& x) {
  sum.re += a.re * x.re - a.im * x.im;
  sum.im += a.re * x.im + a.im * x.re;
}
NU_ALWAYS_INLINE void AddConjugateProducts(ComplexPack& sum, const ComplexPack& a, const ComplexPack& x) {
  sum.re += a.re * x.re + a.im * x.im;
  sum.im += a.im * x.re - a.re * x.im;
}
NU_ALWAYS_INLINE Complex Sum(const ComplexPack& pack) {
  return {Sum(pack.re), Sum(pack.im)};
}

}  // namespace nu::engine::linear

#endif
