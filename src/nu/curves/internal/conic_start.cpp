#include "nu/curves/internal/conic_start.h"

#include <algorithm>
#include <type_traits>

#include "nu/geometry/internal/lanes.h"
#include "nu/geometry/internal/small_cholesky.h"
#include "nu/linalg/internal/eigen_symmetric.h"
#include "nu/numerics/internal/trig_roots.h"

// Direct fits of q . (x^2, x y, y^2) + l . (x, y, 1). The points are brought to mean 0 and to unit spread in every
// direction first, which makes a slender ellipse a circle; the fits do not depend on such a map. The least squares over
// l are done with, q^T M q is left, and is least under the constraint that makes the conic one of its kind:
//
//   ellipse    4 q0 q2 - q1^2 = 1    (A. Fitzgibbon, M. Pilu, R. Fisher, IEEE Trans. PAMI 21, 1999; R. Halir,
//                                    J. Flusser, WSCG 1998)
//   hyperbola  4 q0 q2 - q1^2 = -1   (P. O'Leary, P. Zsombor-Murray, J. Electronic Imaging 13, 2004)
//   parabola   q = (cos^2 t, 2 cos t sin t, sin^2 t)
//
// The first two are eigenvectors of C q = mu M q, with C the matrix of the constraint; the third is where a
// trigonometric polynomial of degree two in 2 t is least. The eigenvector of the least eigenvalue of M, which keeps no
// kind, is a candidate too: it is less drawn to small ellipses.

namespace nu::internal {
namespace {

// Sums outside have overflowed or vanished, or are about to in a product.
constexpr double kSafeSmall = 1e-60;
constexpr double kSafeLarge = 1e60;

// M of exact data is singular; so much of its trace is added.
constexpr double kRidge = 1e-13;

// a x^2 + b x y + c y^2 + d x + e y + f.
struct Quadratic {
  double a, b, c, d, e, f;
};

// Coordinates along two directions, minus offsets.
struct Chart {
  Vec3 x, y;
  double xOffset = 0.0;
  double yOffset = 0.0;
};

constexpr int kSecond = 5;   // x, y, x^2, x y, y^2
constexpr int kFourth = 14;  // and the products of degree three and four

template<int N>
NU_ALWAYS_INLINE void MomentsBody(const PointBlock& block, const Chart& given, double (&sums)[N]) {
  const Chart chart = given;
  Lanes sum[N] = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes px, py, pz, weight;
    Load(block.x + i, px);
    Load(block.y + i, py);
    Load(block.z + i, pz);
    Load(block.Weights(i), weight);
    const Lanes x = weight * (chart.x.x * px + chart.x.y * py + chart.x.z * pz - chart.xOffset);
    const Lanes y = weight * (chart.y.x * px + chart.y.y * py + chart.y.z * pz - chart.yOffset);
    const Lanes xx = x * x;
    const Lanes xy = x * y;
    const Lanes yy = y * y;
    sum[0] += x;
    sum[1] += y;
    sum[2] += xx;
    sum[3] += xy;
    sum[4] += yy;
    if constexpr (N == kFourth) {
      sum[5] += xx * x;
      sum[6] += xx * y;
      sum[7] += x * yy;
      sum[8] += yy * y;
      sum[9] += xx * xx;
      sum[10] += xx * xy;
      sum[11] += xx * yy;
      sum[12] += xy * yy;
      sum[13] += yy * yy;
    }
  }
  for (int k = 0; k < N; ++k) sums[k] = Sum(sum[k]);
}

NU_KERNEL void SumMoments(const PointBlock& block, const Chart& chart, double (&sums)[kSecond]) {
  MomentsBody(block, chart, sums);
}
NU_KERNEL void SumMoments(const PointBlock& block, const Chart& chart, double (&sums)[kFourth]) {
  MomentsBody(block, chart, sums);
}

template<int N>
void MeanMoments(PointBlocks& points, const Chart& chart, double (&means)[N]) {
  BlockSums<N> total;
  points.ForEach([&](const PointBlock& block) {
    double sums[N];
    SumMoments(block, chart, sums);
    total.Add(sums);
  });
  for (int k = 0; k < N; ++k) means[k] = total[k] / static_cast<double>(points.Size());
}

// The chart in which the points have mean 0 and unit spread: x = (along . p - mean) / spread.
struct Whitening {
  bool usable = false;
  Vec2 axis[2];
  double mean[2] = {};
  double spread[2] = {};

