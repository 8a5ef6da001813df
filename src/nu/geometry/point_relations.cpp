// Points against lines, planes, curves and surfaces.
//
// With the feature's point P0, its unit direction d or unit normal n and w = p - P0:
//   line    r = w - (w.d) d     distance |r|         foot P0 + (w.d) d
//   plane   s = w.n             distance |s|         foot p - s n
//   circle  h = w.n, rho = |w - h n|, distance |(h, rho - R)|
//   sphere  rho = |w|           distance |rho - R|   foot P0 + (R / rho) w
//   cylinder    rho = |r|       distance |rho - R|   foot p + (R / rho - 1) r
//   cone    e = |r| cos g - |w.d| sin g, g the semi-angle: distance |e|, foot p - e (cos g r / |r| -+ sin g d) for w.d
//           above or below 0, on the nappe at the side of the point
// w is formed before anything else: a common offset of point and feature cancels there, and no result inherits its
// size.

#include <cmath>
#include <optional>

#include "nu/curves/bounded_curve.h"
#include "nu/curves/circle.h"
#include "nu/curves/internal/conic_relations.h"
#include "nu/engine/base/elementary.h"
#include "nu/foundation/internal/downcast.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/numeric_helpers.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/internal/surface_data.h"
#include "nu/geometry/line.h"
#include "nu/geometry/plane.h"
#include "nu/geometry/point.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/sphere.h"

using namespace nu::internal;

namespace {

[[noreturn]] void FailUnsupported(const char* where) {
  FailOperation(NuOperationUnsupported, "calculation", where);
}

double Length(Vec3 v) {
  return NuPythag(v.x, v.y, v.z);
}

// From the foot of the perpendicular on the line to the point.
Vec3 FromLine(const CNuPoint& p, const CNuLine& l) {
  return Rejection(Components(p - l.GetPoint()), Components(l.GetDirection()));
}

double SignedDistance(const CNuPoint& p, const CNuPlane& pl) {
  return Dot(Components(p - pl.GetPoint()), Components(pl.GetNormal()));
}

// A point in coordinates of a cone: the vector from the axis to it, and the signed height over the apex.
struct ConeCoordinates {
  ConeCoordinates(const CNuPoint& p, const CNuConSurf& surface)
      : cone(nu::internal::DataOf(surface)),
        height(Dot(Components(p) - cone.apex, cone.axis)),
        across(Rejection(Components(p) - cone.apex, cone.axis)) {}

  double SignedDistance() const { return Length(across) * cone.cosine - std::fabs(height) * cone.sine; }
  bool IsAtApex() const { return IsNull(across, NuGetZero()) && std::fabs(height) < NuGetZero(); }

  DoubleCone cone;
  double height;
  Vec3 across;
};

// The vector from the centre or the axis of a round surface to a point, and the radius there: of a cone, at the height
// of the point.
struct RadialCoordinates {
  double SignedDistance() const { return Length(across) - radius; }

