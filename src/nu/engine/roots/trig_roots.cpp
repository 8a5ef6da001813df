#include "nu/engine/roots/trig_roots.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/error_free.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/roots/trig_isolation.h"
#include "nu/engine/roots/trig_series.h"
#include "nu/engine/roots/trig_sum.h"
#include "nu/foundation/constants.h"

// Roots of a trigonometric polynomial without eigenvalues: the circle is cut into cells on each of which bounds prove
// that some derivative of f keeps its sign (trig_isolation.h). Between the zeros of f' a function is monotone, so from
// the highest of these orders down to 0 the zeros of one order separate those of the order below, and every sign change
// between neighbours is a bracket with exactly one root. Where a critical point touches zero within the rounding of the
// coefficients, there is a multiple root.

namespace nu::engine::roots {
namespace {

constexpr double kEps = kEpsilon;

// Harmonics that together are below a quarter of a rounding of the whole are left out.
constexpr double kNegligibleShare = kEps / 4;

// Half the distance of doubles next to 2 pi; no root can be known better.
constexpr double kAngleResolution = 2 * kEps;
// Roots so close below 2 pi are 0: the error of a root and of 2 pi as a double.
constexpr double kSeam = 8 * kEps;

// Newton's method takes half a dozen steps. After more than that many bisection follows, which needs 54 from a full
// turn to the resolution.
constexpr int kMostNewtonSteps = 60;
constexpr int kMostSteps = kMostNewtonSteps + 54;
// From this error on one step on the accurate sum leaves only rounding where the curvature is not much above the slope.
constexpr double kPolishable = 1e-9;
// Newton's method on the accurate sum takes one step as a rule; more are for roots that are almost double.
constexpr int kMostPolishingSteps = 6;

struct Root {
  double u;
  int multiplicity;
};

struct Point {
  double u;
  double value;
};

// Finds the roots of one derivative from its points in ascending order, between which it is monotone.
class Descent {
 public:
  Descent(const TrigIsolation& isolation, const TrigSeries& f, int order, std::vector<Root>& roots)
      : m_isolation(isolation), m_f(f), m_order(order), m_roots(roots) {}

  // A point where the value is known, but which is no extremum.
  void VisitPlain(const Point& point) {
    if (std::fabs(point.value) > m_isolation.Noise(m_order)) VisitNonZero(point);
  }

  void VisitCritical(const Root& critical) {
    double value = m_f.At(critical.u).value;
    double tolerance = m_isolation.Noise(m_order);
    if (m_order == 0 && std::fabs(value) <= tolerance) {
      value = TrigValue(m_f.Cos(), m_f.Sin(), m_f.Degree(), critical.u);
      tolerance = m_isolation.TouchTolerance();
    }
    if (std::fabs(value) > tolerance) return VisitNonZero({critical.u, value});
    m_touching.u += critical.multiplicity * critical.u;
    m_touching.multiplicity += critical.multiplicity;
  }

  void EndStretch() {
    CloseTouching();
    m_last.value = 0.0;
  }

 private:
  void VisitNonZero(const Point& point) {
    if (m_touching.multiplicity > 0) {
      CloseTouching();
    } else if (m_last.value != 0.0 && (m_last.value > 0.0) != (point.value > 0.0)) {
      m_roots.push_back({Polished(Bracketed(m_last, point), m_last.u, point.u), 1});
    }
    m_last = point;
  }

  // Critical points of order m together make a root of order m + 1 at their mean, which is a zero of the highest
  // derivative that vanishes there and so is as well determined as that.
  void CloseTouching() {
    if (m_touching.multiplicity > 0)
      m_roots.push_back({m_touching.u / m_touching.multiplicity, m_touching.multiplicity + 1});
    m_touching = {0.0, 0};
  }

  // Newton's method from the root of the secant, kept in a shrinking bracket, until the error is small enough for
  // Polished.
  double Bracketed(const Point& left, const Point& right) const {
    double low = left.u, high = right.u;
    const double floor = m_isolation.EvaluationError(m_order);
    double u = low + (high - low) * (left.value / (left.value - right.value));
    double previous = kInfinity;
    for (int step = 0; step < kMostSteps && high - low > kAngleResolution; ++step) {
      const auto [value, tSlope] = m_f.At(u);
      const double slope = tSlope * m_f.Degree();
      ((value > 0.0) == (right.value > 0.0) ? high : low) = u;
      double next = u - value / slope;
      const bool inside = next >= low && next <= high;
      if (inside && (std::fabs(value) <= floor || ErrorAfter(next - u, slope) <= kPolishable)) return next;
      if (!inside || step >= kMostNewtonSteps || std::fabs(value) > 0.5 * previous) next = low + 0.5 * (high - low);
      previous = std::fabs(value);
      u = next;
    }
    return u;
  }

  // Polishes a root by Newton's method on the accurate sum.
  double Polished(double u, double low, double high) const {
    const int n = m_f.Degree();
    for (int step = 0; step < kMostPolishingSteps; ++step) {
      const double slope = m_f.At(u).slope * n;
      const double change = TrigValue(m_f.Cos(), m_f.Sin(), n, u) / slope;
      const double next = u - change;
      if (!(next >= low && next <= high)) break;
      u = next;
      if (ErrorAfter(change, slope) <= kAngleResolution) break;
    }
    return u;
  }

  // Bounds the error after a Newton step, which with the second derivative f'' is f'' / (2 slope) times the square of
  // the step.
  double ErrorAfter(double change, double slope) const {
    const int n = m_f.Degree();
    return 0.5 * m_isolation.Bound(m_order + 2) * n * n * change * change / std::fabs(slope);
  }

