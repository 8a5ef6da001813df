#ifndef NU_ENGINE_CHAINS_PIECE_TREE2_H
#define NU_ENGINE_CHAINS_PIECE_TREE2_H

#include <algorithm>
#include <cfloat>
#include <cstdint>
#include <optional>
#include <vector>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/halving_tree.h"
#include "nu/engine/chains/piece2.h"
#include "nu/foundation/constants.h"

namespace nu::engine::chains {

// A box around consecutive pieces, and a rectangle about them along the line through the means of their two halves.
struct Stretch2 {
  Box2 box;
  Vec2 direction;  // a unit vector
  Box2 rectangle;  // coordinates along the direction and to its left
};

// The stretches of a chain, halved down to a few pieces. The rectangle of a smooth stretch is much thinner than its
// box. That of a noisy one ends, towards either side, at the point that reaches farthest to that side, so that only
// stretches with such points are near candidates for the closest one.
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
                       if (here < distance) {
                         distance = here;
                         closest = i;
                       }
                     }
                     return true;
                   },
                   [p](const Tree::Node& a, const Tree::Node& b) {
                     return a.rectangle.DistanceTo(Along(a, p)) < b.rectangle.DistanceTo(Along(b, p));
                   });
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
    const int middle = begin + std::max(1, (end - begin) / 2);
    const Vec2 along = MeanOf(std::min(middle, end - 1), end) - MeanOf(begin, middle);
    const double length = Norm(along);
    Stretch2 stretch{{}, length > 0.0 ? (1.0 / length) * along : Vec2{1.0, 0.0}, {}};
    for (int i = begin; i < end; ++i) {
      if (isLeaf) stretch.box.Include(BoxAt(i));
      IncludeInRectangle(PieceAt(i), stretch);
    }
    return stretch;
  }
  Vec2 MeanOf(int begin, int end) const {
    Vec2 sum{0.0, 0.0};
    for (int i = begin; i < end; ++i) sum = sum + PieceAt(i).start + PieceAt(i).end;
    return (0.5 / static_cast<double>(end - begin)) * sum;
  }
  static Vec2 Along(const Stretch2& stretch, Vec2 p) {
    return {Dot(stretch.direction, p), Cross(stretch.direction, p)};
  }
  static void IncludeInRectangle(const Piece2& piece, Stretch2& stretch) {
    constexpr double kRoundings = 16.0 * DBL_EPSILON;  // of coordinates of about 1
    const double margin = Sagitta(piece) + kRoundings;
    for (const Vec2 end : {piece.start, piece.end}) {
      const Vec2 p = Along(stretch, end);
      stretch.rectangle.Include(Vec2{p.x - margin, p.y - margin});
      stretch.rectangle.Include(Vec2{p.x + margin, p.y + margin});
    }
  }
  bool CanBeWithin(const Stretch2& stretch, double distance, Vec2 p) const {
    ++m_visits;
    return stretch.box.DistanceTo(p) < distance && stretch.rectangle.DistanceTo(Along(stretch, p)) < distance;
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
