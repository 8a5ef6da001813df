#ifndef NU_ENGINE_MINIMAX_SPHERICAL_SHELL_H
#define NU_ENGINE_MINIMAX_SPHERICAL_SHELL_H

#include "nu/engine/minimax/minimax.h"

namespace nu::engine::minimax {

// The space between two concentric spheres that holds some points, and the points that hold it: the multipliers are not
// negative and add up to 1, those of the outer contacts (sign 1) to as much as those of the inner ones (sign -1), and
// so do their sums of multiplier * direction from the centre.
struct SphericalShell : Contacts {
  MinimaxEnd end = MinimaxEnd::stalled;
  long steps = 0;
  Vec3 centre;
  double inner = 0.0;
  double outer = 0.0;
};

// The thinnest shell next to a sphere, and not thicker than the one about its centre; a limit above 1000 is 1000. The
// mean of the points, the sphere and everything in the result are in the unit of the points, from the origin of the
// blocks.
SphericalShell ThinnestShell(PointBlocks& points, const Vec3& mean, const Vec3& centre, double radius, long limit,
                             const StepMonitor& monitor = {});

}  // namespace nu::engine::minimax

#endif
