// Planes against spheres, cylinders and cones: the curves in which they cut them.

#include <cmath>

#include "nu/curves/ellipse.h"
#include "nu/curves/hyperbola.h"
#include "nu/curves/parabola.h"
#include "nu/geometry/internal/feature_data.h"
#include "nu/geometry/internal/section_objects.h"
#include "nu/geometry/internal/surface_data.h"

using namespace nu::internal;

namespace {

// The axes of a section are orthogonal to rounding, which a tolerance of the host's must not refuse.
class OrthogonalAxesScope {
 public:
  OrthogonalAxesScope() : m_saved(NuGetRadianTol()) { NuSetRadianTol(kRounded); }
  ~OrthogonalAxesScope() { NuSetRadianTol(m_saved); }
  OrthogonalAxesScope(const OrthogonalAxesScope&) = delete;
  OrthogonalAxesScope& operator=(const OrthogonalAxesScope&) = delete;

 private:
  static constexpr double kRounded = 1e-9;  // far above the rounding of unit vectors

  double m_saved;
};

template<class T, class... Arguments>
NewObjects One(Arguments&&... arguments) {
  NewObjects objects;
  objects.push_back(std::make_unique<T>(std::forward<Arguments>(arguments)...));
  return objects;
}

NewObjects SphereSection(const Plane3& plane, const Sphere3& sphere, const char* where) {
  RequireFinite(where, plane, sphere);
  const double height = plane.Height(sphere.centre);
  const Vec3 foot = sphere.centre - height * plane.normal;
  RequireFinite(where, foot);
  const double tol = TouchTol(sphere.radius, plane.point, sphere.centre);
  const auto chord = ChordAt(std::fabs(height), sphere.radius, tol);
  if (chord.count == 0) return {};
  if (chord.count == 1) return One<CNuPoint>(ToPoint(foot));
  return One<CNuCircle>(chord.half, ToPoint(foot), ToVector(plane.normal));
}

NewObjects OneLine(const Line3& line, const char* where) {
  return One<CNuLine>(LineFor(line.point, line.direction, where));
}

NewObjects TwoLines(const Line3& first, const Line3& second, const char* where) {
  NewObjects objects = OneLine(first, where);
  objects.push_back(std::move(OneLine(second, where).front()));
  return objects;
}

}  // namespace

NewObjects nu::internal::ObjectsOf(const PlaneSection& section, Vec3 planeNormal, const char* where) {
  const OrthogonalAxesScope scope;
  const CNuVector normal = ToVector(planeNormal);
  const CNuPoint origin = ToPoint(section.origin);
  switch (section.kind) {
    case PlaneSection::kPoint:
      return One<CNuPoint>(origin);
    case PlaneSection::kLine:
      return OneLine(section.lines[0], where);
    case PlaneSection::kTwoLines:
      return TwoLines(section.lines[0], section.lines[1], where);
    case PlaneSection::kCircle:
      return One<CNuCircle>(section.a, origin, normal);
    case PlaneSection::kEllipse:
      return One<CNuEllipse>(section.a, section.b, origin, ToVector(section.x), normal);
    case PlaneSection::kHyperbola:
      return One<CNuHyperbola>(section.a, section.b, origin, ToVector(section.x), normal);
    case PlaneSection::kParabola:
      return One<CNuParabola>(section.a, origin, ToVector(section.x), normal);
    case PlaneSection::kNothing:
      break;
  }
  return {};
}

int CNuPlane::IntersectWith(const CNuSphSurf& sphere, CNuObjArray* curves) const {
  const Plane3 plane = DataOf(*this);
  const Sphere3 ball = DataOf(sphere);
  constexpr const char* where = "CNuPlane::IntersectWith(CNuSphSurf)";
  return HandOver(WithMemory(where, [&] { return SphereSection(plane, ball, where); }), curves);
}

int CNuPlane::IntersectWith(const CNuCylSurf& cylinder, CNuObjArray* curves) const {
  const Plane3 plane = DataOf(*this);
  const Cylinder3 tube = DataOf(cylinder);
  constexpr const char* where = "CNuPlane::IntersectWith(CNuCylSurf)";
  RequireFinite(where, plane, tube);
  const auto section = Cut(plane, tube.axis, tube.radius, NuGetLengthTol(), ParallelTol());
  return HandOver(WithMemory(where, [&] { return ObjectsOf(section, plane.normal, where); }), curves);
}

int CNuPlane::IntersectWith(const CNuConSurf& cone, CNuObjArray* curves) const {
  const Plane3 plane = DataOf(*this);
  const DoubleCone data = DataOf(cone);
  constexpr const char* where = "CNuPlane::IntersectWith(CNuConSurf)";
  RequireFinite(where, plane, data);
  const auto section = Cut(plane, data, NuGetLengthTol(), ParallelTol());
  return HandOver(WithMemory(where, [&] { return ObjectsOf(section, plane.normal, where); }), curves);
}
