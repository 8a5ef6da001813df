// Directions: angle, cross product, rotation, a frame around an axis; and vectors of any
// length.
#include <nu/nu.h>

#include <cstdio>

int main() {
  CNuVector a(1.0, 0.0, 0.0), b(1.0, 1.0, 0.0);
  const CNuVector normal = a * b;  // cross product
  std::printf("angle %.2f degrees, dot product %.2f, normal %.1f %.1f %.1f\n",
              a.AngleWith(b), a % b, normal[0], normal[1], normal[2]);
  a.Rotate(30.0, CNuGeometry::Z_AXIS);
  std::printf("turned by 30 degrees: %.4f %.4f\n", a[0], a[1]);

  CNuVector axis(0.0, 3.0, 4.0), x, y;
  axis.OrthonormalXY(&x, &y);
  std::printf("axis %.2f %.2f %.2f, x %.2f %.2f %.2f\n", axis[0], axis[1], axis[2], x[0],
              x[1], x[2]);

  CNuVector weights(5);
  for (int i = 0; i < weights.GetSize(); ++i) weights[i] = 5.0 - i;
  weights.Sort();
  std::printf("sum %.1f, smallest %.1f, length %.4f\n", weights.Sum(), weights[0],
              weights.Magnitude());
}
