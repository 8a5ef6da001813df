#ifndef NU_ENGINE_POINTS_COINCIDENCE_H
#define NU_ENGINE_POINTS_COINCIDENCE_H

#include <cmath>
#include <vector>

#include "nu/engine/points/point_view.h"

// Points coincide when each coordinate differs by strictly less than a tolerance: a box test. It is not transitive, so
// the order in which points are taken matters.
namespace nu::engine::points {

inline bool Coincide(const double* p, const double* q, double tol) {
  return std::fabs(p[0] - q[0]) < tol && std::fabs(p[1] - q[1]) < tol && std::fabs(p[2] - q[2]) < tol;
}

// The points, in order, that coincide with none kept before them.
std::vector<int> WithoutCoincident(const PointView& points, double tol);

// Whether every one of `points` coincides with one of `others`.
bool AllCoincide(const PointView& points, const PointView& others, double tol);

// Whether at least `count` points, taken in order, have an EdgeLength of at least `distance` to all taken before them.
bool HasDistinct(const PointView& points, int count, double distance, double zero);

}  // namespace nu::engine::points

#endif
