// The exponential function on [0, 1] by a polynomial of degree 5, nearly the best in the
// largest error.
#include <nu/nu.h>

#include <cmath>
#include <cstdio>

static double Exponential(double x) {
  return std::exp(x);
}

int main() {
  CNuChebyshevPolynomialExpression expression(5);
  expression.FitMinMax(0.0, 1.0, Exponential);
  double largest = 0.0;
  for (int i = 0; i <= 1000; ++i)
    largest = std::fmax(largest,
                        std::fabs(expression.ValueAt(0.001 * i) - Exponential(0.001 * i)));
  std::printf("largest error %.2e\n", largest);
  std::printf("value %.6f, derivative %.5f at 0.5\n", expression.ValueAt(0.5),
              expression.DerivativeAt(0.5));
  const CNuPolynomial powers = expression.ToPolynomial();
  std::printf("in powers of x: %.5f %+.5f x ...\n", powers[0], powers[1]);
}
