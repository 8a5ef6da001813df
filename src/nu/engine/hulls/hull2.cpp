#include "nu/engine/hulls/hull2.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "nu/engine/base/large_pages.h"
#include "nu/engine/base/simd.h"
#include "nu/engine/base/sort.h"
#include "nu/engine/hulls/orientation2.h"

// The hull of a sample comes first. It is rounded by an affine map; whatever lies inside its inscribed circle there, or
// inside the chord of its wedge, cannot be a vertex. The few points left are sorted along x and the lower and the upper
// chain are drawn through the lowest and highest point of each x (A. M. Andrew, Information Processing Letters 9,
// 1979).

namespace nu::engine::hulls {
namespace {

struct Candidate {
  double xy[2];
  int index;
};

// ---- chains

bool IsFinite(const double* xy) {
  return std::isfinite(xy[0]) && std::isfinite(xy[1]);
}

// The points that may be vertices, by their indices, in the unit in which the largest coordinate is near 2^400: then
// products of coordinates neither overflow nor, for anything down to 2^-880 of the largest, lose bits below the normal
// numbers. The unit is an exact power of two.
class ScaledPoints {
 public:
  ScaledPoints(const PointView& points, const LargeVector<int>& indices) : m_points(points) {
    constexpr int kExponent = 400;
    double largest = 0.0;
    for (const int i : indices) {
      const double* p = points[static_cast<std::size_t>(i)];
      largest = std::max({largest, std::fabs(p[0]), std::fabs(p[1])});
      m_left = std::min(m_left, p[0]);
      m_right = std::max(m_right, p[0]);
    }
    if (largest == 0.0) return;
    const int shift = kExponent - std::ilogb(largest);
    // Two factors: one alone could leave the range.
    m_half = std::ldexp(1.0, shift / 2);
    m_rest = std::ldexp(1.0, shift - shift / 2);
    m_left = Scaled(m_left);
    m_right = Scaled(m_right);
  }

  double Left() const { return m_left; }
  double Right() const { return m_right; }
  double X(int i) const { return Scaled(m_points[static_cast<std::size_t>(i)][0]); }
  double Y(int i) const { return Scaled(m_points[static_cast<std::size_t>(i)][1]); }
  Candidate operator[](int i) const { return {{X(i), Y(i)}, i}; }

 private:
  double Scaled(double v) const { return v * m_half * m_rest; }

