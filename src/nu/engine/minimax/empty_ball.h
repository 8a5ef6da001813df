#ifndef NU_ENGINE_MINIMAX_EMPTY_BALL_H
#define NU_ENGINE_MINIMAX_EMPTY_BALL_H

#include "nu/engine/base/step_monitor.h"
#include "nu/engine/minimax/contacts.h"
#include "nu/engine/points/point_blocks.h"

namespace nu::engine::minimax {

// A ball with no point in its interior that cannot grow by a small move of its centre, with the points that hold it:
// the centre is the sum of multiplier * contact, the multipliers are not negative and add up to 1.
struct EmptyBall : Contacts {
  bool found = false;
  Vec3 centre;
  double radius = 0.0;
};

// The empty ball to which one about the mean of the points grows; the mean and everything in the result is in the
// unit of the points, from the origin of the blocks. Not found: there is none, as on a cap, out of which it grows for
// ever; or more than `limit` steps; or a coordinate is not finite; or the monitor says stop,
// which sees minus the radius. Throws std::bad_alloc.
EmptyBall GrowEmptyBall(PointBlocks& points, const Vec3& mean, long limit, const StepMonitor& monitor = {});

}  // namespace nu::engine::minimax

#endif
