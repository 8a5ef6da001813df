#include "nu/engine/points/coincidence.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cfloat>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <numeric>
#include <optional>
#include <utility>

#include "nu/engine/base/bits.h"
#include "nu/engine/base/large_pages.h"
#include "nu/engine/points/box_tree.h"
#include "nu/engine/points/edge.h"
#include "nu/engine/points/extents.h"
#include "nu/engine/points/unbounded_points.h"

namespace nu::engine::points {
namespace {

// Up to here the loops over all pairs are the fastest; measured.
constexpr std::size_t kPlainSize = 24;
constexpr int kPlainCount = 24;

bool IsFinite(const double* p) {
  return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
}

// Points in a hash table by the cubic cell they lie in. The side of the cells is some times the reach within which
// points are looked for, so a search opens few cells, most often one.
class CellTable {
 public:
  CellTable(const PointView& points, double reach, double sideInReaches)
      : m_points(points),
        m_reach(reach),
        m_perSide(1.0 / std::max(sideInReaches * reach, kLeastSide)),
        m_border(reach * m_perSide * (1.0 + kRounding)),
        m_shift(64 - static_cast<int>(std::bit_width(2 * points.Size()))),
        m_slots(std::size_t{1} << (64 - m_shift)),
        m_next(points.Size()) {}

  // A finite point.
  void Insert(int i) {
    const double* p = m_points[static_cast<std::size_t>(i)];
    const std::uint64_t hash = Hash(CellOf(p[0]), CellOf(p[1]), CellOf(p[2]));
    Slot& slot = SlotOf(hash);
    slot.tag = TagOf(hash);
    m_next[static_cast<std::size_t>(i)] = slot.head;
    slot.head = i;
  }

  // Whether accepts(i) for one of the points inserted, among which are all whose coordinates differ by less than the
  // reach from those of the finite point p.
  template<class Accepts>
  bool AnyNear(const double* p, Accepts accepts) {
    ++m_searches;
    Choices x(*this, p[0]), y(*this, p[1]), z(*this, p[2]);
    for (int i = 0; i < x.count; ++i) {
      for (int j = 0; j < y.count; ++j) {
        for (int k = 0; k < z.count; ++k) {
          for (int q = SlotOf(Hash(x.cells[i], y.cells[j], z.cells[k])).head; q >= 0; q = m_next[q]) {
            ++m_comparisons;
            if (accepts(q)) return true;
          }
        }
      }
    }
    return false;
  }

  // The cells hold more points than searching them is worth.
  bool IsCrowded() const { return m_comparisons > kComparisonsPerSearch * m_searches + kComparisonsAtOnce; }

 private:
  struct Slot {
    std::uint32_t tag = 0;
    std::int32_t head = -1;
  };

  // Smaller sides could not be inverted.
  static constexpr double kLeastSide = 1e-290;
  // From this number of sides on neighbouring doubles are at least twice the reach apart, so that only equal
  // coordinates can be near: they are their own cells.
  static constexpr double kMostCells = 0x1p52;
  // Covers the rounding of a place in units of the side, as long as the place is below kFewCells.
  static constexpr double kRounding = 1e-6;
  static constexpr double kFewCells = 0x1p30;
  static constexpr std::uint64_t kComparisonsPerSearch = 16;
  static constexpr std::uint64_t kComparisonsAtOnce = 4096;

  // A cell grows with the coordinate; rounding toward zero makes the one about 0 twice as wide, which does no harm.
  std::uint64_t CellOf(double v) const {
    const double place = v * m_perSide;
    if (!(std::fabs(place) < kMostCells)) return BitsOf(v);
    return static_cast<std::uint64_t>(static_cast<std::int64_t>(place));
  }

  // The cells of all coordinates near v. Subtraction rounds monotonely, so those of v - reach, v and v + reach hold
  // them: the side is at least twice the reach.
  struct Choices {
    Choices(const CellTable& table, double v) : cells{table.CellOf(v)} {
      const double place = v * table.m_perSide;
      const double rest = std::fabs(place - static_cast<double>(static_cast<std::int64_t>(cells[0])));
      const bool inside = rest > table.m_border + kRounding && rest < 1.0 - table.m_border - kRounding;
      if (inside && std::fabs(place) < kFewCells) return;
      for (const double w : {v - table.m_reach, v + table.m_reach}) {
        const std::uint64_t cell = table.CellOf(w);
        if (std::find(cells.begin(), cells.begin() + count, cell) == cells.begin() + count) cells[count++] = cell;
      }
    }

    std::array<std::uint64_t, 3> cells;
    int count = 1;
  };

  static std::uint64_t Hash(std::uint64_t x, std::uint64_t y, std::uint64_t z) {
    std::uint64_t h = x * 0x9E3779B97F4A7C15u;
    h = (std::rotl(h, 29) ^ y) * 0xC2B2AE3D27D4EB4Fu;
    h = (std::rotl(h, 29) ^ z) * 0x165667B19E3779F9u;
    return (h ^ (h >> 32)) * 0x9E3779B97F4A7C15u;
  }

  static std::uint32_t TagOf(std::uint64_t hash) { return static_cast<std::uint32_t>(hash) | 1u; }

  // Cells with one tag share a slot; their points tell themselves apart.
  Slot& SlotOf(std::uint64_t hash) {
    const std::uint32_t tag = TagOf(hash);
    auto i = static_cast<std::size_t>(hash >> m_shift);
    while (m_slots[i].tag != tag && m_slots[i].tag != 0) i = (i + 1) & (m_slots.size() - 1);
    return m_slots[i];
  }

