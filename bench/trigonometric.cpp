// What do all roots of a trigonometric polynomial cost? Those of degree 2 are the intersections of quadric surfaces.

#include <algorithm>
#include <cmath>
#include <complex>
#include <random>
#include <vector>

#include "nu/foundation/constants.h"
#include "nu/foundation/double_array.h"
#include "nu/numerics/triag_equ.h"
#include "nu/numerics/triag_polynomial.h"
#include "question.h"

#ifdef NU_BENCH_EIGEN
#include <unsupported/Eigen/Polynomials>
#endif

namespace {

using bench::Numbers;
using bench::Question;

constexpr double kTolerance = 1e-9;

// Harmonics of one size with a small constant, so that there are roots.
struct Harmonics {
  std::vector<double> cosines;
  std::vector<double> sines;
};

Harmonics Waves(int degree) {
  std::mt19937 random(7);
  const auto next = [&] { return static_cast<double>(random()) / 2147483648.0 - 1.0; };
  Harmonics h;
  for (int k = 0; k <= degree; ++k) {
    h.cosines.push_back(k == 0 ? 0.1 : next());
    h.sines.push_back(k == 0 ? 0.0 : next());
  }
  return h;
}

CNuTriagPolynomial ToNu(const Harmonics& h) {
  const int degree = static_cast<int>(h.cosines.size()) - 1;
  CNuTriagPolynomial p(degree);
  for (int k = 0; k <= degree; ++k) {
    p.Cos(k) = h.cosines[static_cast<std::size_t>(k)];
    p.Sin(k) = h.sines[static_cast<std::size_t>(k)];
  }
  return p;
}

#ifdef NU_BENCH_EIGEN
using Eigen::Index;
using Eigen::VectorXcd;

// With z = exp(iu) the sum times z^n is a polynomial of degree 2n, whose zeros on the unit circle are the roots.
VectorXcd ToComplex(const Harmonics& h) {
  const Index degree = static_cast<Index>(h.cosines.size()) - 1;
  VectorXcd c = VectorXcd::Zero(2 * degree + 1);
  for (Index k = 0; k <= degree; ++k) {
    const std::complex<double> half(h.cosines[static_cast<std::size_t>(k)] / 2,
                                    -h.sines[static_cast<std::size_t>(k)] / 2);
    c(degree + k) += half;
    c(degree - k) += std::conj(half);
  }
  return c;
}

Numbers CompanionRoots(const VectorXcd& c) {
  constexpr double onCircle = 1e-8;
  Eigen::PolynomialSolver<std::complex<double>, Eigen::Dynamic> solver(c);
  Numbers roots;
  for (Index i = 0; i < solver.roots().size(); ++i) {
    const std::complex<double> z = solver.roots()(i);
    if (std::fabs(std::abs(z) - 1.0) > onCircle) continue;
    const double u = std::arg(z);
    roots.push_back(u < 0.0 ? u + Nu_2PI : u);
  }
  std::sort(roots.begin(), roots.end());
  return roots;
}
#endif

const bool kAsked = [] {
  Question<Harmonics> question("trigonometric", kTolerance, Waves);
  question.Ask(
      "nu", ToNu,
      [](const CNuTriagPolynomial& p) {
        CNuTriagEqu equation;
        equation.Solve(p);
        return equation.GetRoots();
      },
      [](const CNuDoubleArray& roots) { return Numbers(roots.GetData(), roots.GetData() + roots.GetSize()); });
#ifdef NU_BENCH_EIGEN
  question.Ask("eigen", ToComplex, CompanionRoots, [](const Numbers& roots) { return roots; });
#endif
  question.Over({1, 2, 4, 8, 16});
  return true;
}();

}  // namespace
