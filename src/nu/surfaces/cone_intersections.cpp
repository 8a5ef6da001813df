// Cones against cones and spheres. On the generator t g, g = (sin a cos u, sin a sin u, cos a), of an upright cone a
// quadric p Q p^T = 0 is g Q33 g^T t^2 + 2 (g q) t + Q44 = 0 with the upper left block Q33 and q = (Q14, Q24, Q34), and
// its discriminant is of degree two in cos u and sin u.

#include <optional>

#include "nu/engine/base/elementary.h"
#include "nu/foundation/tolerances.h"
#include "nu/geometry/internal/feature_data.h"
#include "nu/geometry/internal/surface_data.h"
#include "nu/numerics/triag.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/internal/quadric_intersection.h"
#include "nu/surfaces/sphere.h"

using namespace nu::internal;

namespace {

// A sphere around a point of the axis, at the distance l from the apex, cuts every generator at t = l cos a +- root
// with root^2 = (r - l sin a)(r + l sin a).
void IntersectCoaxialSphere(const RoundQuadric& cone, const RoundQuadric& sphere, QuadricIntersection& intersection) {
  const double along = Dot(sphere.point - cone.point, cone.axis);
  const double inscribed = std::fabs(along) * cone.sine;
  const auto add = [&](double t) {
    if (std::fabs(t) <= intersection.Tol()) return intersection.AddPoint(cone.point);
    intersection.AddCircle(cone.point + t * cone.cosine * cone.axis, cone.axis, std::fabs(t) * cone.sine);
  };
  if (std::fabs(sphere.radius - inscribed) <= intersection.Tol()) return add(along * cone.cosine);
  if (!(sphere.radius > inscribed)) return;
  const double root = std::sqrt(sphere.radius - inscribed) * std::sqrt(sphere.radius + inscribed);
  const double farther = along * cone.cosine + std::copysign(root, along);
  const double product = (std::fabs(along) - sphere.radius) * (std::fabs(along) + sphere.radius);
  add(product / farther);
  add(farther);
}

// Where the radii |z| tan a1 and |z - d| tan a2 are equal.
void IntersectCoaxialCones(const RoundQuadric& first, const RoundQuadric& second, bool areSame,
                           QuadricIntersection& intersection) {
  const double distance = Dot(second.point - first.point, first.axis);
  const double slope1 = first.sine / first.cosine;
  const double slope2 = second.sine / second.cosine;
  const auto add = [&](double z) {
    intersection.AddCircle(first.point + z * first.axis, first.axis, std::fabs(z) * slope1);
  };
  add(distance * (slope2 / (slope1 + slope2)));
  if (!areSame) add(distance * (slope2 / (slope2 - slope1)));
}

// The directions of the generators that two cones with parallel sides have in common, as if both had one apex: none to
// four. A generator at the angle v from the other axis, seen around the own one, makes the angle b with it where, with
// the angle w between the axes,
//   tan^2(v/2) = sin((b + w - a) / 2) sin((b - w + a) / 2) / sin((a + w + b) / 2) sin((a + w - b) / 2).
class CommonDirections {
 public:
  // Angles in degrees; the axes are not parallel.
  CommonDirections(const RoundQuadric& first, double own, const RoundQuadric& second, double other) : m_first(first) {
    const double between = AngleBetween(first.axis, second.axis);
    const Vec3 axis = Dot(first.axis, second.axis) < 0.0 ? -1.0 * second.axis : second.axis;
    AddTowards(axis, own, other, between);
    AddTowards(-1.0 * axis, own, other, 180.0 - between);
  }

  const std::vector<Vec3>& Found() const { return m_found; }

 private:
  void AddTowards(Vec3 axis, double own, double other, double between) {
    if (AreSameAngles(between, own + other) || AreSameAngles(between, own - other)) return AddAt(axis, 0.0);
    if (AreSameAngles(between, other - own)) return AddAt(axis, Nu_PI);
    const auto sineOfHalf = [](double degrees) { return nu::internal::Sin(degrees * (0.5 * Nu_PI / 180.0)); };
    const double above = sineOfHalf(other + between - own) * sineOfHalf(other - between + own);
    const double below = sineOfHalf(own + between + other) * sineOfHalf(own + between - other);
    if (!(above > 0.0) || !(below > 0.0)) return;
    const double v = 2.0 * Atan2(std::sqrt(above), std::sqrt(below));
    AddAt(axis, -v);
    AddAt(axis, v);
  }

