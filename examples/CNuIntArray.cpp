// Indices and masks: the points above a limit, picked from a set.
#include <nu/nu.h>

#include <cstdio>

int main() {
  CNuPointArray points(5);
  for (int i = 0; i < 5; ++i) points.Add(CNuPoint(10.0 * i, 0.0, 0.1 * (i % 3)));

  CNuIntArray mask(5);
  for (int i = 0; i < points.GetSize(); ++i) mask.Add(points[i].z() > 0.05 ? 1 : 0);
  const CNuPointArray high = points.SubArray(mask);
  std::printf("%d of %d points are high, the first at x = %.0f\n", mask.Sum(),
              points.GetSize(), high[0].x());
  std::printf("the first low one after the start is number %d\n",
              mask.SubArray(1, 4).Find(0) + 1);
}
