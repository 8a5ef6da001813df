// Cylinders against lines and planes, and the cylinder as a quadric.

#include "nu/geometry/line.h"
#include "nu/geometry/plane.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/internal/algebraic_form.h"

int CNuCylSurf::IntersectWith(const CNuLine& line, CNuPoint* p1, CNuPoint* p2) const {
  return line.IntersectWith(*this, p1, p2);
}

int CNuCylSurf::IntersectWith(const CNuPlane& plane, CNuObjArray* result) const {
  return plane.IntersectWith(*this, result);
}

CNuMatrix CNuCylSurf::ToAlgebraicForm() const {
  return nu::internal::AlgebraicForm(*this, {1.0, 1.0, 0.0, -m_radius * m_radius});
}

CNuMatrix CNuCylSurf::ToAlgebraicForm(const CNuNonLinearGeometry& frame) const {
  return nu::internal::Transformed(ToAlgebraicForm(), frame.GetTransformation());
}
