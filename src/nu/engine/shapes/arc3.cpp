// With p(u) on the circle around C1 and the other curve's distance D(u) from it, D^2 is stationary
//   for a line with the unit direction d, with r = p - P without its part along d, where r.r' = 0, of degree 2;
//   for a circle around C2 with the radius R2 and the normal n, with S = |p - C2|^2, of degree 1, h = n.(p - C2) and
//   Q = S - h^2, of degree 2, where D^2 = S + R2^2 - 2 R2 sqrt(Q): where S' sqrt(Q) = R2 Q', and so
//   S'^2 Q - R2^2 Q'^2 = 0, of degree 4.
// All least distances are among the roots of these trigonometric polynomials, whose coefficients are the discrete
// Fourier transform of their values. Where roots coincide, as they do for symmetric pairs, rounding can drop a pair of
// them; what it takes away has left a wide minimum, which samples around the circle find as well. Newton's method on
// both parameters brings each to rounding.

#include "nu/engine/shapes/arc3.h"

#include <vector>

#include "nu/engine/roots/trig_roots.h"
#include "nu/foundation/constants.h"

namespace nu::engine::shapes {

namespace {

double InTurn(double angle) {
  const double turned = angle - Nu_2PI * std::floor(angle / Nu_2PI);
  return turned < Nu_2PI ? turned : 0.0;
}

// The unbounded curves.

struct LineMotion {
  Vec3 At(double t) const { return segment.start + t * d; }
  Vec3 First(double) const { return d; }
  Vec3 Second(double) const { return {}; }
  double ParameterOf(Vec3 p) const { return Dot(p - segment.start, d) / Dot(d, d); }
  bool Contains(double t) const { return t >= 0.0 && t <= 1.0; }

  explicit LineMotion(const Segment3& given) : segment(given), d(given.end - given.start) {}
  Segment3 segment;
  Vec3 d;
};

struct CircleMotion {
  Vec3 At(double u) const { return arc.At(u); }
  Vec3 First(double u) const {
    const auto [s, c] = SinCos(u);
    return arc.radius * (c * arc.y - s * arc.x);
  }
  Vec3 Second(double u) const { return arc.centre - arc.At(u); }
  double ParameterOf(Vec3 p) const { return arc.AngleOf(p); }
  bool Contains(double u) const { return arc.Contains(InTurn(u)); }

