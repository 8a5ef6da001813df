// The focal length of a mirror from a profile of it.
#include <nu/nu.h>

#include <cstdio>

int main() {
  CNuPointArray profile(11);
  for (int i = -5; i <= 5; ++i) {
    const double y = 20.0 * i;
    profile.Add(CNuPoint(y * y / (4.0 * 250.0) + (i % 2 == 0 ? 0.0002 : -0.0002), y, 0.0));
  }
  CNuParabola mirror(100.0);
  double form = 0.0, sumSquares = 0.0;
  mirror.Fit(profile, &form, &sumSquares, 100);
  std::printf("focal length %.2f, form %.5f\n", mirror.GetFocalLength(), form);
  std::printf("vertex at %.3f\n", mirror.GetVertex().x());
}
