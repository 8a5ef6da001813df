#include "nu/engine/roots/polynomial_roots.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "nu/engine/base/sort.h"
#include "nu/engine/base/workspace.h"
#include "nu/engine/roots/closed_form_roots.h"
#include "nu/engine/roots/laguerre.h"
#include "nu/engine/roots/power_scale.h"
#include "nu/engine/roots/root_polish.h"
#include "nu/engine/roots/root_refinement.h"

namespace nu::engine::roots {
namespace {

// Parts of a root below this are set to 0, unless the residual says that they are not rounding.
constexpr double kChop = 6.5e-6;
// An imaginary part above this share of a root is not a rounding error, whatever the polynomial.
constexpr double kNearAxis = 0x1p-5;
// The first step of the search is 4e-8 * 0.05, times 10 for every two degrees above 2.
constexpr double kSearchStep = 2e-9;
// Coefficients within this power of two of each other keep the discriminant of the resolvent cubic in range, which is
// of degree 12 in their ratios.
constexpr int kModerate = 75;

constexpr int kRegroupings = 4;
// The defaults of the tolerances that the iteration reads. A host that sets the first one higher states which imaginary
// parts are rounding errors; below the default the residual decides.
constexpr LaguerreRules kOwnRules = {4.45e-16, 1.5e-8};

double SearchStep(int degree) {
  double step = kSearchStep;
  for (int k = 1; k < degree / 2; ++k) step *= 10.0;
  return step;
}

double LargestPart(const Coefficients& p, int i) {
  return p.im == nullptr ? std::fabs(p.re[i]) : std::max(std::fabs(p.re[i]), std::fabs(p.im[i]));
}

// The polynomial in the unit of x where its outer coefficients are of one size, and its largest is about 1; with the
// order of its coefficients, and the reversed one.
class LevelPolynomial {
 public:
  LevelPolynomial(const Coefficients& p, double* room) : m_size(static_cast<std::size_t>(p.degree) + 1) {
    const bool real = p.im == nullptr;
    m_level = {room, real ? nullptr : room + m_size, p.degree};
    double* back = room + (real ? 1 : 2) * m_size;
    m_reversed = {back, real ? nullptr : back + m_size, p.degree};
    const int n = p.degree;
    m_exponent = (ExponentOf(LargestPart(p, 0)) - ExponentOf(LargestPart(p, n))) / n;
    // The unit is kept where nothing can overflow in it.
    constexpr int kHarmless = 20;
    if (std::abs(m_exponent) * n < kHarmless) m_exponent = 0;
    int lowest = ExponentOf(LargestPart(p, 0));
    m_shift = lowest;
    for (int i = 1; i <= n; ++i) {
      const double size = LargestPart(p, i);
      if (size == 0.0) continue;
      const int e = ExponentOf(size) + i * m_exponent;
      m_shift = std::max(m_shift, e);
      lowest = std::min(lowest, e);
    }
    m_moderate = m_shift - lowest < kModerate;
    for (int i = 0; i <= n; ++i) {
      const int e = i * m_exponent - m_shift;
      back[n - i] = room[i] = TimesPower(p.re[i], e);
      if (!real) back[m_size + n - i] = room[m_size + i] = TimesPower(p.im[i], e);
    }
  }

  const Coefficients& Level() const { return m_level; }
  const Coefficients& Reversed() const { return m_reversed; }
  bool IsModerate() const { return m_moderate; }
  // Converts between the caller's x and p(x) and those of the level polynomial.
  double In(double x) const { return TimesPower(x, -m_exponent); }
  double Out(double x) const { return TimesPower(x, m_exponent); }
  double ValueIn(double p) const { return TimesPower(p, -m_shift); }

