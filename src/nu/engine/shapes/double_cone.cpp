// With w0 from the apex to the foot of its perpendicular on the line, m = |w0| and h = w0.a, the point at s from that
// foot has the height h + s cos f over the apex, f being the angle between the line and the axis a, and is on the cone
// of the semi-angle g where
//   K s^2 - 2 h cos f s + C = 0,  K = sin(f - g) sin(f + g),  C = (m^2 - h^2) cos^2 g - h^2 sin^2 g.
// A line flatter than the generators, K > 0, passes the axis at the distance r, at a height of h / sin^2 f. Within
// either nappe its distance from the surface is convex, and least where
//   s = h cos f / sin^2 f +- r sin g cos f / (sin f sqrt K),
//   distance = (r sqrt K -+ h sin g / sin f) / sin f,
// which is negative for one that goes through the nappe. Their product over both nappes, times -cos^2 g sin^2 f, is the
// discriminant of the equation: it cancels only where the line touches. For K < 0 it is the sum cos^2 g (h^2 - m^2 K).

#include "nu/engine/shapes/double_cone.h"

namespace nu::engine::shapes {

namespace {

struct Course {
  Course(const DoubleCone& given, const Line3& line);

  bool IsFlat() const { return K > 0.0; }
  // The distance from the upper nappe, or for -1 from the lower one, and where it is.
  double Gap(double nappe) const { return (r * std::sqrt(K) - nappe * h * cone.sine / sinF) / sinF; }
  double Nearest(double nappe) const {
    const double beyond = r * cone.sine * std::fabs(cosF) / (sinF * std::sqrt(K));
    return h * cosF / (sinF * sinF) + std::copysign(beyond, nappe * cosF);
  }
  Points2 Crossings() const;
  Vec3 At(double s) const { return foot + s * direction; }

  DoubleCone cone;
  Vec3 direction, foot;
  double cosF, sinF, m, h, r, C, lead, K;
};

Course::Course(const DoubleCone& given, const Line3& line) : cone(given), direction(line.direction) {
  const Vec3 w0 = Rejection(line.point - cone.apex, direction);
  foot = line.At(Dot(cone.apex - line.point, direction));
  cosF = Dot(direction, cone.axis);
  sinF = Norm(Cross(direction, cone.axis));
  m = Norm(w0);
  h = Dot(w0, cone.axis);
  r = sinF > 0.0 ? std::fabs(Dot(w0, UnitAcross(direction, cone.axis))) : m;
  const double rho = Norm(Cross(w0, cone.axis)) * cone.cosine;
  const double rise = std::fabs(h) * cone.sine;
  C = (rho - rise) * (rho + rise);
  lead = sinF * cone.cosine - std::fabs(cosF) * cone.sine;
  K = lead * (sinF * cone.cosine + std::fabs(cosF) * cone.sine);
}

Points2 Course::Crossings() const {
  const double B = h * cosF;
  const double nappe = std::copysign(1.0, h);
  const double squared = IsFlat() ? -Gap(nappe) * Gap(-nappe) * sinF * sinF : h * h - m * m * K;
  const double far = B + std::copysign(cone.cosine * std::sqrt(std::max(squared, 0.0)), B);
  const double s[2] = {far / K, C / far};
  Points2 points;
  points.Add(At(std::min(s[0], s[1])));
  points.Add(At(std::max(s[0], s[1])));
  return points;
}

double LargestOf(const DoubleCone& cone, const Line3& line, Vec3 there) {
  return std::max({LargestComponent(cone.apex), LargestComponent(line.point), LargestComponent(there)});
}

// Against the generator the height at which the line passes the axis stands for the distance from the touching plane.
ConeApproach AlongGenerator(const Course& course, double tol) {
  ConeApproach approach;
  approach.meets = std::fabs(course.h) * course.cone.sine / (course.sinF * course.sinF) > tol;
  if (approach.meets) approach.points.Add(course.At(0.5 * course.C / (course.h * course.cosF)));
  return approach;
}

ConeApproach Closest(const Course& course, double tol) {
  const double nappe = std::copysign(1.0, course.h);
  const double gap = course.Gap(nappe);
  const double s = course.Nearest(nappe);
  ConeApproach approach{gap <= tol, std::max(gap, 0.0), {}};
  const double other = course.Nearest(-nappe);
  const bool both = course.Gap(-nappe) <= gap + tol && std::fabs(other - s) > tol;
  approach.points.Add(course.At(both ? std::min(s, other) : s));
  if (both) approach.points.Add(course.At(std::max(s, other)));
  return approach;
}

}  // namespace

ConeApproach ApproachTo(const DoubleCone& cone, const Line3& line, double lengthTol, double sineTol) {
  const Course course(cone, line);
  double tol = CoincidenceTol(lengthTol, LargestOf(cone, line, course.foot));
  if (IsParallel(std::fabs(course.lead), sineTol)) return AlongGenerator(course, tol);
  ConeApproach approach{true, 0.0, {}};
  if (course.m <= tol) {
    approach.points.Add(course.foot);
    return approach;
  }
  if (course.IsFlat()) {
    const double nappe = std::copysign(1.0, course.h);
    tol = CoincidenceTol(lengthTol, LargestOf(cone, line, course.At(course.Nearest(nappe))));
    if (!(course.Gap(nappe) < -tol)) return Closest(course, tol);
  }
  approach.points = course.Crossings();
  return approach;
}

}  // namespace nu::engine::shapes
