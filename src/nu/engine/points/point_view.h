#ifndef NU_ENGINE_POINTS_POINT_VIEW_H
#define NU_ENGINE_POINTS_POINT_VIEW_H

#include <cstddef>

#include "nu/engine/rooms.h"

namespace nu::engine::points {

// A read-only view of points that lie at a fixed distance in memory, three coordinates in a row each: an array of
// points read in place, or a packed copy. It owns nothing and is passed by value.
class PointView {
 public:
  PointView() = default;
  // first: the x coordinate of point 0 (unused when count is 0); strideBytes: from one point's x to the next one's.
  PointView(const double* first, std::size_t strideBytes, std::size_t count)
      : m_first(reinterpret_cast<const char*>(first)), m_stride(strideBytes), m_count(count) {}

  std::size_t Size() const { return m_count; }
  // x, y, z of point i; no bounds test.
  const double* operator[](std::size_t i) const { return reinterpret_cast<const double*>(m_first + i * m_stride); }
  // count points from point begin on.
  PointView Part(std::size_t begin, std::size_t count) const {
    PointView part = *this;
    part.m_first += begin * m_stride;
    part.m_count = count;
    return part;
  }

 private:
  const char* m_first = nullptr;
  std::size_t m_stride = 3 * sizeof(double);
  std::size_t m_count = 0;
};

}  // namespace nu::engine::points

#endif
