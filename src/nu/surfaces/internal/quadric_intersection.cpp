#include "nu/surfaces/internal/quadric_intersection.h"

#include <array>

#include "nu/curves/ellipse.h"
#include "nu/curves/hyperbola.h"
#include "nu/curves/parabola.h"
#include "nu/curves/pcurve.h"
#include "nu/engine/base/elementary.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/double_array.h"
#include "nu/foundation/internal/downcast.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/tolerances.h"
#include "nu/geometry/internal/feature_data.h"
#include "nu/geometry/internal/surface_data.h"
#include "nu/geometry/point_array.h"
#include "nu/numerics/triag_equ.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/sphere.h"

namespace nu::internal {

RoundQuadric RoundDataOf(const CNuCylSurf& cylinder) {
  const Cylinder3 data = DataOf(cylinder);
  return {RoundQuadric::Kind::kCylinder, data.axis.point, data.axis.direction, data.radius};
}

RoundQuadric RoundDataOf(const CNuConSurf& cone) {
  const DoubleCone data = DataOf(cone);
  return {RoundQuadric::Kind::kCone, data.apex, data.axis, 0.0, data.sine, data.cosine};
}

RoundQuadric RoundDataOf(const CNuSphSurf& sphere) {
  return {RoundQuadric::Kind::kSphere, Components(sphere.GetCentre()), {}, sphere.GetRadius()};
}

bool Precedes(const RoundQuadric& first, const RoundQuadric& second) {
  const auto key = [](const RoundQuadric& s) {
    return std::array{s.radius, s.sine, s.point.x, s.point.y, s.point.z, s.axis.x, s.axis.y, s.axis.z};
  };
  return key(first) < key(second);
}

namespace {

// Next below a length; its reciprocal is a double, too.
double UnitFor(double length) {
  constexpr int kLeast = -1000;
  return length > 0.0 ? std::ldexp(1.0, std::max(std::ilogb(length), kLeast)) : 1.0;
}

RoundQuadric InUnit(RoundQuadric surface, double unit) {
  surface.point = (1.0 / unit) * surface.point;
  surface.radius /= unit;
  return surface;
}

double SemiAngleOf(const RoundQuadric& cone) {
  return Atan2(cone.sine, cone.cosine) * (180.0 / Nu_PI);
}

CNuPointArray SomePointsOf(const CNuObject& conic, double size) {
  constexpr int kPoints = 9;
  constexpr double kReach = 2.0;
  if (const auto* circle = As<CNuCircle>(conic)) return circle->ToPointArray(kPoints);
  if (const auto* ellipse = As<CNuEllipse>(conic)) return ellipse->ToPointArray(kPoints);
  if (const auto* parabola = As<CNuParabola>(conic)) {
    return parabola->ToPointArray(kPoints, 0.0, kReach * parabola->GetFocalLength(), 0);
  }
  CNuPointArray points(2);
  if (const auto* hyperbola = As<CNuHyperbola>(conic)) {
    for (const int branch : {0, 1}) points.Append(hyperbola->ToPointArray(kPoints, -kReach, kReach, branch));
  } else if (const auto* line = As<CNuLine>(conic)) {
    points.Add(line->GetPoint());
    points.Add(ToPoint(DataOf(*line).At(size)));
  } else if (const auto* point = As<CNuPoint>(conic)) {
    points.Add(*point);
  }
  return points;
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

QuadricIntersection::QuadricIntersection(const RoundQuadric& first, const RoundQuadric& second, const char* where)
    : m_where(where) {
  const double size =
      std::max({first.radius, second.radius, LargestComponent(first.point), LargestComponent(second.point)});
  RequireFinite(where, Cylinder3{{first.point, first.axis}, first.radius},
                Cylinder3{{second.point, second.axis}, second.radius});
  m_unit = UnitFor(size);
  m_first = InUnit(first, m_unit);
  m_second = InUnit(second, m_unit);
  m_tol = CoincidenceTol(NuGetLengthTol() / m_unit, size / m_unit);
}

CNuPoint QuadricIntersection::World(Vec3 p) const {
  return ToPoint(m_unit * p);
}

// Two surfaces that touch within the tolerance, in a place that is as far from either. So far from where they were
// compared, directions that count as equal lead apart.
bool QuadricIntersection::IsOnBoth(Vec3 p, double distance) const {
  constexpr double kShares = 4.0;  // of the surfaces, their axes and radii
  const double turned = distance * (NuGetDegreeTol() * (Nu_PI / 180.0));
  const double tol = kShares * (CoincidenceTol(m_tol, LargestComponent(p)) + std::fmax(turned, 0.0));
  return std::fabs(m_first.OffsetOf(p).distance) <= tol && std::fabs(m_second.OffsetOf(p).distance) <= tol;
}

bool QuadricIntersection::IsOnBoth(const CNuObject& object) const {
  const CNuPointArray points = SomePointsOf(object, m_unit);
  for (int i = 0; i < points.GetSize(); ++i) {
    if (!IsOnBoth((1.0 / m_unit) * Components(points[i]))) return false;
  }
  return true;
}

void QuadricIntersection::Require(bool isOnBoth) const {
  if (!isOnBoth) FailOperation(NuOperationFailed, "calculation", m_where);
}

void QuadricIntersection::AddPoint(Vec3 p) {
  Require(IsOnBoth(p));
  m_found.push_back(std::make_unique<CNuPoint>(World(p)));
}

void QuadricIntersection::AddLine(Vec3 point, Vec3 direction) {
  constexpr double kFar = 1000.0;  // times the largest coordinate or radius
  Require(IsOnBoth(point));
  for (const double side : {-kFar, kFar}) Require(IsOnBoth(point + side * direction, kFar));
  m_found.push_back(std::make_unique<CNuLine>(World(point), ToVector(direction)));
}

void QuadricIntersection::AddCircle(Vec3 centre, Vec3 normal, double radius) {
  const AxisFrame frame = AxisFrame::Along(centre, normal);
  Require(radius > 0.0 && IsOnBoth(centre + radius * frame.x) && IsOnBoth(centre + radius * frame.y));
  m_found.push_back(std::make_unique<CNuCircle>(m_unit * radius, World(centre), ToVector(normal)));
}

template<class Surface>
bool QuadricIntersection::AddSections(const Surface& surface, const std::vector<Plane3>& planes) {
  constexpr int kMost = 2;  // of one plane
  NewObjects sections;
  sections.reserve(kMost * planes.size());  // so that each is owned at once
  for (const Plane3& plane : planes) {
    CNuObjArray conics(kMost);
    CNuPlane(World(plane.point), ToVector(plane.normal)).IntersectWith(surface, &conics);
    const std::size_t before = sections.size();
    for (int i = 0; i < conics.GetSize(); ++i) sections.emplace_back(conics[i]);
    for (std::size_t i = before; i < sections.size(); ++i) {
      if (!IsOnBoth(*sections[i])) return false;
    }
    if (sections.size() == before) return false;
  }
  for (auto& section : sections) m_found.push_back(std::move(section));
  return true;
}
template bool QuadricIntersection::AddSections(const CNuConSurf& surface, const std::vector<Plane3>& planes);

template<class Surface>
bool QuadricIntersection::AddAroundCommonSphere(const Surface& surface) {
  const Approach approach = ClosestApproach(AxisOf(m_first), AxisOf(m_second), 0.0);
  const Vec3 centre = 0.5 * (AxisOf(m_first).At(approach.alongFirst) + AxisOf(m_second).At(approach.alongSecond));
  const double tol = CoincidenceTol(m_tol, LargestComponent(centre));
  const double radius = InscribedRadius(m_first, approach.alongFirst);
  if (!(approach.distance <= tol)) return false;
  if (!(std::fabs(radius - InscribedRadius(m_second, approach.alongSecond)) <= tol)) return false;
  return AddSections(surface, PlanesAroundSphere(m_first, m_second, centre, radius));
}
template bool QuadricIntersection::AddAroundCommonSphere(const CNuCylSurf& surface);
template bool QuadricIntersection::AddAroundCommonSphere(const CNuConSurf& surface);

void QuadricIntersection::AddBranches(const std::optional<QuadricBranches>& branches, const AxisFrame& frame,
                                      double unit) {
  Require(branches.has_value());
  AxisFrame world = frame;
  world.origin = m_unit * frame.origin;
  for (const QuadricIntersectionCurve& curve : branches->curves) {
    m_found.push_back(std::unique_ptr<CNuObject>(NewPCurve(curve, world, m_unit * unit)));
  }
  for (const Vec3& p : branches->points) {
    AddPoint(frame.origin + unit * (p.x * frame.x + p.y * frame.y + p.z * frame.z));
  }
}

namespace {

// Towards the generator of the base that the other surface may nearly share: a cylinder along its axis, a cone through
// its apex.
Vec3 TowardsCommon(const RoundQuadric& base, const RoundQuadric& other, Vec3 origin) {
  const Vec3 direction = other.kind == RoundQuadric::Kind::kCylinder ? other.axis : other.point - origin;
  const bool isOtherNappe = base.kind == RoundQuadric::Kind::kCone && Dot(direction, base.axis) < 0.0;
  return isOtherNappe ? -1.0 * direction : direction;
}

AxisFrame FrameTowards(Vec3 origin, Vec3 axis, Vec3 direction) {
  constexpr double kLeastSine = 1e-6;
  const Vec3 across = Rejection(direction, axis);
  if (!(Norm(across) > kLeastSine * Norm(direction))) return AxisFrame::Along(origin, axis);
  return AxisFrame::Along(origin, axis, Unit(across));
}

// The place on the generator at u = 0 of a cone that is next to the apex of another one, if any is, or to the centre of
// a sphere, which may touch all generators there.
double StartOf(const QuadricPair& pair) {
  constexpr double kNear = 0.5;
  if (pair.base.kind != RoundQuadric::Kind::kCone) return 0.0;
  const double along = pair.base.sine * pair.other.point.x + pair.base.cosine * pair.other.point.z;
  const bool isNextToApex =
      pair.other.kind == RoundQuadric::Kind::kCone && std::fabs(along) > kNear * Norm(pair.other.point);
  return isNextToApex || pair.other.kind == RoundQuadric::Kind::kSphere ? along : 0.0;
}

}  // namespace

// A cylinder is taken at the point of its axis that is nearest to the origin.
QuadricStage::QuadricStage(const RoundQuadric& base, const RoundQuadric& other, Vec3 origin,
                           const QuadricIntersection& intersection)
    : frame(FrameTowards(origin, base.axis, TowardsCommon(base, other, origin))) {
  pair.base = base;
  pair.base.point = {};
  pair.base.axis = {0.0, 0.0, 1.0};
  pair.other = other;
  pair.other.point = frame.Local(other.point);
  pair.other.axis = {Dot(other.axis, frame.x), Dot(other.axis, frame.y), Dot(other.axis, frame.z)};
  if (other.kind == RoundQuadric::Kind::kCylinder) {
    pair.other.point = Rejection(pair.other.point, pair.other.axis);
  }
  unit = UnitFor(std::max({base.radius, other.radius, Norm(pair.other.point)}));
  pair.base = InUnit(pair.base, unit);
  pair.other = InUnit(pair.other, unit);
  tol = CoincidenceTol(intersection.Tol(), LargestComponent(origin)) / unit;
  constexpr double kLeastReach = 1000.0;            // of the size of both surfaces
  constexpr double kMostReach = 1.0 / DBL_EPSILON;  // where their distance is lost beside the coordinates
  reach = std::fmin(std::fmax(kLeastReach, intersection.LargestPart() / unit), kMostReach);
  pair.start = StartOf(pair);
  pair.SetWaves();
}

// With w = p - point the surface is |w|^2 - r^2, |w x d|^2 - r^2 or |w x d|^2 cos^2 a - (w d)^2 sin^2 a = 0. The
// squares of d across a coordinate axis are added up: what is left of 1 beside an axis that is nearly parallel is lost.
CNuMatrix QuadricStage::Quadric() const {
  const RoundQuadric& other = pair.other;
  const bool isCone = other.kind == RoundQuadric::Kind::kCone;
  const double across = isCone ? other.cosine * other.cosine : 1.0;
  const double along = isCone ? other.sine * other.sine : 0.0;
  const double d[] = {other.axis.x, other.axis.y, other.axis.z};
  const double p[] = {other.point.x, other.point.y, other.point.z};
  CNuMatrix q(4, 4);
  double constant = -other.radius * other.radius;
  for (int i = 0; i < 3; ++i) {
    double linear = 0.0;
    for (int k = 0; k < 3; ++k) {
      const double square = d[(i + 1) % 3] * d[(i + 1) % 3] + d[(i + 2) % 3] * d[(i + 2) % 3];
      const double onAxis = other.kind == RoundQuadric::Kind::kSphere ? 1.0 : square * across - d[i] * d[i] * along;
      q.Element(i, k) = k == i ? onAxis : -d[i] * d[k] * (across + along);
      linear -= q.Element(i, k) * p[k];
    }
    q.Element(i, 3) = q.Element(3, i) = linear;
    constant -= linear * p[i];
  }
  q.Element(3, 3) = constant;
  return q;
}

namespace {

double LargestCoefficient(const CNuTriagPolynomial& p) {
  double largest = 0.0;
  for (int k = 0; k <= p.GetDegree(); ++k) largest = std::max({largest, std::fabs(p.Cos(k)), std::fabs(p.Sin(k))});
  return largest;
}

}  // namespace

int MonotoneRanges(const CNuTriagPolynomial* curve, CNuInterval* ranges) {
  CNuTriagPolynomial discriminant = curve[1] * curve[1] - curve[0] * curve[2];
  const double largest = LargestCoefficient(discriminant);
  if (!(largest > NuGetZero())) return 0;
  discriminant /= largest;  // that of surfaces with nearly parallel lines is small in all
  discriminant.Simplify(NuGetTol());
  CNuTriagPolynomial slope(discriminant.GetDegree());
  for (int k = 1; k <= slope.GetDegree(); ++k) {
    slope.Cos(k) = k * discriminant.Sin(k);
    slope.Sin(k) = -k * discriminant.Cos(k);
  }
  const std::vector<double> ends = RootsOf(slope);
  const std::size_t count = std::min<std::size_t>(ends.size(), kMostRanges);
  for (std::size_t i = 0; i < count; ++i) {
    ranges[i] = CNuInterval(ends[i], i + 1 < count ? ends[i + 1] : ends[0] + Nu_2PI, 0, 0);
  }
  return static_cast<int>(count);
}

std::vector<double> RootsOf(const CNuTriagPolynomial& p) {
  CNuTriagEqu equation;
  equation.Solve(p);
  const CNuDoubleArray roots = equation.GetDistinctRoots(0.0);
  return {roots.GetData(), roots.GetData() + roots.GetSize()};
}

void FindAsymptotes(const CNuTriagPolynomial& p, double* asymptotes, int* simple, int* twofold) {
  CNuTriagEqu equation;
  equation.Solve(p);
  const CNuDoubleArray roots = equation.GetRoots();
  int count = 0;
  for (const bool touches : {false, true}) {
    for (int i = 0, same = 1; i < roots.GetSize(); i += same, same = 1) {
      while (i + same < roots.GetSize() && roots[i + same] == roots[i]) ++same;
      if ((same % 2 == 0) == touches) asymptotes[count++] = roots[i];
    }
    if (!touches) *simple = count;
  }
  *twofold = count - *simple;
}

std::vector<double> LowerEnds(const CNuInterval* ranges, int count) {
  std::vector<double> ends(static_cast<std::size_t>(count));
  double upper = 0.0;
  for (int i = 0; i < count; ++i) ranges[i].GetBounds(&ends[static_cast<std::size_t>(i)], &upper);
  return ends;
}

namespace {

void RemoveNearest(double u, std::vector<double>& angles) {
  const auto distance = [u](double angle) { return std::fabs(Sin(0.5 * (angle - u))); };
  const auto nearest =
      std::min_element(angles.begin(), angles.end(), [&](double a, double b) { return distance(a) < distance(b); });
  if (nearest != angles.end()) angles.erase(nearest);
}

}  // namespace

void IntersectOnCone(const QuadricStage& stage, const ConeContact& contact, ConeKernel kernel,
                     QuadricIntersection& intersection) {
  CNuTriagPolynomial curve[3];
  CNuInterval ranges[kMostRanges];
  double angles[kMostRanges];
  int simple = 0;
  int twofold = 0;
  int apexSide = 0;
  const CNuConSurf upright(SemiAngleOf(stage.pair.base));
  const int count = (upright.*kernel)(stage.Quadric(), curve, ranges, angles, &simple, &twofold, &apexSide);
  const QuadricPair& pair = stage.pair;
  std::vector<double> asymptotes(angles, angles + simple + twofold);
  std::optional<QuadricBranches> branches;
  if (contact.atInfinity) {
    branches = BranchesThroughInfinity(pair, RootsOf(curve[1]), stage.tol, stage.reach);
  } else if (contact.alongGenerator) {
    if (pair.other.kind == RoundQuadric::Kind::kCone) RemoveNearest(0.0, asymptotes);
    branches = BranchesBesideLine(pair, asymptotes, stage.tol, stage.reach);
  } else if (contact.atApex || apexSide == 0) {
    branches = BranchesThroughApex(pair, asymptotes, stage.tol, stage.reach);
  } else {
    branches = BranchesOf(pair, LowerEnds(ranges, count), asymptotes, stage.tol, stage.reach);
  }
  intersection.AddBranches(branches, stage.frame, stage.unit);
}

double AngleBetween(Vec3 a, Vec3 b) {
  return Atan2(Norm(Cross(a, b)), std::fabs(Dot(a, b))) * (180.0 / Nu_PI);
}

bool AreSameAngles(double a, double b) {
  constexpr double kRoundings = 8.0 * 90.0 * DBL_EPSILON;  // of angles in degrees
  return std::fabs(a - b) <= std::fmax(NuGetDegreeTol(), kRoundings);
}

}  // namespace nu::internal
