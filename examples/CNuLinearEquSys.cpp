// A square system, and the least-squares line through four points as an overdetermined one.
#include <nu/nu.h>

#include <cstdio>

int main() {
  CNuMatrix a(2, 2);
  a.Element(0, 0) = 2.0;
  a.Element(0, 1) = 1.0;
  a.Element(1, 0) = 1.0;
  a.Element(1, 1) = 3.0;
  CNuVector b(2);
  b[0] = 3.0;
  b[1] = 5.0;
  CNuLinearEquSys exact(0);
  exact.Solve(a, b);
  CNuVector x = exact.GetSolution();
  std::printf("x %.3f, y %.3f\n", x[0], x[1]);

  const double abscissa[] = {0.0, 1.0, 2.0, 3.0}, ordinate[] = {1.1, 2.9, 5.1, 6.9};
  CNuMatrix tall(4, 2);
  CNuVector right(4);
  for (int i = 0; i < 4; ++i) {
    tall.Element(i, 0) = 1.0;
    tall.Element(i, 1) = abscissa[i];
    right[i] = ordinate[i];
  }
  CNuLinearEquSys leastSquares(1);
  leastSquares.Solve(tall, right);
  x = leastSquares.GetSolution();
  std::printf("line %.3f + %.3f x\n", x[0], x[1]);
}
