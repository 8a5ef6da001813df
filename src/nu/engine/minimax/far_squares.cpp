#include "nu/engine/minimax/far_squares.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "nu/engine/base/floating_point.h"

// Let f(c) be the distance of a place c from the nearest point. It changes by no more than c moves. A square with the
// middle c and the half diagonal r has no place with a larger value than f(c) + r, and is left out where that is below
// the largest value found at a place in the hull, or where it lies outside the hull. The others are cut into four.
//
// The points are in square buckets. Within a ring of buckets round c all points are farther than the ring is wide. That
// f(c) is at least f(b) - |c - b|, for the middle b of the square before, tells from which ring on there may be points.
//
// An outline has many points in few buckets. One point of each small part of a bucket stands for the others there. Seen
// from these, f is larger by no more than a part is wide: squares are left out as before, and a place proves a radius
// that is less by so much.

namespace nu::engine::minimax {
namespace {

// In steps of the grid: far above the roundings of places and distances and what counts as the same radius.
constexpr double kSlack = 64.0;
constexpr double kRoot2 = 1.4142135623730951;

}  // namespace

FarSquares::FarSquares(const std::vector<Vec2>& points, const ConvexPolygon2& hull) : m_hull(hull) {
  const std::vector<Vec2>& corners = hull.Corners();
  if (corners.size() < 3) return;
  const std::size_t third = corners.size() / 3;
  m_inside = 1.0 / 3.0 * (corners[0] + corners[third] + corners[2 * third]);
  m_insideReach = kInfinity;
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const Vec2 a = corners[i], side = corners[(i + 1) % corners.size()] - a;
    m_insideReach = std::min(m_insideReach, AccurateCross(side, m_inside - a) / std::sqrt(Dot(side, side)));
  }
  if (!(m_insideReach > kSlack)) return;
  FillBuckets(points);
  constexpr std::size_t kMany = 16, kMostWork = 32, kMostWorkWhenThin = 16;
  const bool isOutline = m_filled <= points.size() / kMany;
  if (isOutline) ThinBuckets();
  m_mostWork = (isOutline ? kMostWorkWhenThin : kMostWork) * points.size();
  Find();
}

void FarSquares::FillBuckets(const std::vector<Vec2>& points) {
  constexpr double kPointsPerBucket = 2.0;
  Vec2 most = points[0];
  m_least = points[0];
  for (const Vec2& p : points) {
    m_least = {std::min(m_least.x, p.x), std::min(m_least.y, p.y)};
    most = {std::max(most.x, p.x), std::max(most.y, p.y)};
  }
  const Vec2 extent = most - m_least;
  const double longest = std::max(extent.x, extent.y);
  const double count = static_cast<double>(points.size()) / kPointsPerBucket;
  m_step = std::max(std::sqrt(extent.x * extent.y / count), longest / count);
  m_columns = static_cast<int>(extent.x / m_step) + 1;
  m_rows = static_cast<int>(extent.y / m_step) + 1;
  m_begin.assign(static_cast<std::size_t>(m_columns) * m_rows + 1, 0);
  for (const Vec2& p : points) ++m_begin[Bucket(Column(p.x), Row(p.y))];
  m_filled = m_begin.size() - static_cast<std::size_t>(std::count(m_begin.begin(), m_begin.end(), 0u));
  std::uint32_t end = 0;
  for (std::uint32_t& begin : m_begin) begin = end += begin;
  m_points.resize(points.size());
  for (const Vec2& p : points) m_points[--m_begin[Bucket(Column(p.x), Row(p.y))]] = p;
  m_half = 0.5 * longest;
  m_squares.assign(1, {m_least + Vec2{m_half, m_half}, 0.0});
}

// Leaves one point in each part of a bucket.
void FarSquares::ThinBuckets() {
  constexpr int kParts = 8;  // along a side; all have a bit in a word
  const double part = m_step / kParts;
  const auto partOf = [part](double offset) { return static_cast<int>(std::clamp(offset / part, 0.0, kParts - 1.0)); };
  std::uint32_t kept = 0;
  for (int row = 0; row < m_rows; ++row) {
    for (int column = 0; column < m_columns; ++column) {
      const Vec2 corner = m_least + m_step * Vec2{1.0 * column, 1.0 * row};
      const std::size_t bucket = Bucket(column, row);
      std::uint64_t filled = 0;
      const std::uint32_t first = m_begin[bucket], last = m_begin[bucket + 1];
      m_begin[bucket] = kept;
      for (std::uint32_t i = first; i < last; ++i) {
        const Vec2 offset = m_points[i] - corner;
        const std::uint64_t bit = std::uint64_t{1} << (kParts * partOf(offset.y) + partOf(offset.x));
        if ((filled & bit) == 0) m_points[kept++] = m_points[i];
        filled |= bit;
      }
    }
  }
  m_begin.back() = kept;
  m_points.resize(kept);
  m_thinning = kRoot2 * part + kSlack;
}

