#ifndef NU_ENGINE_CHAINS_CHAIN_TREE_H
#define NU_ENGINE_CHAINS_CHAIN_TREE_H

#include "nu/engine/chains/piece_chain.h"

namespace nu::engine::chains {

// No point of one box is nearer to the other, or to the arc, than this.
double Gap(const Box& a, const Box& b);
double Gap(const Box& box, const Arc3& arc);

// Halves of halves of a chain, each in a box, and within a width around the way between its ends: stretches of smooth
// curves hardly leave that, so that it tells curves at a constant distance apart where boxes overlap.
class ChainTree {
 public:
  struct Node {
    bool IsLeaf() const { return right == 0; }
    int Size() const { return end - begin; }

    Box box;
    int begin, end;
    int right;  // its second child; the first one follows the node
    Segment3 way;
    double width;
  };

  // At least one piece. The chain must outlive the tree.
  explicit ChainTree(const PieceChain& chain);

  const PieceChain& Chain() const { return m_chain; }
  const Node& operator[](int i) const { return m_nodes[static_cast<std::size_t>(i)]; }

 private:
  void Build(int begin, int end);
  double WidthOf(const Node& node) const;

  const PieceChain& m_chain;
  std::vector<Node> m_nodes;
};

// No point of one stretch is nearer to the other than this; the boxes alone answer when that is not below the limit.
double Gap(const ChainTree::Node& a, const ChainTree::Node& b, double limit);

}  // namespace nu::engine::chains

#endif
