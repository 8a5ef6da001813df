#ifndef NU_ENGINE_CHAINS_PIECE_TREE2_H
#define NU_ENGINE_CHAINS_PIECE_TREE2_H

#include <cstdint>
#include <optional>
#include <vector>

#include "nu/engine/base/halving_tree.h"
#include "nu/engine/chains/piece2.h"

namespace nu::engine::chains {

// A box around consecutive pieces, and the chord between their ends, from which none of them is farther than the width.
struct Stretch2 {
  Box2 box;
  Piece2 chord;
  double width;
};

// The stretches of a chain, halved down to a few pieces. A stretch of a smooth curve hardly leaves its chord, so that
// the width rules out points which the box does not.
class PieceTree2 {
 public:
  // At least one piece. The pieces must outlive the tree.
  explicit PieceTree2(const std::vector<Piece2>& pieces);

  // Returns a piece closer than the distance, or -1.
  int PieceWithin(double distance, Vec2 p) const;
  // Finds the closest point, if it is within the distance.
  std::optional<Vec2> ClosestWithin(double distance, Vec2 p) const;
  // Counts the nodes that these two have visited since the tree was built.
  std::int64_t Visits() const { return m_visits; }

  // Takes every pair i < j whose boxes are no farther apart than the gap to visit(i, j), until that returns false.
  template<class Visit>
  bool VisitPairs(double gap, const Visit& visit) const {
    struct Search {
      bool CanHold(int a, int b) const { return a == b || !tree.m_tree[a].box.IsApart(tree.m_tree[b].box, gap); }
      bool VisitLeaves(const Tree::Node& a, const Tree::Node& b) const {
        return VisitItems(a, b, [&](int i, int j) { return tree.BoxAt(i).IsApart(tree.BoxAt(j), gap) || visit(i, j); });
      }
      const PieceTree2& tree;
      double gap;
      const Visit& visit;
    };
    Search search{*this, gap, visit};
    return base::VisitPairs(m_tree, 0, m_tree, 0, search);
  }

 private:
  using Tree = HalvingTree<Stretch2>;

  Stretch2 StretchOf(int begin, int end, bool isLeaf) const;
  double WidthAround(const Piece2& chord, int begin, int end) const;
  bool CanBeWithin(const Stretch2& stretch, double distance, Vec2 p) const;

  const Box2& BoxAt(int i) const { return m_boxes[static_cast<std::size_t>(i)]; }
  const Piece2& PieceAt(int i) const { return m_pieces[static_cast<std::size_t>(i)]; }

  const std::vector<Piece2>& m_pieces;
  std::vector<Box2> m_boxes;
  Tree m_tree;
  mutable std::int64_t m_visits = 0;
};

}  // namespace nu::engine::chains

#endif
