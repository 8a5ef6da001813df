// Cones against lines and planes, and the cone as a quadric.

#include "nu/engine/base/elementary.h"
#include "nu/foundation/constants.h"
#include "nu/geometry/line.h"
#include "nu/geometry/plane.h"
#include "nu/surfaces/cone.h"
#include "nu/surfaces/internal/algebraic_form.h"

using namespace nu::internal;

int CNuConSurf::IntersectWith(const CNuLine& line, CNuPoint* p1, CNuPoint* p2) const {
  return line.IntersectWith(*this, p1, p2);
}

int CNuConSurf::IntersectWith(const CNuPlane& plane, CNuObjArray* result) const {
  return plane.IntersectWith(*this, result);
}

CNuMatrix CNuConSurf::ToAlgebraicForm() const {
  const double slope = Tan(m_semiAngle * (Nu_PI / 180.0));
  return nu::internal::AlgebraicForm(*this, {1.0, 1.0, -slope * slope, 0.0});
}

CNuMatrix CNuConSurf::ToAlgebraicForm(const CNuNonLinearGeometry& frame) const {
  return nu::internal::Transformed(ToAlgebraicForm(), frame.GetTransformation());
}
