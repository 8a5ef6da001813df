#ifndef NU_CURVES_LINE_SEGMENT_H
#define NU_CURVES_LINE_SEGMENT_H

#include <iosfwd>

#include "nu/curves/bounded_curve.h"
#include "nu/export.h"
#include "nu/geometry/point.h"

namespace nu::engine::shapes {
struct Segment3;
}

// The straight way between two points. Its frame has the axes of the global frame and its origin in the start point it
// was built with.
class NU_EXPORT CNuLineSegment : public CNuBoundedCurve {
 public:
  // From (0, 0, 0) to (1, 0, 0).
  CNuLineSegment();
  // Points that coincide, no coordinate NuGetLengthTol() or more apart, or whose difference is not finite:
  // CNuConstructionException cause 10.
  CNuLineSegment(const CNuPoint& start, const CNuPoint& end);

  CNuLine GetLine() const;
  CNuPoint MidPoint() const;
  void Reverse();
  // n points that divide it evenly, both ends included. n below 2 or above 10,000,000: CNuOperationException cause 12.
  CNuPolyline ToPolyline(int n) const;

  // The points common to both, in the order of this segment; returns how many there are. What comes as close as
  // NuGetLengthTol(), or as the rounding of the coordinates, touches. None for a line parallel to it within
  // NuGetDegreeTol(), and for segments that share more than a point.
  int IntersectWith(const CNuLineSegment& segment, CNuPoint* p) const;
  int IntersectWith(const CNuCircularArc& arc, CNuPoint* p1, CNuPoint* p2) const;
  int IntersectWith(const CNuLine& l, CNuPoint* p) const;

  using CNuBoundedCurve::GetEndPoint;
  using CNuBoundedCurve::GetStartPoint;
  CNuPoint GetStartPoint() override;
  CNuPoint GetEndPoint() override;
  // Of the normals of the segment the one closest to the z axis; of a segment along the z axis, the x axis.
  void GetStartData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const override;
  void GetEndData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const override;
  void BoundingBox(CNuPoint* min, CNuPoint* max) const override;
  void BoundingCircle(double* radius, CNuPoint* centre) const override;
  double DistanceTo(const CNuBoundedCurve* other, CNuPoint* p1, CNuPoint* p2) const override;
  double DistanceTo(const CNuPoint& p) const override;
  double Length() const override;
  // A line segment, moved at a right angle to itself. A normal along the segment, within NuGetDegreeTol(): cause 26.
  CNuBoundedCurve* Offset(double distance, const CNuVector& normal, int shape) override;
  CNuBoundedCurve* Offset(double distance) override;

 private:
  friend class CNuCompositeCurve;

  nu::engine::shapes::Segment3 Data() const;

  // One record of the composite curve's file: the character 'l' and the records of the ends. Reading returns false when
  // the next byte, which it consumes, is no 'l'; ends that have no record keep what they are.
  bool BinaryDump(std::ofstream& out) const;
  bool BinaryRead(std::ifstream& in);

  CNuPoint m_start, m_end;  // as they were given
  CNuPoint m_anchor;
};

#endif
