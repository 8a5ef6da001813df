#ifndef NU_GEOMETRY_POINT_H
#define NU_GEOMETRY_POINT_H

#include <iosfwd>

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/foundation/object.h"
#include "nu/fwd.h"
#include "nu/geometry/geometry.h"

// A point in space: three coordinates in the caller's frame and length unit. All failures are CNuOperationException,
// named by the operation, and leave the point as it was.
class NU_EXPORT CNuPoint : public CNuObject {
 public:
  // From its coordinates; a single number is the x coordinate of a point on the x axis.
  CNuPoint(double x = 0.0, double y = 0.0, double z = 0.0) : CNuObject(NuTypePoint), m_xyz{x, y, z} {}
  CNuPoint(const CNuPoint&) = default;
  CNuPoint& operator=(const CNuPoint&) = default;

  // The three coordinates, to read or to change.
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

  // Whether every |coordinate|, or difference of coordinates, is strictly below `tol`: a box test, not a distance.
  ENuBoolean IsZero(double tol) const { return IsEqual(CNuPoint(), tol); }
  ENuBoolean IsEqual(const CNuPoint& p, double tol) const {
    return IsBelow(m_xyz[0] - p.m_xyz[0], tol) && IsBelow(m_xyz[1] - p.m_xyz[1], tol) &&
                   IsBelow(m_xyz[2] - p.m_xyz[2], tol)
               ? NuTrue
               : NuFalse;
  }

  // Exchanges the coordinates of two points.
  static void Swap(CNuPoint& a, CNuPoint& b);

  // Sums, differences and the negative, coordinate by coordinate.
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
  // Fails, with limits that are required to differ:
  //   7  * by a NaN or |s| >= NuGetLarge(), *= by |s| > NuGetLarge()
  //   6  / by |s| < NuGetZero(), /= by a NaN or |s| <= NuGetZero()
  CNuPoint operator*(double s) const;
  CNuPoint operator/(double s) const;
  CNuPoint& operator*=(double s);
  CNuPoint& operator/=(double s);

  // Distances, never negative. The differences of coordinates are taken first, so the accuracy does not depend on the
  // distance from the origin.
  //
  // To a point: without overflow; 0 when every difference is below NuGetZero().
  double DistanceTo(const CNuPoint& p) const;
  // To the infinite line and plane.
  double DistanceTo(const CNuLine& l) const;
  double DistanceTo(const CNuPlane& pl) const;
  // To a circle, as a curve (a point within NuGetLengthTol() of its plane counts as lying in it), and to the bounded
  // curves by their own operation. Conics have a DistanceTo of their own. Fails, here and below:
  //   45  any other class, or an object that is not of the class of its type code
  double DistanceTo(const CNuCurve& c) const;
  // To a sphere, a cylinder or the nearer nappe of a cone. Fails: cause 45, any other surface.
  double DistanceTo(const CNuSurface& s) const;

  // The closest point. The apex of a cone is its own; where both nappes are equally close it is on the one to which the
  // axis points. Fails:
  //   45  any other surface     9  the centre of a sphere, a point of the axis of a cylinder or a cone
  CNuPoint ProjectionOn(const CNuLine& l) const;
  CNuPoint ProjectionOn(const CNuPlane& pl) const;
  CNuPoint ProjectionOn(const CNuSurface& s) const;

  // Half-way to a point, or to the projection on a line or plane.
  CNuPoint MidPoint(const CNuPoint& p) const;
  CNuPoint MidPoint(const CNuLine& l) const;
  CNuPoint MidPoint(const CNuPlane& pl) const;
  // The plane through the mid point that is perpendicular to the connection; its normal points to this point. Fails:
  //   19  the points coincide within NuGetZero()     21  the point is on the line within NuGetZero()
  //   45  the result is not finite
  CNuPlane MidPlane(const CNuPoint& p) const;
  CNuPlane MidPlane(const CNuLine& l) const;

  // Sides. A distance strictly below `tol` is "on". All of them fail:
  //   45  the distance is NaN, or the geometry is of another class
  //
  // Left or right of a line, seen from the tip of `ref` (0, 0, 1 if not given) in the direction of the line; a point in
  // the plane of the line and `ref` counts as left. Fails:
  //   10  ref has not three components     9  ref is zero within NuGetZero()
  CNuGeometry::ELineSideType LineSide(const CNuLine& l, double tol) const;
  CNuGeometry::ELineSideType LineSide(const CNuLine& l, const CNuVector& ref, double tol) const;
  // Inside or outside a circle or a conic, whose inside holds the foci. The projection decides for a point that is not
  // in the plane.
  CNuGeometry::ECurveSideType CurveSide(const CNuGeometry& curve, double tol) const;
  // Inside or outside a sphere, a cylinder or a cone, whose distance is taken perpendicular to the axis. The normal of
  // a plane points to its outside.
  CNuGeometry::ESurfaceSideType SurfaceSide(const CNuGeometry& surface, double tol) const;

  // Adds the displacement to the coordinates.
  void Translate(double dx, double dy, double dz) {
    m_xyz[0] += dx;
    m_xyz[1] += dy;
    m_xyz[2] += dz;
  }
  // Places this point at p. It is required not to add p: all features are placed by this overload.
  void Translate(const CNuPoint& p) { *this = p; }
  // As CNuLine::Rotate, in degrees. A point at the centre stays where it is, whatever the axis.
  void Rotate(double angle, CNuGeometry::EAxisType axis);
  void Rotate(double angle, const CNuVector& axis);
  void Rotate(double angle, CNuGeometry::EAxisType axis, const CNuPoint& centre);
  void Rotate(double angle, const CNuVector& axis, const CNuPoint& centre);
  // Expresses this point in a frame. The axes are normalised but not made orthogonal: the new coordinates are the
  // products with x, z * x and z. Fails: cause 10, an axis has not three components.
  void MoveTo(const CNuPoint& origin, const CNuVector& xaxis, const CNuVector& zaxis);
  void MoveTo(const CNuNonLinearGeometry& g);

  // One record: the character 'p' and three doubles in the byte order of the machine, 25 bytes. Writing returns true;
  // the state of the stream tells whether it succeeded. Reading returns false when the next byte is not 'p'; it
  // consumes that byte and leaves the point unchanged. Coordinates missing at the end of the file keep their value.
  bool BinaryDump(std::ofstream& out) const;
  bool BinaryRead(std::ifstream& in);

 private:
  static bool IsBelow(double difference, double tol) { return difference < tol && -difference < tol; }

  double m_xyz[3];
};

#endif
