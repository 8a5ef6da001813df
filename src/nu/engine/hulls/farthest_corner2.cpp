#include "nu/engine/hulls/farthest_corner2.h"

#include <cmath>

#include "nu/engine/base/floating_point.h"

namespace nu::engine::hulls {

FarthestCorner2::FarthestCorner2(const std::vector<Vec2>& corners) : m_corners(corners) {
  while (m_leaves * kLeaf < corners.size()) m_leaves *= 2;
  m_boxes.assign(2 * m_leaves, {{kInfinity, kInfinity}, {-kInfinity, -kInfinity}});
  const auto cover = [](Box& box, const Box& other) {
    box.least = {std::min(box.least.x, other.least.x), std::min(box.least.y, other.least.y)};
    box.greatest = {std::max(box.greatest.x, other.greatest.x), std::max(box.greatest.y, other.greatest.y)};
  };
  for (std::size_t i = 0; i < corners.size(); ++i) cover(m_boxes[m_leaves + i / kLeaf], {corners[i], corners[i]});
  for (std::size_t k = m_leaves - 1; k > 0; --k) {
    cover(m_boxes[k], m_boxes[2 * k]);
    cover(m_boxes[k], m_boxes[2 * k + 1]);
  }
  m_chordBoxes.resize(2 * m_leaves);
  std::size_t run = kLeaf;
  for (std::size_t row = m_leaves; row > 0; row /= 2, run *= 2) {
    for (std::size_t i = 0; i * run < corners.size(); ++i) {
      const std::size_t end = std::min((i + 1) * run, corners.size());
      m_chordBoxes[row + i] = ChordBoxOf(corners.data() + i * run, corners.data() + end);
    }
  }
}

FarthestCorner2::ChordBox FarthestCorner2::ChordBoxOf(const Vec2* begin, const Vec2* end) {
  const Vec2 chord = *(end - 1) - *begin;
  const double length = std::sqrt(Dot(chord, chord));
  ChordBox box{*begin, length > 0.0 ? (1.0 / length) * chord : Vec2{1.0, 0.0}, {}, {}};
  for (const Vec2* p = begin; p != end; ++p) {
    const double along = Dot(box.direction, *p - *begin);
    const double across = Cross(box.direction, *p - *begin);
    box.least = {std::min(box.least.x, along), std::min(box.least.y, across)};
    box.greatest = {std::max(box.greatest.x, along), std::max(box.greatest.y, across)};
  }
  return box;
}

// The value is convex along the sides of this box, too. The margin is above the rounding of both values, so leaving the
// run out never changes which corner is found.
bool FarthestCorner2::IsBelow(const Place& place, const ChordBox& box, double best) {
  constexpr double kRounding = 64.0 * kEpsilon;
  const Vec2 offset = box.first - place.middle;
  const Vec2 first{Dot(box.direction, offset), Cross(box.direction, offset)};
  const Vec2 shift{Dot(box.direction, place.shift), Cross(box.direction, place.shift)};
  const Vec2 low = first + box.least;
  const Vec2 high = first + box.greatest;
  const double value = std::max(low.x * (low.x - shift.x), high.x * (high.x - shift.x)) +
                       std::max(low.y * (low.y - shift.y), high.y * (high.y - shift.y));
  const double reach =
      std::fabs(offset.x) + std::fabs(offset.y) + (box.greatest.x - box.least.x) + (box.greatest.y - box.least.y);
  return value + kRounding * reach * (reach + std::fabs(place.shift.x) + std::fabs(place.shift.y)) <= best;
}

double FarthestCorner2::Bound(const Place& place, const Box& box) {
  if (box.least.x > box.greatest.x) return -kInfinity;  // holds nothing
  const Vec2 low = box.least - place.middle;
  const Vec2 high = box.greatest - place.middle;
  return std::max(low.x * (low.x - place.shift.x), high.x * (high.x - place.shift.x)) +
         std::max(low.y * (low.y - place.shift.y), high.y * (high.y - place.shift.y));
}

std::size_t FarthestCorner2::From(const Place& place) const {
  double best = -kInfinity;
  std::size_t found = 0;
  Visit(place, 1, best, found);
  return found;
}

// As deep as the tree.
void FarthestCorner2::Visit(const Place& place, std::size_t node, double& best, std::size_t& found) const {
  if (node >= m_leaves) {
    const std::size_t begin = (node - m_leaves) * kLeaf;
    const std::size_t end = std::min(begin + kLeaf, m_corners.size());
    for (std::size_t i = begin; i < end; ++i) {
      const double value = Value(place, m_corners[i]);
      if (value > best) best = value, found = i;
    }
    return;
  }
  double bound[2] = {Bound(place, m_boxes[2 * node]), Bound(place, m_boxes[2 * node + 1])};
  const std::size_t first = bound[1] > bound[0] ? 1 : 0;
  for (const std::size_t child : {first, 1 - first}) {
    const std::size_t next = 2 * node + child;
    if (bound[child] > best && !IsBelow(place, m_chordBoxes[next], best)) Visit(place, next, best, found);
  }
}

}  // namespace nu::engine::hulls
