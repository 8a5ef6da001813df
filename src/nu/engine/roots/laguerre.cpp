#include "nu/engine/roots/laguerre.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "nu/engine/base/complex_number.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/roots/closed_form_roots.h"
#include "nu/engine/roots/power_scale.h"

// Laguerre's iteration with p, p' and p''/2 written b, d, f:
//   x' = x - m b / (d +- sqrt((m - 1) ((m - 1) d^2 - 2 m b f)))
// with the sign of the larger denominator; this is the usual form in g = d / b and h = g^2 - 2 f / b times b, without
// its divisions (E. N. Laguerre, Oeuvres I, 1898; fractional steps against cycles).

namespace nu::engine::roots {
namespace {

constexpr int kMaxSteps = 80;
constexpr int kFractionalEvery = 10;
constexpr double kFractions[] = {0.0, 0.5, 0.25, 0.75, 0.13, 0.38, 0.62, 0.88, 1.0};
// The factor by which a step is shortened that ended where p(x) overflows.
constexpr double kRetreat = 0.0625;

// Real numbers are common here and need one root only.
Complex QuickSquareRoot(Complex a) {
  if (a.im != 0.0) return SquareRoot(a);
  return a.re >= 0.0 ? Complex{std::sqrt(a.re), 0.0} : Complex{0.0, std::sqrt(-a.re)};
}

Complex Quotient(Complex a, Complex b) {
  const double scale = 1.0 / Squares(b);
  return {scale * (a.re * b.re + a.im * b.im), scale * (a.im * b.re - a.re * b.im)};
}

// The values of p, p' and p''/2 at x, and the sum of magnitudes to which the rounding errors of p are relative.
struct Expansion {
  Complex b;
  Complex d;
  Complex f;
  double size;
};

template<bool kReal>
Expansion Expand(const Coefficients& p, Complex x) {
  const double modulus = std::sqrt(Squares(x));
  Complex b = {p.re[p.degree], kReal ? 0.0 : p.im[p.degree]};
  Complex d = {0.0, 0.0};
  Complex f = {0.0, 0.0};
  double size = Size(b);
  for (int i = p.degree - 1; i >= 0; --i) {
    f = x * f + d;
    d = x * d + b;
    b = x * b;
    b.re += p.re[i];
    if constexpr (!kReal) b.im += p.im[i];
    size = modulus * size + Size(b);
  }
  return {b, d, f, size};
}

Expansion ExpandOnAxis(const double* c, int degree, double x) {
  const double modulus = std::fabs(x);
  double b = c[degree];
  double d = 0.0;
  double f = 0.0;
  double size = std::fabs(b);
  for (int i = degree - 1; i >= 0; --i) {
    f = x * f + d;
    d = x * d + b;
    b = x * b + c[i];
    size = modulus * size + std::fabs(b);
  }
  return {{b, 0.0}, {d, 0.0}, {f, 0.0}, size};
}

// The smallest roots in the scaled unit of x, 2^exponent. Their radius, |c_0 / c_i|^(1/i) where it is least over all i,
// is between 1/2 and 2.
struct SmallestRoots {
  int exponent;
  int index;     // the i of the radius
  double size;   // about |c_i / c_0|
  double reach;  // one of the roots is nearer to 0