 private:
  std::size_t m_size;
  Coefficients m_level{};
  Coefficients m_reversed{};
  int m_exponent = 0;
  int m_shift = 0;
  bool m_moderate = false;
};

class Finder {
 public:
  Finder(const Coefficients& p, const RootRules& rules, FoundRoot* roots)
      : m_n(p.degree),
        m_sides(p.im == nullptr ? 1 : 2),
        m_work(static_cast<std::size_t>(p.degree + 1) * static_cast<std::size_t>(4 * m_sides + 6)),
        m_p(p, m_work.Take(Count(2 * m_sides))),
        m_copy(m_work.Take(Count(m_sides))),
        m_scratch(m_work.Take(Count(m_sides + 4))),
        m_ratios(m_work.Take(Count(1))),
        m_rules(rules),
        m_roots(roots) {}

  int Run(bool closedFormsAndPolish) {
    if (!(closedFormsAndPolish && SolveInClosedForm())) SolveByDeflation();
    if (m_sides == 1) {
      SettleAxis();
    } else {
      SettleParts();
    }
    if (closedFormsAndPolish) {
      const PolishRules polish = {m_p.ValueIn(m_rules.zero), m_p.In(m_rules.large), m_p.In(SearchStep(m_n))};
      m_count = PolishRealRoots(m_p.Level().re, m_n, polish, m_roots, m_count, m_scratch);
    }
    return KeepFinite();
  }

 private:
  std::size_t Count(int blocks) const { return static_cast<std::size_t>(m_n + 1) * static_cast<std::size_t>(blocks); }

  bool Refine(double enough) {
    return RefineRoots(m_p.Level(), m_p.Reversed(), enough, m_roots, m_count, m_ratios, m_scratch);
  }

  // Returns false when the closed form is not precise enough, as for roots of very different size.
  bool SolveInClosedForm() {
    const double* c = m_p.Level().re;
    if (m_n == 1) {
      m_count = SolveLinear(c, m_roots);
      return true;
    }
    if (m_n == 2) {
      m_count = SolveQuadratic(c, m_roots);
      return true;
    }
    if (m_n > 4 || !m_p.IsModerate()) return false;
    m_count = m_n == 3 ? SolveCubic(c, m_roots) : SolveQuartic(c, m_rules.lengthTol, m_roots);
    return Refine(0.5 * ResidualLimit(m_n));
  }

  // Tries a second time with the default tolerances where those of the host do not lead to the roots.
  void SolveByDeflation() {
    const Coefficients& level = m_p.Level();
    for (const LaguerreRules& rules : {LaguerreRules{m_rules.tol, m_rules.sqrtTol}, kOwnRules}) {
      for (int side = 0; side < m_sides; ++side) {
        std::copy_n(side == 0 ? level.re : level.im, m_n + 1, m_copy + side * (m_n + 1));
      }
      m_count = m_sides == 1 ? FindByDeflation(m_copy, m_n, m_scratch, rules, m_roots)
                             : FindByComplexDeflation(m_copy, m_n, m_scratch, rules, m_roots);
      if (Refine(kRounding)) return;
    }
    for (int round = 0; m_sides == 1 && round < kRegroupings; ++round) {
      Regroup(round);
      if (Refine(kRounding)) return;
    }
  }

  // Real approximations that no step improves belong to pairs, and pairs near the axis may be two real roots. At high
  // degrees the deflation assigns them wrongly; here they are joined anew, neighbour to neighbour.
  void Regroup(int round) {
    const double limit = ResidualLimit(m_n);
    int kept = 0;
    int loose = 0;
    double* x = m_scratch;
    for (int i = 0; i < m_count; ++i) {
      const FoundRoot root = m_roots[i];
      if (m_ratios[i] <= limit || root.im > kNearAxis * std::fabs(root.re)) {
        m_roots[kept++] = root;
        continue;
      }
      x[loose++] = root.re - root.im;
      if (root.pair) x[loose++] = root.re + root.im;
    }
    Sort(loose, x);
    int i = round % 2;
    if (i == 1 && loose > 0) m_roots[kept++] = {x[0], 0.0, false};
    for (; i + 1 < loose; i += 2) {
      const double middle = 0.5 * (x[i] + x[i + 1]);
      m_roots[kept++] = {middle, std::max(0.5 * (x[i + 1] - x[i]), std::fabs(middle) / m_n), true};
    }
    if (i < loose) m_roots[kept++] = {x[i], 0.0, false};
    m_count = kept;
  }