  Vec3 across;
  double radius;
};

std::optional<RadialCoordinates> AcrossSurface(const CNuPoint& p, const CNuGeometry& surface) {
  if (const auto* sphere = As<CNuSphSurf>(surface)) {
    return RadialCoordinates{Components(p - sphere->GetCentre()), sphere->GetRadius()};
  }
  if (const auto* cylinder = As<CNuCylSurf>(surface)) {
    const Cylinder3 tube = nu::internal::DataOf(*cylinder);
    return RadialCoordinates{Rejection(Components(p) - tube.axis.point, tube.axis.direction), tube.radius};
  }
  if (const auto* cone = As<CNuConSurf>(surface)) {
    const ConeCoordinates at(p, *cone);
    return RadialCoordinates{at.across, std::fabs(at.height) * Tan(cone->GetSemiAngle() * (Nu_PI / 180.0))};
  }
  return std::nullopt;
}

CNuPoint FootOnCone(const CNuPoint& p, const CNuConSurf& surface) {
  const ConeCoordinates at(p, surface);
  if (at.IsAtApex()) return p;
  if (IsNull(at.across, NuGetZero())) FailOperation(NuOperationZeroVector, "calculation", "CNuPoint::ProjectionOn()");
  const double downhill = at.height < 0.0 ? at.cone.sine : -at.cone.sine;
  return p - ToPoint(at.SignedDistance() * (at.cone.cosine * Unit(at.across) + downhill * at.cone.axis));
}

// How far a point lies from the axis of a circle, and how high above its plane.
struct CircleCoordinates {
  double radial;
  double height;
  double radius;
};

CircleCoordinates InCircleFrame(const CNuPoint& p, const CNuCircle& circle) {
  double radius = 0.0;
  CNuPoint centre;
  CNuVector axis;
  circle.GetData(&radius, &centre, &axis);
  const Vec3 normal = Components(axis);
  const Vec3 w = Components(p - centre);
  const double height = Dot(w, normal);
  if (std::fabs(height) < NuGetLengthTol()) return {Length(w), 0.0, radius};
  return {Length(w - height * normal), height, radius};
}

double DistanceToCircle(const CircleCoordinates& at) {
  return NuPythag(at.height, at.radial - at.radius);
}

std::optional<ConicCoordinates> InConicFrame(const CNuPoint& p, const CNuGeometry& conic) {
  if (const auto* ellipse = As<CNuEllipse>(conic)) return CoordinatesFor(p, *ellipse);
  if (const auto* hyperbola = As<CNuHyperbola>(conic)) return CoordinatesFor(p, *hyperbola);
  if (const auto* parabola = As<CNuParabola>(conic)) return CoordinatesFor(p, *parabola);
  return std::nullopt;
}

// A distance that is no number has no side.
CNuGeometry::ESideType Side(double distance, double tol, bool outside, const char* where) {
  if (std::isnan(distance)) FailUnsupported(where);
  if (std::fabs(distance) < tol) return CNuGeometry::SIDE_ON;
  return outside ? CNuGeometry::SIDE_OUTSIDE : CNuGeometry::SIDE_INSIDE;
}

}  // namespace

double CNuPoint::DistanceTo(const CNuPoint& p) const {
  return NuPythag(m_xyz[0] - p.m_xyz[0], m_xyz[1] - p.m_xyz[1], m_xyz[2] - p.m_xyz[2]);
}

double CNuPoint::DistanceTo(const CNuLine& l) const {
  return Length(FromLine(*this, l));
}

double CNuPoint::DistanceTo(const CNuPlane& pl) const {
  return std::fabs(SignedDistance(*this, pl));
}

double CNuPoint::DistanceTo(const CNuCurve& c) const {
  if (const auto* circle = As<CNuCircle>(c)) return DistanceToCircle(InCircleFrame(*this, *circle));
  if (const auto* bounded = As<CNuBoundedCurve>(c)) return bounded->DistanceTo(*this);
  FailUnsupported("CNuPoint::DistanceTo()");
}

double CNuPoint::DistanceTo(const CNuSurface& s) const {
  if (const auto* cone = As<CNuConSurf>(s)) return std::fabs(ConeCoordinates(*this, *cone).SignedDistance());
  const auto at = AcrossSurface(*this, s);
  if (!at) FailUnsupported("CNuPoint::DistanceTo()");
  return std::fabs(at->SignedDistance());
}

CNuPoint CNuPoint::ProjectionOn(const CNuLine& l) const {
  const CNuPoint origin = l.GetPoint();
  const Vec3 direction = Components(l.GetDirection());
  return origin + ToPoint(Dot(Components(*this - origin), direction) * direction);
}

CNuPoint CNuPoint::ProjectionOn(const CNuPlane& pl) const {
  return *this - ToPoint(SignedDistance(*this, pl) * Components(pl.GetNormal()));
}

