// The square root of the discriminant d = h^2 - a c carries a point smoothly through the generators that touch, where
// d = 0, if it is taken with a sign that changes there. So that it vanishes exactly there, and does not jump by the
// root of a rounding, d is summed up from its rise since the nearest of these,
//   d(u) - d(e) = (h - h_e)(h + h_e) - a (c - c_e) - c_e (a - a_e), each difference of which has the factor
// sin((u - e) / 2). On a path that swings, u - e itself is known as 2 half sin^2(v/2), without a difference.

#include "nu/curves/internal/quadric_curve.h"

#include <vector>

#include "nu/foundation/constants.h"

namespace nu::internal {

double Wave2::At(double u) const {
  const double x = std::cos(u);
  const double y = std::sin(u);
  return c0 + (c1 * x + s1 * y) + (c2 * (x - y) * (x + y) + s2 * (2.0 * x * y));
}

double Wave2::Slope(double middle, double half) const {
  const double x = std::cos(middle);
  const double y = std::sin(middle);
  const double second = s2 * (x - y) * (x + y) - c2 * (2.0 * x * y);
  return (s1 * x - c1 * y) + 2.0 * std::cos(half) * second;
}

Vec3 QuadricPair::On(double u, double t) const {
  const double x = std::cos(u);
  const double y = std::sin(u);
  if (base.kind == RoundQuadric::Kind::kCylinder) return {base.radius * x, base.radius * y, t};
  return {t * base.sine * x, t * base.sine * y, t * base.cosine};
}

double QuadricPair::Depth(double u) const {
  constexpr double kClear = 1e-6;  // far above the roundings of the two products
  const double slope = h.At(u);
  const double discriminant = slope * slope - a.At(u) * c.At(u);
  const double largest = h.Bound() * h.Bound() + a.Bound() * c.Bound();
  if (std::fabs(discriminant) > kClear * largest) return std::copysign(HUGE_VAL, discriminant);
  const double outside = other.OffsetOf(Middle(u)).distance;
  return a.At(u) > 0.0 ? -outside : outside;
}

// Newton's method with the shortest step to both tangent planes.
Vec3 QuadricPair::OnBoth(Vec3 p) const {
  constexpr double kLeastSine = 0.01;  // between the normals: the step is at most a hundred times the deviation
  constexpr int kSteps = 2;            // the first leaves the square of what rounding had left
  for (int step = 0; step < kSteps; ++step) {
    const RoundQuadric::Offset first = base.OffsetOf(p);
    const RoundQuadric::Offset second = other.OffsetOf(p);
    const Vec3 across = Cross(first.normal, second.normal);
    const double square = Dot(across, across);
    if (!(square > kLeastSine * kLeastSine)) return p;
    const double cosine = Dot(first.normal, second.normal);
    p = p - ((first.distance - cosine * second.distance) / square) * first.normal -
        ((second.distance - cosine * first.distance) / square) * second.normal;
  }
  return p;
}

namespace {

// A generator with d = 0, and how far another one is from it.
struct Reference {
  double u = 0.0;
  double difference = 0.0;
};

bool IsNearer(const Reference& first, const Reference& second) {
  return std::fabs(std::sin(0.5 * first.difference)) < std::fabs(std::sin(0.5 * second.difference));
}

double DiscriminantSince(const QuadricPair& pair, double u, const Reference& reference) {
  const double half = 0.5 * reference.difference;
  const double middle = reference.u + half;
  const double slope = pair.h.Slope(middle, half) * (pair.h.At(u) + pair.h.At(reference.u)) -
                       pair.a.At(u) * pair.c.Slope(middle, half) - pair.c.At(reference.u) * pair.a.Slope(middle, half);
  return 2.0 * std::sin(half) * slope;
}

double AroundPath(const QuadricPath& path, double v) {
  if (!path.closed) return std::clamp(v, path.lower, path.upper);
  const double period = path.upper - path.lower;
  const double around = v - period * std::floor((v - path.lower) / period);
  return around < path.upper ? around : path.lower;
}

}  // namespace

double QuadricCurve::RootAt(double v) const {
  const double u = path.AngleAt(v);
  double sign = path.sign;
  bool isSet = false;
  Reference nearest;
  if (path.swings) {
    const double sine = std::sin(0.5 * v);
    const double cosine = std::cos(0.5 * v);
    nearest = {path.middle - path.half, 2.0 * path.half * sine * sine};
    const Reference end{path.middle + path.half, -2.0 * path.half * cosine * cosine};
    if (IsNearer(end, nearest)) nearest = end;
    if (sine * cosine < 0.0) sign = -sign;
    isSet = true;
  }
  for (int k = 0; k < path.nodes; ++k) {
    const Reference node{path.node[k], u - path.node[k]};
    if (std::sin(0.5 * node.difference) < 0.0) sign = -sign;
    if (!isSet || IsNearer(node, nearest)) nearest = node;
    isSet = true;
  }
  const double h = pair.h.At(u);
  const double discriminant = isSet ? DiscriminantSince(pair, u, nearest) : h * h - pair.a.At(u) * pair.c.At(u);
  return sign * std::sqrt(std::max(discriminant, 0.0));
}

// Of the two forms (root - h) / a = -c / (h + root) the second one is for roots that h takes away from the first; it
// has the rounding of c.
Vec3 QuadricCurve::RoughlyAt(double v) const {
  const double u = path.AngleAt(v);
  const double h = pair.h.At(u);
  if (path.sheets == QuadricPath::Sheets::kThroughInfinity) return pair.On(u, -pair.c.At(u) / (2.0 * h));
  if (path.hasCommonLine) {
    const double half = 0.5 * (u - path.commonLine);
    const double middle = path.commonLine + half;
    return pair.On(u, -2.0 * pair.h.Slope(middle, half) / pair.a.Slope(middle, half));
  }
  if (path.sheets == QuadricPath::Sheets::kThroughApex) return pair.On(u, -2.0 * h / pair.a.At(u));
  const double root = RootAt(v);
  const double a = pair.a.At(u);
  const bool cancels = root * h > 0.0 && h * (h + root) > std::fabs(a) * pair.c.Bound();
  return pair.On(u, cancels ? -pair.c.At(u) / (h + root) : (root - h) / a);
}

Vec3 QuadricCurve::At(double v) const {
  return pair.OnBoth(RoughlyAt(AroundPath(path, v)));
}

namespace {

struct Sample {
  double v = 0.0;
  Vec3 point;
  double distance = 0.0;
};

// The distances of a point from those of a curve. Between two samples nothing is nearer than an arc somewhat longer
// than its chord lets it be.
class NearestPoint {
 public:
  NearestPoint(const QuadricCurve& curve, Vec3 p) : m_curve(curve), m_p(p) {}

