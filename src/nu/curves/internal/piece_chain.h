#ifndef NU_CURVES_INTERNAL_PIECE_CHAIN_H
#define NU_CURVES_INTERNAL_PIECE_CHAIN_H

#include <vector>

#include "nu/curves/internal/segment3.h"
#include "nu/geometry/internal/box_tree.h"

namespace nu::internal {

// A bounded curve as the pieces it consists of, in the order of the curve, in the global frame.
class PieceChain {
 public:
  void Reserve(std::size_t pieces) { m_segments.reserve(pieces); }
  void Add(const Segment3& segment) { m_segments.push_back(segment); }

  int Size() const { return static_cast<int>(m_segments.size()); }
  // The two ends of a piece.
  const Segment3& Ends(int i) const { return m_segments[static_cast<std::size_t>(i)]; }

  Box BoxOf(int i) const;
  double LargestCoordinate() const;
  PieceChain Scaled(double factor) const;

 private:
  std::vector<Segment3> m_segments;
};

// At least one piece each. About n log n: neighbours along a curve are neighbours in space, so that nested boxes around
// stretches of either curve rule out most pairs.
NearPair ClosestBetween(const PieceChain& first, const PieceChain& second);

// Whether two pieces come as close as `tol` that are not neighbours, or neighbours beyond the point they share. In a
// closed chain the last and the first one are neighbours. Pieces are longer than `tol`.
bool TouchesItself(const PieceChain& chain, bool closed, double tol);

struct Ball {
  Vec3 centre;
  double radius;
};
// The smallest one around the chain; NaN when a coordinate is not finite.
Ball SmallestBallAround(const PieceChain& chain);

}  // namespace nu::internal

#endif
