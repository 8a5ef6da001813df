#include "nu/engine/minimax/slab_cells.h"

#include <algorithm>
#include <cmath>
#include <utility>

// Branch and bound over cells of directions. Let w(d) be the width of the points along a unit vector d. Two points p
// and q are apart along it by
//
//   (p - q) . d <= w(d).
//
// Let c be the corners of a cell, along (u, v, 1). A vector of the cell is a sum of m c with multipliers m >= 0 of sum
// 1, and not longer than the sum of m |c|. So where
//
//   (p - q) . c > W |c|   at all corners c,
//
// all directions of the cell are wider than W, and it is left out when W is the width along some direction. The highest
// and the lowest point along the middle of a cell serve as p and q, and the width along the middle as W when it is less
// than the least so far. On a sphere of radius r a pair near the middle of a cell leaves it out when the corners are
// seen from there under an angle a with r a^2 < 2 r - W.
//
// A cell that stays is cut into four, by halves or, where the width changes much faster one way, by slices. A point
// that is below p at all corners of a part is nowhere the highest in it: the lists of points shrink with the cells.
// When they are down to a few, the normals of planes through three of them and along two edges show whether the cell
// holds a slab that might be the narrowest; if so it is found among these points.

namespace nu::engine::minimax {
namespace {

// Of a height, relative to the reach.
constexpr double kHeightError = 0x1p-50;
// Points stay in a list so far below, relative to the reach: it holds beyond the border of the cell, and ties.
constexpr double kListSlack = 0x1p-46;

// The direction halfway between (a, 1) and (b, 1).
double Halfway(double a, double b) {
  const double lengthA = std::sqrt(1.0 + a * a), lengthB = std::sqrt(1.0 + b * b);
  return (a * lengthB + b * lengthA) / (lengthA + lengthB);
}

// A cell cut into four, and the middles of the parts: into halves both ways, or into slices across u or v.
enum class Cut { kQuarters, kAcrossU, kAcrossV };

struct Quarters {
  Quarters(const DirectionCell& cell, Cut cut) {
    const double middleOfU = Halfway(cell.u[0], cell.u[1]), middleOfV = Halfway(cell.v[0], cell.v[1]);
    const double u[] = {cell.u[0], Halfway(cell.u[0], middleOfU), middleOfU, Halfway(middleOfU, cell.u[1]), cell.u[1]};
    const double v[] = {cell.v[0], Halfway(cell.v[0], middleOfV), middleOfV, Halfway(middleOfV, cell.v[1]), cell.v[1]};
    for (int k = 0; k < 4; ++k) {
      part[k] = cut == Cut::kQuarters
                    ? DirectionCell{cell.axis, {u[k / 2 * 2], u[k / 2 * 2 + 2]}, {v[k % 2 * 2], v[k % 2 * 2 + 2]}}
                : cut == Cut::kAcrossU ? DirectionCell{cell.axis, {u[k], u[k + 1]}, {cell.v[0], cell.v[1]}}
                                       : DirectionCell{cell.axis, {cell.u[0], cell.u[1]}, {v[k], v[k + 1]}};
      middleU[k] = Halfway(part[k].u[0], part[k].u[1]);
      middleV[k] = Halfway(part[k].v[0], part[k].v[1]);
    }
  }

  DirectionCell part[4];
  double middleU[4], middleV[4];
};

class CellSearch {
 public:
  CellSearch(const std::vector<IndexedPoint>& points, double reach, const std::function<bool()>& goesOn, double limit)
      : m_points(points),
        m_reach(reach),
        m_heightError(kHeightError * reach),
        m_goesOn(goesOn),
        m_limit(limit),
        m_side{HighPoints(points, 1.0), HighPoints(points, -1.0)} {}

  double Limit() const { return m_limit; }

  bool Run(CellSlab& narrowest) {
    const HighPoints::List all{0, m_points.size()};
    for (int axis = 0; axis < 3; ++axis) {
      for (HighPoints& side : m_side) side.SetAxis(axis);
      if (!Divide({axis, {-1.0, 1.0}, {-1.0, 1.0}}, {{all, all}, 0}, Cut::kQuarters)) return false;
    }
    if (m_best.slab.high == nullptr) return false;
    narrowest = std::move(m_best);
    return true;
  }

 private:
  // The points that may be the highest and the lowest ones in a cell.
  struct Lists {
    HighPoints::List side[2];
    int stalls;  // for so many cuts in a row they have not become much shorter
    std::size_t Size() const { return side[0].Size() + side[1].Size(); }
  };
  // Their places in the lists.
  struct Pair {
    std::size_t place[2];
  };

