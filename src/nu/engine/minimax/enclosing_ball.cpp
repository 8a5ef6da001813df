#include "nu/engine/minimax/enclosing_ball.h"

#include <algorithm>
#include <array>
#include <bit>
#include <vector>

#include "nu/engine/base/compensated_sum.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/points/point_lanes.h"
#include "nu/engine/shapes/vec2.h"

// Pivoting on support sets (B. Gaertner, Fast and robust smallest enclosing balls, ESA 1999). Up to D + 1 points
// determine the ball. A point outside enters; the smallest ball around it and the old ones is found among the
// circumscribed balls of all their subsets: it is the one whose centre has the least distance from the farthest of
// these points, which needs no decision by a tolerance and no sign that rounding could spoil. The radius grows with
// every change, so no support set returns.
//
// The points pass in blocks. Of each block the farthest point enters until none is outside, so the first walk leaves a
// ball that is nearly or wholly the last one, and one or two more confirm it. These leave out the blocks whose farthest
// point is inside however the centre has moved since they passed. From the second walk on the products that
// may cancel are computed as if in twice the precision: the weights of contacts that lie close together, or on one
// diameter, then are as good as the points.

namespace nu::engine::minimax {
namespace {

// Squares of radii outside have overflowed or vanished, or are about to in the squares of areas.
constexpr double kSafeSmall = 1e-70;
constexpr double kSafeLarge = 1e70;

// The radius grows at every change, which bounds the walks by far less; measured: up to 5.
constexpr int kMostWalks = 1000;

// In all walks; measured: up to 130 for 300,000 points.
constexpr int kMostChanges = 10'000;

// Changes that move the centre but, within rounding, not the radius. Then the radius alone encloses what is outside.
constexpr int kMostStanding = 100;

// Of support sets whose radii agree within their rounding the one with the largest least multiplier is taken: of points
// on one circle, those that hold its centre between them.
constexpr double kSameRadius = 4.0 * kEpsilon;

template<int D>
struct Gauge {
  Vec3 axis[D];
  Vec3 centre;
};

template<int D, class Number>
NU_ALWAYS_INLINE void Coordinates(const Gauge<D>& gauge, const Number& x, const Number& y, const Number& z,
                                  Number (&u)[3]) {
  u[2] = Number{};
  for (int j = 0; j < D; ++j) u[j] = gauge.axis[j].x * x + gauge.axis[j].y * y + gauge.axis[j].z * z;
}

template<class Number>
NU_ALWAYS_INLINE void SquareFrom(const Vec3& centre, const Number (&u)[3], Number& square) {
  const Number x = u[0] - centre.x;
  const Number y = u[1] - centre.y;
  const Number z = u[2] - centre.z;
  square = x * x + y * y + z * z;
}

struct Reach {
  double square;      // of the largest distance from the centre
  std::size_t index;  // of the point there
  double nonFinite;   // 0 or, when a square is not finite, NaN
};

template<int D>
NU_ALWAYS_INLINE void FarthestBody(const PointBlock& block, const Gauge<D>& given, Reach& reach) {
  const Gauge<D> gauge = given;
  Lanes largest = -1.0 - Lanes{};
  Lanes place = {};
  Lanes lost = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes x, y, z, s, u[3];
    LoadPoints(block, i, x, y, z);
    Coordinates(gauge, x, y, z, u);
    SquareFrom(gauge.centre, u, s);
    place = s > largest ? static_cast<double>(i) - Lanes{} : place;
    largest = s > largest ? s : largest;
    lost += s - s;  // NOLINT(misc-redundant-expression): NaN where s is not finite
  }
  reach.square = Largest(largest);
  reach.nonFinite = Sum(lost);
  // Lanes beyond the last point are copies of it.
  for (int l = kLanes - 1; l >= 0; --l) {
    if (largest[l] == reach.square) reach.index = std::min(static_cast<std::size_t>(place[l]) + l, block.size - 1);
  }
}

NU_KERNEL void Farthest(const PointBlock& b, const Gauge<2>& g, Reach& reach) {
  FarthestBody(b, g, reach);
}
NU_KERNEL void Farthest(const PointBlock& b, const Gauge<3>& g, Reach& reach) {
  FarthestBody(b, g, reach);
}

Vec3 CrossOf(Vec3 a, Vec3 b, bool accurate) {
  if (!accurate) return Cross(a, b);
  return {DifferenceOfProducts(a.y, b.z, a.z, b.y), DifferenceOfProducts(a.z, b.x, a.x, b.z),
          DifferenceOfProducts(a.x, b.y, a.y, b.x)};
}

double DotOf(Vec3 a, Vec3 b, bool accurate) {
  if (!accurate) return Dot(a, b);
  CompensatedSum sum;
  sum.AddProduct(a.x, b.x);
  sum.AddProduct(a.y, b.y);
  sum.AddProduct(a.z, b.z);
  return sum.Value();
}

// A ball through all points of a small set, with the centre in their affine hull.
struct Circumscribed {
  Vec3 centre;
  double multiplier[EnclosingBall::kMostContacts];
};

Circumscribed ThroughTwo(Vec3 o, Vec3 a) {
  return {o + 0.5 * (a - o), {0.5, 0.5}};
}

Circumscribed ThroughThree(Vec3 o, Vec3 p, Vec3 q, bool accurate) {
  const Vec3 a = p - o;
  const Vec3 b = q - o;
  const Vec3 normal = CrossOf(a, b, accurate);
  const double twice = 2.0 * Dot(normal, normal);
  const double shareA = Dot(b, b) * DotOf(a, a - b, accurate) / twice;
  const double shareB = Dot(a, a) * DotOf(b, b - a, accurate) / twice;
  return {o + (shareA * a + shareB * b), {1.0 - shareA - shareB, shareA, shareB}};
}

Circumscribed ThroughFour(Vec3 o, Vec3 p, Vec3 q, Vec3 r, bool accurate) {
  const Vec3 edge[3] = {p - o, q - o, r - o};
  Vec3 area[3];
  for (int k = 0; k < 3; ++k) area[k] = CrossOf(edge[(k + 1) % 3], edge[(k + 2) % 3], accurate);
  const double volume = DotOf(edge[0], area[0], accurate);
  Vec3 toCentre;
  for (int k = 0; k < 3; ++k) toCentre = toCentre + (0.5 * Dot(edge[k], edge[k]) / volume) * area[k];
  Circumscribed found{o + toCentre, {1.0}};
  for (int k = 0; k < 3; ++k) {
    found.multiplier[k + 1] = DotOf(toCentre, area[k], accurate) / volume;
    found.multiplier[0] -= found.multiplier[k + 1];
  }
  return found;
}

template<int D>
class Pivoting {
 public:
  Pivoting(PointBlocks& points, const Vec3 (&axes)[D], BallPrecision precision)
      : m_points(points), m_precision(precision) {
    std::copy_n(axes, D, m_gauge.axis);
  }

