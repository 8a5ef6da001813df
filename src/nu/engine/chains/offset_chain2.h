#ifndef NU_ENGINE_CHAINS_OFFSET_CHAIN2_H
#define NU_ENGINE_CHAINS_OFFSET_CHAIN2_H

#include <vector>

#include "nu/engine/chains/offset_raw2.h"

namespace nu::engine::chains {

struct OffsetChain {
  enum class Outcome { moved, vanished, foldsBack, broken, tangle };

  Outcome outcome = Outcome::broken;
  std::vector<std::vector<Piece2>> curves;  // of pieces, each of which starts where the one before it ends
};

// The points at the distance, above 0, to the right of a chain that are no closer to any other point of it; at sharp
// corners those of the tangents instead of the arcs. They may make up several curves: closed ones, and of a chain that
// is not closed also open ones, which come first.
//
// All pieces are moved and joined (offset_raw2), cut where they cross each other, and what is closer to the chain than
// the distance is left out (B. Choi, S. Park, Computer-Aided Design 31, 1999, for polygons): the rest falls into curves
// by itself. A chain that is not closed is taken as the closed one that runs there and back. Coordinates and the
// distance are about 1 at most; ends that are no farther apart than `tol` are one. About n log n, and more by the
// number of crossings, of which there are many where the distance is far above the radii of curvature.
OffsetChain OffsetPieces(const std::vector<Piece2>& chain, bool closed, double distance, OffsetCorner corner,
                         double tol);

}  // namespace nu::engine::chains

#endif
