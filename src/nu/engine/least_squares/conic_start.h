#ifndef NU_ENGINE_LEAST_SQUARES_CONIC_START_H
#define NU_ENGINE_LEAST_SQUARES_CONIC_START_H

#include "nu/engine/points/point_blocks.h"
#include "nu/engine/shapes/conic_equation.h"

namespace nu::engine::least_squares {

// A trigonometric polynomial of degree two has so many stationary angles.
inline constexpr int kMostAlgebraic = 4;
inline constexpr int kMostEven = 24;

// Conics near the points, and the frame of the points.
struct ConicStarts {
  ConicFrame frame;
  ConicEquation equation[kMostAlgebraic + kMostEven];
  int count = 0;
  double linear[3][3] = {};  // from a quadratic part in the whitened points to the best linear part

  // The quadratic part in the whitened points.
  void Add(const double (&q)[3]);
  // Quadratic parts with this ratio of the eigenvalues and axes in so many even directions.
  void AddEven(double ratio, int directions);
};

// The algebraic fits, the most likely one first: of all kinds for an ellipse or a hyperbola, parabolas for a parabola.
// Sets the scale of the blocks where their points need one. None for points that are not finite or are on one line.
template<class Curve>
ConicStarts AlgebraicFits(PointBlocks& points, const PlaneBasis& axes);

}  // namespace nu::engine::least_squares

#endif