  void AddAt(Vec3 axis, double v) {
    const Vec3 across = Unit(Rejection(axis, m_first.axis));
    const auto [sine, cosine] = SinCos(v);
    const Vec3 outwards = cosine * across + sine * Cross(m_first.axis, across);
    m_found.push_back(Unit(m_first.sine * outwards + m_first.cosine * m_first.axis));
  }

  const RoundQuadric& m_first;
  std::vector<Vec3> m_found;
};

// The direction of a set that the difference of the apexes follows within the tolerance. The difference alone does not
// determine it: for apexes that are close together its direction is uncertain by the tolerance over its length.
std::optional<Vec3> DirectionAlong(const std::vector<Vec3>& directions, Vec3 difference, double tol) {
  std::optional<Vec3> found;
  double least = tol;
  for (const Vec3& direction : directions) {
    const double distance = Norm(Rejection(difference, direction));
    if (!(distance <= least)) continue;
    least = distance;
    found = direction;
  }
  return found;
}

// The generator of a cone next to a point that is not on its axis.
Vec3 GeneratorNextTo(const RoundQuadric& cone, Vec3 p) {
  const Vec3 w = p - cone.point;
  return cone.sine * Unit(Rejection(w, cone.axis)) + std::copysign(cone.cosine, Dot(w, cone.axis)) * cone.axis;
}

// Cones of one semi-angle with parallel axes: the difference of |q|^2 = (1 + tan^2 a)(z.q)^2 for both apexes is linear.
Plane3 PlaneBetween(const RoundQuadric& first, const RoundQuadric& second) {
  const Vec3 difference = second.point - first.point;
  const double along = Dot(difference, first.axis);
  const double slope = first.sine / first.cosine;
  const Vec3 normal = difference - along * (1.0 + slope * slope) * first.axis;
  return {first.point + 0.5 * difference, Unit(normal)};
}

bool IsOn(const RoundQuadric& surface, Vec3 p, double tol) {
  return std::fabs(surface.OffsetOf(p).distance) <= tol;
}

}  // namespace

int CNuConSurf::Intersect(const CNuMatrix& quadric, CNuTriagPolynomial* curve, CNuInterval* range, double* asymptotes,
                          int* simple, int* twofold, int* apexSide) const {
  const auto q = [&](int i, int j) { return quadric.Element(i, j); };
  const DoubleCone cone = nu::internal::DataOf(*this);
  const CNuTriagPolynomial x(CNuTriag(cone.sine, 0.0, 0.0));
  const CNuTriagPolynomial y(CNuTriag(0.0, cone.sine, 0.0));
  const CNuTriagPolynomial z(CNuTriag(0.0, 0.0, cone.cosine));
  curve[0] = q(0, 0) * (x * x) + q(1, 1) * (y * y) + q(2, 2) * (z * z) +
             2.0 * (q(0, 1) * (x * y) + q(0, 2) * (x * z) + q(1, 2) * (y * z));
  curve[1] = q(0, 3) * x + q(1, 3) * y + q(2, 3) * z;
  curve[2] = CNuTriagPolynomial(CNuTriag(0.0, 0.0, q(3, 3)));
  *apexSide = q(3, 3) > 0.0 ? 1 : (q(3, 3) < 0.0 ? -1 : 0);
  FindAsymptotes(curve[0], asymptotes, simple, twofold);
  return MonotoneRanges(curve, range);
}