  PointView m_points;
  double m_half = 1.0;
  double m_rest = 1.0;
  double m_left = HUGE_VAL;
  double m_right = -HUGE_VAL;
};

// Appends a point on the right, keeping what turns by `turn` (1: lower chain, -1: upper).
void Append(LargeVector<Candidate>& chain, int turn, const Candidate& next) {
  while (chain.size() >= 2 && turn * Orientation2(chain[chain.size() - 2].xy, chain.back().xy, next.xy) <= 0) {
    chain.pop_back();
  }
  chain.push_back(next);
}

// A part of the points in ascending stripes of x of about this size is sorted at a time: it stays in the cache.
constexpr std::size_t kStripe = 4096;

// Puts the indices in the order of their stripes, and otherwise as they are; returns where each stripe ends.
std::vector<std::size_t> SortIntoStripes(const ScaledPoints& points, LargeVector<int>& indices) {
  const std::size_t stripes = indices.size() / kStripe + 1;
  std::vector<std::size_t> ends(stripes, indices.size());
  if (stripes == 1) return ends;
  // Rounding is monotone, so that no point to the left falls into a later stripe.
  const double perWidth = static_cast<double>(stripes - 1) / (points.Right() - points.Left());
  if (!(perWidth < HUGE_VAL)) return {indices.size()};
  const auto stripeOf = [&](int i) { return static_cast<std::size_t>((points.X(i) - points.Left()) * perWidth); };
  std::fill(ends.begin(), ends.end(), 0);
  for (const int i : indices) ++ends[stripeOf(i)];
  std::size_t before = 0;
  for (std::size_t& end : ends) before += std::exchange(end, before);
  LargeVector<int> sorted(indices.size());
  for (const int i : indices) sorted[ends[stripeOf(i)]++] = i;
  indices.swap(sorted);
  return ends;
}

struct Chains {
  LargeVector<Candidate> lower;
  LargeVector<Candidate> upper;
};

// Appends the points of one stripe to the chains: of each x the lowest and the highest; of coincident points, which
// come in the order of their indices, the first.
void AppendStripe(const ScaledPoints& points, const int* indices, std::size_t count, Chains& chains) {
  std::vector<Candidate> stripe(count);
  std::vector<double> keys(count);
  std::vector<int> order(count);
  for (std::size_t k = 0; k < count; ++k) {
    stripe[k] = points[indices[k]];
    keys[k] = stripe[k].xy[0];
  }
  SortIndex(static_cast<int>(count), keys.data(), order.data());
  for (std::size_t k = 0; k < count;) {
    const Candidate* lowest = &stripe[order[k]];
    const Candidate* highest = lowest;
    const double x = lowest->xy[0];
    for (++k; k < count && !(x < stripe[order[k]].xy[0]); ++k) {
      const Candidate* c = &stripe[order[k]];
      if (c->xy[1] < lowest->xy[1]) lowest = c;
      if (c->xy[1] > highest->xy[1]) highest = c;
    }
    Append(chains.lower, 1, *lowest);
    Append(chains.upper, -1, *highest);
  }
}

std::vector<int> HullOf(const PointView& view, LargeVector<int> indices) {
  if (indices.empty()) return {};
  const ScaledPoints points(view, indices);
  Chains chains;
  std::size_t begin = 0;
  for (const std::size_t end : SortIntoStripes(points, indices)) {
    AppendStripe(points, indices.data() + begin, end - begin, chains);
    begin = end;
  }
  indices = {};
  const auto& [lower, upper] = chains;
  std::vector<int> hull;
  hull.reserve(lower.size() + upper.size());
  for (const Candidate& c : lower) hull.push_back(c.index);
  const bool sharesRight = upper.back().index == lower.back().index;
  const bool sharesLeft = upper.front().index == lower.front().index;
  for (std::size_t k = upper.size() - (sharesRight ? 1 : 0); k > (sharesLeft ? 1u : 0u); --k) {
    hull.push_back(upper[k - 1].index);
  }
  return hull;
}

// ---- what cannot be a vertex

// Below this the filter costs more than it saves; measured.
constexpr std::size_t kFilterSize = 150;

// Everything is tested with this relative margin, far above the rounding of the map (kFlattest) and of the wedges.
constexpr double kMargin = 1e-6;
// The map is given up when the sample is flatter than this: its rounding would approach the margin.
constexpr double kFlattest = 1e-6;
// So it is when the centre comes this near to an edge; the corners have the mean square distance 2.
constexpr double kLeastInnerSquare = 1e-4;

struct Line {
  double u, v;  // outward normal, scaled: u x + v y = 1 on the line
};

class InnerRegion {
 public:
  // The corners counter-clockwise, in the points' frame.
  explicit InnerRegion(const std::vector<Candidate>& corners) {
    m_valid = corners.size() >= 3 && MakeMap(corners) && MakeWedges(corners);
  }

  bool IsValid() const { return m_valid; }

  // Appends the finite points that may lie outside.
  void AppendOutside(const PointView& points, LargeVector<int>& outside) const {
    std::array<double, kBlock> u, v, square, reach;
    std::array<int, kBlock> open;
    for (std::size_t begin = 0; begin < points.Size(); begin += kBlock) {
      const std::size_t count = std::min(kBlock, points.Size() - begin);
      MapBlock(points.Part(begin, count), u.data(), v.data(), square.data());
      std::size_t left = 0;
      for (std::size_t k = 0; k < count; ++k) {
        open[left] = static_cast<int>(k);
        u[left] = u[k];
        v[left] = v[k];
        left += square[k] < m_innerSquare ? 0 : 1;
      }
      ReachInWedges(left, u.data(), v.data(), reach.data());
      for (std::size_t k = 0; k < left; ++k) {
        if (reach[k] < 1.0 - kMargin) continue;
        const std::size_t i = begin + static_cast<std::size_t>(open[k]);
        if (IsFinite(points[i])) outside.push_back(static_cast<int>(i));
      }
    }
  }

 private:
  static constexpr std::size_t kBlock = 256;

