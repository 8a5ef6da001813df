#include "nu/engine/chains/near_pieces2.h"

#include <algorithm>

namespace nu::engine::chains {

namespace {

// Memory stays within some tens of megabytes, and a few hundred bytes for each piece.
constexpr double kMostCells = 1e6;
constexpr double kMostCellsPerPiece = 4.0;
constexpr double kMostPassages = 2e6;
constexpr double kMostPassagesPerPiece = 16.0;

}  // namespace

PieceCells2::PieceCells2(const std::vector<Piece2>& pieces, double finest) : m_pieces(pieces) {
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

PieceCells2::Range PieceCells2::RangeOf(const Box2& box) const {
  const auto place = [&](double at, double from, std::int64_t count) {
    return static_cast<std::int64_t>(std::clamp(std::floor((at - from) / m_cell), 0.0, static_cast<double>(count - 1)));
  };
  return {place(box.low.x, m_bounds.low.x, m_columns), place(box.high.x, m_bounds.low.x, m_columns),
          place(box.low.y, m_bounds.low.y, m_rows), place(box.high.y, m_bounds.low.y, m_rows)};
}

// Visits each cell that may hold a part of a piece, once for each piece: the cells of the boxes around parts no longer
// than a cell.
template<class Visit>
void PieceCells2::ForEachPassage(const Visit& visit) const {
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
void PieceCells2::ForEachNear(double distance, Vec2 p, const Visit& visit) const {
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

int PieceCells2::PieceWithin(double distance, Vec2 p) const {
  int found = -1;
  ForEachNear(distance, p, [&](int i) {
    if (m_pieces[Index(i)].DistanceTo(p) < distance) found = i;
    return found < 0;
  });
  return found;
}

std::optional<Vec2> PieceCells2::ClosestWithin(double distance, Vec2 p) const {
  int closest = -1;
  ForEachNear(distance, p, [&](int i) {
    const double here = m_pieces[Index(i)].DistanceTo(p);
    if (here < distance) distance = here, closest = i;
    return true;
  });
  if (closest < 0) return std::nullopt;
  return m_pieces[Index(closest)].ClosestTo(p);
}

bool NearPieces2::UsesCells() {
  constexpr std::int64_t kVisitsPerPiece = 1'000;  // outlines take some hundreds
  if (m_cells) return true;
  if (m_tree.Visits() <= kVisitsPerPiece * static_cast<std::int64_t>(m_pieces.size())) return false;
  m_cells.emplace(m_pieces, 0.5 * m_distance);
  return true;
}

bool NearPieces2::IsExhausted() const {
  constexpr std::int64_t kMostVisits = 200'000'000;
  constexpr std::int64_t kMostVisitsPerPiece = 2'000;
  const std::int64_t visits = m_otherVisits + m_tree.Visits() + (m_cells ? m_cells->Visits() : 0);
  return visits > kMostVisits + kMostVisitsPerPiece * static_cast<std::int64_t>(m_pieces.size());
}

}  // namespace nu::engine::chains
