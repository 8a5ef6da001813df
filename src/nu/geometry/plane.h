#ifndef NU_GEOMETRY_PLANE_H
#define NU_GEOMETRY_PLANE_H

#include "nu/export.h"
#include "nu/geometry/geometry.h"
#include "nu/geometry/point.h"
#include "nu/linalg/vector.h"

// The infinite plane: the points p with (p - P0) % n = 0, with a point P0 on it and a unit normal n.
class NU_EXPORT CNuPlane : public CNuGeometry {
 public:
  CNuPlane();
  CNuPlane(const CNuPoint& point, const CNuVector& normal);
  CNuPlane(const CNuPoint& point, const CNuLine& line);

  CNuPoint GetPoint() const { return m_point; }
  CNuVector GetNormal() const { return m_normal; }
  void GetData(CNuPoint* point, CNuVector* normal) const;

  void Translate(const CNuPoint& p);
  void Translate(double dx, double dy, double dz);
  void Rotate(double angle, CNuGeometry::EAxisType axis);
  void Rotate(double angle, const CNuVector& axis);
  void Rotate(double angle, CNuGeometry::EAxisType axis, const CNuPoint& centre);
  void Rotate(double angle, const CNuVector& axis, const CNuPoint& centre);

  void Fit(const CNuPointArray& pts);
  void Fit(const CNuPointArray& pts, double* form, double* sumsq);

 private:
  CNuPoint m_point;
  CNuVector m_normal;
};

#endif
