// What do all roots of a polynomial cost? Degree 4 is what the intersections of conics and quadrics come to.

#include <algorithm>
#include <cmath>
#include <complex>
#include <memory>
#include <random>
#include <vector>

#include "nu/foundation/double_array.h"
#include "nu/linalg/complex_array.h"
#include "nu/numerics/alg_equ.h"
#include "nu/numerics/polynomial.h"
#include "question.h"

#ifdef NU_BENCH_EIGEN
#include <Eigen/Dense>
#include <unsupported/Eigen/Polynomials>
#endif
#ifdef NU_BENCH_GSL
#include <gsl/gsl_poly.h>
#endif

namespace {

using bench::Numbers;
using bench::Question;
using Complex = std::complex<double>;

// Coefficients of one size, bell-shaped: simple roots near the unit circle.
Numbers Coefficients(int degree) {
  std::mt19937 random(31U + static_cast<unsigned>(degree));
  Numbers c(static_cast<std::size_t>(degree) + 1);
  for (double& x : c) {
    for (int k = 0; k < 12; ++k) x += static_cast<double>(random()) / 4294967296.0 - 0.5;
  }
  return c;
}

// Roots in no order, and what they are roots of.
struct Roots {
  std::vector<Complex> x;
  const Numbers* c;
};

// The number of the roots, and whether each is one: |p(x)| is rounding beside sum |c_i| |x|^i.
Numbers Judged(const Roots& roots) {
  constexpr double kRoundings = 1e-12;
  bool all = true;
  for (const Complex x : roots.x) {
    Complex p = 0.0;
    double sum = 0.0;
    for (std::size_t i = roots.c->size(); i-- > 0;) {
      p = p * x + (*roots.c)[i];
      sum = sum * std::abs(x) + std::fabs((*roots.c)[i]);
    }
    all = all && std::abs(p) <= kRoundings * sum;
  }
  return {static_cast<double>(roots.x.size()), all ? 1.0 : 0.0};
}

// Peers, if there are any, take the numbers as they are.
[[maybe_unused]] const auto kPlain = [](const Numbers& c) { return c; };

struct NuProblem {
  CNuPolynomial p;
  Numbers c;
};
NuProblem ToNu(const Numbers& c) {
  NuProblem problem = {CNuPolynomial(static_cast<int>(c.size()) - 1), c};
  std::copy(c.begin(), c.end(), problem.p.GetData());
  return problem;
}

struct NuRoots {
  CNuDoubleArray real;
  CNuComplexArray complex;
  const Numbers* c;
};
NuRoots Solve(const NuProblem& problem) {
  CNuAlgEqu equation;
  equation.Solve(problem.p);
  return {equation.GetRealRoots(), equation.GetComplexRoots(), &problem.c};
}
Numbers JudgedNu(const NuRoots& roots) {
  Roots all = {{}, roots.c};
  for (int i = 0; i < roots.real.GetSize(); ++i) all.x.emplace_back(roots.real[i]);
  for (int i = 0; i < roots.complex.GetSize(); ++i) all.x.emplace_back(roots.complex[i].r(), roots.complex[i].i());
  return Judged(all);
}

#ifdef NU_BENCH_GSL
Roots Companion(const Numbers& c) {
  Roots roots = {std::vector<Complex>(c.size() - 1), &c};
  gsl_poly_complex_workspace* workspace = gsl_poly_complex_workspace_alloc(c.size());
  gsl_poly_complex_solve(c.data(), c.size(), workspace, reinterpret_cast<double*>(roots.x.data()));
  gsl_poly_complex_workspace_free(workspace);
  return roots;
}

Roots Cubic(const Numbers& c) {
  gsl_complex z[3];
  gsl_poly_complex_solve_cubic(c[2] / c[3], c[1] / c[3], c[0] / c[3], &z[0], &z[1], &z[2]);
  Roots roots = {{}, &c};
  for (const gsl_complex& x : z) roots.x.emplace_back(GSL_REAL(x), GSL_IMAG(x));
  return roots;
}
#endif

#ifdef NU_BENCH_EIGEN
Roots EigenCompanion(const Numbers& c) {
  const Eigen::Map<const Eigen::VectorXd> coefficients(c.data(), static_cast<Eigen::Index>(c.size()));
  const Eigen::PolynomialSolver<double, Eigen::Dynamic> solver(coefficients);
  return {{solver.roots().data(), solver.roots().data() + solver.roots().size()}, &c};
}
#endif

const bool kAsked = [] {
  Question<Numbers> cubic("roots_cubic", 0.0, Coefficients);
  Question<Numbers> question("roots", 0.0, Coefficients);
  cubic.Ask("nu", ToNu, Solve, JudgedNu);
  question.Ask("nu", ToNu, Solve, JudgedNu);
#ifdef NU_BENCH_GSL
  cubic.Ask("gsl", kPlain, Cubic, Judged);
  question.Ask("gsl", kPlain, Companion, Judged);
#endif
#ifdef NU_BENCH_EIGEN
  question.Ask("eigen", kPlain, EigenCompanion, Judged);
#endif
  cubic.Over({3});
  question.Over({3, 4, 10, 30, 100});
  return true;
}();

}  // namespace
