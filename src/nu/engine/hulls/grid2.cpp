#include "nu/engine/hulls/grid2.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "nu/engine/base/floating_point.h"

namespace nu::engine::hulls {
namespace {

// Outside, the inverse of a step of the grid could overflow.
constexpr double kSafeSmall = 1e-150;
constexpr double kSafeLarge = 1e150;

std::vector<Vec2> Project(PointBlocks& points, const Vec3 (&axes)[2]) {
  std::vector<Vec2> projected;
  projected.reserve(points.Size());
  points.ForEach([&](const PointBlock& block) {
    for (std::size_t i = 0; i < block.size; ++i) {
      const Vec3 p{block.x[i], block.y[i], block.z[i]};
      projected.push_back({Dot(p, axes[0]), Dot(p, axes[1])});
    }
  });
  return projected;
}

struct Box2 {
  Vec2 least;
  Vec2 greatest;

  double Extent() const { return std::max(greatest.x - least.x, greatest.y - least.y); }
};

struct Box2Builder {
  explicit Box2Builder(Vec2 first) : box{first, first} {}

  void Add(Vec2 p) {
    box.least = {std::min(box.least.x, p.x), std::min(box.least.y, p.y)};
    box.greatest = {std::max(box.greatest.x, p.x), std::max(box.greatest.y, p.y)};
    nonFinite += (p.x - p.x) + (p.y - p.y);
  }
  // A NaN or an infinite coordinate leaves an extent that is not finite.
  Box2 Result() const { return {box.least, {box.greatest.x + nonFinite, box.greatest.y + nonFinite}}; }

  Box2 box;
  double nonFinite = 0.0;
};

GridFrame FrameOf(const Box2& box) {
  GridFrame frame;
  const double half = 0.5 * box.Extent();
  const bool isPoint = box.Extent() == 0.0;
  if (!isPoint && !(box.Extent() >= kSafeSmall && box.Extent() <= kSafeLarge)) return frame;
  frame.middle = box.least + 0.5 * (box.greatest - box.least);
  frame.unit = isPoint ? 1.0 : std::ldexp(1.0, std::ilogb(half) + 1) / kGridReach;
  frame.finite = true;
  return frame;
}

// ---- exact signs

// Whole numbers of up to 2^255 in magnitude, in two's complement, the lowest word first.
using Wide = std::array<std::uint64_t, 4>;
struct Pair {
  std::uint64_t low, high;
};

Pair Multiply(std::uint64_t a, std::uint64_t b) {
  constexpr std::uint64_t mask = 0xffffffff;
  const std::uint64_t lowLow = (a & mask) * (b & mask);
  const std::uint64_t highLow = (a >> 32) * (b & mask);
  const std::uint64_t lowHigh = (a & mask) * (b >> 32);
  const std::uint64_t middle = (lowLow >> 32) + (highLow & mask) + (lowHigh & mask);
  return {(lowLow & mask) | (middle << 32), (a >> 32) * (b >> 32) + (highLow >> 32) + (lowHigh >> 32) + (middle >> 32)};
}

void Negate(Wide& a) {
  bool carry = true;
  for (std::uint64_t& word : a) {
    word = ~word + (carry ? 1 : 0);
    carry = carry && word == 0;
  }
}

void Add(Wide& a, const Wide& b) {
  std::uint64_t carry = 0;
  for (std::size_t k = 0; k < a.size(); ++k) {
    const std::uint64_t sum = a[k] + b[k];
    const std::uint64_t carried = sum + carry;
    carry = (sum < a[k] ? 1 : 0) | (carried < sum ? 1 : 0);
    a[k] = carried;
  }
}

int SignOf(const Wide& a) {
  if ((a[3] >> 63) != 0) return -1;
  return (a[0] | a[1] | a[2] | a[3]) != 0 ? 1 : 0;
}

// a b of whole numbers below 2^64.
Wide ProductOf(double a, double b) {
  const Pair p = Multiply(static_cast<std::uint64_t>(std::fabs(a)), static_cast<std::uint64_t>(std::fabs(b)));
  Wide product{p.low, p.high, 0, 0};
  if ((a < 0.0) != (b < 0.0)) Negate(product);
  return product;
}

// a b + c d.
Wide SumOfProducts(double a, double b, double c, double d) {
  Wide sum = ProductOf(a, b);
  Add(sum, ProductOf(c, d));
  return sum;
}

// Of numbers below 2^127.
Wide ProductOf(Wide a, Wide b) {
  const bool negative = (SignOf(a) < 0) != (SignOf(b) < 0);
  if (SignOf(a) < 0) Negate(a);
  if (SignOf(b) < 0) Negate(b);
  Wide product{};
  for (std::size_t i = 0; i < 2; ++i) {
    for (std::size_t j = 0; j < 2; ++j) {
      const Pair p = Multiply(a[i], b[j]);
      Wide part{};
      part[i + j] = p.low;
      part[i + j + 1] = p.high;
      Add(product, part);
    }
  }
  if (negative) Negate(product);
  return product;
}

}  // namespace

void SortOnGrid(std::vector<Vec2>& points) {
  std::sort(points.begin(), points.end(), [](Vec2 a, Vec2 b) { return a.x < b.x || (a.x == b.x && a.y < b.y); });
  points.erase(std::unique(points.begin(), points.end()), points.end());
}

Grid2 GridOf(std::vector<Vec2> points) {
  Grid2 grid;
  Box2Builder box(points[0]);
  for (const Vec2& p : points) box.Add(p);
  const GridFrame frame = FrameOf(box.Result());
  if (!frame.finite) return grid;
  grid.points = std::move(points);
  grid.middle = frame.middle;
  grid.unit = frame.unit;
  for (Vec2& p : grid.points) p = GridFrame::Rounded(frame.InSteps(p));
  SortOnGrid(grid.points);
  grid.finite = true;
  return grid;
}

GridFrame GridFrameOf(PointBlocks& points, const Vec3 (&axes)[2]) {
  Box2Builder box({kInfinity, kInfinity});
  box.box.greatest = {-kInfinity, -kInfinity};
  points.ForEach([&](const PointBlock& block) {
    for (std::size_t i = 0; i < block.size; ++i) {
      const Vec3 p{block.x[i], block.y[i], block.z[i]};
      box.Add({Dot(p, axes[0]), Dot(p, axes[1])});
    }
  });
  return FrameOf(box.Result());
}

Grid2 GridOf(PointBlocks& points, const Vec3 (&axes)[2]) {
  Grid2 grid = GridOf(Project(points, axes));
  if (!grid.finite && points.FitScale()) grid = GridOf(Project(points, axes));
  grid.middle = (1.0 / points.Scale()) * grid.middle;
  grid.unit /= points.Scale();
  return grid;
}

int ExactOrientation(Vec2 a, Vec2 b, Vec2 c) {
  return SignOf(SumOfProducts(a.x - c.x, b.y - c.y, -(a.y - c.y), b.x - c.x));
}

int ExactInCircle(Vec2 a, Vec2 b, Vec2 c, Vec2 d) {
  Wide sum{};
  const Vec2 corner[] = {a - d, b - d, c - d, a - d, b - d};
  for (int k = 0; k < 3; ++k) {
    const Vec2 p = corner[k];
    const Vec2 q = corner[k + 1];
    const Vec2 r = corner[k + 2];
    Add(sum, ProductOf(SumOfProducts(p.x, p.x, p.y, p.y), SumOfProducts(q.x, r.y, -q.y, r.x)));
  }
  return SignOf(sum);
}

}  // namespace nu::engine::hulls
