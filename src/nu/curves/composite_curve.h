#ifndef NU_CURVES_COMPOSITE_CURVE_H
#define NU_CURVES_COMPOSITE_CURVE_H

#include <deque>
#include <iosfwd>
#include <memory>

#include "nu/curves/bounded_curve.h"
#include "nu/export.h"
#include "nu/foundation/boolean.h"

namespace nu::engine::chains {
class PieceChain;
}

// A chain of line segments and circular arcs. Each is meant to start where the one before it ends, but need not: what
// cannot do with gaps says so. The curve may be closed, cross itself and leave its plane. Its frame has the axes of the
// global frame and its origin in the start point of the segment that was added first; that of an empty curve is the
// global frame. What has no meaning without a segment: CNuOperationException cause 8, "operation".
class NU_EXPORT CNuCompositeCurve : public CNuBoundedCurve {
 public:
  // Without segments.
  CNuCompositeCurve();
  CNuCompositeCurve(const CNuCompositeCurve& other);
  CNuCompositeCurve(CNuCompositeCurve&& other) = default;
  CNuCompositeCurve& operator=(const CNuCompositeCurve& other);
  CNuCompositeCurve& operator=(CNuCompositeCurve&& other) = default;
  ~CNuCompositeCurve() override;

  // Adds a copy of a line segment or a circular arc behind the last segment or, NuFalse, before the first one. Another
  // curve: CNuOperationException cause 45, "Add segment of specified type".
  void AddSegment(const CNuBoundedCurve& segment, ENuBoolean atEnd);
  int GetNumberSegments() const { return static_cast<int>(m_segments.size()); }
  // A line segment or a circular arc, owned by the curve; it lives until the curve is assigned to, read or destroyed.
  // Out of range: CNuOperationException cause 3 with the valid range.
  const CNuBoundedCurve* GetSegment(int i) const;

  // Whether the end point is CNuPoint::IsEqual to the start point; never for an empty curve. Without a tolerance, with
  // NuGetLengthTol().
  ENuBoolean IsClosed(double tol) const;
  ENuBoolean IsClosed() const;
  // Whether no point is farther than tol from the least-squares plane of ends and arcs; so is an empty curve. Without a
  // tolerance, with NuGetLengthTol() or the rounding of the coordinates.
  ENuBoolean IsPlanar(double tol) const;
  ENuBoolean IsPlanar() const;
  // Whether two segments come as close as NuGetLengthTol(), or the rounding of the coordinates, but for the points that
  // neighbours share; the ends of a closed curve are neighbours. Neighbours that leave each other by no more than that
  // before they meet again do not count. About n log n.
  ENuBoolean IsSelfIntersecting() const;

  void Reverse();
  // A polyline that no arc leaves by more than tol, or by the rounding of its coordinates: the ends of all segments,
  // and points that divide the arcs evenly, into quarter turns at least. A tol that is not above 0, or one that divides
  // the arcs into more than 10,000,000 parts: CNuOperationException cause 12, "conversion".
  CNuPolyline ToPolyline(double tol) const;

  using CNuBoundedCurve::GetEndPoint;
  using CNuBoundedCurve::GetStartPoint;
  CNuPoint GetStartPoint() override;
  CNuPoint GetEndPoint() override;
  // The normal is that of the least-squares plane, on the side from which the curve runs counter-clockwise around what
  // it encloses; of a straight curve that of a line segment.
  void GetStartData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const override;
  void GetEndData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const override;
  void BoundingBox(CNuPoint* min, CNuPoint* max) const override;
  void BoundingCircle(double* radius, CNuPoint* centre) const override;
  double DistanceTo(const CNuBoundedCurve* other, CNuPoint* p1, CNuPoint* p2) const override;
  double DistanceTo(const CNuPoint& p) const override;
  // Of all segments; 0 for an empty curve.
  double Length() const override;
  // A composite curve with sharp corners, `shape` 0, or round ones, 1: all points at the distance that are no closer to
  // another point of the curve. What vanishes is left out. A sharp corner goes on along the tangents until they meet.
  // The offset of a curve that is not closed within NuGetLengthTol() ends where those of its ends do. Not in one plane
  // with that normal: cause 45, "Offset of non-planar curve"; another shape: cause 45, "Offset with different shape"; a
  // gap between segments: cause 26, "Offset"; nothing is left, or of a closed curve nothing closed, as can be where it
  // crosses itself, or a sharp corner folds back on itself: cause 28; coordinates of the result that are no doubles:
  // cause 29; the result falls apart into several curves, or has gaps that no rounding explains: cause 30; a
  // tangle, as thousands of long edges across each other are, with more than 4,000,000 crossings of moved pieces and 20
  // for each segment, or 1,000,000,000 comparisons with boxes and 5,000 for each segment: cause 45, "calculation".
  CNuBoundedCurve* Offset(double distance, const CNuVector& normal, int shape) override;
  CNuBoundedCurve* Offset(double distance) override;
  // All curves of which that consists, `corners` being the shape: composite curves that the caller owns, added to the
  // array unless it is null; returns how many there are. None is no failure, and neither are several.
  int OffsetAll(double distance, const CNuVector& normal, int corners, CNuObjArray* loops) const;

  // The curve's file: the tag "CompositeCurve" with its zero byte, the number of segments as int, and of each segment
  // its type code as int, a tag, its points and of an arc the sense, all little-endian. Writing: true on success; an
  // empty curve writes no file and returns false; CNuOperationException cause 48 when the file cannot be written, cause
  // 47 when it cannot be opened. Reading throws nothing. It replaces the curve, and returns false and leaves it empty
  // for anything that is not such a file. A line segment whose record is none goes from (0, 0, 0) to (1, 0, 0), an arc
  // whose record is none, or makes no arc, around the unit circle from (1, 0, 0); type codes of other curves are passed
  // over; the end of the file is the end of the curve. False also without memory for all segments, with those read
  // until then.
  //
  // What is written is read back to the bit, but for the planes of half and full turns, within NuGetDegreeTol(): the
  // record holds none. They get that of the nearest segment before or behind, in a chain without a gap, which spans one
  // with their diameter; where both sides do so and disagree, or none does, the one of CNuCircularArc's constructor.
  // So circles that stand alone come back upright, and half turns out of the plane of their neighbours turn into it.
  bool BinaryDump(const char* fileName) const;
  bool BinaryRead(const char* fileName);

 private:
  friend class CNuPolyline;

  // Records of a file that are none share the default segment of their type, which takes no more room than they did.
  using Segments = std::deque<std::shared_ptr<CNuBoundedCurve>>;

  void RequireSegments(const char* where) const;
  void Add(std::shared_ptr<CNuBoundedCurve> segment, bool atEnd);
  void PositionChanged() override;
  void ReadSegments(int size, std::ifstream& in);
  void FindPlanesOfArcs();
  CNuVector PlaneNormal() const;
  static std::unique_ptr<CNuCompositeCurve> CurveOf(const nu::engine::chains::PieceChain& chain);

  Segments m_segments;
  Frame m_carried;  // where the frame was when the segments were last taken along
};

#endif
