#include "nu/c/internal/calls.h"
#include "nu/foundation/double_array.h"
#include "nu/linalg/complex.h"
#include "nu/linalg/complex_array.h"
#include "nu/numerics/alg_equ.h"
#include "nu/numerics/polynomial.h"

using namespace nu::internal;
using namespace nu::internal::c;

namespace {

nu_complex ToNumber(const CNuComplex& c) {
  return {c.r(), c.i()};
}

}  // namespace

nu_status nu_polynomial_roots(const double* c, int32_t count, double* real_roots, int32_t real_capacity,
                              int32_t* real_count, nu_complex* complex_roots, int32_t complex_capacity,
                              int32_t* complex_count) {
  return Guarded([&] {
    Require(c != nullptr, "the coefficients are null");
    Require(count >= 1, "there is no coefficient");
    CNuPolynomial polynomial(count - 1);
    for (std::int32_t i = 0; i < count; ++i) polynomial[i] = c[i];
    CNuAlgEqu equation;
    equation.Solve(polynomial);
    const CNuDoubleArray real = equation.GetRealRoots();
    const CNuComplexArray complex = equation.GetComplexRoots();
    Output(complex_count, complex.GetSize());
    const bool wantsReal = IsWanted(real_roots, real_capacity, real.GetSize(), real_count);
    Fill(complex_roots, complex_capacity, complex.GetSize(), complex_count,
         [&](int i) { return ToNumber(complex[i]); });
    for (int i = 0; wantsReal && i < real.GetSize(); ++i) real_roots[i] = real[i];
  });
}

nu_status nu_polynomial_complex_roots(const nu_complex* c, int32_t count, nu_complex* roots, int32_t capacity,
                                      int32_t* root_count) {
  return Guarded([&] {
    Require(c != nullptr, "the coefficients are null");
    Require(count >= 1, "there is no coefficient");
    CNuComplexArray coefficients(count);
    for (std::int32_t i = 0; i < count; ++i) coefficients.Add(CNuComplex(c[i].re, c[i].im));
    CNuAlgEqu equation;
    equation.Solve(coefficients);
    const CNuDoubleArray real = equation.GetRealRoots();
    const CNuComplexArray complex = equation.GetComplexRoots();
    Fill(roots, capacity, real.GetSize() + complex.GetSize(), root_count, [&](int i) {
      return i < real.GetSize() ? nu_complex{real[i], 0.0} : ToNumber(complex[i - real.GetSize()]);
    });
  });
}
