// Polar form: products multiply the moduli and add the arguments, which are in radians.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const CNuComplexPolar a = CNuComplex(0.0, 2.0).ToPolarForm();
  std::printf("2i: modulus %.3f, argument %.4f\n", a.Modulus(), a.Argument());
  const CNuComplexPolar product = a * CNuComplexPolar(3.0, Nu_PI / 4.0);
  std::printf("product: modulus %.3f, argument %.4f\n", product.Modulus(),
              product.Argument());
  const CNuComplex cube = a.Power(3).ToCartesianForm();
  std::printf("its cube: imaginary part %.3f\n", cube.i());
}