  // False when a squared distance is not finite, the changes find no end, or contacts do not touch a precise ball.
  bool Run() {
    m_ball = {};
    m_square = -1.0;
    m_standing = 0;
    m_finite = true;
    m_passed.assign(m_points.Size() / m_points.Portion(), {});
    m_accurate = false;
    m_changed = true;
    m_changesLeft = kMostChanges;
    for (int walk = 0; walk < kMostWalks && m_changed && m_finite; ++walk) {
      if (walk == 1 && m_precision == BallPrecision::full) Refine();
      m_changed = false;
      const auto mayReachOut = [&](std::size_t begin) {
        m_begin = begin;
        return walk == 0 || MayReachOut();
      };
      m_points.ForEachOf(mayReachOut, [this](const PointBlock& block) { Enclose(block); });
    }
    return m_finite && (m_precision != BallPrecision::full || Touches());
  }

  double Square() const { return m_square; }

  EnclosingBall InCallersUnit() const {
    EnclosingBall ball = m_ball;
    const double unit = 1.0 / m_points.Scale();  // a power of two
    ball.found = true;
    ball.centre = unit * ball.centre;
    ball.radius = unit * std::sqrt(m_square);
    for (Vec3& contact : ball.contact) contact = unit * contact;
    return ball;
  }

