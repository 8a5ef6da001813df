// Quotient, square root and the cube roots of a complex number.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const CNuComplex a(3.0, 4.0), b(1.0, -2.0);
  const CNuComplex quotient = a / b, root = a.Sqrt();
  std::printf("modulus %.3f, quotient %.3f %+.3f i, root %.3f %+.3f i\n", a.Modulus(),
              quotient.r(), quotient.i(), root.r(), root.i());

  const CNuComplexArray roots = CNuComplex(0.0, 8.0).Roots(3);
  for (int k = 0; k < 2; ++k)
    std::printf("cube root of 8i: %.4f %+.4f i\n", roots[k].r(), roots[k].i());
}
