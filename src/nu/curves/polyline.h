#ifndef NU_CURVES_POLYLINE_H
#define NU_CURVES_POLYLINE_H

#include <memory>

#include "nu/curves/bounded_curve.h"
#include "nu/export.h"
#include "nu/geometry/point_array.h"

namespace nu::engine::chains {
class PieceChain;
}
namespace nu::internal {
class Placement;
}

// The edges between consecutive points; a single point is a polyline too. It may be closed, cross itself and leave its
// plane. Its frame has the axes of the global frame and its origin in the first of the points it was built from.
class NU_EXPORT CNuPolyline : public CNuBoundedCurve {
 public:
  // Fails with CNuConstructionException ("CNuPolyline"): cause 1, "size of CNuPointArray": no points.
  explicit CNuPolyline(const CNuPointArray& points);
  CNuPolyline(const CNuPolyline& other) = default;
  CNuPolyline(CNuPolyline&& other) = default;
  CNuPolyline& operator=(const CNuPolyline& other);
  CNuPolyline& operator=(CNuPolyline&& other) = default;

  // The number of points.
  int GetSize() const { return m_points.GetSize(); }
  // Point i. Fail with CNuOperationException: cause 3, i is out of range, with the valid range.
  CNuPoint GetPoint(int i) const;
  CNuPoint operator[](int i) const;
  // All points in order.
  CNuPointArray GetPoints() const;

  // Whether the last point is CNuPoint::IsEqual to the first one.
  ENuBoolean IsClosed(double tol) const;
  // Whether no point is farther than tol from the least-squares plane of the points.
  ENuBoolean IsPlanar(double tol) const;
  // Whether two edges come as close as NuGetLengthTol(), or the rounding of the coordinates, but for the point that
  // neighbours share; the ends of a closed polyline are neighbours. About n log n; about n^1.4 where most
  // edges are long and cross others in space.
  ENuBoolean IsSelfIntersecting() const;

  // The area enclosed by the curve and the edge from the last point to the first one, never negative: parts that the
  // curve runs around in opposite senses are subtracted. Of a curve in space, the largest such area of a projection.
  double Area() const;
  // The centroid of that area; if it is zero to rounding, that of the edges; if these have no length, the first point.
  CNuPoint Centroid() const;

  // Exchanges start and end; the points stay.
  void Reverse();
  // Removes points so that no edge is below NuGetMinEdgeLength(). The first and the last point are kept, the last one
  // unless all that remains is shorter.
  void RemoveShortEdges();

  using CNuBoundedCurve::GetEndPoint;
  using CNuBoundedCurve::GetStartPoint;
  CNuPoint GetStartPoint() override;
  CNuPoint GetEndPoint() override;
  // The tangent is that of the first (last) edge that has a length, zero without one. The normal is that of the
  // least-squares plane, on the side from which the curve runs counter-clockwise around Area(); of a straight polyline
  // that of a line segment.
  void GetStartData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const override;
  void GetEndData(CNuPoint* point, CNuVector* tangent, CNuVector* normal) const override;

  void BoundingBox(CNuPoint* min, CNuPoint* max) const override;
  void BoundingCircle(double* radius, CNuPoint* centre) const override;
  double DistanceTo(const CNuBoundedCurve* other, CNuPoint* p1, CNuPoint* p2) const override;
  double DistanceTo(const CNuPoint& p) const override;
  double Length() const override;
  // With sharp corners, `shape` 0, a polyline without edges that vanish or are below NuGetMinEdgeLength(). With round
  // ones, 1, a composite curve. Result and failures are those of CNuCompositeCurve::Offset for the edges.
  CNuBoundedCurve* Offset(double distance, const CNuVector& normal, int shape) override;
  CNuBoundedCurve* Offset(double distance) override;
  // All curves of that offset, with `corners` as the shape: polylines or composite curves that the caller owns, added
  // to the array unless it is null; returns their number. Neither none nor several are a failure.
  int OffsetAll(double distance, const CNuVector& normal, int corners, CNuObjArray* loops) const;

 private:
  // Of line segments alone, without short edges.
  static std::unique_ptr<CNuPolyline> CurveOf(const nu::engine::chains::PieceChain& chain);
  nu::internal::Placement Place() const;
  void GetData(int at, int step, CNuPoint* point, CNuVector* tangent, CNuVector* normal) const;

  CNuPointArray m_points;  // as they were given
  CNuPoint m_anchor;       // the first of those that were
};

#endif
