// What do the Schur form, the eigenvalues and the product of complex matrices cost?

#include <algorithm>
#include <complex>

#include "inputs.h"
#include "nu/linalg/complex_matrix.h"
#include "nu/linalg/complex_vector.h"
#include "question.h"

#ifdef NU_BENCH_LAPACK
#define LAPACK_COMPLEX_CUSTOM
#define lapack_complex_float std::complex<float>
#define lapack_complex_double std::complex<double>
#include <lapacke.h>
#endif

namespace {

using bench::Block;
using bench::Numbers;
using bench::Question;

const std::vector<int> kSizes = {3, 10, 30, 100};
// Far above the rounding of the eigenvalues of a random matrix, far below any mistake.
constexpr double kTolerance = 1e-8;

// Real parts above imaginary parts.
Block BothParts(int n) {
  return bench::RandomBlock(2 * n, n, 17);
}

using Values = std::vector<std::complex<double>>;

// In the order of the real parts, which no two eigenvalues of these matrices have in common.
Numbers InOrder(Values values) {
  std::sort(values.begin(), values.end(), [](const auto& a, const auto& b) { return a.real() < b.real(); });
  Numbers numbers;
  for (const auto& z : values) numbers.insert(numbers.end(), {z.real(), z.imag()});
  return numbers;
}

template<class At>
Numbers Diagonal(int n, At at) {
  Values values;
  for (int i = 0; i < n; ++i) values.push_back(at(i));
  return InOrder(values);
}

struct NuForm {
  CNuComplexMatrix q{1, 1};
  CNuComplexMatrix t{1, 1};
};
const auto kNu = [](const Block& b) {
  const CNuMatrix both = bench::ToMatrix(b);
  const int n = b.columns;
  return CNuComplexMatrix(both.SubMatrix(0, n - 1, 0, n - 1), both.SubMatrix(n, 2 * n - 1, 0, n - 1));
};
std::complex<double> Standard(const CNuComplex& z) {
  return {z.r(), z.i()};
}

#ifdef NU_BENCH_EIGEN
using Eigen::MatrixXcd;
const auto kEigen = [](const Block& b) {
  const Eigen::MatrixXd both = bench::ToEigen(b);
  MatrixXcd a(b.columns, b.columns);
  a.real() = both.topRows(b.columns);
  a.imag() = both.bottomRows(b.columns);
  return a;
};
#endif

#ifdef NU_BENCH_LAPACK
struct LapackForm {
  MatrixXcd t, q;
  Eigen::VectorXcd values;
};

LapackForm LapackSchur(const MatrixXcd& a) {
  const int n = static_cast<int>(a.rows());
  LapackForm r{a, MatrixXcd(n, n), Eigen::VectorXcd(n)};
  int sorted = 0;
  LAPACKE_zgees(LAPACK_COL_MAJOR, 'V', 'N', nullptr, n, r.t.data(), n, &sorted, r.values.data(), r.q.data(), n);
  return r;
}

LapackForm LapackValues(const MatrixXcd& a) {
  const int n = static_cast<int>(a.rows());
  LapackForm r{a, MatrixXcd(), Eigen::VectorXcd(n)};
  LAPACKE_zgeev(LAPACK_COL_MAJOR, 'N', 'N', n, r.t.data(), n, r.values.data(), nullptr, 1, nullptr, 1);
  return r;
}

const auto kLapackValues = [](const LapackForm& r) { return InOrder({r.values.begin(), r.values.end()}); };
#endif

void AskSchur() {
  Question<Block> question("complex_schur", kTolerance, BothParts);
  question.Ask(
      "nu", kNu,
      [](const CNuComplexMatrix& a) {
        NuForm form;
        a.Schur(&form.q, &form.t);
        return form;
      },
      [](const NuForm& form) {
        return Diagonal(form.t.GetRowSize(), [&](int i) { return Standard(form.t.Element(i, i)); });
      });
#ifdef NU_BENCH_EIGEN
  question.Ask(
      "eigen", kEigen, [](const MatrixXcd& a) { return Eigen::ComplexSchur<MatrixXcd>(a); },
      [](const Eigen::ComplexSchur<MatrixXcd>& s) {
        return Diagonal(static_cast<int>(s.matrixT().rows()), [&](int i) { return s.matrixT()(i, i); });
      });
#endif
#ifdef NU_BENCH_LAPACK
  question.Ask("lapack", kEigen, LapackSchur, kLapackValues);
#endif
  question.Over(kSizes);
}

void AskValues() {
  Question<Block> question("complex_eigenvalues", kTolerance, BothParts);
  question.Ask(
      "nu", kNu, [](const CNuComplexMatrix& a) { return a.EigenValues(); },
      [](const CNuComplexVector& v) { return Diagonal(v.GetSize(), [&](int i) { return Standard(v[i]); }); });
#ifdef NU_BENCH_EIGEN
  question.Ask(
      "eigen", kEigen,
      [](const MatrixXcd& a) { return Eigen::VectorXcd(Eigen::ComplexEigenSolver<MatrixXcd>(a, false).eigenvalues()); },
      [](const Eigen::VectorXcd& v) {
        return InOrder({v.begin(), v.end()});
      });
#endif
#ifdef NU_BENCH_LAPACK
  question.Ask("lapack", kEigen, LapackValues, kLapackValues);
#endif
  question.Over(kSizes);
}

void AskProduct() {
  Question<Block> question("complex_product", kTolerance, BothParts);
  // Of the product the first row says enough.
  question.Ask(
      "nu", kNu, [](const CNuComplexMatrix& a) { return a * a; },
      [](const CNuComplexMatrix& c) {
        return Diagonal(c.GetColumnSize(), [&](int j) { return Standard(c.Element(0, j)); });
      });
#ifdef NU_BENCH_EIGEN
  question.Ask(
      "eigen", kEigen, [](const MatrixXcd& a) { return MatrixXcd(a * a); },
      [](const MatrixXcd& c) { return Diagonal(static_cast<int>(c.cols()), [&](int j) { return c(0, j); }); });
#endif
  question.Over(kSizes);
}

const bool kAsked = [] {
  AskSchur();
  AskValues();
  AskProduct();
  return true;
}();

}  // namespace
