#ifndef NU_ENGINE_ASSOCIATION_CELL_SEARCH_H
#define NU_ENGINE_ASSOCIATION_CELL_SEARCH_H

#include <algorithm>
#include <cmath>
#include <tuple>
#include <vector>

#include "nu/engine/association/bounded_features.h"
#include "nu/engine/association/bounded_points.h"
#include "nu/engine/association/own_cell.h"
#include "nu/engine/association/proof_monitor.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/base/function_ref.h"
#include "nu/engine/shapes/vec2.h"

// Branch and bound over boxes of the unknowns of a feature, the cells (A. H. Land, A. G. Doig, Econometrica 28, 1960).
// In a cell the deviations d_i of some of the points are enclosed between linear functions of the unknowns. The linear
// program for the least difference of the largest lower and the smallest upper one bounds the zones of all features in
// the cell from below; its multipliers alone, none of them negative, prove that bound. More points only raise a zone,
// so what some prove holds for all. Around an optimum one cell of its own needs no proof by smaller ones, see
// own_cell.h.
namespace nu::engine::association {

// What is looked for among the points, in their working frame.
struct CellProblem {
  BoundedPoints& points;
  double far = 0.0;    // how far axes or centres may be from the origin
  double floor = 0.0;  // a bound for those farther away
  double gap = 0.0;    // of a proven feature
  long boxes = 0;
  long begun = 0;  // of these, before the search
  ProofMonitor monitor;
};

template<class Model>
class CellSearch {
 public:
  // From a feature with deviations of this size to one nearby that is an optimum; false where none is found.
  using Refine = FunctionRef<bool(const Feature& start, double size, Feature& found)>;

  static constexpr int N = Model::kUnknowns;

  CellSearch(const CellProblem& problem, Refine refine)
      : m_problem(problem),
        m_points(problem.points),
        m_refine(refine),
        m_boxes(problem.begun),
        m_floor(problem.floor) {}

  void Run(const Feature& known) {
    Adopt(known);
    if (m_own.empty() || !(m_own.front().cell.Volume() > 0.0)) Improve(m_best);
    RunBelow(m_size);
  }

  // Of features that are better than one of this size, which may be of another kind.
  void RunBelow(double size) {
    m_size = size;
    PushCharts();
    while (!m_heap.empty() && m_heap.front().bound < Target() && m_boxes < m_problem.boxes) {
      if (!m_problem.monitor.GoesOn(m_boxes, m_size, std::min(m_floor, m_heap.front().bound))) break;
      Look(Pop());
    }
    if (!m_heap.empty()) m_floor = std::min(m_floor, m_heap.front().bound);
  }

  const Feature& Best() const { return m_best; }
  // Half of a zone, or the largest distance.
  double Size() const { return m_size; }
  double Bound() const { return std::max(0.0, std::min(m_floor, m_size)); }
  long Boxes() const { return m_boxes; }
  bool IsCancelled() const { return m_problem.monitor.IsCancelled(); }

 private:
  using Cell = UnknownCell<N>;

  // Parts of the gap: by what contacts may miss the ends of their span, and linear programs their optima.
  static constexpr double kSlack = 0.25;
  static constexpr double kProgramSlack = 0.01;
  // The work of a local search, which takes some tens of steps on a working set, is that of about so many boxes.
  static constexpr long kBoxesOfRefinement = 100;
  // A cut through a cell may be this part of its half side off the middle, to run along the own cell of the optimum.
  static constexpr double kOffMiddle = 0.75;

  double Target() const { return m_size - m_problem.gap; }
  double Slack() const { return kSlack * m_problem.gap; }

  static bool IsLater(const Cell& a, const Cell& b) {
    return std::tie(a.bound, a.number) > std::tie(b.bound, b.number);
  }
  void Push(Cell cell) {
    cell.number = m_pushed++;
    m_heap.push_back(cell);
    std::push_heap(m_heap.begin(), m_heap.end(), IsLater);
  }
  Cell Pop() {
    std::pop_heap(m_heap.begin(), m_heap.end(), IsLater);
    const Cell cell = m_heap.back();
    m_heap.pop_back();
    return cell;
  }

  void PushCharts() {
    double low[N], high[N];
    Model::Domain(m_problem.far, m_points.Reach(), low, high);
    for (int chart = 0; chart < Model::kCharts; ++chart) Push(Cell::Between(chart, low, high));
  }

  void Look(Cell cell) {
    const auto holds = [&](const OwnCell<N>& own) { return own.Holds(cell); };
    if (std::any_of(m_own.begin(), m_own.end(), holds)) {
      m_floor = std::min(m_floor, m_size - Slack());
      return;
    }
    ++m_boxes;
    const CellBound<Model> found =
        m_bounds.Of(cell, m_points.Set(), m_held, m_points.Reach(), Target(), kProgramSlack * m_problem.gap);
    if (found.value > cell.bound) cell.bound = found.value;
    if (cell.bound >= Target()) {
      m_floor = std::min(m_floor, cell.bound);
      return;
    }
    LookAt(cell.chart, found.place);
    cell.points = found.points;
    Split(cell, found.widest);
  }

