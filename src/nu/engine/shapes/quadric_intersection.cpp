// Pairs in special positions have lines, circles or conics in common. All others meet in branches on the generators of
// one of them, the base.

#include "nu/engine/shapes/quadric_intersection.h"

#include <tuple>

#include "nu/engine/shapes/quadric_stage.h"
#include "nu/foundation/constants.h"

namespace nu::engine::shapes {

bool QuadricTolerances::AreSameAngles(double a, double b) const {
  constexpr double kRoundings = 8.0 * 90.0 * DBL_EPSILON;  // of angles in degrees
  return std::fabs(a - b) <= std::fmax(degrees, kRoundings);
}

namespace {

// The undirected angle between two unit directions, in degrees.
double AngleBetween(Vec3 a, Vec3 b) {
  return Atan2(Norm(Cross(a, b)), std::fabs(Dot(a, b))) * (180.0 / Nu_PI);
}

Vec3 NearestOfAxis(const RoundQuadric& surface, Vec3 p) {
  return surface.point + Dot(p - surface.point, surface.axis) * surface.axis;
}

// Each point that the cross-sections have in common is one of a line. Axes that are parallel within the tolerance only
// leave both sections in one plane.
void AddLinesOfParallel(CommonParts& parts) {
  const RoundQuadric& first = parts.First();
  const RoundQuadric& second = parts.Second();
  const Vec3 across = Rejection(NearestOfAxis(second, first.point) - first.point, first.axis);
  const Circle3 own{first.point, first.axis, first.radius};
  const Circle3 other{first.point + across, first.axis, second.radius};
  const Points2 common = Intersect(own, other, parts.Tol());
  for (int i = 0; i < common.count; ++i) parts.AddLine(common.at[i], first.axis);
}

// A sphere around a point of the axis.
void AddCirclesOnCylinder(const RoundQuadric& cylinder, const RoundQuadric& sphere, CommonParts& parts) {
  const double r = cylinder.radius;
  const Vec3 centre = NearestOfAxis(cylinder, sphere.point);
  if (std::fabs(sphere.radius - r) <= parts.Tol()) return parts.AddCircle(centre, cylinder.axis, r);
  if (!(sphere.radius > r)) return;
  const double height = std::sqrt(sphere.radius - r) * std::sqrt(sphere.radius + r);
  for (const double side : {-1.0, 1.0}) parts.AddCircle(centre + side * height * cylinder.axis, cylinder.axis, r);
}

void AddCirclesOfCoaxialCone(const RoundQuadric& cylinder, const RoundQuadric& cone, CommonParts& parts) {
  const Vec3 apex = NearestOfAxis(cylinder, cone.point);
  const double height = cylinder.radius * (cone.cosine / cone.sine);
  for (const double side : {-1.0, 1.0}) {
    parts.AddCircle(apex + side * height * cylinder.axis, cylinder.axis, cylinder.radius);
  }
}

// On the smaller one, from where its axis is next to the other one. Axes that are nearly parallel come closest where no
// part is, which is uncertain, too: no farther from their points than the place is known by.
QuadricStage StageFor(const RoundQuadric& first, const RoundQuadric& second, const CommonParts& parts) {
  constexpr double kFarthest = 100.0;  // times the larger radius
  const RoundQuadric& base = first.radius > second.radius ? second : first;
  const RoundQuadric& other = first.radius > second.radius ? first : second;
  const Approach approach = ClosestApproach(AxisOf(base), AxisOf(other), 0.0);
  const bool isNear = std::fabs(approach.alongFirst) <= kFarthest * other.radius;
  return QuadricStage(base, other, AxisOf(base).At(isNear ? approach.alongFirst : 0.0), parts);
}

// A sphere around a point of the axis, at the distance l from the apex, cuts every generator at t = l cos a +- root
// with root^2 = (r - l sin a)(r + l sin a).
void AddCirclesOnCone(const RoundQuadric& cone, const RoundQuadric& sphere, CommonParts& parts) {
  const double along = Dot(sphere.point - cone.point, cone.axis);
  const double inscribed = std::fabs(along) * cone.sine;
  const auto add = [&](double t) {
    if (std::fabs(t) <= parts.Tol()) return parts.AddPoint(cone.point);
    parts.AddCircle(cone.point + t * cone.cosine * cone.axis, cone.axis, std::fabs(t) * cone.sine);
  };
  if (std::fabs(sphere.radius - inscribed) <= parts.Tol()) return add(along * cone.cosine);
  if (!(sphere.radius > inscribed)) return;
  const double root = std::sqrt(sphere.radius - inscribed) * std::sqrt(sphere.radius + inscribed);
  const double farther = along * cone.cosine + std::copysign(root, along);
  const double product = (std::fabs(along) - sphere.radius) * (std::fabs(along) + sphere.radius);
  add(product / farther);
  add(farther);
}

// Where the radii |z| tan a1 and |z - d| tan a2 are equal.
void AddCirclesOfCoaxialCones(bool areSame, CommonParts& parts) {
  const RoundQuadric& first = parts.First();
  const RoundQuadric& second = parts.Second();
  const double distance = Dot(second.point - first.point, first.axis);
  const double slope1 = first.sine / first.cosine;
  const double slope2 = second.sine / second.cosine;
  const auto add = [&](double z) { parts.AddCircle(first.point + z * first.axis, first.axis, std::fabs(z) * slope1); };
  add(distance * (slope2 / (slope1 + slope2)));
  if (!areSame) add(distance * (slope2 / (slope2 - slope1)));
}

// The directions of the generators that two cones with parallel sides have in common, as if both had one apex: none to
// four. A generator at the angle v from the other axis, seen around the own one, makes the angle b with it where, with
// the angle w between the axes,
//   tan^2(v/2) = sin((b + w - a) / 2) sin((b - w + a) / 2) / sin((a + w + b) / 2) sin((a + w - b) / 2).
class CommonDirections {
 public:
  // The axes are not parallel.
  explicit CommonDirections(const CommonParts& parts) : m_parts(parts) {
    const Vec3 axis = parts.Second().axis;
    const double between = AngleBetween(parts.First().axis, axis);
    const Vec3 towards = Dot(parts.First().axis, axis) < 0.0 ? -1.0 * axis : axis;
    AddTowards(towards, between);
    AddTowards(-1.0 * towards, 180.0 - between);
  }

