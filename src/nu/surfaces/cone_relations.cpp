// Cones against lines and planes, and the cone as a quadric.

#include "nu/engine/base/elementary.h"
#include "nu/foundation/constants.h"
#include "nu/geometry/line.h"
#include "nu/geometry/plane.h"
#include "nu/linalg/matrix.h"
#include "nu/surfaces/cone.h"

using namespace nu::internal;

int CNuConSurf::IntersectWith(const CNuLine& line, CNuPoint* p1, CNuPoint* p2) const {
  return line.IntersectWith(*this, p1, p2);
}

int CNuConSurf::IntersectWith(const CNuPlane& plane, CNuObjArray* result) const {
  return plane.IntersectWith(*this, result);
}

// Transformations act on rows: (p, 1) T is the local point, so Q = T Q0 T^T.
CNuMatrix CNuConSurf::ToAlgebraicForm() const {
  const double slope = Tan(m_semiAngle * (Nu_PI / 180.0));
  const double diagonal[4] = {1.0, 1.0, -slope * slope, 0.0};
  CNuMatrix local(4, 4);
  for (int i = 0; i < 4; ++i) local.Element(i, i) = diagonal[i];
  const CNuMatrix toLocal = GetInverseTransformation();
  return toLocal * local * toLocal.Transpose();
}

CNuMatrix CNuConSurf::ToAlgebraicForm(const CNuNonLinearGeometry& frame) const {
  const CNuMatrix toWorld = frame.GetTransformation();
  return toWorld * ToAlgebraicForm() * toWorld.Transpose();
}
