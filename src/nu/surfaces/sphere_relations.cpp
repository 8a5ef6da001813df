// Spheres against lines, planes and spheres, and the sphere as a quadric.
//
// Two spheres with centres c1, c2, radii r1, r2 and d = |c2 - c1| meet in a circle about the line of their centres, the
// way a from c1 where a^2 + h^2 = r1^2 and (d - a)^2 + h^2 = r2^2. Heron's formula gives its radius h in factors, none
// of which cancels but the one that vanishes.

#include <cmath>
#include <memory>
#include <utility>

#include "nu/engine/base/elementary.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/new_objects.h"
#include "nu/foundation/object_array.h"
#include "nu/geometry/internal/feature_data.h"
#include "nu/geometry/internal/surface_data.h"
#include "nu/surfaces/internal/algebraic_form.h"

using namespace nu::internal;

namespace {

constexpr const char* kWithSphere = "CNuSphSurf::IntersectWith(CNuSphSurf)";

// The point in which two spheres touch: one of those in which the line of their centres meets the first.
std::unique_ptr<CNuObject> Touch(const Sphere3& first, const Sphere3& second, Vec3 direction, double tol) {
  const Points2 met = Intersect(Line3{first.centre, direction}, first, tol);
  for (int k = 0; k < met.count; ++k) {
    const CNuPoint p = ToPoint(met.at[k]);
    if (std::fabs(Norm(met.at[k] - second.centre) - second.radius) < tol) return std::make_unique<CNuPoint>(p);
  }
  FailOperation(NuOperationFailed, "calculation", kWithSphere);
}

std::unique_ptr<CNuObject> Section(const Sphere3& first, const Sphere3& second) {
  const double r1 = first.radius;
  const double r2 = second.radius;
  const Vec3 between = second.centre - first.centre;
  const double d = Hypot(between.x, between.y, between.z);
  const double tol = TouchTol(std::max(r1, r2), first.centre, second.centre);
  RequireFinite(kWithSphere, first, second);
  if (!std::isfinite(d + r1 + r2)) FailUnrelated(kWithSphere);
  if (!(d > tol)) return nullptr;
  const Vec3 direction = Unit(between);
  if (std::fabs(d - (r1 + r2)) <= tol || std::fabs(d - std::fabs(r1 - r2)) <= tol)
    return Touch(first, second, direction, tol);
  if (!(d < r1 + r2) || !(d > std::fabs(r1 - r2))) return nullptr;
  const double along = 0.5 * (d + (r1 - r2) * ((r1 + r2) / d));
  const double beyond = std::sqrt(r1 + r2 + d) * std::sqrt(r1 + r2 - d);
  const double within = std::sqrt(d - r1 + r2) * std::sqrt(d + r1 - r2);
  return std::make_unique<CNuCircle>(0.5 * within * (beyond / d), ToPoint(first.centre + along * direction),
                                     ToVector(direction));
}

}  // namespace

int CNuSphSurf::IntersectWith(const CNuLine& line, CNuPoint* p1, CNuPoint* p2) const {
  return line.IntersectWith(*this, p1, p2);
}

int CNuSphSurf::IntersectWith(const CNuPlane& plane, CNuObjArray* result) const {
  return plane.IntersectWith(*this, result);
}

int CNuSphSurf::IntersectWith(const CNuSphSurf& other, CNuObjArray* result) const {
  return HandOver(WithMemory(kWithSphere,
                             [&] {
                               NewObjects found;
                               auto section = Section(DataOf(*this), DataOf(other));
                               if (section != nullptr) found.push_back(std::move(section));
                               return found;
                             }),
                  result);
}

CNuMatrix CNuSphSurf::ToAlgebraicForm() const {
  return nu::internal::AlgebraicForm(*this, {1.0, 1.0, 1.0, -m_radius * m_radius});
}

CNuMatrix CNuSphSurf::ToAlgebraicForm(const CNuNonLinearGeometry& frame) const {
  return nu::internal::Transformed(ToAlgebraicForm(), frame.GetTransformation());
}
