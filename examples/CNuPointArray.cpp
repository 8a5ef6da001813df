// What a set of points tells before any fit: mean, extent, longest edge, convex hull,
// duplicates.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const double xy[][2] = {{0, 0}, {40, 0}, {40, 30}, {0, 30}, {20, 15}, {40, 30}, {10, 5}};
  CNuPointArray points(8);
  for (const auto& p : xy) points.Add(CNuPoint(p[0], p[1], 0.0));
  points.RemoveDuplicate(1e-6);
  std::printf("%d different points\n", points.GetSize());

  const CNuPoint mean = points.MeanPoint();
  std::printf("mean %.3f %.3f\n", mean.x(), mean.y());
  int m = 0, n = 0;
  const double longest = points.MaxEdge(&m, &n);
  std::printf("longest edge %.1f, between points %d and %d\n", longest, m, n);

  CNuIntArray hull(4);
  points.ConvexHull(&hull);
  std::printf("hull:");
  for (int i = 0; i < hull.GetSize(); ++i) std::printf(" %d", hull[i]);
  std::printf("\n");
}
