// Products, inverse, determinant, singular values and eigenvalues of a small matrix.
#include <nu/nu.h>

#include <cstdio>

int main() {
  CNuMatrix a(3, 3);
  const double values[3][3] = {{4.0, 1.0, 0.0}, {1.0, 3.0, 1.0}, {0.0, 1.0, 2.0}};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) a.Element(i, j) = values[i][j];

  std::printf("determinant %.6f, trace %.1f, symmetric: %s\n", a.Determinant(), a.Trace(),
              a.IsSymmetric(1e-12) ? "yes" : "no");
  ENuStatus status = NuStatusNone;
  const CNuMatrix product = a * a.Inverse(&status);
  std::printf("a times its inverse is the identity: %s\n",
              product.IsEqual(CNuMatrix::Identity(3), 1e-14) ? "yes" : "no");

  CNuMatrix u(a), v(3, 3);
  CNuVector w(3);
  u.SVD(&w, &v);  // u takes the left vectors, w the singular values
  w.Sort();
  std::printf("singular values %.6f %.6f %.6f\n", w[0], w[1], w[2]);
}
