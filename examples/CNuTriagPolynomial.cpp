// A roundness profile by its lobes: harmonics 1 (eccentricity), 2 (oval) and 3.
#include <nu/nu.h>

#include <cstdio>

int main() {
  CNuTriagPolynomial profile(3);
  profile.Cos(0) = 25.000;
  profile.Cos(1) = 0.010;
  profile.Sin(2) = 0.004;
  profile.Cos(3) = -0.002;
  std::printf("radius at 0: %.4f, at a quarter turn: %.4f\n", profile.ValueAt(0.0),
              profile.ValueAt(Nu_PI / 2.0));

  profile.Cos(1) = 0.0;  // centred
  profile.Simplify(0.003);
  std::printf("harmonics above 0.003: up to %d\n", profile.GetDegree());
}
