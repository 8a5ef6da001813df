#include "nu/curves/internal/quadric_equation.h"

#include <cfloat>

#include "nu/foundation/internal/elementary.h"

namespace nu::internal {

namespace {

using Sheets = QuadricPath::Sheets;

struct ValueAndSlope {
  double value = 0.0;
  double slope = 0.0;
};

ValueAndSlope On(const Wave2& wave, double x, double y) {
  const double x2 = (x - y) * (x + y);
  const double y2 = 2.0 * x * y;
  return {wave.c0 + (wave.c1 * x + wave.s1 * y) + (wave.c2 * x2 + wave.s2 * y2),
          (wave.s1 * x - wave.c1 * y) + 2.0 * (wave.s2 * x2 - wave.c2 * y2)};
}

double BendOf(const Wave2& wave) {
  return Hypot(wave.c1, wave.s1) + 4.0 * Hypot(wave.c2, wave.s2);
}

// Wave2::Slope between the angle v of a common line and u = v + 2 half.
ValueAndSlope SinceLine(const Wave2& wave, double v, double half) {
  const auto [y, x] = SinCos(v + half);
  const auto [sine, cosine] = SinCos(half);
  const double x2 = (x - y) * (x + y);
  const double y2 = 2.0 * x * y;
  const double second = wave.s2 * x2 - wave.c2 * y2;
  const double secondSlope = -2.0 * (wave.s2 * y2 + wave.c2 * x2);
  return {(wave.s1 * x - wave.c1 * y) + 2.0 * cosine * second,
          -0.5 * (wave.s1 * y + wave.c1 * x) - sine * second + cosine * secondSlope};
}

// No second derivative of that by u is larger.
double BendSinceLine(const Wave2& wave) {
  constexpr double kOfFirst = 0.25;  // the squares of the frequencies 1/2 and 3/2
  constexpr double kOfSecond = 2.0 * 2.25;
  return kOfFirst * Hypot(wave.c1, wave.s1) + kOfSecond * Hypot(wave.c2, wave.s2);
}

}  // namespace

QuadricEquation::Factors QuadricEquation::OfSheets(const Factors& waves) const {
  if (m_path.sheets == Sheets::kThroughApex) return {waves.a, 0.0, 2.0 * waves.h};
  if (m_path.sheets == Sheets::kThroughInfinity) return {2.0 * waves.h, 0.0, waves.c};
  return waves;
}

QuadricEquation::Jet QuadricEquation::At(double u) const {
  ValueAndSlope a, h, c;
  if (m_path.hasCommonLine) {
    const double half = 0.5 * (u - m_path.commonLine);
    a = SinceLine(m_pair.a, m_path.commonLine, half);
    h = SinceLine(m_pair.h, m_path.commonLine, half);
  } else {
    const auto [y, x] = SinCos(u);
    a = On(m_pair.a, x, y);
    h = On(m_pair.h, x, y);
    c = On(m_pair.c, x, y);
  }
  return {OfSheets({a.value, h.value, c.value}), OfSheets({a.slope, h.slope, c.slope})};
}

QuadricEquation::Factors QuadricEquation::Bounds() const {
  if (m_path.hasCommonLine) return OfSheets({BendSinceLine(m_pair.a), BendSinceLine(m_pair.h), 0.0});
  return OfSheets({BendOf(m_pair.a), BendOf(m_pair.h), BendOf(m_pair.c)});
}

QuadricEquation::Factors QuadricEquation::Sizes() const {
  return OfSheets({m_pair.a.Bound(), m_pair.h.Bound(), m_path.hasCommonLine ? 0.0 : m_pair.c.Bound()});
}

double QuadricEquation::Value(const Factors& k, const QuadricSpot& at) const {
  if (!IsQuadratic()) return k.a * at.s + k.c * at.c;
  return (k.a * at.s + 2.0 * k.h * at.c) * at.s + k.c * at.c * at.c;
}

double QuadricEquation::Slope(const Factors& k, const QuadricSpot& at) const {
  if (!IsQuadratic()) return k.a * at.c - k.c * at.s;
  return 2.0 * ((k.a - k.c) * at.s * at.c + k.h * (at.c - at.s) * (at.c + at.s));
}

double QuadricEquation::Bend(const Factors& k) const {
  return IsQuadratic() ? 2.0 * Hypot(k.a - k.c, 2.0 * k.h) : Hypot(k.a, k.c);
}

// Of a quadratic that rises with w, a t + h is the positive root of h^2 - a c. t is (root - h) / a or -c / (h + root),
// the one in which nothing cancels.
bool QuadricEquation::CrossingAt(double u, double sign, QuadricSpot& at) const {
  const Factors k = At(u).value;
  at = {u, -k.c, k.a};
  if (IsQuadratic()) {
    const double discriminant = k.h * k.h - k.a * k.c;
    if (!(discriminant >= 0.0)) return false;
    const double root = std::copysign(std::sqrt(discriminant), sign);
    at = k.h * root > 0.0 ? QuadricSpot{u, -k.c, k.h + root} : QuadricSpot{u, root - k.h, k.a};
  }
  const double length = Hypot(at.s, at.c);
  at.s /= length;
  at.c /= length;
  return length > 0.0;
}

// Newton's method between limits that close in.
double QuadricEquation::AngleAt(double s, double c, double guess, double lower, double upper) const {
  constexpr int kSteps = 60;
  const bool rises = Value(At(guess).slope, {guess, s, c}) > 0.0;
  double u = guess;
  for (int step = 0; step < kSteps; ++step) {
    const QuadricSpot at{u, s, c};
    const Jet k = At(u);
    const double value = Value(k.value, at);
    ((value > 0.0) == rises ? upper : lower) = u;
    double next = u - value / Value(k.slope, at);
    if (!(next >= lower && next <= upper)) next = 0.5 * (lower + upper);
    const double moved = std::fabs(next - u);
    u = next;
    if (!(moved > DBL_EPSILON * std::fmax(1.0, std::fabs(u)))) break;
  }
  return u;
}

}  // namespace nu::internal