  double Radius() const { return Pow(size, -1.0 / index); }
};

Complex OnCircle(double radius, int k) {
  const auto [sine, cosine] = SinCos(k);
  return {radius * cosine, radius * sine};
}

// A step beyond the reach leads away from the smallest roots, to where p is almost constant + c x^m, and the step back
// from there would close a cycle: it ends on the circle of those roots instead, each time at another angle.
Complex StepFrom(const Expansion& e, Complex x, double m, int k, double sqrtTol, const SmallestRoots& smallest) {
  const Complex inner = (m - 1.0) * ((m - 1.0) * (e.d * e.d) - 2.0 * m * (e.b * e.f));
  const Complex root = QuickSquareRoot(inner);
  const bool plus = e.d.re * root.re + e.d.im * root.im >= 0.0;
  const Complex den = plus ? e.d + root : e.d - root;
  if (Squares(den) > sqrtTol * sqrtTol * Squares(e.b)) {
    const Complex dx = Quotient(m * e.b, den);
    if (Size(x - dx) <= smallest.reach) return dx;
    return x - OnCircle(smallest.Radius(), k);
  }
  const double far = 1.0 + std::sqrt(Squares(x));
  return OnCircle(far, k);
}

// A long step back to the last point closes a cycle that shorter steps may not end.
bool TurnsBack(Complex last, Complex x, Complex dx) {
  constexpr double kLong = 0x1p-6;
  constexpr double kSame = 0x1p-3;
  const double length = Size(dx);
  return length > kLong && Size((x - last) - dx) < kSame * length;
}

template<bool kReal>
Complex Iterate(const Coefficients& p, const LaguerreRules& rules, const SmallestRoots& smallest) {
  const double squaredTol = rules.tol * rules.tol;
  const double bound = squaredTol > kRounding ? squaredTol : kRounding;
  Complex x = {0.0, 0.0};
  Complex last = x;
  Complex best = x;
  double bestRatio = kInfinity;
  for (int k = 1; k <= kMaxSteps; ++k) {
    const Expansion e = kReal && x.im == 0.0 ? ExpandOnAxis(p.re, p.degree, x.re) : Expand<kReal>(p, x);
    if (!std::isfinite(e.size)) {
      x = last + kRetreat * (x - last);
      continue;
    }
    const double ratio = Size(e.b) / e.size;
    if (!(ratio > bound)) return x;
    if (ratio < bestRatio) {
      best = x;
      bestRatio = ratio;
    }
    Complex dx = StepFrom(e, x, p.degree, k, rules.sqrtTol, smallest);
    if (TurnsBack(last, x, dx)) dx = x - OnCircle(smallest.Radius(), k);
    if (std::fabs(dx.re) < rules.tol && std::fabs(dx.im) < rules.tol) return x - dx;
    last = x;
    x = x - (k % kFractionalEvery == 0 ? kFractions[k / kFractionalEvery] : 1.0) * dx;
  }
  return best;
}

int ExponentAt(const double* w, int stride, int i) {
  const double size = stride == 0 ? w[i] : std::max(std::fabs(w[i]), std::fabs(w[i + stride]));
  return size == 0.0 ? std::numeric_limits<int>::min() : ExponentOf(size);
}

// Copies the polynomial in the unit of x, 2^exponent, in which no coefficient is much larger than c_0: its smallest
// roots are then of size 1, and nothing overflows on the way to them. stride is 0 for a real polynomial.
SmallestRoots ScaleToSmallestRoots(const double* w, int degree, int stride, double* v) {
  const int e0 = ExponentAt(w, stride, 0);
  int k = std::numeric_limits<int>::max();
  int touching = degree;
  for (int i = 1; i <= degree; ++i) {
    const int e = ExponentAt(w, stride, i);
    if (e == std::numeric_limits<int>::min() || e0 - e >= k * static_cast<long long>(i)) continue;
    const int drop = e0 - e;
    k = drop >= 0 ? drop / i : -((i - 1 - drop) / i);
    touching = i;
  }
  // The leading coefficient is below the range of numbers, and so are all others.
  if (k == std::numeric_limits<int>::max()) k = 0;
  for (int i = 0; i <= degree; ++i) {
    v[i] = TimesPower(w[i], k * i - e0);
    if (stride != 0) v[i + stride] = TimesPower(w[i + stride], k * i - e0);
  }
  // c_i / c_0 is the sum of the products of i reciprocal roots: the smallest root is below C(n, i)^(1/i) radii, with
  // C(n, i) < (e n / i)^i.
  constexpr double kTwiceE = 5.44;
  const double size = stride == 0 ? std::fabs(v[touching]) : Hypot(v[touching], v[touching + stride]);
  return {k, touching, size, kTwiceE * degree / touching};
}

// Returns the i for which |c_i| |x|^i is largest.
int LargestTerm(const double* v, int degree, int stride, Complex x) {
  constexpr double kLog2 = 0.69314718055994530942;
  const double logarithm = 0.5 / kLog2 * Log(Squares(x));  // of |x|, to base 2
  int largest = 0;
  double most = -kInfinity;
  for (int i = 0; i <= degree; ++i) {
    const int e = ExponentAt(v, stride, i);
    const double term = e + i * logarithm;
    if (e == std::numeric_limits<int>::min() || !(term > most)) continue;
    most = term;
    largest = i;
  }
  return largest;
}

void DivideByRoot(double* w, int degree, double x, int meet) {
  meet = std::min(meet, degree - 1);
  double below = w[0];
  for (int i = 0; i < meet; ++i) {
    const double next = w[i + 1];
    const double q = -below / x;
    w[i] = q;
    below = next - q;
  }
  double q = w[degree];
  for (int i = degree - 1; i >= meet; --i) {
    const double c = w[i];
    w[i] = q;
    q = c + x * q;
  }
}

// Divides by x^2 - s x + t.
void DivideByPair(double* w, int degree, double s, double t, int meet) {
  meet = std::clamp(meet - 1, 0, degree - 2);
  double q1 = 0.0;
  double q2 = 0.0;
  for (int i = 0; i < meet; ++i) {
    const double q = (w[i] + s * q1 - q2) / t;
    w[i] = q;
    q2 = q1;
    q1 = q;
  }
  q1 = 0.0;
  q2 = 0.0;
  double c = w[degree];
  double cBelow = w[degree - 1];
  for (int i = degree - 2; i >= meet; --i) {
    const double q = c + s * q1 - t * q2;
    c = cBelow;
    cBelow = w[i];
    w[i] = q;
    q2 = q1;
    q1 = q;
  }
}

// Divides both halves of w: from the top alone where the root is among the smallest, else from both ends.
void DivideByComplexRoot(double* w, int degree, int stride, Complex x, int meet) {
  meet = std::min(meet, degree - 1);
  Complex below = {w[0], w[stride]};
  const Complex inverse = Reciprocal(x);
  for (int i = 0; i < meet; ++i) {
    const Complex next = {w[i + 1], w[i + 1 + stride]};
    const Complex q = -1.0 * (below * inverse);
    w[i] = q.re;
    w[i + stride] = q.im;
    below = next - q;
  }
  Complex q = {w[degree], w[degree + stride]};
  for (int i = degree - 1; i >= meet; --i) {
    const Complex c = {w[i], w[i + stride]};
    w[i] = q.re;
    w[i + stride] = q.im;
    q = c + x * q;
  }
}

// Whether the polynomial at the real part is 0 within rounding.
bool VanishesOnAxis(const double* v, int degree, double x) {
  const Expansion e = ExpandOnAxis(v, degree, x);
  return std::fabs(e.b.re) <= 2.0 * kRounding * e.size;
}

}  // namespace

int FindByDeflation(double* w, int degree, double* scratch, const LaguerreRules& rules, FoundRoot* roots) {
  int count = 0;
  while (degree > 2) {
    if (w[0] == 0.0) {
      roots[count++] = {};
      std::copy(w + 1, w + degree + 1, w);
      --degree;
      continue;
    }
    const SmallestRoots smallest = ScaleToSmallestRoots(w, degree, 0, scratch);
    const int k = smallest.exponent;
    Complex x = Iterate<true>({scratch, nullptr, degree}, rules, smallest);
    if (x.im != 0.0 && VanishesOnAxis(scratch, degree, x.re)) x.im = 0.0;
    const int meet = LargestTerm(scratch, degree, 0, x);
    const FoundRoot found = {TimesPower(x.re, k), std::fabs(TimesPower(x.im, k)), x.im != 0.0};
    roots[count++] = found;
    if (found.pair) {
      DivideByPair(w, degree, 2.0 * found.re, found.re * found.re + found.im * found.im, meet);
      degree -= 2;
    } else {
      DivideByRoot(w, degree, found.re, meet);
      --degree;
    }
  }
  return count + (degree == 2 ? SolveQuadratic(w, roots + count) : SolveLinear(w, roots + count));
}

int FindByComplexDeflation(double* w, int degree, double* scratch, const LaguerreRules& rules, FoundRoot* roots) {
  const int stride = degree + 1;
  int count = 0;
  for (; degree > 0; --degree) {
    Complex x = {0.0, 0.0};
    SmallestRoots smallest = {};
    int meet = 0;
    if (w[0] != 0.0 || w[stride] != 0.0) {
      smallest = ScaleToSmallestRoots(w, degree, stride, scratch);
      x = Iterate<false>({scratch, scratch + stride, degree}, rules, smallest);
      meet = LargestTerm(scratch, degree, stride, x);
    }
    const FoundRoot found = {TimesPower(x.re, smallest.exponent), TimesPower(x.im, smallest.exponent), false};
    roots[count++] = found;
    DivideByComplexRoot(w, degree, stride, {found.re, found.im}, meet);
  }
  return count;
}

}  // namespace nu::engine::roots