 private:
  void Enclose(const PointBlock& block) {
    if (m_square < 0.0) Begin(PointOf(block, 0), 0);
    Reach reach{0.0, 0, 0.0};
    Farthest(block, m_gauge, reach);
    while (m_finite && reach.square > m_square) {
      // A point that rounding keeps outside is enclosed by the radius alone.
      if (IsOutsideByRounding(reach.square)) {
        m_square = reach.square;
        break;
      }
      if (!Add(PointOf(block, reach.index), m_begin + reach.index)) m_square = reach.square;
      m_changed = true;
      m_finite = --m_changesLeft > 0;
      Farthest(block, m_gauge, reach);
    }
    m_finite = m_finite && reach.nonFinite == 0.0;
    const std::size_t passed = m_begin / m_points.Portion();
    if (passed < m_passed.size()) m_passed[passed] = {m_gauge.centre, std::sqrt(reach.square)};
  }

  // Of many points on one sphere every block has some that are outside by a rounding. Each that entered would move the
  // centre by a rounding, and put others outside: the number of walks would grow with that of the points.
  bool IsOutsideByRounding(double square) const {
    return m_points.Size() > m_points.Portion() && square <= (1.0 + kSameRadius) * m_solved;
  }

  // What a block has shown when it passed. A last part of a block always passes again.
  struct Passed {
    Vec3 centre;
    double farthest;
  };
  bool MayReachOut() const {
    constexpr double kMargin = 1e-9;  // far above the rounding of distances
    const std::size_t passed = m_begin / m_points.Portion();
    if (passed >= m_passed.size()) return true;
    const double moved = std::sqrt(SquareOf(m_gauge.centre, m_passed[passed].centre));
    return !(m_passed[passed].farthest + moved <= (1.0 - kMargin) * std::sqrt(m_square));
  }

  Vec3 PointOf(const PointBlock& block, std::size_t i) const {
    double u[3];
    Coordinates(m_gauge, block.x[i], block.y[i], block.z[i], u);
    return LoadVec3(u);
  }
  static double SquareOf(const Vec3& centre, const Vec3& point) {
    const double u[3] = {point.x, point.y, point.z};
    double square;
    SquareFrom(centre, u, square);
    return square;
  }

  // What rounding leaves between contacts and the ball is far less than this share of the squared radius.
  bool Touches() const {
    constexpr double kGap = 1e-9;
    return std::all_of(m_ball.contact, m_ball.contact + m_ball.contacts, [this](const Vec3& contact) {
      return SquareOf(m_ball.centre, contact) >= (1.0 - kGap) * m_square;
    });
  }

  void Begin(const Vec3& first, std::size_t index) {
    m_ball = {};
    m_ball.AddContact(first, 1.0, 1.0);
    m_ball.index[0] = index;
    m_ball.centre = m_gauge.centre = first;
    m_square = m_solved = 0.0;
  }

  void Refine() {
    m_accurate = true;
    m_standing = 0;
    const EnclosingBall rough = m_ball;
    Begin(rough.contact[0], rough.index[0]);
    for (int k = 1; k < rough.contacts; ++k) {
      if (SquareOf(m_ball.centre, rough.contact[k]) > m_square) Add(rough.contact[k], rough.index[k]);
    }
  }

