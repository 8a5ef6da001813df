#include "nu/engine/minimax/slab3.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

#include "nu/engine/base/simd.h"
#include "nu/engine/minimax/slab_cells.h"
#include "nu/engine/points/extents.h"

// The narrowest slab of some points is no wider than that of all. So a few points are solved, all points are tested
// against the result, the farthest outside join the few, and when none is outside the slab is that of all points. Sets
// with about the same width in very many directions would need very many turns: directions are searched for them in
// cells, and where even these are too many the hull of all is built.

namespace nu::engine::minimax {
namespace {

// The largest coordinate is brought near 2^kExponent: sixth powers of lengths do not overflow, products of three
// differences keep their last bits.
constexpr int kExponent = 120;

// The multiple of 2^-198 nearest to a coordinate: products of three differences of such numbers lose nothing below the
// normal numbers, so that signs are right whatever the input.
double OnGrid(double v) {
  constexpr double kOnGrid = 0x1p-147;  // numbers between twice and four times this have the step 2^-198
  if (std::fabs(v) >= kOnGrid) return v;
  return (v + 3.0 * kOnGrid) - 3.0 * kOnGrid;
}

struct Frame {
  PointView points;
  double scale;  // a power of two
  double reach;  // no two scaled points are farther apart

  IndexedPoint PointAt(int i) const {
    const double* p = points[i];
    return {{OnGrid(p[0] * scale), OnGrid(p[1] * scale), OnGrid(p[2] * scale)}, i};
  }
};

NU_ALWAYS_INLINE double HeightOver(const double* p, double scale, Vec3 origin, Vec3 normal) {
  return Dot(Vec3{p[0] * scale - origin.x, p[1] * scale - origin.y, p[2] * scale - origin.z}, normal);
}

// The least and the greatest height over `origin` of a block of points.
NU_KERNEL void HeightRange(PointView block, double scale, Vec3 origin, Vec3 normal, double* range) {
  double least[kLanes], most[kLanes];
  for (int l = 0; l < kLanes; ++l) least[l] = kInfinity, most[l] = -kInfinity;
  std::size_t i = 0;
  for (; i + kLanes <= block.Size(); i += kLanes) {
    for (int l = 0; l < kLanes; ++l) {
      const double h = HeightOver(block[i + l], scale, origin, normal);
      least[l] = h < least[l] ? h : least[l];
      most[l] = h > most[l] ? h : most[l];
    }
  }
  for (; i < block.Size(); ++i) {
    const double h = HeightOver(block[i], scale, origin, normal);
    least[0] = h < least[0] ? h : least[0];
    most[0] = h > most[0] ? h : most[0];
  }
  range[0] = *std::min_element(least, least + kLanes);
  range[1] = *std::max_element(most, most + kLanes);
}

// One pass over all points: those outside a slab.
class OutsideScan {
 public:
  OutsideScan(const Frame& frame, const HullSlab& slab)
      : m_frame(frame),
        m_slab(slab),
        m_block(std::clamp(frame.points.Size() / kBlocks, kSmallestBlock, kLargestBlock)),
        m_band(kHeightError * frame.reach),
        m_tolerance(kOutside * slab.width.high + kCoplanar * frame.reach) {
    const std::size_t n = frame.points.Size();
    for (std::size_t begin = 0; begin < n; begin += m_block) Visit(begin, std::min(m_block, n - begin));
  }

  // Of all points along the slab's normal, rounding included.
  double MostWidth() const { return m_most[kUp] + m_most[kDown] + m_slab.width.high + 2.0 * m_band; }

  // The farthest on either side, a few.
  std::vector<IndexedPoint> Farthest() {
    std::vector<IndexedPoint> farthest;
    for (const Side side : {kUp, kDown}) {
      std::vector<Block>& blocks = m_blocks[side];
      const auto most = blocks.begin() + static_cast<std::ptrdiff_t>(std::min(blocks.size(), kMostPerSide));
      std::sort(blocks.begin(), blocks.end(), [](const Block& a, const Block& b) {
        return a.distance != b.distance ? a.distance > b.distance : a.begin < b.begin;
      });
      const std::size_t before = farthest.size();
      for (auto block = blocks.begin(); block != blocks.end(); ++block) {
        // What the best blocks only seemed to have may be in the others.
        if (block >= most && farthest.size() > before) break;
        Search(*block, side, farthest);
      }
    }
    return farthest;
  }

 private:
  enum Side { kUp, kDown };
  struct Block {
    double distance;  // beyond the plane, of the farthest
    std::size_t begin, count;
  };

