#ifndef NU_ENGINE_CHAINS_ARC_PLANES_H
#define NU_ENGINE_CHAINS_ARC_PLANES_H

#include <cfloat>
#include <optional>
#include <vector>

#include "nu/engine/chains/piece2.h"
#include "nu/engine/chains/piece_chain.h"
#include "nu/foundation/constants.h"

namespace nu::engine::chains {

// The centre and the ends of an arc determine its plane, but those of a half or full turn determine only its diameter,
// and those of nearly a half turn give the plane with few digits. Then the pieces that follow either end without a gap
// determine it: a piece that leaves the line of the diameter spans the plane with it. O(n) for all arcs of a chain.
class ArcPlanes {
 public:
  // Ends that are no farther apart than joinTol meet; arcs within the angle with the sine sineTol of a half turn are
  // half turns. The chain must outlive this.
  ArcPlanes(const PieceChain& chain, double joinTol, double sineTol)
      : m_chain(chain), m_joinTol(joinTol), m_sineTol(sineTol) {
    m_hints.reserve(Index(chain.Size()));
    for (int i = 0; i < chain.Size(); ++i) m_hints.push_back(HintOf(i));
    FindOthers(-1, m_before);
    FindOthers(1, m_behind);
  }

  // The normal of arc i, of either sign, where the pieces around it determine it better than its own points. Nothing
  // where they do not, or where they contradict each other or the arc.
  std::optional<Vec3> NormalOf(int i) const {
    const Arc3* arc = m_chain.ArcAt(i);
    if (arc == nullptr || m_hints[Index(i)].isNormal) return std::nullopt;
    const double doubt = ArcDoubt(*arc);
    const std::optional<Candidate> before = CandidateFrom(i, -1, m_before);
    const std::optional<Candidate> behind = CandidateFrom(i, 1, m_behind);
    if (!before && !behind) return std::nullopt;
    if (before && behind && !(SineBetween(before->normal, behind->normal) <= kSamePlane)) return std::nullopt;
    const Candidate& best = !behind || (before && before->doubt <= behind->doubt) ? *before : *behind;
    const bool contradicts = !(SineBetween(best.normal, arc->Axis()) <= kMostDoubts * (doubt + best.doubt));
    if (!(best.doubt < doubt) || contradicts) return std::nullopt;
    return best.normal;
  }

 private:
  static constexpr double kOpen = 4.0;            // radians, above a half turn: of a plane of which nothing is known
  static constexpr double kWellKnown = 1e-12;     // radians; below it an arc needs no help
  static constexpr double kSamePlane = 1e-6;      // radians; planes that differ by less are meant to be one
  static constexpr double kRoundings = 8.0;       // of two points, their difference and a unit direction
  static constexpr double kMostDoubts = 16.0;     // more than this, which leaves room for a motion, is another plane
  static constexpr double kParallelDoubts = 4.0;  // below so many doubts the angle between directions is noise

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

  static double SineBetween(Vec3 u, Vec3 v) { return SafeNorm(Cross(u, v)); }
  Hint HintOf(int i) const {
    const Segment3& ends = m_chain.Ends(i);
    const Arc3* arc = m_chain.ArcAt(i);
    if (arc == nullptr) {
      return {Unit(ends.end - ends.start), DirectionDoubt(ends.start, SafeNorm(ends.end - ends.start)), false};
    }
    const double doubt = ArcDoubt(*arc);
    if (doubt <= kWellKnown) return {Unit(arc->Axis()), doubt, true};
    return {arc->x, DirectionDoubt(arc->centre, arc->radius), false};
  }
  double DirectionDoubt(Vec3 p, double length) const {
    return kRoundings * DBL_EPSILON * std::max(1.0, LargestComponent(p) / length);
  }
  // The angle between diameter and chord is half of what the sweep lacks of a turn.
  double ArcDoubt(const Arc3& arc) const {
    if (arc.sweep == Nu_2PI) return kOpen;
    const double doubt = DirectionDoubt(arc.centre, arc.radius);
    const double sine = 2.0 * SineBetween(arc.x, Unit(arc.end - arc.start));
    return sine > std::max(m_sineTol, doubt) ? doubt / sine : kOpen;
  }
  // Around the seam of a closed chain, too; -1 behind a gap.
  int Neighbour(int i, int step) const {
    const int size = m_chain.Size();
    const int next = (i + step + size) % size;
    const Vec3 here = step > 0 ? m_chain.Ends(i).end : m_chain.Ends(i).start;
    const Vec3 there = step > 0 ? m_chain.Ends(next).start : m_chain.Ends(next).end;
    return next != i && SafeNorm(there - here) <= m_joinTol ? next : -1;
  }
  // Twice around, as what is found in the first round behind the seam serves the second one before it.
  void FindOthers(int step, std::vector<int>& others) const {
    const int size = m_chain.Size();
    others.assign(Index(size), -1);
    for (int k = 0; k < 2 * size; ++k) {
      const int i = step > 0 ? size - 1 - k % size : k % size;
      const int next = Neighbour(i, step);
      if (next < 0) continue;
      others[Index(i)] = IsParallel(m_hints[Index(i)], m_hints[Index(next)]) ? others[Index(next)] : next;
    }
  }
  bool IsParallel(const Hint& first, const Hint& second) const {
    if (first.isNormal || second.isNormal) return false;
    return !(SineBetween(first.direction, second.direction) > kParallelDoubts * (first.doubt + second.doubt));
  }
  std::optional<Candidate> CandidateFrom(int i, int step, const std::vector<int>& others) const {
    const Hint& arc = m_hints[Index(i)];
    const int at = others[Index(i)];
    if (at < 0 || at == i || Neighbour(i, step) < 0) return std::nullopt;
    const Hint& hint = m_hints[Index(at)];
    if (hint.isNormal) {
      if (!(std::fabs(Dot(hint.direction, arc.direction)) <= kSamePlane)) return std::nullopt;
      return Candidate{hint.direction, hint.doubt};
    }
    const Vec3 across = Cross(arc.direction, hint.direction);
    return Candidate{Unit(across), (arc.doubt + hint.doubt) / SafeNorm(across)};
  }

  const PieceChain& m_chain;
  double m_joinTol;
  double m_sineTol;
  std::vector<Hint> m_hints;
  std::vector<int> m_before, m_behind;  // the nearest piece of another direction, or -1
};

}  // namespace nu::engine::chains

#endif
