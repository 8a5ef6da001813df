#ifndef NU_ENGINE_CHAINS_NEAR_PIECES2_H
#define NU_ENGINE_CHAINS_NEAR_PIECES2_H

#include <algorithm>
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
  PieceCells2(const std::vector<Piece2>& pieces, double finest) : m_pieces(pieces) {
    double length = 0.0;
    for (const Piece2& piece : pieces) {
      m_bounds.Include(BoxOf(piece));
      length += piece.length;
    }
    const double size = static_cast<double>(pieces.size());
    const double width = m_bounds.high.x - m_bounds.low.x;
    const double height = m_bounds.high.y - m_bounds.low.y;
    const double mostCells = kMostCells + kMostCellsPerPiece * size;
    m_cell = std::max({finest, length / (kMostPassages + kMostPassagesPerPiece * size),
                       std::sqrt(width * height / mostCells), (width + height) / mostCells});
    m_columns = static_cast<std::int64_t>(width / m_cell) + 1;
    m_rows = static_cast<std::int64_t>(height / m_cell) + 1;
    m_begin.assign(Index(m_columns * m_rows) + 1, 0);
    ForEachPassage([&](std::size_t cell, int) { ++m_begin[cell + 1]; });
    for (std::size_t cell = 1; cell < m_begin.size(); ++cell) m_begin[cell] += m_begin[cell - 1];
    m_passing.resize(m_begin.back());
    std::vector<std::size_t> next(m_begin.begin(), m_begin.end() - 1);
    ForEachPassage([&](std::size_t cell, int piece) { m_passing[next[cell]++] = piece; });
  }

  // As those of the tree.
  int PieceWithin(double distance, Vec2 p) const {
    int found = -1;
    ForEachNear(distance, p, [&](int i) {
      if (m_pieces[Index(i)].DistanceTo(p) < distance) found = i;
      return found < 0;
    });
    return found;
  }
  std::optional<Vec2> ClosestWithin(double distance, Vec2 p) const {
    int closest = -1;
    ForEachNear(distance, p, [&](int i) {
      const double here = m_pieces[Index(i)].DistanceTo(p);
      if (here < distance) {
        distance = here;
        closest = i;
      }
      return true;
    });
    if (closest < 0) return std::nullopt;
    return m_pieces[Index(closest)].ClosestTo(p);
  }
  // Counts the pieces that these two have looked at.
  std::int64_t Visits() const { return m_visits; }

 private:
  // Memory stays within some tens of megabytes, and a few hundred bytes for each piece.
  static constexpr double kMostCells = 1e6;
  static constexpr double kMostCellsPerPiece = 4.0;
  static constexpr double kMostPassages = 2e6;
  static constexpr double kMostPassagesPerPiece = 16.0;

  // Columns and rows, the last ones included.
  struct Range {
    std::int64_t left, right, bottom, top;
  };

  Range RangeOf(const Box2& box) const {
    const auto place = [&](double at, double from, std::int64_t count) {
      return static_cast<std::int64_t>(
          std::clamp(std::floor((at - from) / m_cell), 0.0, static_cast<double>(count - 1)));
    };
    return {place(box.low.x, m_bounds.low.x, m_columns), place(box.high.x, m_bounds.low.x, m_columns),
            place(box.low.y, m_bounds.low.y, m_rows), place(box.high.y, m_bounds.low.y, m_rows)};
  }
  // Visits each cell that may hold a part of a piece, once for each piece: the cells of the boxes around parts no
  // longer than a cell.
  template<class Visit>
  void ForEachPassage(const Visit& visit) const {
    std::vector<int> last(Index(m_columns * m_rows), -1);
    for (int i = 0; i < static_cast<int>(m_pieces.size()); ++i) {
      const Piece2& piece = m_pieces[Index(i)];
      const double parts = std::max(1.0, std::ceil(piece.length / m_cell));
      for (double k = 0.0; k < parts; k += 1.0) {
        const Range range = RangeOf(BoxOf(piece.Part(k / parts * piece.length, (k + 1.0) / parts * piece.length)));
        for (std::int64_t row = range.bottom; row <= range.top; ++row) {
          for (std::int64_t column = range.left; column <= range.right; ++column) {
            const std::size_t cell = Index(row * m_columns + column);
            if (last[cell] != i) visit(cell, i);
            last[cell] = i;
          }
        }
      }
    }
  }
  // Until visit(piece) returns false: those of the own cell first, which are near most often.
  template<class Visit>
  void ForEachNear(double distance, Vec2 p, const Visit& visit) const {
    constexpr double kRoundings = 1e-12;
    const double reach = distance + kRoundings;
    const Range own = RangeOf({p, p});
    const Range range = RangeOf({{p.x - reach, p.y - reach}, {p.x + reach, p.y + reach}});
    const auto visitCell = [&](std::int64_t column, std::int64_t row) {
      const std::size_t cell = Index(row * m_columns + column);
      for (std::size_t k = m_begin[cell]; k < m_begin[cell + 1]; ++k) {
        ++m_visits;
        if (!visit(m_passing[k])) return false;
      }
      return true;
    };
    if (!visitCell(own.left, own.bottom)) return;
    for (std::int64_t row = range.bottom; row <= range.top; ++row) {
      for (std::int64_t column = range.left; column <= range.right; ++column) {
        if (column == own.left && row == own.bottom) continue;
        if (!visitCell(column, row)) return;
      }
    }
  }

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
  bool IsExhausted() const {
    constexpr std::int64_t kMostVisits = 200'000'000;
    constexpr std::int64_t kMostVisitsPerPiece = 2'000;
    const std::int64_t visits = m_otherVisits + m_tree.Visits() + (m_cells ? m_cells->Visits() : 0);
    return visits > kMostVisits + kMostVisitsPerPiece * static_cast<std::int64_t>(m_pieces.size());
  }

 private:
  bool UsesCells() {
    constexpr std::int64_t kVisitsPerPiece = 1'000;  // outlines take some hundreds
    if (m_cells) return true;
    if (m_tree.Visits() <= kVisitsPerPiece * static_cast<std::int64_t>(m_pieces.size())) return false;
    m_cells.emplace(m_pieces, 0.5 * m_distance);
    return true;
  }

  const std::vector<Piece2>& m_pieces;
  double m_distance;
  PieceTree2 m_tree;
  std::optional<PieceCells2> m_cells;
  std::int64_t m_otherVisits = 0;
};

}  // namespace nu::engine::chains

#endif
