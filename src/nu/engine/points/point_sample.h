#ifndef NU_ENGINE_POINTS_POINT_SAMPLE_H
#define NU_ENGINE_POINTS_POINT_SAMPLE_H

#include <cstddef>
#include <memory>

#include "nu/engine/points/point_view.h"

namespace nu::engine::points {

// Start values ask for no more points than these: those of a larger set move by less than its noise. One point is taken
// from each of as many equal parts of the set, at a place that looks random: a regular step could always meet the same
// line of a scan.
class PointSample {
 public:
  static constexpr std::size_t kMostPoints = 2048;

  // Up to `most` points are seen where they lie. Throws std::bad_alloc.
  explicit PointSample(PointView points, std::size_t most = kMostPoints);

  PointView View() const { return m_view; }

 private:
  std::unique_ptr<double[]> m_copy;
  PointView m_view;
};

}  // namespace nu::engine::points

#endif