CNuPoint CNuPoint::ProjectionOn(const CNuSurface& s) const {
  if (const auto* cone = As<CNuConSurf>(s)) return FootOnCone(*this, *cone);
  const auto at = AcrossSurface(*this, s);
  if (!at) FailUnsupported("CNuPoint::ProjectionOn()");
  if (IsNull(at->across, NuGetZero())) FailOperation(NuOperationZeroVector, "calculation", "CNuPoint::ProjectionOn()");
  return *this - ToPoint(at->across) + ToPoint(at->radius * Unit(at->across));
}

CNuPoint CNuPoint::MidPoint(const CNuPoint& p) const {
  const CNuPoint sum = p + *this;  // halved without the limit of operator*, which NuSetLarge() may move below it
  return CNuPoint(0.5 * sum.m_xyz[0], 0.5 * sum.m_xyz[1], 0.5 * sum.m_xyz[2]);
}

CNuPoint CNuPoint::MidPoint(const CNuLine& l) const {
  return MidPoint(ProjectionOn(l));
}

CNuPoint CNuPoint::MidPoint(const CNuPlane& pl) const {
  return MidPoint(ProjectionOn(pl));
}

CNuPlane CNuPoint::MidPlane(const CNuPoint& p) const {
  const CNuPoint difference = *this - p;
  if (difference.IsZero(NuGetZero()))
    FailOperation(NuOperationCoincidentPoints, "calculation", "CNuPoint::MidPlane(CNuPoint)");
  return PlaneFor(Components(MidPoint(p)), Components(difference), "CNuPoint::MidPlane(CNuPoint)");
}

CNuPlane CNuPoint::MidPlane(const CNuLine& l) const {
  const Vec3 offset = FromLine(*this, l);
  if (IsNull(offset, NuGetZero())) FailOperation(NuOperationPointOnLine, "calculation", "CNuPoint::MidPlane(CNuLine)");
  return PlaneFor(Components(MidPoint(l)), offset, "CNuPoint::MidPlane(CNuLine)");
}

CNuGeometry::ELineSideType CNuPoint::LineSide(const CNuLine& l, double tol) const {
  return LineSide(l, CNuVector(0.0, 0.0, 1.0), tol);
}

CNuGeometry::ELineSideType CNuPoint::LineSide(const CNuLine& l, const CNuVector& ref, double tol) const {
  const Vec3 fromLine = FromLine(*this, l);
  if (Length(fromLine) < tol) return CNuGeometry::SIDE_ON;
  const Vec3 c = Cross(Components(l.GetDirection()), Rescaled(fromLine));
  if (!IsFinite(c)) FailUnsupported("CNuPoint::LineSide()");
  // On the line itself, under a tolerance that lets nothing be "on", the angle has no value and counts as a right one.
  if (IsNull(c, NuGetZero())) return CNuGeometry::SIDE_LEFT;
  return ToVector(c).AngleWith(ref) <= 90.0 ? CNuGeometry::SIDE_LEFT : CNuGeometry::SIDE_RIGHT;
}

CNuGeometry::ECurveSideType CNuPoint::CurveSide(const CNuGeometry& curve, double tol) const {
  constexpr const char* where = "CNuPoint::CurveSide()";
  if (const auto* circle = As<CNuCircle>(curve)) {
    const CircleCoordinates at = InCircleFrame(*this, *circle);
    return Side(DistanceToCircle(at), tol, at.radial > at.radius, where);
  }
  const auto at = InConicFrame(*this, curve);
  if (!at) FailUnsupported(where);
  return Side(at->Distance(), tol, at->outside, where);
}

CNuGeometry::ESurfaceSideType CNuPoint::SurfaceSide(const CNuGeometry& surface, double tol) const {
  constexpr const char* where = "CNuPoint::SurfaceSide()";
  if (const auto* plane = As<CNuPlane>(surface)) {
    const double s = SignedDistance(*this, *plane);
    return Side(s, tol, s > 0.0, where);
  }
  const auto at = AcrossSurface(*this, surface);
  if (!at) FailUnsupported(where);
  const double signedDistance = at->SignedDistance();
  return Side(signedDistance, tol, signedDistance > 0.0, where);
}