  explicit CircleMotion(const Arc3& given) : arc(given) {}
  const Arc3& arc;
};

struct Stationary {
  double u, v;
};

// The Newton step of |a(u) - b(v)|^2 / 2; false where that is not convex.
template<class A, class B>
bool NewtonStep(const A& a, const B& b, Stationary at, Stationary& next) {
  const Vec3 r = a.At(at.u) - b.At(at.v);
  const Vec3 da = a.First(at.u);
  const Vec3 db = b.First(at.v);
  const double gu = Dot(r, da);
  const double gv = -Dot(r, db);
  const double huu = Dot(da, da) + Dot(r, a.Second(at.u));
  const double hvv = Dot(db, db) - Dot(r, b.Second(at.v));
  const double huv = -Dot(da, db);
  const double determinant = huu * hvv - huv * huv;
  if (!(huu > 0.0 && determinant > 0.0)) return false;
  next = {at.u - (hvv * gu - huv * gv) / determinant, at.v - (huu * gv - huv * gu) / determinant};
  return true;
}

template<class A, class B>
double SquareAt(const A& a, const B& b, Stationary at) {
  const Vec3 r = a.At(at.u) - b.At(at.v);
  return Dot(r, r);
}

// Newton's method; where it does not come nearer, the closest points on either curve in turn, which always do.
template<class A, class B>
Stationary Refined(const A& a, const B& b, double u) {
  constexpr int kMaxSteps = 60;                  // each halves the error at least, also where the curves touch
  constexpr double kNoise = 16.0 * DBL_EPSILON;  // of squares of the distance
  constexpr double kResolution = 2.0 * DBL_EPSILON;
  Stationary at{u, b.ParameterOf(a.At(u))};
  double square = SquareAt(a, b, at);
  for (int step = 0; step < kMaxSteps; ++step) {
    Stationary next = at;
    if (!NewtonStep(a, b, at, next) || !(SquareAt(a, b, next) <= square * (1.0 + kNoise))) {
      next.u = a.ParameterOf(b.At(at.v));
      next.v = b.ParameterOf(a.At(next.u));
      if (!(SquareAt(a, b, next) < square)) break;
    }
    const double change = std::fabs(next.u - at.u) + std::fabs(next.v - at.v);
    at = next;
    square = SquareAt(a, b, at);
    if (!(change > kResolution)) break;
  }
  return at;
}

// The angles where a trigonometric polynomial, given by its values, is zero.
template<int kDegree, class Function>
std::vector<double> RootsOf(const Function& f) {
  constexpr int kSamples = 2 * kDegree + 1;
  double cosines[kDegree + 1] = {};
  double sines[kDegree + 1] = {};
  double total = 0.0;
  for (int i = 0; i < kSamples; ++i) {
    const double value = f(i * Nu_2PI / kSamples);
    total += std::fabs(value);
    for (int k = 0; k <= kDegree; ++k) {
      const auto [s, c] = SinCos((i * k % kSamples) * Nu_2PI / kSamples);
      cosines[k] += value * c * (k == 0 ? 1.0 : 2.0) / kSamples;
      sines[k] += value * s * 2.0 / kSamples;
    }
  }
  if (!std::isfinite(total)) return {};
  return TrigRoots(cosines, sines, kDegree);
}

std::vector<double> StationaryAngles(const CircleMotion& circle, const LineMotion& line) {
  const Vec3 direction = Unit(line.d);
  return RootsOf<2>([&](double u) {
    return Dot(Rejection(circle.At(u) - line.segment.start, direction), Rejection(circle.First(u), direction));
  });
}

std::vector<double> StationaryAngles(const CircleMotion& circle, const CircleMotion& other) {
  const Vec3 normal = other.arc.Axis();
  const double radius = other.arc.radius;
  return RootsOf<4>([&](double u) {
    const Vec3 w = circle.At(u) - other.arc.centre;
    const Vec3 dw = circle.First(u);
    const Vec3 across = Rejection(w, normal);
    const double ds = 2.0 * Dot(w, dw);
    const double dq = 2.0 * Dot(across, dw);
    return ds * ds * Dot(across, across) - radius * radius * dq * dq;
  });
}

// Angles at which samples of the distance are not above their neighbours.
template<class Other>
void AddSampledMinima(const CircleMotion& circle, const Other& other, std::vector<double>& angles) {
  constexpr int kSamples = 16;  // four for each of the four minima that circles can have
  double squares[kSamples];
  for (int i = 0; i < kSamples; ++i) {
    const double u = i * Nu_2PI / kSamples;
    squares[i] = SquareAt(circle, other, {u, other.ParameterOf(circle.At(u))});
  }
  for (int i = 0; i < kSamples; ++i) {
    const double around = std::fmin(squares[(i + 1) % kSamples], squares[(i + kSamples - 1) % kSamples]);
    if (squares[i] <= around) angles.push_back(i * Nu_2PI / kSamples);
  }
}

template<class Other>
void OfferStationary(const CircleMotion& circle, const Other& other, NearPair& best) {
  std::vector<double> angles = StationaryAngles(circle, other);
  AddSampledMinima(circle, other, angles);
  for (const double angle : angles) {
    const Stationary at = Refined(circle, other, angle);
    if (circle.Contains(at.u) && other.Contains(at.v)) Offer(PairOf(circle.At(at.u), other.At(at.v)), best);
  }
}

}  // namespace

double Arc3::AngleOf(Vec3 p) const {
  const Vec3 w = p - centre;
  return InTurn(Atan2(Dot(w, y), Dot(w, x)));
}

Vec3 ClosestOn(const Arc3& arc, Vec3 p) {
  const Vec3 w = p - arc.centre;
  const double a = Dot(w, arc.x);
  const double b = Dot(w, arc.y);
  const double across = Hypot(a, b);
  if (across > 0.0 && std::isfinite(across) && arc.Contains(arc.AngleOf(p))) {
    return arc.centre + arc.radius * ((a / across) * arc.x + (b / across) * arc.y);
  }
  return SafeNorm(p - arc.end) < SafeNorm(p - arc.start) ? arc.end : arc.start;
}

Vec3 FarthestOn(const Arc3& arc, Vec3 p) {
  const double opposite = arc.AngleOf(arc.centre - (p - arc.centre));
  if (arc.Contains(opposite)) return arc.At(opposite);
  return SafeNorm(p - arc.end) > SafeNorm(p - arc.start) ? arc.end : arc.start;
}

Box BoxOf(const Arc3& arc) {
  const double centre[3] = {arc.centre.x, arc.centre.y, arc.centre.z};
  const double x[3] = {arc.x.x, arc.x.y, arc.x.z};
  const double y[3] = {arc.y.x, arc.y.y, arc.y.z};
  const double start[3] = {arc.start.x, arc.start.y, arc.start.z};
  const double end[3] = {arc.end.x, arc.end.y, arc.end.z};
  Box box;
  for (int k = 0; k < 3; ++k) {
    const double reach = arc.radius * Hypot(x[k], y[k]);
    const double top = InTurn(Atan2(y[k], x[k]));
    const double bottom = InTurn(top + Nu_PI);
    box.low[k] = arc.Contains(bottom) ? centre[k] - reach : std::fmin(start[k], end[k]);
    box.high[k] = arc.Contains(top) ? centre[k] + reach : std::fmax(start[k], end[k]);
  }
  return box;
}

NearPair ClosestBetween(const Segment3& segment, const Arc3& arc) {
  const NearPair best = ClosestFromEnds(segment, arc);
  if (best.distance == 0.0 || std::isnan(best.distance) || SafeNorm(segment.end - segment.start) == 0.0) return best;
  NearPair swapped = best.Swapped();
  OfferStationary(CircleMotion(arc), LineMotion(segment), swapped);
  return swapped.Swapped();
}

NearPair ClosestBetween(const Arc3& first, const Arc3& second) {
  NearPair best = ClosestFromEnds(first, second);
  if (best.distance > 0.0) OfferStationary(CircleMotion(first), CircleMotion(second), best);
  return best;
}

}  // namespace nu::engine::shapes
