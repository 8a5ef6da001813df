#include "nu/engine/shapes/common_parts.h"

#include "nu/engine/shapes/plane_axes.h"
#include "nu/foundation/constants.h"

namespace nu::engine::shapes {

namespace {

// Points of a section: of a conic all around, or as far as twice its size.
std::vector<Vec3> PointsOf(const PlaneSection& section, Vec3 normal) {
  constexpr int kSteps = 8;
  constexpr double kReach = 2.0;
  const PlaneAxes axes{section.origin, section.x, Cross(normal, section.x)};
  std::vector<Vec3> points;
  for (int i = 0; i <= kSteps; ++i) {
    const double share = static_cast<double>(i) / kSteps;
    const double t = kReach * (2.0 * share - 1.0);
    switch (section.kind) {
      case PlaneSection::kCircle:
      case PlaneSection::kEllipse: {
        const auto [sine, cosine] = SinCos(share * Nu_2PI);
        points.push_back(axes.Global({section.a * cosine, section.b * sine}));
        break;
      }
      case PlaneSection::kHyperbola:
        for (const double side : {1.0, -1.0})
          points.push_back(axes.Global({side * section.a * Cosh(t), section.b * Sinh(t)}));
        break;
      case PlaneSection::kParabola:
        points.push_back(axes.Global({share * kReach * section.a, 2.0 * section.a * std::sqrt(share * kReach)}));
        break;
      case PlaneSection::kLine:
        points.push_back(section.lines[0].At(share));
        break;
      case PlaneSection::kTwoLines:
        for (const Line3& line : section.lines) points.push_back(line.At(share));
        break;
      case PlaneSection::kPoint:
        points.push_back(section.origin);
        break;
      case PlaneSection::kNothing:
        break;
    }
  }
  return points;
}

PlaneSection Cut(const Plane3& plane, const RoundQuadric& surface, double lengthTol, double sineTol) {
  if (surface.kind == RoundQuadric::Kind::kCylinder) {
    return Cut(plane, AxisOf(surface), surface.radius, lengthTol, sineTol);
  }
  return Cut(plane, DoubleCone{surface.point, surface.axis, surface.sine, surface.cosine}, lengthTol, sineTol);
}

double InscribedRadius(const RoundQuadric& surface, double along) {
  return surface.kind == RoundQuadric::Kind::kCone ? std::fabs(along) * surface.sine : surface.radius;
}

// With the unit vector d from the centre towards the apex, or along the axis of a cylinder, where the semi-angle is 0,
// the sphere of the radius R makes its cone |q|^2 - R^2 = ((d.q - R sin a) / cos a)^2.
std::vector<Plane3> PlanesAroundSphere(const RoundQuadric& first, const RoundQuadric& second, Vec3 centre,
                                       double radius) {
  const auto towards = [&](const RoundQuadric& surface) {
    const double along = Dot(surface.point - centre, surface.axis);
    return surface.kind == RoundQuadric::Kind::kCone && along < 0.0 ? -1.0 * surface.axis : surface.axis;
  };
  std::vector<Plane3> planes;
  for (const double sign : {1.0, -1.0}) {
    const Vec3 normal = second.cosine * towards(first) - sign * first.cosine * towards(second);
    const double offset = radius * (first.sine * second.cosine - sign * second.sine * first.cosine);
    const double length = Norm(normal);
    planes.push_back({centre + (offset / (length * length)) * normal, (1.0 / length) * normal});
  }
  return planes;
}

}  // namespace

double UnitFor(double length) {
  constexpr int kLeast = -1000;
  return length > 0.0 ? std::ldexp(1.0, std::max(std::ilogb(length), kLeast)) : 1.0;
}

RoundQuadric InUnit(RoundQuadric surface, double unit) {
  surface.point = (1.0 / unit) * surface.point;
  surface.radius /= unit;
  return surface;
}

CommonParts::CommonParts(const RoundQuadric& first, const RoundQuadric& second, const QuadricTolerances& tolerances)
    : m_tolerances(tolerances) {
  const double size =
      std::max({first.radius, second.radius, LargestComponent(first.point), LargestComponent(second.point)});
  m_unit = UnitFor(size);
  m_first = InUnit(first, m_unit);
  m_second = InUnit(second, m_unit);
  m_tol = CoincidenceTol(tolerances.length / m_unit, size / m_unit);
}

std::optional<PlaneSection> CommonParts::World(PlaneSection section) const {
  const bool isConic = section.a > 0.0;
  section.origin = World(section.origin);
  section.a *= m_unit;
  section.b *= m_unit;
  for (Line3& line : section.lines) line.point = World(line.point);
  const bool isPositive = section.a > 0.0 && section.b > 0.0;
  const bool isFinite = IsFinite(section.origin) && IsFinite(section.lines[1].point) && std::isfinite(section.a) &&
                        std::isfinite(section.b);
  if (!isFinite || isConic != isPositive) return std::nullopt;
  return section;
}

// Two surfaces that touch within the tolerance, in a place that is as far from either. So far from where they were
// compared, directions that count as equal lead apart.
bool CommonParts::IsOnBoth(Vec3 p, double distance) const {
  constexpr double kShares = 4.0;  // of the surfaces, their axes and radii
  const double turned = distance * (m_tolerances.degrees * (Nu_PI / 180.0));
  const double tol = kShares * (CoincidenceTol(m_tol, LargestComponent(p)) + std::fmax(turned, 0.0));
  return std::fabs(m_first.OffsetOf(p).distance) <= tol && std::fabs(m_second.OffsetOf(p).distance) <= tol;
}

void CommonParts::AddPoint(Vec3 p) {
  Require(IsOnBoth(p));
  m_found.emplace_back(World(p));
}

void CommonParts::AddLine(Vec3 point, Vec3 direction) {
  constexpr double kFar = 1000.0;  // times the largest coordinate or radius
  Require(IsOnBoth(point));
  for (const double side : {-kFar, kFar}) Require(IsOnBoth(point + side * direction, kFar));
  m_found.emplace_back(Line3{World(point), direction});
}

void CommonParts::AddCircle(Vec3 centre, Vec3 normal, double radius) {
  const AxisFrame frame = AxisFrame::Along(centre, normal);
  const Circle3 world{World(centre), normal, m_unit * radius};
  Require(world.radius > 0.0 && IsFinite(world));
  Require(IsOnBoth(centre + radius * frame.x) && IsOnBoth(centre + radius * frame.y));
  m_found.emplace_back(world);
}

bool CommonParts::AddSections(const std::vector<Plane3>& planes) {
  std::vector<CommonPart> sections;
  for (const Plane3& plane : planes) {
    const Plane3 exact{plane.point, Unit(plane.normal)};
    if (!IsFinite(exact)) return false;
    const PlaneSection section = Cut(exact, m_first, m_tolerances.length / m_unit, m_tolerances.sine);
    const std::vector<Vec3> points = PointsOf(section, exact.normal);
    const auto isOnBoth = [this](Vec3 p) { return IsOnBoth(p); };
    if (points.empty() || !std::all_of(points.begin(), points.end(), isOnBoth)) return false;
    const auto world = World(section);
    if (!world) return false;
    sections.emplace_back(SectionInPlane{*world, exact.normal});
  }
  std::move(sections.begin(), sections.end(), std::back_inserter(m_found));
  return true;
}

bool CommonParts::AddAroundCommonSphere() {
  const Approach approach = ClosestApproach(AxisOf(m_first), AxisOf(m_second), 0.0);
  const Vec3 centre = 0.5 * (AxisOf(m_first).At(approach.alongFirst) + AxisOf(m_second).At(approach.alongSecond));
  const double tol = CoincidenceTol(m_tol, LargestComponent(centre));
  const double radius = InscribedRadius(m_first, approach.alongFirst);
  if (!(approach.distance <= tol)) return false;
  if (!(std::fabs(radius - InscribedRadius(m_second, approach.alongSecond)) <= tol)) return false;
  return AddSections(PlanesAroundSphere(m_first, m_second, centre, radius));
}

void CommonParts::AddBranches(const std::optional<QuadricBranches>& branches, const AxisFrame& frame, double unit) {
  Require(branches.has_value());
  if (!branches) return;
  AxisFrame world = frame;
  world.origin = World(frame.origin);
  for (const QuadricIntersectionCurve& curve : branches->curves) {
    m_found.emplace_back(CurveInFrame{curve, world, m_unit * unit});
  }
  for (const Vec3& p : branches->points) {
    AddPoint(frame.origin + unit * (p.x * frame.x + p.y * frame.y + p.z * frame.z));
  }
}

std::optional<std::vector<CommonPart>> CommonParts::Take() {
  if (!m_isConfirmed) return std::nullopt;
  return std::move(m_found);
}

}  // namespace nu::engine::shapes
