// A frame, and points carried into the coordinates of a datum.
#include <nu/nu.h>

#include <cstdio>

int main() {
  CNuCartesianCoord datum;
  datum.SetData(CNuPoint(100.0, 50.0, 0.0), CNuVector(0.0, 1.0, 0.0),
                CNuVector(0.0, 0.0, 1.0));
  CNuPoint origin;
  CNuVector xaxis, zaxis;
  datum.GetData(&origin, &xaxis, &zaxis);

  CNuPointArray points(2);
  points.Add(CNuPoint(100.0, 60.0, 5.0));
  points.Add(CNuPoint(97.0, 50.0, 5.0));
  points.MoveTo(origin, xaxis, zaxis);
  for (int i = 0; i < points.GetSize(); ++i)
    std::printf("%.1f %.1f %.1f\n", points[i].x(), points[i].y(), points[i].z());
}
