#ifndef NU_GEOMETRY_INTERNAL_AXIS_CANDIDATES_H
#define NU_GEOMETRY_INTERNAL_AXIS_CANDIDATES_H

#include "nu/geometry/internal/axis_frame.h"
#include "nu/geometry/internal/point_blocks.h"

namespace nu::internal {

// The axis of a cylinder that is not far from a small one around some points.
struct AxisCandidate {
  AxisFrame frame;
  double half = 0.0;    // of the length of the points along it
  double radius = 0.0;  // of the smallest cylinder along it around the outline of the points: at least that
};

// Where else a smallest cylinder around points may be, once one is known: its radius, and the frame from which it was
// found, with z along its axis or nearly. Directions in a cap about z are judged by some of the points, the farthest
// along many directions; those are kept that no neighbour betters, unless they are so wide that nothing around them can
// be smaller than what is known.
class AxisCandidates {
 public:
  AxisCandidates(PointBlocks& points, const AxisFrame& frame, double half, double reach, double radius);

  // The narrowest first.
  const AxisCandidate* begin() const { return m_list; }
  const AxisCandidate* end() const { return m_list + m_count; }

 private:
  static constexpr int kMost = 8;
  static constexpr int kDirections = 64;

  int m_count = 0;
  AxisCandidate m_list[kDirections];
};

}  // namespace nu::internal

#endif
