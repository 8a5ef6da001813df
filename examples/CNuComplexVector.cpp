// The scalar product of complex vectors conjugates; the operator % does not.
#include <nu/nu.h>

#include <cstdio>

int main() {
  CNuComplexVector v(2);
  v[0] = CNuComplex(1.0, 0.0);
  v[1] = CNuComplex(0.0, 1.0);
  std::printf("length %.4f\n", v.Magnitude());
  std::printf("scalar product %.1f, without conjugation %.1f\n", v.InnerProduct(v).r(),
              (v % v).r());
  v.Normalise();
  std::printf("normalised: %.4f and %.4f i\n", v[0].r(), v[1].i());
}
