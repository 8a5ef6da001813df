#include "nu/engine/least_squares/sinusoid_least_squares.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/linear/small_svd.h"

// Variable projection (G. H. Golub, V. Pereyra, SIAM J. Numer. Anal. 10, 1973): for a frequency w the best wave
//
//   y = d + p S + q C,   S = m sin(wu) / w,   C = m^2 (1 - cos(wu)) / w^2,   m = max(w, 1)
//
// is a linear fit, and what it leaves depends on w alone. The unknown is k = w^2: in it S and C, and their derivatives
//
//   dS/dk ~ (t cos t - sin t) / 2 w^3,   dC/dk ~ (t sin t - 2 + 2 cos t) / 2 w^4,   t = wu,
//
// are power series about 0, where the wave is a parabola, so that a small part of a period is no special case. One
// orthogonal reduction of (1, S, C, dS, dC, y) has all that a step needs: the residual e, and the part J of
// p dS + q dC that the linear fit does not follow. J . e is minus half the derivative of the sum of squares; its root
// is found from Gauss-Newton and secant steps that never leave the bracket known so far.

namespace nu::engine::least_squares {
namespace {

// Samples and waves are known to so many roundings.
constexpr double kNoise = 16.0 * kEpsilon;

// A range of 2 holds a period of this frequency, and no parabola looks like one.
constexpr double kParabolic = std::numbers::pi;

// At the limit sine and cosine of evenly spaced samples are one column. This far from it, as a part of the longest
// step, they are two.
constexpr double kMargin = 0x1p-20;

// Below this angle the closed forms cancel, and the series are short.
constexpr double kSmallAngle = 1.0;
constexpr int kSeriesTerms = 10;  // the next one is below a rounding

constexpr int kLinear = 3;
constexpr int kColumns = 5;  // and the right-hand side

struct Shapes {
  double sine;    // sin t / t
  double cosine;  // (1 - cos t) / t^2
  double sineSlope;
  double cosineSlope;
};

// The series in z = t^2, (-1)^k z^k over (2k + 1)! and (2k + 2)!, and their derivatives.
Shapes SeriesAt(double z) {
  Shapes shapes = {};
  for (int k = kSeriesTerms; k >= 0; --k) {
    const double odd = 1.0 / ((2 * k + 2) * (2 * k + 3));
    const double even = 1.0 / ((2 * k + 3) * (2 * k + 4));
    shapes.sineSlope = -odd * (shapes.sine + z * shapes.sineSlope);
    shapes.cosineSlope = -even * (shapes.cosine + z * shapes.cosineSlope);
    shapes.sine = 1.0 - odd * z * shapes.sine;
    shapes.cosine = 1.0 - even * z * shapes.cosine;
  }
  shapes.cosine *= 0.5;
  shapes.cosineSlope *= 0.5;
  return shapes;
}

Shapes ShapesAt(double t) {
  const double z = t * t;
  if (!(std::fabs(t) >= kSmallAngle)) return SeriesAt(z);
  const auto [s, c] = SinCos(0.5 * t);
  const double sine = 2.0 * s * c;
  const double versine = 2.0 * s * s;
  const double inverse = 1.0 / z;
  return {sine / t, versine * inverse, 0.5 * (t - t * versine - sine) / t * inverse,
          0.5 * (t * sine - 2.0 * versine) * inverse * inverse};
}

// The scale m of the columns.
double ScaleAt(double frequency) {
  return std::max(frequency, 1.0);
}

void ReduceRows(const WaveSamples& samples, double frequency, TallReduction& reduction) {
  const double m = ScaleAt(frequency);
  const std::size_t size = samples.Size();
  for (std::size_t begin = 0; begin < size; begin += TallReduction::kBlockRows) {
    const std::size_t rows = std::min<std::size_t>(TallReduction::kBlockRows, size - begin);
    for (std::size_t i = 0; i < rows; ++i) {
      const double u = samples.u[begin + i];
      const Shapes shapes = ShapesAt(frequency * u);
      const double mu = m * u;
      reduction.Column(0)[i] = 1.0;
      reduction.Column(1)[i] = mu * shapes.sine;
      reduction.Column(2)[i] = mu * mu * shapes.cosine;
      reduction.Column(3)[i] = mu * u * u * shapes.sineSlope;
      reduction.Column(4)[i] = mu * mu * u * u * shapes.cosineSlope;
      reduction.Column(kColumns)[i] = samples.y[begin + i];
    }
    reduction.AbsorbBlock(static_cast<int>(rows));
  }
  reduction.Finish();
}

// The least-squares solution of least length in 1, S and C, and the projection across these columns. At the frequency
// of every second sample the sine vanishes with its cosine, or a combination of the two does.
class LinearFit {
 public:
  LinearFit(const TallReduction& reduction, double frequency) {
    double columns[kLinear][kLinear] = {};
    for (int j = 0; j < kLinear; ++j)
      for (int i = 0; i <= j; ++i) columns[j][i] = reduction.R(i, j);
    m_svd = SvdOfColumns(columns);
    const double least = kNoise * ScaleAt(frequency) * m_svd.value[0];
    while (m_rank < kLinear && m_svd.value[m_rank] > least) ++m_rank;
  }

