#ifndef NU_GEOMETRY_PLANE_H
#define NU_GEOMETRY_PLANE_H

#include "nu/export.h"
#include "nu/geometry/geometry.h"
#include "nu/geometry/point.h"
#include "nu/linalg/vector.h"

// The infinite plane: the points p with (p - P0) % n = 0, with a point P0 on it and a unit normal n.
class NU_EXPORT CNuPlane : public CNuGeometry {
 public:
  // The xy plane, with the normal along z.
  CNuPlane();
  // The normal is normalised. One that has not three components, is zero within NuGetZero() or is not finite:
  // CNuConstructionException cause 4.
  CNuPlane(const CNuPoint& point, const CNuVector& normal);
  // Through the point and the line; the normal is line direction x way from the line to the point. A point closer to
  // the line than NuGetLengthTol(), or a distance that is not finite: CNuConstructionException cause 9.
  CNuPlane(const CNuPoint& point, const CNuLine& line);

  CNuPoint GetPoint() const { return m_point; }
  CNuVector GetNormal() const { return m_normal; }
  void GetData(CNuPoint* point, CNuVector* normal) const;

  // Sets the plane's point to p: it is required not to add p, as for all features.
  void Translate(const CNuPoint& p);
  void Translate(double dx, double dy, double dz);
  // By `angle` degrees, right-handed, about an axis through the global origin or through `centre`. An angle below
  // NuGetZero() changes nothing. An axis that has not three components: CNuOperationException cause 10; a zero axis:
  // cause 9.
  void Rotate(double angle, CNuGeometry::EAxisType axis);
  void Rotate(double angle, const CNuVector& axis);
  void Rotate(double angle, CNuGeometry::EAxisType axis, const CNuPoint& centre);
  void Rotate(double angle, const CNuVector& axis, const CNuPoint& centre);

  // Least-squares plane (Pearson, 1901): the point is the mean point, the normal the direction of least extent, in the
  // canonical sign of CNuVector::SymmetricAxis with NuGetTol(). `form` receives the largest minus the smallest signed
  // distance, `sumsq` the sum of the squared ones; both are 0 for three points.
  // CNuBestfitException, named "CNuPlane", for which the plane and the outputs stay as they were: cause 1 (size 3)
  // below three points; cause 3 (size 3) for points on one line by CNuGeometry::AreCollinear with NuGetLengthTol();
  // cause 11 (size 0) for coordinates that are not finite.
  void Fit(const CNuPointArray& pts);
  void Fit(const CNuPointArray& pts, double* form, double* sumsq);

 private:
  CNuPoint m_point;
  CNuVector m_normal;
};

#endif
