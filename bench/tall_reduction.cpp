// What does it cost to reduce a tall matrix to its triangle, rows read once?

#include "inputs.h"
#include "nu/engine/linear/tall_qr.h"
#include "question.h"

namespace {

using bench::Block;
using bench::Numbers;
using bench::Question;

constexpr double kTolerance = 1e-8;

// The triangle's rows have no sign of their own; their magnitudes must agree.
template<class At>
Numbers Triangle(int n, At at) {
  Numbers magnitudes;
  for (int i = 0; i < n; ++i) {
    for (int j = i; j < n; ++j) magnitudes.push_back(std::fabs(at(i, j)));
  }
  return magnitudes;
}

void AskTriangle(int columns) {
  Question<Block> question("triangle_" + std::to_string(columns), kTolerance,
                           [=](int rows) { return bench::RandomBlock(rows, columns, 401); });
  question.Ask(
      "nu", [](const Block& block) { return bench::ToMatrix(block); },
      [](const CNuMatrix& a) {
        nu::internal::TallReduction reduction(a.GetColumnSize());
        reduction.AddRows(a.GetData(), nullptr, a.GetRowSize());
        reduction.Finish();
        return reduction;
      },
      [](const nu::internal::TallReduction& reduction) {
        return Triangle(reduction.Columns(), [&](int i, int j) { return reduction.R(i, j); });
      });
#ifdef NU_BENCH_EIGEN
  using Eigen::MatrixXd;
  const auto matrix = [](const Block& block) { return bench::ToEigen(block); };
  const auto triangle = [](const MatrixXd& r) {
    return Triangle(static_cast<int>(r.cols()), [&](int i, int j) { return r(i, j); });
  };
  question.Ask(
      "eigen_qr", matrix, [](const MatrixXd& a) { return MatrixXd(a.householderQr().matrixQR().topRows(a.cols())); },
      triangle);
  // Squares the condition number: an anchor for speed, not for accuracy.
  question.Ask(
      "eigen_cholesky", matrix,
      [](const MatrixXd& a) {
        MatrixXd gram = MatrixXd::Zero(a.cols(), a.cols());
        gram.selfadjointView<Eigen::Lower>().rankUpdate(a.transpose());
        return MatrixXd(gram.llt().matrixU());
      },
      triangle);
#endif
  question.Over({1000, 100000, 1000000});
}

const bool kAsked = [] {
  AskTriangle(4);
  AskTriangle(9);
  return true;
}();

}  // namespace
