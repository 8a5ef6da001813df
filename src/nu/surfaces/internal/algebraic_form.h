#ifndef NU_SURFACES_INTERNAL_ALGEBRAIC_FORM_H
#define NU_SURFACES_INTERNAL_ALGEBRAIC_FORM_H

#include "nu/geometry/nonlinear_geometry.h"
#include "nu/linalg/matrix.h"

// Transformations act on rows: (p, 1) T is the local point, so Q = T Q0 T^T.
namespace nu::internal {

inline CNuMatrix Transformed(const CNuMatrix& form, const CNuMatrix& transformation) {
  return transformation * form * transformation.Transpose();
}

// Of a quadric that is diagonal in the frame of its surface.
inline CNuMatrix AlgebraicForm(const CNuNonLinearGeometry& surface, const double (&diagonal)[4]) {
  CNuMatrix local(4, 4);
  for (int i = 0; i < 4; ++i) local.Element(i, i) = diagonal[i];
  return Transformed(local, surface.GetInverseTransformation());
}

}  // namespace nu::internal

#endif
