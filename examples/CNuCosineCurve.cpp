// A cosine through points that lie on one, and its slope.
#include <nu/nu.h>

#include <cmath>
#include <cstdio>

int main() {
  CNuPointArray points(12);
  for (int i = 0; i < 12; ++i)
    points.Add(CNuPoint(i, 3.0 * std::cos(0.7 * i + 0.2) - 1.0, 0.0));
  CNuCosineCurve curve(1.0, 1.0, 0.0, 0.0);
  curve.Fit(points, 100);
  double a = 0.0, b = 0.0, c = 0.0, d = 0.0;
  curve.GetData(&a, &b, &c, &d);
  std::printf("%.4f cos(%.4f x + %.4f) %+.4f\n", a, b, c, d);
  std::printf("at 2.5: %.4f, slope %.4f\n", curve.ValueAt(2.5), curve.DerivativeAt(2.5));
}
