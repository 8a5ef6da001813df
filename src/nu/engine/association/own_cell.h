#ifndef NU_ENGINE_ASSOCIATION_OWN_CELL_H
#define NU_ENGINE_ASSOCIATION_OWN_CELL_H

#include <algorithm>
#include <vector>

#include "nu/engine/association/bounded_points.h"
#include "nu/engine/association/cell_bound.h"
#include "nu/engine/association/circle_cell.h"
#include "nu/engine/base/floating_point.h"

// The cell around an optimum in which no feature is better.
//
// At the optimum let the zone of the contacts grow with the unknowns, to first order, by at least t times `growth` on
// the surface of a box with half sides of t times those of a unit box. The deviations keep to that up to errors whose
// sum E(t) grows at least as t^2: products and lengths of first-order enclosures do, see first_order.h. So where
// E(t) <= t growth, also E(s) <= s growth for all s < t, and nothing in the whole box is better than its middle. Around
// a circle in space there may be a larger one by curvature, see circle_cell.h.
namespace nu::engine::association {

template<int N>
struct OwnCell {
  UnknownCell<N> cell;  // with half sides of 0 where there is none

  bool Holds(const UnknownCell<N>& other) const {
    if (other.chart != cell.chart) return false;
    for (int k = 0; k < N; ++k)
      if (!(std::fabs(other.middle[k] - cell.middle[k]) + other.half[k] <= cell.half[k])) return false;
    return true;
  }
  bool Meets(const UnknownCell<N>& other) const {
    if (other.chart != cell.chart) return false;
    for (int k = 0; k < N; ++k)
      if (!(std::fabs(other.middle[k] - cell.middle[k]) < cell.half[k] + other.half[k])) return false;
    return true;
  }
};

template<class Model>
class OwnCellFinder {
 public:
  static constexpr int N = Model::kUnknowns;
  static constexpr int C = Model::kComponents;
  static constexpr int K = CellBounds<Model>::K;

  using Held = typename CellBounds<Model>::Held;

  OwnCellFinder(int chart, const double* x, const Held& held, double reach) : m_held(held), m_reach(reach) {
    m_unit.chart = chart;
    std::copy_n(x, N, m_unit.middle);
    Model::UnitBox(reach, m_unit.half);
  }

  // Nothing in it is below `least`, or the optimum, as far as its contacts are off the ends of their span.
  OwnCell<N> Find(double least) {
    const UnknownCell<N> grown = Part(PartOfGrowth());
    if constexpr (C == 1) {
      return {grown};
    } else {
      const UnknownCell<N> convex = Convex(least);
      return {convex.Volume() > grown.Volume() ? convex : grown};
    }
  }

 private:
  // Smaller cells would spare nothing.
  static constexpr int kTrials = 24;
  // What the linear programs may miss their optima by, and the growth that counts.
  static constexpr double kRounding = 1e-12;
  static constexpr double kTurn = 6.28318530717958647693;
  // Directions that hold the levels less firmly leave too much room for them.
  static constexpr double kLeastHold = 1e-3;

  UnknownCell<N> Part(double t) const {
    UnknownCell<N> part = m_unit;
    for (double& h : part.half) h *= t;
    return part;
  }

  double PartOfGrowth() {
    const double growth = Growth();
    double t = 1.0;
    for (int trial = 0; trial < kTrials && growth > 0.0; ++trial, t *= 0.5)
      if (Errors(Part(t)) <= t * growth) return t;
    return 0.0;
  }

  // The multipliers of the linear program of all that holds the feature are the weights.
  UnknownCell<N> Convex(double least) {
    const double largest = FillRows();
    std::fill_n(m_rows.value, m_rows.size, 0.0);
    const auto& contacts = m_program.Contacts();
    if (!m_program.Solve(m_rows, 1.0, kRounding * largest) || contacts.count == 0) return Part(0.0);
    std::vector<Vec3> points;
    std::vector<double> weights;
    for (int j = 0; j < contacts.count; ++j) {
      points.push_back(m_held[static_cast<std::size_t>(contacts.row[j])].point);
      weights.push_back(contacts.multiplier[j]);
    }
    return ConvexCell(m_unit, points, weights, least);
  }

