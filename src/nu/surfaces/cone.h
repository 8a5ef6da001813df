#ifndef NU_SURFACES_CONE_H
#define NU_SURFACES_CONE_H

#include "nu/export.h"
#include "nu/surfaces/surface.h"

// The infinite circular cone with both of its nappes: the lines through the apex that make the semi-angle with the
// axis. The apex is the origin of the position, the axis its z axis, and its x axis any direction across. A fitted
// cone's axis points from the apex into the data.
class NU_EXPORT CNuConSurf : public CNuSurface {
 public:
  // The semi-angle is in degrees. CNuConstructionException, checked in this order: cause 6 for a semi-angle that is not
  // strictly between 0 and 90, or NaN; cause 4 for a direction that has not three components; cause 3 for one that is
  // zero within NuGetZero() or not finite. The direction is normalised. A semi-angle alone leaves the cone without a
  // position, with the apex at the origin and around the z axis.
  explicit CNuConSurf(double semiAngle);
  CNuConSurf(double semiAngle, const CNuPoint& apex, const CNuVector& axisDirection);

  double GetSemiAngle() const { return m_semiAngle; }  // degrees
  CNuPoint GetApex() const;
  CNuVector GetAxisDirection() const;
  CNuLine GetAxis() const;
  void GetData(double* semiAngle, CNuPoint* apex, CNuVector* axisDirection) const;

  // The symmetric 4 x 4 matrix Q for which p Q p^T = 0 if and only if p = (x, y, z, 1) is on the cone, with p in global
  // coordinates or in those of the position of `frame`.
  CNuMatrix ToAlgebraicForm() const;
  CNuMatrix ToAlgebraicForm(const CNuNonLinearGeometry& frame) const;

 private:
  void Place(double semiAngle, const CNuPoint& apex, const CNuVector& axisDirection);

  double m_semiAngle;
};

#endif
