// Motions of a feature, and the matrix between its own frame and the global one.
#include <nu/nu.h>

#include <cstdio>

int main() {
  CNuCylSurf pin(4.0);  // around the z axis, without a position
  pin.Rotate(90.0, CNuGeometry::X_AXIS);
  pin.Translate(10.0, 0.0, 20.0);
  const CNuVector axis = pin.GetAxisDirection();
  std::printf("position set: %d, axis along y: %d\n", pin.IsPositionSet(),
              axis.IsParallelTo(CNuVector(0.0, 1.0, 0.0), 1e-9));

  // A local point as a row with a fourth 1, times the transformation, is the global one.
  const CNuVector global = CNuPoint(4.0, 0.0, 1.0).To4DVector() * pin.GetTransformation();
  std::printf("local 4 0 1 is on the pin: %.12f from it\n",
              CNuPoint(global[0], global[1], global[2])
                  .DistanceTo(static_cast<const CNuSurface&>(pin)));
}
