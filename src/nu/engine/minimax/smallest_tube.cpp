#include "nu/engine/minimax/smallest_tube.h"

#include "nu/engine/base/floating_point.h"
#include "nu/engine/points/fourth_moments.h"

namespace nu::engine::minimax {
namespace {

// The errors of a distance, in units of those of the farthest point.
constexpr double kRoundings = 8.0;

// Tubes thicker than this, in units of the spread of the points along their middle principal axis, are searched for
// from other starts, too. Of few points a thin one may not be the thinnest either.
constexpr double kClear = 0.5;
constexpr double kClearOfFew = 0.3;
constexpr std::size_t kFewPoints = 24;

// A circle around the middle of the points has no side where they are.
constexpr double kCentred = 0.1;

// Circles and lines near the points, from their moments alone.
class StartTubes {
 public:
  StartTubes(const FourthMoments& moments, double reach) : m_moments(moments), m_reach(reach) {}

  // The circle that fits the projections along a direction of the principal frame algebraically: of their squared
  // distances from the mean, seen as a linear function of the projections, the line of regression gives twice the
  // centre (I. Kasa, IEEE Trans. Instrumentation and Measurement 25, 1976).
  TubeDistance CircleAcross(const Vec3& direction) const {
    const AxisFrame f = AxisFrame::Along({}, direction);
    const double uu = Second(f.x, f.x);
    const double uv = Second(f.x, f.y);
    const double vv = Second(f.y, f.y);
    const double u = Third(f.x, f.x, f.x) + Third(f.x, f.y, f.y);
    const double v = Third(f.y, f.x, f.x) + Third(f.y, f.y, f.y);
    const double determinant = 2.0 * (uu * vv - uv * uv);
    Vec3 centre = ((u * vv - v * uv) / determinant) * f.x + ((v * uu - u * uv) / determinant) * f.y;
    if (!IsFinite(centre)) centre = {};
    const double radius = std::sqrt(Dot(centre, centre) + uu + vv);
    const bool isCentred = Dot(centre, centre) < kCentred * kCentred * radius * radius;
    const Vec3 outwards = isCentred ? f.x : Unit(-1.0 * centre);
    return Place(AxisFrame::Along(centre + radius * outwards, f.z, outwards), 1.0 / radius);
  }

  // Along a principal axis, x, y or z.
  TubeDistance LineAlong(const Vec3& axis) const {
    const Vec3 across{axis.y, axis.z, axis.x};
    return Place({{}, across, axis, Cross(across, axis)}, 0.0);
  }

 private:
  TubeDistance Place(const AxisFrame& f, double bend) const {
    // The principal axes may be left-handed.
    const Vec3 origin = m_moments.mean + m_moments.Along(f.origin);
    const AxisFrame placed = AxisFrame::Along(origin, m_moments.Along(f.z), m_moments.Along(f.x));
    return {placed, bend, m_reach + std::sqrt(Dot(f.origin, f.origin))};
  }

  Vec3 Spread(const Vec3& v) const {
    return {v.x * m_moments.spread[0], v.y * m_moments.spread[1], v.z * m_moments.spread[2]};
  }
  double Second(const Vec3& a, const Vec3& b) const { return Dot(Spread(a), Spread(b)); }

  // The mean of (a . q) (b . q) (c . q).
  double Third(const Vec3& a, const Vec3& b, const Vec3& c) const {
    const Vec3 u = Spread(a);
    const Vec3 v = Spread(b);
    const Vec3 w = Spread(c);
    const FourthMoments& m = m_moments;
    const Vec3 vx{m.Of(3, 0, 0) * v.x + m.Of(2, 1, 0) * v.y + m.Of(2, 0, 1) * v.z,
                  m.Of(2, 1, 0) * v.x + m.Of(1, 2, 0) * v.y + m.Of(1, 1, 1) * v.z,
                  m.Of(2, 0, 1) * v.x + m.Of(1, 1, 1) * v.y + m.Of(1, 0, 2) * v.z};
    const Vec3 vy{vx.y, m.Of(1, 2, 0) * v.x + m.Of(0, 3, 0) * v.y + m.Of(0, 2, 1) * v.z,
                  m.Of(1, 1, 1) * v.x + m.Of(0, 2, 1) * v.y + m.Of(0, 1, 2) * v.z};
    const Vec3 vz{vx.z, vy.z, m.Of(1, 0, 2) * v.x + m.Of(0, 1, 2) * v.y + m.Of(0, 0, 3) * v.z};
    return u.x * Dot(vx, w) + u.y * Dot(vy, w) + u.z * Dot(vz, w);
  }