  // u = dx / a, v = (dy - b u) / d gives the corners the unit matrix for their second moments.
  bool MakeMap(const std::vector<Candidate>& corners) {
    const double share = 1.0 / static_cast<double>(corners.size());
    for (const Candidate& c : corners) {
      for (int k = 0; k < 2; ++k) m_centre[k] += c.xy[k] * share;
    }
    double xx = 0.0, xy = 0.0, yy = 0.0;
    for (const Candidate& c : corners) {
      const double dx = c.xy[0] - m_centre[0];
      const double dy = c.xy[1] - m_centre[1];
      xx += dx * dx * share, xy += dx * dy * share, yy += dy * dy * share;
    }
    const double a = std::sqrt(xx);
    m_b = xy / a;
    const double d = std::sqrt(yy - m_b * m_b);
    m_perA = 1.0 / a;
    m_perD = 1.0 / d;
    return d > kFlattest * std::sqrt(yy) && std::isfinite(m_perA) && std::isfinite(m_perD);
  }

  std::array<double, 2> Map(const double* p) const {
    const double u = (p[0] - m_centre[0]) * m_perA;
    return {u, ((p[1] - m_centre[1]) - m_b * u) * m_perD};
  }

  NU_KERNEL void MapBlock(PointView points, double* u, double* v, double* square) const {
    for (std::size_t k = 0; k < points.Size(); ++k) {
      u[k] = (points[k][0] - m_centre[0]) * m_perA;
      v[k] = ((points[k][1] - m_centre[1]) - m_b * u[k]) * m_perD;
      square[k] = u[k] * u[k] + v[k] * v[k];
    }
  }

  static double Cross(const std::array<double, 2>& p, const std::array<double, 2>& q) {
    return p[0] * q[1] - p[1] * q[0];
  }
  static Line LineThrough(const std::array<double, 2>& p, const std::array<double, 2>& q) {
    const double cross = Cross(p, q);
    return {(q[1] - p[1]) / cross, (p[0] - q[0]) / cross};
  }

  // The plane is cut into wedges of equal steps along the diamond |u| + |v| = 1, which need no trigonometry: 0 to 4
  // from the negative v axis on.
  static NU_ALWAYS_INLINE double DiamondAngle(double u, double v) {
    const double side = std::copysign(1.0, u);
    return (2.0 - side) + side * (v / (std::fabs(u) + std::fabs(v)));
  }
  static std::array<double, 2> DiamondPoint(double t) {
    const double v = t < 2.0 ? t - 1.0 : 3.0 - t;
    return {t < 2.0 ? 1.0 - std::fabs(v) : std::fabs(v) - 1.0, v};
  }

  bool MakeWedges(const std::vector<Candidate>& corners) {
    const std::size_t count = corners.size();
    std::vector<Line> edges;
    double farthest = 0.0;
    for (std::size_t i = 0; i < count; ++i) {
      const std::array<double, 2> p = Map(corners[i].xy);
      const std::array<double, 2> q = Map(corners[(i + 1) % count].xy);
      if (!(Cross(p, q) > 0.0)) return false;
      edges.push_back(LineThrough(p, q));
      farthest = std::max(farthest, edges.back().u * edges.back().u + edges.back().v * edges.back().v);
    }
    m_innerSquare = (1.0 - kMargin) / farthest;
    // Coordinates of a few roundings in all can put the centre on an edge or beyond it.
    if (!(m_innerSquare > kLeastInnerSquare)) return false;
    std::size_t wedges = 16;
    while (wedges < 4 * count) wedges *= 2;
    m_wedges.resize(wedges);
    m_wedgesPerUnit = static_cast<double>(wedges) / 4.0;
    std::size_t edge = SteepestEdge(edges, DiamondPoint(0.0));
    std::array<double, 2> previous = BorderPoint(edges, edge, 0);
    for (std::size_t w = 0; w < wedges; ++w) {
      const std::array<double, 2> next = BorderPoint(edges, edge, w + 1);
      m_wedges[w] = LineThrough(previous, next);
      previous = next;
    }
    return true;
  }

  static double Along(const Line& line, const std::array<double, 2>& p) { return line.u * p[0] + line.v * p[1]; }

