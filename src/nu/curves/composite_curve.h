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

// A chain of line segments and circular arcs. Each should start where the one before it ends, but need not; only
// offsets fail where there is a gap. The curve may be closed, cross itself and leave its plane. Its frame has the axes
// of the global frame and its origin in the start point of the segment that was added first; that of an empty curve is
// the global frame. Failures are CNuOperationException, named by the operation and "operation" unless stated otherwise:
//   8  ends, boxes, distances, ToPolyline and offsets of an empty curve
class NU_EXPORT CNuCompositeCurve : public CNuBoundedCurve {
 public:
  // Without segments.
  CNuCompositeCurve();
  CNuCompositeCurve(const CNuCompositeCurve& other);
  CNuCompositeCurve(CNuCompositeCurve&& other);  // NOLINT(performance-noexcept-move-constructor): it takes memory
  CNuCompositeCurve& operator=(const CNuCompositeCurve& other);
  CNuCompositeCurve& operator=(CNuCompositeCurve&& other) = default;
  ~CNuCompositeCurve() override;

  // Adds a copy of a line segment or a circular arc behind the last segment or, NuFalse, before the first one. Fails:
  //   45  "Add segment of specified type": another curve
  void AddSegment(const CNuBoundedCurve& segment, ENuBoolean atEnd);
  // The number of segments.
  int GetNumberSegments() const { return static_cast<int>(m_segments.size()); }
  // A line segment or a circular arc, owned by the curve; it is valid until the curve is assigned to, read or
  // destroyed. Fails: cause 3, i is out of range, with the valid range.
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
  // before they meet again do not count. About n log n; about n^1.4 where most segments are long and cross others in
  // space.
  ENuBoolean IsSelfIntersecting() const;

  // Exchanges start and end, of all segments and of each; the points stay.
  void Reverse();
  // A polyline within `tol`, or the rounding of the coordinates, of all arcs: the ends of all segments, and points that
  // divide the arcs evenly, into quarter turns at least. Fails ("conversion"):
  //   12  tol is not above 0, or divides the arcs into more than 10,000,000 parts
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
  // another point of the curve. Parts that vanish are left out. A sharp corner extends along the tangents until they
  // meet. The offset of a curve that is not closed within NuGetLengthTol() ends at the offsets of its ends. Fails:
  //   45  "Offset of non-planar curve": not in one plane with that normal
  //   45  "Offset with different shape": shape is neither 0 nor 1     26  "Offset": a gap between segments
  //   30  "Offset": the result has gaps that rounding does not explain     28  "Offset": a sharp corner folds back
  //   45  "calculation": more than 4,000,000 crossings of offset pieces and 20 for each segment, or 200,000,000
  //       comparisons with boxes and 2,000 for each segment, as for thousands of long edges across each other
  //   29  "Offset": coordinates of the result overflow
  //   28  "Offset": nothing is left, or nothing closed of a closed curve     30  "Offset": the result is several curves
  CNuBoundedCurve* Offset(double distance, const CNuVector& normal, int shape) override;
  CNuBoundedCurve* Offset(double distance) override;
  // All curves of that offset, with `corners` as the shape: composite curves that the caller owns, added to the array
  // unless it is null; returns their number. Neither none nor several are a failure.
  int OffsetAll(double distance, const CNuVector& normal, int corners, CNuObjArray* loops) const;

  // The curve's file: the tag "CompositeCurve" with its zero byte, the number of segments as int, and of each segment
  // its type code as int, a tag, its points and of an arc the sense, all little-endian. Writing returns true; for an
  // empty curve it writes no file and returns false. Reading never throws. It replaces the curve; for anything that is
  // not such a file it returns false and leaves the curve empty. A missing record of a line segment stands for (0, 0,
  // 0) to (1, 0, 0), a missing or invalid one of an arc for the unit circle from (1, 0, 0); type codes of other curves
  // are skipped; the end of the file is the end of the curve. Reading also returns false, with the segments read so
  // far, for lack of memory. Writing fails ("CNuCompositeCurve"):
  //   48  the file cannot be written     47  the file cannot be opened
  //
  // Reading restores the curve to the bit, but for the planes of half and full turns, within NuGetDegreeTol(), which
  // the record does not hold. They get that of the nearest segment before or behind, in a chain without a gap, which
  // spans one with their diameter. Where both sides do so and disagree, or neither does, they get that of
  // CNuCircularArc's constructor. So circles that stand alone are read upright, and half turns out of the plane of
  // their neighbours are rotated into it.
  bool BinaryDump(const char* fileName) const;
  bool BinaryRead(const char* fileName);

 private:
  friend class CNuPolyline;

  // Records of a file that are none share the default segment of their type, which takes no more room than they did.
  using Segments = std::deque<std::shared_ptr<CNuBoundedCurve>>;

  static Segments NoSegments();
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
