#ifndef NU_TESTS_SUPPORT_FITTED_H
#define NU_TESTS_SUPPORT_FITTED_H

#include "nu/nu.h"

// The least-squares fits of all features behind one call.
namespace nu::test {

enum Feature { kLine, kPlane, kCircle, kSphere, kCylinder, kCone };
inline constexpr const char* kClassNames[] = {"CNuLine",    "CNuPlane",   "CNuCircle",
                                              "CNuSphSurf", "CNuCylSurf", "CNuConSurf"};

struct Fitted {
  CNuPoint place;  // point, centre, axis point; of a cone the apex
  CNuVector axis;  // direction or normal; of a sphere (0, 0, 0)
  double radius = 0.0;
  double angle = 0.0;  // semi-angle in degrees
  double form = -1.0;
  double sumsq = -1.0;
};

inline Fitted FitOf(Feature feature, const CNuPointArray& points, long limit = 1000) {
  Fitted f;
  CNuLine line;
  CNuPlane plane;
  CNuCircle circle(1.0);
  CNuSphSurf sphere(1.0);
  CNuCylSurf cylinder(1.0);
  CNuConSurf cone(1.0);
  switch (feature) {
    case kLine:
      line.Fit(points, &f.form, &f.sumsq), line.GetData(&f.place, &f.axis);
      break;
    case kPlane:
      plane.Fit(points, &f.form, &f.sumsq), plane.GetData(&f.place, &f.axis);
      break;
    case kCircle:
      circle.Fit(points, &f.form, &f.sumsq, limit), circle.GetData(&f.radius, &f.place, &f.axis);
      break;
    case kSphere:
      sphere.Fit(points, &f.form, &f.sumsq, limit), sphere.GetData(&f.radius, &f.place);
      break;
    case kCylinder:
      cylinder.Fit(points, &f.form, &f.sumsq, limit), cylinder.GetData(&f.radius, &f.place, &f.axis);
      break;
    case kCone:
      cone.Fit(points, &f.form, &f.sumsq, limit), cone.GetData(&f.angle, &f.place, &f.axis);
      break;
  }
  return f;
}

}  // namespace nu::test

#endif
