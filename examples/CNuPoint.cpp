// Distances, projections and sides of a point.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const CNuPoint p(3.0, 4.0, 12.0);
  const CNuPlane floor(CNuPoint(0.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
  const CNuLine axis(CNuPoint(0.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
  const CNuSphSurf ball(6.5, CNuPoint(0.0, 0.0, 0.0));
  std::printf(
      "to the origin %.3f, to the plane %.3f, to the line %.3f, to the sphere %.3f\n",
      p.DistanceTo(CNuPoint(0.0, 0.0, 0.0)), p.DistanceTo(floor), p.DistanceTo(axis),
      p.DistanceTo(ball));

  const CNuPoint foot = p.ProjectionOn(ball);
  std::printf("closest point of the sphere %.3f %.3f %.3f\n", foot.x(), foot.y(), foot.z());
  std::printf("outside of the sphere: %s\n",
              p.SurfaceSide(ball, 1e-9) == CNuGeometry::SIDE_OUTSIDE ? "yes" : "no");
  const CNuPlane between = p.MidPlane(foot);
  std::printf("the plane half-way is %.3f from the point\n", p.DistanceTo(between));
}
