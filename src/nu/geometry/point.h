#ifndef NU_GEOMETRY_POINT_H
#define NU_GEOMETRY_POINT_H

#include <iosfwd>

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"
#include "nu/geometry/geometry.h"

// A point in space: three coordinates in the caller's frame and length unit. Failures are CNuOperationException with
// the cause that is named, and leave the point as it was.
class NU_EXPORT CNuPoint : public CNuObject {
 public:
  CNuPoint(double x = 0.0, double y = 0.0, double z = 0.0) : CNuObject(NuTypePoint), m_xyz{x, y, z} {}
  CNuPoint(const CNuPoint&) = default;
  CNuPoint& operator=(const CNuPoint&) = default;

  void GetData(double* x, double* y, double* z) const {
    if (x != nullptr) *x = m_xyz[0];
    if (y != nullptr) *y = m_xyz[1];
    if (z != nullptr) *z = m_xyz[2];
  }
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
  ENuBoolean IsZero(double tol) const { return IsEqual(CNuPoint(), tol); }
  ENuBoolean IsEqual(const CNuPoint& p, double tol) const {
    return IsBelow(m_xyz[0] - p.m_xyz[0], tol) && IsBelow(m_xyz[1] - p.m_xyz[1], tol) &&
                   IsBelow(m_xyz[2] - p.m_xyz[2], tol)
               ? NuTrue
               : NuFalse;
  }

  static void Swap(CNuPoint& a, CNuPoint& b);

  CNuPoint operator+(const CNuPoint& p) const {
    return CNuPoint(m_xyz[0] + p.m_xyz[0], m_xyz[1] + p.m_xyz[1], m_xyz[2] + p.m_xyz[2]);
  }
  CNuPoint operator-(const CNuPoint& p) const {
    return CNuPoint(m_xyz[0] - p.m_xyz[0], m_xyz[1] - p.m_xyz[1], m_xyz[2] - p.m_xyz[2]);
  }
  CNuPoint operator-() const { return CNuPoint(-m_xyz[0], -m_xyz[1], -m_xyz[2]); }
  CNuPoint& operator+=(const CNuPoint& p) {
    Translate(p.m_xyz[0], p.m_xyz[1], p.m_xyz[2]);
    return *this;
  }
  CNuPoint& operator-=(const CNuPoint& p) {
    Translate(-p.m_xyz[0], -p.m_xyz[1], -p.m_xyz[2]);
    return *this;
  }
  // The limits are required to differ: a factor of exactly NuGetLarge() is refused by * and taken by *=, a divisor of
  // exactly NuGetZero() is taken by / and refused by /=. A NaN is refused by * and /= and taken by the other two.
  // Factor too large: cause 7; divisor too small: cause 6, each named by the operator.
  CNuPoint operator*(double s) const;
  CNuPoint operator/(double s) const;
  CNuPoint& operator*=(double s);
  CNuPoint& operator/=(double s);

  // Distances, never negative. The differences of coordinates come first, so they are as good far from the origin as
  // near it.
  //
  // To a point: without overflow; 0 when every difference is below NuGetZero().
  double DistanceTo(const CNuPoint& p) const;
  // To the infinite line and plane.
  double DistanceTo(const CNuLine& l) const;
  double DistanceTo(const CNuPlane& pl) const;
  // To a circle, as a curve (a point within NuGetLengthTol() of its plane counts as lying in it), and to the bounded
  // curves by their own operation. Other curves, conics among them, which have a DistanceTo of their own: cause 45, as
  // for objects that are not of the class whose type code they carry, here and in all that follows.
  double DistanceTo(const CNuCurve& c) const;
  // To a sphere, a cylinder or the nearer nappe of a cone. Other surfaces: cause 45.
  double DistanceTo(const CNuSurface& s) const;

  // The closest point. On a sphere from its centre and on a cylinder or a cone from its axis, where many are equally
  // close: cause 9, but the apex has itself; as far from both nappes of a cone: on the one to which the axis points. On
  // other surfaces: cause 45.
  CNuPoint ProjectionOn(const CNuLine& l) const;
  CNuPoint ProjectionOn(const CNuPlane& pl) const;
  CNuPoint ProjectionOn(const CNuSurface& s) const;

  // Halfway to a point, or to the projection on a line or plane.
  CNuPoint MidPoint(const CNuPoint& p) const;
  CNuPoint MidPoint(const CNuLine& l) const;
  CNuPoint MidPoint(const CNuPlane& pl) const;
  // The plane through the mid point that is perpendicular to the way there;
  // its normal points to this point. No way to go, within NuGetZero(): cause
  // 19 for the point, 21 for the line. Results that are not finite: cause 45.
  CNuPlane MidPlane(const CNuPoint& p) const;
  CNuPlane MidPlane(const CNuLine& l) const;

  // Sides. Closer than tol is "on"; a distance of exactly tol is not. A distance that is NaN has no side: cause 45.
  //
  // Left or right of a line, seen from the tip of `ref` (0, 0, 1 if not given) in the direction of the line; a point in
  // the plane of the line and `ref` counts as left. `ref` has not three components: cause 10; is zero: cause 9.
  CNuGeometry::ELineSideType LineSide(const CNuLine& l, double tol) const;
  CNuGeometry::ELineSideType LineSide(const CNuLine& l, const CNuVector& ref, double tol) const;
  // Inside or outside a circle or a conic, whose inside holds the foci; away from the plane that is decided by the
  // projection on it. Other geometry: cause 45.
  CNuGeometry::ECurveSideType CurveSide(const CNuGeometry& curve, double tol) const;
  // Inside or outside a sphere, a cylinder or a cone, which is "on" where it is closer than tol across its axis; of a
  // plane, outside is where the normal points to. Other geometry: cause 45.
  CNuGeometry::ESurfaceSideType SurfaceSide(const CNuGeometry& surface, double tol) const;

  void Translate(double dx, double dy, double dz) {
    m_xyz[0] += dx;
    m_xyz[1] += dy;
    m_xyz[2] += dz;
  }
  // Places this point at p. It is required not to add p: all features are placed by this overload.
  void Translate(const CNuPoint& p) { *this = p; }
  // By `angle` degrees, right-handed, about an axis through the global origin or through `centre`. An angle within
  // 6e-7 degrees of a multiple of 90 counts as that multiple: a smaller rotation does nothing. An axis that has not
  // three components: cause 10; a zero axis: cause 9; an angle below NuGetZero() is not checked for these.
  void Rotate(double angle, CNuGeometry::EAxisType axis);
  void Rotate(double angle, const CNuVector& axis);
  void Rotate(double angle, CNuGeometry::EAxisType axis, const CNuPoint& centre);
  void Rotate(double angle, const CNuVector& axis, const CNuPoint& centre);
  // Expresses this point in a frame. The axes are normalised but not made orthogonal: the new coordinates are the
  // products with x, z * x and z. An axis that has not three components: cause 10.
  void MoveTo(const CNuPoint& origin, const CNuVector& xaxis, const CNuVector& zaxis);
  void MoveTo(const CNuNonLinearGeometry& g);

  // One record: the character 'p' and three doubles in the byte order of the machine, 25 bytes. Writing returns true;
  // the caller looks at the stream. Reading returns false when the next byte is no 'p', which it consumes, and leaves
  // the point; coordinates that are missing at the end of the file keep their value.
  bool BinaryDump(std::ofstream& out) const;
  bool BinaryRead(std::ifstream& in);

 private:
  static bool IsBelow(double difference, double tol) { return difference < tol && -difference < tol; }

  double m_xyz[3];
};

#endif
