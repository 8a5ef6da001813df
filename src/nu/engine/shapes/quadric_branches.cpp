// The generators that touch the other quadric part those that cross it, twice each, from those that miss it. A range of
// crossed ones between two of them gives a curve that goes there on one sheet of crossings and returns on the other;
// all generators crossed give a curve on each sheet. So both crossings of one generator in each range begin all
// branches. A generator that touches amid crossed ones, within the tolerance, carries a double point, where the sheets
// change over; amid others it carries a point of contact.
//
// With z = tan(u/2) the discriminant is N(z) / (1 + z^2)^2 with a polynomial N of degree 4, and it is stationary where
// N'(z) (1 + z^2) = 4 z N(z). Next to u = 0 these are polynomials with small coefficients of low order, which are known
// to all digits.

#include "nu/engine/shapes/quadric_branches.h"

#include <utility>

#include "nu/engine/base/elementary.h"
#include "nu/engine/shapes/quadric_trace.h"
#include "nu/foundation/constants.h"

namespace nu::engine::shapes {

namespace {

using Sheets = QuadricPath::Sheets;

// A generator that touches; `isContact` where it does so at an extremum of its depth, within the tolerance.
struct Touch {
  double u = 0.0;
  bool isContact = false;
};

// The number between two of a range that is the middle one by its digits: of numbers of different size, by their
// exponents.
double MiddleByDigits(double left, double right) {
  constexpr double kLeast = 1e-30;  // no angle has a meaning below that
  if (left < 0.0 && right > 0.0) return 0.0;
  if (left < 0.0) return -MiddleByDigits(-right, -left);
  const double lower = std::fmax(left, kLeast);
  return right > 2.0 * lower ? std::sqrt(lower * right) : 0.5 * (left + right);
}

// Where a condition begins to hold that does so at the right end only.
template<class Condition>
double BisectByDigits(double left, double right, const Condition& holds) {
  constexpr int kSteps = 64;
  for (int step = 0; step < kSteps; ++step) {
    const double middle = MiddleByDigits(left, right);
    (holds(middle) ? right : left) = middle;
  }
  return right;
}

// The real roots between two numbers, ascending. Between the roots of the derivative there is one at most.
std::vector<double> RootsBetween(double lower, double upper, const double* c, int degree) {
  if (degree == 0) return {};
  double slope[4] = {};
  for (int i = 1; i <= degree; ++i) slope[i - 1] = i * c[i];
  const auto value = [&](double z) {
    double sum = c[degree];
    for (int i = degree; i > 0; --i) sum = sum * z + c[i - 1];
    return sum;
  };
  std::vector<double> ends = RootsBetween(lower, upper, slope, degree - 1);
  ends.insert(ends.begin(), lower);
  ends.push_back(upper);
  std::vector<double> roots;
  for (std::size_t i = 1; i < ends.size(); ++i) {
    const bool isAbove = value(ends[i]) > 0.0;
    if ((value(ends[i - 1]) > 0.0) == isAbove) continue;
    roots.push_back(BisectByDigits(ends[i - 1], ends[i], [&](double z) { return (value(z) > 0.0) == isAbove; }));
  }
  return roots;
}

void AddStationaryNextTo0(const QuadricPair& pair, std::vector<double>& angles) {
  constexpr double kNear = 0.01;  // farther away, angles of a full turn have enough digits
  double a[5], h[5], c[5], n[5];
  pair.a.ToPolynomial(a);
  pair.h.ToPolynomial(h);
  pair.c.ToPolynomial(c);
  for (int k = 0; k < 5; ++k) {
    n[k] = 0.0;
    for (int i = 0; i <= k; ++i) n[k] += h[i] * h[k - i] - a[i] * c[k - i];
    // h^2 - a c by polynomials of degree 8 has the factor (1 + z^2)^2.
    if (k > 1) n[k] -= 2.0 * n[k - 2];
    if (k > 3) n[k] -= n[k - 4];
  }
  const double stationary[] = {n[1], 2.0 * (n[2] - 2.0 * n[0]), 3.0 * (n[3] - n[1]), 4.0 * n[4] - 2.0 * n[2], -n[3]};
  angles.erase(std::remove_if(angles.begin(), angles.end(),
                              [](double u) { return std::fabs(std::remainder(u, Nu_2PI)) <= kNear; }),
               angles.end());
  const double bound = Tan(0.5 * kNear);
  for (const double z : RootsBetween(-bound, bound, stationary, 4)) angles.push_back(2.0 * Atan(z));
  for (double& u : angles) u = AngleNear(u, 0.0);
  std::sort(angles.begin(), angles.end());
}

std::vector<Touch> TouchesOf(const QuadricPair& pair, const std::vector<double>& stationary, double tol) {
  std::vector<Touch> touches;
  const std::size_t count = stationary.size();
  for (std::size_t i = 0; i < count; ++i) {
    const double u = stationary[i];
    const double next = i + 1 < count ? stationary[i + 1] : stationary[0] + Nu_2PI;
    const double depth = pair.Depth(u);
    const double nextDepth = pair.Depth(next);
    if (std::fabs(depth) <= tol) {
      touches.push_back({u, true});
    } else if (std::fabs(nextDepth) > tol && (depth > 0.0) != (nextDepth > 0.0)) {
      const bool isIn = nextDepth > 0.0;
      touches.push_back({BisectByDigits(u, next, [&](double v) { return (pair.Depth(v) > 0.0) == isIn; }), false});
    }
  }
  return touches;
}

class BranchFinder {
 public:
  BranchFinder(const QuadricPair& pair, const std::vector<Touch>& touches, const std::vector<double>& asymptotes,
               double tol, double reach)
      : m_pair(pair), m_touches(touches), m_asymptotes(asymptotes), m_tol(tol), m_reach(reach) {
    for (std::size_t i = 0; i < touches.size(); ++i) {
      m_crossesAfter.push_back(pair.Depth(0.5 * (touches[i].u + NextTouch(i))) > 0.0);
    }
  }