int FarSquares::Column(double x) const {
  return static_cast<int>(std::clamp((x - m_least.x) / m_step, 0.0, m_columns - 1.0));
}
int FarSquares::Row(double y) const {
  return static_cast<int>(std::clamp((y - m_least.y) / m_step, 0.0, m_rows - 1.0));
}

// The first ring about a place, or about the nearest one among the buckets, with points so far from it.
int FarSquares::FirstRing(Vec2 p, double least) const {
  const double x = std::clamp(p.x, m_least.x, m_least.x + m_columns * m_step);
  const double y = std::clamp(p.y, m_least.y, m_least.y + m_rows * m_step);
  const double rings = (least - std::fabs(p.x - x) - std::fabs(p.y - y)) / (kRoot2 * m_step);
  return static_cast<int>(std::clamp(rings - 2.0, 0.0, 1.0 * std::max(m_columns, m_rows)));
}

// Visits the buckets that are `ring` columns or rows from that of a place, as ranges of buckets.
template<class Visit>
void FarSquares::ForRing(Vec2 p, int ring, Visit visit) const {
  const int column = Column(p.x), row = Row(p.y);
  const int first = std::max(column - ring, 0), last = std::min(column + ring, m_columns - 1);
  for (int y = std::max(row - ring, 0); y <= std::min(row + ring, m_rows - 1); ++y) {
    if (y == row - ring || y == row + ring) {
      visit(Bucket(first, y), Bucket(last, y));
      continue;
    }
    if (column - ring >= 0) visit(Bucket(first, y), Bucket(first, y));
    if (column + ring < m_columns) visit(Bucket(last, y), Bucket(last, y));
  }
}

// Of a place from the nearest point, which is at least `least` away; or some distance that is below `enough`.
double FarSquares::DistanceFrom(Vec2 p, double least, double enough) {
  double square = kInfinity;
  const int most = std::max(m_columns, m_rows);
  for (int ring = FirstRing(p, least - kSlack); ring <= most; ++ring) {
    const double reach = (ring - 1) * m_step - kSlack;
    if (reach > 0.0 && reach * reach >= square) break;
    ForRing(p, ring, [&](std::size_t first, std::size_t last) {
      m_work += 1 + (m_begin[last + 1] - m_begin[first]);
      for (std::uint32_t i = m_begin[first]; i < m_begin[last + 1]; ++i) {
        const Vec2 offset = m_points[i] - p;
        square = std::min(square, Dot(offset, offset));
      }
    });
    if (enough > 0.0 && square < enough * enough) break;
  }
  return std::sqrt(square);
}

// Of a place from the hull, or less; not positive inside.
double FarSquares::DistanceOutside(Vec2 p) const {
  const Vec2 way = p - m_inside;
  const double length = std::sqrt(Dot(way, way));
  if (length <= m_insideReach) return length - m_insideReach;
  const ConvexPolygon2::Exit exit = m_hull.ExitOf(m_inside, way);
  // The way beyond the border, along the normal of the side.
  const Vec2 normal = Perpendicular(exit.alongBorder);
  return (exit.multiple - 1.0) * Dot(way, normal) / std::sqrt(Dot(normal, normal));
}

// Whether a square of the half diagonal r stays.
bool FarSquares::Keep(Vec2 middle, double least) {
  constexpr std::size_t kOfAnExit = 32;
  const double r = kRoot2 * m_half;
  const double enough = m_radius - r - kSlack;
  const double distance = DistanceFrom(middle, least, enough);
  if (distance < enough) return false;
  if (distance > std::min(r, m_radius)) {
    m_work += kOfAnExit;
    const double outside = DistanceOutside(middle);
    if (outside > r + kSlack) return false;
    if (outside < -kSlack) m_radius = std::max(m_radius, distance - m_thinning - kSlack);
  }
  m_squares.push_back({middle, distance});
  return true;
}

