#ifndef NU_CURVES_LINE_SEGMENT_H
#define NU_CURVES_LINE_SEGMENT_H

#include <iosfwd>

#include "nu/curves/bounded_curve.h"
#include "nu/export.h"
#include "nu/geometry/point.h"

namespace nu::engine::shapes {
struct Segment3;
}

// The straight connection of two points. Its frame has the axes of the global frame and its origin in the start point
// it was built with.
class NU_EXPORT CNuLineSegment : public CNuBoundedCurve {
 public:
  // From (0, 0, 0) to (1, 0, 0).
  CNuLineSegment();
  // Fails with CNuConstructionException ("CNuLineSegment"):
  //   10  every coordinate differs by less than NuGetLengthTol(), or the difference is not finite
  CNuLineSegment(const CNuPoint& start, const CNuPoint& end);

  // The infinite line through the segment, in its direction.
  CNuLine GetLine() const;
  // The point half-way between the ends.
  CNuPoint MidPoint() const;
  // Exchanges start and end; the points stay.
  void Reverse();
  // n points that divide it evenly, both ends included.
  // Fails with CNuOperationException ("CNuLineSegment::ToPolyline()", "conversion"): cause 12, n < 2 or n > 10,000,000.
  CNuPolyline ToPolyline(int n) const;

  // The points common to both, in the order of this segment; returns their number. Features that come as close as
  // NuGetLengthTol(), or as the rounding of the coordinates, touch. None for a line parallel to it within
  // NuGetDegreeTol(), and for segments that share more than a point.
  // Fails with CNuOperationException (the operation, "calculation"): cause 45, a coordinate is not finite.
  int IntersectWith(const CNuLineSegment& segment, CNuPoint* p) const;
  int IntersectWith(const CNuCircularArc& arc, CNuPoint* p1, CNuPoint* p2) const;
  int IntersectWith(const CNuLine& l, CNuPoint* p) const;

  using CNuBoundedCurve::GetEndPoint;
  using CNuBoundedCurve::GetStartPoint;
  CNuPoint GetStartPoint() override;
  CNuPoint GetEndPoint() override;
  // The normal is the one closest to the z axis; for a segment along the z axis, the x axis.
  void GetStartData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const override;
  void GetEndData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const override;

  void BoundingBox(CNuPoint* min, CNuPoint* max) const override;
  void BoundingCircle(double* radius, CNuPoint* centre) const override;
  double DistanceTo(const CNuBoundedCurve* other, CNuPoint* p1, CNuPoint* p2) const override;
  double DistanceTo(const CNuPoint& p) const override;
  double Length() const override;
  // A line segment, moved perpendicular to itself. Fails: cause 26, normal along the segment within NuGetDegreeTol().
  CNuBoundedCurve* Offset(double distance, const CNuVector& normal, int shape) override;
  CNuBoundedCurve* Offset(double distance) override;

 private:
  friend class CNuCompositeCurve;

  nu::engine::shapes::Segment3 Data() const;

  // One record of the composite curve's file: the character 'l' and the records of the ends. Reading returns false when
  // the next byte, which it consumes, is not 'l'; ends without a record are unchanged.
  bool BinaryDump(std::ofstream& out) const;
  bool BinaryRead(std::ifstream& in);

  CNuPoint m_start, m_end;  // as they were given
  CNuPoint m_anchor;
};

#endif
