// Let f be the angle between the plane and the axis a, u the unit vector along the projection of a on the plane and
// v = n x u.
//
// Cylinder. The ellipse about the point where the axis pierces the plane has the semi-axes r / sin f along u and r.
//
// Cone of the semi-angle g, its apex at the signed height H over the plane, F the foot of the apex: the points F + x u
// + y v with
//   K x^2 + 2 H (a.n) cos f x + cos^2 g y^2 + H^2 (cos^2 f - sin^2 g) = 0,   K = sin(f - g) sin(f + g),
// are a conic with the semi-latus rectum |H| tan g. The vertex near the apex,
//   x = -+ |H| cos(f + g) / sin(f + g)   for H (a.n) > 0 or < 0,
// does not depend on K, nor does the focal length |H| tan g / 2 of the parabola K = 0; the semi-axes are
//   |H| sin g cos g / |K| along u,   |H| sin g / sqrt |K|.
// Set out from that vertex, sections of planes that are nearly parallel to a generator stay as accurate next to the
// apex as their far ends let their centres be.

#include "nu/engine/shapes/plane_section.h"

namespace nu::engine::shapes {

namespace {

// The directions in the plane, and the angle between it and the axis.
struct Tilt {
  Tilt(const Plane3& plane, Vec3 axis) : rise(Dot(axis, plane.normal)), sine(std::fabs(rise)) {
    const Vec3 across = Cross(plane.normal, axis);
    cosine = Norm(across);
    if (cosine > 0.0) {
      v = UnitAcross(plane.normal, axis);
    } else {
      const Vec3 size{std::fabs(axis.x), std::fabs(axis.y), std::fabs(axis.z)};
      v = UnitAcross(plane.normal, size.x <= std::max(size.y, size.z) ? Vec3{1.0, 0.0, 0.0} : Vec3{0.0, 1.0, 0.0});
    }
    u = Cross(v, plane.normal);
  }

  double rise;  // signed
  double sine;
  double cosine = 0.0;
  Vec3 u, v;
};

PlaneSection Point(Vec3 p) {
  return {PlaneSection::kPoint, p, {}, 0.0, 0.0, {}};
}

PlaneSection OneLine(Vec3 p, Vec3 direction) {
  return {PlaneSection::kLine, p, direction, 0.0, 0.0, {{p, direction}, {}}};
}

PlaneSection TwoLines(const Line3& first, const Line3& second) {
  return {PlaneSection::kTwoLines, first.point, first.direction, 0.0, 0.0, {first, second}};
}

bool IsLength(double length) {
  return length > 0.0 && std::isfinite(length);
}

PlaneSection Conic(PlaneSection::Kind kind, Vec3 origin, Vec3 x, double a, double b) {
  if (!IsFinite(origin) || !IsLength(a) || !IsLength(b)) return {};
  return {kind, origin, x, a, b, {}};
}

PlaneSection EllipseOrCircle(Vec3 centre, Vec3 x, double a, double b, bool across) {
  if (across || a - b <= CoincidenceTol(0.0, std::max(a, LargestComponent(centre))))
    return Conic(PlaneSection::kCircle, centre, x, b, b);
  return Conic(PlaneSection::kEllipse, centre, x, a, b);
}

double LargestOf(const Plane3& plane, Vec3 p) {
  return std::max(LargestComponent(plane.point), LargestComponent(p));
}

// A plane along the axis, at the place where the point of the plane is.
PlaneSection CutAlong(const Plane3& plane, const Line3& axis, const Tilt& tilt, double radius, double tol) {
  const Vec3 beside = axis.At(Dot(plane.point - axis.point, axis.direction));
  const double height = plane.Height(beside);
  const Vec3 middle = beside - height * plane.normal;
  const Chord chord = ChordAt(std::fabs(height), radius, tol);
  if (chord.count == 0) return {};
  if (chord.count == 1) return OneLine(middle, tilt.u);
  return TwoLines({middle - chord.half * tilt.v, tilt.u}, {middle + chord.half * tilt.v, tilt.u});
}

PlaneSection CutThroughApex(const DoubleCone& cone, const Tilt& tilt, double lead, double K, double sineTol) {
  if (IsParallel(std::fabs(lead), sineTol)) return OneLine(cone.apex, tilt.u);
  if (K > 0.0) return Point(cone.apex);
  const Vec3 along = (cone.cosine / tilt.cosine) * tilt.u;
  const Vec3 apart = (std::sqrt(-K) / tilt.cosine) * tilt.v;
  return TwoLines({cone.apex, Unit(along - apart)}, {cone.apex, Unit(along + apart)});
}

}  // namespace

PlaneSection Cut(const Plane3& plane, const Line3& axis, double radius, double lengthTol, double sineTol) {
  const Tilt tilt(plane, axis.direction);
  if (IsParallel(tilt.sine, sineTol)) {
    const double tol = CoincidenceTol(lengthTol, std::max(radius, LargestOf(plane, axis.point)));
    return CutAlong(plane, axis, tilt, radius, tol);
  }
  const Vec3 pierced = axis.At(-plane.Height(axis.point) / tilt.rise);
  return EllipseOrCircle(pierced, tilt.u, radius / tilt.sine, radius, IsParallel(tilt.cosine, sineTol));
}

PlaneSection Cut(const Plane3& plane, const DoubleCone& cone, double lengthTol, double sineTol) {
  const Tilt tilt(plane, cone.axis);
  const double tol = CoincidenceTol(lengthTol, LargestOf(plane, cone.apex));
  const double height = plane.Height(cone.apex);
  const double H = std::fabs(height);
  const double lead = tilt.sine * cone.cosine - tilt.cosine * cone.sine;
  const double sum = tilt.sine * cone.cosine + tilt.cosine * cone.sine;
  const double K = lead * sum;
  if (!std::isfinite(height)) return {};
  if (!(H > tol)) return CutThroughApex(cone, tilt, lead, K, sineTol);

  const Vec3 foot = cone.apex - height * plane.normal;
  const double side = std::copysign(1.0, height * tilt.rise);
  const double nearVertex = -side * H * (tilt.cosine * cone.cosine - tilt.sine * cone.sine) / sum;
  const Vec3 vertex = foot + nearVertex * tilt.u;
  if (IsParallel(std::fabs(lead), sineTol)) {
    const double f = 0.5 * H * (cone.sine / cone.cosine);
    return Conic(PlaneSection::kParabola, vertex, -side * tilt.u, f, f);
  }
  const double a = H * cone.sine * (cone.cosine / std::fabs(K));
  const double b = H * (cone.sine / std::sqrt(std::fabs(K)));
  if (K < 0.0) return Conic(PlaneSection::kHyperbola, vertex + (side * a) * tilt.u, tilt.u, a, b);
  return EllipseOrCircle(vertex - (side * a) * tilt.u, tilt.u, a, b, IsParallel(tilt.cosine, sineTol));
}

}  // namespace nu::engine::shapes
