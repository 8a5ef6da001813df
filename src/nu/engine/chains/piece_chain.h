#ifndef NU_ENGINE_CHAINS_PIECE_CHAIN_H
#define NU_ENGINE_CHAINS_PIECE_CHAIN_H

#include <initializer_list>
#include <vector>

#include "nu/engine/shapes/arc3.h"

namespace nu::engine::chains {

// A bounded curve as the pieces it consists of, segments and arcs, in the order of the curve, in the global frame.
class PieceChain {
 public:
  void Reserve(std::size_t pieces) { m_ends.reserve(pieces); }
  void Add(const Segment3& segment) { Add(segment, kNoArc); }
  void Add(const Arc3& arc) {
    m_arcs.push_back(arc);
    Add(arc.Ends(), static_cast<int>(m_arcs.size()) - 1);
  }

  int Size() const { return static_cast<int>(m_ends.size()); }
  // The two ends of a piece.
  const Segment3& Ends(int i) const { return m_ends[i]; }
  // Null for a segment.
  const Arc3* ArcAt(int i) const { return m_arcOf.empty() || m_arcOf[i] == kNoArc ? nullptr : &m_arcs[m_arcOf[i]]; }

  bool HasNaN() const;
  Box BoxOf(int i) const;
  // Around all pieces; NaN when a coordinate is not finite.
  Box Bounds() const;
  double LargestCoordinate() const;
  PieceChain Scaled(double factor) const;

 private:
  static constexpr int kNoArc = -1;

  void Add(const Segment3& ends, int arc) {
    // Long chains without arcs are common, and keep no place for them.
    if (arc != kNoArc && m_arcOf.empty()) m_arcOf.assign(m_ends.size(), kNoArc);
    if (!m_arcs.empty()) m_arcOf.push_back(arc);
    m_ends.push_back(ends);
  }

  std::vector<Segment3> m_ends;
  std::vector<Arc3> m_arcs;
  std::vector<int> m_arcOf;  // empty without arcs
};

// 1 for sizes whose products, sums and powers stay in the range of the doubles, else a power of two that brings the
// size to about 1. Infinity stands for sums that left that range.
double SafeScale(double size);

// At least one piece each. About n log n: neighbours along a curve are neighbours in space, so that nested boxes around
// stretches of either curve rule out most pairs.
NearPair ClosestBetween(const PieceChain& first, const PieceChain& second);

// The same for one piece of each.
NearPair ClosestPieces(const PieceChain& first, int i, const PieceChain& second, int j);

// True for two segments whose lines are farther apart than the distance, given the rounding of the coordinates: the
// normal n = d1 x d2 leads from one line to the other. False where that is not certain.
bool AreApart(const PieceChain& first, int i, const PieceChain& second, int j, double distance, double rounding);

// The ends of all pieces, where they meet once, and the points of arcs at these parts of their sweeps.
std::vector<Vec3> PointsOf(const PieceChain& chain, std::initializer_list<double> parts);

struct Ball {
  Vec3 centre;
  double radius;
};
// The smallest one around the chain; NaN when a coordinate is not finite.
Ball SmallestBallAround(const PieceChain& chain);

}  // namespace nu::engine::chains

#endif
