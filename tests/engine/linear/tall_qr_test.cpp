#include "nu/engine/linear/tall_qr.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "support/clouds.h"

namespace {

using namespace nu::test;

using namespace nu::internal;
using Columns = std::vector<std::vector<double>>;

Columns Draw(std::size_t rows, const std::vector<double>& scale, std::uint64_t seed) {
  Random random(seed);
  Columns a(scale.size(), std::vector<double>(rows));
  for (std::size_t j = 0; j < a.size(); ++j) {
    for (double& x : a[j]) x = scale[j] * random.Bell();
  }
  return a;
}

// With the last column as right-hand side, in uneven pieces: only the sequence of the rows may matter.
TallReduction Reduce(const Columns& a, nu::internal::TallReflectors* reflectors = nullptr) {
  const std::size_t rows = a[0].size();
  const std::size_t width = a.size() - 1;
  std::vector<double> elements(rows * width);
  std::vector<const double*> row;
  for (std::size_t i = 0; i < rows; ++i) {
    row.push_back(elements.data() + i * width);
    for (std::size_t j = 0; j < width; ++j) elements[i * width + j] = a[j][i];
  }
  TallReduction reduction(static_cast<int>(a.size()), static_cast<int>(rows));
  reduction.KeepReflectors(reflectors);
  for (std::size_t i = 0, step = 1; i < rows; i += step, step = std::min(3 * step, rows - i)) {
    reduction.AddRows(&row[i], &a[width][i], static_cast<int>(step));
  }
  reduction.Finish();
  return reduction;
}

// R^T R = A^T A, judged column by column, with the products in extended precision.
void ExpectSameGram(std::size_t rows, const std::vector<double>& scale) {
  const Columns a = Draw(rows, scale, rows + scale.size());
  const TallReduction reduction = Reduce(a);
  const int n = reduction.Columns();
  Columns r(n, std::vector<double>(n));
  for (int i = 0; i < n; ++i) {
    for (int j = i; j < n; ++j) r[j][i] = reduction.R(i, j);
  }
  const auto product = [&](const Columns& m, int i, int j) {
    long double sum = 0;
    for (std::size_t k = 0; k < m[0].size(); ++k) {
      sum += static_cast<long double>(m[i][k]) / scale[i] * (static_cast<long double>(m[j][k]) / scale[j]);
    }
    return static_cast<double>(sum);
  };
  for (int i = 0; i < n; ++i) {
    for (int j = i; j < n; ++j) {
      const double size = std::sqrt(product(a, i, i) * product(a, j, j));
      EXPECT_NEAR(product(r, i, j), product(a, i, j), 40 * n * std::numeric_limits<double>::epsilon() * size)
          << i << " " << j << " of " << rows << " x " << n;
    }
  }
}

TEST(TallReduction, KeepsTheGramMatrixForEveryShapeAndSize) {
  for (std::size_t rows : {1, 3, 8, 255, 256, 257, 1000}) {
    for (std::size_t columns : {1, 2, 3, 4, 5, 7, 33}) ExpectSameGram(rows, std::vector<double>(columns, 1.0));
  }
  ExpectSameGram(600, {1e150, 1e-150, 1.0, 1e-300, 1e100});
  ExpectSameGram(600, {1e-160, 1e150, 1e-250, 1e-20, 1.0});
}

// The residual of an almost dependent column is known from its making; normal equations would lose it at 1e-8.
TEST(TallReduction, DoesNotSquareTheCondition) {
  Columns a = Draw(1000, std::vector<double>(4, 1.0), 11);
  const std::vector<double> other = Draw(1000, {1.0}, 12)[0];
  const double expected = std::fabs(Reduce({a[0], a[1], a[2], other}).R(3, 3));
  for (double part : {1e-3, 1e-8, 1e-12}) {
    for (std::size_t i = 0; i < 1000; ++i) a[3][i] = a[0][i] - 2 * a[1][i] + 0.5 * a[2][i] + part * other[i];
    EXPECT_NEAR(std::fabs(Reduce(a).R(3, 3)) / part, expected, 1e-13 / part);
  }
  a[2].assign(1000, 0.0);
  EXPECT_EQ(Reduce(a).R(2, 2), 0.0);
}

TEST(TallReduction, AllRoadsGiveTheSameBits) {
  for (std::size_t rows : {1, 5, 256, 512, 700}) {
    const Columns a = Draw(rows, {1.0, 1e-150, 1.0, 1e8, 1.0}, rows);
    nu::internal::TallReflectors reflectors(4, static_cast<int>(rows));
    const TallReduction expected = Reduce(a, &reflectors);
    double projected[4];
    reflectors.Apply(a[4].data(), projected);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(projected[i], expected.R(i, 4)) << rows;
    TallReduction blocks(5);
    for (std::size_t first = 0; first < rows; first += TallReduction::kBlockRows) {
      const std::size_t count = std::min<std::size_t>(TallReduction::kBlockRows, rows - first);
      for (int j = 0; j < 5; ++j) std::copy_n(&a[j][first], count, blocks.Column(j));
      blocks.AbsorbBlock(static_cast<int>(count));
    }
    for (int i = 0; i < 5; ++i) EXPECT_EQ(blocks.R(i, 4), expected.R(i, 4)) << rows;
  }
}

TEST(TallReduction, PassesOnWhatIsNotFinite) {
  for (double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
    for (std::size_t i : {0, 300, 599}) {
      Columns a = Draw(600, std::vector<double>(5, 1.0), 5);
      a[2][i] = bad;
      const TallReduction r = Reduce(a);
      EXPECT_TRUE(std::isfinite(r.R(0, 0)) && std::isfinite(r.R(1, 1)) && std::isfinite(r.R(0, 1)));
      for (int j = 2; j < 5; ++j) EXPECT_TRUE(std::isnan(r.R(j, j)) && std::isnan(r.R(2, j)));
    }
  }
}

}  // namespace
