#include "nu/engine/chains/piece2.h"

#include <utility>

#include "nu/engine/base/elementary.h"
#include "nu/foundation/constants.h"

namespace nu::engine::chains {

namespace {

// Newton's method for the point on both unbounded curves; the heights are about distances and their gradients normals.
Vec2 Refined(const Piece2& first, const Piece2& second, Vec2 p) {
  constexpr int kSteps = 2;
  constexpr double kLeastSine = 1e-12;  // below it the step would be noise
  for (int i = 0; i < kSteps; ++i) {
    const Vec2 m = Perpendicular(first.DirectionAt(first.ParameterOf(p)));
    const Vec2 n = Perpendicular(second.DirectionAt(second.ParameterOf(p)));
    const double det = Cross(m, n);
    if (!(std::fabs(det) > kLeastSine)) break;
    const double a = first.HeightOf(p);
    const double b = second.HeightOf(p);
    p = p - (1.0 / det) * Vec2{a * n.y - b * m.y, b * m.x - a * n.x};
  }
  return p;
}

void Add(const Piece2& first, const Piece2& second, Vec2 about, double rounding, Crossings2& found) {
  constexpr double kLargestSlack = 1e-7;  // of coordinates of about 1
  constexpr double kRoundings = 100.0;
  const Vec2 p = Refined(first, second, about);
  const double s = first.ParameterOf(p);
  const double t = second.ParameterOf(p);
  const double sine = Cross(first.DirectionAt(s), second.DirectionAt(t));
  const double slack = std::min(rounding / std::fabs(sine), kLargestSlack);
  if (!(s >= -slack && s <= first.length + slack && t >= -slack && t <= second.length + slack)) return;
  // An end that is not the crossing to the last digit may be one where the other piece passes as close as roundings.
  const double onFirst = std::clamp(s, 0.0, first.length);
  const Vec2 end = first.At(onFirst);
  const double onSecond = std::clamp(onFirst == s ? t : second.ParameterOf(end), 0.0, second.length);
  if (!(Norm(second.At(onSecond) - end) <= kRoundings * rounding)) return;
  found.at[found.count++] = {onFirst, onSecond, sine};
}

Crossings2 CrossLines(const Piece2& first, const Piece2& second, double rounding) {
  Crossings2 found;
  const double sine = Cross(first.direction, second.direction);
  if (!(std::fabs(sine) > rounding)) return found;
  const double s = Cross(second.start - first.start, second.direction) / sine;
  Add(first, second, first.start + s * first.direction, rounding, found);
  return found;
}

// The difference of the two equations, in u = p - second.start, with the second one's curvature not the smaller:
// g.u + c = 0, the radical line. With u = u0 + t e along it the second equation is k/2 t^2 - (e.n) t + r = 0.
Crossings2 CrossCurved(const Piece2& first, const Piece2& second, double rounding) {
  Crossings2 found;
  const Vec2 delta = second.start - first.start;
  const Vec2 m = Perpendicular(first.direction);
  const Vec2 n = Perpendicular(second.direction);
  const double ratio = first.curvature / second.curvature;
  const Vec2 g = m - first.curvature * delta - ratio * n;
  const double c = Dot(delta, m) - 0.5 * first.curvature * Dot(delta, delta);
  const double size = Norm(g);
  if (!(size > rounding)) return found;
  const Vec2 u0 = (-c / (size * size)) * g;
  const Vec2 e = (1.0 / size) * Perpendicular(g);
  const double k = second.curvature;
  const double b = Dot(e, n);
  const double r = 0.5 * k * Dot(u0, u0) - Dot(u0, n);
  const double square = b * b - 2.0 * k * r;
  if (!(square >= 0.0)) return found;
  const double q = b + std::copysign(std::sqrt(square), b);
  Add(first, second, second.start + u0 + (q / k) * e, rounding, found);
  if (q != 0.0) Add(first, second, second.start + u0 + (2.0 * r / q) * e, rounding, found);
  return found;
}

}  // namespace

Vec2 Rotated(Vec2 v, double angle) {
  const auto [sine, cosine] = SinCos(angle);
  return cosine * v + sine * Perpendicular(v);
}

Vec2 Piece2::At(double s) const {
  if (s == length) return end;
  const double half = 0.5 * curvature * s;
  if (half == 0.0) return start + s * direction;
  return start + (s * Sin(half) / half) * Rotated(direction, half);
}

double Piece2::ParameterOf(Vec2 p) const {
  const Vec2 w = p - start;
  const double along = Dot(w, direction);
  if (curvature == 0.0) return along;
  const double turn = Atan2(curvature * along, 1.0 - curvature * Dot(w, Perpendicular(direction)));
  const double s = turn / curvature;
  if (s >= 0.0) return s;
  const double around = s + Nu_2PI / std::fabs(curvature);
  return around - length < -s ? around : s;
}

double Piece2::HeightOf(Vec2 p) const {
  const Vec2 w = p - start;
  const double height = Dot(w, Perpendicular(direction));
  if (curvature == 0.0) return height;
  const double square = curvature * curvature * Dot(w, w) + 1.0 - 2.0 * curvature * height;
  return (2.0 * height - curvature * Dot(w, w)) / (1.0 + std::sqrt(std::max(square, 0.0)));
}

double Piece2::DistanceTo(Vec2 p) const {
  const double s = ParameterOf(p);
  if (s >= 0.0 && s <= length) return std::fabs(HeightOf(p));
  return std::min(Norm(p - start), Norm(p - end));
}

Vec2 Piece2::ClosestTo(Vec2 p) const {
  const double s = ParameterOf(p);
  if (s >= 0.0 && s <= length) return At(s);
  return Norm(p - start) < Norm(p - end) ? start : end;
}

// At an end, or opposite to the closest point of the circle.
double Piece2::ReachFrom(Vec2 p) const {
  const double atEnds = std::max(Norm(p - start), Norm(p - end));
  if (curvature == 0.0) return atEnds;
  const double half = Nu_PI / std::fabs(curvature);
  const double s = ParameterOf(p);
  const double opposite = s < half ? s + half : s - half;
  return opposite > 0.0 && opposite < length ? std::max(atEnds, Norm(p - At(opposite))) : atEnds;
}

Piece2 Piece2::Offset(double distance) const {
  const double factor = OffsetFactor(distance);
  return {start - distance * Perpendicular(direction), end - distance * Perpendicular(EndDirection()), direction,
          curvature / factor, length * factor};
}

Piece2 SegmentBetween(Vec2 start, Vec2 end) {
  const double length = Norm(end - start);
  return {start, end, (1.0 / length) * (end - start), 0.0, length};
}

// The ends, and where an arc runs along an axis.
Box2 BoxOf(const Piece2& piece) {
  Box2 box;
  box.Include(piece.start);
  box.Include(piece.end);
  if (piece.curvature == 0.0) return box;
  const double quarter = 0.5 * Nu_PI;
  const double heading = Atan2(piece.direction.y, piece.direction.x) / quarter;
  const double turn = piece.curvature * piece.length / quarter;
  const double from = std::min(heading, heading + turn);
  constexpr int kMostQuarters = 5;  // of a turn, both ends included
  for (int i = 0; i < kMostQuarters; ++i) {
    const double k = std::ceil(from) + i;
    if (!(k <= from + std::fabs(turn))) break;
    box.Include(piece.At((k - heading) * quarter / piece.curvature));
  }
  return box;
}

Crossings2 Cross(const Piece2& first, const Piece2& second, double rounding) {
  if (first.curvature == 0.0 && second.curvature == 0.0) return CrossLines(first, second, rounding);
  if (std::fabs(first.curvature) <= std::fabs(second.curvature)) return CrossCurved(first, second, rounding);
  Crossings2 found = CrossCurved(second, first, rounding);
  for (int i = 0; i < found.count; ++i) {
    std::swap(found.at[i].onFirst, found.at[i].onSecond);
    found.at[i].sine = -found.at[i].sine;
  }
  return found;
}

}  // namespace nu::engine::chains