  bool IsUsable() const { return std::isfinite(m_svd.value[0]) && m_rank > 0; }

  void Solve(const double* right, double (&x)[kLinear]) const {
    std::fill_n(x, kLinear, 0.0);
    for (int k = 0; k < m_rank; ++k) {
      const double part = Dot(m_svd.work[k], right) / m_svd.value[k] / m_svd.value[k];
      for (int j = 0; j < kLinear; ++j) x[j] += part * m_svd.axis[k][j];
    }
  }

  // Takes what the columns can follow from the first components of a vector.
  void Project(double* v) const {
    if (m_rank == kLinear) std::fill_n(v, kLinear, 0.0);
    for (int k = 0; k < m_rank && m_rank < kLinear; ++k) {
      const double part = Dot(m_svd.work[k], v) / m_svd.value[k] / m_svd.value[k];
      for (int i = 0; i < kLinear; ++i) v[i] -= part * m_svd.work[k][i];
    }
  }

 private:
  static double Dot(const double* a, const double* b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

  SmallSvd<kLinear> m_svd;
  int m_rank = 0;
};

}  // namespace

SinusoidLeastSquares::SinusoidLeastSquares(const WaveSamples& samples, double level)
    : m_samples(&samples), m_level(level) {}

void SinusoidLeastSquares::StartFrom(double frequency, double reach, double limit) {
  m_reach = reach;
  m_least = 0.0;
  const double most = limit - kMargin * reach;
  m_squared = std::min(frequency, most) * std::min(frequency, most);
  m_most = most * most;
  m_hasLeast = m_hasMost = m_hasPrevious = m_isPushed = false;
}

SinusoidLeastSquares::System SinusoidLeastSquares::Reduce(double frequency) const {
  TallReduction reduction(kColumns + 1);
  ReduceRows(*m_samples, frequency, reduction);
  System system;
  const LinearFit linear(reduction, frequency);
  if (!linear.IsUsable()) return system;
  double residual[kColumns + 1];
  for (int i = 0; i <= kColumns; ++i) residual[i] = reduction.R(i, kColumns);
  linear.Solve(residual, system.coefficient);
  double change[kColumns + 1] = {};
  for (int i = 0; i < kColumns; ++i) {
    if (i <= 3) change[i] = system.coefficient[1] * reduction.R(i, 3);
    change[i] += system.coefficient[2] * reduction.R(i, 4);
  }
  linear.Project(residual);
  linear.Project(change);
  system.slope = system.curvature = system.sumSquares = 0.0;
  for (int i = 0; i <= kColumns; ++i) {
    system.slope += change[i] * residual[i];
    system.curvature += change[i] * change[i];
    system.sumSquares += residual[i] * residual[i];
  }
  system.usable = std::isfinite(system.slope) && std::isfinite(system.curvature) && std::isfinite(system.sumSquares);
  return system;
}

// What the rounding of the samples, and of the angles, adds up to.
double SinusoidLeastSquares::Roughness() const {
  const double p = m_system.coefficient[1];
  const double q = m_system.coefficient[2];
  const double height = m_level * m_level + (p * p + q * q) * (1.0 + m_squared) + 1.0;
  return kNoise * kNoise * height * static_cast<double>(m_samples->Size());
}

double SinusoidLeastSquares::Rounding() const {
  const double rough = Roughness();
  return 2.0 * std::sqrt(m_system.sumSquares * rough) + rough;
}

GaussNewtonStep SinusoidLeastSquares::SolveStep() {
  GaussNewtonStep step;
  m_step = 0.0;
  m_system = Reduce(std::sqrt(m_squared));
  if (!m_system.usable) return step;
  step.solvable = true;
  (m_system.slope > 0.0 ? m_hasLeast : m_hasMost) = true;
  (m_system.slope > 0.0 ? m_least : m_most) = m_squared;
  if (!(m_system.curvature > 0.0)) return step;
  double next = m_squared + m_system.slope / m_system.curvature;
  if (m_hasPrevious) {
    const double secant = (m_system.slope - m_previousSlope) / (m_squared - m_previousSquared);
    if (secant < 0.0) next = m_squared - m_system.slope / secant;
  }
  const double frequency = std::sqrt(m_squared);
  const double below = std::max(frequency - m_reach, 0.0);
  const double low = std::max(m_least, below * below);
  const double high = std::min(m_most, (frequency + m_reach) * (frequency + m_reach));
  if (m_hasLeast && m_hasMost && !(next >= low && next <= high)) next = 0.5 * low + 0.5 * high;
  m_step = std::clamp(next, low, high) - m_squared;
  const double gain = m_system.slope * m_system.slope / m_system.curvature;
  m_isPushed = m_step == 0.0 && gain > Roughness();
  const double change = m_step * m_step * m_system.curvature;
  step.atRoundingLevel = change <= Roughness();
  step.squaredLength = step.atRoundingLevel ? 0.0 : change / static_cast<double>(m_samples->Size());
  m_previousSquared = m_squared;
  m_previousSlope = m_system.slope;
  m_hasPrevious = m_step != 0.0;
  return step;
}

void SinusoidLeastSquares::TakeStep() {
  m_squared += m_step;
}

bool SinusoidLeastSquares::IsAttained() const {
  if (!(m_squared > 0.0) || m_isPushed) return false;
  if (m_squared > kParabolic * kParabolic) return true;
  return Reduce(0.0).sumSquares > m_system.sumSquares + Rounding();
}

Wave SinusoidLeastSquares::Found() {
  const double frequency = std::sqrt(m_squared);
  if (m_step != 0.0) m_system = Reduce(frequency);
  const double scale = ScaleAt(frequency) / frequency;
  const double cosine = scale * scale * m_system.coefficient[2];
  return {frequency, scale * m_system.coefficient[1], -cosine, m_system.coefficient[0] + cosine};
}

Deviations SinusoidLeastSquares::DeviationsNow() {
  const double frequency = std::sqrt(m_squared);
  const double m = ScaleAt(frequency);
  CompensatedSum sum;
  Deviations total{0.0, kInfinity, -kInfinity};
  for (std::size_t i = 0; i < m_samples->Size(); ++i) {
    const double mu = m * m_samples->u[i];
    const Shapes shapes = ShapesAt(frequency * m_samples->u[i]);
    const double wave = m_system.coefficient[0] + m_system.coefficient[1] * (mu * shapes.sine) +
                        m_system.coefficient[2] * (mu * mu * shapes.cosine);
    const double e = m_samples->y[i] - wave;
    sum.Add(e * e);
    total.smallest = std::min(total.smallest, e);
    total.largest = std::max(total.largest, e);
  }
  total.sumSquares = sum.Value();
  return total;
}

double UnexplainedPart(const WaveSamples& samples, double frequency) {
  TallReduction reduction(kColumns + 1);
  ReduceRows(samples, frequency, reduction);
  const LinearFit linear(reduction, frequency);
  if (!linear.IsUsable()) return 1.0;
  double residual[kColumns + 1];
  double all = 0.0;
  double left = 0.0;
  for (int i = 0; i <= kColumns; ++i) {
    residual[i] = reduction.R(i, kColumns);
    all += residual[i] * residual[i];
  }
  linear.Project(residual);
  for (const double r : residual) left += r * r;
  return left / all;
}

}  // namespace nu::engine::least_squares
