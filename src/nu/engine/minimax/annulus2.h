#ifndef NU_ENGINE_MINIMAX_ANNULUS2_H
#define NU_ENGINE_MINIMAX_ANNULUS2_H

#include "nu/engine/base/step_monitor.h"
#include "nu/engine/points/point_blocks.h"
#include "nu/engine/shapes/vec2.h"

namespace nu::engine::minimax {

enum class AnnulusEnd {
  found,
  limitReached,
  cancelled,  // by the monitor
  noOptimum,  // its centre is at infinity, or so far away that rounding hides it
  notFinite,
};

// The ring between two concentric circles that holds some points, with the points that determine it: seen from the
// centre, the chord between the directions of the outer contacts crosses that of the inner ones.
struct Annulus {
  AnnulusEnd end = AnnulusEnd::notFinite;
  Vec2 centre;
  double inner = 0.0;
  double outer = 0.0;
  Vec2 outerContact[2];
  Vec2 innerContact[2];
  bool certified = false;  // known to be the only one from a bound, without the search over all candidates
};

// The narrowest annulus, along two axes, relative to the origin of the blocks. None when a strip between parallel lines
// is narrower than any annulus, or when the centre is more than 2^24 sizes of the set away.
// `start` is a first guess of the centre, for example that of the least-squares circle; `limit` bounds the exchanges.
// The monitor sees them, and the rounds of a search where they are not enough: the width of the annulus about the
// present centre, and its distance from the last one. Of annuli whose widths agree to rounding the one with the least x
// of the centre, of these the one with the least y.
Annulus NarrowestAnnulus(PointBlocks& points, const Vec3 (&axes)[2], Vec2 start, long limit,
                         const StepMonitor& monitor = {});

}  // namespace nu::engine::minimax

#endif
