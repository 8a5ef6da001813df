#include "nu/engine/linear/complex_product.h"

#include "nu/engine/linear/matmul.h"

namespace nu::engine::linear {
namespace {

// Beyond this many rows of b, packed products of the real parts gain more than they copy.
constexpr int kShort = 32;

NU_KERNEL void MultiplyShort(const ComplexRows& a, const ComplexRows& b, const ComplexRows& c) {
  for (int i = 0; i < a.rows; ++i) {
    const double* factor = a.Row(i);
    for (int j = 0; j < c.width; j += kLanes) {
      ComplexPack sum = {};
      for (int k = 0; k < b.rows; ++k) {
        ComplexPack x;
        Load(b.Row(k) + j, b.width, x);
        AddMultiple(sum, {factor[k], factor[a.width + k]}, x);
      }
      Store(sum, c.Row(i) + j, c.width);
    }
  }
}

}  // namespace

void MultiplyComplex(const ComplexRows& a, const ComplexRows& b, const ComplexRows& c) {
  if (b.rows <= kShort) return MultiplyShort(a, b, c);
  const MatrixView aRe = {a.data, 2 * a.width};
  const MatrixView aIm = {a.data + a.width, 2 * a.width};
  const MatrixView bRe = {b.data, 2 * b.width};
  const MatrixView bIm = {b.data + b.width, 2 * b.width};
  double* re = c.data;
  double* im = c.data + c.width;
  Multiply(aRe, bRe, re, 2 * c.width, a.rows, b.rows, b.columns);
  SubtractProduct(aIm, bIm, re, 2 * c.width, a.rows, b.rows, b.columns);
  Multiply(aRe, bIm, im, 2 * c.width, a.rows, b.rows, b.columns);
  AddProduct(aIm, bRe, im, 2 * c.width, a.rows, b.rows, b.columns);
}

}  // namespace nu::engine::linear