  const std::vector<Vec3>& Found() const { return m_found; }

 private:
  void AddTowards(Vec3 axis, double between) {
    const double own = m_parts.First().semiAngle;
    const double other = m_parts.Second().semiAngle;
    const auto isBetween = [&](double angle) { return m_parts.Tolerances().AreSameAngles(between, angle); };
    if (isBetween(own + other) || isBetween(own - other)) return AddAt(axis, 0.0);
    if (isBetween(other - own)) return AddAt(axis, Nu_PI);
    const auto sineOfHalf = [](double degrees) { return Sin(degrees * (0.5 * Nu_PI / 180.0)); };
    const double above = sineOfHalf(other + between - own) * sineOfHalf(other - between + own);
    const double below = sineOfHalf(own + between + other) * sineOfHalf(own + between - other);
    if (!(above > 0.0) || !(below > 0.0)) return;
    const double v = 2.0 * Atan2(std::sqrt(above), std::sqrt(below));
    AddAt(axis, -v);
    AddAt(axis, v);
  }

  void AddAt(Vec3 axis, double v) {
    const RoundQuadric& first = m_parts.First();
    const Vec3 across = Unit(Rejection(axis, first.axis));
    const auto [sine, cosine] = SinCos(v);
    const Vec3 outwards = cosine * across + sine * Cross(first.axis, across);
    m_found.push_back(Unit(first.sine * outwards + first.cosine * first.axis));
  }

