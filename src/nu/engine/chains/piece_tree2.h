#ifndef NU_ENGINE_CHAINS_PIECE_TREE2_H
#define NU_ENGINE_CHAINS_PIECE_TREE2_H

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/halving_tree.h"
#include "nu/engine/chains/piece2.h"
#include "nu/foundation/constants.h"

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
  explicit PieceTree2(const std::vector<Piece2>& pieces)
      : m_pieces(pieces),
        m_boxes(BoxesOf(pieces)),
        m_tree(
            static_cast<int>(pieces.size()), kLeafPieces,
            [this](int begin, int end, bool isLeaf) { return StretchOf(begin, end, isLeaf); },
            [](const Stretch2& half, Stretch2& whole) { whole.box.Include(half.box); }) {}

  // Returns a piece closer than the distance, or -1.
  int PieceWithin(double distance, Vec2 p) const {
    int found = -1;
    m_tree.Descend([&](const Tree::Node& node) { return CanBeWithin(node, distance, p); },
                   [&](const Tree::Node& leaf) {
                     for (int i = leaf.begin; i < leaf.end && found < 0; ++i) {
                       if (PieceAt(i).DistanceTo(p) < distance) found = i;
                     }
                     return found < 0;
                   });
    return found;
  }
  // Finds the closest point, if it is within the distance.
  std::optional<Vec2> ClosestWithin(double distance, Vec2 p) const {
    int closest = -1;
    m_tree.Descend([&](const Tree::Node& node) { return CanBeWithin(node, distance, p); },
                   [&](const Tree::Node& leaf) {
                     for (int i = leaf.begin; i < leaf.end; ++i) {
                       const double here = PieceAt(i).DistanceTo(p);
                       if (here < distance) distance = here, closest = i;
                     }
                     return true;
                   },
                   [p](const Tree::Node& a, const Tree::Node& b) { return a.box.DistanceTo(p) < b.box.DistanceTo(p); });
    if (closest < 0) return std::nullopt;
    return PieceAt(closest).ClosestTo(p);
  }
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

  // Below this number of pieces a box of their own costs more than it rules out.
  static constexpr int kLeafPieces = 4;

  static std::vector<Box2> BoxesOf(const std::vector<Piece2>& pieces) {
    std::vector<Box2> boxes;
    boxes.reserve(pieces.size());
    for (const Piece2& piece : pieces) boxes.push_back(BoxOf(piece));
    return boxes;
  }
  // How far an arc leaves its chord, at most.
  static double Sagitta(const Piece2& piece) {
    if (piece.curvature == 0.0) return 0.0;
    const double turn = std::fabs(piece.curvature * piece.length);
    const double s = turn > Nu_PI ? 1.0 : Sin(0.25 * turn);
    return 2.0 * s * s / std::fabs(piece.curvature);
  }

  // The box of more than a leaf is that of its halves.
  Stretch2 StretchOf(int begin, int end, bool isLeaf) const {
    const Piece2 chord = SegmentBetween(PieceAt(begin).start, PieceAt(end - 1).end);
    Stretch2 stretch{{}, chord, WidthAround(chord, begin, end)};
    for (int i = begin; isLeaf && i < end; ++i) stretch.box.Include(BoxAt(i));
    return stretch;
  }
  // The chord of a closed stretch has no direction, so that only the box bounds it.
  double WidthAround(const Piece2& chord, int begin, int end) const {
    if (!(chord.length > 0.0)) return HUGE_VAL;
    double width = 0.0;
    for (int i = begin; i < end; ++i) {
      const Piece2& piece = PieceAt(i);
      const double reach = std::max(chord.DistanceTo(piece.start), chord.DistanceTo(piece.end));
      width = std::max(width, reach + Sagitta(piece));
    }
    return width;
  }
  bool CanBeWithin(const Stretch2& stretch, double distance, Vec2 p) const {
    ++m_visits;
    if (!(stretch.box.DistanceTo(p) < distance)) return false;
    return stretch.width == HUGE_VAL || stretch.chord.DistanceTo(p) - stretch.width < distance;
  }

  const Box2& BoxAt(int i) const { return m_boxes[static_cast<std::size_t>(i)]; }
  const Piece2& PieceAt(int i) const { return m_pieces[static_cast<std::size_t>(i)]; }

  const std::vector<Piece2>& m_pieces;
  std::vector<Box2> m_boxes;
  Tree m_tree;
  mutable std::int64_t m_visits = 0;
};

}  // namespace nu::engine::chains

#endif
