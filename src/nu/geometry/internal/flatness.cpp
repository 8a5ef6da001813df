#include "nu/geometry/internal/flatness.h"

#include "nu/geometry/internal/lanes.h"

namespace nu::internal {
namespace {

// `blind` is 0 or, when a coordinate is not finite, NaN.
NU_KERNEL void Survey(const PointBlock& block, double& least, double& greatest, double& blind) {
  Lanes low, high;
  Load(block.z, low);
  high = low;
  Lanes lost = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes x, y, z;
    Load(block.x + i, x);
    Load(block.y + i, y);
    Load(block.z + i, z);
    low = z < low ? z : low;
    high = z > high ? z : high;
    lost += (x - x) + (y - y) + (z - z);
  }
  least = Smallest(low);
  greatest = Largest(high);
  blind = Sum(lost);
}

}  // namespace

Flatness FlatnessOf(PointBlocks& points) {
  Flatness found{true, true};
  points.ForEach([&](const PointBlock& block) {
    double least, greatest, blind;
    Survey(block, least, greatest, blind);
    found.finite = found.finite && blind == 0.0;
    // Relative to a point of the set, equal heights are 0.
    found.flat = found.flat && least == 0.0 && greatest == 0.0;
  });
  if (!found.finite) found.finite = points.AllFinite();
  return found;
}

}  // namespace nu::internal
