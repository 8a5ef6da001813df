#ifndef NU_ENGINE_ASSOCIATION_CELL_BOUND_H
#define NU_ENGINE_ASSOCIATION_CELL_BOUND_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

#include "nu/engine/association/first_order.h"
#include "nu/engine/association/second_order.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/minimax/linear_minimax.h"
#include "nu/engine/shapes/vec3.h"

namespace nu::engine::association {

// The points of a set that held the bound of a cell: where its parts begin.
struct ChosenPoints {
  static constexpr int kMost = 16;

  std::uint8_t index[kMost] = {};
  int count = 0;

  bool Has(int i) const { return std::find(index, index + count, i) != index + count; }
  void Add(int i) {
    if (count < kMost && !Has(i)) index[count++] = static_cast<std::uint8_t>(i);
  }
};

// A box of unknowns in one chart.
template<int N>
struct UnknownCell {
  int chart = 0;
  double middle[N] = {};
  double half[N] = {};
  double bound = 0.0;
  long number = 0;
  ChosenPoints points;

  static UnknownCell Between(int chart, const double (&low)[N], const double (&high)[N]) {
    UnknownCell cell;
    cell.chart = chart;
    for (int k = 0; k < N; ++k) {
      cell.middle[k] = 0.5 * (low[k] + high[k]);
      cell.half[k] = 0.5 * (high[k] - low[k]);
    }
    return cell;
  }

  double Volume() const {
    double volume = 1.0;
    for (const double h : half) volume *= 2.0 * h;
    return volume;
  }

  template<class Enclosure>
  void Unknowns(Enclosure (&x)[N]) const {
    for (int k = 0; k < N; ++k) {
      x[k] = Enclosure(middle[k]);
      x[k].slope[k] = half[k];
    }
  }
};

template<class Model>
struct CellBound {
  double value = 0.0;                // of half a zone, or of a largest distance
  double place[Model::kPlace] = {};  // where the linear program has its optimum
  int widest = 0;                    // the unknown whose side of the cell moves a point the most
  ChosenPoints points;
};

// The components of a point: its deviation, or of a circle in space its radius and its height. What is minimised is the
// largest product of a direction w with the components less their levels l; a zone has the directions 1 and -1, a
// circle all unit vectors. Any of them give a lower bound.
template<int C>
struct ComponentDirection {
  double w[C] = {};
};

// A point that holds the best feature, and the direction in which it does.
template<int C>
struct HeldPoint {
  Vec3 point;
  ComponentDirection<C> direction;
};

// The components of points by one name, whatever a feature calls them.
template<class Model>
class ComponentsOf {
 public:
  static constexpr int C = Model::kComponents;

  template<class T>
  class In {
   public:
    In(int chart, const T (&x)[Model::kUnknowns], double reach) : m_components(chart, x, reach) {}
    void Of(const Vec3& p, T (&component)[C]) const {
      if constexpr (C == 1)
        component[0] = m_components(p);
      else
        m_components.Of(p, component);
    }

   private:
    template<class M, int>
    struct Source {
      using Type = typename M::template Deviations<T>;
    };
    template<class M>
    struct Source<M, 2> {
      using Type = typename M::template Components<T>;
    };
    typename Source<Model, C>::Type m_components;
  };
};

template<class T, int C>
T Towards(const T (&component)[C], const ComponentDirection<C>& direction) {
  T sum = direction.w[0] * component[0];
  for (int c = 1; c < C; ++c) sum += direction.w[c] * component[c];
  return sum;
}

// Both directions of a zone, or so many around the turn that the best of them is next to any.
template<int C>
std::vector<ComponentDirection<C>> DirectionFan() {
  if constexpr (C == 1) {
    return {{{1.0}}, {{-1.0}}};
  } else {
    constexpr int kDirections = 16;
    constexpr double kStep = 6.28318530717958647693 / kDirections;
    std::vector<ComponentDirection<C>> fan;
    fan.reserve(kDirections);
    for (int k = 0; k < kDirections; ++k) fan.push_back({{Cos((k + 0.5) * kStep), Sin((k + 0.5) * kStep)}});
    return fan;
  }
}

// The least t with  a_i + g_i . d - w_i . l <= t  for all |d_k| <= 1 and any levels l, from its multipliers: whatever
// these are, if none is negative, the sum of multiplier * constant less the sum of |sum of multiplier * gradient_k| is
// not above it.
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
  static constexpr int C = Model::kComponents;
  static constexpr int K = N + C;