  static constexpr std::size_t kBlocks = 64;
  static constexpr std::size_t kSmallestBlock = 16;
  static constexpr std::size_t kLargestBlock = 1024;
  // On either side; more would make the small problems large, fewer the passes many. Measured.
  static constexpr std::size_t kMostPerSide = 8;
  // Of a height, relative to the distance.
  static constexpr double kHeightError = 0x1p-50;
  // Outside is what leaves the slab by more than this share of its width; of a plane, of the size.
  static constexpr double kOutside = kSameSlab;
  static constexpr double kCoplanar = 0x1p-90;

  const double* Plane(Side side) const { return side == kUp ? m_slab.high : m_slab.low; }

  void Visit(std::size_t begin, std::size_t count) {
    double range[2];
    HeightRange(m_frame.points.Part(begin, count), m_frame.scale, LoadVec3(m_slab.high), Rounded(m_slab.normal), range);
    const double distance[] = {range[1], -range[0] - m_slab.width.high};
    for (const Side side : {kUp, kDown}) {
      m_most[side] = std::max(m_most[side], distance[side]);
      if (distance[side] > -m_band) m_blocks[side].push_back({distance[side], begin, count});
    }
  }

  // The farthest of a block beyond a plane; what is near it is measured in more digits.
  void Search(const Block& block, Side side, std::vector<IndexedPoint>& outside) const {
    const double sign = side == kUp ? 1.0 : -1.0;
    const Vec3 plane = LoadVec3(Plane(side));
    const Vec3 normal = sign * Rounded(m_slab.normal);
    double farthest = m_tolerance;
    int index = -1;
    for (std::size_t i = block.begin; i < block.begin + block.count; ++i) {
      const IndexedPoint p = m_frame.PointAt(static_cast<int>(i));
      if (Dot(LoadVec3(p.xyz) - plane, normal) < block.distance - 2.0 * m_band) continue;
      const double distance = sign * Dot(m_slab.normal, WideDifference(p.xyz, Plane(side))).high;
      if (distance > farthest) farthest = distance, index = p.index;
    }
    if (index >= 0) outside.push_back(m_frame.PointAt(index));
  }

