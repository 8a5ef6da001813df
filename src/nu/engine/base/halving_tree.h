#ifndef NU_ENGINE_BASE_HALVING_TREE_H
#define NU_ENGINE_BASE_HALVING_TREE_H

#include <cstddef>
#include <utility>
#include <vector>

#include "nu/engine/rooms.h"

namespace nu::engine::base {

// A binary tree over the items 0 ... n - 1: a node holds the range [begin, end) of them, and its children the two
// halves of that range. Bound is what is known of the items of a range, a box around them for example.
template<class Bound>
class HalvingTree {
 public:
  struct Node : Bound {
    int begin, end;
    int right;  // its second child; the first one follows the node; 0 in a leaf

    bool IsLeaf() const { return right == 0; }
    int Size() const { return end - begin; }
  };

  // At least one item. Ranges of up to `leafSize` items are leaves. boundOf(begin, end, isLeaf) gives the bound of a
  // range before it is halved, and may reorder its items; join(half, whole) then adds what is known of a half.
  template<class BoundOf, class Join>
  HalvingTree(int items, int leafSize, BoundOf boundOf, Join join) {
    m_nodes.reserve(4 * static_cast<std::size_t>(items) / static_cast<std::size_t>(leafSize) + 1);
    Build(0, items, leafSize, boundOf, join);
  }

  const std::vector<Node>& Nodes() const { return m_nodes; }
  const Node& operator[](int i) const { return m_nodes[static_cast<std::size_t>(i)]; }

  // Calls visit(leaf) for the leaves, but for those below a node that canHold(node) rules out. Of two children the
  // second one is visited first where comesFirst(second, first) holds. Ends with false when visit does.
  template<class CanHold, class Visit, class ComesFirst>
  bool Descend(const CanHold& canHold, const Visit& visit, const ComesFirst& comesFirst, int at = 0) const {
    const Node& node = (*this)[at];
    if (!canHold(node)) return true;
    if (node.IsLeaf()) return visit(node);
    const bool swap = comesFirst((*this)[node.right], (*this)[at + 1]);
    return Descend(canHold, visit, comesFirst, swap ? node.right : at + 1) &&
           Descend(canHold, visit, comesFirst, swap ? at + 1 : node.right);
  }
  template<class CanHold, class Visit>
  bool Descend(const CanHold& canHold, const Visit& visit) const {
    return Descend(canHold, visit, [](const Node&, const Node&) { return false; });
  }

 private:
  template<class BoundOf, class Join>
  void Build(int begin, int end, int leafSize, BoundOf& boundOf, Join& join) {
    const std::size_t here = m_nodes.size();
    const bool isLeaf = end - begin <= leafSize;
    m_nodes.push_back({boundOf(begin, end, isLeaf), begin, end, 0});
    if (isLeaf) return;
    const int middle = begin + (end - begin) / 2;
    Build(begin, middle, leafSize, boundOf, join);
    const std::size_t right = m_nodes.size();
    m_nodes[here].right = static_cast<int>(right);
    Build(middle, end, leafSize, boundOf, join);
    join(m_nodes[here + 1], m_nodes[here]);
    join(m_nodes[right], m_nodes[here]);
  }

  std::vector<Node> m_nodes;
};

// Calls search.VisitLeaves(a, b) for the pairs of leaves, a of the first tree and b of the second one, but for those
// below two nodes that search.CanHold(a, b) rules out; of two nodes the one with more items is halved. Ends with false
// when VisitLeaves does. Where the search has ComesFirst(c, d, a, b), the pair of nodes (c, d) may be visited before
// (a, b). In a tree paired with itself, a and b are the same leaf or a comes before b.
template<class Tree, class Search>
bool VisitPairs(const Tree& first, int a, const Tree& second, int b, Search& search) {
  if (!search.CanHold(a, b)) return true;
  const typename Tree::Node& one = first[a];
  const typename Tree::Node& other = second[b];
  if (one.IsLeaf() && other.IsLeaf()) return search.VisitLeaves(one, other);
  if (&one == &other) {
    return VisitPairs(first, a + 1, second, a + 1, search) && VisitPairs(first, one.right, second, one.right, search) &&
           VisitPairs(first, a + 1, second, one.right, search);
  }
  const bool halvesFirst = one.Size() >= other.Size();
  int a1 = halvesFirst ? a + 1 : a, b1 = halvesFirst ? b : b + 1;
  int a2 = halvesFirst ? one.right : a, b2 = halvesFirst ? b : other.right;
  if constexpr (requires { search.ComesFirst(a2, b2, a1, b1); }) {
    if (search.ComesFirst(a2, b2, a1, b1)) std::swap(a1, a2), std::swap(b1, b2);
  }
  return VisitPairs(first, a1, second, b1, search) && VisitPairs(first, a2, second, b2, search);
}

// Calls visit(i, j) for the items of two leaves, each pair i < j once in a tree paired with itself. Ends with false
// when visit does.
template<class Node, class Visit>
bool VisitItems(const Node& a, const Node& b, const Visit& visit) {
  for (int i = a.begin; i < a.end; ++i) {
    for (int j = &a == &b ? i + 1 : b.begin; j < b.end; ++j) {
      if (!visit(i, j)) return false;
    }
  }
  return true;
}

}  // namespace nu::engine::base

#endif
