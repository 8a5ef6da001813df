#ifndef NU_GEOMETRY_CARTESIAN_COORD_H
#define NU_GEOMETRY_CARTESIAN_COORD_H

#include "nu/export.h"
#include "nu/geometry/geometry.h"
#include "nu/geometry/point.h"
#include "nu/linalg/vector.h"

// A Cartesian frame: origin, local x axis and local z axis; the y axis is z * x. The setters store what they are given,
// neither normalised nor checked.
class NU_EXPORT CNuCartesianCoord : public CNuGeometry {
 public:
  // Origin (0, 0, 0), x axis (1, 0, 0), z axis (0, 0, 1).
  CNuCartesianCoord();

  // Stores origin and axes as they are.
  void SetData(const CNuPoint& origin, const CNuVector& xaxis, const CNuVector& zaxis);
  // Origin, x axis and z axis.
  void GetData(CNuPoint* origin, CNuVector* xaxis, CNuVector* zaxis) const;
  // Stores one axis as it is and leaves the other.
  void SetLocalXaxis(const CNuVector& xaxis);
  void SetLocalZaxis(const CNuVector& zaxis);
  // The local z axis.
  CNuVector GetLocalZaxis() const;

 private:
  CNuPoint m_origin;
  CNuVector m_xaxis;
  CNuVector m_zaxis;
};

#endif
