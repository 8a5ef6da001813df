#include "nu/engine/shapes/incidence.h"

#include <utility>

namespace nu::engine::shapes {

namespace {

double Sine(Vec3 a, Vec3 b) {
  return Norm(Cross(a, b));
}

Points2 OnLine(const Line3& line, double foot, const Chord& chord) {
  Points2 points;
  if (chord.count == 1) points.Add(line.At(foot));
  if (chord.count == 2) {
    points.Add(line.At(foot - chord.half));
    points.Add(line.At(foot + chord.half));
  }
  return points;
}

bool IsOn(Vec3 p, const Circle3& circle, double tol) {
  return std::fabs(Dot(p - circle.centre, circle.normal)) <= tol &&
         std::fabs(Norm(p - circle.centre) - circle.radius) <= tol;
}

// A line across the plane of the circle. A flat one that passes the circle within the tolerance may pierce the plane
// far from it, but not the sphere around the circle.
Points2 Pierce(const Line3& line, const Circle3& circle, double height, double slope, double tol) {
  Points2 points;
  if (slope == 0.0) return points;
  const Vec3 p = line.At(-height / slope);
  if (IsOn(p, circle, tol)) {
    points.Add(p);
    return points;
  }
  const Points2 onSphere = Intersect(line, Sphere3{circle.centre, circle.radius}, tol);
  for (int i = 0; i < onSphere.count; ++i) {
    if (IsOn(onSphere.at[i], circle, tol)) points.Add(onSphere.at[i]);
  }
  return points;
}

// Circles in one plane, d and `direction` the distance and direction from centre to centre. The triangle of both radii
// and d has the height that Heron's formula gives in factors, none of which cancels but the one that vanishes.
Points2 IntersectInPlane(const Circle3& first, const Circle3& second, double tol) {
  Points2 points;
  const double r1 = first.radius;
  const double r2 = second.radius;
  const Vec3 between = Rejection(second.centre - first.centre, first.normal);
  const double d = Norm(between);
  if (!(d > tol) || d > r1 + r2 + tol || d < std::fabs(r1 - r2) - tol) return points;
  const Vec3 direction = (1.0 / d) * between;
  if (std::fabs(d - (r1 + r2)) <= tol || std::fabs(d - std::fabs(r1 - r2)) <= tol) {
    const bool behind = d < r2 && r1 < r2;
    points.Add(first.centre + (behind ? -r1 : r1) * direction);
    return points;
  }
  const double along = 0.5 * (d + (r1 - r2) * ((r1 + r2) / d));
  const double across = std::sqrt((r1 + r2 + d) * (r1 + r2 - d)) * std::sqrt((d - r1 + r2) * (d + r1 - r2)) / (2.0 * d);
  const Vec3 left = Cross(first.normal, direction);
  points.Add(first.centre + along * direction + across * left);
  points.Add(first.centre + along * direction - across * left);
  return points;
}

void AddIfNew(Vec3 p, double tol, Points2& points) {
  if (points.count == 2) return;
  if (points.count == 1 && LargestComponent(p - points.at[0]) <= tol) return;
  points.Add(p);
}

bool LiesInPlaneOf(const Circle3& circle, const Circle3& other, double tol) {
  const double height = Dot(circle.centre - other.centre, other.normal);
  return std::fabs(height) + circle.radius * Sine(circle.normal, other.normal) <= tol;
}

}  // namespace

// With w from the first point to the second and n = d1 x d2, the approach solves w + t2 d2 - t1 d1 = h n.
Approach ClosestApproach(const Line3& first, const Line3& second, double sineTol) {
  const Vec3 w = second.point - first.point;
  const double sine = Sine(first.direction, second.direction);
  Approach approach;
  if (IsParallel(sine, sineTol)) {
    approach.parallel = true;
    approach.alongSecond = -Dot(w, second.direction);
    approach.distance = Norm(Rejection(w, first.direction));
    return approach;
  }
  const Vec3 unit = UnitAcross(first.direction, second.direction);
  approach.alongFirst = Dot(Cross(w, second.direction), unit) / sine;
  approach.alongSecond = Dot(Cross(w, first.direction), unit) / sine;
  approach.distance = std::fabs(Dot(w, unit));
  return approach;
}

Chord ChordAt(double h, double radius, double tol) {
  if (std::fabs(h - radius) <= tol) return {1, 0.0};
  if (!(h < radius)) return {};
  const double squared = (radius - h) * (radius + h);
  return {2, std::isnormal(squared) ? std::sqrt(squared) : std::sqrt(radius - h) * std::sqrt(radius + h)};
}

// The line counts as one of the plane when no point of it inside the circle leaves the plane by more than the
// tolerance; that asks for no tolerance of angles.
Points2 Intersect(const Line3& line, const Circle3& circle, double tol) {
  const Vec3 w = circle.centre - line.point;
  const double foot = Dot(w, line.direction);
  const double height = Dot(line.At(foot) - circle.centre, circle.normal);
  const double slope = Dot(line.direction, circle.normal);
  if (std::fabs(height) + circle.radius * std::fabs(slope) <= tol) {
    return OnLine(line, foot, ChordAt(Norm(Rejection(w, line.direction)), circle.radius, tol));
  }
  return Pierce({line.At(foot), line.direction}, circle, height, slope, tol);
}

Points2 Intersect(const Line3& line, const Sphere3& sphere, double tol) {
  const Vec3 w = sphere.centre - line.point;
  return OnLine(line, Dot(w, line.direction), ChordAt(Norm(Rejection(w, line.direction)), sphere.radius, tol));
}

// Seen along the axis, the line passes the circle's centre at its distance from the axis; its way appears shortened by
// the sine between them.
Points2 Intersect(const Line3& line, const Cylinder3& cylinder, const Approach& approach, double tol) {
  if (approach.parallel) return {};
  Chord chord = ChordAt(approach.distance, cylinder.radius, tol);
  chord.half /= Sine(line.direction, cylinder.axis.direction);
  return OnLine(line, approach.alongFirst, chord);
}

// The trace of the plane in the plane of the circle runs along n x m; its distance from the centre is the height of the
// centre over the plane divided by the sine between the normals.
Points2 Intersect(const Circle3& circle, const Plane3& plane, double tol) {
  const double sine = Sine(circle.normal, plane.normal);
  const double height = plane.Height(circle.centre);
  if (!(sine > 0.0) || std::fabs(height) + circle.radius * sine <= tol) return {};
  const Vec3 along = UnitAcross(circle.normal, plane.normal);
  const Vec3 uphill = Cross(along, circle.normal);
  const Line3 trace{circle.centre - (height / sine) * uphill, along};
  return OnLine(trace, 0.0, ChordAt(std::fabs(height) / sine, circle.radius, tol));
}

// In different planes only the two points of either circle in the plane of the other can be common. Near a tangent one
// circle gives them better than the other, so both are asked.
Points2 Intersect(const Circle3& first, const Circle3& second, double tol) {
  if (LiesInPlaneOf(first, second, tol) || LiesInPlaneOf(second, first, tol))
    return IntersectInPlane(first, second, tol);
  Points2 common;
  const Points2 ofFirst = Intersect(first, Plane3{second.centre, second.normal}, tol);
  for (int i = 0; i < ofFirst.count; ++i) {
    if (IsOn(ofFirst.at[i], second, tol)) AddIfNew(ofFirst.at[i], tol, common);
  }
  const Points2 ofSecond = Intersect(second, Plane3{first.centre, first.normal}, tol);
  for (int i = ofSecond.count - 1; i >= 0; --i) {
    if (IsOn(ofSecond.at[i], first, tol)) AddIfNew(ofSecond.at[i], tol, common);
  }
  const Vec3 along = Cross(first.normal, second.normal);
  if (common.count == 2 && Dot(common.at[1] - common.at[0], along) < 0.0) std::swap(common.at[0], common.at[1]);
  return common;
}

// The point of the line that is nearest to the middle M of both points. With the unit vector t across n1 and the line,
// n2 = cosine n1 + sine t; M - h1 n1 is in the first plane, and from there the second one is reached along t.
Line3 Intersect(const Plane3& first, const Plane3& second) {
  const Vec3 along = UnitAcross(first.normal, second.normal);
  const Vec3 t = Cross(along, first.normal);
  const Vec3 between = second.point - first.point;
  const Vec3 inFirst = Rejection(0.5 * between, first.normal);
  const double step = Dot(between - inFirst, second.normal) / Dot(second.normal, t);
  return {first.point + (inFirst + step * t), along};
}

}  // namespace nu::engine::shapes
