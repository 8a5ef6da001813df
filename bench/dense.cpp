// What do the decompositions and products of a square matrix cost?

#include <algorithm>
#include <cmath>

#include "inputs.h"
#include "nu/foundation/int_array.h"
#include "question.h"

#ifdef NU_BENCH_LAPACK
#include <cblas.h>
#include <lapacke.h>
#endif

namespace {

using bench::Block;
using bench::Numbers;
using bench::Question;

const std::vector<int> kSizes = {3, 4, 10, 100, 500};
// Far above the rounding of a 500 x 500 decomposition, far below any mistake.
constexpr double kTolerance = 1e-8;

const auto kMatrix = [](const Block& b) { return bench::ToMatrix(b); };

Block General(int n) {
  return bench::RandomBlock(n, n, 11);
}

Numbers Ascending(Numbers numbers) {
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}

// A matrix is summed up by its products with two fixed vectors, one from each side.
template<class At>
Numbers Summary(int n, At at) {
  Numbers sums(2 * static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      sums[i] += at(i, j) * std::cos(j);
      sums[n + j] += at(i, j) * std::cos(i);
    }
  }
  return sums;
}
const auto kMatrixSummary = [](const CNuMatrix& m) {
  return Summary(m.GetRowSize(), [&](int i, int j) { return m.GetData()[i][j]; });
};

// log |det|: pivoting may differ, the determinant may not.
template<class At>
Numbers LogDeterminant(int n, At at) {
  double sum = 0;
  for (int i = 0; i < n; ++i) sum += std::log(std::fabs(at(i, i)));
  return {sum};
}

#ifdef NU_BENCH_EIGEN
using Eigen::MatrixXd;
using Eigen::VectorXd;
const auto kEigen = [](const Block& b) { return bench::ToEigen(b); };
const auto kEigenSummary = [](const MatrixXd& m) {
  return Summary(static_cast<int>(m.rows()), [&](int i, int j) { return m(i, j); });
};
#endif

struct ValuesAndVectors {
  CNuVector values;
  CNuMatrix vectors;
};

struct Singular {
  CNuMatrix u;
  CNuVector w;
  CNuMatrix v;
};

#ifdef NU_BENCH_LAPACK
struct DenseResult {
  MatrixXd left, right;
  VectorXd values;
};
const auto kResultAscending = [](const DenseResult& r) { return Ascending(bench::ToNumbers(r.values)); };

DenseResult LapackSvd(const MatrixXd& a) {
  const int n = static_cast<int>(a.rows());
  MatrixXd work = a;
  DenseResult r{MatrixXd(n, n), MatrixXd(n, n), VectorXd(n)};
  LAPACKE_dgesdd(LAPACK_COL_MAJOR, 'A', n, n, work.data(), n, r.values.data(), r.left.data(), n, r.right.data(), n);
  return r;
}

DenseResult LapackSymmetric(const MatrixXd& a) {
  const int n = static_cast<int>(a.rows());
  DenseResult r{a, MatrixXd(), VectorXd(n)};
  LAPACKE_dsyevd(LAPACK_COL_MAJOR, 'V', 'L', n, r.left.data(), n, r.values.data());
  return r;
}

DenseResult LapackGeneral(const MatrixXd& a) {
  const int n = static_cast<int>(a.rows());
  MatrixXd work = a;
  VectorXd imaginary(n);
  DenseResult r{MatrixXd(), MatrixXd(n, n), VectorXd(n)};
  LAPACKE_dgeev(LAPACK_COL_MAJOR, 'N', 'V', n, work.data(), n, r.values.data(), imaginary.data(), nullptr, 1,
                r.right.data(), n);
  return r;
}

MatrixXd LapackLu(const MatrixXd& a) {
  const int n = static_cast<int>(a.rows());
  MatrixXd lu = a;
  std::vector<int> pivots(static_cast<std::size_t>(n));
  LAPACKE_dgetrf(LAPACK_COL_MAJOR, n, n, lu.data(), n, pivots.data());
  return lu;
}

MatrixXd LapackInverse(const MatrixXd& a) {
  const int n = static_cast<int>(a.rows());
  MatrixXd inverse = a;
  std::vector<int> pivots(static_cast<std::size_t>(n));
  LAPACKE_dgetrf(LAPACK_COL_MAJOR, n, n, inverse.data(), n, pivots.data());
  LAPACKE_dgetri(LAPACK_COL_MAJOR, n, inverse.data(), n, pivots.data());
  return inverse;
}

MatrixXd BlasProduct(const MatrixXd& a) {
  const int n = static_cast<int>(a.rows());
  MatrixXd c(n, n);
  cblas_dgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, n, n, n, 1.0, a.data(), n, a.data(), n, 0.0, c.data(), n);
  return c;
}
#endif

void AskProduct() {
  Question<Block> question("product", kTolerance, General);
  question.Ask(
      "nu", kMatrix, [](const CNuMatrix& a) { return a * a; }, kMatrixSummary);
#ifdef NU_BENCH_EIGEN
  question.Ask(
      "eigen", kEigen, [](const MatrixXd& a) { return MatrixXd(a * a); }, kEigenSummary);
#endif
#ifdef NU_BENCH_LAPACK
  question.Ask("blas", kEigen, BlasProduct, kEigenSummary);
#endif
  question.Over(kSizes);
}

