#ifndef NU_ENGINE_POINTS_BOX_TREE_H
#define NU_ENGINE_POINTS_BOX_TREE_H

#include <vector>

#include "nu/engine/base/halving_tree.h"
#include "nu/engine/points/edge.h"
#include "nu/engine/shapes/box.h"

namespace nu::engine::points {

struct IndexedPoint {
  double xyz[3];
  int index;
};

// What the rounded coordinate differences |p - q| can be for p in one box and q in another: rounding is monotone, so
// the bounds hold for the computed values.
struct DifferenceRange {
  DifferenceRange(const Box& a, const Box& b);

  bool IsConstant() const { return least[0] == most[0] && least[1] == most[1] && least[2] == most[2]; }

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

// A box around points, and the two least indices among them; the second is INT_MAX for one point.
struct PointBound {
  Box box;
  int lowest, nextLowest;
};

// Points in nested boxes, halved along the longest side. The points are finite.
class BoxTree {
 public:
  using Tree = HalvingTree<PointBound>;
  using Node = Tree::Node;

  // At least one point.
  explicit BoxTree(std::vector<IndexedPoint> points);

  const Tree& Halves() const { return m_tree; }
  const std::vector<Node>& Nodes() const { return m_tree.Nodes(); }
  const IndexedPoint& PointAt(int i) const { return m_points[i]; }

 private:
  PointBound BoundOf(int begin, int end) const;
  void Halve(int begin, int end, const Box& box);

  std::vector<IndexedPoint> m_points;
  Tree m_tree;
};

// Calls search.Compare(p, q) for all pairs of points, but for those of two nodes that, with the least index of either,
// search.CanWin(a, b, i, j) rules out.
template<class Search>
void ComparePairs(const BoxTree& tree, Search& search) {
  struct Visitor {
    bool CanHold(int a, int b) const {
      const BoxTree::Node& node = tree[a];
      if (a == b) return node.Size() > 1 && search.CanWin(a, a, node.lowest, node.nextLowest);
      return search.CanWin(a, b, node.lowest, tree[b].lowest);
    }
    bool VisitLeaves(const BoxTree::Node& a, const BoxTree::Node& b) const {
      return VisitItems(a, b, [&](int p, int q) { return search.Compare(p, q), true; });
    }
    const BoxTree::Tree& tree;
    Search& search;
  };
  Visitor visitor{tree.Halves(), search};
  VisitPairs(tree.Halves(), 0, tree.Halves(), 0, visitor);
}

}  // namespace nu::engine::points

#endif
