#ifndef NU_ENGINE_POINTS_EDGE_H
#define NU_ENGINE_POINTS_EDGE_H

#include <utility>

#include "nu/engine/base/pythag.h"
#include "nu/engine/points/point_view.h"

namespace nu::engine::points {

// CNuPoint::DistanceTo, to the bit: 0 when no coordinate differs by `zero`.
inline double EdgeLength(const double* p, const double* q, double zero) {
  return Pythag(p[0] - q[0], p[1] - q[1], p[2] - q[2], zero);
}

// A pair of points m < n. A search starts with a length that no pair has and without a pair (m = n = 0).
struct Edge {
  double length;
  int m = 0;
  int n = 0;

  bool IsPair() const { return m < n; }
  // Whether the pair (i, j), i < j, comes before this one, row by row.
  bool ComesAfter(int i, int j) const { return i < m || (i == m && j < n); }
};

// Keep the longer (shorter) edge, of equal ones the pair that comes first. A NaN is no length.
inline void OfferLonger(Edge& best, double length, int i, int j) {
  if (i > j) std::swap(i, j);
  if (length > best.length || (length == best.length && best.IsPair() && best.ComesAfter(i, j))) best = {length, i, j};
}
inline void OfferShorter(Edge& best, double length, int i, int j) {
  if (i > j) std::swap(i, j);
  if (length < best.length || (length == best.length && best.IsPair() && best.ComesAfter(i, j))) best = {length, i, j};
}

}  // namespace nu::engine::points

#endif
