#include "nu/engine/chains/chain_tree.h"

#include "nu/engine/base/elementary.h"
#include "nu/foundation/constants.h"

namespace nu::engine::chains {

namespace {

// Below this number of pieces a box of their own costs more than it rules out.
constexpr int kLeafPieces = 4;

// How far an arc leaves its chord, at most.
double Sagitta(const Arc3& arc) {
  if (arc.sweep > Nu_PI) return 2.0 * arc.radius;
  const double s = Sin(0.25 * arc.sweep);
  return 2.0 * arc.radius * s * s;
}

}  // namespace

// An arc does not fill its box: no point of another box is nearer to it than its middle, but for half the diagonal.
double Gap(const Box& box, const Arc3& arc) {
  const Vec3 low{box.low[0], box.low[1], box.low[2]};
  const Vec3 half = 0.5 * (Vec3{box.high[0], box.high[1], box.high[2]} - low);
  const Vec3 middle = low + half;
  return SafeNorm(middle - ClosestOn(arc, middle)) - SafeNorm(half);
}

ChainTree::ChainTree(const PieceChain& chain)
    : m_chain(chain),
      m_tree(
          chain.Size(), kLeafPieces, [this](int begin, int end, bool isLeaf) { return StretchOf(begin, end, isLeaf); },
          [](const Stretch3& half, Stretch3& whole) { Include(half.box, whole.box); }) {}

// The box of more than a leaf is that of its halves.
Stretch3 ChainTree::StretchOf(int begin, int end, bool isLeaf) const {
  const Segment3 chord{m_chain.Ends(begin).start, m_chain.Ends(end - 1).end};
  Stretch3 stretch{EmptyBox(), chord, WidthAround(chord, begin, end)};
  for (int i = begin; isLeaf && i < end; ++i) Include(m_chain.BoxOf(i), stretch.box);
  return stretch;
}

double ChainTree::WidthAround(const Segment3& chord, int begin, int end) const {
  double width = 0.0;
  const auto include = [&](Vec3 p, double sagitta) {
    const double reach = SafeNorm(p - ClosestOn(chord, p)) + sagitta;
    if (reach > width) width = reach;
  };
  for (int i = begin; i < end; ++i) {
    const Arc3* arc = m_chain.ArcAt(i);
    const double sagitta = arc != nullptr ? Sagitta(*arc) : 0.0;
    include(m_chain.Ends(i).start, sagitta);
    include(m_chain.Ends(i).end, sagitta);
  }
  return width;
}

double Gap(const Stretch3& a, const Stretch3& b, double limit) {
  const double gap = Gap(a.box, b.box);
  if (!(gap < limit)) return gap;
  return std::max(gap, ClosestBetween(a.chord, b.chord).distance - a.width - b.width);
}

}  // namespace nu::engine::chains
