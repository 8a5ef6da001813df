#ifndef NU_CURVES_INTERNAL_CONIC_START_H
#define NU_CURVES_INTERNAL_CONIC_START_H

#include "nu/curves/internal/conic_least_squares.h"

namespace nu::internal {

inline constexpr int kMostCandidates = 4;

// Conics of one kind that fit the points algebraically, in the unit of the blocks; returns how many there are. Sets the
// scale of the blocks where their points need one. None for points that are not finite or are on one line.
int AlgebraicFits(PointBlocks& points, const PlaneAxes& axes, PlacedConic<Ellipse2> (&fits)[kMostCandidates]);
int AlgebraicFits(PointBlocks& points, const PlaneAxes& axes, PlacedConic<Hyperbola2> (&fits)[kMostCandidates]);
int AlgebraicFits(PointBlocks& points, const PlaneAxes& axes, PlacedConic<Parabola2> (&fits)[kMostCandidates]);

}  // namespace nu::internal

#endif
