#ifndef NU_ENGINE_CHAINS_PIECE_TREE2_H
#define NU_ENGINE_CHAINS_PIECE_TREE2_H

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

#include "nu/engine/chains/piece2.h"

namespace nu::engine::chains {

// Halves of halves of a chain, each in a box, and within a width around the way between its ends: stretches of smooth
// curves hardly leave that, so that it tells what is just not near.
class PieceTree2 {
 public:
  // At least one piece. The pieces must outlive the tree.
  explicit PieceTree2(const std::vector<Piece2>& pieces);

  // Some piece closer than the distance, or -1.
  int PieceWithin(double distance, Vec2 p) const { return FindWithin(0, distance, p); }
  // The closest point, if it is within the distance.
  std::optional<Vec2> ClosestWithin(double distance, Vec2 p) const;
  // The nodes that these two have looked at since the tree was built.
  std::int64_t Visits() const { return m_visits; }

  // Takes every pair i < j whose boxes are no farther apart than the gap to visit(i, j), until that returns false.
  template<class Visit>
  bool VisitPairs(double gap, const Visit& visit) const {
    return VisitWithin(0, gap, visit);
  }

 private:
  struct Node {
    bool IsLeaf() const { return right == 0; }
    int Size() const { return end - begin; }

    Box2 box;
    int begin, end;
    int right;  // its second child; the first one follows the node
    Piece2 way;
    double width;
  };

  void Build(int begin, int end);
  double WidthOf(const Node& node) const;
  bool CanBeWithin(const Node& node, double distance, Vec2 p) const;
  int FindWithin(int node, double distance, Vec2 p) const;
  void FindCloser(int node, Vec2 p, double& distance, int& closest) const;

  template<class Visit>
  bool VisitWithin(int a, double gap, const Visit& visit) const {
    const Node& node = m_nodes[static_cast<std::size_t>(a)];
    if (node.IsLeaf()) return VisitLeaves(node, node, gap, visit);
    return VisitWithin(a + 1, gap, visit) && VisitWithin(node.right, gap, visit) &&
           VisitBetween(a + 1, node.right, gap, visit);
  }

  // All pieces of node a come before those of node b.
  template<class Visit>
  bool VisitBetween(int a, int b, double gap, const Visit& visit) const {
    const Node& first = m_nodes[static_cast<std::size_t>(a)];
    const Node& second = m_nodes[static_cast<std::size_t>(b)];
    if (first.box.IsApart(second.box, gap)) return true;
    if (first.IsLeaf() && second.IsLeaf()) return VisitLeaves(first, second, gap, visit);
    if (first.Size() >= second.Size())
      return VisitBetween(a + 1, b, gap, visit) && VisitBetween(first.right, b, gap, visit);
    return VisitBetween(a, b + 1, gap, visit) && VisitBetween(a, second.right, gap, visit);
  }

  template<class Visit>
  bool VisitLeaves(const Node& a, const Node& b, double gap, const Visit& visit) const {
    for (int i = a.begin; i < a.end; ++i) {
      for (int j = std::max(i + 1, b.begin); j < b.end; ++j) {
        if (!BoxAt(i).IsApart(BoxAt(j), gap) && !visit(i, j)) return false;
      }
    }
    return true;
  }

  const Box2& BoxAt(int i) const { return m_boxes[static_cast<std::size_t>(i)]; }

  const std::vector<Piece2>& m_pieces;
  std::vector<Box2> m_boxes;
  std::vector<Node> m_nodes;
  mutable std::int64_t m_visits = 0;
};

}  // namespace nu::engine::chains

#endif
