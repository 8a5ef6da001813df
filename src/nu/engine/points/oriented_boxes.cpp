#include "nu/engine/points/oriented_boxes.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "nu/engine/shapes/axis_direction.h"

namespace nu::engine::points {
namespace {

// Of a box's middle and sides, in units of the coordinates: far above the rounding of some ten operations.
constexpr double kBoxError = 0x1p-48;

}  // namespace

OrientedBoxes::OrientedBoxes(std::vector<IndexedPoint> points) : m_tree(std::move(points)) {
  m_boxes.reserve(m_tree.Nodes().size());
  for (const BoxTree::Node& node : m_tree.Nodes()) m_boxes.push_back(BoxOf(node));
}

// The point of a node farthest from a line through the origin; from the origin itself where the line is zero.
Vec3 OrientedBoxes::FarthestFrom(const BoxTree::Node& node, const Vec3& origin, const Vec3& line) const {
  Vec3 farthest = origin;
  double largest = 0.0;
  for (int i = node.begin; i < node.end; ++i) {
    const Vec3 p = LoadVec3(m_tree.PointAt(i).xyz);
    const Vec3 off = Rejection(p - origin, line);
    const double square = Dot(off, off);
    if (square > largest) largest = square, farthest = p;
  }
  return farthest;
}

// Along about the longest way between two points, then towards the point farthest from that.
OrientedBoxes::OrientedBox OrientedBoxes::BoxOf(const BoxTree::Node& node) const {
  const Vec3 start = FarthestFrom(node, LoadVec3(m_tree.PointAt(node.begin).xyz), {});
  OrientedBox box{};
  Vec3& x = box.axis[0];
  x = Unit(FarthestFrom(node, start, {}) - start);
  if (x == Vec3{}) x = {1.0, 0.0, 0.0};
  const Vec3 across = Unit(Rejection(Unit(FarthestFrom(node, start, x) - start), x));
  box.axis[1] = Unit(Rejection(across == Vec3{} ? AnyAcross(x) : across, x));
  box.axis[2] = Cross(x, box.axis[1]);
  double least[3] = {}, most[3] = {};
  double size = std::fabs(start.x) + std::fabs(start.y) + std::fabs(start.z);
  for (int i = node.begin; i < node.end; ++i) {
    const Vec3 p = LoadVec3(m_tree.PointAt(i).xyz) - start;
    for (int k = 0; k < 3; ++k) {
      const double t = Dot(p, box.axis[k]);
      least[k] = std::min(least[k], t);
      most[k] = std::max(most[k], t);
    }
  }
  box.middle = start;
  for (int k = 0; k < 3; ++k) {
    size += most[k] - least[k];
    box.middle = box.middle + 0.5 * (least[k] + most[k]) * box.axis[k];
  }
  for (int k = 0; k < 3; ++k) box.half[k] = 0.5 * (most[k] - least[k]) + kBoxError * size;
  return box;
}

OrientedBoxes::Descent OrientedBoxes::DescentTo(int node, const Vec3& start, const Vec3& along) const {
  const OrientedBox& box = m_boxes[static_cast<std::size_t>(node)];
  const Vec3 offset = box.middle - start;
  Descent descent{Dot(along, offset), std::fabs(offset.x) + std::fabs(offset.y) + std::fabs(offset.z)};
  for (int k = 0; k < 3; ++k) {
    descent.height -= box.half[k] * std::fabs(Dot(along, box.axis[k]));
    descent.distance += box.half[k];
  }
  return descent;
}

}  // namespace nu::engine::points
