#ifndef NU_ENGINE_CHAINS_BLOCK_TREE_H
#define NU_ENGINE_CHAINS_BLOCK_TREE_H

#include <algorithm>
#include <cstddef>
#include <vector>

#include "nu/engine/shapes/vec3.h"

namespace nu::engine::chains {

struct Edge3 {
  Vec3 start;
  Vec3 end;
};

inline double SquaredDistance(Vec3 p, Vec3 start, Vec3 end) {
  const Vec3 along = end - start;
  const Vec3 from = p - start;
  const double part = Dot(from, along) / Dot(along, along);
  const Vec3 across = part > 0.0 ? from - std::min(part, 1.0) * along : from;
  return Dot(across, across);
}

// Bounds of a block of consecutive points.
struct Block {
  Vec3 centre;  // of a ball about them
  double radius;
  Edge3 core;  // none is farther from it than the width
  double width;
  std::size_t ends[2];  // the points that reach farthest along the core
};

inline constexpr std::size_t kLeafPoints = 8;

// The points of a path, finite and one at least, in blocks of 8, 16, 32 ... consecutive ones. It refers to the points.
class BlockTree {
 public:
  explicit BlockTree(const std::vector<Vec3>& points);

  std::size_t Levels() const { return m_levels.size(); }
  const Block& At(std::size_t level, std::size_t index) const { return m_levels[level][index]; }
  std::size_t Begin(std::size_t level, std::size_t index) const { return index * (kLeafPoints << level); }
  std::size_t End(std::size_t level, std::size_t index) const {
    return std::min(m_points.size(), (index + 1) * (kLeafPoints << level));
  }

  // The vertices of the convex hull of a block. Null for the first few calls with a block, which do not repay the hull,
  // and where a hull does not reduce the points.
  const std::vector<std::size_t>* CornersOf(std::size_t level, std::size_t index);

  // Calls visitPoint(i) and visitBlock(level, index) for the points from begin to end - 1, in order, in the largest
  // blocks; either may end the walk with false, which is the result then.
  template<class VisitPoint, class VisitBlock>
  bool Walk(std::size_t begin, std::size_t end, VisitPoint visitPoint, VisitBlock visitBlock) const {
    while (begin < end) {
      if (begin % kLeafPoints != 0 || begin + kLeafPoints > end) {
        if (!visitPoint(begin++)) return false;
        continue;
      }
      std::size_t size = kLeafPoints;
      std::size_t level = 0;
      while (level + 1 < Levels() && begin % (2 * size) == 0 && begin + 2 * size <= end) {
        size *= 2;
        ++level;
      }
      if (!visitBlock(level, begin / size)) return false;
      begin += size;
    }
    return true;
  }

 private:
  struct Corners {
    int asked = 0;
    std::vector<std::size_t> points;
  };

  Block BlockOf(std::size_t begin, std::size_t end) const;
  Vec3 MeanOf(std::size_t begin, std::size_t end) const;
  std::vector<std::size_t> HullOf(std::size_t begin, std::size_t end) const;

  const std::vector<Vec3>& m_points;
  bool m_isPlanar;  // all z are the same
  std::vector<std::vector<Block>> m_levels;
  std::vector<std::vector<Corners>> m_corners;
};

}  // namespace nu::engine::chains

#endif
