#ifndef NU_GEOMETRY_LINE_H
#define NU_GEOMETRY_LINE_H

#include "nu/export.h"
#include "nu/geometry/geometry.h"
#include "nu/geometry/point.h"
#include "nu/linalg/vector.h"

// The infinite straight line: the points p + t d with a point p on it and a unit direction d. The point is free along
// the line; the least-squares fit puts it at the mean of the data.
class NU_EXPORT CNuLine : public CNuGeometry {
 public:
  CNuLine();
  CNuLine(const CNuPoint& point, const CNuVector& direction);
  CNuLine(const CNuPoint& p, const CNuPoint& q);

  CNuPoint GetPoint() const { return m_point; }
  CNuVector GetDirection() const { return m_direction; }
  void GetData(CNuPoint* point, CNuVector* direction) const;

  void Translate(const CNuPoint& p);
  void Translate(double dx, double dy, double dz);
  void Rotate(double angle, CNuGeometry::EAxisType axis);
  void Rotate(double angle, const CNuVector& axis);
  void Rotate(double angle, CNuGeometry::EAxisType axis, const CNuPoint& centre);
  void Rotate(double angle, const CNuVector& axis, const CNuPoint& centre);
  void MoveTo(const CNuNonLinearGeometry& g);

  void Fit(const CNuPointArray& pts);
  void Fit(const CNuPointArray& pts, double* form, double* sumsq);

 private:
  CNuPoint m_point;
  CNuVector m_direction;
};

#endif