  const TrigIsolation& m_isolation;
  const TrigSeries& m_f;
  int m_order;
  std::vector<Root>& m_roots;
  Root m_touching = {0.0, 0};
  Point m_last = {0.0, 0.0};
};

// Finds the roots of the derivative `order` from those of the next one, on all cells where it may have some.
std::vector<Root> Descend(const TrigIsolation& isolation, const TrigSeries& f, int order,
                          const std::vector<Root>& criticals) {
  const std::vector<TrigPoint>& points = isolation.Points();
  std::vector<Root> roots;
  Descent descent(isolation, f, order, roots);
  const auto visitEnd = [&](const TrigPoint& p) {
    descent.VisitPlain({p.u, order < TrigSeries::kSamples ? p.d[order] : f.At(p.u).value});
  };
  std::size_t next = 0;
  bool inside = false;
  for (std::size_t i = 0; i + 1 < points.size(); ++i) {
    if (points[i].order <= order) {
      if (inside) descent.EndStretch();
      inside = false;
      continue;
    }
    if (!inside) visitEnd(points[i]);
    inside = true;
    for (; next < criticals.size() && criticals[next].u <= points[i + 1].u; ++next)
      descent.VisitCritical(criticals[next]);
    visitEnd(points[i + 1]);
  }
  if (inside) descent.EndStretch();
  return roots;
}

// Requires n > 1 and coefficients of size 1. The roots are in no order and up to one turn beyond the circle.
std::vector<Root> GeneralRoots(const TrigSeries& f) {
  const TrigIsolation isolation(f, kCoefficientRoundings);
  std::vector<TrigSeries> derivatives;
  for (int order = 1; order < isolation.HighestOrder(); ++order)
    derivatives.push_back((order == 1 ? f : derivatives.back()).Derivative());
  std::vector<Root> roots;
  for (; !derivatives.empty(); derivatives.pop_back())
    roots = Descend(isolation, derivatives.back(), static_cast<int>(derivatives.size()), roots);
  return Descend(isolation, f, 0, roots);
}

// Solves a cos u + b sin u + c = 0, which has a maximum at the angle of (a, b): the roots lie symmetrically about it.
// Their distance from it depends on A^2 - c^2, A^2 = a^2 + b^2, which is formed without cancellation.
std::vector<Root> FirstDegreeRoots(double a, double b, double c) {
  const auto [smaller, larger] = std::minmax({a * a, b * b});
  const double squares = larger + smaller;
  const double lost = smaller - (squares - larger) + ProductError(a, a) + ProductError(b, b);
  const double discriminant = (squares - c * c) + (lost - ProductError(c, c));
  const double size = std::sqrt(squares) + std::fabs(c);
  const double top = Atan2(b, a);
  if (std::fabs(discriminant) <= kCoefficientRoundings * kEps * size * size) return {{c > 0.0 ? top + Nu_PI : top, 2}};
  if (discriminant < 0.0) return {};
  const double half = Atan2(std::sqrt(discriminant), -c);
  return {{top - half, 1}, {top + half, 1}};
}

double InCircle(double u) {
  if (u >= Nu_2PI) u -= Nu_2PI;
  if (u < 0.0) u += Nu_2PI;
  return u < Nu_2PI - kSeam ? std::max(u, 0.0) : 0.0;
}

// The coefficients, scaled by powers of two to size 1, without negligible harmonics; the highest harmonic that is left,
// and the greatest common divisor of all.
struct Prepared {
  std::vector<double> a, b;
  int highest = 0;
  int divisor = 0;
};

Prepared Prepare(const double* a, const double* b, int n) {
  Prepared p;
  double largest = std::fabs(a[0]);
  for (int k = 1; k <= n; ++k) largest = std::max({largest, std::fabs(a[k]), std::fabs(b[k])});
  const int exponent = largest > 0.0 ? -std::ilogb(largest) : 0;
  p.a.resize(static_cast<std::size_t>(n) + 1);
  p.b.resize(p.a.size());
  double total = 0.0;
  for (int k = 0; k <= n; ++k) {
    p.a[k] = std::scalbn(a[k], exponent);
    p.b[k] = k == 0 ? 0.0 : std::scalbn(b[k], exponent);
    total += std::fabs(p.a[k]) + std::fabs(p.b[k]);
  }
  const double negligible = kNegligibleShare * total / (n + 1);
  for (int k = 1; k <= n; ++k) {
    if (std::fabs(p.a[k]) + std::fabs(p.b[k]) <= negligible) {
      p.a[k] = p.b[k] = 0.0;
    } else {
      p.highest = k;
      p.divisor = std::gcd(p.divisor, k);
    }
  }
  return p;
}

}  // namespace

std::vector<double> TrigRoots(const double* a, const double* b, int n) {
  Prepared p = Prepare(a, b, n);
  if (p.highest == 0) return {};
  // With v = u times the divisor the degree is smaller, and the roots repeat.
  const int degree = p.highest / p.divisor;
  for (int k = 1; k <= degree; ++k) {
    p.a[k] = p.a[k * p.divisor];
    p.b[k] = p.b[k * p.divisor];
  }
  const std::vector<Root> found =
      degree == 1 ? FirstDegreeRoots(p.a[1], p.b[1], p.a[0]) : GeneralRoots(TrigSeries(p.a.data(), p.b.data(), degree));
  std::vector<double> roots;
  for (const Root& root : found) {
    for (int turn = 0; turn < p.divisor; ++turn)
      roots.insert(roots.end(), static_cast<std::size_t>(root.multiplicity),
                   InCircle((InCircle(root.u) + turn * Nu_2PI) / p.divisor));
  }
  std::sort(roots.begin(), roots.end());
  return roots;
}

}  // namespace nu::engine::roots
