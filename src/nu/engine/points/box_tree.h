#ifndef NU_ENGINE_POINTS_BOX_TREE_H
#define NU_ENGINE_POINTS_BOX_TREE_H

#include <utility>
#include <vector>

#include "nu/engine/points/edge.h"

namespace nu::engine::points {

struct IndexedPoint {
  double xyz[3];
  int index;
};

struct Box {
  double low[3];
  double high[3];
};

// What the rounded coordinate differences |p - q| can be for p in one box and q in another: rounding is monotone, so
// the bounds hold for the computed values.
struct DifferenceRange {
  DifferenceRange(const Box& a, const Box& b);

  bool IsConstant() const;

  double least[3];
  double most[3];
};

inline PointView ViewOf(const std::vector<IndexedPoint>& points) {
  return {points.data()->xyz, sizeof(IndexedPoint), points.size()};
}
// An edge between places in `points`, told by their indices.
inline Edge InIndicesOf(const std::vector<IndexedPoint>& points, const Edge& edge) {
  return edge.IsPair() ? Edge{edge.length, points[edge.m].index, points[edge.n].index} : edge;
}

// Points in nested boxes, halved along the longest side. The points are finite.
class BoxTree {
 public:
  struct Node {
    Box box;
    int begin, end;          // its points
    int right;               // its second child; the first one follows the node; 0 in a leaf
    int lowest, nextLowest;  // the two least indices of its points; the second is meaningless for one point

    bool IsLeaf() const { return right == 0; }
    int Size() const { return end - begin; }
  };

  // At least one point.
  explicit BoxTree(std::vector<IndexedPoint> points);

  const std::vector<Node>& Nodes() const { return m_nodes; }
  const IndexedPoint& PointAt(int i) const { return m_points[i]; }

 private:
  void Build(int begin, int end);

  std::vector<IndexedPoint> m_points;
  std::vector<Node> m_nodes;
};

// Takes every pair of points from two nodes to search.Compare(p, q), but for pairs of boxes that, with the least index
// of either, search.CanWin(a, b, i, j) rules out.
template<class Search>
void VisitBetween(const BoxTree& tree, Search& search, int a, int b) {
  const std::vector<BoxTree::Node>& nodes = tree.Nodes();
  if (!search.CanWin(a, b, nodes[a].lowest, nodes[b].lowest)) return;
  if (nodes[a].Size() < nodes[b].Size()) std::swap(a, b);
  if (!nodes[a].IsLeaf()) {
    VisitBetween(tree, search, a + 1, b);
    VisitBetween(tree, search, nodes[a].right, b);
  } else if (!nodes[b].IsLeaf()) {
    VisitBetween(tree, search, a, b + 1);
    VisitBetween(tree, search, a, nodes[b].right);
  } else {
    for (int p = nodes[a].begin; p < nodes[a].end; ++p) {
      for (int q = nodes[b].begin; q < nodes[b].end; ++q) search.Compare(p, q);
    }
  }
}

}  // namespace nu::engine::points

#endif
