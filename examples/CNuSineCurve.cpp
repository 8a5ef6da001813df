// The waviness of a surface: its period is found without a start value.
#include <nu/nu.h>

#include <cmath>
#include <cstdio>

int main() {
  CNuPointArray profile(40);
  for (int i = 0; i < 40; ++i) {
    const double x = 0.25 * i;
    profile.Add(CNuPoint(
        x, 0.8 * std::sin(2.0 * Nu_PI * x / 3.2 + 0.4) + 5.0 + 0.01 * (i % 3 - 1), 0.0));
  }
  CNuSineCurve wave(1.0, 1.0, 0.0, 0.0);
  double form = 0.0, sumSquares = 0.0;
  wave.Fit(profile, &form, &sumSquares, 100);
  double a = 0.0, b = 0.0, c = 0.0, d = 0.0;
  wave.GetData(&a, &b, &c, &d);
  std::printf("amplitude %.3f, period %.3f, phase %.3f, level %.3f\n", a, wave.Period(), c,
              d);
  std::printf("what is left: %.4f\n", form);
}
