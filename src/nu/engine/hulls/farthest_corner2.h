#ifndef NU_ENGINE_HULLS_FARTHEST_CORNER2_H
#define NU_ENGINE_HULLS_FARTHEST_CORNER2_H

#include <algorithm>
#include <cstddef>
#include <vector>

#include "nu/engine/shapes/vec2.h"

namespace nu::engine::hulls {

// Finds the corner of a convex polygon that is farthest from a place on a line m + t n, by a tree of boxes over runs of
// corners. The squared distance less t^2 |n|^2, which all corners h share, is (h - m)^2 - 2 t n . (h - m): far out on
// the line nothing cancels.
//
// A box along the axes reaches beyond an arc of length L by about L, and keeps sqrt(n) boxes next to the farthest one
// of n corners of a smooth outline. A box along the chord reaches beyond it by about L^2, and keeps log n of them
// unless the place is near a centre of curvature.
class FarthestCorner2 {
 public:
  explicit FarthestCorner2(const std::vector<Vec2>& corners);

  struct Place {
    Vec2 middle;
    Vec2 shift;  // 2 t n
  };
  static double Value(const Place& place, Vec2 corner) {
    const Vec2 offset = corner - place.middle;
    return Dot(offset, offset - place.shift);
  }
  std::size_t From(const Place& place) const;

  struct Box {
    Vec2 least;
    Vec2 greatest;
  };
  // Whether a test holds for all corners; `holds` says so of a box, and is true only where it is of each point in it.
  template<class Test>
  bool AreAll(const Test& holds) const {
    return AreAll(holds, 1);
  }

 private:
  static constexpr std::size_t kLeaf = 8;

  // Along and across the chord of a run of corners, from the first of them.
  struct ChordBox {
    Vec2 first;
    Vec2 direction;  // of unit length, to rounding
    Vec2 least;
    Vec2 greatest;
  };
  static ChordBox ChordBoxOf(const Vec2* begin, const Vec2* end);
  // Whether no corner in it has a larger value than `best`, beyond rounding.
  static bool IsBelow(const Place& place, const ChordBox& box, double best);

  // Above every corner in a box: the value is convex in each coordinate.
  static double Bound(const Place& place, const Box& box);
  void Visit(const Place& place, std::size_t node, double& best, std::size_t& found) const;

  // As deep as the tree.
  template<class Test>
  bool AreAll(const Test& holds, std::size_t node) const {
    if (m_boxes[node].least.x > m_boxes[node].greatest.x || holds(m_boxes[node])) return true;
    if (node < m_leaves) return AreAll(holds, 2 * node) && AreAll(holds, 2 * node + 1);
    const auto begin = m_corners.begin() + static_cast<std::ptrdiff_t>((node - m_leaves) * kLeaf);
    const auto end = m_corners.end() - begin > static_cast<std::ptrdiff_t>(kLeaf) ? begin + kLeaf : m_corners.end();
    return std::all_of(begin, end, [&](const Vec2& corner) { return holds(Box{corner, corner}); });
  }

  const std::vector<Vec2>& m_corners;
  std::size_t m_leaves = 1;  // a power of two; node k has the children 2k and 2k + 1, the leaves come last
  std::vector<Box> m_boxes;
  std::vector<ChordBox> m_chordBoxes;
};

}  // namespace nu::engine::hulls

#endif
