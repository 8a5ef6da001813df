#include "nu/engine/roots/trig_isolation.h"

#include <algorithm>
#include <cmath>

#include "nu/engine/base/floating_point.h"
#include "nu/foundation/constants.h"

namespace nu::engine::roots {
namespace {

// The first cells are a quarter of the shortest period long; most of them are then settled at once.
constexpr int kCellsPerHarmonic = 4;
// The sum of the errors of a derivative and of the next two in its Taylor polynomial on half of a cell, relative to the
// error of the derivative: 1 + h + h^2 / 2 with h < 0.8, where the higher orders have slightly larger errors.
constexpr double kNoiseOfTaylor = 2.5;
// Cells are cut until they are as short as the error of a root.
constexpr int kDeepest = 48;
// A bound that no polynomial of small degree reaches; one of high degree that vanishes within rounding on a part of the
// circle would otherwise be cut there to the end.
constexpr std::size_t kMostCellsPerHarmonic = 256;

}  // namespace

TrigIsolation::TrigIsolation(const TrigSeries& f, double coefficientRoundings)
    : m_f(f),
      m_touchRoundings(coefficientRoundings * kEpsilon),
      m_mostPoints(kMostCellsPerHarmonic * static_cast<std::size_t>(f.Degree())) {
  f.Bounds(kHighestOrder + 4, m_bound);
  for (int j = 0; j <= kHighestOrder; ++j) m_noise[j] = (m_touchRoundings + f.EvaluationError(j)) * m_bound[j];
  const std::size_t cells = kCellsPerHarmonic * static_cast<std::size_t>(f.Degree());
  std::vector<TrigPoint> grid(cells + 1);
  for (std::size_t i = 0; i < cells; ++i) {
    grid[i].u = Nu_2PI * static_cast<double>(i) / static_cast<double>(cells);
    f.Sample(grid[i].u, grid[i].d);
  }
  // Where |f| is large no root and no extremum that touches is near, so that the turn may start there. A turn added to
  // an angle rounds it, which moves an end of a cell by less than the distance at which roots are distinguished.
  const auto start = std::max_element(grid.begin(), grid.end() - 1, [](const TrigPoint& p, const TrigPoint& q) {
    return std::fabs(p.d[0]) < std::fabs(q.d[0]);
  });
  for (auto p = grid.begin(); p != start; ++p) p->u += Nu_2PI;
  std::rotate(grid.begin(), start, grid.end() - 1);
  grid.back() = grid.front();
  grid.back().u += Nu_2PI;
  m_points.reserve(grid.size() + grid.size() / 2);
  for (std::size_t i = 0; i < cells; ++i) Cut(grid[i], grid[i + 1], 0);
  m_points.push_back(grid.back());
}

// The left end of every cell goes to the list.
void TrigIsolation::Cut(const TrigPoint& left, const TrigPoint& right, int depth) {
  int order = OrderOf(left, right, depth);
  const bool provable = order <= kHighestOrder;
  if (!provable && depth < kDeepest && m_points.size() < m_mostPoints) {
    TrigPoint middle;
    middle.u = left.u + 0.5 * (right.u - left.u);
    m_f.Sample(middle.u, middle.d);
    Cut(left, middle, depth + 1);
    Cut(middle, right, depth + 1);
    return;
  }
  if (!provable) order = kHighestOrder;
  m_points.push_back(left);
  m_points.back().order = order;
  m_highestOrder = std::max(m_highestOrder, order);
}

// Returns an order above kHighestOrder when none is found. Low orders cost least, so longer cells are cut rather than
// raised.
int TrigIsolation::OrderOf(const TrigPoint& left, const TrigPoint& right, int depth) const {
  const double half = 0.5 * (right.u - left.u) * m_f.Degree();
  const int sampled = TrigSeries::kSamples - 3;
  for (int order = 0; order <= sampled; ++order) {
    if (KeepsSign(order, left.d + order, right.d + order, half)) return Settled(order, left, right);
  }
  const int highest = depth < 5 ? std::min(kHighestOrder, sampled << depth) : kHighestOrder;
  if (highest == sampled) return kHighestOrder + 1;
  double l[kHighestOrder + 3];
  double r[kHighestOrder + 3];
  m_f.Derivatives(left.u, highest + 3, l);
  m_f.Derivatives(right.u, highest + 3, r);
  for (int order = sampled + 1; order <= highest; ++order) {
    if (KeepsSign(order, l + order, r + order, half)) return order;
  }
  return kHighestOrder + 1;
}

bool TrigIsolation::KeepsSign(int order, const double* left, const double* right, double half) const {
  const double sign = left[0] > 0.0 ? 1.0 : -1.0;
  return ProvesSign(order, sign, left, 1.0, half) && ProvesSign(order, sign, right, -1.0, half);
}

// d[0..2] are the derivative of the order and the next two.
bool TrigIsolation::ProvesSign(int order, double sign, const double* d, double direction, double half) const {
  const double fall = std::max(0.0, -sign * direction * d[1]);
  const double bend = std::max(0.0, -sign * d[2]);
  const double least = sign * d[0] - half * (fall + half * (bend / 2 + half * m_bound[order + 3] / 6));
  return least > kNoiseOfTaylor * Noise(order);
}

// The values at the ends decide the rest: whether there is a root at all.
int TrigIsolation::Settled(int order, const TrigPoint& left, const TrigPoint& right) const {
  const double noise = Noise(0);
  if (order == 0 || std::fabs(left.d[0]) <= noise || std::fabs(right.d[0]) <= noise) return order;
  if ((left.d[0] > 0.0) != (right.d[0] > 0.0)) return order > 2 ? order : 1;
  return order == 1 ? 0 : SettledConvex(left, right);
}

// The ends have one sign and f is convex or concave: it lies beyond its chord, or beyond its tangents at both ends.
int TrigIsolation::SettledConvex(const TrigPoint& left, const TrigPoint& right) const {
  const double sign = left.d[0] > 0.0 ? 1.0 : -1.0;
  const double leftSlope = sign * left.d[1];
  const double rightSlope = sign * right.d[1];
  if (sign * left.d[2] < 0.0 || leftSlope >= 0.0 || rightSlope <= 0.0) return 0;
  const double width = (right.u - left.u) * m_f.Degree();
  const double l = sign * left.d[0];
  const double crossing = (sign * right.d[0] - rightSlope * width - l) / (leftSlope - rightSlope);
  return l + leftSlope * crossing > Noise(0) + width * Noise(1) ? 0 : 2;
}

}  // namespace nu::engine::roots
