// Planes against spheres, cylinders and cones: the curves in which they cut them.

#include <cmath>

#include "nu/curves/ellipse.h"
#include "nu/curves/hyperbola.h"
#include "nu/curves/parabola.h"
#include "nu/foundation/internal/new_objects.h"
#include "nu/geometry/internal/feature_data.h"
#include "nu/geometry/internal/plane_section.h"
#include "nu/geometry/internal/surface_data.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/sphere.h"

using nu::internal::ChordAt;
using nu::internal::Components;
using nu::internal::DataOf;
using nu::internal::HandOver;
using nu::internal::Line3;
using nu::internal::NewObjects;
using nu::internal::ParallelTol;
using nu::internal::Plane3;
using nu::internal::PlaneSection;
using nu::internal::ToPoint;
using nu::internal::TouchTol;
using nu::internal::ToVector;
using nu::internal::Vec3;

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

NewObjects SphereSection(const Plane3& plane, Vec3 centre, double radius) {
  const double height = plane.Height(centre);
  const CNuPoint foot = ToPoint(centre - height * plane.normal);
  const auto chord = ChordAt(std::fabs(height), radius, TouchTol(radius, plane.point, centre));
  if (chord.count == 0) return {};
  if (chord.count == 1) return One<CNuPoint>(foot);
  return One<CNuCircle>(chord.half, foot, ToVector(plane.normal));
}

CNuLine ToLine(const Line3& line) {
  return CNuLine(ToPoint(line.point), ToVector(line.direction));
}

NewObjects TwoLines(const Line3& first, const Line3& second) {
  NewObjects objects = One<CNuLine>(ToLine(first));
  objects.push_back(std::make_unique<CNuLine>(ToLine(second)));
  return objects;
}

NewObjects ObjectsOf(const PlaneSection& section, const CNuVector& normal) {
  const OrthogonalAxesScope scope;
  const CNuPoint origin = ToPoint(section.origin);
  switch (section.kind) {
    case PlaneSection::kPoint:
      return One<CNuPoint>(origin);
    case PlaneSection::kLine:
      return One<CNuLine>(ToLine(section.lines[0]));
    case PlaneSection::kTwoLines:
      return TwoLines(section.lines[0], section.lines[1]);
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

}  // namespace

int CNuPlane::IntersectWith(const CNuSphSurf& sphere, CNuObjArray* curves) const {
  return HandOver(SphereSection(DataOf(*this), Components(sphere.GetCentre()), sphere.GetRadius()), curves);
}

int CNuPlane::IntersectWith(const CNuCylSurf& cylinder, CNuObjArray* curves) const {
  const Line3 axis = DataOf(cylinder.GetAxis());
  const auto section = Cut(DataOf(*this), axis, cylinder.GetRadius(), NuGetLengthTol(), ParallelTol());
  return HandOver(ObjectsOf(section, m_normal), curves);
}

int CNuPlane::IntersectWith(const CNuConSurf& cone, CNuObjArray* curves) const {
  const auto section = Cut(DataOf(*this), DataOf(cone), NuGetLengthTol(), ParallelTol());
  return HandOver(ObjectsOf(section, m_normal), curves);
}
