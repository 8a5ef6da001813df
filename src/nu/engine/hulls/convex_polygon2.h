#ifndef NU_ENGINE_HULLS_CONVEX_POLYGON2_H
#define NU_ENGINE_HULLS_CONVEX_POLYGON2_H

#include <cstddef>
#include <vector>

#include "nu/engine/shapes/vec2.h"

namespace nu::engine::hulls {

// The convex hull of the points of a grid, counter-clockwise from the least point; no corner is on the line of its
// neighbours. Two corners when all points are on one line.
class ConvexPolygon2 {
 public:
  // At least two points, in the order of the grid.
  explicit ConvexPolygon2(const std::vector<Vec2>& points);

  const std::vector<Vec2>& Corners() const { return m_corners; }

  struct Exit {
    double multiple;   // in multiples of the direction, 0 or more
    Vec2 alongBorder;  // the side there, as a difference of corners
  };
  // Where a ray from a point inside or on the border leaves the polygon; log n.
  Exit ExitOf(Vec2 inside, Vec2 direction) const;

  // The corner farthest in a direction; log n.
  std::size_t ExtremeCorner(Vec2 direction) const;

 private:
  Vec2 Corner(std::size_t i) const { return m_corners[i % m_corners.size()]; }
  Vec2 Side(std::size_t i) const { return Corner(i + 1) - Corner(i); }

  std::vector<Vec2> m_corners;
  std::vector<double> m_sideAngles;  // ascending
};

}  // namespace nu::engine::hulls

#endif
