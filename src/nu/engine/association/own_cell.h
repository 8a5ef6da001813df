#ifndef NU_ENGINE_ASSOCIATION_OWN_CELL_H
#define NU_ENGINE_ASSOCIATION_OWN_CELL_H

#include "nu/engine/association/bounded_points.h"
#include "nu/engine/association/cell_bound.h"

// The cell around an optimum in which no feature is better.
//
// At the optimum let the zone of the contacts grow with the unknowns, to first order, by at least t times `growth` on
// the surface of a box with half sides of t times those of a unit box. The deviations keep to that up to errors whose
// sum E(t) grows at least as t^2: products and lengths of first-order enclosures do, see first_order.h. So where
// E(t) <= t growth, also E(s) <= s growth for all s < t, and nothing in the whole box is better than its middle.
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
  static constexpr int K = CellBounds<Model>::K;

  OwnCellFinder(int chart, const double (&x)[N], const ContactPoints& contacts, double reach)
      : m_contacts(contacts), m_reach(reach) {
    m_unit.chart = chart;
    std::copy_n(x, N, m_unit.middle);
    Model::UnitBox(reach, m_unit.half);
  }

  OwnCell<N> Find() {
    OwnCell<N> own{Part(0.0)};
    const double growth = Growth();
    double t = 1.0;
    for (int trial = 0; trial < kTrials && growth > 0.0; ++trial, t *= 0.5) {
      if (!(Errors(Part(t)) <= t * growth)) continue;
      own.cell = Part(t);
      break;
    }
    return own;
  }

 private:
  // Smaller cells would spare nothing.
  static constexpr int kTrials = 24;
  // What the linear programs may miss their optima by, and the growth that counts.
  static constexpr double kRounding = 1e-12;

  UnknownCell<N> Part(double t) const {
    UnknownCell<N> part = m_unit;
    for (double& h : part.half) h *= t;
    return part;
  }

  template<class Visit>
  void ForEnclosures(const UnknownCell<N>& cell, Visit visit) const {
    FirstOrder<N> x[N];
    cell.Unknowns(x);
    const typename Model::template Deviations<FirstOrder<N>> deviation(cell.chart, x, m_reach);
    for (const Vec3& p : m_contacts.outer) visit(deviation(p), 1.0);
    // What is near the least deviation holds a zone, and nothing else.
    if (!Model::kIsLevelled) return;
    for (const Vec3& p : m_contacts.inner) visit(deviation(p), -1.0);
  }

  double Errors(const UnknownCell<N>& cell) const {
    double above = 0.0;
    double below = 0.0;
    ForEnclosures(cell, [&](const FirstOrder<N>& e, double sign) {
      (sign > 0.0 ? above : below) = std::max(sign > 0.0 ? above : below, sign > 0.0 ? -e.low : e.high);
    });
    return Model::kIsLevelled ? 0.5 * (above + below) : above;
  }

  // Of half a zone, or the largest distance, on the surface of the unit box: each face has its linear program.
  double Growth() {
    m_rows.size = 0;
    double largest = 0.0;
    ForEnclosures(m_unit, [&](const FirstOrder<N>& e, double sign) {
      if (m_rows.size == minimax::kMostRows) return;
      for (int k = 0; k < N; ++k) m_rows.gradient[k][m_rows.size] = sign * e.slope[k];
      m_rows.value[m_rows.size++] = sign;
      largest = std::max(largest, e.Reach());
    });
    if (Model::kIsLevelled)
      for (int i = 0; i < m_rows.size; ++i) m_rows.gradient[K - 1][i] = -largest * m_rows.value[i];
    double least = std::numeric_limits<double>::infinity();
    for (int k = 0; k < N; ++k) least = std::min(least, GrowthAlong(k, largest));
    return least;
  }

  double GrowthAlong(int k, double largest) {
    double along[minimax::kMostRows];
    std::copy_n(m_rows.gradient[k], m_rows.size, along);
    std::fill_n(m_rows.gradient[k], m_rows.size, 0.0);
    double least = std::numeric_limits<double>::infinity();
    for (const double side : {1.0, -1.0}) {
      for (int i = 0; i < m_rows.size; ++i) m_rows.value[i] = side * along[i];
      const bool solved = m_program.Solve(m_rows, 1.0, kRounding * largest);
      least = std::min(least, solved ? ProvenValue(m_rows, m_program.Contacts()) - kRounding * largest : 0.0);
    }
    std::copy_n(along, m_rows.size, m_rows.gradient[k]);
    return least;
  }

  const ContactPoints& m_contacts;
  double m_reach;
  UnknownCell<N> m_unit;
  minimax::MinimaxRows<K> m_rows;
  minimax::LinearMinimax<K> m_program;
};

template<class Model>
OwnCell<Model::kUnknowns> FindOwnCell(int chart, const double (&x)[Model::kUnknowns], const ContactPoints& contacts,
                                      double reach) {
  return OwnCellFinder<Model>(chart, x, contacts, reach).Find();
}

}  // namespace nu::engine::association

#endif