  const FourthMoments& m_moments;
  double m_reach;
};

// In the principal frame.
template<class Visit>
void ForFurtherStarts(const StartTubes& starts, Visit visit) {
  constexpr Vec3 kAxes[] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
  constexpr Vec3 kAcross[] = {{1.0, 0.0, 0.0},  {0.0, 1.0, 0.0},  {1.0, 1.0, 1.0}, {-1.0, 1.0, 1.0},
                              {1.0, -1.0, 1.0}, {1.0, 1.0, -1.0}, {1.0, 1.0, 0.0}, {-1.0, 1.0, 0.0},
                              {1.0, 0.0, 1.0},  {-1.0, 0.0, 1.0}, {0.0, 1.0, 1.0}, {0.0, -1.0, 1.0}};
  for (const Vec3& axis : kAxes) visit(starts.LineAlong(axis));
  for (const Vec3& direction : kAcross) visit(starts.CircleAcross(Unit(direction)));
}

Tube CircleThrough(const Vec3& p, const Vec3& q, const Vec3& r) {
  const Vec3 a = q - p;
  const Vec3 b = r - p;
  const Vec3 normal = Cross(a, b);
  const Vec3 centre = (0.5 / Dot(normal, normal)) * Cross(Dot(a, a) * b - Dot(b, b) * a, normal);
  const double radius = std::sqrt(Dot(centre, centre));
  const Vec3 outwards = (-1.0 / radius) * centre;
  Tube tube;
  tube.solution.end = MinimaxEnd::converged;
  tube.solution.model = {AxisFrame::Along(p, Unit(normal), outwards), 1.0 / radius,
                         std::sqrt(std::max(Dot(a, a), Dot(b, b)))};
  tube.isClear = true;
  return tube;
}

Tube CircleThroughAll(PointBlocks& three) {
  Tube tube;
  if (!three.FitScale()) return tube;
  three.ForEach([&](const PointBlock& b) { tube = CircleThrough(b.At(0), b.At(1), b.At(2)); });
  return tube;
}

}  // namespace

Tube SmallestTube(PointBlocks& points, TubeStarts starts, long limit, const StepMonitor& monitor) {
  if (points.Size() == 3) return CircleThroughAll(points);
  const FourthMoments moments = FindFourthMoments(points);
  Tube best;
  if (!moments.finite) return best;
  const double reach = FarthestFrom(points, moments.mean);
  const double rounding = kRoundings * kEpsilon * reach;
  const StartTubes start(moments, reach);
  Minimax<TubeDistance> minimax(points, MinimaxSide::outer, rounding, limit, monitor);
  best.solution = minimax.Solve(start.CircleAcross({0.0, 0.0, 1.0}));
  const bool converged = best.solution.end == MinimaxEnd::converged;
  const double clear = points.Size() > kFewPoints ? kClear : kClearOfFew;
  best.isClear = converged && best.solution.value < clear * moments.spread[1];
  const bool isOver = best.solution.end == MinimaxEnd::limitReached || best.solution.end == MinimaxEnd::cancelled;
  if (best.isClear || starts == TubeStarts::one || isOver) return best;
  double least = converged ? best.solution.value - rounding : kInfinity;
  ForFurtherStarts(start, [&](const TubeDistance& from) {
    const MinimaxSolution<TubeDistance> other = minimax.Improve(from, least);
    if (other.end == MinimaxEnd::cancelled) best.solution.end = other.end;
    if (other.end != MinimaxEnd::converged || !(other.value < least)) return;
    best.solution = other;
    least = other.value - rounding;
  });
  return best;
}

}  // namespace nu::engine::minimax
