// A calibration curve: least squares through measured values, its value and its slope.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const double at[] = {0.0, 1.0, 2.0, 3.0, 4.0, 5.0},
               seen[] = {0.01, 1.12, 2.41, 3.92, 5.58, 7.51};
  CNuDoubleArray x(6), y(6);
  for (int i = 0; i < 6; ++i) {
    x.Add(at[i]);
    y.Add(seen[i]);
  }
  CNuPolynomial curve(2);
  double residualSum = 0.0;
  curve.Fit(x, y, &residualSum);
  std::printf("%.4f %+.4f x %+.4f x^2, sum of squares %.6f\n", curve[0], curve[1], curve[2],
              residualSum);
  std::printf("at 2.5: %.4f, slope %.4f\n", curve.ValueAt(2.5), curve.DerivativeAt(2.5));

  CNuPolynomial factor(1);
  factor[0] = -1.0;
  factor[1] = 1.0;
  std::printf("times (x - 1): degree %d\n", (curve * factor).GetDegree());
}
