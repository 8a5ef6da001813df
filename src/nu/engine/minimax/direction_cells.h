#ifndef NU_ENGINE_MINIMAX_DIRECTION_CELLS_H
#define NU_ENGINE_MINIMAX_DIRECTION_CELLS_H

#include <cmath>
#include <vector>

#include "nu/engine/points/box_tree.h"
#include "nu/engine/shapes/vec3.h"

namespace nu::engine::minimax {

// The directions along (u, v, 1), and the opposite ones, with u and v within limits; they are the components along the
// two axes after `axis`, in cyclic order, divided by that along `axis`. The three cells with limits -1 and 1 hold all
// directions: they are the pairs of opposite faces of a cube about the centre.
struct DirectionCell {
  int axis;
  double u[2], v[2];

  // Also what is beyond the border by less than `slack`.
  bool Holds(const Vec3& direction, double slack) const {
    const double c[] = {direction.x, direction.y, direction.z};
    const double s = c[(axis + 1) % 3] / c[axis], t = c[(axis + 2) % 3] / c[axis];
    return s > u[0] - slack && s < u[1] + slack && t > v[0] - slack && t < v[1] + slack;
  }
  bool PointsUp(const Vec3& direction) const {
    return (axis == 0 ? direction.x : axis == 1 ? direction.y : direction.z) > 0.0;
  }
};

// Points that may be the highest ones along some direction of a cell, in lists of fewer and fewer.
class HighPoints {
 public:
  // All points are the list {0, n}; their coordinates count from the first one. The sign -1 turns high and low round.
  HighPoints(const std::vector<IndexedPoint>& points, double sign);

  // From now on heights are along the directions of cells about this axis.
  void SetAxis(int axis) { m_axis = axis; }

  // A list is a range of places.
  struct List {
    std::size_t begin, end;
    std::size_t Size() const { return end - begin; }
  };
  // The number of the point at a place among all.
  std::size_t NumberAt(std::size_t place) const { return static_cast<std::size_t>(m_number[place]); }
  Vec3 At(std::size_t place) const { return {m_at[0][place], m_at[1][place], m_at[2][place]}; }
  // Of a place along (u, v, 1).
  double Height(std::size_t place, double u, double v) const { return (X()[place] * u + Z()[place]) + Y()[place] * v; }

  // The places of the highest points of a list along (u[k], v[k], 1).
  void FindHighest(const List& list, const double (&u)[4], const double (&v)[4], std::size_t (&place)[4]) const;
  // Appends those of a list that rise less than `slack` below the height of one of them, or above, somewhere in a cell:
  // at one of its corners, as heights are linear in u and v. Of points that coincide with that one it alone stays.
  List AppendHigh(const List& list, const DirectionCell& cell, std::size_t place, double slack);
  // Takes the last list away.
  void Drop(const List& list) { m_size = list.begin; }

 private:
  const double* X() const { return m_at[(m_axis + 1) % 3].data(); }
  const double* Y() const { return m_at[(m_axis + 2) % 3].data(); }
  const double* Z() const { return m_at[m_axis].data(); }
  void Reserve(std::size_t size);

  int m_axis = 0;
  std::size_t m_size = 0;
  std::vector<double> m_at[3];
  std::vector<int> m_number;
  std::vector<int> m_kept;
};

}  // namespace nu::engine::minimax

#endif
