// The square root of the discriminant d = h^2 - a c carries a point smoothly through the generators that touch, where
// d = 0, if it is taken with a sign that changes there. So that it vanishes exactly there, and does not jump by the
// root of a rounding, d is summed up from its rise since the nearest of these,
//   d(u) - d(e) = (h - h_e)(h + h_e) - a (c - c_e) - c_e (a - a_e), each difference of which has the factor
// sin((u - e) / 2). On a path that swings, u - e itself is known as 2 half sin^2(v/2), without a difference.

#include "nu/curves/internal/quadric_curve.h"

#include "nu/curves/internal/quadric_equation.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/internal/elementary.h"
#include "nu/geometry/internal/vec2.h"

namespace nu::internal {

double Wave2::At(double u) const {
  const auto [y, x] = SinCos(u);
  return c0 + (c1 * x + s1 * y) + (c2 * (x - y) * (x + y) + s2 * (2.0 * x * y));
}

double Wave2::Slope(double middle, double half) const {
  const auto [y, x] = SinCos(middle);
  const double second = s2 * (x - y) * (x + y) - c2 * (2.0 * x * y);
  return (s1 * x - c1 * y) + 2.0 * Cos(half) * second;
}

Vec3 QuadricPair::On(double u, double t) const {
  const auto [y, x] = SinCos(u);
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
  return std::fabs(Sin(0.5 * first.difference)) < std::fabs(Sin(0.5 * second.difference));
}

double DiscriminantSince(const QuadricPair& pair, double u, const Reference& reference) {
  const double half = 0.5 * reference.difference;
  const double middle = reference.u + half;
  const double slope = pair.h.Slope(middle, half) * (pair.h.At(u) + pair.h.At(reference.u)) -
                       pair.a.At(u) * pair.c.Slope(middle, half) - pair.c.At(reference.u) * pair.a.Slope(middle, half);
  return 2.0 * Sin(half) * slope;
}

double AroundPath(const QuadricPath& path, double v) {
  if (!path.closed) return std::clamp(v, path.lower, path.upper);
  const double period = path.upper - path.lower;
  const double around = v - period * std::floor((v - path.lower) / period);
  return around >= path.upper ? path.lower : around;  // a NaN stays
}

}  // namespace

double QuadricCurve::RootAt(double v) const {
  const double u = path.AngleAt(v);
  double sign = path.sign;
  bool isSet = false;
  Reference nearest;
  if (path.swings) {
    const auto [sine, cosine] = SinCos(0.5 * v);
    nearest = {path.middle - path.half, 2.0 * path.half * sine * sine};
    const Reference end{path.middle + path.half, -2.0 * path.half * cosine * cosine};
    if (IsNearer(end, nearest)) nearest = end;
    if (sine * cosine < 0.0) sign = -sign;
    isSet = true;
  }
  for (int k = 0; k < path.nodes; ++k) {
    const Reference node{path.node[k], u - path.node[k]};
    if (Sin(0.5 * node.difference) < 0.0) sign = -sign;
    if (!isSet || IsNearer(node, nearest)) nearest = node;
    isSet = true;
  }
  const double h = pair.h.At(u);
  const double discriminant = isSet ? DiscriminantSince(pair, u, nearest) : h * h - pair.a.At(u) * pair.c.At(u);
  return sign * std::sqrt(std::max(discriminant, 0.0));
}

// Of the two forms (root - h) / a = -c / (h + root) the second one is for roots that h takes away from the first; it
// has the rounding of c.
Vec3 QuadricCurve::OnPath(double v) const {
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

std::size_t QuadricCurve::StretchOf(double v) const {
  const auto isBefore = [](double value, const QuadricNode& node) { return value < node.v; };
  const auto next = std::upper_bound(nodes.begin() + 1, nodes.end() - 1, v, isBefore);
  return static_cast<std::size_t>(next - nodes.begin()) - 1;
}

QuadricPlace QuadricCurve::PlaceAt(std::size_t stretch, double v) const {
  const QuadricEquation equation(pair, path);
  const QuadricNode& from = nodes[stretch];
  const QuadricNode& to = nodes[stretch + 1];
  const double share = (v - from.v) / (to.v - from.v);
  if (from.chart == QuadricNode::Chart::kAcross) return PlaceAcross(from, to, share);
  const double u = from.u + share * (to.u - from.u);
  const double t = from.t + share * (to.t - from.t);
  if (from.chart == QuadricNode::Chart::kAround) {
    QuadricSpot spot;
    return {u, equation.CrossingAt(u, from.sign, spot) ? spot.s / spot.c : t};
  }
  const double length = Hypot(1.0, t);
  const double lower = std::fmin(from.u, to.u) - from.width;
  const double upper = std::fmax(from.u, to.u) + from.width;
  return {equation.AngleAt(t / length, 1.0 / length, u, lower, upper), t};
}

QuadricPlace QuadricCurve::PlaceAcross(const QuadricNode& from, const QuadricNode& to, double share) const {
  const QuadricEquation equation(pair, path);
  const double scale = Hypot(1.0, from.t);
  const double x = to.u - from.u;
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

double QuadricCurve::LevelAt(double v) const {
  return PlaceAt(StretchOf(v), v).t;
}

Vec3 QuadricCurve::At(double v) const {
  const double around = AroundPath(path, v);
  const std::size_t stretch = StretchOf(around);
  if (nodes[stretch].chart == QuadricNode::Chart::kPath) return pair.OnBoth(OnPath(around));
  const QuadricPlace place = PlaceAt(stretch, around);
  return pair.OnBoth(pair.On(place.u, place.t));
}

void QuadricCurve::AddNodes() {
  constexpr int kStretches = 96;
  for (int i = 0; i <= kStretches; ++i) {
    nodes.emplace_back().v = path.lower + i * ((path.upper - path.lower) / kStretches);
  }
  nodes.back().v = path.upper;
  MeasureNodes();
}

void QuadricCurve::MeasureNodes() {
  for (QuadricNode& node : nodes) node.point = At(node.v);
}

namespace {

// The distances of a point from those of a curve. Between two samples nothing is nearer than an arc somewhat longer
// than its chord lets it be.
class NearestPoint {
 public:
  NearestPoint(const QuadricCurve& curve, Vec3 p) : m_curve(curve), m_p(p) {}

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

  const QuadricCurve& m_curve;
  Vec3 m_p;
  QuadricFoot m_best;
  std::vector<QuadricFoot> m_samples;
};

}  // namespace

QuadricFoot QuadricCurve::FootOf(Vec3 p) const {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  if (!IsFinite(p)) return {nan, {nan, nan, nan}, nan};
  return NearestPoint(*this, p).Find();
}

}  // namespace nu::internal
