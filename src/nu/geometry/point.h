#ifndef NU_GEOMETRY_POINT_H
#define NU_GEOMETRY_POINT_H

#include <iosfwd>

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"
#include "nu/geometry/geometry.h"

// A point in space, in the caller's frame and length unit.
class NU_EXPORT CNuPoint : public CNuObject {
 public:
  CNuPoint(double x = 0.0, double y = 0.0, double z = 0.0) : CNuObject(NuTypePoint), m_xyz{x, y, z} {}
  CNuPoint(const CNuPoint&) = default;
  CNuPoint& operator=(const CNuPoint&) = default;

  void GetData(double* x, double* y, double* z) const;
  double x() const { return m_xyz[0]; }
  double y() const { return m_xyz[1]; }
  double z() const { return m_xyz[2]; }
  double& x() { return m_xyz[0]; }
  double& y() { return m_xyz[1]; }
  double& z() { return m_xyz[2]; }

  // (x, y, z), and the homogeneous (x, y, z, 1).
  CNuVector To3DVector() const;
  operator CNuVector() const;
  CNuVector To4DVector() const;

  // Every |coordinate|, or difference of coordinates, strictly below tol: a box test, not a distance.
  ENuBoolean IsZero(double tol) const;
  ENuBoolean IsEqual(const CNuPoint& p, double tol) const;

  static void Swap(CNuPoint& a, CNuPoint& b);

  CNuPoint operator+(const CNuPoint& p) const;
  CNuPoint operator-(const CNuPoint& p) const;
  CNuPoint operator-() const;
  CNuPoint& operator+=(const CNuPoint& p);
  CNuPoint& operator-=(const CNuPoint& p);
  CNuPoint operator*(double s) const;
  CNuPoint operator/(double s) const;
  CNuPoint& operator*=(double s);
  CNuPoint& operator/=(double s);

  double DistanceTo(const CNuPoint& p) const;
  double DistanceTo(const CNuLine& l) const;
  double DistanceTo(const CNuPlane& pl) const;
  double DistanceTo(const CNuCurve& c) const;
  double DistanceTo(const CNuSurface& s) const;

  CNuPoint ProjectionOn(const CNuLine& l) const;
  CNuPoint ProjectionOn(const CNuPlane& pl) const;
  CNuPoint ProjectionOn(const CNuSurface& s) const;

  CNuPoint MidPoint(const CNuPoint& p) const;
  CNuPoint MidPoint(const CNuLine& l) const;
  CNuPoint MidPoint(const CNuPlane& pl) const;
  CNuPlane MidPlane(const CNuPoint& p) const;
  CNuPlane MidPlane(const CNuLine& l) const;

  CNuGeometry::ELineSideType LineSide(const CNuLine& l, double tol) const;
  CNuGeometry::ELineSideType LineSide(const CNuLine& l, const CNuVector& ref, double tol) const;
  CNuGeometry::ECurveSideType CurveSide(const CNuGeometry& curve, double tol) const;
  CNuGeometry::ESurfaceSideType SurfaceSide(const CNuGeometry& surface, double tol) const;

  void Translate(double dx, double dy, double dz);
  void Translate(const CNuPoint& p);
  void Rotate(double angle, CNuGeometry::EAxisType axis);
  void Rotate(double angle, const CNuVector& axis);
  void Rotate(double angle, CNuGeometry::EAxisType axis, const CNuPoint& centre);
  void Rotate(double angle, const CNuVector& axis, const CNuPoint& centre);
  void MoveTo(const CNuPoint& origin, const CNuVector& xaxis, const CNuVector& zaxis);
  void MoveTo(const CNuNonLinearGeometry& g);

  bool BinaryDump(std::ofstream& out) const;
  bool BinaryRead(std::ifstream& in);

 private:
  double m_xyz[3];
};

#endif