  PointView m_points;
  double m_reach;
  double m_perSide;
  double m_border;
  int m_shift;
  LargeVector<Slot> m_slots;
  LargeVector<std::int32_t> m_next;
  std::uint64_t m_searches = 0;
  std::uint64_t m_comparisons = 0;
};

// Sides of cells in reaches, from those of which a search mostly opens one to those in which only a bounded number of
// points that are a reach apart has room.
constexpr double kSides[] = {256.0, 16.0, 2.0};

// Points that were kept, and those among them near another one.
class KeptPoints {
 public:
  KeptPoints(const PointView& points, double reach)
      : m_points(points), m_reach(reach), m_table(std::in_place, points, reach, kSides[0]) {}

  const std::vector<int>& Indices() const { return m_kept; }
  std::vector<int> Take() { return std::move(m_kept); }

  void Keep(int i) {
    m_kept.push_back(i);
    if (IsFinite(m_points[static_cast<std::size_t>(i)])) m_table->Insert(i);
  }

  template<class Accepts>
  bool AnyNear(const double* p, Accepts accepts) {
    if (m_table->IsCrowded() && m_side + 1 < std::size(kSides)) {
      m_table.emplace(m_points, m_reach, kSides[++m_side]);
      for (const int i : m_kept) {
        if (IsFinite(m_points[static_cast<std::size_t>(i)])) m_table->Insert(i);
      }
    }
    return m_table->AnyNear(p, accepts);
  }

 private:
  PointView m_points;
  double m_reach;
  std::size_t m_side = 0;
  std::optional<CellTable> m_table;
  std::vector<int> m_kept;
};

// Whether a point in the tree coincides with p.
bool AnyCoincides(const BoxTree& tree, const double* p, double tol) {
  bool found = false;
  const auto canHold = [&](const BoxTree::Node& node) {
    bool holdsBox = true;
    for (int k = 0; k < 3; ++k) {
      if (p[k] - node.box.high[k] >= tol || node.box.low[k] - p[k] >= tol) return false;
      holdsBox = holdsBox && std::fabs(p[k] - node.box.low[k]) < tol && std::fabs(p[k] - node.box.high[k]) < tol;
    }
    found = found || holdsBox;
    return !found;
  };
  tree.Halves().Descend(canHold, [&](const BoxTree::Node& leaf) {
    for (int q = leaf.begin; q < leaf.end && !found; ++q) found = Coincide(p, tree.PointAt(q).xyz, tol);
    return !found;
  });
  return found;
}

}  // namespace

std::vector<int> WithoutCoincident(const PointView& points, double tol) {
  const int n = static_cast<int>(points.Size());
  std::vector<int> first;
  if (!(tol > 0.0)) {
    first.resize(points.Size());
    std::iota(first.begin(), first.end(), 0);
    return first;
  }
  if (points.Size() <= kPlainSize) {
    for (int i = 0; i < n; ++i) {
      const auto coincides = [&](int j) { return Coincide(points[i], points[j], tol); };
      if (std::none_of(first.begin(), first.end(), coincides)) first.push_back(i);
    }
    return first;
  }
  KeptPoints kept(points, tol);
  for (int i = 0; i < n; ++i) {
    const double* p = points[i];
    // A point that is not finite coincides with nothing.
    if (IsFinite(p) && kept.AnyNear(p, [&](int j) { return Coincide(p, points[j], tol); })) continue;
    kept.Keep(i);
  }
  return kept.Take();
}

bool AllCoincide(const PointView& points, const PointView& others, double tol) {
  const std::size_t n = points.Size();
  std::size_t i = 0;
  while (i < n && i < others.Size() && Coincide(points[i], others[i], tol)) ++i;
  if (i == n) return true;
  if (!(tol > 0.0)) return false;
  CellTable table(others, tol, kSides[0]);
  for (std::size_t k = 0; k < others.Size(); ++k) {
    if (IsFinite(others[k])) table.Insert(static_cast<int>(k));
  }
  for (; i < n && !table.IsCrowded(); ++i) {
    const double* p = points[i];
    if (!IsFinite(p) || !table.AnyNear(p, [&](int k) { return Coincide(p, others[k], tol); })) return false;
  }
  if (i == n) return true;
  const BoxTree tree(FinitePoints(others));
  for (; i < n; ++i) {
    if (!IsFinite(points[i]) || !AnyCoincides(tree, points[i], tol)) return false;
  }
  return true;
}

bool HasDistinct(const PointView& points, int count, double distance, double zero) {
  if (count <= 0) return true;
  if (static_cast<std::size_t>(count) > points.Size()) return false;
  const int n = static_cast<int>(points.Size());
  // A NaN distance is not at least `distance`.
  const auto isTooNear = [&](int i, int j) { return !(EdgeLength(points[i], points[j], zero) >= distance); };
  // An edge is at least as long as its largest difference, or 0 where that is below `zero`.
  const double reach = distance > 0.0 ? std::max(distance, zero > 0.0 ? zero : 0.0) : DBL_MIN;
  if (count <= kPlainCount || std::isnan(distance) || !ExtentsOf(points).isFinite) {
    std::vector<int> kept = {0};
    for (int i = 1; i < n && static_cast<int>(kept.size()) < count; ++i) {
      if (std::none_of(kept.begin(), kept.end(), [&](int j) { return isTooNear(i, j); })) kept.push_back(i);
    }
    return static_cast<int>(kept.size()) >= count;
  }
  KeptPoints kept(points, reach);
  for (int i = 0; i < n && static_cast<int>(kept.Indices().size()) < count; ++i) {
    if (!kept.AnyNear(points[i], [&](int j) { return isTooNear(i, j); })) kept.Keep(i);
  }
  return static_cast<int>(kept.Indices().size()) >= count;
}

}  // namespace nu::engine::points
