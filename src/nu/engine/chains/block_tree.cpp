#include "nu/engine/chains/block_tree.h"

#include <cmath>

#include "nu/engine/hulls/hull2.h"
#include "nu/engine/hulls/hull3.h"

namespace nu::engine::chains {
namespace {

// A block is worth its convex hull when it has been asked for so often, is so large, and the hull has no more than this
// part of its points.
constexpr int kOften = 4;
constexpr std::size_t kLeastHull = 32;
constexpr std::size_t kHullPart = 4;

std::vector<std::size_t> CornersOfHull3(const Hull3& hull) {
  std::vector<std::size_t> corners;
  for (const Hull3::Face& face : hull.Faces()) {
    if (!face.isAlive) continue;
    for (const int corner : face.corner) corners.push_back(static_cast<std::size_t>(hull.PointAt(corner).index));
  }
  std::sort(corners.begin(), corners.end());
  corners.erase(std::unique(corners.begin(), corners.end()), corners.end());
  return corners;
}

}  // namespace

BlockTree::BlockTree(const std::vector<Vec3>& points) : m_points(points) {
  const double z = points.front().z;
  m_isPlanar = std::all_of(points.begin(), points.end(), [z](const Vec3& p) { return p.z == z; });
  for (std::size_t size = kLeafPoints; m_levels.empty() || m_levels.back().size() > 1; size *= 2) {
    std::vector<Block> level;
    for (std::size_t begin = 0; begin < points.size(); begin += size) {
      level.push_back(BlockOf(begin, std::min(begin + size, points.size())));
    }
    m_corners.emplace_back(level.size());
    m_levels.push_back(std::move(level));
  }
}

const std::vector<std::size_t>* BlockTree::CornersOf(std::size_t level, std::size_t index) {
  Corners& corners = m_corners[level][index];
  if (corners.asked < kOften && ++corners.asked == kOften) {
    const std::size_t begin = Begin(level, index);
    const std::size_t end = End(level, index);
    if (end - begin >= kLeastHull) corners.points = HullOf(begin, end);
    if (kHullPart * corners.points.size() > end - begin) corners.points = {};
  }
  return corners.points.empty() ? nullptr : &corners.points;
}

// None when the points span no more than a plane that is not one of equal z.
std::vector<std::size_t> BlockTree::HullOf(std::size_t begin, std::size_t end) const {
  std::vector<std::size_t> corners;
  if (m_isPlanar) {
    for (const int k : ConvexHull2({&m_points[begin].x, sizeof(Vec3), end - begin})) {
      corners.push_back(begin + static_cast<std::size_t>(k));
    }
    return corners;
  }
  std::vector<IndexedPoint> points;
  for (std::size_t i = begin; i < end; ++i) {
    points.push_back({{m_points[i].x, m_points[i].y, m_points[i].z}, static_cast<int>(i)});
  }
  Hull3 hull;
  return hull.Add(points) && hull.Dimension() == 3 ? CornersOfHull3(hull) : corners;
}

Vec3 BlockTree::MeanOf(std::size_t begin, std::size_t end) const {
  Vec3 sum;
  for (std::size_t i = begin; i < end; ++i) sum = sum + m_points[i];
  return (1.0 / static_cast<double>(end - begin)) * sum;
}

// The core runs along the line through the means of the two halves.
Block BlockTree::BlockOf(std::size_t begin, std::size_t end) const {
  const std::size_t middle = begin + (end - begin) / 2;
  const Vec3 first = MeanOf(begin, std::max(middle, begin + 1));
  const Vec3 second = MeanOf(middle, end);
  const Vec3 mean = 0.5 * (first + second);
  const Vec3 direction = Unit(second - first);
  double low = 0.0;
  double high = 0.0;
  std::size_t ends[] = {begin, end - 1};
  Vec3 least = m_points[begin];
  Vec3 most = least;
  for (std::size_t i = begin; i < end; ++i) {
    const Vec3 p = m_points[i];
    const double along = Dot(p - mean, direction);
    if (along < low) {
      low = along;
      ends[0] = i;
    }
    if (along > high) {
      high = along;
      ends[1] = i;
    }
    least = {std::min(least.x, p.x), std::min(least.y, p.y), std::min(least.z, p.z)};
    most = {std::max(most.x, p.x), std::max(most.y, p.y), std::max(most.z, p.z)};
  }
  Block block{0.5 * (least + most), 0.0, {mean + low * direction, mean + high * direction}, 0.0, {ends[0], ends[1]}};
  double width = 0.0;
  for (std::size_t i = begin; i < end; ++i) {
    width = std::max(width, SquaredDistance(m_points[i], block.core.start, block.core.end));
    const Vec3 fromCentre = m_points[i] - block.centre;
    block.radius = std::max(block.radius, Dot(fromCentre, fromCentre));
  }
  block.radius = std::sqrt(block.radius);
  block.width = std::sqrt(width);
  return block;
}

}  // namespace nu::engine::chains
