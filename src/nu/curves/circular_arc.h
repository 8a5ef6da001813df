#ifndef NU_CURVES_CIRCULAR_ARC_H
#define NU_CURVES_CIRCULAR_ARC_H

#include <iosfwd>

#include "nu/curves/bounded_curve.h"
#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/geometry/point.h"
#include "nu/linalg/vector.h"

namespace nu::engine::shapes {
struct Arc3;
}
namespace nu::internal {
engine::shapes::Arc3 DataOf(const CNuCircularArc& arc);
}

// A part of a circle, up to all of it. It is defined by its centre, its ends, its normal and whether it runs
// counter-clockwise seen from the tip of that. Normals have a positive z component, or, where that is 0 within
// NuGetDegreeTol(), a positive y, then x component: an arc in a plane z = const has the normal (0, 0, 1) whatever its
// sweep. So a motion may reverse normal and sense together. The frame of the arc has the axes of the global frame and
// its origin in the centre.
class NU_EXPORT CNuCircularArc : public CNuBoundedCurve {
 public:
  // From start to end around the centre, NuTrue counter-clockwise about the normal. Ends that coincide make a full
  // turn. A full and a half turn, the latter within NuGetDegreeTol(), do not determine the plane: they get the normal
  // (0, 0, 1) or the one closest to it; around a diameter along the z axis, the x axis.
  // Fails with CNuConstructionException ("CNuCircularArc"):
  //   12  the distances of the ends from the centre differ by more than NuGetLengthTol() or the rounding of the
  //       coordinates, are zero within it, or are not finite
  CNuCircularArc(const CNuPoint& centre, const CNuPoint& start, const CNuPoint& end, ENuBoolean sense);
  // From p1 through p2 to p3. Fails with CNuConstructionException ("CNuCircularArc"), checked in this order:
  //   10  every coordinate of two points differs by less than NuGetLengthTol()
  //   12  the points are on one line within NuGetDegreeTol(), or not finite
  CNuCircularArc(const CNuPoint& p1, const CNuPoint& p2, const CNuPoint& p3);

  // Centre and unit normal in global coordinates, and the radius.
  CNuPoint GetCentre() const;
  double GetRadius() const { return m_radius; }
  CNuVector GetNormal() const;
  // NuTrue for counter-clockwise about the normal.
  ENuBoolean GetSense() const;
  // In degrees, above 0 and up to 360.
  double GetSweep() const;
  // The whole circle that the arc is part of.
  CNuCircle GetCircle() const;
  // Exchanges start and end; the points stay.
  void Reverse();

  // n points that divide the arc evenly, both ends included.
  // Fails with CNuOperationException ("CNuCircularArc::ToPolyline/PointArray()", "conversion"):
  //   12  n < 2 or n > 10,000,000
  CNuPointArray ToPointArray(int n) const;
  CNuPolyline ToPolyline(int n) const;

  using CNuBoundedCurve::GetEndPoint;
  using CNuBoundedCurve::GetStartPoint;
  CNuPoint GetStartPoint() override;
  CNuPoint GetEndPoint() override;
  void GetStartData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const override;
  void GetEndData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const override;
  void BoundingBox(CNuPoint* min, CNuPoint* max) const override;
  void BoundingCircle(double* radius, CNuPoint* centre) const override;
  double DistanceTo(const CNuBoundedCurve* other, CNuPoint* p1, CNuPoint* p2) const override;
  double DistanceTo(const CNuPoint& p) const override;
  double Length() const override;
  // An arc around the same centre. Fails:
  //   45  "Offset of non-planar curve": normal is not the arc's, in either sense, within NuGetDegreeTol()
  //   27  "Offset": the radius would not be above NuGetLengthTol()
  CNuBoundedCurve* Offset(double distance, const CNuVector& normal, int shape) override;
  CNuBoundedCurve* Offset(double distance) override;

 private:
  friend class CNuCompositeCurve;
  friend nu::engine::shapes::Arc3 nu::internal::DataOf(const CNuCircularArc& arc);

  // Once around the unit circle, from (1, 0, 0) on.
  CNuCircularArc();
  // What is known to be an arc.
  CNuCircularArc(const CNuPoint& centre, const CNuPoint& start, const CNuPoint& end, const CNuVector& axis,
                 double radius, double sweep);

  // The same points and sense in the plane through the start with that normal, either way.
  void TurnInto(const CNuVector& normal);

  // One record of the composite curve's file: the character 'a', the records of centre, start and end, and the sense as
  // int. Reading returns false when the next byte, which it consumes, is not 'a', or the data make no arc; the arc is
  // unchanged.
  bool BinaryDump(std::ofstream& out) const;
  bool BinaryRead(std::ifstream& in);

  CNuPoint m_centre, m_start, m_end;  // as they were given
  CNuVector m_axis;                   // about which the arc runs counter-clockwise, in the same frame
  double m_radius = 0.0;
  double m_sweep = 0.0;  // in radians
};

#endif
