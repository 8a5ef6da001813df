#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "nu/foundation/double_array.h"
#include "nu/numerics/polynomial.h"
#include "support/reference_score.h"

namespace {

class PolynomialReference : public testing::TestWithParam<std::filesystem::path> {};

TEST_P(PolynomialReference, MeetsFullBounds) {
  const nu::test::Json set = nu::test::ReadReference(GetParam());
  const nu::test::Json& points = set["points"];
  CNuDoubleArray x(0), y(0);
  for (std::size_t i = 0; i < points.Size(); ++i) {
    x.Add(points[i][0].Number());
    y.Add(points[i][1].Number());
  }
  const auto expected = set["result"]["coefficients"].Numbers();
  CNuPolynomial p(static_cast<int>(expected.size()) - 1);
  double residualSum = -1.0;
  p.Fit(x, y, &residualSum);

  const double bound = 1024.0 * std::numeric_limits<double>::epsilon() * set["sensitivity"]["coefficients"].Number();
  double largest = 0.0, worst = 0.0;
  for (const double c : expected) largest = std::max(largest, std::fabs(c));
  for (int i = 0; i <= p.GetDegree(); ++i) {
    const double c = expected[static_cast<std::size_t>(i)];
    EXPECT_LE(std::fabs(p[i] - c), c == 0.0 ? 0.0 : bound * largest) << "coefficient " << i;
    worst = std::max(worst, std::fabs(p[i] - c));
  }
  const double sum = set["result"]["residual_sum"].Number();
  EXPECT_LE(std::fabs(residualSum - sum), bound * sum);
  nu::test::Record(set, true, {"coefficients", worst, bound * largest, false});
  nu::test::Record(set, true, {"residual_sum", std::fabs(residualSum - sum), bound * sum, false});
}

INSTANTIATE_TEST_SUITE_P(Published, PolynomialReference,
                         testing::ValuesIn(nu::test::ReferenceFiles("lit-ls-polynomial-")));

}  // namespace