  const Frame& m_frame;
  const HullSlab& m_slab;
  std::size_t m_block;
  double m_band;
  double m_tolerance;
  double m_most[2] = {0.0, 0.0};
  std::vector<Block> m_blocks[2];  // those that may hold a point outside
};

std::vector<IndexedPoint> AllPoints(const Frame& frame) {
  std::vector<IndexedPoint> all;
  all.reserve(frame.points.Size());
  for (std::size_t i = 0; i < frame.points.Size(); ++i) all.push_back(frame.PointAt(static_cast<int>(i)));
  return all;
}

// Some points, at places that no regular pattern of the data shares.
std::vector<IndexedPoint> Sample(const Frame& frame, std::size_t count) {
  const std::size_t step = frame.points.Size() / count;
  std::vector<IndexedPoint> sample;
  std::uint32_t state = 1;
  for (std::size_t k = 0; k < count; ++k) {
    state = state * 1664525u + 1013904223u;
    sample.push_back(frame.PointAt(static_cast<int>(k * step + (state >> 8) % step)));
  }
  return sample;
}

struct Solution {
  Hull3 hull;
  HullSlab slab;
  long passes = 0;
  bool isCancelled = false;
};

// Of the hull of more points. False when signs contradict each other.
bool Extend(Solution& solution, const std::vector<IndexedPoint>& more, double limit) {
  if (!solution.hull.Add(more)) return false;
  solution.slab = {};
  if (solution.hull.Dimension() == 3 && !FindNarrowest(solution.hull, limit, nullptr, solution.slab)) return false;
  if (solution.slab.high == nullptr) solution.slab = FlatSlab(solution.hull);
  return true;
}

// The monitor sees the width of the slab around the points of the next pass.
bool GoesOn(const Frame& frame, const StepMonitor& monitor, Solution& solution) {
  constexpr double kNoStep = kQuietNaN;
  const double width = solution.passes > 0 ? solution.slab.width.high / frame.scale : kNoStep;
  solution.isCancelled = !monitor.GoesOn(++solution.passes, width, kNoStep);
  return !solution.isCancelled;
}

// False when it takes too many turns; then the slab is not wider than `limit`. Also when it is cancelled.
bool SolveByFew(const Frame& frame, const StepMonitor& monitor, Solution& solution, double& limit) {
  constexpr std::size_t kSampleSize = 24;
  constexpr int kTurns = 24;
  constexpr int kMostTurns = 400;
  // From there on as long as the hull is small against the points and so many turns halve what is left between the
  // bounds: where some slabs compete each of them takes its own turns.
  constexpr int kHalving = 8;
  constexpr std::size_t kSmallHull = 16;
  std::vector<IndexedPoint> more = Sample(frame, kSampleSize);
  double leftBefore = kInfinity;
  for (int turn = 0; turn < kMostTurns; ++turn) {
    if (!GoesOn(frame, monitor, solution) || !Extend(solution, more, limit)) return false;
    OutsideScan scan(frame, solution.slab);
    more = scan.Farthest();
    if (more.empty()) return true;
    limit = std::min(limit, scan.MostWidth());
    if (turn % kHalving != 0) continue;
    const double left = limit - solution.slab.width.high;
    const bool isSmall = kSmallHull * static_cast<std::size_t>(solution.hull.Size()) < frame.points.Size();
    if (turn >= kTurns && !(isSmall && left <= 0.5 * leftBefore)) return false;
    leftBefore = left;
  }
  return false;
}

// For very many points. False also where the hull of all takes less time.
bool SolveByCells(const Frame& frame, const StepMonitor& monitor, const std::vector<IndexedPoint>& all,
                  Solution& solution, double& limit) {
  CellSlab found;
  const auto goesOn = [&] { return GoesOn(frame, monitor, solution); };
  if (!FindNarrowestByCells(all, frame.reach, goesOn, limit, found)) return false;
  solution.hull = std::move(found.hull);
  solution.slab = found.slab;
  return GoesOn(frame, monitor, solution) && OutsideScan(frame, solution.slab).Farthest().empty();
}

bool Solve(const Frame& frame, const StepMonitor& monitor, Solution& solution) {
  constexpr std::size_t kFew = 40;
  constexpr std::size_t kMany = 20000;
  double limit = kInfinity;
  if (frame.points.Size() > kFew && SolveByFew(frame, monitor, solution, limit)) return true;
  if (solution.isCancelled) return false;
  const std::vector<IndexedPoint> all = AllPoints(frame);
  if (all.size() > kMany && SolveByCells(frame, monitor, all, solution, limit)) return true;
  if (solution.isCancelled || !GoesOn(frame, monitor, solution)) return false;
  solution.hull = Hull3();
  return Extend(solution, all, limit);
}

void NormaliseShares(double* share, int count) {
  double sum = 0.0;
  for (int k = 0; k < count; ++k) sum += share[k] = std::max(share[k], 0.0);
  for (int k = 0; k < count; ++k) share[k] /= sum;
}

}  // namespace

Slab3 NarrowestSlab(const PointView& points, const Vec3& origin, const StepMonitor& monitor) {
  constexpr int kExponentLimit = 1000;
  const Extents extents = ExtentsOf(points);
  if (!extents.isFinite) return {};
  const Box& box = extents.box;
  double largest = 0.0;
  for (int k = 0; k < 3; ++k) largest = std::max({largest, std::fabs(box.low[k]), std::fabs(box.high[k])});
  const int shift = largest > 0.0 ? std::clamp(kExponent - std::ilogb(largest), -kExponentLimit, kExponentLimit) : 0;
  Frame frame{points, std::ldexp(1.0, shift), 0.0};
  for (int k = 0; k < 3; ++k) frame.reach += (box.high[k] * frame.scale) - (box.low[k] * frame.scale);

  Solution solution;
  if (!Solve(frame, monitor, solution)) return {};
  const HullSlab& found = solution.slab;
  Slab3 slab;
  slab.found = true;
  slab.normal = Rounded(found.normal);
  const double scaled[] = {origin.x * frame.scale, origin.y * frame.scale, origin.z * frame.scale};
  const DoubleDouble top = Dot(found.normal, WideDifference(found.high, scaled));
  slab.height = std::ldexp((top - DoubleDouble{0.5} * found.width).high, -shift);
  // Of slivers a width below all digits may have lost its sign.
  slab.width = std::ldexp(std::max(found.width.high, 0.0), -shift);
  slab.above = found.above;
  for (int k = 0; k < 4 && found.above > 0; ++k) {
    slab.contact[k] = solution.hull.PointAt(found.corner[k]).index;
    slab.share[k] = found.share[k];
  }
  if (slab.above > 0) {
    NormaliseShares(slab.share, slab.above);
    NormaliseShares(slab.share + slab.above, 4 - slab.above);
  }
  return slab;
}

}  // namespace nu::engine::minimax
