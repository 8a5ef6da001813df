#include "nu/engine/association/circle_cell.h"

#include <cfloat>

#include "nu/engine/association/bounded_features.h"
#include "nu/engine/association/certificate_arithmetic.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/linear/eigen_symmetric.h"

namespace nu::engine::association {
namespace {

constexpr int kAxis = 4;  // u, v, a, b
// Smaller parts of the unit box than the last would spare nothing.
constexpr double kStep = 0.5;
constexpr int kTrials = 24;
constexpr double kRounding = 64.0 * DBL_EPSILON;  // of the eigenvalues of small matrices, relative

using Function = Jet<Interval>;

Function Number(double value) {
  return Constant({value}, Function(kAxis));
}

// x in the middle plus or minus `part` of the half side, of which its derivatives are in units.
Function Unknown(const UnknownCell<kAxis>& cell, int k, double part) {
  Function x = Number(cell.middle[k]);
  x.first[k] = Around({cell.half[k]});
  x.value = x.value + x.first[k] * Interval{-part, part};
  return x;
}

// The exact difference of two numbers.
Function Difference(double to, double from) {
  Function d(kAxis);
  d.value = Around({to}) - Around({from});
  return d;
}

// The radii and heights of points about the axis less those of one of them, which have most of their errors in common:
// r - r0 = (r^2 - r0^2) / (r + r0), with the squares X^2 + Y^2 + (u Y - v X)^2 over s^2, see bounded_features.h.
class AxisFunctions {
 public:
  AxisFunctions(const UnknownCell<kAxis>& cell, double part, const Vec3& from)
      : m_chart(FrameOfChart(cell.chart)),
        m_from(m_chart.Local(from)),
        m_u(Unknown(cell, 0, part)),
        m_v(Unknown(cell, 1, part)),
        m_inverse(Reciprocal(Number(1.0) + m_u * m_u + m_v * m_v)),
        m_inverseRoot(Root(m_inverse)),
        m_x(Number(m_from.x) - Unknown(cell, 2, part) - Number(m_from.z) * m_u),
        m_y(Number(m_from.y) - Unknown(cell, 3, part) - Number(m_from.z) * m_v),
        m_turn(m_u * m_y - m_v * m_x),
        m_radius(Radius(m_x, m_y, m_turn)) {}

  void Of(const Vec3& point, Function& radius, Function& height) const {
    const Vec3 p = m_chart.Local(point);
    const Function dx = Difference(p.x, m_from.x), dy = Difference(p.y, m_from.y), dz = Difference(p.z, m_from.z);
    const Function x = dx - dz * m_u;
    const Function y = dy - dz * m_v;
    const Function turn = m_u * y - m_v * x;
    const Function square = x * (x + m_x + m_x) + y * (y + m_y + m_y) + turn * (turn + m_turn + m_turn);
    radius = square * m_inverse * Reciprocal(Radius(x + m_x, y + m_y, turn + m_turn) + m_radius);
    height = (dx * m_u + dy * m_v + dz) * m_inverseRoot;
  }

 private:
  Function Radius(const Function& x, const Function& y, const Function& turn) const {
    return Root((x * x + y * y + turn * turn) * m_inverse);
  }

  AxisFrame m_chart;
  Vec3 m_from;
  Function m_u, m_v;
  Function m_inverse, m_inverseRoot;
  Function m_x, m_y, m_turn, m_radius;
};

// The weighted mean square of the differences from the weighted mean.
Function Variance(const std::vector<Function>& values, const std::vector<double>& weights) {
  Function mean(kAxis), sum(kAxis), perTotal(kAxis);
  Interval total{};
  for (const double w : weights) total = total + Around({w});
  perTotal.value = Reciprocal(total);
  for (std::size_t i = 0; i < values.size(); ++i) mean = mean + Number(weights[i]) * values[i];
  mean = perTotal * mean;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const Function d = values[i] - mean;
    sum = sum + Number(weights[i]) * (d * d);
  }
  return perTotal * sum;
}

Function V(const UnknownCell<kAxis>& cell, double part, const std::vector<Vec3>& points,
           const std::vector<double>& weights) {
  const AxisFunctions axis(cell, part, points.front());
  std::vector<Function> radius(points.size()), height(points.size());
  for (std::size_t i = 0; i < points.size(); ++i) axis.Of(points[i], radius[i], height[i]);
  return Variance(radius, weights) + Variance(height, weights);
}

// By how much V may be below its value in the middle anywhere in the cell; infinite where it is not proven to be
// convex. With the middles H = Q L Q^T of the intervals of its second derivatives, S = Q L^-1/2 and e the norm of
// |S|^T E |S|, E their half widths, y = S^-1 d has  V >= value + (S^T g) y + (1 - e) |y|^2 / 2.
double LossOf(const Function& f, const Function& middle) {
  double h[kAxis][kAxis], width[kAxis][kAxis];
  for (int i = 0; i < kAxis; ++i) {
    for (int j = 0; j <= i; ++j) {
      const Interval second = f.second[i][j];
      h[i][j] = h[j][i] = 0.5 * second.low + 0.5 * second.high;
      width[i][j] = width[j][i] = std::max(second.high - h[i][j], h[i][j] - second.low);
    }
  }
  double values[kAxis], vectors[kAxis][kAxis];
  if (!DecomposeSymmetric(&h[0][0], kAxis, kAxis, values, &vectors[0][0], kAxis)) return kInfinity;
  if (!(values[0] > 0.0)) return kInfinity;
  const double rounding = kRounding * values[kAxis - 1];
  double slope = 0.0;
  double change = 0.0;
  for (int k = 0; k < kAxis; ++k) {
    double along = 0.0;
    for (int i = 0; i < kAxis; ++i) along += std::fabs(vectors[i][k]) * Magnitude(middle.first[i]);
    slope += along * along / values[k];
    for (int l = 0; l < kAxis; ++l) {
      double e = rounding;
      for (int i = 0; i < kAxis; ++i)
        for (int j = 0; j < kAxis; ++j) e += std::fabs(vectors[i][k]) * width[i][j] * std::fabs(vectors[j][l]);
      change += e * e / (values[k] * values[l]);
    }
  }
  const double spare = 1.0 - (1.0 + kRounding) * std::sqrt(change);
  return spare > 0.0 ? (1.0 + kRounding) * slope / (2.0 * spare) : kInfinity;
}

// As wide along each unknown as V is flat there, and up to the unit.
UnknownCell<kAxis> Shaped(UnknownCell<kAxis> cell, const Function& middle) {
  double least = kInfinity;
  for (int k = 0; k < kAxis; ++k) least = std::min(least, middle.second[k][k].high);
  for (int k = 0; k < kAxis && least > 0.0; ++k) cell.half[k] *= std::sqrt(least / middle.second[k][k].high);
  return cell;
}

}  // namespace

UnknownCell<4> ConvexCell(const UnknownCell<4>& unit, const std::vector<Vec3>& points,
                          const std::vector<double>& weights, double least) {
  UnknownCell<kAxis> cell = Shaped(unit, V(unit, 0.0, points, weights));
  const Function middle = V(cell, 0.0, points, weights);
  double part = 1.0;
  for (int trial = 0; trial < kTrials; ++trial, part *= kStep) {
    const double loss = LossOf(V(cell, part, points, weights), middle);
    if (!(middle.value.low - loss >= (1.0 + kRounding) * least * least)) continue;
    for (double& h : cell.half) h *= part;
    return cell;
  }
  std::fill_n(cell.half, kAxis, 0.0);
  return cell;
}

}  // namespace nu::engine::association
