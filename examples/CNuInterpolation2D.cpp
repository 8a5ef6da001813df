// The error map of a machine table on a grid of 3 x 3 positions.
#include <nu/nu.h>

#include <cstdio>

int main() {
  CNuDoubleArray x(3), y(3);
  CNuMatrix z(3, 3);
  for (int i = 0; i < 3; ++i) {
    x.Add(100.0 * i);
    y.Add(100.0 * i);
    for (int j = 0; j < 3; ++j)
      z.Element(i, j) = 0.5 * i * i - 0.25 * j + 0.125 * i * j * j;
  }
  const CNuInterpolation2D map(x, y, z);
  std::printf("at 150, 50: bilinear %.4f, bicubic %.4f\n", map.Bilinear(150.0, 50.0),
              map.Bicubic(150.0, 50.0));
}