  using Held = std::vector<HeldPoint<C>>;

  // From some of a set of points, and those that hold the best feature; `rounding` is what the linear program may miss
  // its optimum by. A cell whose bound is below `target` is to be cut.
  //
  // The linear program begins with the points that held the bound of the larger cell and those that the best feature
  // in their zone leaves out join them, as long as that raises the bound.
  CellBound<Model> Of(const UnknownCell<N>& cell, const std::vector<Vec3>& set, const Held& held, double reach,
                      double target, double rounding) {
    CellBound<Model> bound;
    bound.widest = WidestUnknown(cell, reach);
    bound.value = -kInfinity;
    FirstOrder<N> x[N];
    cell.Unknowns(x);
    const Components components(cell.chart, x, reach);
    Begin(components, cell.points, set, held);
    for (int round = 0; round < kMostRounds; ++round) {
      FindLevels();
      FillRows(held);
      std::copy_n(cell.middle, N, bound.place);
      if (C > 1) std::copy_n(m_level, C, bound.place + (Model::kPlace - C));
      if (!m_program.Solve(m_rows, 1.0, rounding)) break;
      const double before = bound.value;
      bound.value = ProvenValue(m_rows, m_program.Contacts()) - Noise();
      for (int k = 0; k < N; ++k) bound.place[k] += cell.half[k] * std::clamp(m_program.Step()[k], -1.0, 1.0);
      for (int c = 0; C > 1 && c < C; ++c)
        bound.place[Model::kPlace - C + c] += m_half[c] * std::clamp(m_program.Step()[N + c], -1.0, 1.0);
      if (bound.value >= target || !(bound.value > before) || !AddLeftOut(components, cell.chart, bound, set, reach))
        break;
    }
    bound.value = std::max(0.0, bound.value);
    if (m_program.Contacts().count == 0) return bound;
    if (!(bound.value >= target)) bound.value = std::max(bound.value, CurvedValue(cell, reach) - Noise());
    if (!(bound.value >= target)) bound.widest = CostliestUnknown(cell, reach, bound.widest);
    Keep(bound.points);
    return bound;
  }

 private:
  // The errors of a bound, in units of those of the largest deviation in the cell: some tens of operations lead from
  // the unknowns to an enclosure, and the multipliers of the linear program sum up some of these.
  static constexpr double kRoundings = 256.0;
  // A side so much narrower than the widest one, in what it moves, is not cut.
  static constexpr double kMostWidths = 8.0;
  // Linear programs for one cell.
  static constexpr int kMostRounds = 4;
  // A first cell begins with so many points of the set.
  static constexpr int kFirstPoints = 26;
  static constexpr int kHeld = -1;

  using Components = typename ComponentsOf<Model>::template In<FirstOrder<N>>;

  struct Enclosure {
    FirstOrder<N> component[C];
    Vec3 point;
    int index = kHeld;  // in the set
  };

  double Noise() const { return kRoundings * kEpsilon * m_largest; }

  void Begin(const Components& components, const ChosenPoints& chosen, const std::vector<Vec3>& set, const Held& held) {
    m_enclosure.clear();
    for (std::size_t i = 0; C > 1 && i < held.size(); ++i) Enclose(components, held[i].point, kHeld);
    for (int i = 0; i < chosen.count; ++i) Enclose(components, set[chosen.index[i]], chosen.index[i]);
    const int first = chosen.count > 0 ? 0 : std::min(kFirstPoints, static_cast<int>(set.size()));
    for (int i = 0; i < first; ++i) Enclose(components, set[static_cast<std::size_t>(i)], i);
  }

  void Enclose(const Components& components, const Vec3& point, int index) {
    Enclosure& e = m_enclosure.emplace_back();
    components.Of(point, e.component);
    e.point = point;
    e.index = index;
  }

