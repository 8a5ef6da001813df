// The Chebyshev polynomial of degree 4 in powers of x: 8 x^4 - 8 x^2 + 1.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const CNuPolynomial t = CNuChebyshevPolynomial(4).ToPolynomial();
  std::printf("%.0f %+.0f x^2 %+.0f x^4\n", t[0], t[2], t[4]);
  std::printf("at 1: %.0f\n", t.ValueAt(1.0));
}
