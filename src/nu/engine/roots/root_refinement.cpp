#include "nu/engine/roots/root_refinement.h"

#include <algorithm>
#include <cmath>

#include "nu/engine/base/complex_number.h"
#include "nu/engine/base/simd.h"

namespace nu::engine::roots {
namespace {

constexpr int kMaxSweeps = 60;

// The values at one point: at x, or at 1 / x of the reversed polynomial.
struct Values {
  Complex x;
  Complex p;
  Complex d;
  double size;
};

// Evaluates up to eight points of the unit disc at once: larger ones come as 1 / x, with the reversed polynomial.
struct Batch {
  double xRe[kLanes];
  double xIm[kLanes];
  double pRe[kLanes];
  double pIm[kLanes];
  double dRe[kLanes];
  double dIm[kLanes];
  double size[kLanes];
};

template<bool kReal>
NU_ALWAYS_INLINE void EvaluateLanes(const Coefficients& p, Batch* batch) {
  double xRe[kLanes], xIm[kLanes], modulus[kLanes], pRe[kLanes], pIm[kLanes], dRe[kLanes], dIm[kLanes], size[kLanes];
  const double leadRe = p.re[p.degree];
  const double leadIm = kReal ? 0.0 : p.im[p.degree];
  NU_LANE_LOOP for (int l = 0; l < kLanes; ++l) {
    xRe[l] = batch->xRe[l];
    xIm[l] = batch->xIm[l];
    modulus[l] = std::sqrt(xRe[l] * xRe[l] + xIm[l] * xIm[l]);
    pRe[l] = leadRe;
    pIm[l] = leadIm;
    dRe[l] = dIm[l] = 0.0;
    size[l] = std::fabs(leadRe) + std::fabs(leadIm);
  }
  for (int i = p.degree - 1; i >= 0; --i) {
    const double re = p.re[i];
    const double im = kReal ? 0.0 : p.im[i];
    const double both = std::fabs(re) + std::fabs(im);
    NU_LANE_LOOP for (int l = 0; l < kLanes; ++l) {
      const double oldD = dRe[l];
      const double oldP = pRe[l];
      dRe[l] = xRe[l] * dRe[l] - xIm[l] * dIm[l] + pRe[l];
      dIm[l] = xRe[l] * dIm[l] + xIm[l] * oldD + pIm[l];
      pRe[l] = xRe[l] * pRe[l] - xIm[l] * pIm[l] + re;
      pIm[l] = xRe[l] * pIm[l] + xIm[l] * oldP;
      if constexpr (!kReal) pIm[l] += im;
      size[l] = modulus[l] * size[l] + both;
    }
  }
  NU_LANE_LOOP for (int l = 0; l < kLanes; ++l) {
    batch->pRe[l] = pRe[l];
    batch->pIm[l] = pIm[l];
    batch->dRe[l] = dRe[l];
    batch->dIm[l] = dIm[l];
    batch->size[l] = size[l];
  }
}

NU_KERNEL void EvaluateReal(const Coefficients& p, Batch* batch) {
  EvaluateLanes<true>(p, batch);
}
NU_KERNEL void EvaluateComplex(const Coefficients& p, Batch* batch) {
  EvaluateLanes<false>(p, batch);
}

// Does the same for one point, as a few roots do not fill the lanes.
template<bool kReal>
Values EvaluatePoint(const Coefficients& p, Complex x) {
  const double modulus = std::sqrt(x.re * x.re + x.im * x.im);
  Complex b = {p.re[p.degree], kReal ? 0.0 : p.im[p.degree]};
  Complex d = {0.0, 0.0};
  double size = std::fabs(b.re) + std::fabs(b.im);
  for (int i = p.degree - 1; i >= 0; --i) {
    const double im = kReal ? 0.0 : p.im[i];
    d = {x.re * d.re - x.im * d.im + b.re, x.re * d.im + x.im * d.re + b.im};
    b = {x.re * b.re - x.im * b.im + p.re[i], x.re * b.im + x.im * b.re + im};
    size = modulus * size + (std::fabs(p.re[i]) + std::fabs(im));
  }
  return {x, b, d, size};
}

Values EvaluateOnAxis(const double* c, int degree, double x) {
  double b = c[degree];
  double d = 0.0;
  double size = std::fabs(b);
  for (int i = degree - 1; i >= 0; --i) {
    d = x * d + b;
    b = x * b + c[i];
    size = std::fabs(x) * size + std::fabs(c[i]);
  }
  return {{x, 0.0}, {b, 0.0}, {d, 0.0}, size};
}

Values Evaluate(const Coefficients& p, Complex x) {
  if (p.im != nullptr) return EvaluatePoint<false>(p, x);
  return x.im == 0.0 ? EvaluateOnAxis(p.re, p.degree, x.re) : EvaluatePoint<true>(p, x);
}

bool IsOuter(const FoundRoot& x) {
  return std::fabs(x.re) > 1.0 || std::fabs(x.im) > 1.0 || x.re * x.re + x.im * x.im > 1.0;
}

Complex InDisc(const FoundRoot& x, bool outer) {
  return outer ? Reciprocal({x.re, x.im}) : Complex{x.re, x.im};
}

// Calls use(i, outer, values) for every point that is wanted, inner points first where there are many.
template<class Use>
void ForAllValues(const Coefficients& p, const Coefficients& reversed, const FoundRoot* points, int count,
                  const double* wanted, Use use) {
  constexpr int kFew = 4;
  if (count <= kFew) {
    for (int i = 0; i < count; ++i) {
      if (wanted != nullptr && wanted[i] == 0.0) continue;
      const bool outer = IsOuter(points[i]);
      const Coefficients& side = outer ? reversed : p;
      const Complex x = InDisc(points[i], outer);
      use(i, outer, Evaluate(side, x));
    }
    return;
  }
  for (const bool outer : {false, true}) {
    int member[kLanes];
    int filled = 0;
    Batch batch;
    const auto flush = [&] {
      for (int l = filled; l < kLanes; ++l) batch.xRe[l] = batch.xIm[l] = 0.0;
      const Coefficients& side = outer ? reversed : p;
      side.im == nullptr ? EvaluateReal(side, &batch) : EvaluateComplex(side, &batch);
      for (int l = 0; l < filled; ++l) {
        use(member[l], outer,
            Values{{batch.xRe[l], batch.xIm[l]},
                   {batch.pRe[l], batch.pIm[l]},
                   {batch.dRe[l], batch.dIm[l]},
                   batch.size[l]});
      }
      filled = 0;
    };
    for (int i = 0; i < count; ++i) {
      if ((wanted != nullptr && wanted[i] == 0.0) || IsOuter(points[i]) != outer) continue;
      const Complex x = InDisc(points[i], outer);
      member[filled] = i;
      batch.xRe[filled] = x.re;
      batch.xIm[filled] = x.im;
      if (++filled == kLanes) flush();
    }
    if (filled > 0) flush();
  }
}

double RatioOf(const Values& v) {
  const double re = std::fabs(v.p.re) / v.size;
  if (v.size == 0.0 || v.p.im == 0.0) return v.size == 0.0 ? 0.0 : re;
  const double im = std::fabs(v.p.im) / v.size;
  return std::sqrt(re * re + im * im);
}

// Returns p'(x) / p(x). For an outer point the values are those of q(w) = w^n p(1 / w), and p'/p = w (n - w q'/q).
Complex LogarithmicDerivative(const Values& v, bool outer, int degree) {
  const Complex g = v.d * Reciprocal(v.p);
  if (!outer) return g;
  const Complex product = v.x * g;
  return v.x * Complex{degree - product.re, -product.im};
}

// Returns the sum of 1 / (x - x_j) over all other roots, conjugates included. Coincident ones are one multiple root and
// are left out.
Complex Repulsion(const FoundRoot* roots, int count, int self) {
  Complex sum = {0.0, 0.0};
  const FoundRoot& x = roots[self];
  const auto add = [&sum](double re, double im) {
    if (re == 0.0 && im == 0.0) return;
    const Complex inverse = Reciprocal({re, im});
    sum.re += inverse.re;
    sum.im += inverse.im;
  };
  for (int j = 0; j < count; ++j) {
    if (j != self) add(x.re - roots[j].re, x.im - roots[j].im);
    if (roots[j].pair) add(x.re - roots[j].re, x.im + roots[j].im);
  }
  return sum;
}

FoundRoot Improved(const FoundRoot* roots, int count, int i, Complex logarithmic, bool onAxis) {
  const Complex sum = Repulsion(roots, count, i);
  const Complex step = Reciprocal({logarithmic.re - sum.re, logarithmic.im - sum.im});
  FoundRoot next = roots[i];
  next.re -= step.re;
  next.im -= step.im;
  if (next.pair) {
    next.im = std::fabs(next.im);
  } else if (onAxis) {
    next.im = 0.0;
  }
  return next;
}

}  // namespace

void RelativeResiduals(const Coefficients& p, const Coefficients& reversed, const FoundRoot* points, int count,
                       double* ratios) {
  ForAllValues(p, reversed, points, count, nullptr, [ratios](int i, bool, const Values& v) { ratios[i] = RatioOf(v); });
}

bool RefineRoots(const Coefficients& p, const Coefficients& reversed, double enough, FoundRoot* roots, int count,
                 double* ratios, double* scratch) {
  const double limit = ResidualLimit(p.degree);
  const bool real = p.im == nullptr;
  double* bestRe = scratch;
  double* bestIm = scratch + count;
  double* active = scratch + 2 * count;
  std::fill_n(active, count, 1.0);
  std::fill_n(ratios, count, HUGE_VAL);
  bool going = true;
  for (int sweep = 0; sweep <= kMaxSweeps && going; ++sweep) {
    going = false;
    ForAllValues(p, reversed, roots, count, active, [&](int i, bool outer, const Values& v) {
      const double ratio = RatioOf(v);
      active[i] = 0.0;  // NOLINT(clang-analyzer-core.NullDereference): never null, unlike elsewhere in ForAllValues
      if (ratio < ratios[i]) {
        ratios[i] = ratio;
        bestRe[i] = roots[i].re;
        bestIm[i] = roots[i].im;
      }
      if (!(ratios[i] > (sweep == 0 ? enough : limit))) return;
      const FoundRoot next = Improved(roots, count, i, LogarithmicDerivative(v, outer, p.degree), real);
      if (!std::isfinite(next.re) || !std::isfinite(next.im)) return;
      roots[i].re = next.re;
      roots[i].im = next.im;
      active[i] = 1.0;
      going = true;
    });
  }
  bool within = true;
  for (int i = 0; i < count; ++i) {
    within = within && ratios[i] <= limit;
    if (ratios[i] == HUGE_VAL) continue;
    roots[i].re = bestRe[i];
    roots[i].im = bestIm[i];
  }
  return within;
}

}  // namespace nu::engine::roots
