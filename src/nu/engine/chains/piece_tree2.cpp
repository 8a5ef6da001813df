#include "nu/engine/chains/piece_tree2.h"

#include <algorithm>

#include "nu/engine/base/elementary.h"
#include "nu/foundation/constants.h"

namespace nu::engine::chains {

namespace {

// Below this number of pieces a box of their own costs more than it rules out.
constexpr int kLeafPieces = 4;

// How far an arc leaves its chord, at most.
double Sagitta(const Piece2& piece) {
  if (piece.curvature == 0.0) return 0.0;
  const double turn = std::fabs(piece.curvature * piece.length);
  const double s = turn > Nu_PI ? 1.0 : Sin(0.25 * turn);
  return 2.0 * s * s / std::fabs(piece.curvature);
}

std::vector<Box2> BoxesOf(const std::vector<Piece2>& pieces) {
  std::vector<Box2> boxes;
  boxes.reserve(pieces.size());
  for (const Piece2& piece : pieces) boxes.push_back(BoxOf(piece));
  return boxes;
}

}  // namespace

PieceTree2::PieceTree2(const std::vector<Piece2>& pieces)
    : m_pieces(pieces),
      m_boxes(BoxesOf(pieces)),
      m_tree(
          static_cast<int>(pieces.size()), kLeafPieces,
          [this](int begin, int end, bool isLeaf) { return StretchOf(begin, end, isLeaf); },
          [](const Stretch2& half, Stretch2& whole) { whole.box.Include(half.box); }) {}

// The box of more than a leaf is that of its halves.
Stretch2 PieceTree2::StretchOf(int begin, int end, bool isLeaf) const {
  const Piece2 chord = SegmentBetween(PieceAt(begin).start, PieceAt(end - 1).end);
  Stretch2 stretch{{}, chord, WidthAround(chord, begin, end)};
  for (int i = begin; isLeaf && i < end; ++i) stretch.box.Include(BoxAt(i));
  return stretch;
}

// The chord of a closed stretch has no direction, so that only the box bounds it.
double PieceTree2::WidthAround(const Piece2& chord, int begin, int end) const {
  if (!(chord.length > 0.0)) return HUGE_VAL;
  double width = 0.0;
  for (int i = begin; i < end; ++i) {
    const Piece2& piece = PieceAt(i);
    const double reach = std::max(chord.DistanceTo(piece.start), chord.DistanceTo(piece.end));
    width = std::max(width, reach + Sagitta(piece));
  }
  return width;
}

bool PieceTree2::CanBeWithin(const Stretch2& stretch, double distance, Vec2 p) const {
  ++m_visits;
  if (!(stretch.box.DistanceTo(p) < distance)) return false;
  return stretch.width == HUGE_VAL || stretch.chord.DistanceTo(p) - stretch.width < distance;
}

int PieceTree2::PieceWithin(double distance, Vec2 p) const {
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

std::optional<Vec2> PieceTree2::ClosestWithin(double distance, Vec2 p) const {
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

}  // namespace nu::engine::chains
