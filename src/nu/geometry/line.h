#ifndef NU_GEOMETRY_LINE_H
#define NU_GEOMETRY_LINE_H

#include "nu/export.h"
#include "nu/geometry/geometry.h"
#include "nu/geometry/point.h"
#include "nu/linalg/vector.h"

// The infinite straight line: the points p + t d with a point p on it and a unit direction d. The point is free along
// the line; the least-squares fit puts it at the mean of the data. Lengths are in the unit of the coordinates.
class NU_EXPORT CNuLine : public CNuGeometry {
 public:
  // The x axis.
  CNuLine();
  // The direction is normalised. One that has not three components, is zero within NuGetZero() or is not finite:
  // CNuConstructionException cause 3.
  CNuLine(const CNuPoint& point, const CNuVector& direction);
  // From p to q. Points that coincide, no coordinate NuGetLengthTol() or more apart, or whose difference is not finite:
  // CNuConstructionException cause 10.
  CNuLine(const CNuPoint& p, const CNuPoint& q);

  CNuPoint GetPoint() const { return m_point; }
  CNuVector GetDirection() const { return m_direction; }
  void GetData(CNuPoint* point, CNuVector* direction) const;

  // Sets the line's point to p: it is required not to add p, as for all features.
  void Translate(const CNuPoint& p);
  void Translate(double dx, double dy, double dz);
  // By `angle` degrees, right-handed, about an axis through the global origin or through `centre`. An angle below
  // NuGetZero() changes nothing. An axis that has not three components: CNuOperationException cause 10; a zero axis:
  // cause 9.
  void Rotate(double angle, CNuGeometry::EAxisType axis);
  void Rotate(double angle, const CNuVector& axis);
  void Rotate(double angle, CNuGeometry::EAxisType axis, const CNuPoint& centre);
  void Rotate(double angle, const CNuVector& axis, const CNuPoint& centre);
  // Expresses the line in the local frame of g.
  void MoveTo(const CNuNonLinearGeometry& g);

  // Least-squares line (Pearson, 1901): the point is the mean point, the direction the one of largest extent, in the
  // canonical sign of CNuVector::SymmetricAxis with NuGetTol(). `sumsq` receives the sum of the squared distances;
  // `form` for points in one plane z = const the largest minus the smallest signed distance, for others the diameter of
  // the cylinder around the line that holds all points; both are 0 for two points.
  // CNuBestfitException, named "CNuLine", for which the line and the outputs stay as they were: cause 1 (size 2) below
  // two points; cause 2 (size 2) for two points no coordinate of which is NuGetLengthTol() or more apart, or more
  // points whose extent is below NuGetZero(); cause 11 (size 0) for coordinates that are not finite.
  void Fit(const CNuPointArray& pts);
  void Fit(const CNuPointArray& pts, double* form, double* sumsq);

 private:
  CNuPoint m_point;
  CNuVector m_direction;
};

#endif
