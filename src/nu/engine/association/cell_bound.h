#ifndef NU_ENGINE_ASSOCIATION_CELL_BOUND_H
#define NU_ENGINE_ASSOCIATION_CELL_BOUND_H

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "nu/engine/association/first_order.h"
#include "nu/engine/minimax/linear_minimax.h"
#include "nu/engine/shapes/vec3.h"

namespace nu::engine::association {

// A box of unknowns in one chart.
template<int N>
struct UnknownCell {
  int chart = 0;
  double middle[N] = {};
  double half[N] = {};
  double bound = 0.0;
  long number = 0;

  static UnknownCell Between(int chart, const double (&low)[N], const double (&high)[N]) {
    UnknownCell cell;
    cell.chart = chart;
    for (int k = 0; k < N; ++k) {
      cell.middle[k] = 0.5 * (low[k] + high[k]);
      cell.half[k] = 0.5 * (high[k] - low[k]);
    }
    return cell;
  }

  void Unknowns(FirstOrder<N> (&x)[N]) const {
    for (int k = 0; k < N; ++k) {
      x[k] = FirstOrder<N>(middle[k]);
      x[k].slope[k] = half[k];
    }
  }
};

template<class Model>
struct CellBound {
  double value = 0.0;                   // of half a zone, or of a largest distance
  double place[Model::kUnknowns] = {};  // where the linear program has its optimum
  int widest = 0;                       // the unknown whose side of the cell moves a point the most
};

// The least t with  a_i + g_i . d - l <= t,  -(b_j + g_j . d - l) <= t  for all |d_k| <= 1 and any level l, from its
// multipliers: whatever these are, if none is negative, the sum of multiplier * constant less the sum of
// |sum of multiplier * gradient_k| is not above it.
template<int K>
double ProvenValue(const minimax::MinimaxRows<K>& rows, const minimax::MinimaxContacts<K>& contacts) {
  double weight = 0.0;
  double value = 0.0;
  double gradient[K] = {};
  for (int j = 0; j < contacts.count; ++j) {
    const double w = contacts.multiplier[j];
    weight += w;
    value += w * rows.value[contacts.row[j]];
    for (int k = 0; k < K; ++k) gradient[k] += w * rows.gradient[k][contacts.row[j]];
  }
  for (const double g : gradient) value -= std::fabs(g);
  return value / weight;
}

// Bounds in cells, with the memory for them.
template<class Model>
class CellBounds {
 public:
  static constexpr int N = Model::kUnknowns;
  static constexpr int K = N + (Model::kIsLevelled ? 1 : 0);

  // From some points; `rounding` is what the linear program may miss its optimum by. A cell whose bound is below
  // `target` is to be cut.
  CellBound<Model> Of(const UnknownCell<N>& cell, const std::vector<Vec3>& points, double reach, double target,
                      double rounding) {
    CellBound<Model> bound;
    Enclose(cell, points, reach);
    bound.widest = WidestUnknown();
    FillRows();
    std::copy_n(cell.middle, N, bound.place);
    if (!m_program.Solve(m_rows, 1.0, rounding)) return bound;
    bound.value = ProvenValue(m_rows, m_program.Contacts()) - kRoundings * kEpsilon * m_largest;
    if (!(bound.value >= target)) bound.widest = CostliestUnknown(cell, points, reach, bound.widest);
    for (int k = 0; k < N; ++k) bound.place[k] += cell.half[k] * std::clamp(m_program.Step()[k], -1.0, 1.0);
    return bound;
  }

 private:
  static constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
  // The errors of a bound, in units of those of the largest deviation in the cell: some tens of operations lead from
  // the unknowns to an enclosure, and the multipliers of the linear program sum up some of these.
  static constexpr double kRoundings = 256.0;
  // A side so much narrower than the widest one, in what it moves, is not cut.
  static constexpr double kMostWidths = 8.0;

