#ifndef NU_ENGINE_MINIMAX_ROUND_MINIMAX_H
#define NU_ENGINE_MINIMAX_ROUND_MINIMAX_H

#include "nu/engine/base/floating_point.h"
#include "nu/engine/points/point_blocks.h"
#include "nu/engine/shapes/axis_frame.h"
#include "nu/engine/shapes/incidence.h"
#include "nu/engine/shapes/least_bend.h"

// What the minimax problems of round surfaces share.
namespace nu::engine::minimax {

// The errors of a distance, in units of the farthest one.
inline constexpr double kDistanceRoundings = 4.0;

// A zone and the form of a least-squares feature that differ by so many errors of a distance may be the same.
inline constexpr double kFormRoundings = 16.0;

// Of a search for a zone. No optimum of some thousand random sets took more steps; what creeps on leads to a plane.
inline constexpr long kMostZoneSteps = 600;

// And from one of many further starts.
inline constexpr long kMostTrialSteps = 120;

// What a step out of the ball that may hold the centre or axis leads to: no step is taken whose deviations are NaN.
inline constexpr Vec3 kNowhere{kQuietNaN, kQuietNaN, kQuietNaN};

// The points nearest to a centre and farthest from it; of several at one distance the first.
struct NearAndFar {
  Vec3 nearest;
  Vec3 farthest;
  double least = 0.0;
  double greatest = 0.0;  // not finite when a coordinate is not, or a square overflows
};
NearAndFar NearAndFarFrom(PointBlocks& points, const Vec3& centre);

// A problem in the unit of the blocks, whose distances can be squared.
struct ScaledProblem {
  bool isFinite = false;  // all coordinates are; else nothing else has a meaning
  Vec3 mean;
  NearAndFar seen;        // from the mean
  double rounding = 0.0;  // of a distance
  double scale = 1.0;     // of the blocks
};

// Keeps the blocks and sets their scale. The mean of the points is in their own unit, from the origin of the blocks.
ScaledProblem Prepared(PointBlocks& points, const Vec3& mean);

// A frame that turns with the points: what is found in it does, too. Its z is along `direction`, which is not zero, and
// its x as near to `across` as it can be; where that is hardly different from z, the coordinate axes give x.
AxisFrame FrameAlong(const Vec3& origin, const Vec3& direction, const Vec3& across);

// The cell of a direction on the faces of a cube, each divided in four.
inline constexpr int kDirectionCells = 24;
int DirectionCell(const Vec3& v);

}  // namespace nu::engine::minimax

#endif
