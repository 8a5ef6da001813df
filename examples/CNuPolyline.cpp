// The outline of a plate: area, centroid, and where a tool of radius 2 goes around it.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const double corner[][2] = {{0, 0},   {40, 0}, {40, 10}, {10, 10},
                              {10, 30}, {0, 30}, {0, 0}};
  CNuPointArray points(7);
  for (const auto& c : corner) points.Add(CNuPoint(c[0], c[1], 0.0));
  CNuPolyline outline(points);
  const CNuPoint centroid = outline.Centroid();
  std::printf("area %.1f, perimeter %.1f, centroid %.3f %.3f\n", outline.Area(),
              outline.Length(), centroid.x(), centroid.y());

  CNuBoundedCurve* path =
      outline.Offset(2.0, CNuVector(0.0, 0.0, 1.0), 1);  // round corners
  std::printf("the tool's path is %.4f long\n", path->Length());
  delete path;
}
