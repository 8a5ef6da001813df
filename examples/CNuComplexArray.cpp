// The complex roots of x^3 = 1 as a growable array, then by modulus and argument.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const CNuComplexArray roots = CNuComplex(1.0, 0.0).Roots(3);
  CNuComplexArray kept(2);
  for (int i = 0; i < roots.GetSize(); ++i)
    if (!roots[i].IsReal(1e-12)) kept.Add(roots[i]);
  std::printf("%d of %d are not real: %.4f %+.4f i and its conjugate\n", kept.GetSize(),
              roots.GetSize(), kept.First().r(), kept.First().i());

  CNuComplexPolarArray polar(3);
  for (int i = 0; i < roots.GetSize(); ++i) polar.Add(roots[i].ToPolarForm());
  for (int i = 0; i < polar.GetSize(); ++i)
    std::printf("modulus %.4f, argument %7.4f radians\n", polar[i].Modulus(),
                polar[i].Argument());
}