  double Distance() {
    SampleCurve();
    const std::size_t last = m_samples.size() - 1;
    for (std::size_t i = 0; i <= last; ++i) {
      const Sample& before = m_samples[i > 0 ? i - 1 : (m_curve.path.closed ? last - 1 : 0)];
      const Sample& after = m_samples[i < last ? i + 1 : (m_curve.path.closed ? 1 : last)];
      if (m_samples[i].distance > before.distance || m_samples[i].distance > after.distance) continue;
      const double wrap = m_curve.path.upper - m_curve.path.lower;
      Descend(before.v > m_samples[i].v ? before.v - wrap : before.v,
              after.v < m_samples[i].v ? after.v + wrap : after.v);
    }
    return m_best;
  }

 private:
  static constexpr int kCoarse = 96;      // arcs to begin with
  static constexpr int kHalvings = 10;    // of such an arc
  static constexpr double kFine = 0.25;   // an arc that short, of its distance, is next to straight from there
  static constexpr double kBulge = 1.25;  // of an arc over its chord, halves of arcs being judged again
  static constexpr int kMostSamples = 4000;

  Sample At(double v) {
    const Vec3 at = m_curve.At(v);
    const double distance = Norm(at - m_p);
    m_best = std::fmin(m_best, distance);
    return {v, at, distance};
  }

  void SampleCurve() {
    const QuadricPath& path = m_curve.path;
    std::vector<Sample> coarse;
    for (int i = 0; i <= kCoarse; ++i) coarse.push_back(At(path.lower + i * ((path.upper - path.lower) / kCoarse)));
    m_samples.push_back(coarse.front());
    for (int i = 1; i <= kCoarse; ++i) {
      Halve(coarse[i - 1], coarse[i], kHalvings);
      m_samples.push_back(coarse[i]);
    }
  }

  // Adds the samples between two that may hide something nearer.
  void Halve(const Sample& first, const Sample& second, int halvings) {
    const double arc = kBulge * Norm(second.point - first.point);
    const double nearer = std::fmin(first.distance, second.distance);
    if (halvings == 0 || m_samples.size() > kMostSamples || !(arc > kFine * nearer) ||
        !(0.5 * (first.distance + second.distance - arc) < m_best))
      return;
    const Sample between = At(0.5 * (first.v + second.v));
    Halve(first, between, halvings - 1);
    m_samples.push_back(between);
    Halve(between, second, halvings - 1);
  }

  // Golden section.
  void Descend(double left, double right) {
    constexpr double kGolden = 0.38196601125010515;  // (3 - sqrt 5) / 2
    constexpr int kSteps = 64;                       // to 1e-13 of the interval; the distance is stationary there
    Sample first = At(left + kGolden * (right - left));
    Sample second = At(right - kGolden * (right - left));
    for (int step = 0; step < kSteps; ++step) {
      if (first.distance < second.distance) {
        right = second.v;
        second = first;
        first = At(left + kGolden * (right - left));
      } else {
        left = first.v;
        first = second;
        second = At(right - kGolden * (right - left));
      }
    }
  }

  const QuadricCurve& m_curve;
  Vec3 m_p;
  double m_best = HUGE_VAL;
  std::vector<Sample> m_samples;
};

}  // namespace

double QuadricCurve::DistanceTo(Vec3 p) const {
  return NearestPoint(*this, p).Distance();
}

}  // namespace nu::internal
