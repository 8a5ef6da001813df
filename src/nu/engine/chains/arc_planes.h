#ifndef NU_ENGINE_CHAINS_ARC_PLANES_H
#define NU_ENGINE_CHAINS_ARC_PLANES_H

#include <optional>
#include <vector>

#include "nu/engine/chains/piece_chain.h"

namespace nu::engine::chains {

// Centre and ends of an arc tell its plane, but those of a half or full turn only its diameter, and those of nearly a
// half turn the plane with few digits. The pieces that run on from either end of the arc, without a gap, do: a piece
// that leaves the line of the diameter spans the plane with it. O(n) for all arcs of a chain.
class ArcPlanes {
 public:
  // Ends that are no farther apart than joinTol meet; arcs within the angle with the sine sineTol of a half turn are
  // half turns. The chain must outlive this.
  ArcPlanes(const PieceChain& chain, double joinTol, double sineTol);

  // The normal of arc i, either way, that the pieces around it know better than its own points. None where they do not,
  // or contradict each other or the arc.
  std::optional<Vec3> NormalOf(int i) const;

 private:
  // A direction of a piece's line or, of an arc that knows its plane, its normal, with the angle in radians by which
  // roundings may have turned it.
  struct Hint {
    Vec3 direction;
    double doubt;
    bool isNormal;
  };
  struct Candidate {
    Vec3 normal;
    double doubt;
  };

  Hint HintOf(int i) const;
  double DirectionDoubt(Vec3 p, double length) const;
  double ArcDoubt(const Arc3& arc) const;
  int Neighbour(int i, int step) const;
  void FindOthers(int step, std::vector<int>& others) const;
  bool IsParallel(const Hint& first, const Hint& second) const;
  std::optional<Candidate> CandidateFrom(int i, int step, const std::vector<int>& others) const;

  const PieceChain& m_chain;
  double m_joinTol;
  double m_sineTol;
  std::vector<Hint> m_hints;
  std::vector<int> m_before, m_behind;  // the nearest piece of another direction, or -1
};

}  // namespace nu::engine::chains

#endif