  const CommonParts& m_parts;
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

// The surface, moved by what parts it from a point that is on it within the tolerance. Branches through an apex that is
// on the other surface are those of surfaces of which that is true exactly; next to a generator that both share, what
// is neglected at the apex is magnified without limit.
RoundQuadric Through(Vec3 p, RoundQuadric surface) {
  const RoundQuadric::Offset offset = surface.OffsetOf(p);
  const double rounding = CoincidenceTol(0.0, std::fmax(LargestComponent(p), LargestComponent(surface.point)));
  if (std::fabs(offset.distance) > rounding) surface.point = surface.point + offset.distance * offset.normal;
  return surface;
}

// The cone with its apex on the line through another one.
RoundQuadric WithApexOn(Vec3 point, Vec3 direction, RoundQuadric cone) {
  const Vec3 across = Rejection(cone.point - point, direction);
  const double rounding = CoincidenceTol(0.0, std::fmax(LargestComponent(point), LargestComponent(cone.point)));
  if (Norm(across) > rounding) cone.point = cone.point - across;
  return cone;
}

void IntersectCylinders(CommonParts& parts) {
  const RoundQuadric& first = parts.First();
  const RoundQuadric& second = parts.Second();
  if (parts.Tolerances().AreParallel(first.axis, second.axis)) return AddLinesOfParallel(parts);
  if (!parts.AddAroundCommonSphere()) AddOnCylinder(StageFor(first, second, parts), false, parts);
}

void IntersectCylinderSphere(CommonParts& parts) {
  const RoundQuadric& cylinder = parts.First();
  const RoundQuadric& sphere = parts.Second();
  const Vec3 foot = NearestOfAxis(cylinder, sphere.point);
  if (Norm(sphere.point - foot) <= parts.Tol()) return AddCirclesOnCylinder(cylinder, sphere, parts);
  AddOnCylinder(QuadricStage(cylinder, sphere, foot, parts), false, parts);
}

void IntersectCylinderCone(CommonParts& parts) {
  const RoundQuadric& cylinder = parts.First();
  const RoundQuadric& cone = parts.Second();
  const Vec3 foot = NearestOfAxis(cylinder, cone.point);
  const double apexDistance = Norm(cone.point - foot);
  const bool isParallel = parts.Tolerances().AreParallel(cylinder.axis, cone.axis);
  if (isParallel && apexDistance <= parts.Tol()) return AddCirclesOfCoaxialCone(cylinder, cone, parts);
  if (!isParallel && parts.AddAroundCommonSphere()) return;
  const double angle = AngleBetween(cylinder.axis, cone.axis);
  const bool isParallelToGenerator = parts.Tolerances().AreSameAngles(angle, cone.semiAngle);
  if (!(std::fabs(apexDistance - cylinder.radius) <= parts.Tol())) {
    return AddOnCylinder(QuadricStage(cylinder, cone, foot, parts), isParallelToGenerator, parts);
  }
  if (isParallelToGenerator) parts.AddLine(cone.point, cylinder.axis);
  AddOnCone(QuadricStage(cone, Through(cone.point, cylinder), cone.point, parts), {true, isParallelToGenerator}, parts);
}

void IntersectConeSphere(CommonParts& parts) {
  const RoundQuadric& cone = parts.First();
  const RoundQuadric& sphere = parts.Second();
  const bool isCoaxial = Norm(Rejection(sphere.point - cone.point, cone.axis)) <= parts.Tol();
  if (isCoaxial) return AddCirclesOnCone(cone, sphere, parts);
  const bool atApex = IsOn(sphere, cone.point, parts.Tol());
  AddOnCone(QuadricStage(cone, atApex ? Through(cone.point, sphere) : sphere, cone.point, parts), {atApex}, parts);
}

// Cones with one apex: their common generators, or the apex.
void AddLinesThroughApex(bool areParallel, bool haveSameAngle, CommonParts& parts) {
  if (areParallel && haveSameAngle) return;
  const Vec3 apex = parts.First().point;
  const std::vector<Vec3> lines = areParallel ? std::vector<Vec3>() : CommonDirections(parts).Found();
  for (const Vec3& direction : lines) parts.AddLine(apex, direction);
  if (lines.empty()) parts.AddPoint(apex);
}

// Cones of one semi-angle with parallel axes.
void AddSectionBetween(CommonParts& parts) {
  const RoundQuadric& first = parts.First();
  const RoundQuadric& second = parts.Second();
  if (IsOn(first, second.point, parts.Tol())) {
    parts.AddLine(first.point, GeneratorNextTo(first, second.point));
  } else if (!parts.AddSections({PlaneBetween(first, second)})) {
    AddOnCone(QuadricStage(first, second, first.point, parts), {false, false, true}, parts);
  }
}

// True where it has dealt with the pair.
bool IntersectSpecialCones(CommonParts& parts) {
  const RoundQuadric& first = parts.First();
  const RoundQuadric& second = parts.Second();
  const Vec3 difference = second.point - first.point;
  const bool areParallel = parts.Tolerances().AreParallel(first.axis, second.axis);
  const bool haveSameAngle = parts.Tolerances().AreSameAngles(first.semiAngle, second.semiAngle);
  if (Norm(difference) <= parts.Tol()) {
    AddLinesThroughApex(areParallel, haveSameAngle, parts);
    return true;
  }
  if (!areParallel) return parts.AddAroundCommonSphere();
  if (Norm(Rejection(difference, first.axis)) <= parts.Tol()) {
    AddCirclesOfCoaxialCones(haveSameAngle, parts);
    return true;
  }
  if (haveSameAngle) AddSectionBetween(parts);
  return haveSameAngle;
}

void IntersectCones(CommonParts& parts) {
  if (IntersectSpecialCones(parts)) return;
  const RoundQuadric& first = parts.First();
  const RoundQuadric& second = parts.Second();
  const bool firstIsOn = IsOn(second, first.point, parts.Tol());
  const bool secondIsOn = IsOn(first, second.point, parts.Tol());
  std::optional<Vec3> common;
  if (firstIsOn && secondIsOn && !parts.Tolerances().AreSameAngles(AngleBetween(first.axis, second.axis), 0.0)) {
    common = DirectionAlong(CommonDirections(parts).Found(), second.point - first.point, parts.Tol());
  }
  if (common) parts.AddLine(first.point, *common);
  const bool takeSecond = firstIsOn == secondIsOn ? first.semiAngle > second.semiAngle : secondIsOn;
  const RoundQuadric& base = takeSecond ? second : first;
  RoundQuadric other = takeSecond ? first : second;
  const ConeContact contact{firstIsOn || secondIsOn, common.has_value()};
  if (common) {
    other = WithApexOn(base.point, *common, other);
  } else if (contact.atApex) {
    other = Through(base.point, other);
  }
  AddOnCone(QuadricStage(base, other, base.point, parts), contact, parts);
}

// An order by kind, size, place and axis.
bool Precedes(const RoundQuadric& first, const RoundQuadric& second) {
  const auto key = [](const RoundQuadric& s) {
    return std::tuple(s.kind, s.radius, s.sine, s.point.x, s.point.y, s.point.z, s.axis.x, s.axis.y, s.axis.z);
  };
  return key(first) < key(second);
}

}  // namespace

std::optional<std::vector<CommonPart>> Intersect(const RoundQuadric& first, const RoundQuadric& second,
                                                 const QuadricTolerances& tolerances) {
  using Kind = RoundQuadric::Kind;
  if (Precedes(second, first)) return Intersect(second, first, tolerances);
  CommonParts parts(first, second, tolerances);
  const bool isCylinder = first.kind == Kind::kCylinder;
  if (second.kind == Kind::kSphere) {
    isCylinder ? IntersectCylinderSphere(parts) : IntersectConeSphere(parts);
  } else if (second.kind == Kind::kCone) {
    isCylinder ? IntersectCylinderCone(parts) : IntersectCones(parts);
  } else {
    IntersectCylinders(parts);
  }
  return parts.Take();
}

}  // namespace nu::engine::shapes