  Chart ChartOf(const PlaneAxes& axes) const {
    const auto direction = [&](int k) { return (1.0 / spread[k]) * (axis[k].x * axes.u + axis[k].y * axes.v); };
    return {direction(0), direction(1), mean[0] / spread[0], mean[1] / spread[1]};
  }
};

Whitening Whiten(PointBlocks& points, const PlaneAxes& axes) {
  Whitening found;
  double m[kSecond];
  MeanMoments(points, {axes.u, axes.v}, m);
  const auto isSafe = [&] { return m[2] + m[4] >= kSafeSmall && m[2] + m[4] <= kSafeLarge; };
  if (!isSafe()) {
    if (!points.FitScale()) return found;
    MeanMoments(points, {axes.u, axes.v}, m);
    if (!isSafe()) return found;
  }
  const double xy = m[3] - m[0] * m[1];
  const double covariance[4] = {m[2] - m[0] * m[0], xy, xy, m[4] - m[1] * m[1]};
  double values[2];
  double vectors[4];
  if (!DecomposeSymmetric(covariance, 2, 2, values, vectors, 2)) return found;
  for (int k = 0; k < 2; ++k) {
    found.axis[k] = {vectors[k], vectors[2 + k]};
    found.mean[k] = Dot(found.axis[k], {m[0], m[1]});
    found.spread[k] = std::sqrt(values[k]);
  }
  found.usable = values[0] > 0.0;
  return found;
}

// M and the map from q to the best l.
struct Reduced {
  double m[3][3];
  double linear[3][3];
};

Reduced Reduce(const double (&s)[kFourth]) {
  const double quadratic[3][3] = {{s[9], s[10], s[11]}, {s[10], s[11], s[12]}, {s[11], s[12], s[13]}};
  const double mixed[3][3] = {{s[5], s[6], s[2]}, {s[6], s[7], s[3]}, {s[7], s[8], s[4]}};
  const double low[3][3] = {{s[2], s[3], s[0]}, {s[3], s[4], s[1]}, {s[0], s[1], 1.0}};
  Reduced r;
  for (int i = 0; i < 3; ++i) {
    double row[3];
    SolvePositive(low, mixed[i], row);
    for (int k = 0; k < 3; ++k) r.linear[k][i] = -row[k];
  }
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      r.m[i][j] = quadratic[i][j];
      for (int k = 0; k < 3; ++k) r.m[i][j] += mixed[i][k] * r.linear[k][j];
    }
  }
  const double ridge = kRidge * (quadratic[0][0] + quadratic[1][1] + quadratic[2][2]);
  for (int i = 0; i < 3; ++i) r.m[i][i] += ridge;
  return r;
}

// In plane coordinates (x along axis[0], y along axis[1], relative to the mean).
Quadratic Unwhitened(const Whitening& white, const Reduced& reduced, const double (&q)[3]) {
  double l[3] = {};
  for (int k = 0; k < 3; ++k)
    for (int j = 0; j < 3; ++j) l[k] += reduced.linear[k][j] * q[j];
  const double sx = white.spread[0];
  const double sy = white.spread[1];
  return {q[0] / sx / sx, q[1] / sx / sy, q[2] / sy / sy, l[0] / sx, l[1] / sy, l[2]};
}

