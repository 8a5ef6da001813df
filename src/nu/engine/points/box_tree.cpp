#include "nu/engine/points/box_tree.h"

#include <algorithm>
#include <climits>
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

BoxTree::BoxTree(std::vector<IndexedPoint> points)
    : m_points(std::move(points)),
      m_tree(
          static_cast<int>(m_points.size()), kLeafSize,
          [this](int begin, int end, bool isLeaf) {
            const PointBound bound = BoundOf(begin, end);
            if (!isLeaf) Halve(begin, end, bound.box);
            return bound;
          },
          [](const PointBound&, PointBound&) {}) {}

PointBound BoxTree::BoundOf(int begin, int end) const {
  PointBound bound{EmptyBox(), INT_MAX, INT_MAX};
  for (int i = begin; i < end; ++i) {
    Include(LoadVec3(m_points[i].xyz), bound.box);
    const int index = m_points[i].index;
    bound.nextLowest = std::min(bound.nextLowest, std::max(bound.lowest, index));
    bound.lowest = std::min(bound.lowest, index);
  }
  return bound;
}

void BoxTree::Halve(int begin, int end, const Box& box) {
  int axis = 0;
  for (int k = 1; k < 3; ++k) {
    if (box.high[k] - box.low[k] > box.high[axis] - box.low[axis]) axis = k;
  }
  const auto first = m_points.begin();
  std::nth_element(first + begin, first + begin + (end - begin) / 2, first + end,
                   [axis](const IndexedPoint& p, const IndexedPoint& q) {
                     return p.xyz[axis] != q.xyz[axis] ? p.xyz[axis] < q.xyz[axis] : p.index < q.index;
                   });
}

}  // namespace nu::engine::points
