#include "nu/engine/points/box_tree.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <utility>

namespace nu::engine::points {
namespace {

// Halving further costs more than comparing the points; measured.
constexpr int kLeafSize = 12;

}  // namespace

DifferenceRange::DifferenceRange(const Box& a, const Box& b) {
  for (int k = 0; k < 3; ++k) {
    least[k] = std::max({0.0, b.low[k] - a.high[k], a.low[k] - b.high[k]});
    most[k] = std::max(b.high[k] - a.low[k], a.high[k] - b.low[k]);
  }
}

bool DifferenceRange::IsConstant() const {
  return least[0] == most[0] && least[1] == most[1] && least[2] == most[2];
}

BoxTree::BoxTree(std::vector<IndexedPoint> points) : m_points(std::move(points)) {
  m_nodes.reserve(4 * m_points.size() / kLeafSize + 1);
  Build(0, static_cast<int>(m_points.size()));
}

void BoxTree::Build(int begin, int end) {
  Node node{{}, begin, end, 0, INT_MAX, INT_MAX};
  for (int k = 0; k < 3; ++k) node.box.low[k] = node.box.high[k] = m_points[begin].xyz[k];
  for (int i = begin; i < end; ++i) {
    for (int k = 0; k < 3; ++k) {
      node.box.low[k] = std::min(node.box.low[k], m_points[i].xyz[k]);
      node.box.high[k] = std::max(node.box.high[k], m_points[i].xyz[k]);
    }
    const int index = m_points[i].index;
    node.nextLowest = std::min(node.nextLowest, std::max(node.lowest, index));
    node.lowest = std::min(node.lowest, index);
  }
  const std::size_t place = m_nodes.size();
  m_nodes.push_back(node);
  if (end - begin <= kLeafSize) return;
  int axis = 0;
  for (int k = 1; k < 3; ++k) {
    if (node.box.high[k] - node.box.low[k] > node.box.high[axis] - node.box.low[axis]) axis = k;
  }
  const int middle = begin + (end - begin) / 2;
  std::nth_element(m_points.begin() + begin, m_points.begin() + middle, m_points.begin() + end,
                   [axis](const IndexedPoint& p, const IndexedPoint& q) {
                     return p.xyz[axis] != q.xyz[axis] ? p.xyz[axis] < q.xyz[axis] : p.index < q.index;
                   });
  Build(begin, middle);
  m_nodes[place].right = static_cast<int>(m_nodes.size());
  Build(middle, end);
}

}  // namespace nu::engine::points
