#include "nu/engine/chains/self_contact.h"

#include <cfloat>
#include <cstdint>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/chains/space_search.h"
#include "nu/engine/shapes/incidence.h"

namespace nu::engine::chains {

namespace {

double LengthOf(const PieceChain& chain, int i) {
  if (const Arc3* arc = chain.ArcAt(i)) return arc->radius * arc->sweep;
  return SafeNorm(chain.Ends(i).end - chain.Ends(i).start);
}

PieceChain WithoutShortPieces(const PieceChain& chain, double tol) {
  PieceChain kept;
  kept.Reserve(static_cast<std::size_t>(chain.Size()));
  for (int i = 0; i < chain.Size(); ++i) {
    if (LengthOf(chain, i) <= tol) continue;
    if (const Arc3* arc = chain.ArcAt(i)) {
      kept.Add(*arc);
    } else {
      kept.Add(chain.Ends(i));
    }
  }
  return kept;
}

// Where the unbounded curves of two pieces meet; nothing for two segments, which neighbours are only once.
Points2 IntersectUnbounded(const PieceChain& chain, int i, int j, double tol) {
  const Arc3* first = chain.ArcAt(i);
  const Arc3* second = chain.ArcAt(j);
  const auto line = [&](int k) { return Line3{chain.Ends(k).start, Unit(chain.Ends(k).end - chain.Ends(k).start)}; };
  if (first != nullptr && second != nullptr) return Intersect(first->Circle(), second->Circle(), tol);
  if (first != nullptr) return Intersect(line(j), first->Circle(), tol);
  if (second != nullptr) return Intersect(line(i), second->Circle(), tol);
  return {};
}

// Measured curves are answered by the tree along the chain. What takes it more visits is searched in space.
class SelfSearch {
 public:
  SelfSearch(const ChainTree& tree, double tol)
      : m_tree(tree),
        m_chain(tree.Chain()),
        m_tol(tol),
        m_beyond(std::nextafter(tol, kInfinity)),
        m_rounding(DBL_EPSILON * tree.Chain().LargestCoordinate()),
        m_visitsLeft(kVisitsPerPiece * tree.Chain().Size()) {}

  bool Run() {
    m_touches = !VisitPairs(m_tree.Halves(), 0, m_tree.Halves(), 0, *this);
    if (m_visitsLeft < 0) SpaceSearch(m_chain, m_chain, *this).Run();
    return m_touches;
  }

  double Reach() const { return m_tol; }
  bool CanReach(double gap) const { return gap <= m_tol; }
  bool CanHold(int a, int b) { return a == b || (--m_visitsLeft >= 0 && Gap(m_tree[a], m_tree[b], m_beyond) <= m_tol); }
  bool VisitLeaves(const ChainTree::Node& a, const ChainTree::Node& b) const {
    return VisitItems(a, b, [&](int i, int j) { return !Touch(i, j); });
  }
  // False when a contact is found. Boxes of pieces that pass one cell are hardly apart: they are asked last.
  bool Compare(int i, int j) {
    if (j <= i || (!MayFollow(i, j) && AreApart(m_chain, i, m_chain, j, m_tol, m_rounding))) return true;
    m_touches = m_touches || Touch(i, j);
    return !m_touches;
  }

 private:
  static constexpr std::int64_t kVisitsPerPiece = 50;

  bool MayFollow(int i, int j) const { return j == i + 1 || (i == 0 && j == m_chain.Size() - 1); }

  bool Touch(int i, int j) const {
    if (!(Gap(m_chain.BoxOf(i), m_chain.BoxOf(j)) <= m_tol)) return false;
    const bool next = j == i + 1 && Follows(i, j);
    const bool around = i == 0 && j == m_chain.Size() - 1 && Follows(j, i);
    if (next && around) return IsOn(MiddleOf(i), j) || MeetsAgain(i, j);
    if (next) return FoldsBack(i, j) || MeetsAgain(i, j);
    if (around) return FoldsBack(j, i) || MeetsAgain(j, i);
    if (AreApart(m_chain, i, m_chain, j, m_tol, m_rounding)) return false;
    return ClosestPieces(m_chain, i, m_chain, j).distance <= m_tol;
  }

  bool IsNear(Vec3 p, Vec3 q) const { return SafeNorm(p - q) <= m_tol; }
  bool IsOn(Vec3 p, int i) const {
    const Arc3* arc = m_chain.ArcAt(i);
    return IsNear(p, arc != nullptr ? ClosestOn(*arc, p) : ClosestOn(m_chain.Ends(i), p));
  }
  bool Follows(int i, int j) const { return IsNear(m_chain.Ends(i).end, m_chain.Ends(j).start); }
  bool FoldsBack(int i, int j) const { return IsOn(m_chain.Ends(j).end, i) || IsOn(m_chain.Ends(i).start, j); }

  Vec3 MiddleOf(int i) const {
    const Arc3* arc = m_chain.ArcAt(i);
    return arc != nullptr ? arc->At(0.5 * arc->sweep) : m_chain.Ends(i).At(0.5);
  }
  // Halfway from a point of the piece to its end.
  Vec3 HalfwayToEnd(int i, Vec3 p) const {
    const Arc3* arc = m_chain.ArcAt(i);
    return arc != nullptr ? arc->At(0.5 * (arc->AngleOf(p) + arc->sweep)) : Segment3{p, m_chain.Ends(i).end}.At(0.5);
  }

  // Piece i ends where piece j starts.
  bool MeetsAgain(int i, int j) const {
    const Points2 met = IntersectUnbounded(m_chain, i, j, m_tol);
    for (int k = 0; k < met.count; ++k) {
      const Vec3 p = met.at[k];
      const bool shared = IsNear(p, m_chain.Ends(i).end) || (Follows(j, i) && IsNear(p, m_chain.Ends(i).start));
      if (!shared && IsOn(p, i) && IsOn(p, j) && !IsOn(HalfwayToEnd(i, p), j)) return true;
    }
    return false;
  }

  const ChainTree& m_tree;
  const PieceChain& m_chain;
  double m_tol;
  double m_beyond;
  double m_rounding;
  std::int64_t m_visitsLeft;
  bool m_touches = false;
};

bool HasContact(const PieceChain& chain, double tol) {
  const PieceChain kept = WithoutShortPieces(chain, tol);
  if (kept.Size() < 2) return false;
  const ChainTree tree(kept);
  return SelfSearch(tree, tol).Run();
}

}  // namespace

bool TouchesItself(const PieceChain& chain, double tol) {
  if (chain.HasNaN()) return false;
  const double scale = SafeScale(chain.LargestCoordinate());
  return scale == 1.0 ? HasContact(chain, tol) : HasContact(chain.Scaled(scale), scale * tol);
}

}  // namespace nu::engine::chains