  // The slab of least width rests on no less.
  static constexpr std::size_t kLeastContacts = 4;
  static constexpr std::size_t kFew = 6;
  // The points of a flat face stay in the list of its normal however small the cell is.
  static constexpr int kMostStalls = 10;

  // ---- the end of hopeless searches

  // In visits of a point. Measured: a sphere takes 50 per point, a cylinder 105, a regular lattice on a sphere 140, and
  // the hull of all points of a sphere as long as 250.
  bool Spend(std::size_t work) {
    constexpr std::size_t kPatience = 40;
    constexpr double kMostWork = 250.0;
    const std::size_t size = m_points.size();
    const std::size_t passes = m_work / size;
    m_work += work;
    if (m_work / size > passes && !m_goesOn()) return false;
    return m_work <= kPatience * size || static_cast<double>(m_work) < kMostWork * m_done * static_cast<double>(size);
  }

  // ---- cells

  // Along (u, v, 1).
  double WidthOf(const Pair& pair, double u, double v) const {
    const double height = m_side[0].Height(pair.place[0], u, v) + m_side[1].Height(pair.place[1], u, v);
    return height / std::sqrt(1.0 + u * u + v * v);
  }
  bool IsBeyondLimit(double width) const { return width - 4.0 * m_heightError > m_limit * (1.0 + kSlabMargin); }

  bool IsTooWide(const DirectionCell& cell, const Pair& pair) const {
    for (const double u : cell.u) {
      for (const double v : cell.v) {
        if (!IsBeyondLimit(WidthOf(pair, u, v))) return false;
      }
    }
    return true;
  }

  // False when the search ends; so do all below.
  bool Divide(const DirectionCell& cell, const Lists& lists, Cut cut) {
    constexpr std::size_t kOfACell = 20;
    if (!Spend(lists.Size() + kOfACell)) return false;
    const Quarters quarters(cell, cut);
    std::size_t place[2][4] = {};
    for (const int side : {0, 1}) {
      m_side[side].FindHighest(lists.side[side], quarters.middleU, quarters.middleV, place[side]);
    }
    for (int k = 0; k < 4; ++k) {
      const double width = WidthOf({{place[0][k], place[1][k]}}, quarters.middleU[k], quarters.middleV[k]);
      m_limit = std::min(m_limit, width + 4.0 * m_heightError);
    }
    for (int k = 0; k < 4; ++k) {
      if (!Search(quarters.part[k], lists, {{place[0][k], place[1][k]}})) return false;
    }
    return true;
  }

  // Round a cylinder the width changes much faster along the axis than across: there slices leave fewer cells. Their
  // sides are weighed by how far the height of the pair over the limit changes along them.
  Cut CutOf(const DirectionCell& cell, const Pair& pair) const {
    constexpr double kSlender = 8.0;
    const double* u = cell.u;
    const double* v = cell.v;
    const auto change = [&](double s, double t, double length) {
      return std::fabs(s - t) + 0.25 * m_limit * length * length;
    };
    const auto excess = [&](double s, double t) {
      return m_side[0].Height(pair.place[0], s, t) + m_side[1].Height(pair.place[1], s, t) -
             m_limit * std::sqrt(1.0 + s * s + t * t);
    };
    const double middleU = Halfway(u[0], u[1]), middleV = Halfway(v[0], v[1]);
    const double alongU = change(excess(u[0], middleV), excess(u[1], middleV), u[1] - u[0]);
    const double alongV = change(excess(middleU, v[0]), excess(middleU, v[1]), v[1] - v[0]);
    if (alongU > kSlender * alongV) return Cut::kAcrossU;
    return alongV > kSlender * alongU ? Cut::kAcrossV : Cut::kQuarters;
  }

  // A part of the cell that the lists are for, with the points along its middle.
  bool Search(const DirectionCell& cell, const Lists& lists, const Pair& pair) {
    if (IsTooWide(cell, pair)) return Finish(cell);
    Lists part{};
    for (const int side : {0, 1}) {
      part.side[side] = m_side[side].AppendHigh(lists.side[side], cell, pair.place[side], kListSlack * m_reach);
    }
    part.stalls = 4 * part.Size() > 3 * lists.Size() ? lists.stalls + 1 : 0;
    const bool isDivided = part.Size() > kFew && part.stalls < kMostStalls;
    const bool goesOn = isDivided ? Divide(cell, part, CutOf(cell, pair)) : Solve(cell, part) && Finish(cell);
    for (const int side : {0, 1}) m_side[side].Drop(part.side[side]);
    return goesOn;
  }

