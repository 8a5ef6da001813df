// Where a roundness profile crosses its mean radius.
#include <nu/nu.h>

#include <cstdio>

int main() {
  CNuTriagPolynomial deviation(2);
  deviation.Cos(1) = 0.002;
  deviation.Sin(2) = 0.005;
  CNuTriagEqu crossings;
  crossings.Solve(deviation);
  const CNuDoubleArray roots = crossings.GetRoots();
  std::printf("%d crossings, in degrees:", crossings.GetNumberRoots());
  for (int i = 0; i < roots.GetSize(); ++i) std::printf(" %.4f", roots[i] * 180.0 / Nu_PI);
  std::printf("\n");
}
