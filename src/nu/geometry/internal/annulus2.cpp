#include "nu/geometry/internal/annulus2.h"

#include <algorithm>
#include <limits>

#include "nu/geometry/internal/annulus_exchange.h"
#include "nu/geometry/internal/annulus_overlay.h"
#include "nu/geometry/internal/grid2.h"

namespace nu::internal {
namespace {

Annulus InCallersUnit(Annulus annulus, double scale) {
  const double unit = 1.0 / scale;  // a power of two
  annulus.centre = unit * annulus.centre;
  annulus.inner *= unit;
  annulus.outer *= unit;
  for (int k = 0; k < 2; ++k) {
    annulus.outerContact[k] = unit * annulus.outerContact[k];
    annulus.innerContact[k] = unit * annulus.innerContact[k];
  }
  return annulus;
}

// From the grid to the unit of the blocks; the radii are those of the points as they are.
Annulus OffGrid(const GridAnnulus& found, const Grid2& grid, double scale, const AnnulusExchange& exchange) {
  Annulus annulus;
  annulus.end = AnnulusEnd::found;
  annulus.centre = scale * grid.InPlane(found.centre);
  for (int k = 0; k < 2; ++k) {
    annulus.outerContact[k] = scale * grid.InPlane(found.outerContact[k]);
    annulus.innerContact[k] = scale * grid.InPlane(found.innerContact[k]);
  }
  const AnnulusExchange::Extremes extremes = exchange.ExtremesFrom(annulus.centre);
  annulus.inner = extremes.inner;
  annulus.outer = extremes.outer;
  SetMultipliers(annulus);
  return annulus;
}

}  // namespace

Annulus NarrowestAnnulus(PointBlocks& points, const Vec3 (&axes)[2], Vec2 start, long limit) {
  AnnulusExchange exchange(points, axes);
  const AnnulusExchange::Outcome outcome = exchange.Run(points.Scale() * start, limit);
  Annulus next;
  if (outcome == AnnulusExchange::Outcome::limitReached) {
    next.end = AnnulusEnd::limitReached;
    return next;
  }
  const bool converged = outcome == AnnulusExchange::Outcome::converged;
  if (converged) next = InCallersUnit(exchange.Found(), points.Scale());
  if (next.certified) return next;

  const Grid2 grid = GridOf(points, axes);
  if (!grid.finite) return {};
  Annulus best = next;
  best.end = converged ? AnnulusEnd::found : AnnulusEnd::noOptimum;
  if (grid.points.size() < 3) return best;
  const double bound = converged ? (next.outer - next.inner) / grid.unit : std::numeric_limits<double>::infinity();
  const GridAnnulus found = NarrowestGridAnnulus(grid.points, bound);
  if (!found.found) return best;
  return InCallersUnit(OffGrid(found, grid, points.Scale(), exchange), points.Scale());
}

}  // namespace nu::internal
