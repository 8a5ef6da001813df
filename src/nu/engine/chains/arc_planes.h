#ifndef NU_ENGINE_CHAINS_ARC_PLANES_H
#define NU_ENGINE_CHAINS_ARC_PLANES_H

#include <optional>
#include <vector>

#include "nu/engine/chains/piece_chain.h"

namespace nu::engine::chains {

// The centre and the ends of an arc determine its plane, but those of a half or full turn determine only its diameter,
// and those of nearly a half turn give the plane with few digits. Then the pieces that follow either end without a gap
// determine it: a piece that leaves the line of the diameter spans the plane with it. O(n) for all arcs of a chain.
class ArcPlanes {
 public:
  // Ends that are no farther apart than joinTol meet; arcs within the angle with the sine sineTol of a half turn are
  // half turns. The chain must outlive this.
  ArcPlanes(const PieceChain& chain, double joinTol, double sineTol);

  // The normal of arc i, of either sign, where the pieces around it determine it better than its own points. Nothing
  // where they do not, or where they contradict each other or the arc.
  std::optional<Vec3> NormalOf(int i) const;

 private:
  // A direction of a piece's line or, of an arc that determines its plane, its normal, with the angle in radians by
  // which roundings may have turned it.
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
