#ifndef NU_TESTS_SUPPORT_OBJECT_DISTANCE_H
#define NU_TESTS_SUPPORT_OBJECT_DISTANCE_H

#include "nu/nu.h"

namespace nu::test {

// From a point to a point, a line or a curve, whichever the object is.
inline double DistanceToObject(const CNuObject& object, const CNuPoint& p) {
  if (const auto* point = dynamic_cast<const CNuPoint*>(&object)) return p.DistanceTo(*point);
  if (const auto* line = dynamic_cast<const CNuLine*>(&object)) return p.DistanceTo(*line);
  if (const auto* ellipse = dynamic_cast<const CNuEllipse*>(&object)) return ellipse->DistanceTo(p);
  if (const auto* hyperbola = dynamic_cast<const CNuHyperbola*>(&object)) return hyperbola->DistanceTo(p);
  if (const auto* parabola = dynamic_cast<const CNuParabola*>(&object)) return parabola->DistanceTo(p);
  if (const auto* curve = dynamic_cast<const CNuPCurve*>(&object)) return curve->DistanceTo(p);
  return p.DistanceTo(dynamic_cast<const CNuCurve&>(object));
}

}  // namespace nu::test

#endif
