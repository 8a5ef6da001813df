// All roots of x^4 - 3 x^3 + 2 x^2 + 2 x - 4, real and complex.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const double coefficients[] = {-4.0, 2.0, 2.0, -3.0, 1.0};
  CNuPolynomial p(4);
  for (int i = 0; i <= 4; ++i) p[i] = coefficients[i];

  CNuAlgEqu equation;
  equation.Solve(p);
  const CNuDoubleArray real = equation.GetRealRoots();
  for (int i = 0; i < real.GetSize(); ++i) std::printf("%.12f\n", real[i]);
  const CNuComplexArray pairs = equation.GetComplexRoots();
  for (int i = 0; i < pairs.GetSize(); ++i)
    std::printf("%.12f %+.12f i\n", pairs[i].r(), pairs[i].i());
}
