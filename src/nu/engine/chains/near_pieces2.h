#ifndef NU_ENGINE_CHAINS_NEAR_PIECES2_H
#define NU_ENGINE_CHAINS_NEAR_PIECES2_H

#include <cstdint>
#include <optional>
#include <vector>

#include "nu/engine/chains/piece_tree2.h"

namespace nu::engine::chains {

// Square cells, and for each the pieces of a chain that pass it. Long pieces that criss-cross have boxes of the size of
// the whole chain, but few of them pass any one cell.
class PieceCells2 {
 public:
  // No finer than `finest`, nor than a few cells and passages for each piece. The pieces must outlive the cells.
  PieceCells2(const std::vector<Piece2>& pieces, double finest);

  // As those of the tree.
  int PieceWithin(double distance, Vec2 p) const;
  std::optional<Vec2> ClosestWithin(double distance, Vec2 p) const;
  // Counts the pieces that these two have looked at.
  std::int64_t Visits() const { return m_visits; }

 private:
  // Columns and rows, the last ones included.
  struct Range {
    std::int64_t left, right, bottom, top;
  };

  Range RangeOf(const Box2& box) const;
  template<class Visit>
  void ForEachPassage(const Visit& visit) const;
  template<class Visit>
  void ForEachNear(double distance, Vec2 p, const Visit& visit) const;

  const std::vector<Piece2>& m_pieces;
  Box2 m_bounds;
  double m_cell = 0.0;
  std::int64_t m_columns = 1, m_rows = 1;
  std::vector<std::size_t> m_begin;  // of each cell, among the passages
  std::vector<int> m_passing;
  mutable std::int64_t m_visits = 0;
};

// Pieces of a chain near points. The tree along the chain answers for measured outlines; from where it has visited
// many nodes for each piece, the cells do.
class NearPieces2 {
 public:
  // Points are asked for within about the distance. The pieces must outlive this.
  NearPieces2(const std::vector<Piece2>& pieces, double distance)
      : m_pieces(pieces), m_distance(distance), m_tree(pieces) {}

  // Returns a piece closer than the distance, or -1.
  int PieceWithin(double distance, Vec2 p) {
    return UsesCells() ? m_cells->PieceWithin(distance, p) : m_tree.PieceWithin(distance, p);
  }
  // Finds the closest point, if it is within the distance.
  std::optional<Vec2> ClosestWithin(double distance, Vec2 p) {
    return UsesCells() ? m_cells->ClosestWithin(distance, p) : m_tree.ClosestWithin(distance, p);
  }
  // Counts a look at the chain that was not needed here.
  void CountVisit() { ++m_otherVisits; }
  // Whether there were so many visits that there is no end to wait for.
  bool IsExhausted() const;

 private:
  bool UsesCells();

  const std::vector<Piece2>& m_pieces;
  double m_distance;
  PieceTree2 m_tree;
  std::optional<PieceCells2> m_cells;
  std::int64_t m_otherVisits = 0;
};

}  // namespace nu::engine::chains

#endif
