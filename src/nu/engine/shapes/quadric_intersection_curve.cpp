#include "nu/engine/shapes/quadric_intersection_curve.h"

#include <cfloat>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/shapes/quadric_equation.h"
#include "nu/engine/shapes/vec2.h"
#include "nu/foundation/constants.h"

namespace nu::engine::shapes {

double Wave2::At(double u) const {
  const auto [half, cosine] = SinCos(0.5 * u);
  const double sine = 2.0 * half * cosine;
  const double rest = 2.0 * half * half;
  return value + (sine * (slope + mixed * rest + square * sine) + versed * rest);
}

void Wave2::ToPolynomial(double (&p)[5]) const {
  p[0] = value;
  p[1] = 2.0 * slope;
  p[2] = 2.0 * (value + versed) + 4.0 * square;
  p[3] = 2.0 * slope + 4.0 * mixed;
  p[4] = value + 2.0 * versed;
}

namespace {

// A point or direction, turned around the z axis: at[0] + at[1] sin u + at[2] (1 - cos u).
struct TurnedVector {
  Vec3 at[3];
};

TurnedVector Turned(Vec3 v, Vec3 difference) {
  return {{difference, {-v.y, v.x, 0.0}, {-v.x, -v.y, 0.0}}};
}

// The quadratic part of a quadric, as a bilinear form of v and w: |w x d|^2 of a cylinder, |w x d|^2 cos^2 a -
// (w d)^2 sin^2 a of a cone. With the cross product, nothing cancels for directions that are nearly parallel.
double Form(const RoundQuadric& surface, Vec3 v, Vec3 w) {
  if (surface.kind == RoundQuadric::Kind::kSphere) return Dot(v, w);
  const double across = Dot(Cross(v, surface.axis), Cross(w, surface.axis));
  if (surface.kind == RoundQuadric::Kind::kCylinder) return across;
  const double along = Dot(v, surface.axis) * Dot(w, surface.axis);
  return surface.cosine * surface.cosine * across - surface.sine * surface.sine * along;
}

// Form(w, w) - radius^2 is the product of two factors; the first one is the distance from the surface.
struct SquareFactors {
  double difference = 0.0;
  double sum = 0.0;
};

SquareFactors FactorsOf(const RoundQuadric& surface, Vec3 w, double radius) {
  const bool isSphere = surface.kind == RoundQuadric::Kind::kSphere;
  const double across = surface.cosine * (isSphere ? Norm(w) : Norm(Cross(w, surface.axis)));
  const double rest = radius + surface.sine * std::fabs(Dot(w, surface.axis));
  return {across - rest, across + rest};
}

double Square(const RoundQuadric& surface, Vec3 w, double radius) {
  const SquareFactors factors = FactorsOf(surface, w, radius);
  return factors.difference * factors.sum;
}

// Form(v, w) for all u but its value at 0, with (1 - cos u)^2 = 2 (1 - cos u) - sin^2 u.
Wave2 FormOf(const RoundQuadric& surface, const TurnedVector& v, const TurnedVector& w, double value) {
  const auto form = [&](int i, int k) { return Form(surface, v.at[i], w.at[k]); };
  const double last = form(2, 2);
  return {value, form(0, 1) + form(1, 0), form(0, 2) + form(2, 0) + 2.0 * last, form(1, 2) + form(2, 1),
          form(1, 1) - last};
}

double AroundPath(const QuadricPath& path, double v) {
  if (!path.closed) return std::clamp(v, path.lower, path.upper);
  const double period = path.upper - path.lower;
  const double around = v - period * std::floor((v - path.lower) / period);
  return around >= path.upper ? path.lower : around;  // a NaN stays
}

}  // namespace

void QuadricPair::SetWaves() {
  const bool isCylinder = base.kind == RoundQuadric::Kind::kCylinder;
  const Vec3 direction = isCylinder ? Vec3{0.0, 0.0, 1.0} : Vec3{base.sine, 0.0, base.cosine};
  const Vec3 first = isCylinder ? Vec3{base.radius, 0.0, 0.0} : start * direction;
  const Vec3 difference = first - other.point;
  const TurnedVector point = Turned(first, difference);
  const TurnedVector generator = Turned(direction, direction);
  a = FormOf(other, generator, generator, Square(other, direction, 0.0));
  h = FormOf(other, generator, point, Form(other, direction, difference));
  c = FormOf(other, point, point, Square(other, difference, other.radius));
}

Vec3 QuadricPair::On(double u, double t) const {
  const auto [y, x] = SinCos(u);
  if (base.kind == RoundQuadric::Kind::kCylinder) return {base.radius * x, base.radius * y, t};
  const double along = start + t;
  return {along * base.sine * x, along * base.sine * y, along * base.cosine};
}

// Middle is c - h^2 / a = -d / a inside the quadric, in its equation.
double QuadricPair::Depth(double u) const {
  constexpr double kClear = 1e-6;  // far above the roundings of the two products
  constexpr double kRoundings = 16.0;
  const double onGenerator = a.At(u);
  const double slope = h.At(u);
  const double product = onGenerator * c.At(u);
  const double discriminant = slope * slope - product;
  const double largest = h.Bound() * h.Bound() + a.Bound() * c.Bound();
  if (std::fabs(discriminant) > kClear * largest) return std::copysign(HUGE_VAL, discriminant);
  const SquareFactors factors = FactorsOf(other, Middle(u) - other.point, other.radius);
  if (std::fabs(discriminant) > kRoundings * DBL_EPSILON * (slope * slope + std::fabs(product))) {
    const double depth = discriminant / std::fabs(onGenerator) / factors.sum;
    return std::isfinite(depth) ? depth : std::copysign(HUGE_VAL, discriminant);
  }
  return onGenerator > 0.0 ? -factors.difference : factors.difference;
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

double AngleNear(double u, double other) {
  const double turns = std::round((u - other) / Nu_2PI);
  return turns == 0.0 ? u : u - turns * Nu_2PI;
}

std::size_t QuadricIntersectionCurve::StretchOf(double v) const {
  const auto isBefore = [](double value, const QuadricNode& node) { return value < node.v; };
  const auto next = std::upper_bound(nodes.begin() + 1, nodes.end() - 1, v, isBefore);
  return static_cast<std::size_t>(next - nodes.begin()) - 1;
}

QuadricPlace QuadricIntersectionCurve::PlaceAt(std::size_t stretch, double v) const {
  const QuadricEquation equation(pair, path);
  const QuadricNode& from = nodes[stretch];
  const QuadricNode& to = nodes[stretch + 1];
  const double share = (v - from.v) / (to.v - from.v);
  if (from.chart == QuadricNode::Chart::kAcross) return PlaceAcross(from, to, share);
  const double end = AngleNear(to.u, from.u);
  const double u = (1.0 - share) * from.u + share * end;
  const double t = (1.0 - share) * from.t + share * to.t;
  if (from.chart == QuadricNode::Chart::kAround) {
    QuadricSpot spot;
    return {u, equation.CrossingAt(u, from.sign, spot) ? spot.s / spot.c : t};
  }
  const double length = Hypot(1.0, t);
  const double lower = std::fmin(from.u, end) - from.width;
  const double upper = std::fmax(from.u, end) + from.width;
  return {equation.AngleAt(t / length, 1.0 / length, u, lower, upper), t};
}

QuadricPlace QuadricIntersectionCurve::PlaceAcross(const QuadricNode& from, const QuadricNode& to, double share) const {
  const QuadricEquation equation(pair, path);
  const double scale = Hypot(1.0, from.t);
  const double x = AngleNear(to.u, from.u) - from.u;
  const double y = (to.t - from.t) / scale;
  const double chord = Hypot(x, y);
  const auto tangentAt = [&](const QuadricNode& node) {
    const double length = Hypot(1.0, node.t);
    const QuadricSpot spot{node.u, node.t / length, 1.0 / length};
    const QuadricEquation::Jet k = equation.At(node.u);
    const double du = equation.Slope(k.value, spot) * scale / (length * length);
    const double dt = -equation.Value(k.slope, spot);
    const double factor = std::copysign(chord / Hypot(du, dt), du * x + dt * y);
    return Vec2{factor * du, factor * dt};
  };
  const double rest = 1.0 - share;
  const double reached = share * share * (1.0 + 2.0 * rest);
  const Vec2 bend = share * rest * (rest * tangentAt(from) - share * tangentAt(to));
  return {from.u + reached * x + bend.x, from.t + scale * (reached * y + bend.y)};
}

Vec3 QuadricIntersectionCurve::At(double v) const {
  const double around = AroundPath(path, v);
  const QuadricPlace place = PlaceAt(StretchOf(around), around);
  return pair.OnBoth(pair.On(place.u, place.t));
}

namespace {

// The distances of a point from those of a curve. Between two samples nothing is nearer than an arc somewhat longer
// than its chord lets it be.
class NearestPoint {
 public:
  NearestPoint(const QuadricIntersectionCurve& curve, Vec3 p) : m_curve(curve), m_p(p) {}

  QuadricFoot Find() {
    SampleCurve();
    const std::size_t last = m_samples.size() - 1;
    const bool isClosed = m_curve.path.closed;
    const double wrap = m_curve.path.upper - m_curve.path.lower;
    for (std::size_t i = 0; i <= last; ++i) {
      const QuadricFoot& before = m_samples[i > 0 ? i - 1 : (isClosed ? last - 1 : 0)];
      const QuadricFoot& after = m_samples[i < last ? i + 1 : (isClosed ? 1 : last)];
      const QuadricFoot& sample = m_samples[i];
      if (sample.distance > before.distance || sample.distance > after.distance) continue;
      if (!MayBeNearer(before, sample) && !MayBeNearer(sample, after)) continue;
      Descend(before.v > sample.v ? before.v - wrap : before.v, after.v < sample.v ? after.v + wrap : after.v);
    }
    Polish(wrap);
    return m_best;
  }

 private:
  static constexpr int kHalvings = 10;    // of a stretch between nodes
  static constexpr double kFine = 0.25;   // an arc that short, of its distance, is next to straight from there
  static constexpr double kBulge = 1.25;  // of an arc over its chord, halves of arcs being judged again
  static constexpr std::size_t kMostSamples = 20000;

  static double ArcOf(const QuadricFoot& first, const QuadricFoot& second) {
    return kBulge * Norm(second.point - first.point);
  }

  bool MayBeNearer(const QuadricFoot& first, const QuadricFoot& second) const {
    return 0.5 * (first.distance + second.distance - ArcOf(first, second)) < m_best.distance;
  }

  QuadricFoot Taken(double v, Vec3 at) {
    const QuadricFoot foot{v, at, Norm(at - m_p)};
    if (foot.distance < m_best.distance) m_best = foot;
    return foot;
  }
  QuadricFoot At(double v) { return Taken(v, m_curve.At(v)); }

  void SampleCurve() {
    const QuadricPath& path = m_curve.path;
    std::vector<QuadricFoot> coarse{At(path.lower)};
    for (const QuadricNode& node : m_curve.nodes) {
      if (node.v > path.lower && node.v < path.upper) coarse.push_back(Taken(node.v, node.point));
    }
    coarse.push_back(At(path.upper));
    m_samples.push_back(coarse.front());
    for (std::size_t i = 1; i < coarse.size(); ++i) {
      Halve(coarse[i - 1], coarse[i], kHalvings);
      m_samples.push_back(coarse[i]);
    }
  }

  // Adds the samples between two that may hide something nearer.
  void Halve(const QuadricFoot& first, const QuadricFoot& second, int halvings) {
    const bool isFine = !(ArcOf(first, second) > kFine * std::fmin(first.distance, second.distance));
    if (halvings == 0 || m_samples.size() > kMostSamples || isFine || !MayBeNearer(first, second)) return;
    const QuadricFoot between = At(0.5 * (first.v + second.v));
    Halve(first, between, halvings - 1);
    m_samples.push_back(between);
    Halve(between, second, halvings - 1);
  }

  // Golden section.
  void Descend(double left, double right) {
    constexpr double kGolden = 0.38196601125010515;  // (3 - sqrt 5) / 2
    constexpr int kSteps = 64;                       // to 1e-13 of the interval; the distance is stationary there
    QuadricFoot first = At(left + kGolden * (right - left));
    QuadricFoot second = At(right - kGolden * (right - left));
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

  // The way along the tangent of the curve, which points as the parameter grows, that is left to the foot.
  double Ahead(double v, Vec3 forwards) {
    const Vec3 at = m_curve.At(v);
    const Vec3 along = Cross(m_curve.pair.base.OffsetOf(at).normal, m_curve.pair.other.OffsetOf(at).normal);
    return Dot(m_p - at, Dot(along, forwards) < 0.0 ? -1.0 * along : along);
  }

  // The distance is stationary at the foot, and tells its parameter to half the digits; the tangent tells it to all.
  void Polish(double range) {
    constexpr double kHalf = 1e-7;
    constexpr int kSteps = 60;
    const double guess = m_best.v;
    double left = guess - kHalf * range;
    double right = guess + kHalf * range;
    const Vec3 forwards = m_curve.At(right) - m_curve.At(left);
    if (!(Ahead(left, forwards) > 0.0) || !(Ahead(right, forwards) < 0.0)) return;
    for (int step = 0; step < kSteps; ++step) {
      const double middle = 0.5 * (left + right);
      (Ahead(middle, forwards) > 0.0 ? left : right) = middle;
    }
    const double v = 0.5 * (left + right);
    const Vec3 at = m_curve.At(v);
    const double distance = Norm(at - m_p);
    if (distance <= m_best.distance * (1.0 + kHalf)) m_best = {v, at, std::fmin(distance, m_best.distance)};
  }

  const QuadricIntersectionCurve& m_curve;
  Vec3 m_p;
  QuadricFoot m_best;
  std::vector<QuadricFoot> m_samples;
};

}  // namespace

QuadricFoot QuadricIntersectionCurve::FootOf(Vec3 p) const {
  if (!IsFinite(p)) return {kQuietNaN, {kQuietNaN, kQuietNaN, kQuietNaN}, kQuietNaN};
  return NearestPoint(*this, p).Find();
}

}  // namespace nu::engine::shapes
