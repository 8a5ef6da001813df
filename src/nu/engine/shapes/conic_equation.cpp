#include "nu/engine/shapes/conic_equation.h"

namespace nu::engine::shapes {
namespace {

ConicShape ParabolaOf(const ConicEquation& g, const ConicCurvature& curvature) {
  const Vec2 axis = Perpendicular(curvature.axis);
  const double across = Dot({g.at[3], g.at[4]}, curvature.axis);
  const double along = Dot({g.at[3], g.at[4]}, axis);
  const double t = -across / curvature.steep;
  const double s = -(g.at[5] + 0.5 * across * t) / along;
  const double latus = -2.0 * along / curvature.steep;
  const Vec2 vertex = t * curvature.axis + s * axis;
  if (!(std::fabs(latus) > 0.0) || !std::isfinite(vertex.x) || !std::isfinite(vertex.y)) return {};
  return {ConicKind::parabola, 0.25 * std::fabs(latus), 0.0, vertex, latus > 0.0 ? axis : -1.0 * axis};
}

}  // namespace

// One rotation (C. G. J. Jacobi).
ConicCurvature CurvatureOf(const ConicEquation& g) {
  const double xx = 2.0 * g.at[0];
  const double xy = g.at[1];
  const double yy = 2.0 * g.at[2];
  double tangent = 0.0;
  if (xy != 0.0) {
    const double cotangent = 0.5 * (yy - xx) / xy;
    tangent = std::copysign(1.0, cotangent) / (std::fabs(cotangent) + std::sqrt(1.0 + cotangent * cotangent));
  }
  const double cosine = 1.0 / std::sqrt(1.0 + tangent * tangent);
  const double sine = tangent * cosine;
  const double first = xx - tangent * xy;
  const double second = yy + tangent * xy;
  if (std::fabs(first) > std::fabs(second)) return {{cosine, -sine}, first, second};
  return {{sine, cosine}, second, first};
}

ConicShape ShapeOf(const ConicEquation& g, const ConicCurvature& curvature, double farthest) {
  const Vec2 other = Perpendicular(curvature.axis);
  const double first = Dot({g.at[3], g.at[4]}, curvature.axis);
  const double second = Dot({g.at[3], g.at[4]}, other);
  const Vec2 centre{-first / curvature.steep, -second / curvature.gentle};
  if (!(std::fabs(centre.y) <= farthest)) return ParabolaOf(g, curvature);
  const double value = g.at[5] + 0.5 * (first * centre.x + second * centre.y);
  const double a = -2.0 * value / curvature.steep;
  const double b = -2.0 * value / curvature.gentle;
  const Vec2 origin = centre.x * curvature.axis + centre.y * other;
  if (!std::isfinite(origin.x) || !std::isfinite(origin.y)) return {};
  if (a > 0.0 && b > 0.0) return {ConicKind::ellipse, std::sqrt(b), std::sqrt(a), origin, other};
  if (a > 0.0 && b < 0.0) return {ConicKind::hyperbola, std::sqrt(a), std::sqrt(-b), origin, curvature.axis};
  if (a < 0.0 && b > 0.0) return {ConicKind::hyperbola, std::sqrt(b), std::sqrt(-a), origin, other};
  return {};
}

Vec2 FootOn(const ConicShape& shape, Vec2 p) {
  const Vec2 across = Perpendicular(shape.axis);
  const Vec2 own{Dot(p - shape.origin, shape.axis), Dot(p - shape.origin, across)};
  Vec2 foot;
  switch (shape.kind) {
    case ConicKind::ellipse:
      foot = FootOn(Ellipse2{shape.a, shape.b}, own);
      break;
    case ConicKind::hyperbola:
      foot = FootOn(Hyperbola2{shape.a, shape.b}, own);
      break;
    default:
      foot = FootOn(Parabola2{shape.a}, own);
  }
  return shape.origin + foot.x * shape.axis + foot.y * across;
}

}  // namespace nu::engine::shapes
