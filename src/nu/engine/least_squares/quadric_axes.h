#ifndef NU_ENGINE_LEAST_SQUARES_QUADRIC_AXES_H
#define NU_ENGINE_LEAST_SQUARES_QUADRIC_AXES_H

#include "nu/engine/points/fourth_moments.h"

namespace nu::engine::least_squares {

// The axes of the quadric that fits a point set algebraically. The mathematics is at the top of the source.
struct QuadricAxes {
  bool solvable = false;
  Vec3 centre;   // from the mean of the points; of the centres of a cylinder the one nearest to it
  Vec3 axis[3];  // unit vectors; axis[0] belongs to the eigenvalue that stands apart from the other two
};

QuadricAxes FindQuadricAxes(const FourthMoments& moments);

}  // namespace nu::engine::least_squares

#endif
