#ifndef NU_TESTS_SUPPORT_FITTED_H
#define NU_TESTS_SUPPORT_FITTED_H

#include "nu/nu.h"

// The features behind one form, and their least-squares fits behind one call.
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

inline void Read(const CNuLine& line, Fitted& f) {
  line.GetData(&f.place, &f.axis);
}
inline void Read(const CNuPlane& plane, Fitted& f) {
  plane.GetData(&f.place, &f.axis);
}
inline void Read(const CNuCircle& circle, Fitted& f) {
  circle.GetData(&f.radius, &f.place, &f.axis);
}
inline void Read(const CNuSphSurf& sphere, Fitted& f) {
  sphere.GetData(&f.radius, &f.place);
}
inline void Read(const CNuCylSurf& cylinder, Fitted& f) {
  cylinder.GetData(&f.radius, &f.place, &f.axis);
}
inline void Read(const CNuConSurf& cone, Fitted& f) {
  cone.GetData(&f.angle, &f.place, &f.axis);
}

inline Fitted FitOf(Feature feature, const CNuPointArray& points, long limit = 1000) {
  Fitted f;
  const auto fit = [&](auto&& object, auto... limits) {
    object.Fit(points, &f.form, &f.sumsq, limits...);
    Read(object, f);
  };
  switch (feature) {
    case kLine:
      fit(CNuLine());
      break;
    case kPlane:
      fit(CNuPlane());
      break;
    case kCircle:
      fit(CNuCircle(1.0), limit);
      break;
    case kSphere:
      fit(CNuSphSurf(1.0), limit);
      break;
    case kCylinder:
      fit(CNuCylSurf(1.0), limit);
      break;
    case kCone:
      fit(CNuConSurf(1.0), limit);
      break;
  }
  return f;
}

}  // namespace nu::test

#endif
