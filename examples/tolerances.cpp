// The length tolerance decides what counts as touching. Each thread has its own; a scope
// object restores it.
#include <nu/nu.h>

#include <cstdio>

struct LengthTolerance {
  explicit LengthTolerance(double tol) : before(NuGetLengthTol()) { NuSetLengthTol(tol); }
  LengthTolerance(const LengthTolerance&) = delete;
  LengthTolerance& operator=(const LengthTolerance&) = delete;
  ~LengthTolerance() { NuSetLengthTol(before); }
  double before;
};

int main() {
  const CNuCircle circle(10.0);
  const CNuLine nearly(CNuPoint(0.0, 10.000001, 0.0),
                       CNuVector(1.0, 0.0, 0.0));  // 1 nm above, in millimetres
  CNuPoint p1, p2;
  std::printf("within %g: %d common points\n", NuGetLengthTol(),
              circle.IntersectWith(nearly, &p1, &p2));
  {
    const LengthTolerance coarse(1e-5);
    std::printf("within %g: %d common point\n", NuGetLengthTol(),
                circle.IntersectWith(nearly, &p1, &p2));
  }
  std::printf("afterwards: %g\n", NuGetLengthTol());
}