  // The smallest ball around the contacts and a point outside. False, and no change, when rounding has kept the radius
  // from growing too often.
  bool Add(const Vec3& point, std::size_t index) {
    const EnclosingBall old = m_ball;
    double best = kInfinity;
    // The subsets of the old contacts; the new point belongs to all.
    for (const unsigned subset : kSubsets)
      if (subset < (1u << old.contacts)) Try(old, subset, point, index, best);
    const bool grows = best > m_square;
    if (!std::isfinite(best) || (!grows && ++m_standing > kMostStanding)) {
      m_ball = old;
      return false;
    }
    m_gauge.centre = m_ball.centre;
    m_square = m_solved = best;
    return true;
  }

  // Of up to D + 1 contacts, those of up to D by ascending size.
  static constexpr std::array<unsigned, D == 2 ? 6 : 14> kSubsets = [] {
    std::array<unsigned, D == 2 ? 6 : 14> subsets{};
    std::size_t count = 0;
    for (int size = 1; size <= D; ++size)
      for (unsigned subset = 1; subset < (1u << (D + 1)); ++subset)
        if (std::popcount(subset) == size) subsets[count++] = subset;
    return subsets;
  }();

  static double LeastMultiplier(const double* multiplier, int count) {
    return *std::min_element(multiplier, multiplier + count);
  }

  void Try(const EnclosingBall& old, unsigned subset, const Vec3& point, std::size_t index, double& best) {
    Vec3 p[D + 1] = {point};
    std::size_t place[D + 1] = {index};
    int count = 1;
    for (int k = 0; k < old.contacts; ++k) {
      if ((subset >> k & 1u) == 0) continue;
      place[count] = old.index[k];
      p[count++] = old.contact[k];
    }
    const Circumscribed around = Around(p, count);
    double farthest = SquareOf(around.centre, point);
    for (int k = 0; k < old.contacts; ++k) farthest = std::max(farthest, SquareOf(around.centre, old.contact[k]));
    const bool smaller = farthest < best * (1.0 - kSameRadius);
    const bool same = farthest <= best * (1.0 + kSameRadius);
    if (!smaller &&
        !(same && LeastMultiplier(around.multiplier, count) > LeastMultiplier(m_ball.multiplier, m_ball.contacts)))
      return;
    best = farthest;
    m_ball.centre = around.centre;
    m_ball.contacts = 0;
    for (int k = 0; k < count; ++k) m_ball.AddContact(p[k], 1.0, around.multiplier[k]);
    std::copy_n(place, count, m_ball.index);
  }

  Circumscribed Around(const Vec3 (&p)[D + 1], int count) const {
    if (count == 2) return ThroughTwo(p[0], p[1]);
    if constexpr (D == 3) {
      if (count == 4) return ThroughFour(p[0], p[1], p[2], p[3], m_accurate);
    }
    return ThroughThree(p[0], p[1], p[2], m_accurate);
  }

  PointBlocks& m_points;
  BallPrecision m_precision;
  Gauge<D> m_gauge;
  EnclosingBall m_ball;
  double m_square = -1.0;
  double m_solved = 0.0;  // the squared radius of the ball around the contacts
  std::vector<Passed> m_passed;
  std::size_t m_begin = 0;  // of the block that passes
  bool m_finite = true;
  bool m_accurate = false;
  int m_standing = 0;
  int m_changesLeft = 0;
  bool m_changed = false;
};

}  // namespace

template<int D>
EnclosingBall SmallestEnclosingBall(PointBlocks& points, const Vec3 (&axes)[D], BallPrecision precision) {
  Pivoting<D> pivoting(points, axes, precision);
  const bool finite = pivoting.Run();
  const double square = pivoting.Square();
  if (!finite || (!(square >= kSafeSmall && square <= kSafeLarge) && points.Size() > 1)) {
    if (!points.FitScale() || !pivoting.Run()) return {};
  }
  return pivoting.InCallersUnit();
}

template EnclosingBall SmallestEnclosingBall<2>(PointBlocks&, const Vec3 (&)[2], BallPrecision);
template EnclosingBall SmallestEnclosingBall<3>(PointBlocks&, const Vec3 (&)[3], BallPrecision);

}  // namespace nu::engine::minimax