  // All points are looked at where the zone of some promises more than the best one.
  void LookAt(int chart, const double (&x)[Model::kPlace]) {
    const typename Model::template Deviations<double> deviation(chart, x, m_points.Reach());
    DeviationSpan some;
    for (const Vec3& p : m_points.Set()) some.Add(deviation(p));
    if (!(some.Size<Model>() < Target())) return;
    const DeviationSpan all = m_points.Span(deviation, some);
    CountPass();
    if (!(all.Size<Model>() < Target())) return;
    Adopt(Model::At(chart, x, all.Level<Model>()));
    Improve(m_best);
  }

  void Improve(const Feature& start) {
    Feature refined;
    m_boxes += kBoxesOfRefinement;
    if (m_refine(start, m_size, refined)) Adopt(refined);
  }

  void CountPass() { m_boxes += 1 + static_cast<long>(m_points.Size() / BoundedPoints::kMostInSet); }

  // Unless what is known is better. In its own cell nothing is better by more than Slack().
  void Adopt(const Feature& feature) {
    double x[Model::kPlace];
    const int chart = Model::ChartOf(feature);
    Model::Place(chart, feature, x);
    const typename Model::template Deviations<double> deviation(chart, x, m_points.Reach());
    const DeviationSpan span = m_points.Span(deviation, {});
    CountPass();
    if (!(span.Size<Model>() < m_size)) return;
    m_best = Model::At(chart, x, span.Level<Model>());
    m_size = span.Size<Model>();
    const ContactPoints contacts = m_points.Contacts(deviation, span, Slack());
    m_held = HeldBy(contacts, chart, x);
    m_own.clear();
    m_own.push_back(FindOwnCell<Model>(chart, x, m_held, m_points.Reach(), m_size - Slack()));
    for (int other = 0; other < Model::kCharts; ++other)
      if (other != chart) AddOwnCell(other, contacts);
  }

  // Charts overlap: the best feature may be in several.
  void AddOwnCell(int chart, const ContactPoints& contacts) {
    double x[Model::kPlace];
    if (!Model::Place(chart, m_best, x)) return;
    const auto held = HeldBy(contacts, chart, x);
    m_own.push_back(FindOwnCell<Model>(chart, x, held, m_points.Reach(), m_size - Slack()));
  }

  // The points that hold a feature, in the directions in which they do: away from the middle of a zone, or from the
  // circle.
  typename CellBounds<Model>::Held HeldBy(const ContactPoints& contacts, int chart,
                                          const double (&x)[Model::kPlace]) const {
    typename CellBounds<Model>::Held held;
    if constexpr (Model::kComponents == 1) {
      for (const Vec3& p : contacts.outer) held.push_back({p, {{1.0}}});
      if (!Model::kIsLevelled) return held;  // what is near the least deviation holds a zone, and nothing else
      for (const Vec3& p : contacts.inner) held.push_back({p, {{-1.0}}});
    } else {
      double axis[N];
      std::copy_n(x, N, axis);
      const typename ComponentsOf<Model>::template In<double> components(chart, axis, m_points.Reach());
      for (const Vec3& p : contacts.outer) {
        double at[2];
        components.Of(p, at);
        const Vec2 away{at[0] - x[N], at[1] - x[N + 1]};
        const double distance = std::sqrt(Dot(away, away));
        if (distance > 0.0) held.push_back({p, {{away.x / distance, away.y / distance}}});
      }
    }
    return held;
  }

  void Split(const Cell& cell, int k) {
    const double cut = CutOf(cell, k);
    const double low = cell.middle[k] - cell.half[k];
    const double high = cell.middle[k] + cell.half[k];
    // Too small for numbers between its ends.
    if (!(low < cut && cut < high)) {
      m_floor = std::min(m_floor, cell.bound);
      return;
    }
    for (const bool upper : {false, true}) {
      Cell part = cell;
      part.middle[k] = upper ? 0.5 * (cut + high) : 0.5 * (low + cut);
      part.half[k] = upper ? 0.5 * (high - cut) : 0.5 * (cut - low);
      Push(part);
    }
  }

  double CutOf(const Cell& cell, int k) const {
    for (const OwnCell<N>& own : m_own) {
      if (!own.Meets(cell)) continue;
      for (const double side : {own.cell.middle[k] - own.cell.half[k], own.cell.middle[k] + own.cell.half[k]})
        if (std::fabs(side - cell.middle[k]) < kOffMiddle * cell.half[k]) return side;
    }
    return cell.middle[k];
  }

  CellProblem m_problem;
  BoundedPoints& m_points;
  Refine m_refine;
  CellBounds<Model> m_bounds;
  std::vector<Cell> m_heap;  // the lowest bound on top
  long m_pushed = 0;
  long m_boxes;
  double m_floor;  // of what is done with
  Feature m_best;
  double m_size = kInfinity;
  std::vector<OwnCell<N>> m_own;  // in each chart that has the best feature, that of its own first
  typename CellBounds<Model>::Held m_held;
};

}  // namespace nu::engine::association

#endif