// Eigenvectors of C q = mu M q: with M = L L^T, of the symmetric matrix L^-1 C L^-T. Ascending by mu, so that the last
// one is an ellipse and the others are hyperbolas. False when M is not positive definite.
bool ConstrainedFits(const double (&m)[3][3], double (&q)[3][3]) {
  double l[3][3] = {};
  for (int j = 0; j < 3; ++j) {
    for (int i = j; i < 3; ++i) {
      double sum = m[i][j];
      for (int k = 0; k < j; ++k) sum -= l[i][k] * l[j][k];
      if (i == j && !(sum > 0.0)) return false;
      l[i][j] = i == j ? std::sqrt(sum) : sum / l[j][j];
    }
  }
  const double c[3][3] = {{0.0, 0.0, 2.0}, {0.0, -1.0, 0.0}, {2.0, 0.0, 0.0}};
  double inverse[3][3] = {};
  for (int j = 0; j < 3; ++j) {
    for (int i = j; i < 3; ++i) {
      double sum = i == j ? 1.0 : 0.0;
      for (int k = j; k < i; ++k) sum -= l[i][k] * inverse[k][j];
      inverse[i][j] = sum / l[i][i];
    }
  }
  double symmetric[9] = {};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      for (int k = 0; k <= i; ++k)
        for (int n = 0; n <= j; ++n) symmetric[3 * i + j] += inverse[i][k] * c[k][n] * inverse[j][n];
  double values[3];
  double vectors[9];
  if (!DecomposeSymmetric(symmetric, 3, 3, values, vectors, 3)) return false;
  for (int v = 0; v < 3; ++v) {
    for (int i = 0; i < 3; ++i) {
      q[v][i] = 0.0;
      for (int k = i; k < 3; ++k) q[v][i] += inverse[k][i] * vectors[3 * k + v];
    }
  }
  return true;
}

bool FreeFit(const double (&m)[3][3], double (&q)[3]) {
  double values[3];
  double vectors[9];
  if (!DecomposeSymmetric(&m[0][0], 3, 3, values, vectors, 3)) return false;
  for (int i = 0; i < 3; ++i) q[i] = vectors[3 * i];
  return true;
}

Vec2 ToPlane(const Whitening& white, Vec2 p) {
  return (p.x + white.mean[0]) * white.axis[0] + (p.y + white.mean[1]) * white.axis[1];
}

// The central conic lambda[0] x^2 + lambda[1] y^2 = 1 about its centre. False for a parabola and what is empty or
// lines.
struct Central {
  double lambda[2];
  Vec2 direction[2];
  Vec2 centre;
};

bool AsCentral(const Quadratic& g, Central& central) {
  const double determinant = 4.0 * g.a * g.c - g.b * g.b;
  central.centre = {(g.b * g.e - 2.0 * g.c * g.d) / determinant, (g.b * g.d - 2.0 * g.a * g.e) / determinant};
  const double value = g.f + 0.5 * (g.d * central.centre.x + g.e * central.centre.y);
  const double form[4] = {-g.a / value, -0.5 * g.b / value, -0.5 * g.b / value, -g.c / value};
  double vectors[4];
  if (!DecomposeSymmetric(form, 2, 2, central.lambda, vectors, 2)) return false;
  for (int k = 0; k < 2; ++k) central.direction[k] = {vectors[k], vectors[2 + k]};
  return std::isfinite(central.centre.x) && std::isfinite(central.centre.y);
}

Vec2 Direction(const Whitening& white, Vec2 d) {
  return d.x * white.axis[0] + d.y * white.axis[1];
}

bool Place(const Whitening& white, const Quadratic& g, PlacedConic<Ellipse2>& conic) {
  Central central;
  if (!AsCentral(g, central) || !(central.lambda[0] > 0.0)) return false;
  conic = {{1.0 / std::sqrt(central.lambda[0]), 1.0 / std::sqrt(central.lambda[1])},
           ToPlane(white, central.centre),
           Direction(white, central.direction[0])};
  return true;
}

bool Place(const Whitening& white, const Quadratic& g, PlacedConic<Hyperbola2>& conic) {
  Central central;
  if (!AsCentral(g, central) || !(central.lambda[0] < 0.0 && central.lambda[1] > 0.0)) return false;
  conic = {{1.0 / std::sqrt(central.lambda[1]), 1.0 / std::sqrt(-central.lambda[0])},
           ToPlane(white, central.centre),
           Direction(white, central.direction[1])};
  return true;
}

