#ifndef NU_ENGINE_SHAPES_CONICS_H
#define NU_ENGINE_SHAPES_CONICS_H

#include "nu/engine/shapes/incidence.h"
#include "nu/engine/shapes/plane_axes.h"

// The conics in their own frames: x^2/a^2 + y^2/b^2 = 1 with a >= b, x^2/a^2 - y^2/b^2 = 1, and y^2 = 4 f x.
namespace nu::engine::shapes {

struct Ellipse2 {
  static constexpr bool kIsBounded = true;
  double a = 1.0;
  double b = 1.0;

  bool Holds(Vec2 p) const;  // p is inside
  double Size() const { return a; }
};

struct Hyperbola2 {
  static constexpr bool kIsBounded = false;
  double a = 1.0;
  double b = 1.0;

  bool Holds(Vec2 p) const;  // p is on the focal side of either branch
  double Size() const { return std::fmax(a, b); }
};

struct Parabola2 {
  static constexpr bool kIsBounded = false;
  double f = 1.0;

  bool Holds(Vec2 p) const;  // p is on the side of the focus
  double Size() const { return f; }
};

// The closest point of the curve, for any finite p; of several as close one of them. On the evolute, on the axes and
// next to them it is as accurate as elsewhere.
Vec2 FootOn(const Ellipse2& curve, Vec2 p);
Vec2 FootOn(const Hyperbola2& curve, Vec2 p);
Vec2 FootOn(const Parabola2& curve, Vec2 p);

// A line in the plane of a conic: offset * (-d.y, d.x) + s d for all s, with d of unit length.
struct Line2 {
  Vec2 direction;
  double offset = 0.0;
};

// Where on the line common points lie, ascending.
struct Crossings {
  int count = 0;
  double s[2] = {};
};

// A line touches when the tangent beside it is no farther away than `tol`. One that is parallel to an asymptote or to
// the axis of a parabola within `sineTol` crosses once; an asymptote does not cross.
Crossings Intersect(const Line2& line, const Ellipse2& curve, double tol, double sineTol);
Crossings Intersect(const Line2& line, const Hyperbola2& curve, double tol, double sineTol);
Crossings Intersect(const Line2& line, const Parabola2& curve, double tol, double sineTol);

// A conic in space: in its own frame in a plane.
template<class Curve>
struct Conic3 : PlaneAxes {
  double Height(Vec3 p) const { return Dot(p - origin, Normal()); }

  Curve curve;
};

// The same line within the plane; what leaves the plane is dropped.
template<class Curve>
Points2 IntersectInPlane(const Line3& line, const Conic3<Curve>& conic, double tol, double sineTol) {
  Points2 points;
  const Vec2 through = conic.Local(line.point);
  const Vec2 along = conic.LocalDirection(line.direction);
  const double length = std::sqrt(Dot(along, along));
  if (!(length > 0.0)) return points;
  const Vec2 d = (1.0 / length) * along;
  const double offset = Cross(d, through);
  const Crossings crossings = Intersect(Line2{d, offset}, conic.curve, tol, sineTol);
  for (int i = 0; i < crossings.count; ++i) points.Add(conic.Global(offset * Perpendicular(d) + crossings.s[i] * d));
  return points;
}

template<class Curve>
bool IsFinite(const Conic3<Curve>& conic) {
  return IsFinite(conic.origin) && IsFinite(conic.x) && IsFinite(conic.y);
}

// Out of its plane, a conic without an end meets nothing that is parallel to that: where rounding lets them cross is as
// far away as the angle between them is small. An ellipse does not reach that far.
template<class Curve>
bool IsOutOfReach(double sine, double sineTol) {
  return sine == 0.0 || (!Curve::kIsBounded && IsParallel(sine, sineTol));
}

// A line or plane counts as in the plane of a conic when it is within the tolerance of it as far from the origin of the
// conic as its larger semi-axis or its focal length; that asks for no tolerance of angles.
template<class Curve>
bool IsInPlane(const Conic3<Curve>& conic, double height, double slope, double tol) {
  return std::fabs(height) + conic.curve.Size() * std::fabs(slope) <= tol;
}

// In the order of the line.
template<class Curve>
Points2 Intersect(const Line3& line, const Conic3<Curve>& conic, double tol, double sineTol) {
  Points2 points;
  const double slope = Dot(line.direction, conic.Normal());
  const Line3 near{line.At(Dot(conic.origin - line.point, line.direction)), line.direction};
  const double height = conic.Height(near.point);
  if (IsInPlane(conic, height, slope, tol)) return IntersectInPlane(near, conic, tol, sineTol);
  if (IsOutOfReach<Curve>(std::fabs(slope), sineTol)) return points;
  const Vec3 p = near.At(-height / slope);
  const Vec2 inPlane = conic.Local(p);
  const Vec2 offset = inPlane - FootOn(conic.curve, inPlane);
  if (std::sqrt(Dot(offset, offset)) <= tol) points.Add(p);
  return points;
}

// In the order of conic normal x plane normal. None for a conic in the plane.
template<class Curve>
Points2 Intersect(const Conic3<Curve>& conic, const Plane3& plane, double tol, double sineTol) {
  const Vec3 normal = conic.Normal();
  const double sine = Norm(Cross(normal, plane.normal));
  const double height = plane.Height(conic.origin);
  if (IsInPlane(conic, height, sine, tol) || IsOutOfReach<Curve>(sine, sineTol)) return {};
  const Vec3 along = UnitAcross(normal, plane.normal);
  const Vec3 uphill = Cross(along, normal);
  const Line3 trace{conic.origin - (height / sine) * uphill, along};
  return IntersectInPlane(trace, conic, tol, sineTol);
}

}  // namespace nu::engine::shapes

#endif
