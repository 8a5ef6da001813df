#include "nu/engine/minimax/annulus2.h"

#include "nu/engine/base/floating_point.h"
#include "nu/engine/hulls/grid2.h"
#include "nu/engine/minimax/annulus_exchange.h"
#include "nu/engine/minimax/annulus_overlay.h"
#include "nu/engine/minimax/strip2.h"

// First the exchange; points near a circle or an arc need no more. Otherwise the annuli of a subset are searched, and
// its strip, which is an annulus around infinity: none is wider than that of all points with the same centre. So the
// narrowest of the subset, if it holds all points, is the narrowest of all; and if it does not hold them, the subset
// has to grow. Points that fill an area take the last road, the search among all.
//
// A strip whose contacts are a side and a corner becomes narrower when the centre comes nearer from infinity on one
// side. One between two parallel sides of the hull that overlap in part does not, and can be the narrowest of all, as
// for the points of an ellipse that is longer than three times its width. Then no circle is the best one.

namespace nu::engine::minimax {
namespace {

// Fewer points are searched at once.
constexpr std::size_t kSubsetWorth = 400;
constexpr int kMostRounds = 40;
constexpr std::size_t kMostInSubset = 2000;

// Widths that differ by no more steps of the grid are equal within the rounding of the points' coordinates, and so are
// centres whose distance is a smaller part of the radius than this.
constexpr double kSameWidth = 16.0;
constexpr double kSameCentre = 1e-9;
// Distances to a centre far away have their own rounding.
constexpr double kSameDistance = 16.0 * kEpsilon;

// In the unit of the blocks until the end.
class Search {
 public:
  Search(PointBlocks& points, const Vec3 (&axes)[2]) : m_points(points), m_exchange(points, axes), m_axes(axes) {}

  Annulus Run(Vec2 start, long limit, const StepMonitor& outer) {
    using Outcome = AnnulusExchange::Outcome;
    start = m_points.Scale() * start;
    AnnulusMonitor monitor(outer, start, 1.0 / m_points.Scale());
    const Outcome outcome = m_exchange.Run(start, limit, monitor);
    if (outcome == Outcome::limitReached || outcome == Outcome::cancelled) {
      m_best.end = outcome == Outcome::cancelled ? AnnulusEnd::cancelled : AnnulusEnd::limitReached;
      return m_best;
    }
    m_best.end = AnnulusEnd::noOptimum;
    if (outcome == Outcome::converged) m_best = m_exchange.Found();
    if (!m_best.certified && !SearchSubset(start, monitor)) SearchAll();
    return InCallersUnit();
  }

 private:
  bool HasOptimum() const { return m_best.end == AnnulusEnd::found; }
  double Bound(const Grid2& grid) const { return HasOptimum() ? (m_best.outer - m_best.inner) / grid.unit : kInfinity; }

  static double Rounding(const Grid2& grid, double distance) {
    return kSameWidth * grid.unit + kSameDistance * distance;
  }

  bool SearchSubset(Vec2 start, AnnulusMonitor& monitor) {
    if (m_points.Size() < kSubsetWorth) return false;
    std::vector<Vec2> subset = m_exchange.RepresentativePoints(HasOptimum() ? m_best.centre : start);
    if (HasOptimum()) {
      subset.insert(subset.end(), m_best.outerContact, m_best.outerContact + 2);
      subset.insert(subset.end(), m_best.innerContact, m_best.innerContact + 2);
    }
    std::size_t before = 0;
    for (int round = 0; round < kMostRounds && before < kMostInSubset; ++round) {
      const Grid2 grid = GridOf(subset);
      if (!grid.finite || grid.points.size() < 3) return false;
      const bool isStuck = grid.points.size() == before;
      before = grid.points.size();
      const GridAnnulus found = NarrowestGridAnnulus(grid.points, Bound(grid));
      if (!found.found) return false;
      const Strip2 strip = StripOf(grid);
      if (strip.width + kSameWidth < found.width || IsFar(found.centre)) {
        if (AddBeyond(strip, grid, subset)) continue;
        m_best.end = AnnulusEnd::noOptimum;
        return true;
      }
      const Vec2 centre = grid.InPlane(found.centre);
      const AnnulusExchange::Extremes extremes = m_exchange.ExtremesFrom(centre);
      if (!monitor.GoesOn(centre, extremes.outer - extremes.inner)) {
        m_best.end = AnnulusEnd::cancelled;
        return true;
      }
      if (extremes.outer - extremes.inner <= found.width * grid.unit + Rounding(grid, extremes.outer)) {
        Take(found, grid);
        return true;
      }
      if (isStuck) {
        // All that an annulus around a far centre leaves out may be rounding: then a strip is as narrow.
        const bool isStrip = std::fabs(strip.width - found.width) * grid.unit <= Rounding(grid, extremes.outer);
        if (!isStrip || AddBeyond(strip, grid, subset)) return false;
        m_best.end = AnnulusEnd::noOptimum;
        return true;
      }
      AddBeyond(found, grid, extremes, subset);
    }
    return false;
  }

