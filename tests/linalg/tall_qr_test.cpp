#include "nu/linalg/internal/tall_qr.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "support/clouds.h"

namespace {

using nu::internal::TallReduction;
using nu::test::Random;
using Columns = std::vector<std::vector<double>>;

TallReduction Reduce(const Columns& a) {
  const std::size_t rows = a[0].size();
  std::vector<double> block(rows * a.size());
  std::vector<const double*> row;
  for (std::size_t i = 0; i < rows; ++i) {
    for (std::size_t j = 0; j < a.size(); ++j) block[i * a.size() + j] = a[j][i];
    row.push_back(&block[i * a.size()]);
  }
  TallReduction reduction(static_cast<int>(a.size()));
  // In uneven pieces: only the sequence of the rows may matter.
  for (std::size_t i = 0, step = 1; i < rows; i += step, step = std::min(3 * step, rows - i)) {
    reduction.AddRows(&row[i], nullptr, static_cast<int>(std::min(step, rows - i)));
  }
  reduction.Finish();
  return reduction;
}

Columns Draw(std::size_t rows, std::size_t columns, std::uint64_t seed) {
  Random random(seed);
  Columns a(columns, std::vector<double>(rows));
  for (auto& column : a) {
    for (double& x : column) x = random.Bell();
  }
  return a;
}

// R^T R = A^T A, judged column by column: |difference| <= bound |a_i| |a_j|, with the products in extended precision.
void ExpectSameGram(const Columns& a, const TallReduction& reduction, const std::vector<double>& scale) {
  const int n = reduction.Columns();
  const auto product = [&](int i, int j) {
    long double sum = 0;
    for (std::size_t r = 0; r < a[0].size(); ++r)
      sum += static_cast<long double>(a[i][r]) / scale[i] * a[j][r] / scale[j];
    return sum;
  };
  for (int i = 0; i < n; ++i) {
    for (int j = i; j < n; ++j) {
      long double sum = 0;
      for (int k = 0; k <= i; ++k) {
        sum += static_cast<long double>(reduction.R(k, i)) / scale[i] * reduction.R(k, j) / scale[j];
      }
      const double bound = 40 * std::numeric_limits<double>::epsilon() * n;
      EXPECT_NEAR(static_cast<double>(sum - product(i, j)), 0.0,
                  bound * std::sqrt(static_cast<double>(product(i, i) * product(j, j))))
          << i << " " << j << " of " << a[0].size() << " x " << n;
    }
  }
}

TEST(TallReduction, KeepsTheGramMatrixOfEveryShape) {
  for (std::size_t rows : {1, 3, 8, 255, 256, 257, 1000}) {
    for (std::size_t columns : {1, 2, 3, 4, 5, 7, 10, 33}) {
      const Columns a = Draw(rows, columns, 100 * rows + columns);
      ExpectSameGram(a, Reduce(a), std::vector<double>(columns, 1.0));
    }
  }
}

TEST(TallReduction, KeepsColumnsOfAnySize) {
  for (const std::vector<double>& scale :
       {std::vector<double>{1e150, 1e-150, 1.0, 1e-300, 1e100}, {1e-160, 1e150, 1e-250, 1e-20, 1.0}}) {
    Columns a = Draw(600, scale.size(), 7);
    for (std::size_t j = 0; j < scale.size(); ++j) {
      for (double& x : a[j]) x *= scale[j];
    }
    ExpectSameGram(a, Reduce(a), scale);
  }
}

// The residual of an almost dependent column is known from its making; normal equations would lose it at 1e-8.
TEST(TallReduction, DoesNotSquareTheCondition) {
  Columns a = Draw(1000, 4, 11);
  const Columns other = Draw(1000, 1, 12);
  const TallReduction plain = Reduce({a[0], a[1], a[2], other[0]});
  for (double part : {1e-3, 1e-8, 1e-12}) {
    for (std::size_t i = 0; i < 1000; ++i) a[3][i] = a[0][i] - 2 * a[1][i] + 0.5 * a[2][i] + part * other[0][i];
    EXPECT_NEAR(std::fabs(Reduce(a).R(3, 3)) / part, std::fabs(plain.R(3, 3)), 1e-13 / part);
  }
  for (std::size_t i = 0; i < 1000; ++i) a[2][i] = 0.0;
  EXPECT_EQ(Reduce(a).R(2, 2), 0.0);
}

TEST(TallReduction, CarriesRightHandSidesAndBlocks) {
  Columns a = Draw(700, 4, 3);
  TallReduction blocks(4);
  for (int first = 0; first < 700; first += TallReduction::kBlockRows) {
    const int rows = std::min(TallReduction::kBlockRows, 700 - first);
    for (int j = 0; j < 4; ++j) std::copy_n(&a[j][first], rows, blocks.Column(j));
    blocks.AbsorbBlock(rows);
  }
  std::vector<double> rowMajor;
  std::vector<const double*> row;
  for (int i = 0; i < 700; ++i) rowMajor.insert(rowMajor.end(), {a[0][i], a[1][i], a[2][i]});
  for (int i = 0; i < 700; ++i) row.push_back(&rowMajor[3 * i]);
  TallReduction withRhs(4);
  withRhs.AddRows(row.data(), a[3].data(), 700);
  withRhs.Finish();
  for (int i = 0; i < 4; ++i) {
    for (int j = i; j < 4; ++j) EXPECT_EQ(blocks.R(i, j), withRhs.R(i, j));
  }
}

TEST(TallReduction, ReflectorsTreatLaterRightHandSidesAlike) {
  for (std::size_t rows : {1, 5, 256, 512, 700}) {
    Columns a = Draw(rows, 5, rows);
    for (double& x : a[1]) x *= 1e-150;
    std::vector<const double*> row;
    std::vector<double> rowMajor;
    for (std::size_t i = 0; i < rows; ++i) rowMajor.insert(rowMajor.end(), {a[0][i], a[1][i], a[2][i], a[3][i]});
    for (std::size_t i = 0; i < rows; ++i) row.push_back(&rowMajor[4 * i]);
    const int count = static_cast<int>(rows);
    TallReduction reduction(5, count);
    nu::internal::TallReflectors reflectors(4, count);
    reduction.KeepReflectors(&reflectors);
    reduction.AddRows(row.data(), a[4].data(), count);
    reduction.Finish();
    double projected[4];
    reflectors.Apply(a[4].data(), projected);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(projected[i], reduction.R(i, 4)) << rows;
  }
}

TEST(TallReduction, PassesOnWhatIsNotFinite) {
  for (double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    for (std::size_t i : {0, 300, 599}) {
      Columns a = Draw(600, 5, 5);
      a[2][i] = bad;
      const TallReduction r = Reduce(a);
      EXPECT_TRUE(std::isfinite(r.R(0, 0)) && std::isfinite(r.R(1, 1)) && std::isfinite(r.R(0, 1)));
      EXPECT_TRUE(std::isnan(r.R(2, 2)) && std::isnan(r.R(3, 3)) && std::isnan(r.R(4, 4)) && std::isnan(r.R(2, 4)));
    }
  }
}

}  // namespace
