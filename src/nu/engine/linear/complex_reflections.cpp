#include "nu/engine/linear/complex_reflections.h"

#include <algorithm>
#include <cmath>

#include "nu/engine/base/elementary.h"
#include "nu/engine/linear/householder.h"

// Unitary reflections H = I - tau v v^H with real tau and v_0 = 1 (R. B. Lehoucq, The computation of elementary unitary
// matrices, ACM TOMS 22, 1996, compares the choices). For x with the first component x_0 = |x_0| phase,
//   beta = -phase |x|,   v = x / (x_0 - beta) behind v_0 = 1,   tau = (|x_0| + |x|) / |x|   give   H x = (beta, 0, ...,
//   0).
// H is Hermitian as tau is real; beta is complex, and MakeDiagonalPositive removes the phases afterwards.
//
// QR: reflection k clears column k below the diagonal and updates the columns behind it, A <- A - v (tau v^H A).
//
// Hessenberg form A = Q H Q^H: reflection k clears column k below the subdiagonal from both sides,
//   H A H = A - v y - x v^H,   x = tau A v - h v,   y = tau v^H A - h v^H,   2 h = tau^2 v^H A v.
// The update waits for the next vector: one pass over the memory subtracts it and forms the next A v and v^H A (the
// update of rank 2 is that of J. J. Dongarra, S. J. Hammarling, D. C. Sorensen, J. Comput. Appl. Math. 27, 1989).
namespace nu::engine::linear {
namespace {

Complex At(const double* row, int width, int j) {
  return {row[j], row[width + j]};
}

void Put(Complex z, double* row, int width, int j) {
  row[j] = z.re;
  row[width + j] = z.im;
}

struct ComplexReflection {
  double tau = 0.0;
  Complex beta = {};  // what H makes of x: beta in front, zeros behind
};

// Replaces components first .. n-1 of the row x by v. A tail that is negligible beside the working size is dropped.
ComplexReflection MakeComplexReflection(double* x, int width, int first, int n) {
  const Complex head = At(x, width, first);
  double tail = 0.0;
  for (int j = first + 1; j < n; ++j) tail += Squares(At(x, width, j));
  Put({1.0, 0.0}, x, width, first);
  if (!(tail > kNegligibleSquares)) {
    std::fill(x + first + 1, x + n, 0.0);
    std::fill(x + width + first + 1, x + width + n, 0.0);
    return {0.0, head};
  }
  const double headSquares = Squares(head);
  const double size = headSquares > kNegligibleSquares ? std::sqrt(headSquares) : 0.0;
  const Complex phase = size > 0.0 ? (1.0 / size) * head : Complex{1.0, 0.0};
  const double norm = std::sqrt(size * size + tail);
  // x_0 - beta = phase (|x_0| + |x|)
  const Complex scale = (1.0 / (size + norm)) * Conjugate(phase);
  for (int j = first + 1; j < n; ++j) Put(scale * At(x, width, j), x, width, j);
  return {(size + norm) / norm, -norm * phase};
}

int PackStart(int j) {
  return j / kLanes * kLanes;
}

// Multiplies rows first .. of `a` by H from the left: sum = tau v^H a, then a -= v sum.
NU_KERNEL void ReflectColumns(const ComplexRows& a, int first, int from, const double* v, int vWidth, double tau,
                              double* sum) {
  const int width = a.width;
  std::fill_n(sum, 2 * width, 0.0);
  for (int i = first; i < a.rows; ++i) {
    const double* row = a.Row(i);
    const Complex f = {tau * v[i], -tau * v[vWidth + i]};
    for (int j = from; j < width; j += kLanes) {
      ComplexPack total, x;
      Load(sum + j, width, total);
      Load(row + j, width, x);
      AddMultiple(total, f, x);
      Store(total, sum + j, width);
    }
  }
  for (int i = first; i < a.rows; ++i) {
    double* row = a.Row(i);
    const Complex f = {-v[i], -v[vWidth + i]};
    for (int j = from; j < width; j += kLanes) {
      ComplexPack x, total;
      Load(row + j, width, x);
      Load(sum + j, width, total);
      AddMultiple(x, f, total);
      Store(x, row + j, width);
    }
  }
}

// Multiplies rows first .. of `a` by H^T = I - tau conj(v) v^T from the right.
NU_KERNEL void ReflectRows(const ComplexRows& a, int first, int from, const double* v, double tau) {
  const int width = a.width;
  for (int i = first; i < a.rows; ++i) {
    double* row = a.Row(i);
    ComplexPack dots = {};
    for (int j = from; j < width; j += kLanes) {
      ComplexPack x, factor;
      Load(row + j, width, x);
      Load(v + j, width, factor);
      AddConjugateProducts(dots, x, factor);
    }
    const Complex f = -tau * Sum(dots);
    for (int j = from; j < width; j += kLanes) {
      ComplexPack x, factor;
      Load(row + j, width, x);
      Load(v + j, width, factor);
      AddMultiple(x, f, factor);
      Store(x, row + j, width);
    }
  }
}

// One step of the reduction to Hessenberg form: the update a -= u y + x u^H of the step before, with u its vector, and
// the products dot = a v and sum += v^H a with the new vector v. The components of u, x, v and dot belong to rows,
// those of y, u, v and sum to columns.
struct TwoSidedStep {
  const double* u;
  const double* x;
  const double* y;
  const double* v;
  double* dot;
  double* sum;
};

template<bool kSum>
NU_ALWAYS_INLINE void PassRow(const ComplexRows& a, int i, int from, const TwoSidedStep& s) {
  const int width = a.width;
  double* row = a.Row(i);
  const Complex f = {-s.u[i], -s.u[width + i]};
  const Complex g = {-s.x[i], -s.x[width + i]};
  const Complex h = {s.v[i], -s.v[width + i]};
  ComplexPack dots = {};
  for (int j = from; j < width; j += kLanes) {
    ComplexPack value, y, u, v;
    Load(row + j, width, value);
    Load(s.y + j, width, y);
    Load(s.u + j, width, u);
    Load(s.v + j, width, v);
    AddMultiple(value, f, y);
    AddConjugateMultiple(value, g, u);
    Store(value, row + j, width);
    AddProducts(dots, value, v);
    if constexpr (kSum) {
      ComplexPack total;
      Load(s.sum + j, width, total);
      AddMultiple(total, h, value);
      Store(total, s.sum + j, width);
    }
  }
  const Complex product = Sum(dots);
  s.dot[i] = product.re;
  s.dot[width + i] = product.im;
}

// v is zero before component `first`.
NU_KERNEL void PassRows(const ComplexRows& a, int first, int from, const TwoSidedStep& step) {
  for (int i = 0; i < first; ++i) PassRow<false>(a, i, from, step);
  for (int i = first; i < a.rows; ++i) PassRow<true>(a, i, from, step);
}

// Element (i, j) after the update that the next pass will make.
Complex Updated(const ComplexRows& a, int i, int j, const TwoSidedStep& s) {
  const int w = a.width;
  const Complex update = At(s.u, w, i) * At(s.y, w, j) + At(s.x, w, i) * Conjugate(At(s.u, w, j));
  return At(a.Row(i), w, j) - update;
}

}  // namespace

void ReduceToTriangle(const ComplexRows& a, const ComplexRows& v, double* tau, double* work) {
  for (int k = 0; k < v.rows; ++k) {
    double* own = v.Row(k);
    std::fill_n(own, 2 * v.width, 0.0);
    for (int i = k; i < a.rows; ++i) Put(At(a.Row(i), a.width, k), own, v.width, i);
    const ComplexReflection h = MakeComplexReflection(own, v.width, k, a.rows);
    tau[k] = h.tau;
    if (h.tau != 0.0) ReflectColumns(a, k, PackStart(k), own, v.width, h.tau, work);
    Put(h.beta, a.Row(k), a.width, k);
    for (int i = k + 1; i < a.rows; ++i) Put({}, a.Row(i), a.width, k);
  }
}

void ReduceToComplexHessenberg(const ComplexRows& a, const ComplexRows& v, double* tau, double* work) {
  const int n = a.rows;
  const int width = a.width;
  double* x = work;
  double* y = work + 2 * width;
  double* dot = work + 4 * width;
  double* sum = work + 6 * width;
  double* column = work + 8 * width;
  std::fill_n(work, 10 * width, 0.0);
  TwoSidedStep step = {x, x, y, nullptr, dot, sum};  // zeros: there is no update yet
  for (int k = 0; k + 2 < n; ++k) {
    double* own = v.Row(k);
    std::fill_n(own, 2 * width, 0.0);
    for (int i = 0; i < n; ++i) Put(Updated(a, i, k, step), column, width, i);
    for (int i = k + 1; i < n; ++i) Put(At(column, width, i), own, width, i);
    const ComplexReflection h = MakeComplexReflection(own, width, k + 1, n);
    tau[k] = h.tau;

    std::fill_n(sum, 2 * width, 0.0);
    step.v = own;
    PassRows(a, k + 1, PackStart(k + 1), step);
    for (int i = 0; i < n; ++i) Put(i <= k ? At(column, width, i) : Complex{}, a.Row(i), width, k);
    Put(h.beta, a.Row(k + 1), width, k);

    Complex product = {};
    for (int i = k + 1; i < n; ++i) product = product + Conjugate(At(own, width, i)) * At(dot, width, i);
    const Complex half = 0.5 * h.tau * h.tau * product;
    for (int i = 0; i < n; ++i) Put(h.tau * At(dot, width, i) - half * At(own, width, i), x, width, i);
    for (int j = 0; j < n; ++j) {
      const Complex value = h.tau * At(sum, width, j) - half * Conjugate(At(own, width, j));
      Put(j <= k ? Complex{} : value, y, width, j);
    }
    step.u = own;
  }
  for (int i = 0; i < n; ++i)
    for (int j = std::max(n - 2, 0); j < n; ++j) Put(Updated(a, i, j, step), a.Row(i), width, j);
}

void FormTransposedUnitary(const ComplexRows& v, const double* tau, int count, int offset, const ComplexRows& qT) {
  for (int i = 0; i < qT.rows; ++i) {
    std::fill_n(qT.Row(i), 2 * qT.width, 0.0);
    qT.Re(i, i) = 1.0;
  }
  for (int k = count - 1; k >= 0; --k) {
    const int first = k + offset;
    if (tau[k] != 0.0) ReflectRows(qT, first, PackStart(first), v.Row(k), tau[k]);
  }
}

void MakeDiagonalPositive(const ComplexRows& r, const ComplexRows* qT) {
  for (int k = 0; k < std::min(r.rows, r.columns); ++k) {
    const Complex diagonal = {r.Re(k, k), r.Im(k, k)};
    const double size = Hypot(diagonal.re, diagonal.im);
    if (!(size > kNegligible)) {
      // The phase of so small a number is lost to rounding.
      Put({}, r.Row(k), r.width, k);
      continue;
    }
    const Complex phase = {diagonal.re / size, diagonal.im / size};
    for (int j = k; j < r.columns; ++j) Put(Conjugate(phase) * At(r.Row(k), r.width, j), r.Row(k), r.width, j);
    Put({size, 0.0}, r.Row(k), r.width, k);
    if (qT == nullptr) continue;
    for (int j = 0; j < qT->columns; ++j) Put(phase * At(qT->Row(k), qT->width, j), qT->Row(k), qT->width, j);
  }
}

}  // namespace nu::engine::linear
