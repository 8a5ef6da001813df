// Cylinders against lines and planes, and the cylinder as a quadric.

#include "nu/geometry/line.h"
#include "nu/geometry/plane.h"
#include "nu/linalg/matrix.h"
#include "nu/surfaces/cylinder.h"

int CNuCylSurf::IntersectWith(const CNuLine& line, CNuPoint* p1, CNuPoint* p2) const {
  return line.IntersectWith(*this, p1, p2);
}

int CNuCylSurf::IntersectWith(const CNuPlane& plane, CNuObjArray* result) const {
  return plane.IntersectWith(*this, result);
}

// Transformations act on rows: (p, 1) T is the local point, so Q = T Q0 T^T.
CNuMatrix CNuCylSurf::ToAlgebraicForm() const {
  const double diagonal[4] = {1.0, 1.0, 0.0, -m_radius * m_radius};
  CNuMatrix local(4, 4);
  for (int i = 0; i < 4; ++i) local.Element(i, i) = diagonal[i];
  const CNuMatrix toLocal = GetInverseTransformation();
  return toLocal * local * toLocal.Transpose();
}

CNuMatrix CNuCylSurf::ToAlgebraicForm(const CNuNonLinearGeometry& frame) const {
  const CNuMatrix toWorld = frame.GetTransformation();
  return toWorld * ToAlgebraicForm() * toWorld.Transpose();
}