  std::optional<QuadricBranches> Find() && {
    std::vector<double> doublePoints;
    for (std::size_t i = 0; i < m_touches.size(); ++i) {
      if (!m_touches[i].isContact) continue;
      const bool crossesBefore = m_crossesAfter[i > 0 ? i - 1 : m_touches.size() - 1];
      if (crossesBefore || m_crossesAfter[i]) {
        doublePoints.push_back(m_touches[i].u);
      } else {
        m_branches.points.push_back(m_pair.Middle(m_touches[i].u));
      }
    }
    if (!Trace(doublePoints)) return std::nullopt;
    return std::move(m_branches);
  }

 private:
  double NextTouch(std::size_t i) const {
    return i + 1 < m_touches.size() ? m_touches[i + 1].u : m_touches[0].u + Nu_2PI;
  }

  bool Trace(const std::vector<double>& doublePoints) {
    std::vector<QuadricSeed> seeds;
    const auto add = [&](double u) {
      for (const double sign : {-1.0, 1.0}) seeds.push_back({AngleNear(u, 0.0), sign});
    };
    // Three generators, as one may be next to a double point.
    for (const double share : {0.5, 0.25, 0.75}) {
      for (std::size_t i = 0; i < m_touches.size(); ++i) {
        if (m_crossesAfter[i]) add((1.0 - share) * m_touches[i].u + share * NextTouch(i));
      }
      if (m_touches.empty() && m_pair.Depth(Nu_PI * share) > 0.0) add(Nu_PI * share);
    }
    auto curves = TraceBranches({m_pair, {}, seeds, doublePoints, m_asymptotes, m_tol, m_reach});
    if (curves) m_branches.curves = std::move(*curves);
    return curves.has_value();
  }

  const QuadricPair& m_pair;
  const std::vector<Touch>& m_touches;
  const std::vector<double>& m_asymptotes;
  double m_tol;
  double m_reach;
  std::vector<bool> m_crossesAfter;  // behind each touch, before the next one
  QuadricBranches m_branches;
};

// One crossing on each generator.
std::optional<QuadricBranches> SingleSheet(const QuadricPair& pair, const QuadricPath& path,
                                           const std::vector<double>& asymptotes, double tol, double reach) {
  auto curves = TraceBranches({pair, path, {{0.5 * Nu_PI, 1.0}}, {}, asymptotes, tol, reach});
  if (!curves) return std::nullopt;
  return QuadricBranches{std::move(*curves), {}};
}

// With h such that a t + 2 h = 0 without the crossings at the apex, where c is taken as 0. Next to a second apex this
// is c over the distance from the first one, which is known to all digits there.
QuadricPair WithoutApex(QuadricPair pair) {
  const bool hasSecondApex = pair.other.kind == RoundQuadric::Kind::kCone && pair.start != 0.0;
  pair.h = hasSecondApex ? (0.5 / pair.start) * pair.c : pair.h + (-0.5 * pair.start) * pair.a;
  return pair;
}

// Whether the curve a t + 2 h = 0 comes to t = 0 within the tolerance: next to where |h| is least, with h of degree
// one.
bool ComesToApex(const Wave2& a, const Wave2& h, double tol) {
  const double middle = h.value + h.versed;
  const double amplitude = Hypot(h.versed, h.slope);
  const double least = std::fabs(middle) - amplitude;
  if (!(least > 0.0)) return true;
  const double u = middle > 0.0 ? Atan2(-h.slope, h.versed) : Atan2(h.slope, -h.versed);
  const double nearby = std::fmin(std::sqrt(2.0 * least / amplitude), Nu_PI);
  const auto isWithin = [&](double v) { return 2.0 * std::fabs(h.At(v)) <= tol * std::fabs(a.At(v)); };
  return isWithin(u - nearby) || isWithin(u) || isWithin(u + nearby);
}

}  // namespace

std::optional<QuadricBranches> BranchesOf(const QuadricPair& pair, std::vector<double> stationary,
                                          const std::vector<double>& asymptotes, double tol, double reach) {
  AddStationaryNextTo0(pair, stationary);
  return BranchFinder(pair, TouchesOf(pair, stationary, tol), asymptotes, tol, reach).Find();
}

// The curve comes to the apex where h = 0. Where that is nowhere, the apex is a point by itself.
std::optional<QuadricBranches> BranchesThroughApex(const QuadricPair& pair, const std::vector<double>& asymptotes,
                                                   double tol, double reach) {
  auto branches = SingleSheet(WithoutApex(pair), {.sheets = Sheets::kThroughApex}, asymptotes, tol, reach);
  const Wave2 h = pair.h + -pair.start * pair.a;  // at the apex
  if (branches && !ComesToApex(pair.a, h, tol)) branches->points.push_back(pair.base.point);
  return branches;
}

std::optional<QuadricBranches> BranchesBesideLine(const QuadricPair& pair, const std::vector<double>& asymptotes,
                                                  double tol, double reach) {
  const QuadricPath path{.sheets = Sheets::kThroughApex, .hasCommonLine = true};
  return SingleSheet(WithoutApex(pair), path, asymptotes, tol, reach);
}

std::optional<QuadricBranches> BranchesThroughInfinity(const QuadricPair& pair, const std::vector<double>& asymptotes,
                                                       double tol, double reach) {
  return SingleSheet(pair, {.sheets = Sheets::kThroughInfinity}, asymptotes, tol, reach);
}

}  // namespace nu::engine::shapes
