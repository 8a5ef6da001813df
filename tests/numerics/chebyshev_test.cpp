#include "nu/numerics/chebyshev.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/failures.h"

namespace {

CNuPolynomial Recursive(int n) {
  CNuPolynomial p(n == 0 ? 0 : 1);
  p[p.GetDegree()] = 1.0;
  return n < 2 ? p : 2.0 * p * Recursive(n - 1) - Recursive(n - 2);
}

TEST(Chebyshev, PolynomialsAreThoseOfTheRecursiveDefinition) {
  for (int n = 0; n <= 16; ++n) {
    EXPECT_TRUE(CNuChebyshevPolynomial(n).ToPolynomial().IsEqual(Recursive(n), 1e-300)) << n;
  }
}

TEST(Chebyshev, CubicIsReproduced) {
  CNuChebyshevPolynomialExpression e(3);
  e.FitMinMax(-1.0, 1.0, [](double x) { return x * x * x; });
  CNuPolynomial cube(3);
  cube[3] = 1.0;
  EXPECT_TRUE(e.ToPolynomial().IsEqual(cube, 1e-15));
  EXPECT_NEAR(e.ValueAt(1.0), 1.0, 1e-15);
  EXPECT_NEAR(e.DerivativeAt(1.0), 3.0, 4e-15);
}

}  // namespace
