#ifndef NU_ENGINE_CHAINS_CHAIN_TREE_H
#define NU_ENGINE_CHAINS_CHAIN_TREE_H

#include "nu/engine/base/halving_tree.h"
#include "nu/engine/chains/piece_chain.h"

namespace nu::engine::chains {

// No point of the box is nearer to the arc than this.
double Gap(const Box& box, const Arc3& arc);

// A box around consecutive pieces, and the chord between their ends, from which none of them is farther than the width.
struct Stretch3 {
  Box box;
  Segment3 chord;
  double width;
};

// The stretches of a chain, halved down to a few pieces. A stretch of a smooth curve hardly leaves its chord, so that
// the widths separate curves at a constant distance whose boxes overlap.
class ChainTree {
 public:
  using Tree = HalvingTree<Stretch3>;
  using Node = Tree::Node;

  // At least one piece. The chain must outlive the tree.
  explicit ChainTree(const PieceChain& chain);

  const PieceChain& Chain() const { return m_chain; }
  const Tree& Halves() const { return m_tree; }
  const Node& operator[](int i) const { return m_tree[i]; }

 private:
  Stretch3 StretchOf(int begin, int end, bool isLeaf) const;
  double WidthAround(const Segment3& chord, int begin, int end) const;

  const PieceChain& m_chain;
  Tree m_tree;
};

// No point of one stretch is nearer to the other than this; the boxes alone answer when that is not below the limit.
double Gap(const Stretch3& a, const Stretch3& b, double limit);

}  // namespace nu::engine::chains

#endif
