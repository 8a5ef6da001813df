// Circles against lines, planes and circles, and their points.

#include <cmath>

#include "nu/curves/circle.h"
#include "nu/curves/internal/sampling.h"
#include "nu/curves/polyline.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/numeric_helpers.h"
#include "nu/geometry/internal/feature_data.h"
#include "nu/geometry/point_array.h"

using namespace nu::internal;

int CNuCircle::IntersectWith(const CNuLine& l, CNuPoint* p1, CNuPoint* p2) const {
  return l.IntersectWith(*this, p1, p2);
}

int CNuCircle::IntersectWith(const CNuCircle& circle, CNuPoint* p1, CNuPoint* p2) const {
  constexpr const char* where = "CNuCircle::IntersectWith(CNuCircle)";
  const auto [first, second] = FiniteData(where, DataOf(*this), DataOf(circle));
  const double size = std::fmax(first.radius, second.radius);
  return Store(Intersect(first, second, TouchTol(size, first.centre, second.centre)), p1, p2, where);
}

int CNuCircle::IntersectWith(const CNuPlane& pl, CNuPoint* p1, CNuPoint* p2) const {
  constexpr const char* where = "CNuCircle::IntersectWith(CNuPlane)";
  const auto [circle, plane] = FiniteData(where, DataOf(*this), DataOf(pl));
  return Store(Intersect(circle, plane, TouchTol(circle.radius, circle.centre, plane.point)), p1, p2, where);
}

// Each point from its own angle: a chain of rotations would carry the roundings of a million steps to the last one.
CNuPointArray CNuCircle::ToPointArray(int n) const {
  RequireSamples(n, "CNuCircle::ToPolyline/PointArray()");
  const Frame frame = GetFrame();
  const Vec3 origin = Components(frame.origin);
  const Vec3 x = Components(frame.xaxis);
  const Vec3 y = Cross(Components(frame.zaxis), x);
  CNuPointArray points(n);
  for (int i = 0; i < n - 1; ++i) {
    double c = 0.0;
    double s = 0.0;
    NuCosSin(i * (Nu_2PI / (n - 1)), &c, &s);
    points.Add(ToPoint(origin + m_radius * c * x + m_radius * s * y));
  }
  points.Add(points[0]);
  return points;
}

CNuPolyline CNuCircle::ToPolyline(int n) const {
  return CNuPolyline(ToPointArray(n));
}
