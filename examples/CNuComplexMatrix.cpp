// The eigenvalues of a rotation by 30 degrees lie on the unit circle; its Schur form is
// unitary.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const CNuComplexMatrix turn(
      CNuGeometry::RotationMatrix(30.0, CNuGeometry::Z_AXIS).SubMatrix(0, 1, 0, 1));
  const CNuComplexVector values = turn.EigenValues();
  for (int i = 0; i < values.GetSize(); ++i)
    std::printf("eigenvalue %.4f, imaginary part %.4f in magnitude\n", values[i].r(),
                values[i].i() < 0.0 ? -values[i].i() : values[i].i());

  CNuComplexMatrix q(2, 2), t(2, 2);
  turn.Schur(&q, &t);
  std::printf("unitary: %s, rebuilt: %s\n", q.IsUnitary(1e-14) ? "yes" : "no",
              (q * t * q.ConjugateTranspose()).IsEqual(turn, 1e-14) ? "yes" : "no");
}
