#ifndef NU_ENGINE_MINIMAX_STRIP2_H
#define NU_ENGINE_MINIMAX_STRIP2_H

#include "nu/engine/points/point_view.h"

namespace nu::engine::minimax {

// A strip of the plane with its contact points: an edge of the hull lies on one boundary, a vertex on the other.
struct Strip2 {
  // Indices of points: the ends of the edge, counter-clockwise on the hull, and the vertex across. All -1 when there is
  // no finite point, all the same when the points coincide; the vertex is an end of the edge for points on one line.
  int edge[2] = {-1, -1};
  int apex = -1;
  // Multipliers of the ends of the edge: not negative, sum 1, and their combination of the ends is the foot of the
  // vertex on the edge. That of the vertex is 1.
  double share[2] = {1.0, 0.0};
  // Unit length, from the edge to the vertex; (0, 1) when the points coincide.
  double normal[2] = {0.0, 1.0};
  // A point of the middle line: half way from the vertex to its foot.
  double middle[2] = {0.0, 0.0};
  double width = 0.0;
};

// The narrowest of all strips that hold the points, of which x and y are read (pairs of doubles will do); those with a
// coordinate that is not finite are passed over. It is that of the given doubles: which edge, which vertex is decided
// without rounding (but for widths that agree to 90 bits, which count as equal), and the width is rounded once or
// twice. Of equal strips the one whose edge comes first counter-clockwise from the least x (ties: least y) is taken,
// whatever the order of the points. n log n at worst.
Strip2 NarrowestStrip(const PointView& points);

}  // namespace nu::engine::minimax

#endif