void AskLu() {
  Question<Block> question("lu", kTolerance, General);
  question.Ask(
      "nu", kMatrix,
      [](const CNuMatrix& a) {
        CNuMatrix lu(a);
        CNuIntArray index(0);
        int parity, status;
        lu.LUD(&index, &parity, &status);
        return lu;
      },
      [](const CNuMatrix& m) {
        return LogDeterminant(m.GetRowSize(), [&](int i, int j) { return m.GetData()[i][j]; });
      });
#ifdef NU_BENCH_EIGEN
  const auto logDeterminant = [](const MatrixXd& m) {
    return LogDeterminant(static_cast<int>(m.rows()), [&](int i, int j) { return m(i, j); });
  };
  question.Ask(
      "eigen", kEigen, [](const MatrixXd& a) { return MatrixXd(a.partialPivLu().matrixLU()); }, logDeterminant);
#endif
#ifdef NU_BENCH_LAPACK
  question.Ask("lapack", kEigen, LapackLu, logDeterminant);
#endif
  question.Over(kSizes);
}

void AskInverse() {
  Question<Block> question("inverse", kTolerance, General);
  question.Ask(
      "nu", kMatrix,
      [](const CNuMatrix& a) {
        ENuStatus status = NuStatusNone;
        return CNuMatrix(a).Inverse(&status);
      },
      kMatrixSummary);
#ifdef NU_BENCH_EIGEN
  question.Ask(
      "eigen", kEigen, [](const MatrixXd& a) { return MatrixXd(a.inverse()); }, kEigenSummary);
#endif
#ifdef NU_BENCH_LAPACK
  question.Ask("lapack", kEigen, LapackInverse, kEigenSummary);
#endif
  question.Over(kSizes);
}

void AskSvd() {
  Question<Block> question("svd", kTolerance, General);
  question.Ask(
      "nu", kMatrix,
      [](const CNuMatrix& a) {
        Singular s{a, {}, {}};
        s.u.SVD(&s.w, &s.v);
        return s;
      },
      [](const Singular& s) { return Ascending(bench::ToNumbers(s.w)); });
#ifdef NU_BENCH_EIGEN
  question.Ask(
      "eigen_jacobi", kEigen,
      [](const MatrixXd& a) { return Eigen::JacobiSVD<MatrixXd>(a, Eigen::ComputeThinU | Eigen::ComputeThinV); },
      [](const auto& s) { return Ascending(bench::ToNumbers(VectorXd(s.singularValues()))); }, 10);
  question.Ask(
      "eigen_bdc", kEigen,
      [](const MatrixXd& a) { return Eigen::BDCSVD<MatrixXd>(a, Eigen::ComputeThinU | Eigen::ComputeThinV); },
      [](const auto& s) { return Ascending(bench::ToNumbers(VectorXd(s.singularValues()))); });
#endif
#ifdef NU_BENCH_LAPACK
  question.Ask("lapack", kEigen, LapackSvd, kResultAscending);
#endif
  question.Over(kSizes);
}

const auto kEigenProblem = [](const CNuMatrix& a) {
  ENuStatus status = NuStatusNone;
  ValuesAndVectors r;
  a.EigenValuesVectors(&status, &r.values, &r.vectors);
  return r;
};
const auto kValues = [](const ValuesAndVectors& r) { return Ascending(bench::ToNumbers(r.values)); };

void AskSymmetricEigen() {
  Question<Block> question("eigen_symmetric", kTolerance, [](int n) { return bench::Symmetric(n, 13); });
  question.Ask("nu", kMatrix, kEigenProblem, kValues);
#ifdef NU_BENCH_EIGEN
  question.Ask(
      "eigen", kEigen, [](const MatrixXd& a) { return Eigen::SelfAdjointEigenSolver<MatrixXd>(a); },
      [](const auto& s) { return bench::ToNumbers(s.eigenvalues()); });
#endif
#ifdef NU_BENCH_LAPACK
  question.Ask("lapack", kEigen, LapackSymmetric, kResultAscending);
#endif
  question.Over(kSizes);
}

void AskGeneralEigen() {
  Question<Block> question("eigen_general", kTolerance, General);
  question.Ask("nu", kMatrix, kEigenProblem, kValues);
#ifdef NU_BENCH_EIGEN
  question.Ask(
      "eigen", kEigen, [](const MatrixXd& a) { return Eigen::EigenSolver<MatrixXd>(a); },
      [](const auto& s) { return Ascending(bench::ToNumbers(VectorXd(s.eigenvalues().real()))); });
#endif
#ifdef NU_BENCH_LAPACK
  question.Ask("lapack", kEigen, LapackGeneral, kResultAscending);
#endif
  question.Over(kSizes);
}

const bool kAsked = [] {
  AskProduct();
  AskLu();
  AskInverse();
  AskSvd();
  AskSymmetricEigen();
  AskGeneralEigen();
  return true;
}();

}  // namespace