  static std::size_t SteepestEdge(const std::vector<Line>& edges, const std::array<double, 2>& ray) {
    std::size_t best = 0;
    for (std::size_t e = 1; e < edges.size(); ++e) {
      if (Along(edges[e], ray) > Along(edges[best], ray)) best = e;
    }
    return best;
  }

  // Where the ray on which a wedge begins leaves the polygon; the edge turns on with the rays.
  std::array<double, 2> BorderPoint(const std::vector<Line>& edges, std::size_t& edge, std::size_t wedge) const {
    const std::array<double, 2> ray = DiamondPoint(static_cast<double>(wedge) / m_wedgesPerUnit);
    for (std::size_t turns = 0; turns < edges.size(); ++turns) {
      const std::size_t next = edge + 1 < edges.size() ? edge + 1 : 0;
      if (!(Along(edges[next], ray) > Along(edges[edge], ray))) break;
      edge = next;
    }
    const double along = Along(edges[edge], ray);
    return {ray[0] / along, ray[1] / along};
  }

  // How far each point is on its way to the chord of its wedge: below 1 inside.
  NU_KERNEL void ReachInWedges(std::size_t count, const double* u, const double* v, double* reach) const {
    const Line* wedges = m_wedges.data();
    const double last = static_cast<double>(m_wedges.size() - 1);
    for (std::size_t k = 0; k < count; ++k) {
      double place = DiamondAngle(u[k], v[k]) * m_wedgesPerUnit;
      // Written so that a NaN becomes a valid place; its reach is NaN all the same.
      place = place > 0.0 ? place : 0.0;
      place = place < last ? place : last;
      const Line& chord = wedges[static_cast<int>(place)];
      reach[k] = chord.u * u[k] + chord.v * v[k];
    }
  }

  double m_centre[2] = {0.0, 0.0};
  double m_perA = 0.0, m_b = 0.0, m_perD = 0.0;
  double m_innerSquare = 0.0;
  double m_wedgesPerUnit = 0.0;
  std::vector<Line> m_wedges;
  bool m_valid = false;
};

// One point of each of some equal stretches, at a place that no regular pattern of the data shares.
LargeVector<int> Sample(const PointView& points) {
  const std::size_t n = points.Size();
  const auto count = static_cast<std::size_t>(4.0 * std::sqrt(static_cast<double>(n)));
  const std::size_t step = n / count;
  LargeVector<int> sample;
  std::uint32_t state = 1;
  for (std::size_t k = 0; k < count; ++k) {
    state = state * 1664525u + 1013904223u;
    const std::size_t i = k * step + (state >> 8) % step;
    if (IsFinite(points[i])) sample.push_back(static_cast<int>(i));
  }
  return sample;
}

std::vector<Candidate> Corners(const PointView& points, const std::vector<int>& hull) {
  std::vector<Candidate> corners;
  corners.reserve(hull.size());
  for (const int i : hull) corners.push_back({{points[i][0], points[i][1]}, i});
  return corners;
}

// As many corners as the data are worth.
std::vector<Candidate> Thinned(const std::vector<Candidate>& corners, std::size_t dataSize) {
  const auto most = static_cast<std::size_t>(6.0 * std::sqrt(std::sqrt(static_cast<double>(dataSize))));
  if (corners.size() <= most) return corners;
  std::vector<Candidate> thinned;
  for (std::size_t k = 0; k < most; ++k) thinned.push_back(corners[k * corners.size() / most]);
  return thinned;
}

}  // namespace

std::vector<int> ConvexHull2(const PointView& points) {
  LargeVector<int> candidates;
  if (points.Size() >= kFilterSize) {
    const LargeVector<int> sample = Sample(points);
    const std::vector<Candidate> corners = Corners(points, HullOf(points, sample));
    // The share of the data outside the hull of a sample is about that of the corners in the sample.
    if (2 * corners.size() < sample.size()) {
      const InnerRegion inner(Thinned(corners, points.Size()));
      if (inner.IsValid()) {
        inner.AppendOutside(points, candidates);
        return HullOf(points, std::move(candidates));
      }
    }
  }
  for (std::size_t i = 0; i < points.Size(); ++i) {
    if (IsFinite(points[i])) candidates.push_back(static_cast<int>(i));
  }
  return HullOf(points, std::move(candidates));
}

}  // namespace nu::engine::hulls
