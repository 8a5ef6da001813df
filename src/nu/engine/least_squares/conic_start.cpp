#include "nu/engine/least_squares/conic_start.h"

#include <algorithm>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/linear/eigen_symmetric.h"
#include "nu/engine/linear/small_cholesky.h"
#include "nu/engine/points/point_lanes.h"
#include "nu/engine/roots/trig_roots.h"

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

namespace nu::engine::least_squares {
namespace {

// Sums outside have overflowed or vanished, or are about to in a product.
constexpr double kSafeSmall = 1e-60;
constexpr double kSafeLarge = 1e60;

// M of exact data is singular; so much of its trace is added.
constexpr double kRidge = 1e-13;

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
    LoadPoints(block, i, px, py, pz, weight);
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
  const BlockSums<N> total =
      SumOver<N>(points, [&](const PointBlock& block, double(&sums)[N]) { SumMoments(block, chart, sums); });
  for (int k = 0; k < N; ++k) means[k] = total[k] / static_cast<double>(points.Size());
}

struct Whitening {
  bool usable = false;
  ConicFrame frame;

  // The points have mean 0 and unit spread in it.
  Chart WhiteChart() const {
    const double narrow = frame.unit * frame.flatness;
    return {(1.0 / frame.unit) * frame.x, (1.0 / narrow) * frame.y, Dot(frame.origin, frame.x) / frame.unit,
            Dot(frame.origin, frame.y) / narrow};
  }
};

Whitening Whiten(PointBlocks& points, const PlaneAxes& axes) {
  Whitening found;
  double m[kSecond];
  MeanMoments(points, {axes.x, axes.y}, m);
  const auto isSafe = [&] { return m[2] + m[4] >= kSafeSmall && m[2] + m[4] <= kSafeLarge; };
  if (!isSafe()) {
    if (!points.FitScale()) return found;
    MeanMoments(points, {axes.x, axes.y}, m);
    if (!isSafe()) return found;
  }
  const double xy = m[3] - m[0] * m[1];
  const double covariance[4] = {m[2] - m[0] * m[0], xy, xy, m[4] - m[1] * m[1]};
  double values[2];
  double vectors[4];
  if (!DecomposeSymmetric(covariance, 2, 2, values, vectors, 2)) return found;
  const Vec2 wide{vectors[1], vectors[3]};
  const Vec2 narrow = Perpendicular(wide);
  found.frame.origin = m[0] * axes.x + m[1] * axes.y;
  found.frame.x = wide.x * axes.x + wide.y * axes.y;
  found.frame.y = narrow.x * axes.x + narrow.y * axes.y;
  found.frame.unit = std::sqrt(values[1]);
  found.frame.flatness = std::sqrt(values[0] / values[1]);
  // Flatter than the rounding errors of their coordinates, points are on a line.
  found.usable = found.frame.flatness > kEpsilon;
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
    double row[3] = {};
    // Rounding of extreme coordinates may leave no solution; the start is then made without the linear part.
    if (!(SolvePositive(low, mixed[i], row) > 0.0)) std::fill_n(row, 3, 0.0);
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

using QuadraticPart = double[3];

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

// Where q^T M q is least; the stationary angles are the roots of its derivative by 2 t.
int ParabolicFits(const double (&m)[3][3], double (&q)[kMostAlgebraic][3]) {
  const double cosine1 = 0.5 * (m[0][0] - m[2][2]);
  const double sine1 = m[0][1] + m[1][2];
  const double cosine2 = 0.125 * (m[0][0] + m[2][2]) - 0.25 * m[0][2] - 0.5 * m[1][1];
  const double sine2 = 0.5 * (m[0][1] - m[1][2]);
  const double derivativeCos[3] = {0.0, sine1, 2.0 * sine2};
  const double derivativeSin[3] = {0.0, -cosine1, -2.0 * cosine2};
  int count = 0;
  for (const double angle : TrigRoots(derivativeCos, derivativeSin, 2)) {
    if (count == kMostAlgebraic) break;
    const auto [s, c] = SinCos(0.5 * angle);
    q[count][0] = c * c;
    q[count][1] = 2.0 * c * s;
    q[count][2] = s * s;
    ++count;
  }
  return count;
}

// The algebraic fits that are likely to be near the best parabola, or the best ellipse or hyperbola, come first.
int ParabolicCandidates(const double (&m)[3][3], QuadraticPart (&q)[kMostAlgebraic]) {
  const int count = ParabolicFits(m, q);
  const auto value = [&](const QuadraticPart& part) {
    double sum = 0.0;
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j) sum += part[i] * m[i][j] * part[j];
    return sum;
  };
  for (int k = 1; k < count; ++k)
    if (value(q[k]) < value(q[0])) std::swap(q[k], q[0]);
  return count;
}

int CentralCandidates(bool wantsEllipse, const double (&m)[3][3], QuadraticPart (&q)[kMostAlgebraic]) {
  int count = 0;
  if (FreeFit(m, q[0])) ++count;
  double constrained[3][3];
  if (!ConstrainedFits(m, constrained)) return count;
  const bool isEllipse = 4.0 * q[0][0] * q[0][2] > q[0][1] * q[0][1];
  for (int k = 0; k < 3; ++k) std::copy_n(constrained[wantsEllipse ? 2 - k : k], 3, q[count++]);
  if (count == 4 && isEllipse != wantsEllipse) std::swap(q[0], q[1]);
  return count;
}

}  // namespace

ConicStarts AlgebraicFits(ConicKind kind, PointBlocks& points, const PlaneAxes& axes) {
  ConicStarts starts;
  const Whitening white = Whiten(points, axes);
  if (!white.usable) return starts;
  starts.frame = white.frame;
  double means[kFourth];
  MeanMoments(points, white.WhiteChart(), means);
  for (const double mean : means)
    if (!std::isfinite(mean)) return starts;
  const Reduced reduced = Reduce(means);
  std::copy_n(&reduced.linear[0][0], 9, &starts.linear[0][0]);
  QuadraticPart q[kMostAlgebraic] = {};
  const int count = kind == ConicKind::parabola ? ParabolicCandidates(reduced.m, q)
                                                : CentralCandidates(kind == ConicKind::ellipse, reduced.m, q);
  for (int k = 0; k < count; ++k) starts.Add(q[k]);
  return starts;
}

void ConicStarts::Add(const double (&q)[3]) {
  double l[3] = {};
  for (int k = 0; k < 3; ++k)
    for (int j = 0; j < 3; ++j) l[k] += linear[k][j] * q[j];
  const double flat = frame.flatness;
  equation[count++] = {{q[0], q[1] / flat, q[2] / flat / flat, l[0], l[1] / flat, l[2]}};
}

void ConicStarts::AddEven(double ratio, int directions) {
  constexpr double kHalfTurn = 3.141592653589793;
  for (int k = 0; k < directions; ++k) {
    const auto [s, c] = SinCos(kHalfTurn * k / directions);
    Add({c * c + ratio * s * s, 2.0 * (1.0 - ratio) * c * s, s * s + ratio * c * c});
  }
}

}  // namespace nu::engine::least_squares