int CNuConSurf::IntersectWith(const CNuSphSurf& sphere, CNuObjArray* result) const {
  QuadricIntersection intersection(RoundDataOf(*this), RoundDataOf(sphere), "CNuConSurf::IntersectWith(CNuSphSurf)");
  const RoundQuadric& cone = intersection.First();
  const RoundQuadric& ball = intersection.Second();
  if (Norm(Rejection(ball.point - cone.point, cone.axis)) <= intersection.Tol()) {
    IntersectCoaxialSphere(cone, ball, intersection);
  } else {
    const ConeContact contact{IsOn(ball, cone.point, intersection.Tol())};
    IntersectOnCone(QuadricStage(cone, ball, cone.point, intersection), contact, &CNuConSurf::Intersect, intersection);
  }
  return intersection.HandOverTo(result);
}

int CNuConSurf::IntersectWith(const CNuCylSurf& cylinder, CNuObjArray* result) const {
  return cylinder.IntersectWith(*this, result);
}

// One order for both, so that the result does not depend on which is asked.
int CNuConSurf::IntersectWith(const CNuConSurf& other, CNuObjArray* result) const {
  return Precedes(RoundDataOf(other), RoundDataOf(*this)) ? other.IntersectOrdered(*this, result)
                                                          : IntersectOrdered(other, result);
}

int CNuConSurf::IntersectOrdered(const CNuConSurf& other, CNuObjArray* result) const {
  QuadricIntersection intersection(RoundDataOf(*this), RoundDataOf(other), "CNuConSurf::IntersectWith(CNuConSurf)");
  if (!IntersectSpecialCase(other, intersection)) {
    const RoundQuadric& first = intersection.First();
    const RoundQuadric& second = intersection.Second();
    const bool ownIsOn = IsOn(second, first.point, intersection.Tol());
    const bool otherIsOn = IsOn(first, second.point, intersection.Tol());
    const bool takeOther = ownIsOn == otherIsOn ? m_semiAngle > other.m_semiAngle : otherIsOn;
    const RoundQuadric& base = takeOther ? second : first;
    std::optional<Vec3> common;
    if (ownIsOn && otherIsOn && !AreSameAngles(AngleBetween(first.axis, second.axis), 0.0)) {
      const CommonDirections directions(first, m_semiAngle, second, other.m_semiAngle);
      common = DirectionAlong(directions.Found(), second.point - first.point, intersection.Tol());
    }
    if (common) intersection.AddLine(first.point, *common);
    const ConeContact contact{ownIsOn || otherIsOn, common.has_value()};
    IntersectOnCone(QuadricStage(base, takeOther ? first : second, base.point, intersection), contact,
                    &CNuConSurf::Intersect, intersection);
  }
  return intersection.HandOverTo(result);
}

// True where it has dealt with the pair.
bool CNuConSurf::IntersectSpecialCase(const CNuConSurf& other, QuadricIntersection& intersection) const {
  const RoundQuadric& first = intersection.First();
  const RoundQuadric& second = intersection.Second();
  const double tol = intersection.Tol();
  const bool areParallel = AreParallel(first.axis, second.axis);
  const bool haveSameAngle = AreSameAngles(m_semiAngle, other.m_semiAngle);
  const Vec3 difference = second.point - first.point;
  if (Norm(difference) <= tol) {
    if (areParallel && haveSameAngle) return true;
    std::vector<Vec3> lines;
    if (!areParallel) lines = CommonDirections(first, m_semiAngle, second, other.m_semiAngle).Found();
    for (const Vec3& direction : lines) intersection.AddLine(first.point, direction);
    if (lines.empty()) intersection.AddPoint(first.point);
    return true;
  }
  if (!areParallel) return intersection.AddAroundCommonSphere(*this);
  if (Norm(Rejection(difference, first.axis)) <= tol) {
    IntersectCoaxialCones(first, second, haveSameAngle, intersection);
  } else if (!haveSameAngle) {
    return false;
  } else if (IsOn(first, second.point, tol)) {
    intersection.AddLine(first.point, GeneratorNextTo(first, second.point));
  } else if (!intersection.AddSections(*this, {PlaneBetween(first, second)})) {
    IntersectOnCone(QuadricStage(first, second, first.point, intersection), {false, false, true},
                    &CNuConSurf::Intersect, intersection);
  }
  return true;
}
