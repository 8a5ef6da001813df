#ifndef NU_ENGINE_POINTS_EXTENTS_H
#define NU_ENGINE_POINTS_EXTENTS_H

#include "nu/engine/points/box_tree.h"
#include "nu/engine/points/point_view.h"

namespace nu::engine::points {

struct Extents {
  Box box;
  // All coordinates are finite. The sides of the box may still overflow.
  bool isFinite;

  // The longest side.
  double Side() const {
    return std::max({box.high[0] - box.low[0], box.high[1] - box.low[1], box.high[2] - box.low[2]});
  }
};

// The least and the greatest coordinates of one point or more. NaN coordinates are passed over unless point 0 has them.
Extents ExtentsOf(const PointView& points);

// The largest power of two not above 1 / size, in the normal range: with it lengths of up to `size` can be squared.
double ScaleFor(double size);

}  // namespace nu::engine::points

#endif