// The quadratic part is a multiple of (w . p)^2; along d across w the rest is linear.
bool Place(const Whitening& white, const Quadratic& g, PlacedConic<Parabola2>& conic) {
  const double trace = g.a + g.c;
  const Vec2 w = g.a >= g.c ? Vec2{g.a, 0.5 * g.b} : Vec2{0.5 * g.b, g.c};
  const Vec2 unit = (1.0 / std::sqrt(Dot(w, w))) * w;
  Vec2 d = Perpendicular(unit);
  const double across = Dot({g.d, g.e}, unit) / trace;
  double along = Dot({g.d, g.e}, d) / trace;
  if (along > 0.0) {
    d = -1.0 * d;
    along = -along;
  }
  const double t = -0.5 * across;
  const double s = (t * t - g.f / trace) / along;
  conic = {{-0.25 * along}, ToPlane(white, s * d + t * unit), Direction(white, d)};
  return std::isfinite(s) && std::isfinite(t);
}

// Where q^T M q is least; the stationary angles are the roots of its derivative by 2 t.
int ParabolicFits(const double (&m)[3][3], double (&q)[kMostCandidates][3]) {
  const double cosine1 = 0.5 * (m[0][0] - m[2][2]);
  const double sine1 = m[0][1] + m[1][2];
  const double cosine2 = 0.125 * (m[0][0] + m[2][2]) - 0.25 * m[0][2] - 0.5 * m[1][1];
  const double sine2 = 0.5 * (m[0][1] - m[1][2]);
  const double derivativeCos[3] = {0.0, sine1, 2.0 * sine2};
  const double derivativeSin[3] = {0.0, -cosine1, -2.0 * cosine2};
  int count = 0;
  for (const double angle : TrigRoots(derivativeCos, derivativeSin, 2)) {
    if (count == kMostCandidates) break;
    const double c = std::cos(0.5 * angle);
    const double s = std::sin(0.5 * angle);
    q[count][0] = c * c;
    q[count][1] = 2.0 * c * s;
    q[count][2] = s * s;
    ++count;
  }
  return count;
}

template<class Curve>
int Candidates(const double (&m)[3][3], double (&q)[kMostCandidates][3]) {
  if constexpr (std::is_same_v<Curve, Parabola2>) {
    return ParabolicFits(m, q);
  } else {
    double constrained[3][3];
    int count = 0;
    if (ConstrainedFits(m, constrained)) {
      for (const auto& fit : constrained) std::copy_n(fit, 3, q[count++]);
    }
    if (FreeFit(m, q[count])) ++count;
    return count;
  }
}

template<class Curve>
int Fits(PointBlocks& points, const PlaneAxes& axes, PlacedConic<Curve> (&fits)[kMostCandidates]) {
  const Whitening white = Whiten(points, axes);
  if (!white.usable) return 0;
  double means[kFourth];
  MeanMoments(points, white.ChartOf(axes), means);
  for (const double mean : means)
    if (!std::isfinite(mean)) return 0;
  const Reduced reduced = Reduce(means);
  double q[kMostCandidates][3];
  const int candidates = Candidates<Curve>(reduced.m, q);
  int count = 0;
  for (int k = 0; k < candidates; ++k)
    if (Place(white, Unwhitened(white, reduced, q[k]), fits[count])) ++count;
  return count;
}

}  // namespace

int AlgebraicFits(PointBlocks& points, const PlaneAxes& axes, PlacedConic<Ellipse2> (&fits)[kMostCandidates]) {
  return Fits(points, axes, fits);
}
int AlgebraicFits(PointBlocks& points, const PlaneAxes& axes, PlacedConic<Hyperbola2> (&fits)[kMostCandidates]) {
  return Fits(points, axes, fits);
}
int AlgebraicFits(PointBlocks& points, const PlaneAxes& axes, PlacedConic<Parabola2> (&fits)[kMostCandidates]) {
  return Fits(points, axes, fits);
}

}  // namespace nu::internal