  template<class Visit>
  void ForEnclosures(const UnknownCell<N>& cell, Visit visit) const {
    FirstOrder<N> x[N];
    cell.Unknowns(x);
    const typename ComponentsOf<Model>::template In<FirstOrder<N>> components(cell.chart, x, m_reach);
    for (const HeldPoint<C>& held : m_held) {
      FirstOrder<N> component[C];
      components.Of(held.point, component);
      visit(Towards(component, held.direction), held.direction);
    }
  }

  // Of half a zone: the levels share those of the two sides.
  double Errors(const UnknownCell<N>& cell) const {
    double most[2] = {};
    ForEnclosures(cell, [&](const FirstOrder<N>& f, const ComponentDirection<C>& direction) {
      double& side = most[C == 1 && direction.w[0] < 0.0 ? 1 : 0];
      side = std::max(side, -f.low);
    });
    return C == 1 ? 0.5 * (most[0] + most[1]) : most[0];
  }

  // How much the largest product with one of the directions is at least when the levels move by a unit: for two levels
  // the cosine of half the widest gap between the directions.
  double Hold() const {
    if constexpr (C == 1) return 1.0;
    std::vector<double> angle;
    for (const HeldPoint<C>& held : m_held) angle.push_back(Atan2(held.direction.w[C - 1], held.direction.w[0]));
    if (angle.empty()) return 0.0;
    std::sort(angle.begin(), angle.end());
    double gap = angle.front() + kTurn - angle.back();
    for (std::size_t i = 1; i < angle.size(); ++i) gap = std::max(gap, angle[i] - angle[i - 1]);
    return Cos(0.5 * gap);
  }

  // Of half a zone, or the largest distance, on the surface of the unit box: each face has its linear program. Levels
  // that move by more than twice what the unknowns move, by the hold of the directions on them, raise it more.
  double Growth() {
    const double hold = Hold();
    if (!(hold > kLeastHold)) return 0.0;
    const double largest = FillRows();
    const double most = C == 1 ? largest : 2.0 * largest / hold;
    for (int c = 0; c < C; ++c)
      for (int i = 0; i < m_rows.size; ++i) m_rows.gradient[N + c][i] *= most;
    double least = kInfinity;
    for (int k = 0; k < N; ++k) least = std::min(least, GrowthAlong(k, largest));
    return least;
  }

  // The rows of all that holds the feature, for levels that move by one unit; by how much the unknowns move it.
  double FillRows() {
    m_rows.size = 0;
    double largest = 0.0;
    ForEnclosures(m_unit, [&](const FirstOrder<N>& f, const ComponentDirection<C>& direction) {
      if (m_rows.size == minimax::kMostRows) return;
      for (int k = 0; k < N; ++k) m_rows.gradient[k][m_rows.size] = f.slope[k];
      for (int c = 0; c < C; ++c) m_rows.gradient[N + c][m_rows.size] = -direction.w[c];
      ++m_rows.size;
      largest = std::max(largest, f.Reach());
    });
    return largest;
  }

  double GrowthAlong(int k, double largest) {
    double along[minimax::kMostRows];
    std::copy_n(m_rows.gradient[k], m_rows.size, along);
    std::fill_n(m_rows.gradient[k], m_rows.size, 0.0);
    double least = kInfinity;
    for (const double side : {1.0, -1.0}) {
      for (int i = 0; i < m_rows.size; ++i) m_rows.value[i] = side * along[i];
      const bool solved = m_program.Solve(m_rows, 1.0, kRounding * largest);
      least = std::min(least, solved ? ProvenValue(m_rows, m_program.Contacts()) - kRounding * largest : 0.0);
    }
    std::copy_n(along, m_rows.size, m_rows.gradient[k]);
    return least;
  }

  const Held& m_held;
  double m_reach;
  UnknownCell<N> m_unit;
  minimax::MinimaxRows<K> m_rows;
  minimax::LinearMinimax<K> m_program;
};

template<class Model>
OwnCell<Model::kUnknowns> FindOwnCell(int chart, const double* x, const typename CellBounds<Model>::Held& held,
                                      double reach, double least) {
  return OwnCellFinder<Model>(chart, x, held, reach).Find(least);
}

}  // namespace nu::engine::association

#endif
