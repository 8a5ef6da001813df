// What do systems of equations cost: square ones, tall ones, and those with non-negative unknowns?

#include "inputs.h"
#include "nu/linalg/linear_equ_sys.h"
#include "question.h"

#ifdef NU_BENCH_LAPACK
#include <lapacke.h>
#endif

namespace {

using bench::Question;
using bench::System;

constexpr double kTolerance = 1e-8;

struct NuSystem {
  CNuMatrix a;
  CNuVector b;
};
const auto kNu = [](const System& s) { return NuSystem{bench::ToMatrix(s.a), bench::ToVector(s.b)}; };
const auto kNuNumbers = [](const CNuVector& x) { return bench::ToNumbers(x); };

#ifdef NU_BENCH_EIGEN
using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;

struct EigenSystem {
  MatrixXd a;
  VectorXd b;
};
const auto kEigen = [](const System& s) { return EigenSystem{bench::ToEigen(s.a), bench::ToEigen(s.b)}; };
const auto kEigenNumbers = [](const VectorXd& x) { return bench::ToNumbers(x); };

// Squares the condition number: an anchor for speed, not for accuracy.
VectorXd NormalEquations(const EigenSystem& s) {
  MatrixXd gram = MatrixXd::Zero(s.a.cols(), s.a.cols());
  gram.selfadjointView<Eigen::Lower>().rankUpdate(s.a.transpose());
  return gram.selfadjointView<Eigen::Lower>().llt().solve(s.a.transpose() * s.b);
}

// The active set method of Lawson and Hanson (Solving Least Squares Problems, 1974, chapter 23), on the normal matrix.
VectorXd NonNegative(const EigenSystem& s) {
  const MatrixXd gram = s.a.transpose() * s.a;
  const VectorXd moment = s.a.transpose() * s.b;
  const double gradientTolerance = 1e-10 * moment.cwiseAbs().maxCoeff();
  VectorXd x = VectorXd::Zero(gram.cols());
  std::vector<Index> freed;
  for (Index round = 0; round < 3 * gram.cols(); ++round) {
    VectorXd gradient = moment - gram * x;
    for (const Index j : freed) gradient(j) = 0;
    Index steepest;
    if (!(gradient.maxCoeff(&steepest) > gradientTolerance)) break;
    freed.push_back(steepest);
    while (!freed.empty()) {
      const VectorXd wanted = gram(freed, freed).eval().llt().solve(moment(freed).eval());
      double step = 1;
      for (std::size_t k = 0; k < freed.size(); ++k) {
        const double from = x(freed[k]), to = wanted(static_cast<Index>(k));
        if (to <= 0) step = std::min(step, from / (from - to));
      }
      for (std::size_t k = 0; k < freed.size(); ++k)
        x(freed[k]) += step * (wanted(static_cast<Index>(k)) - x(freed[k]));
      if (step == 1) break;
      const auto blocked = [&](Index j) { return x(j) <= 1e-13; };
      for (const Index j : freed) x(j) = blocked(j) ? 0 : x(j);
      freed.erase(std::remove_if(freed.begin(), freed.end(), blocked), freed.end());
    }
  }
  return x;
}
#endif

#ifdef NU_BENCH_LAPACK
VectorXd LapackSolution(const EigenSystem& s) {
  const int n = static_cast<int>(s.b.size());
  MatrixXd lu = s.a;
  VectorXd x = s.b;
  std::vector<int> pivots(static_cast<std::size_t>(n));
  LAPACKE_dgesv(LAPACK_COL_MAJOR, n, 1, lu.data(), n, pivots.data(), x.data(), n);
  return x;
}
#endif

void AskSquare() {
  Question<System> question("solve", kTolerance,
                            [](int n) { return bench::NoisySystem(n, n, 0.0, [](int j) { return 1.0 - j % 3; }); });
  question.Ask(
      "nu", kNu,
      [](const NuSystem& s) {
        CNuLinearEquSys equations(0);
        equations.Solve(s.a, s.b);
        return equations.GetSolution();
      },
      kNuNumbers);
#ifdef NU_BENCH_EIGEN
  question.Ask(
      "eigen", kEigen, [](const EigenSystem& s) { return VectorXd(s.a.partialPivLu().solve(s.b)); }, kEigenNumbers);
#endif
#ifdef NU_BENCH_LAPACK
  question.Ask("lapack", kEigen, LapackSolution, kEigenNumbers);
#endif
  question.Over({3, 4, 10, 100, 500});
}

void AskTall(int columns) {
  Question<System> question("tall_" + std::to_string(columns), kTolerance, [=](int rows) {
    return bench::NoisySystem(rows, columns, 1e-3, [](int j) { return 1.0 + j; });
  });
  question.Ask(
      "nu", kNu,
      [](const NuSystem& s) {
        CNuLinearEquSys equations(1);
        equations.Solve(s.a, s.b);
        return equations.GetSolution();
      },
      kNuNumbers);
#ifdef NU_BENCH_EIGEN
  question.Ask(
      "eigen_qr", kEigen, [](const EigenSystem& s) { return VectorXd(s.a.householderQr().solve(s.b)); }, kEigenNumbers);
  question.Ask("eigen_normal", kEigen, NormalEquations, kEigenNumbers);
#endif
  question.Over({1000, 100000, 1000000});
}

// Ten equations per unknown, half of the unconstrained unknowns negative.
void AskNonNegative() {
  Question<System> question("non_negative", kTolerance, [](int unknowns) {
    return bench::NoisySystem(10 * unknowns, unknowns, 0.1, [](int j) { return std::cos(2.0 * j); });
  });
  question.Ask(
      "nu", kNu,
      [](const NuSystem& s) {
        CNuLinearEquSys equations(1);
        equations.SetNonnegative();
        equations.Solve(s.a, s.b);
        return equations.GetSolution();
      },
      kNuNumbers);
#ifdef NU_BENCH_EIGEN
  question.Ask("eigen", kEigen, NonNegative, kEigenNumbers);
#endif
  question.Over({10, 50, 100});
}

const bool kAsked = [] {
  AskSquare();
  AskTall(4);
  AskTall(9);
  AskNonNegative();
  return true;
}();

}  // namespace
