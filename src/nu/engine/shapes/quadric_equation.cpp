#include "nu/engine/shapes/quadric_equation.h"

#include <cfloat>

#include "nu/engine/base/elementary.h"

namespace nu::engine::shapes {

namespace {

using Sheets = QuadricPath::Sheets;

// A wave at an angle, its first two derivatives, and the sum of the sizes of its terms.
struct WaveJet {
  double value = 0.0;
  double slope = 0.0;
  double bend = 0.0;
  double size = 0.0;
};

// An angle, by the sines and cosines of itself and its half.
struct Angle {
  explicit Angle(double u) {
    const auto [sineOfHalf, cosineOfHalf] = SinCos(0.5 * u);
    half = sineOfHalf;
    halfCosine = cosineOfHalf;
    sine = 2.0 * half * halfCosine;
    versed = 2.0 * half * half;
  }

  double half = 0.0;
  double halfCosine = 0.0;
  double sine = 0.0;
  double versed = 0.0;  // 1 - cos u
};

WaveJet On(const Wave2& f, const Angle& u) {
  const double cosine = 1.0 - u.versed;
  const double factor = f.slope + f.mixed * u.versed + f.square * u.sine;
  const double size = std::fabs(f.slope) + std::fabs(f.mixed) * u.versed + std::fabs(f.square * u.sine);
  return {f.value + (u.sine * factor + f.versed * u.versed),
          cosine * factor + u.sine * (f.versed + f.mixed * u.sine + f.square * cosine),
          f.versed * cosine - u.sine * (f.slope + f.mixed * (1.0 - 4.0 * cosine)) +
              f.square * (2.0 - 4.0 * u.sine * u.sine),
          std::fabs(f.value) + std::fabs(u.sine) * size + std::fabs(f.versed) * u.versed};
}

// A wave that vanishes with u, divided by 2 sin(u / 2).
WaveJet SinceLine(const Wave2& f, const Angle& u) {
  const double cosine = 1.0 - u.versed;
  const double factor = f.slope + f.mixed * u.versed + f.square * u.sine;
  const double factorSlope = f.mixed * u.sine + f.square * cosine;
  const double factorBend = f.mixed * cosine - f.square * u.sine;
  const double size = std::fabs(f.slope) + std::fabs(f.mixed) * u.versed + std::fabs(f.square * u.sine);
  return {u.halfCosine * factor + u.half * f.versed,
          u.halfCosine * (factorSlope + 0.5 * f.versed) - 0.5 * u.half * factor,
          u.halfCosine * (factorBend - 0.25 * factor) - u.half * (factorSlope + 0.25 * f.versed),
          std::fabs(u.halfCosine) * size + std::fabs(u.half * f.versed)};
}

// The amplitudes of the frequencies of a wave, 1 and 2, and of one that is divided by 2 sin(u / 2), 1/2 and 3/2, in
// the units of second derivatives of the wave.
double FirstAmplitude(const Wave2& f) {
  return Hypot(f.versed, f.slope + f.mixed);
}
double SecondAmplitude(const Wave2& f) {
  return Hypot(f.square, f.mixed);
}

// No second and third derivatives are larger.
double BendOf(const Wave2& f) {
  return FirstAmplitude(f) + 2.0 * SecondAmplitude(f);
}
double TwistOf(const Wave2& f) {
  return FirstAmplitude(f) + 4.0 * SecondAmplitude(f);
}
double BendSinceLine(const Wave2& f) {
  return 0.25 * FirstAmplitude(f) + 2.25 * SecondAmplitude(f);
}
double TwistSinceLine(const Wave2& f) {
  return 0.125 * FirstAmplitude(f) + 3.375 * SecondAmplitude(f);
}

}  // namespace

QuadricEquation::Factors QuadricEquation::OfSheets(const Factors& waves) const {
  if (m_path.sheets == Sheets::kThroughApex) return {waves.a, 0.0, 2.0 * waves.h};
  if (m_path.sheets == Sheets::kThroughInfinity) return {2.0 * waves.h, 0.0, waves.c};
  return waves;
}

QuadricEquation::Jet QuadricEquation::At(double u) const {
  const Angle angle(u);
  const auto at = [&](const Wave2& wave) { return m_path.hasCommonLine ? SinceLine(wave, angle) : On(wave, angle); };
  const WaveJet a = at(m_pair.a);
  const WaveJet h = at(m_pair.h);
  const WaveJet c = m_path.hasCommonLine ? WaveJet() : at(m_pair.c);
  return {OfSheets({a.value, h.value, c.value}), OfSheets({a.slope, h.slope, c.slope}),
          OfSheets({a.bend, h.bend, c.bend}), OfSheets({a.size, h.size, c.size})};
}

QuadricEquation::Factors QuadricEquation::BendBounds() const {
  if (m_path.hasCommonLine) return OfSheets({BendSinceLine(m_pair.a), BendSinceLine(m_pair.h), 0.0});
  return OfSheets({BendOf(m_pair.a), BendOf(m_pair.h), BendOf(m_pair.c)});
}

QuadricEquation::Factors QuadricEquation::TwistBounds() const {
  if (m_path.hasCommonLine) return OfSheets({TwistSinceLine(m_pair.a), TwistSinceLine(m_pair.h), 0.0});
  return OfSheets({TwistOf(m_pair.a), TwistOf(m_pair.h), TwistOf(m_pair.c)});
}

double QuadricEquation::Value(const Factors& k, const QuadricSpot& at) const {
  if (!IsQuadratic()) return k.a * at.s + k.c * at.c;
  return (k.a * at.s + 2.0 * k.h * at.c) * at.s + k.c * at.c * at.c;
}

double QuadricEquation::Slope(const Factors& k, const QuadricSpot& at) const {
  if (!IsQuadratic()) return k.a * at.c - k.c * at.s;
  return 2.0 * ((k.a - k.c) * at.s * at.c + k.h * (at.c - at.s) * (at.c + at.s));
}

double QuadricEquation::Bend(const Factors& k, const QuadricSpot& at) const {
  if (!IsQuadratic()) return -Value(k, at);
  return 2.0 * ((k.a - k.c) * (at.c - at.s) * (at.c + at.s) - 4.0 * k.h * at.s * at.c);
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
    if (!(moved > DBL_EPSILON * std::fabs(u))) break;
  }
  return u;
}

}  // namespace nu::engine::shapes