// Cuts the squares. False when that takes too long.
bool FarSquares::Cut() {
  std::vector<Square> whole;
  whole.swap(m_squares);
  m_half *= 0.5;
  m_lastColumn = 2.0 * m_lastColumn + 1.0;
  for (const Square& square : whole) {
    if (square.distance + 2.0 * kRoot2 * m_half < m_radius - kSlack) continue;
    for (const double x : {-m_half, m_half}) {
      for (const double y : {-m_half, m_half}) Keep(square.middle + Vec2{x, y}, square.distance - kRoot2 * m_half);
    }
    if (m_work > m_mostWork) return false;
  }
  return true;
}

void FarSquares::Find() {
  // The squares are small against the radius.
  constexpr double kSmall = 1.0 / 32.0;
  constexpr int kMostCuts = 30;
  constexpr std::size_t kMost = std::size_t{1} << 11;
  // Few are made smaller, at next to no cost.
  constexpr double kSmallest = 1.0 / 512.0;
  const std::size_t few = m_mostWork / (64 * kMost);
  const double least = std::max(m_thinning, 64.0 * kSlack);
  const auto areSmall = [&] {
    const double r = kRoot2 * m_half;
    return r < kSmall * m_radius && (r < kSmallest * m_radius || m_squares.size() > few || r < least);
  };
  for (int cuts = 0; !areSmall(); ++cuts) {
    if (cuts == kMostCuts || !Cut()) return;
  }
  if (m_squares.size() > m_mostWork / kMost) return;
  m_isNear.assign(m_begin.size(), false);
  for (const Square& square : m_squares) {
    MarkNear(square, 2.0 * kRoot2 * m_half + kSlack);
    m_codes.push_back(CodeOf(square.middle));
  }
  std::sort(m_codes.begin(), m_codes.end());
}

// Of a place from the points that may be in a bucket, or less.
double FarSquares::DistanceFromBucket(Vec2 p, std::size_t bucket) const {
  const std::size_t columns = static_cast<std::size_t>(m_columns), rowsBefore = bucket / columns;
  const double column = static_cast<double>(bucket % columns), row = static_cast<double>(rowsBefore);
  const Vec2 middle = m_least + m_step * Vec2{column + 0.5, row + 0.5};
  const double x = std::max(0.0, std::fabs(p.x - middle.x) - 0.5 * m_step - kSlack);
  const double y = std::max(0.0, std::fabs(p.y - middle.y) - 0.5 * m_step - kSlack);
  return std::sqrt(x * x + y * y);
}

// The circles about places of a square have their points in a ring about its middle.
void FarSquares::MarkNear(const Square& square, double reach) {
  const double most = square.distance + reach;
  const int last = static_cast<int>(std::min(most / m_step + 1.0, 1.0 * std::max(m_columns, m_rows)));
  for (int ring = FirstRing(square.middle, square.distance - m_thinning - kSlack); ring <= last; ++ring) {
    ForRing(square.middle, ring, [&](std::size_t from, std::size_t to) {
      for (std::size_t bucket = from; bucket <= to; ++bucket) {
        if (DistanceFromBucket(square.middle, bucket) <= most) m_isNear[bucket] = true;
      }
    });
  }
}

std::vector<Vec2> FarSquares::PointsNear(const std::vector<Vec2>& points) const {
  std::vector<Vec2> near;
  const auto isNear = [this](const Vec2& p) { return m_isNear[Bucket(Column(p.x), Row(p.y))]; };
  if (m_thinning > 0.0) std::copy_if(points.begin(), points.end(), std::back_inserter(near), isNear);
  for (std::size_t bucket = 0; m_thinning == 0.0 && bucket + 1 < m_begin.size(); ++bucket) {
    if (!m_isNear[bucket]) continue;
    near.insert(near.end(), m_points.data() + m_begin[bucket], m_points.data() + m_begin[bucket + 1]);
  }
  SortOnGrid(near);
  return near;
}

std::uint64_t FarSquares::CodeOf(Vec2 place) const {
  const double side = 2.0 * m_half;
  const double x = std::clamp((place.x - m_least.x) / side, 0.0, m_lastColumn);
  const double y = std::clamp((place.y - m_least.y) / side, 0.0, m_lastColumn);
  return (static_cast<std::uint64_t>(y) << 32) | static_cast<std::uint64_t>(x);
}

bool FarSquares::Hold(Vec2 place) const {
  return std::binary_search(m_codes.begin(), m_codes.end(), CodeOf(place));
}

}  // namespace nu::engine::minimax
