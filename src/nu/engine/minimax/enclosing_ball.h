#ifndef NU_ENGINE_MINIMAX_ENCLOSING_BALL_H
#define NU_ENGINE_MINIMAX_ENCLOSING_BALL_H

#include "nu/engine/minimax/contacts.h"
#include "nu/engine/points/point_blocks.h"

namespace nu::engine::minimax {

// The smallest ball around some points, with the points that determine it: the centre is the sum of multiplier *
// contact, the multipliers are not negative and add up to 1.
struct EnclosingBall : Contacts {
  static constexpr int kMostContacts = 4;

  bool found = false;  // false when a coordinate is not finite
  Vec3 centre;
  double radius = 0.0;
  std::size_t index[kMostContacts] = {};  // of the contacts among the points
};

enum class BallPrecision {
  full,
  quick,  // the centre and the multipliers may be off by more than roundings
};

// The smallest circle (D = 2) or sphere (D = 3) that encloses one point or more; everything in the result is in the
// unit of the points and along the axes given, from the origin of the blocks. A circle does not see what is across the
// plane of its two axes; its third components are 0.
template<int D>
EnclosingBall SmallestEnclosingBall(PointBlocks& points, const Vec3 (&axes)[D],
                                    BallPrecision precision = BallPrecision::full);

extern template EnclosingBall SmallestEnclosingBall<2>(PointBlocks&, const Vec3 (&)[2], BallPrecision);
extern template EnclosingBall SmallestEnclosingBall<3>(PointBlocks&, const Vec3 (&)[3], BallPrecision);

}  // namespace nu::engine::minimax

#endif
