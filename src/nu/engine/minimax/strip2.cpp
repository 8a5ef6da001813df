#include "nu/engine/minimax/strip2.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/hulls/hull2.h"
#include "nu/engine/hulls/orientation2.h"

// As the strip turns between two fixed vertices its width is their distance times the sine of an angle, which has no
// minimum inside: the narrowest strip lies along an edge. The vertex across runs once round the hull while the edge
// does (M. I. Shamos, Computational Geometry, thesis, Yale 1978; G. Toussaint, Solving geometric problems with the
// rotating calipers, MELECON 1983).

namespace nu::engine::minimax {
namespace {

// The largest coordinate is brought near 2^kExponent: fourth and sixth powers of lengths neither overflow nor, for
// strips down to 2^-500 of that, lose bits below the normal numbers.
constexpr int kExponent = 150;
// Squared widths that agree to this are equal.
constexpr double kTie = 0x1p-90;

struct Corner {
  double xy[2];
};

// One strip: vertex `apex` over the edge from vertex `edge` to the next.
struct Candidate {
  std::size_t edge = 0;
  std::size_t apex = 0;
  DoubleDouble square{kInfinity};  // of the width
  double share = 0.0;              // of the edge's second end in the foot of the apex

  bool HasFootOnEdge() const { return share >= 0.0 && share <= 1.0; }
};

class Calipers {
 public:
  explicit Calipers(const std::vector<Corner>& hull) : m_hull(hull) {}

  Candidate Narrowest() {
    std::size_t apex = 1;
    for (std::size_t edge = 0; edge < m_hull.size(); ++edge) {
      if (apex == edge) apex = Next(apex);
      // Once round at most, also if coordinates beyond all range should spoil the signs.
      for (std::size_t k = 0; k < m_hull.size() && TurnAt(edge, apex) > 0; ++k) apex = Next(apex);
      Offer(edge, apex);
      // Across lies an edge: its other end is as far, and has its foot on this edge when the first one has not.
      if (TurnAt(edge, apex) == 0) Offer(edge, Next(apex));
    }
    return m_best;
  }

 private:
  std::size_t Next(std::size_t i) const { return i + 1 < m_hull.size() ? i + 1 : 0; }
  const double* At(std::size_t i) const { return m_hull[i].xy; }

  // Positive while the vertex after `apex` is farther from the edge.
  int TurnAt(std::size_t edge, std::size_t apex) const {
    return Turn2(At(edge), At(Next(edge)), At(apex), At(Next(apex)));
  }

  // Most strips are clearly wider than the best one.
  bool IsWider(std::size_t edge, std::size_t apex) const {
    constexpr double kMargin = 1e-12;  // far above the rounding of all but the products, which is bounded by the next
    constexpr double kProductError = 1e-15;
    const double* p = At(edge);
    const double dx = At(Next(edge))[0] - p[0];
    const double dy = At(Next(edge))[1] - p[1];
    const double left = dx * (At(apex)[1] - p[1]);
    const double right = dy * (At(apex)[0] - p[0]);
    const double least = (left - right) - kProductError * (std::fabs(left) + std::fabs(right));
    return least > 0.0 && least * least > (1.0 + kMargin) * m_best.square.high * (dx * dx + dy * dy);
  }

  bool IsBetter(const Candidate& found) const {
    if (std::isinf(m_best.square.high)) return true;
    const double tie = kTie * m_best.square.high;
    const double excess = (found.square - m_best.square).high;
    return excess < -tie || (excess <= tie && found.HasFootOnEdge() && !m_best.HasFootOnEdge());
  }

  void Offer(std::size_t edge, std::size_t apex) {
    if (IsWider(edge, apex)) return;
    const double* p = At(edge);
    const double* q = At(Next(edge));
    const double* a = At(apex);
    const DoubleDouble d[] = {Difference(q[0], p[0]), Difference(q[1], p[1])};
    const DoubleDouble lengthSquare = d[0] * d[0] + d[1] * d[1];
    const DoubleDouble along = d[0] * Difference(a[0], p[0]) + d[1] * Difference(a[1], p[1]);
    const DoubleDouble cross = ExactCross2(p, q, p, a);
    const Candidate found{edge, apex, cross * cross / lengthSquare, (along / lengthSquare).high};
    if (IsBetter(found)) m_best = found;
  }

  const std::vector<Corner>& m_hull;
  Candidate m_best;
};

// The strip of an edge of the hull and a vertex, of any points p, q, a with a not on the right.
Strip2 StripOn(const double* p, const double* q, const double* a, double share) {
  Strip2 strip;
  strip.share[1] = std::clamp(share, 0.0, 1.0);
  strip.share[0] = 1.0 - strip.share[1];
  const DoubleDouble dx = Difference(q[0], p[0]);
  const DoubleDouble dy = Difference(q[1], p[1]);
  const double length = std::sqrt((dx * dx + dy * dy).high);
  if (!(length > 0.0)) return strip;
  strip.normal[0] = -dy.high / length;
  strip.normal[1] = dx.high / length;
  strip.width = ExactCross2(p, q, p, a).high / length;
  return strip;
}

}  // namespace

Strip2 NarrowestStrip(const PointView& points) {
  const std::vector<int> hull = ConvexHull2(points);
  if (hull.empty()) return {};
  double largest = 0.0;
  for (const int i : hull) largest = std::max({largest, std::fabs(points[i][0]), std::fabs(points[i][1])});
  const int shift = largest > 0.0 ? kExponent - std::ilogb(largest) : 0;
  std::vector<Corner> corners;
  corners.reserve(hull.size());
  for (const int i : hull) corners.push_back({{std::ldexp(points[i][0], shift), std::ldexp(points[i][1], shift)}});

  Candidate best;
  if (corners.size() > 2) best = Calipers(corners).Narrowest();
  const std::size_t next = best.edge + 1 < corners.size() ? best.edge + 1 : 0;
  const double* p = corners[best.edge].xy;
  const double* a = corners[best.apex].xy;
  Strip2 strip = StripOn(p, corners[next].xy, a, best.share);
  for (int k = 0; k < 2; ++k) {
    strip.middle[k] = std::ldexp(a[k] - 0.5 * strip.width * strip.normal[k], -shift);
  }
  strip.width = std::ldexp(strip.width, -shift);
  strip.edge[0] = hull[best.edge];
  strip.edge[1] = hull[next];
  strip.apex = hull[best.apex];
  return strip;
}

}  // namespace nu::engine::minimax
