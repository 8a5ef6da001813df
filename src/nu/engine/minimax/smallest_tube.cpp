#include "nu/engine/minimax/smallest_tube.h"

#include "nu/engine/base/floating_point.h"
#include "nu/engine/points/fourth_moments.h"
#include "nu/engine/shapes/incidence.h"

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
    const auto [centre, radius] = RingAcross(f);
    const bool isCentred = Dot(centre, centre) < kCentred * kCentred * radius * radius;
    const Vec3 outwards = isCentred ? f.x : Unit(-1.0 * centre);
    return Place(AxisFrame::Along(centre + radius * outwards, f.z, outwards), 1.0 / radius);
  }

  // Half as large as that again, and off the mean by half its radius towards `outwards`, across the direction.
  TubeDistance CircleBeside(const Vec3& direction, const Vec3& outwards) const {
    const double radius = RingAcross(AxisFrame::Along({}, direction)).radius;
    return Place(AxisFrame::Along(0.5 * radius * outwards, direction, outwards), 1.0 / (1.5 * radius));
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

  struct Ring {
    Vec3 centre;
    double radius;
  };
  Ring RingAcross(const AxisFrame& f) const {
    const double uu = Second(f.x, f.x);
    const double uv = Second(f.x, f.y);
    const double vv = Second(f.y, f.y);
    const double u = Third(f.x, f.x, f.x) + Third(f.x, f.y, f.y);
    const double v = Third(f.y, f.x, f.x) + Third(f.y, f.y, f.y);
    const double determinant = 2.0 * (uu * vv - uv * uv);
    Vec3 centre = ((u * vv - v * uv) / determinant) * f.x + ((v * uu - u * uv) / determinant) * f.y;
    if (!IsFinite(centre)) centre = {};
    return {centre, std::sqrt(Dot(centre, centre) + uu + vv)};
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

// Whether the points reach so far around that circles near them are not all alike, as they are beside a rod.
bool IsBent(const TubeDistance& tube) {
  constexpr double kBent = 0.02;
  return tube.bend * tube.half > kBent;
}

// Whether the points are those of a torus: all of them next to the surface of the tube.
bool IsHollow(const MinimaxSolution<TubeDistance>& tube) {
  constexpr double kHollow = 0.1;
  return tube.range < kHollow * tube.value;
}

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

template<class Visit>
void ForStartsBeside(const StartTubes& starts, Visit visit) {
  constexpr Vec3 kAxes[] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
  for (int k = 0; k < 3; ++k) {
    for (const Vec3& side : {kAxes[(k + 1) % 3], kAxes[(k + 2) % 3]}) {
      visit(starts.CircleBeside(kAxes[k], side));
      visit(starts.CircleBeside(kAxes[k], -1.0 * side));
    }
  }
}

// Circles next to one, about the same centre: tilted to four sides, smaller and larger.
template<class Visit>
void ForStartsAround(const TubeDistance& tube, Visit visit) {
  constexpr double kTilts[] = {0.36, 0.84};  // the tangents of 20 and 40 degrees
  constexpr double kSizes[] = {0.8, 1.25};
  const AxisFrame& f = tube.frame;
  const Vec3 centre = f.origin - tube.Radius() * f.x;
  for (const double tilt : kTilts) {
    for (const double size : kSizes) {
      for (const Vec3& side : {f.x, -1.0 * f.x, f.y, -1.0 * f.y}) {
        const Vec3 axis = Unit(f.z + tilt * side);
        const Vec3 outwards = Unit(Rejection(f.x, axis));
        const double radius = size * tube.Radius();
        const Vec3 origin = centre + radius * outwards;
        visit({AxisFrame::Along(origin, axis, outwards), 1.0 / radius, tube.half + Norm(origin - f.origin)});
      }
    }
  }
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
  const auto tryFrom = [&](const TubeDistance& from) {
    const MinimaxSolution<TubeDistance> other = minimax.Improve(from, least);
    if (other.end == MinimaxEnd::cancelled) best.solution.end = other.end;
    if (other.end != MinimaxEnd::converged || !(other.value < least)) return;
    best.solution = other;
    least = other.value - rounding;
  };
  ForFurtherStarts(start, tryFrom);
  if (!(least < kInfinity) || !IsBent(best.solution.model) || IsHollow(best.solution)) return best;
  ForStartsBeside(start, tryFrom);
  const TubeDistance found = best.solution.model;
  if (IsBent(found)) ForStartsAround(found, tryFrom);
  return best;
}

}  // namespace nu::engine::minimax