  // In each direction the point of the set that is beyond all those enclosed, about the feature where the linear
  // program has its optimum.
  bool AddLeftOut(const Components& components, int chart, const CellBound<Model>& bound, const std::vector<Vec3>& set,
                  double reach) {
    double x[N];
    std::copy_n(bound.place, N, x);
    const typename ComponentsOf<Model>::template In<double> numbers(chart, x, reach);
    m_numbers.resize(C * set.size());
    for (std::size_t i = 0; i < set.size(); ++i) {
      double at[C];
      numbers.Of(set[i], at);
      std::copy_n(at, C, &m_numbers[C * i]);
    }
    const std::size_t before = m_enclosure.size();
    m_isIn.assign(set.size(), false);
    for (const Enclosure& e : m_enclosure)
      if (e.index != kHeld) m_isIn[static_cast<std::size_t>(e.index)] = true;
    for (const ComponentDirection<C>& direction : m_fan) {
      double most = -kInfinity;
      std::size_t found = 0;
      for (std::size_t i = 0; i < set.size(); ++i) {
        double towards = 0.0;
        for (int c = 0; c < C; ++c) towards += direction.w[c] * m_numbers[C * i + static_cast<std::size_t>(c)];
        if (!(towards > most)) continue;
        most = towards;
        found = i;
      }
      if (m_isIn[found]) continue;
      m_isIn[found] = true;
      Enclose(components, set[found], static_cast<int>(found));
    }
    return m_enclosure.size() > before;
  }

  // What holds the bound, and of the rest what came last.
  void Keep(ChosenPoints& points) const {
    const auto& contacts = m_program.Contacts();
    for (int j = 0; j < contacts.count; ++j) KeepOne(m_point[contacts.row[j]], points);
    for (std::size_t i = m_enclosure.size(); i-- > 0;) KeepOne(i, points);
  }
  void KeepOne(std::size_t i, ChosenPoints& points) const {
    if (m_enclosure[i].index != kHeld) points.Add(m_enclosure[i].index);
  }

  // What the multipliers prove by second-order enclosures of all contacts together; minus infinity where nothing.
  double CurvedValue(const UnknownCell<N>& cell, double reach) const {
    SecondOrder<N> x[N];
    cell.Unknowns(x);
    const typename ComponentsOf<Model>::template In<SecondOrder<N>> components(cell.chart, x, reach);
    const auto& contacts = m_program.Contacts();
    SecondOrder<N> sum;
    double weight = 0.0;
    double left[C] = {};  // of the directions, which balance each other up to rounding
    for (int j = 0; j < contacts.count; ++j) {
      const int row = contacts.row[j];
      SecondOrder<N> component[C];
      components.Of(m_enclosure[m_point[row]].point, component);
      sum += contacts.multiplier[j] * Towards(component, m_direction[row]);
      weight += contacts.multiplier[j];
      for (int c = 0; c < C; ++c) left[c] += contacts.multiplier[j] * m_direction[row].w[c];
    }
    double value = sum.Least();
    for (int c = 0; c < C; ++c) value -= left[c] * m_level[c] + std::fabs(left[c]) * m_half[c];
    return value > -kInfinity ? value / weight : -kInfinity;
  }

  // The unknown with which the errors of the enclosures that hold the bound shrink the most when its side is halved,
  // of those whose sides are not much narrower than the widest one.
  int CostliestUnknown(const UnknownCell<N>& cell, double reach, int widest) const {
    const auto& contacts = m_program.Contacts();
    double least = kInfinity;
    int found = widest;
    for (int k = 0; k < N; ++k) {
      if (m_widths[widest] > kMostWidths * m_widths[k]) continue;
      UnknownCell<N> part = cell;
      part.half[k] *= 0.5;
      FirstOrder<N> x[N];
      part.Unknowns(x);
      const Components components(cell.chart, x, reach);
      double error = 0.0;
      for (int j = 0; j < contacts.count; ++j) {
        const int row = contacts.row[j];
        FirstOrder<N> component[C];
        components.Of(m_enclosure[m_point[row]].point, component);
        error -= contacts.multiplier[j] * Towards(component, m_direction[row]).low;
      }
      if (!(error < least)) continue;
      least = error;
      found = k;
    }
    return found;
  }

  // By how far its side moves a point.
  int WidestUnknown(const UnknownCell<N>& cell, double reach) {
    double unit[N];
    Model::UnitBox(reach, unit);
    for (int k = 0; k < N; ++k) m_widths[k] = cell.half[k] / unit[k];
    return static_cast<int>(std::max_element(m_widths, m_widths + N) - m_widths);
  }

