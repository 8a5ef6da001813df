#ifndef NU_ENGINE_LEAST_SQUARES_CONIC_START_H
#define NU_ENGINE_LEAST_SQUARES_CONIC_START_H

#include "nu/engine/points/point_blocks.h"
#include "nu/engine/shapes/conic_equation.h"

namespace nu::engine::least_squares {

// A trigonometric polynomial of degree two has at most four stationary angles.
inline constexpr int kMostAlgebraic = 4;
inline constexpr int kMostEven = 24;

// Conics near the points, and the frame of the points.
struct ConicStarts {
  ConicFrame frame;
  ConicEquation equation[kMostAlgebraic + kMostEven];
  int count = 0;
  double linear[3][3] = {};  // from a quadratic part in the whitened points to the best linear part

  // `q` is the quadratic part in the whitened points.
  void Add(const double (&q)[3]);
  // Adds quadratic parts with this ratio of the eigenvalues; their axes are spread evenly over so many directions.
  void AddEven(double ratio, int directions);
};

// Finds the algebraic fits, the most likely one first: of all kinds for an ellipse or a hyperbola, parabolas for a
// parabola. Sets the scale of the blocks where their points need one. Points that are not finite or are on one line
// have no fits.
ConicStarts AlgebraicFits(ConicKind kind, PointBlocks& points, const PlaneAxes& axes);

}  // namespace nu::engine::least_squares

#endif
