#include "nu/engine/chains/chain_tree.h"

#include "nu/engine/base/elementary.h"
#include "nu/foundation/constants.h"

namespace nu::engine::chains {

namespace {

// Below this number of pieces a box of their own costs more than it rules out.
constexpr int kLeafPieces = 4;

// How far an arc leaves the way between its ends, at most.
double Bulge(const Arc3& arc) {
  if (arc.sweep > Nu_PI) return 2.0 * arc.radius;
  const double s = Sin(0.25 * arc.sweep);
  return 2.0 * arc.radius * s * s;
}

}  // namespace

double Gap(const Box& a, const Box& b) {
  double gap[3];
  for (int k = 0; k < 3; ++k) gap[k] = std::max({0.0, a.low[k] - b.high[k], b.low[k] - a.high[k]});
  return std::sqrt(gap[0] * gap[0] + gap[1] * gap[1] + gap[2] * gap[2]);
}

// An arc does not fill its box: no point of another box is nearer to it than its middle, but for half the diagonal.
double Gap(const Box& box, const Arc3& arc) {
  const Vec3 low{box.low[0], box.low[1], box.low[2]};
  const Vec3 half = 0.5 * (Vec3{box.high[0], box.high[1], box.high[2]} - low);
  const Vec3 middle = low + half;
  return SafeNorm(middle - ClosestOn(arc, middle)) - SafeNorm(half);
}

ChainTree::ChainTree(const PieceChain& chain) : m_chain(chain) {
  m_nodes.reserve(static_cast<std::size_t>(chain.Size()));
  Build(0, chain.Size());
}

void ChainTree::Build(int begin, int end) {
  const std::size_t here = m_nodes.size();
  m_nodes.push_back({EmptyBox(), begin, end, 0, {m_chain.Ends(begin).start, m_chain.Ends(end - 1).end}, 0.0});
  m_nodes[here].width = WidthOf(m_nodes[here]);
  if (end - begin <= kLeafPieces) {
    for (int i = begin; i < end; ++i) Include(m_chain.BoxOf(i), m_nodes[here].box);
    return;
  }
  const int middle = begin + (end - begin) / 2;
  Build(begin, middle);
  const std::size_t right = m_nodes.size();
  m_nodes[here].right = static_cast<int>(right);
  Build(middle, end);
  Include(m_nodes[here + 1].box, m_nodes[here].box);
  Include(m_nodes[right].box, m_nodes[here].box);
}

double ChainTree::WidthOf(const Node& node) const {
  double width = 0.0;
  const auto include = [&](Vec3 p, double bulge) {
    const double reach = SafeNorm(p - ClosestOn(node.way, p)) + bulge;
    if (reach > width) width = reach;
  };
  for (int i = node.begin; i < node.end; ++i) {
    const Arc3* arc = m_chain.ArcAt(i);
    const double bulge = arc != nullptr ? Bulge(*arc) : 0.0;
    include(m_chain.Ends(i).start, bulge);
    include(m_chain.Ends(i).end, bulge);
  }
  return width;
}

double Gap(const ChainTree::Node& a, const ChainTree::Node& b, double limit) {
  const double gap = Gap(a.box, b.box);
  if (!(gap < limit)) return gap;
  return std::max(gap, ClosestBetween(a.way, b.way).distance - a.width - b.width);
}

}  // namespace nu::engine::chains
