#ifndef NU_ENGINE_SHAPES_INCIDENCE_H
#define NU_ENGINE_SHAPES_INCIDENCE_H

#include <cfloat>

#include "nu/engine/shapes/vec3.h"

// Where lines, planes, circles and spheres meet and come closest. Directions and normals are unit vectors. Differences
// of points come first, so a common offset cancels.
namespace nu::engine::shapes {

struct Line3 {
  Vec3 At(double t) const { return point + t * direction; }

  Vec3 point;
  Vec3 direction;
};

struct Plane3 {
  double Height(Vec3 p) const { return Dot(p - point, normal); }

  Vec3 point;
  Vec3 normal;
};

struct Circle3 {
  Vec3 centre;
  Vec3 normal;
  double radius = 0.0;
};

struct Sphere3 {
  Vec3 centre;
  double radius = 0.0;
};

struct Cylinder3 {
  Line3 axis;
  double radius = 0.0;
};

// The nappe into which the axis points from the apex. The point of the axis may be near the data when the apex is far
// away.
struct Cone3 {
  Vec3 Apex() const { return axis.At(toApex); }

  Line3 axis;
  double toApex = 0.0;     // along the axis from its point
  double semiAngle = 0.0;  // radians
  // Points behind the apex count from the nappe there; otherwise from the one before it, as if it went on.
  bool bothNappes = false;
};

struct Torus3 {
  Vec3 centre;
  Vec3 axis;
  double majorRadius = 0.0;
  double minorRadius = 0.0;
};

inline double Norm(Vec3 v) {
  return std::sqrt(Dot(v, v));
}

inline double LargestComponent(Vec3 v) {
  return std::max({std::fabs(v.x), std::fabs(v.y), std::fabs(v.z)});
}

inline bool IsFinite(const Line3& l) {
  return IsFinite(l.point) && IsFinite(l.direction);
}
inline bool IsFinite(const Plane3& pl) {
  return IsFinite(pl.point) && IsFinite(pl.normal);
}
inline bool IsFinite(const Circle3& circle) {
  return IsFinite(circle.centre) && IsFinite(circle.normal) && std::isfinite(circle.radius);
}
inline bool IsFinite(const Sphere3& sphere) {
  return IsFinite(sphere.centre) && std::isfinite(sphere.radius);
}
inline bool IsFinite(const Cylinder3& cylinder) {
  return IsFinite(cylinder.axis) && std::isfinite(cylinder.radius);
}

// Coordinates of this size are known to their last place only: no coincidence is told apart below that.
inline double CoincidenceTol(double lengthTol, double size) {
  constexpr double kRoundings = 8.0;  // of two points, their difference, a unit direction and the products
  return std::max(lengthTol, kRoundings * DBL_EPSILON * size);
}

// Directions are parallel when the sine of the angle between them is not above the tolerance.
inline bool IsParallel(double sine, double sineTol) {
  return !(sine > sineTol);
}

// The unit vector across two that are not parallel, along a x b. The product of nearly parallel ones has lost its last
// places; without its part along the first it is at right angles to both again, to rounding.
inline Vec3 UnitAcross(Vec3 a, Vec3 b) {
  return Unit(Rejection(Unit(Cross(a, b)), a));
}

// Where two lines are closest; for parallel ones opposite the point of the first.
struct Approach {
  bool parallel = false;
  double alongFirst = 0.0;
  double alongSecond = 0.0;
  double distance = 0.0;
};
Approach ClosestApproach(const Line3& first, const Line3& second, double sineTol);

// A line across a ball or disk whose centre has the distance h from it, the foot standing opposite the centre: how many
// points it has on the border, and how far they are from the foot.
struct Chord {
  int count = 0;
  double half = 0.0;
};
Chord ChordAt(double h, double radius, double tol);

// Up to two points.
struct Points2 {
  void Add(Vec3 p) { at[count++] = p; }

  int count = 0;
  Vec3 at[2];
};

// In the order of the line.
Points2 Intersect(const Line3& line, const Circle3& circle, double tol);
Points2 Intersect(const Line3& line, const Sphere3& sphere, double tol);
// None for lines that are parallel. `approach` is that of the line to the axis.
Points2 Intersect(const Line3& line, const Cylinder3& cylinder, const Approach& approach, double tol);
// In the order of circle normal x plane normal. None for a circle in the plane.
Points2 Intersect(const Circle3& circle, const Plane3& plane, double tol);
// None for circles that share more than two points. Circles in one plane: first the point to the left of the way from
// centre to centre, seen from the tip of the first normal; else in the order of first normal x second normal.
Points2 Intersect(const Circle3& first, const Circle3& second, double tol);

// The line in which two planes meet, near their points. The sine between the normals must not be zero.
Line3 Intersect(const Plane3& first, const Plane3& second);

}  // namespace nu::engine::shapes

#endif
