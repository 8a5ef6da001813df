// Any coefficients and tolerances: all roots are found or left out, none is invented, and every one is a number.
// Coefficients that are not finite, and no others, are refused.

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "nu/nu.h"

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

template<class Coefficients>
bool IsSolved(CNuAlgEqu& equation, const Coefficients& p, bool finite) {
  try {
    equation.Solve(p);
  } catch (const CNuOperationException& e) {
    Require(!finite && e.GetCause() == 46);
    return false;
  }
  return true;
}

void Judge(const CNuAlgEqu& equation, int degree) {
  const CNuDoubleArray real = equation.GetRealRoots();
  const CNuComplexArray complex = equation.GetComplexRoots();
  Require(real.GetSize() + complex.GetSize() <= degree);
  for (int i = 0; i < real.GetSize(); ++i) Require(std::isfinite(real[i]) && (i == 0 || real[i - 1] <= real[i]));
  for (int i = 0; i < complex.GetSize(); ++i) {
    Require(std::isfinite(complex[i].r()) && std::isfinite(complex[i].i()) && complex[i].i() != 0.0);
  }
  Require(equation.GetDistinctRealRoots().GetSize() <= real.GetSize());
}

void Solve(const CNuPolynomial& p, bool finite) {
  CNuAlgEqu equation;
  if (!IsSolved(equation, p, finite)) return;
  Judge(equation, p.GetDegree());
  const CNuComplexArray complex = equation.GetComplexRoots();
  for (int i = 0; i + 1 < complex.GetSize(); i += 2) {
    Require(complex[i].r() == complex[i + 1].r() && complex[i].i() == -complex[i + 1].i());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const int count = static_cast<int>(size / 8);
  if (count < 2) return 0;
  const auto value = [data](int i) {
    double x = 0.0;
    std::memcpy(&x, data + 8 * i, 8);
    return x;
  };
  CNuPolynomial p(count - 1);
  CNuComplexArray even(count);
  bool finite = true;
  for (int i = 0; i < count; ++i) finite = std::isfinite(p[i] = value(i)) && finite;
  for (int i = 0; i + 1 < count; i += 2) even.Add(CNuComplex(value(i), value(i + 1)));
  Solve(p, finite);
  CNuAlgEqu equation;
  if (IsSolved(equation, even, finite)) Judge(equation, count);

  const double tol = NuGetTol(), zero = NuGetZero();
  NuSetTol(value(0));
  NuSetZero(value(1));
  Solve(p, finite);
  NuSetTol(tol);
  NuSetZero(zero);
  return 0;
}
