#include "nu/engine/quadrature/break_search.h"

#include <algorithm>
#include <cmath>

#include "nu/engine/base/floating_point.h"

// Three points enclose the place. In every step their intervals are halved, and the three neighbours with the largest
// change of slope remain. That change halves with the width where the integrand is smooth; at a kink it stays, at a
// root of the distance it grows by sqrt 2, at a jump by 2. The place is known well enough when what it leaves open of
// the integral, the change times the square of the width, is a rounding error of the integral over the first three
// points.

namespace nu::engine::quadrature {

namespace {

// From the largest width to the smallest distance of doubles around 1e-300.
constexpr int kMostSteps = 1100;
// The change of slope is believed after this many steps, if it is not below half of what a fall by sqrt 2 in each step
// since its peak would leave: with a kink anywhere between the points it varies by a factor of two.
constexpr int kPatience = 4;
constexpr double kLeastKept = 0.5;
constexpr double kFall = 0.70710678118654752440;
// Rounding errors of the samples, in units of the largest.
constexpr double kNoise = 8.0 * kEpsilon;
// Where the change of slope has grown as much and one difference exceeds the other as much, a jump is in it, and the
// other interval is not looked at.
constexpr double kGrowth = 1.6;
constexpr double kJump = 8.0;

struct Point {
  double x;
  Sample f;
};

// Differences of three neighbours.
struct Triple {
  Point p, q, r;

  double Left() const { return q.f.value - p.f.value; }
  double Right() const { return r.f.value - q.f.value; }
  double Bend() const { return std::fabs(Right() / (r.x - q.x) - Left() / (q.x - p.x)); }
  double Noise() const {
    const double largest = std::max({std::fabs(p.f.value), std::fabs(q.f.value), std::fabs(r.f.value)});
    return kNoise * largest + p.f.error + q.f.error + r.f.error;
  }
  double Area() const { return (r.x - p.x) * std::max(std::fabs(Left()), std::fabs(Right())); }
  double Open() const { return Bend() * (r.x - p.x) * (r.x - p.x); }
  bool Drowned() const { return !(Bend() * std::min(q.x - p.x, r.x - q.x) > Noise()); }
};

class Search {
 public:
  Search(const Integrand& f, long* samples) : m_f(f), m_samples(samples) {}

  std::optional<BreakPlace> Run(double lo, double hi) {
    const double middle = lo + 0.5 * (hi - lo);
    if (!(lo < middle && middle < hi)) return std::nullopt;
    m_at = {PointAt(lo), PointAt(middle), PointAt(hi)};
    const double enough = kEpsilon * m_at.Area();
    double peak = 0.0;
    double before = kInfinity;
    for (int step = 0, since = 0; step < kMostSteps; ++step, ++since, peak *= kFall) {
      if (m_hit) return BreakPlace{*m_hit, 0.0};
      const double bend = m_at.Bend();
      if (!(bend >= 0.0)) return std::nullopt;
      if (m_at.Drowned()) return step < kPatience ? std::nullopt : Here();
      if (bend >= peak) since = 0;
      peak = std::max(peak, bend);
      if (since >= kPatience && bend < kLeastKept * peak) return std::nullopt;
      if (step >= kPatience && m_at.Open() <= enough) return Here();
      if (!Halve(bend > kGrowth * before)) return Here();
      before = bend;
    }
    return std::nullopt;
  }

 private:
  std::optional<BreakPlace> Here() const { return BreakPlace{m_at.q.x, m_at.Open()}; }

  // A value that is not finite is a singularity that was hit.
  Point PointAt(double x) {
    ++*m_samples;
    const Point point = {x, m_f(x)};
    if (!std::isfinite(point.f.value)) m_hit = x;
    return point;
  }

  // Returns whether there were doubles between.
  bool Halve(bool jumps) {
    const auto& [p, q, r] = m_at;
    const double left = p.x + 0.5 * (q.x - p.x);
    const double right = q.x + 0.5 * (r.x - q.x);
    if (!(p.x < left && left < q.x && q.x < right && right < r.x)) return false;
    const double before = std::fabs(m_at.Left());
    const double after = std::fabs(m_at.Right());
    if (jumps && before > kJump * after) {
      m_at = {p, PointAt(left), q};
    } else if (jumps && after > kJump * before) {
      m_at = {q, PointAt(right), r};
    } else {
      const Point l = PointAt(left);
      const Point m = PointAt(right);
      const Triple first = {p, l, q};
      const Triple second = {l, q, m};
      const Triple third = {q, m, r};
      const double most = std::max({first.Bend(), second.Bend(), third.Bend()});
      m_at = second.Bend() == most ? second : first.Bend() == most ? first : third;
    }
    return true;
  }

  const Integrand& m_f;
  long* m_samples;
  Triple m_at{};
  std::optional<double> m_hit;
};

}  // namespace

std::optional<BreakPlace> FindBreak(const Integrand& f, double lo, double hi, long* samples) {
  const std::optional<BreakPlace> found = Search(f, samples).Run(lo, hi);
  return found && found->place > lo && found->place < hi ? found : std::nullopt;
}

}  // namespace nu::engine::quadrature