  static bool IsFar(Vec2 centre) { return !(std::sqrt(Dot(centre, centre)) <= kFarthestCentre * kGridReach); }

  static Strip2 StripOf(const Grid2& grid) {
    return NarrowestStrip(PointView(&grid.points.front().x, sizeof(Vec2), grid.points.size()));
  }

  // What the strip does not hold: the points farthest on either side of it, and those of many runs. False when it holds
  // all.
  bool AddBeyond(const Strip2& strip, const Grid2& grid, std::vector<Vec2>& subset) const {
    const Vec2 normal{strip.normal[0], strip.normal[1]};
    const AnnulusExchange::Extremes extremes = m_exchange.ExtremesAlong(normal);
    if (extremes.outer - extremes.inner <= (strip.width + kSameWidth) * grid.unit) return false;
    constexpr double kFarAway = 1024.0;  // in sizes of the set: circles around such a centre are nearly lines
    for (const Vec2& p : m_exchange.RepresentativePoints(grid.InPlane(-kFarAway * kGridReach * normal))) {
      subset.push_back(p);
    }
    subset.push_back(extremes.farthest);
    subset.push_back(extremes.nearest);
    return true;
  }

  // What the annulus does not hold: the worst of all points, and of each of many runs.
  void AddBeyond(const GridAnnulus& found, const Grid2& grid, const AnnulusExchange::Extremes& extremes,
                 std::vector<Vec2>& subset) const {
    const Vec2 centre = grid.InPlane(found.centre);
    const auto distance = [centre](Vec2 p) { return std::sqrt(Dot(p - centre, p - centre)); };
    const double outer = distance(grid.InPlane(found.outerContact[0]));
    const double inner = distance(grid.InPlane(found.innerContact[0]));
    const double same = Rounding(grid, outer);
    for (const Vec2& p : m_exchange.RepresentativePoints(centre)) {
      if (distance(p) > outer + same || distance(p) < inner - same) subset.push_back(p);
    }
    subset.push_back(extremes.farthest);
    subset.push_back(extremes.nearest);
  }

  void SearchAll() {
    Grid2 grid = GridOf(m_points, m_axes);
    if (!grid.finite) m_best.end = AnnulusEnd::notFinite;
    if (!grid.finite || grid.points.size() < 3) return;
    grid.middle = m_points.Scale() * grid.middle;
    grid.unit *= m_points.Scale();
    const GridAnnulus found = NarrowestGridAnnulus(grid.points, Bound(grid));
    if (found.found) Take(found, grid);
    const double strip = StripOf(grid).width * grid.unit + Rounding(grid, m_best.outer);
    const bool isFar = found.found && IsFar(found.centre);
    if (HasOptimum() && (isFar || strip < m_best.outer - m_best.inner)) m_best.end = AnnulusEnd::noOptimum;
  }

  // The radii are those of the points as they are, not as they are on the grid. What the exchange found at the same
  // place is better still.
  void Take(const GridAnnulus& found, const Grid2& grid) {
    const Vec2 centre = grid.InPlane(found.centre);
    if (HasOptimum()) {
      const Vec2 offset = centre - m_best.centre;
      if (std::sqrt(Dot(offset, offset)) <= kSameCentre * m_best.outer) return;
    }
    const AnnulusExchange::Extremes extremes = m_exchange.ExtremesFrom(centre);
    m_best.end = AnnulusEnd::found;
    m_best.centre = centre;
    m_best.inner = extremes.inner;
    m_best.outer = extremes.outer;
    for (int k = 0; k < 2; ++k) {
      m_best.outerContact[k] = grid.InPlane(found.outerContact[k]);
      m_best.innerContact[k] = grid.InPlane(found.innerContact[k]);
    }
  }

  Annulus InCallersUnit() const {
    Annulus annulus = m_best;
    const double unit = 1.0 / m_points.Scale();  // a power of two
    annulus.centre = unit * annulus.centre;
    annulus.inner *= unit;
    annulus.outer *= unit;
    for (int k = 0; k < 2; ++k) {
      annulus.outerContact[k] = unit * annulus.outerContact[k];
      annulus.innerContact[k] = unit * annulus.innerContact[k];
    }
    return annulus;
  }

  PointBlocks& m_points;
  AnnulusExchange m_exchange;
  const Vec3 (&m_axes)[2];
  Annulus m_best;
};

}  // namespace

Annulus NarrowestAnnulus(PointBlocks& points, const Vec3 (&axes)[2], Vec2 start, long limit,
                         const StepMonitor& monitor) {
  return Search(points, axes).Run(start, limit, monitor);
}

}  // namespace nu::engine::minimax