  // The levels of the best feature are between the extreme components.
  void FindLevels() {
    m_largest = 0.0;
    for (int c = 0; c < C; ++c) {
      double least = kInfinity;
      double greatest = -least;
      for (const Enclosure& e : m_enclosure) {
        least = std::min(least, e.component[c].Least());
        greatest = std::max(greatest, e.component[c].Greatest());
      }
      m_level[c] = 0.5 * (least + greatest);
      m_half[c] = 0.5 * (greatest - least);
      m_largest = std::max({m_largest, std::fabs(least), std::fabs(greatest)});
    }
  }

  // In each direction only those points that can be extreme somewhere in the cell.
  void FillRows(const Held& held) {
    m_rows.size = 0;
    for (std::size_t i = 0; C > 1 && i < held.size(); ++i) {
      AddRow(Towards(m_enclosure[i].component, held[i].direction), held[i].direction, i);
    }
    const std::size_t share = static_cast<std::size_t>(minimax::kMostRows - m_rows.size) / m_fan.size();
    for (const ComponentDirection<C>& direction : m_fan) FillRows(direction, share);
  }

  // Up to so many, those that are the farthest in the middle of the cell.
  void FillRows(const ComponentDirection<C>& direction, std::size_t most) {
    double top = -kInfinity;
    m_towards.clear();
    for (const Enclosure& e : m_enclosure) {
      m_towards.push_back(Along(e, direction));
      top = std::max(top, m_towards.back().value - m_towards.back().reach);
    }
    m_extreme.clear();
    for (std::size_t i = 0; i < m_enclosure.size(); ++i)
      if (m_enclosure[i].index != kHeld && m_towards[i].value + m_towards[i].reach >= top) m_extreme.push_back(i);
    if (m_extreme.size() > most) {
      std::nth_element(m_extreme.begin(), m_extreme.begin() + static_cast<std::ptrdiff_t>(most), m_extreme.end(),
                       [this](std::size_t i, std::size_t j) {
                         return std::make_pair(-m_towards[i].value, i) < std::make_pair(-m_towards[j].value, j);
                       });
      m_extreme.resize(most);
    }
    for (const std::size_t i : m_extreme) AddRow(Towards(m_enclosure[i].component, direction), direction, i);
  }

  // The least product with a direction in the middle of a cell, and how far the linear part reaches from it.
  struct Product {
    double value = 0.0;
    double reach = 0.0;
  };
  static Product Along(const Enclosure& e, const ComponentDirection<C>& direction) {
    Product p;
    double slope[N] = {};
    for (int c = 0; c < C; ++c) {
      const FirstOrder<N>& f = e.component[c];
      const double w = direction.w[c];
      p.value += w * f.value + w * (w < 0.0 ? f.high : f.low);
      for (int k = 0; k < N; ++k) slope[k] += w * f.slope[k];
    }
    for (const double s : slope) p.reach += std::fabs(s);
    return p;
  }

  void AddRow(const FirstOrder<N>& f, const ComponentDirection<C>& direction, std::size_t point) {
    if (m_rows.size == minimax::kMostRows) return;
    const int row = m_rows.size++;
    m_point[row] = point;
    m_direction[row] = direction;
    m_rows.value[row] = f.value + f.low;
    for (int k = 0; k < N; ++k) m_rows.gradient[k][row] = f.slope[k];
    for (int c = 0; c < C; ++c) {
      m_rows.value[row] -= direction.w[c] * m_level[c];
      m_rows.gradient[N + c][row] = -direction.w[c] * m_half[c];
    }
  }

  const std::vector<ComponentDirection<C>> m_fan = DirectionFan<C>();
  std::vector<Enclosure> m_enclosure;  // of those that hold the best feature, then of points of the set
  std::vector<double> m_numbers;       // the components of the set
  std::vector<bool> m_isIn;
  std::vector<Product> m_towards;  // these in one direction
  std::vector<std::size_t> m_extreme;
  double m_widths[N] = {};
  double m_level[C] = {};
  double m_half[C] = {};
  double m_largest = 0.0;  // of all components
  std::size_t m_point[minimax::kMostRows];
  ComponentDirection<C> m_direction[minimax::kMostRows];
  minimax::MinimaxRows<K> m_rows;
  minimax::LinearMinimax<K> m_program;
};

}  // namespace nu::engine::association

#endif