  // Notes the share of all directions that is done with.
  bool Finish(const DirectionCell& cell) {
    constexpr double kAll = 12.0;
    m_done += (cell.u[1] - cell.u[0]) * (cell.v[1] - cell.v[0]) / kAll;
    return true;
  }

  bool Solve(const DirectionCell& cell, const Lists& lists) {
    constexpr std::size_t kOfAPoint = 16;
    if (lists.Size() < kLeastContacts) return true;
    if (!Spend(kOfAPoint * lists.Size())) return false;
    return (lists.Size() <= kFew && !MayHoldNarrowest(cell, lists)) || SolveExactly(cell, lists);
  }

  // ---- few points

  bool MayHoldNarrowest(const DirectionCell& cell, const Lists& lists) const {
    Vec3 edge[2][kFew * kFew];
    int count[2] = {0, 0};
    for (const int side : {0, 1}) {
      const auto [begin, end] = lists.side[side];
      for (std::size_t i = begin; i < end; ++i) {
        for (std::size_t j = begin; j < i; ++j) {
          const Vec3 e = edge[side][count[side]++] = m_side[side].At(i) - m_side[side].At(j);
          for (std::size_t k = begin; k < j; ++k) {
            if (MayBeNarrowest(cell, lists, e, m_side[side].At(k) - m_side[side].At(j))) return true;
          }
        }
      }
    }
    for (int i = 0; i < count[0]; ++i) {
      for (int j = 0; j < count[1]; ++j) {
        if (MayBeNarrowest(cell, lists, edge[0][i], edge[1][j])) return true;
      }
    }
    return false;
  }

  // Whether the normal of two edges may be in the cell and the slab along it narrow enough; true also where rounding
  // leaves little of the normal.
  bool MayBeNarrowest(const DirectionCell& cell, const Lists& lists, const Vec3& e, const Vec3& f) const {
    constexpr double kMostError = 1e-6;
    const Vec3 cross = Cross(e, f);
    const double square = Dot(cross, cross);
    const double error = 8.0 * kHeightError * std::sqrt(Dot(e, e) * Dot(f, f) / square);
    if (!(error < kMostError)) return true;
    if (!cell.Holds(cross, kCellSlack + error)) return false;
    const Vec3 normal = (cell.PointsUp(cross) ? 1.0 : -1.0) / std::sqrt(square) * cross;
    double width = -error * m_reach;
    for (const int side : {0, 1}) {
      double highest = -kInfinity;
      const auto [begin, end] = lists.side[side];
      for (std::size_t i = begin; i < end; ++i) highest = std::max(highest, Dot(m_side[side].At(i), normal));
      width += highest;
    }
    return !IsBeyondLimit(width);
  }

  bool SolveExactly(const DirectionCell& cell, const Lists& lists) {
    constexpr std::size_t kOfASolution = 16000, kOfAPoint = 100;
    if (!Spend(kOfASolution + kOfAPoint * lists.Size())) return false;
    std::vector<IndexedPoint> points;
    for (const int side : {0, 1}) {
      const auto [begin, end] = lists.side[side];
      for (std::size_t i = begin; i < end; ++i) points.push_back(m_points[m_side[side].NumberAt(i)]);
    }
    CellSlab found;
    if (!found.hull.Add(points)) return false;
    if (found.hull.Dimension() < 3) return true;
    if (!FindNarrowest(found.hull, m_limit, &cell, found.slab)) return false;
    if (found.slab.high == nullptr || !IsBetter(found.slab, m_best.slab)) return true;
    m_limit = std::min(m_limit, found.slab.width.high);
    m_best = std::move(found);
    return true;
  }

  const std::vector<IndexedPoint>& m_points;
  double m_reach;
  double m_heightError;
  const std::function<bool()>& m_goesOn;
  double m_limit;
  HighPoints m_side[2];  // upwards and downwards
  std::size_t m_work = 0;
  double m_done = 0.0;  // the share of all directions
  CellSlab m_best;
};

}  // namespace

bool FindNarrowestByCells(const std::vector<IndexedPoint>& points, double reach, const std::function<bool()>& goesOn,
                          double& limit, CellSlab& narrowest) {
  CellSearch search(points, reach, goesOn, limit);
  const bool isFound = search.Run(narrowest);
  limit = std::min(limit, search.Limit());
  return isFound;
}

}  // namespace nu::engine::minimax
