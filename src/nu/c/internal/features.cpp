#include "nu/c/internal/features.h"

#include <cfloat>
#include <cmath>

#include "nu/association/internal/feature_access.h"

namespace nu::internal::c {
namespace {

// Of the square of a unit vector, or the product of two that are orthogonal, after many motions.
constexpr double kUnitTol = 64.0 * DBL_EPSILON;

CNuVector Direction(const nu_feature& f) {
  return CNuVector(f.direction[0], f.direction[1], f.direction[2]);
}
CNuVector XAxis(const nu_feature& f) {
  return CNuVector(f.x_axis[0], f.x_axis[1], f.x_axis[2]);
}
CNuPoint Point(const nu_feature& f) {
  return CNuPoint(f.point[0], f.point[1], f.point[2]);
}

bool IsNear(double value, double to) {
  return std::fabs(value - to) <= kUnitTol;
}
bool HasUnitDirection(const nu_feature& f) {
  const Vec3 d = LoadVec3(f.direction);
  return f.is_unit != 0 && IsNear(Dot(d, d), 1.0);
}
bool HasFrame(const nu_feature& f) {
  const Vec3 d = LoadVec3(f.direction);
  const Vec3 x = LoadVec3(f.x_axis);
  return HasUnitDirection(f) && IsNear(Dot(x, x), 1.0) && IsNear(Dot(d, x), 0.0);
}

// Sizes that a fit may give: also 0, for points that lie on the feature's circle or axis.
bool IsSize(double size) {
  return size >= 0.0 && std::isfinite(size);
}

template<class Class>
Class AsItIs(const nu_feature& f) {
  Class made = AnyOf<Class>();
  FeatureAccess::PutFrame(Point(f), XAxis(f), Direction(f), &made);
  FeatureAccess::PutSizes(f.size[0], f.size[1], &made);
  return made;
}

// With an x axis of zero any one is chosen.
template<class Conic, class... Sizes>
Conic ConicOf(const nu_feature& f, Sizes... sizes) {
  if (HasFrame(f) && (IsSize(sizes) && ...)) return AsItIs<Conic>(f);
  if (XAxis(f).IsZero(NuGetZero()) != NuFalse) return Conic(sizes..., Point(f), Direction(f));
  return Conic(sizes..., Point(f), XAxis(f), Direction(f));
}

template<class Class, class... Sizes>
Class RoundOf(const nu_feature& f, Sizes... sizes) {
  if (HasFrame(f) && (IsSize(sizes) && ...)) return AsItIs<Class>(f);
  return Class(sizes..., Point(f), Direction(f));
}

CNuLine LineOf(const nu_feature& f) {
  if (!HasUnitDirection(f)) return CNuLine(Point(f), Direction(f));
  CNuLine line;
  FeatureAccess::Put(Line3{LoadVec3(f.point), LoadVec3(f.direction)}, &line);
  return line;
}

CNuPlane PlaneOf(const nu_feature& f) {
  if (!HasUnitDirection(f)) return CNuPlane(Point(f), Direction(f));
  CNuPlane plane;
  FeatureAccess::Put(Plane3{LoadVec3(f.point), LoadVec3(f.direction)}, &plane);
  return plane;
}

CNuSphSurf SphereOf(const nu_feature& f) {
  if (f.is_unit == 0 || !IsSize(f.size[0])) return CNuSphSurf(f.size[0], Point(f));
  CNuSphSurf sphere(1.0, Point(f));
  FeatureAccess::PutSizes(f.size[0], 0.0, &sphere);
  return sphere;
}

// No fit gives a semi-angle that the constructor refuses.
CNuConSurf ConeOf(const nu_feature& f) {
  const bool isAngle = f.size[0] > 0.0 && f.size[0] < 90.0;
  return isAngle ? RoundOf<CNuConSurf>(f, f.size[0]) : CNuConSurf(f.size[0], Point(f), Direction(f));
}

nu_feature Numbers(std::int32_t kind, const CNuPoint& point) {
  nu_feature f{};
  f.kind = kind;
  f.is_unit = 1;
  Write(point, f.point);
  return f;
}

template<class Placed>
nu_feature Numbers(const Placed& placed, double first, double second = 0.0) {
  CNuPoint origin;
  CNuVector x, z;
  FeatureAccess::GetFrame(placed, &origin, &x, &z);
  nu_feature f = Numbers(placed.GetType(), origin);
  Write(x, f.x_axis);
  Write(z, f.direction);
  f.size[0] = first;
  f.size[1] = second;
  return f;
}

template<class Class>
bool Read(const CNuObject& object, nu_feature* feature) {
  const auto* found = dynamic_cast<const Class*>(&object);
  if (found != nullptr) *feature = ToFeature(*found);
  return found != nullptr;
}

template<class... Classes>
nu_feature ReadAny(const CNuObject& object, std::variant<Classes...>*) {
  nu_feature feature{};
  feature.kind = object.GetType();
  static_cast<void>((Read<Classes>(object, &feature) || ...));
  return feature;
}

}  // namespace

AnyClass ClassOf(const nu_feature* feature) {
  Require(feature != nullptr, "the feature is null");
  const nu_feature& f = *feature;
  switch (f.kind) {
    case NU_KIND_POINT:
      return Point(f);
    case NU_KIND_LINE:
      return LineOf(f);
    case NU_KIND_PLANE:
      return PlaneOf(f);
    case NU_KIND_CIRCLE:
      return RoundOf<CNuCircle>(f, f.size[0]);
    case NU_KIND_ELLIPSE:
      return ConicOf<CNuEllipse>(f, f.size[0], f.size[1]);
    case NU_KIND_HYPERBOLA:
      return ConicOf<CNuHyperbola>(f, f.size[0], f.size[1]);
    case NU_KIND_PARABOLA:
      return ConicOf<CNuParabola>(f, f.size[0]);
    case NU_KIND_SPHERE:
      return SphereOf(f);
    case NU_KIND_CYLINDER:
      return RoundOf<CNuCylSurf>(f, f.size[0]);
    case NU_KIND_CONE:
      return ConeOf(f);
    case NU_KIND_TORUS:
      return RoundOf<CNuTorSurf>(f, f.size[0], f.size[1]);
    default:
      RefuseArgument("the kind names no feature");
  }
}

nu_feature ToFeature(const CNuPoint& point) {
  return Numbers(NU_KIND_POINT, point);
}

nu_feature ToFeature(const CNuLine& line) {
  nu_feature f = Numbers(NU_KIND_LINE, line.GetPoint());
  Write(line.GetDirection(), f.direction);
  return f;
}

nu_feature ToFeature(const CNuPlane& plane) {
  nu_feature f = Numbers(NU_KIND_PLANE, plane.GetPoint());
  Write(plane.GetNormal(), f.direction);
  return f;
}

nu_feature ToFeature(const CNuCircle& circle) {
  return Numbers(circle, circle.GetRadius());
}

nu_feature ToFeature(const CNuEllipse& ellipse) {
  return Numbers(ellipse, ellipse.GetSemiAxisA(), ellipse.GetSemiAxisB());
}

nu_feature ToFeature(const CNuHyperbola& hyperbola) {
  return Numbers(hyperbola, hyperbola.GetSemiAxisA(), hyperbola.GetSemiAxisB());
}

nu_feature ToFeature(const CNuParabola& parabola) {
  return Numbers(parabola, parabola.GetFocalLength());
}

nu_feature ToFeature(const CNuSphSurf& sphere) {
  nu_feature f = Numbers(NU_KIND_SPHERE, sphere.GetCentre());
  f.size[0] = sphere.GetRadius();
  return f;
}

nu_feature ToFeature(const CNuCylSurf& cylinder) {
  return Numbers(cylinder, cylinder.GetRadius());
}

nu_feature ToFeature(const CNuConSurf& cone) {
  return Numbers(cone, cone.GetSemiAngle());
}

nu_feature ToFeature(const CNuTorSurf& torus) {
  return Numbers(torus, torus.GetMajorRadius(), torus.GetMinorRadius());
}

nu_feature ToFeatureOfAny(const CNuObject& object) {
  return ReadAny(object, static_cast<AnyClass*>(nullptr));
}

Objects Taken(const CNuObjArray& objects) {
  Objects elements;
  int taken = 0;
  try {
    elements.reserve(static_cast<std::size_t>(objects.GetSize()));
    for (; taken < objects.GetSize(); ++taken) elements.emplace_back(objects[taken]);
  } catch (...) {
    for (; taken < objects.GetSize(); ++taken) delete objects[taken];
    throw;
  }
  return elements;
}

}  // namespace nu::internal::c