  // The residual at a changed root decides whether the change was within rounding.
  bool TakeIfRoot(int i, FoundRoot changed, double limit) {
    double ratio;
    RelativeResiduals(m_p.Level(), m_p.Reversed(), &changed, 1, &ratio);
    if (!(ratio <= limit)) return false;
    m_roots[i] = changed;
    return true;
  }

  bool IsRealToHost(double im) const { return m_rules.tol > kOwnRules.tol && std::fabs(m_p.Out(im)) < m_rules.tol; }

  // A pair whose real part is a root to rounding is a double real root; a real part within rounding of 0 becomes 0.
  void SettleAxis() {
    const double limit = 0.25 * ResidualLimit(m_n);
    const double chop = m_p.In(kChop);
    for (int i = 0; i < m_count; ++i) {
      const FoundRoot x = m_roots[i];
      if (!x.pair || x.im == 0.0) continue;
      if (IsRealToHost(x.im)) {
        m_roots[i].im = 0.0;
        continue;
      }
      if (x.im <= std::max(kNearAxis * std::fabs(x.re), chop) && m_n > 2 && TakeIfRoot(i, {x.re, 0.0, true}, limit)) {
        continue;
      }
      if (x.re != 0.0 && std::fabs(x.re) < chop) TakeIfRoot(i, {0.0, x.im, true}, limit);
    }
  }

  void SettleParts() {
    const double limit = 0.5 * ResidualLimit(m_n);
    const double chop = m_p.In(kChop);
    const double tol = m_p.In(m_rules.tol);
    for (int i = 0; i < m_count; ++i) {
      const FoundRoot x = m_roots[i];
      if (IsRealToHost(x.im)) m_roots[i].im = 0.0;
      if (std::fabs(x.im) < chop || std::fabs(x.im) < tol) TakeIfRoot(i, {x.re, 0.0, false}, limit);
      if (std::fabs(x.re) < chop) TakeIfRoot(i, {0.0, m_roots[i].im, false}, limit);
    }
  }

  int KeepFinite() {
    int kept = 0;
    for (int i = 0; i < m_count; ++i) {
      const FoundRoot x = {m_p.Out(m_roots[i].re), m_p.Out(m_roots[i].im), m_roots[i].pair};
      if (std::isfinite(x.re) && std::isfinite(x.im)) m_roots[kept++] = x;
    }
    return kept;
  }

  static constexpr int kInline = 320;  // degree 30

  int m_n;
  int m_sides;
  Workspace<kInline> m_work;
  LevelPolynomial m_p;
  double* m_copy;
  double* m_scratch;
  double* m_ratios;
  RootRules m_rules;
  FoundRoot* m_roots;
  int m_count = 0;
};

}  // namespace

int EffectiveDegree(const Coefficients& p, double zero) {
  int degree = p.degree;
  for (int i = 0; i <= degree; ++i) {
    if (!std::isfinite(p.re[i]) || !(p.im == nullptr || std::isfinite(p.im[i]))) return -1;
  }
  while (degree > 0 && (LargestPart(p, degree) == 0.0 || LargestPart(p, degree) < zero)) --degree;
  return degree;
}

int FindRoots(const Coefficients& p, bool closedFormsAndPolish, const RootRules& rules, FoundRoot* roots) {
  int zeros = 0;
  while (LargestPart(p, zeros) == 0.0) roots[zeros++] = {};
  if (zeros == p.degree) return zeros;
  const Coefficients rest = {p.re + zeros, p.im == nullptr ? nullptr : p.im + zeros, p.degree - zeros};
  return zeros + Finder(rest, rules, roots + zeros).Run(closedFormsAndPolish);
}

}  // namespace nu::engine::roots
