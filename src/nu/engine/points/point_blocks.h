#ifndef NU_ENGINE_POINTS_POINT_BLOCKS_H
#define NU_ENGINE_POINTS_POINT_BLOCKS_H

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "nu/engine/base/compensated_sum.h"
#include "nu/engine/base/simd.h"
#include "nu/engine/points/point_view.h"
#include "nu/engine/shapes/vec3.h"

namespace nu::engine::points {

// Up to so many points are repacked once: 24 KB, which stay in a first-level cache.
inline constexpr std::size_t kBlockPoints = 1024;
// More points pass in smaller portions, which share that cache with the points as they lie in memory.
inline constexpr std::size_t kPortion = 512;

// Up to so many points are worth keeping: 6 MB, which the second and third level of cache hold. A larger copy costs as
// much to make, page by page of fresh memory, as it spares.
inline constexpr std::size_t kKeptPoints = std::size_t{1} << 18;

// Of so many points and more the ranges of the deviations are noted block by block.
inline constexpr std::size_t kRangedPoints = std::size_t{1} << 15;

// Some points as separate coordinates, relative to an origin among them: what the kernels of the fits run over, eight
// lanes at a time. The last eight are filled up with copies of the last point, whose weight is 0.
struct PointBlock {
  // 1 for each of the eight points from i on, 0 beyond the last.
  const double* Weights(std::size_t i) const {
    constexpr std::size_t lanes = kLanes;
    return kWindow + (lanes - std::min(lanes, size - i));
  }

  Vec3 At(std::size_t i) const { return {x[i], y[i], z[i]}; }

  alignas(64) double x[kBlockPoints];
  alignas(64) double y[kBlockPoints];
  alignas(64) double z[kBlockPoints];
  std::size_t size = 0;

  static constexpr double kWindow[2 * kLanes] = {1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0, 1.0};
};

// Walks over points of any number block by block, in constant memory. Up to one block of points is repacked once; more
// are repacked at each walk, or once when they are kept.
class PointBlocks {
 public:
  PointBlocks(PointView points, const Vec3& origin)
      : m_points(points), m_origin(origin), m_portion(points.Size() <= kBlockPoints ? kBlockPoints : kPortion) {}

  std::size_t Size() const { return m_points.Size(); }
  // How many points each block has; the last one may have fewer.
  std::size_t Portion() const { return m_portion; }
  const Vec3& Origin() const { return m_origin; }

  // A block holds (p - origin) * scale. The scale is 1 but for points so far apart or so close together that the
  // squares and cubes of their distances would overflow or vanish; then it is a power of two.
  double Scale() const { return m_scale; }

  Vec3 InCallersFrame(const Vec3& q) const {
    const Vec3 scaled = m_scale * m_origin + q;
    return {scaled.x / m_scale, scaled.y / m_scale, scaled.z / m_scale};
  }

  // For many walks: the blocks of the first one stay, unless the points are too many. Without the memory for it they
  // are repacked as before, to the same bits.
  void Keep();

  // False, and no change, when a coordinate is not finite.
  bool FitScale();

  bool AllFinite() const;

  // From now on a walk that finds deviations notes their range in each block of a large set, so that after a short step
  // only the blocks are visited that may hold the extremes. Without the memory for it nothing is noted.
  void NoteRanges();
  void BeginRanges();
  void NoteRange(double smallest, double largest) {
    if (m_ranges && !m_isNarrowed) m_ranges[m_noted++] = {smallest, largest};
  }
  // Numbers the walks that noted ranges from 1 on; 0 where none are noted.
  std::size_t RangedWalk() const { return m_ranges ? m_rangedWalk : 0; }

  // Until Widen, walks pass over the blocks whose noted range lies between these.
  void Narrow(double above, double below);
  void Widen() { m_isNarrowed = false; }

  template<class Visit>
  void ForEach(Visit visit) {
    const auto isWanted = [this](std::size_t begin) { return !m_isNarrowed || !IsWithin(m_ranges[begin / m_portion]); };
    ForEachOf(isWanted, visit);
  }

  template<class Visit>
  void ForEachPoint(Visit visit) {
    ForEach([&](const PointBlock& block) {
      for (std::size_t i = 0; i < block.size; ++i) visit(block.At(i));
    });
  }

  // Walks over the blocks for whose first point, by its index, `isWanted` is true; the others are not even read.
  template<class IsWanted, class Visit>
  void ForEachOf(IsWanted isWanted, Visit visit) {
    const bool stays = m_kept || Size() <= kBlockPoints;
    for (std::size_t begin = 0; begin < Size(); begin += m_portion) {
      if (!isWanted(begin)) continue;
      PointBlock& block = m_kept ? m_kept[begin / m_portion] : m_block;
      if (!stays || block.size == 0) Load(m_points.Part(begin, std::min(m_portion, Size() - begin)), block);
      visit(static_cast<const PointBlock&>(block));
    }
  }

 private:
  struct Range {
    double smallest, largest;
  };
  bool IsWithin(const Range& range) const {
    return range.smallest > m_between.smallest && range.largest < m_between.largest;
  }

  void Load(PointView part, PointBlock& block);
  std::size_t KeptBlocks() const { return (Size() + m_portion - 1) / m_portion; }

  PointView m_points;
  Vec3 m_origin;
  double m_scale = 1.0;
  std::size_t m_portion;
  std::unique_ptr<PointBlock[]> m_kept;
  std::unique_ptr<Range[]> m_ranges;
  std::size_t m_noted = 0;
  std::size_t m_rangedWalk = 0;
  bool m_isNarrowed = false;
  Range m_between = {};
  PointBlock m_block;
};

// Points of their own, in blocks that stay; at least one.
struct OwnBlocks {
  explicit OwnBlocks(std::vector<Vec3> given)
      : points(std::move(given)), blocks(PointView(&points[0].x, sizeof(Vec3), points.size()), Vec3{}) {
    blocks.Keep();
  }

  std::vector<Vec3> points;
  PointBlocks blocks;
};

// The largest distance of a point from a place of the blocks; NaN or infinite when a coordinate is.
double FarthestFrom(PointBlocks& points, const Vec3& place);

// Compensated sums of what a kernel delivers per block.
template<int N>
class BlockSums {
 public:
  void Add(const double (&sums)[N]) {
    for (int k = 0; k < N; ++k) m_total[k].Add(sums[k]);
  }
  double operator[](int k) const { return m_total[k].Value(); }

 private:
  CompensatedSum m_total[N];
};

// What `kernel(block, sums)` delivers, over all blocks.
template<int N, class Kernel>
BlockSums<N> SumOver(PointBlocks& points, Kernel kernel) {
  BlockSums<N> total;
  points.ForEach([&](const PointBlock& block) {
    double sums[N];
    kernel(block, sums);
    total.Add(sums);
  });
  return total;
}

}  // namespace nu::engine::points

#endif
