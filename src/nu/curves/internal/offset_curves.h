#ifndef NU_CURVES_INTERNAL_OFFSET_CURVES_H
#define NU_CURVES_INTERNAL_OFFSET_CURVES_H

#include <vector>

#include "nu/engine/chains/piece_chain.h"

namespace nu::internal {

// The curves of which the offset of a chain consists, at a distance to its right, seen from the tip of the unit normal.
// Shape 0 has sharp corners, 1 round ones. Failures are those of CNuCompositeCurve::Offset, but for those that say how
// many curves there are.
std::vector<PieceChain> OffsetCurves(const PieceChain& chain, double distance, Vec3 normal, int shape,
                                     const char* where);

// The only one. None: cause 28, "Offset"; several: cause 30.
PieceChain OneOffset(const PieceChain& chain, double distance, Vec3 normal, int shape, const char* where);

}  // namespace nu::internal

#endif
