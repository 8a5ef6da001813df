#ifndef NU_ENGINE_SHAPES_CONIC_EQUATION_H
#define NU_ENGINE_SHAPES_CONIC_EQUATION_H

#include "nu/engine/shapes/conics.h"

// Conics of any kind, as a fit moves them: by the coefficients of their equation in a frame that fits the points.
namespace nu::engine::shapes {

// The origin is the mean of the points, x the direction of their largest spread. In units of that spread they extend by
// about 1 along x and by the flatness along y.
struct ConicFrame : PlaneAxes {
  double unit = 1.0;
  double flatness = 1.0;
};

// The curve a x^2 + b x y + c y^2 + d x + e y + f = 0; the order of the coefficients is that of the monomials.
inline constexpr int kMonomials = 6;
struct ConicEquation {
  double at[kMonomials] = {};
};

// Where the second derivatives of the equation are diagonal: `steep`, the one of larger size, along `axis`, `gentle`
// across it. A parabola has none across, and its axis is there.
struct ConicCurvature {
  Vec2 axis;
  double steep = 0.0;
  double gentle = 0.0;
};

ConicCurvature CurvatureOf(const ConicEquation& g);

enum class ConicKind { none, ellipse, hyperbola, parabola };

// A conic as the classes of the conics have it, in the frame of its equation.
struct ConicShape {
  ConicKind kind = ConicKind::none;
  double a = 0.0;  // the focal length of a parabola
  double b = 0.0;
  Vec2 origin;
  Vec2 axis;
};

// None for lines and for what has no points. A centre farther away than `farthest` is that of a parabola.
ConicShape ShapeOf(const ConicEquation& g, const ConicCurvature& curvature, double farthest);

// The closest point of the conic.
Vec2 FootOn(const ConicShape& shape, Vec2 p);

}  // namespace nu::engine::shapes

#endif
