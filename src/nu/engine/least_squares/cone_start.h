#ifndef NU_ENGINE_LEAST_SQUARES_CONE_START_H
#define NU_ENGINE_LEAST_SQUARES_CONE_START_H

#include "nu/engine/least_squares/cone_least_squares.h"

namespace nu::engine::least_squares {

// With so few points a wrong cone may pass close to all of them.
inline constexpr std::size_t kFewPoints = 14;

// Points count from both nappes where these leave at most this part of the sum of squares that one nappe leaves. Points
// just behind the apex are no second nappe.
inline constexpr double kBothNappes = 0.25;

// Finds the cone next to the points and leaves it in `fit`, which runs over the same points. False when the points are
// not finite or determine no quadric.
bool StartCone(PointBlocks& points, ConeLeastSquares& fit);

}  // namespace nu::engine::least_squares

#endif
