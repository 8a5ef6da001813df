#ifndef NU_CURVES_SIMPLIFIED_CURVE_H
#define NU_CURVES_SIMPLIFIED_CURVE_H

#include "nu/curves/curve.h"
#include "nu/export.h"
#include "nu/geometry/point.h"
#include "nu/geometry/point_array.h"

namespace nu::internal {
class Placement;
}

// A sequence of points in space reduced to the fewest vertices: some of the points, in their order, the first and the
// last one among them. Its frame has the axes of the global frame and its origin in the first point.
class NU_EXPORT CNuSimplifiedCurve : public CNuCurve {
 public:
  // The fewest vertices such that every point removed is within `tol` of the edge between the vertices before and after
  // it. A closed sequence keeps its ends like any other. With a tolerance of 0 only points on an edge are removed,
  // below 0 or with NaN none; a point that is not finite is kept. The result is the shortest path in the graph of all
  // allowed edges (H. Imai, M. Iri, Computational Morphology, 1988), of which few are tested: about n log n for a
  // measured curve. Where the points scatter by about the tolerance, each of them takes time in proportion to the
  // points that one edge spans: a million points take seconds. Lack of memory is CNuMemoryException. Fails with
  // CNuConstructionException ("CNuSimplifiedCurve"): cause 1, "size of CNuPointArray": no points.
  CNuSimplifiedCurve(const CNuPointArray& points, double tol);
  CNuSimplifiedCurve(const CNuSimplifiedCurve& other) = default;
  CNuSimplifiedCurve(CNuSimplifiedCurve&& other) = default;
  CNuSimplifiedCurve& operator=(const CNuSimplifiedCurve& other);
  CNuSimplifiedCurve& operator=(CNuSimplifiedCurve&& other) = default;

  // The number of vertices that are left.
  int GetSize() const { return m_points.GetSize(); }
  // Vertex i. Fails with CNuOperationException: cause 3, i is out of range, with the valid range.
  CNuPoint GetPoint(int i) const;
  // All vertices in order.
  CNuPointArray GetPoints() const;

  // The largest distance of a removed point from its edge; NaN if a point is not a number.
  double GetMaxDeviation() const { return m_maxDeviation; }

 private:
  nu::internal::Placement Place() const;

  CNuPointArray m_points;  // as they were given
  CNuPoint m_anchor;       // the first of them
  double m_maxDeviation = 0.0;
};

#endif
