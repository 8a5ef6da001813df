#ifndef NU_ENGINE_CHAINS_SPACE_SEARCH_H
#define NU_ENGINE_CHAINS_SPACE_SEARCH_H

#include <vector>

#include "nu/engine/chains/chain_tree.h"

namespace nu::engine::chains {

// The pieces of a chain that pass a ball, and a box around what they have in it.
struct Passing {
  std::vector<int> pieces;
  Box box = EmptyBox();
};
// Those without NaN and infinity, and the bounds widened by them.
std::vector<int> FinitePieces(const PieceChain& chain, Box& bounds);
Passing PassingBall(const PieceChain& chain, const std::vector<int>& among, const Ball& ball);

// Finds the pairs of pieces of two chains that come close to each other where trees along the chains do not: long
// pieces that criss-cross have boxes of the size of the whole chain, but few of them pass any one small cell. The space
// is halved until few pairs are left in a cell. Two points closer than the reach are within half of it from the point
// between them, so that their pieces pass a ball around the cell that holds this point, widened by half the reach.
// For n long pieces with random directions the work grows like n^1.5. Long pieces side by side, like the strands of a
// rope, share most cells; where halving has taken as long as all pairs would, those are compared instead.
//
// The search offers Reach(); CanReach(gap), whether a pair at that distance is asked for; and Compare(i, j), which ends
// everything with false. A pair may be compared several times; pieces that are not finite are left out.
template<class Search>
class SpaceSearch {
 public:
  SpaceSearch(const PieceChain& first, const PieceChain& second, Search& search)
      : m_first(first), m_second(second), m_search(search) {}

  void Run() {
    constexpr int kMaxDepth = 90;  // halvings along three axes: cells down to 1e-9 of the size
    Box bounds = EmptyBox();
    const List first = FinitePieces(m_first, bounds);
    const List second = FinitePieces(m_second, bounds);
    if (first.empty() || second.empty() || !m_search.Compare(first[0], second[0])) return;
    m_left = static_cast<double>(first.size()) * static_cast<double>(second.size());
    if (Visit(bounds, first, second, kMaxDepth) && m_left < 0.0) CompareAll(first, second);
  }

 private:
  using List = std::vector<int>;

  bool Visit(const Box& cell, const List& first, const List& second, int depth) {
    constexpr std::size_t kFewPairs = 20;  // for each piece: comparing them costs less than another halving
    constexpr double kFine = 0.125;        // of the reach: smaller cells leave out no more pieces
    int axis = 0;
    double side = 0.0;
    for (int k = 0; k < 3; ++k) {
      if (cell.high[k] - cell.low[k] > side) side = cell.high[axis = k] - cell.low[k];
    }
    if (m_left < 0.0) return true;
    const bool areFew = first.size() * second.size() <= kFewPairs * (first.size() + second.size());
    if (areFew || depth == 0 || !(side > kFine * m_search.Reach())) return CompareAll(first, second);
    for (const bool isHigh : {false, true}) {
      Box half = cell;
      const double middle = cell.low[axis] + 0.5 * side;
      (isHigh ? half.low : half.high)[axis] = middle;
      if (!VisitHalf(half, first, second, depth - 1)) return false;
    }
    return true;
  }

  bool VisitHalf(const Box& cell, const List& first, const List& second, int depth) {
    m_left -= static_cast<double>(first.size() + second.size());
    const Vec3 low{cell.low[0], cell.low[1], cell.low[2]};
    const Vec3 diagonal = Vec3{cell.high[0], cell.high[1], cell.high[2]} - low;
    constexpr double kRoundings = 1e-12;
    const double radius = (0.5 + kRoundings) * (SafeNorm(diagonal) + m_search.Reach());
    const Ball ball{low + 0.5 * diagonal, radius};
    const Passing ofFirst = PassingBall(m_first, first, ball);
    if (ofFirst.pieces.empty()) return true;
    const Passing ofSecond = PassingBall(m_second, second, ball);
    if (ofSecond.pieces.empty() || !m_search.CanReach(Gap(ofFirst.box, ofSecond.box))) return true;
    return Visit(cell, ofFirst.pieces, ofSecond.pieces, depth);
  }

  bool CompareAll(const List& first, const List& second) {
    m_left -= static_cast<double>(first.size()) * static_cast<double>(second.size());
    for (const int i : first) {
      for (const int j : second) {
        if (!m_search.Compare(i, j)) return false;
      }
    }
    return true;
  }

  const PieceChain& m_first;
  const PieceChain& m_second;
  Search& m_search;
  double m_left = 0.0;  // pieces and pairs to look at before comparing all pairs takes less
};

}  // namespace nu::engine::chains

#endif
