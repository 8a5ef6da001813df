#ifndef NU_TESTS_SUPPORT_OBJECT_DISTANCE_H
#define NU_TESTS_SUPPORT_OBJECT_DISTANCE_H

#include "nu/nu.h"
#include "support/clouds.h"

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

// Some points of it; what has no end is sampled as far as `size`.
inline CNuPointArray PointsOfObject(const CNuObject& object, double size) {
  CNuPointArray points(18);
  if (const auto* circle = dynamic_cast<const CNuCircle*>(&object)) return circle->ToPointArray(17);
  if (const auto* ellipse = dynamic_cast<const CNuEllipse*>(&object)) return ellipse->ToPointArray(17);
  if (const auto* curve = dynamic_cast<const CNuPCurve*>(&object)) return curve->ToPointArray(101);
  if (const auto* point = dynamic_cast<const CNuPoint*>(&object)) points.Add(*point);
  for (const int side : {0, 1}) {
    if (const auto* hyperbola = dynamic_cast<const CNuHyperbola*>(&object))
      points.Append(hyperbola->ToPointArray(9, -3.0, 3.0, side));
    if (const auto* parabola = dynamic_cast<const CNuParabola*>(&object))
      points.Append(parabola->ToPointArray(9, 0.0, size, side));
    if (const auto* line = dynamic_cast<const CNuLine*>(&object))
      points.Add(Along(line->GetPoint(), line->GetDirection(), (0.5 - side) * size));
  }
  return points;
}

}  // namespace nu::test

#endif
