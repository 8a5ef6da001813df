// Two pipes of different radii meet at right angles: the curves of the joint, point by
// point on both.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const CNuCylSurf wide(5.0, CNuPoint(0.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
  const CNuCylSurf narrow(3.0, CNuPoint(0.0, 0.0, 0.0), CNuVector(1.0, 0.0, 0.0));
  CNuObjArray branches(2);
  wide.IntersectWith(narrow, &branches);
  for (int i = 0; i < branches.GetSize(); ++i) {
    const auto* curve = static_cast<const CNuPCurve*>(branches[i]);
    double worst = 0.0;
    const CNuPointArray points = curve->ToPointArray(100);
    for (int k = 0; k < points.GetSize(); ++k) {
      const CNuPoint p = points[k];
      for (const CNuCylSurf* pipe : {&wide, &narrow}) {
        const double distance = p.DistanceTo(static_cast<const CNuSurface&>(*pipe));
        if (distance > worst) worst = distance;
      }
    }
    std::printf("closed: %d, length %.5f, on both pipes to 1e-14: %s\n", curve->IsClosed(),
                curve->ToPolylineWithin(1e-8).Length(), worst < 1e-14 ? "yes" : "no");
    delete branches[i];
  }
}
