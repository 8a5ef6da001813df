#ifndef NU_ENGINE_POINTS_ORIENTED_BOXES_H
#define NU_ENGINE_POINTS_ORIENTED_BOXES_H

#include <vector>

#include "nu/engine/points/box_tree.h"
#include "nu/engine/shapes/vec3.h"

namespace nu::engine::points {

// Points in nested boxes that are turned to lie along their points: on a smooth curve or surface a box is thin across,
// as the square of its length, so that few boxes near the lowest point along a direction reach below it (S. Gottschalk,
// M. C. Lin, D. Manocha, OBBTree: a hierarchical structure for rapid interference detection, SIGGRAPH 1996). The points
// are finite, their coordinates near 2^250 or smaller.
class OrientedBoxes {
 public:
  // At least one point.
  explicit OrientedBoxes(std::vector<IndexedPoint> points);

  const std::vector<BoxTree::Node>& Nodes() const { return m_tree.Nodes(); }
  const IndexedPoint& PointAt(int i) const { return m_tree.PointAt(i); }

  struct Descent {
    double height;    // along a vector, over a start: no point of the box is lower but for rounding
    double distance;  // no point of the box is farther from the start
  };
  Descent DescentTo(int node, const Vec3& start, const Vec3& along) const;

 private:
  struct OrientedBox {
    Vec3 middle;
    Vec3 axis[3];
    double half[3];  // rounding included
  };

  OrientedBox BoxOf(const BoxTree::Node& node) const;
  Vec3 FarthestFrom(const BoxTree::Node& node, const Vec3& origin, const Vec3& line) const;

  BoxTree m_tree;
  std::vector<OrientedBox> m_boxes;
};

}  // namespace nu::engine::points

#endif