  void Enclose(const UnknownCell<N>& cell, const std::vector<Vec3>& points, double reach) {
    FirstOrder<N> x[N];
    cell.Unknowns(x);
    const typename Model::template Deviations<FirstOrder<N>> deviation(cell.chart, x, reach);
    m_enclosure.clear();
    for (const Vec3& p : points) m_enclosure.push_back(deviation(p));
  }

  // The unknown with which the errors of the enclosures that hold the bound shrink the most when its side is halved,
  // of those whose sides are not much narrower than the widest one.
  int CostliestUnknown(const UnknownCell<N>& cell, const std::vector<Vec3>& points, double reach, int widest) const {
    const auto& contacts = m_program.Contacts();
    double least = std::numeric_limits<double>::infinity();
    int found = widest;
    for (int k = 0; k < N; ++k) {
      if (m_widths[widest] > kMostWidths * m_widths[k]) continue;
      UnknownCell<N> part = cell;
      part.half[k] *= 0.5;
      FirstOrder<N> x[N];
      part.Unknowns(x);
      const typename Model::template Deviations<FirstOrder<N>> deviation(cell.chart, x, reach);
      double error = 0.0;
      for (int j = 0; j < contacts.count; ++j) {
        const int row = contacts.row[j];
        const FirstOrder<N> e = deviation(points[m_point[row]]);
        error += contacts.multiplier[j] * (m_sign[row] > 0.0 ? -e.low : e.high);
      }
      if (!(error < least)) continue;
      least = error;
      found = k;
    }
    return found;
  }

  // By how far its side moves a point.
  int WidestUnknown() {
    std::fill_n(m_widths, N, 0.0);
    for (const FirstOrder<N>& e : m_enclosure)
      for (int k = 0; k < N; ++k) m_widths[k] = std::max(m_widths[k], std::fabs(e.slope[k]));
    return static_cast<int>(std::max_element(m_widths, m_widths + N) - m_widths);
  }

  // Only those points that can be extreme somewhere in the cell.
  void FillRows() {
    double top = -std::numeric_limits<double>::infinity();
    double bottom = -top;
    double least = bottom;
    double greatest = top;
    for (const FirstOrder<N>& e : m_enclosure) {
      const double reach = e.Reach();
      top = std::max(top, e.value + e.low - reach);
      bottom = std::min(bottom, e.value + e.high + reach);
      least = std::min(least, e.value + e.low - reach);
      greatest = std::max(greatest, e.value + e.high + reach);
    }
    m_rows.size = 0;
    m_largest = std::max(std::fabs(least), std::fabs(greatest));
    const double level = Model::kIsLevelled ? 0.5 * (least + greatest) : 0.0;
    const double half = 0.5 * (greatest - least);
    for (const FirstOrder<N>& e : m_enclosure) {
      const double reach = e.Reach();
      if (e.value + e.low + reach >= top)
        AddRow(e, 1.0, e.value + e.low - level, half, static_cast<int>(&e - m_enclosure.data()));
      if (Model::kIsLevelled && e.value + e.high - reach <= bottom)
        AddRow(e, -1.0, e.value + e.high - level, half, static_cast<int>(&e - m_enclosure.data()));
    }
  }

  // The level moves by up to `half`: that of a narrowest zone is between the extreme deviations.
  void AddRow(const FirstOrder<N>& e, double sign, double value, double half, int point) {
    if (m_rows.size == minimax::kMostRows) return;
    m_rows.value[m_rows.size] = sign * value;
    m_point[m_rows.size] = point;
    m_sign[m_rows.size] = sign;
    for (int k = 0; k < N; ++k) m_rows.gradient[k][m_rows.size] = sign * e.slope[k];
    if (Model::kIsLevelled) m_rows.gradient[K - 1][m_rows.size] = -sign * half;
    ++m_rows.size;
  }

  std::vector<FirstOrder<N>> m_enclosure;
  double m_widths[N] = {};
  double m_largest = 0.0;  // of all deviations
  int m_point[minimax::kMostRows];
  double m_sign[minimax::kMostRows];
  minimax::MinimaxRows<K> m_rows;
  minimax::LinearMinimax<K> m_program;
};

}  // namespace nu::engine::association

#endif
