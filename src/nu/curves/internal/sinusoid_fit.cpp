#include "nu/curves/internal/sinusoid_fit.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "nu/engine/base/double_double.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/base/sort.h"
#include "nu/engine/least_squares/sinusoid_least_squares.h"
#include "nu/engine/least_squares/sinusoid_scan.h"
#include "nu/foundation/constants.h"

namespace nu::internal {
namespace {

constexpr int kLeastPoints = 4;

// The inverse of a smaller power of two overflows.
constexpr int kLeastExponent = -1022;

// The x or the y of the points as (value - origin) * scale, in [-1, 1]. The scale is a power of two.
struct Centring {
  double origin;
  double scale;
};

Centring CentringOf(const std::vector<double>& values) {
  const auto [least, most] = std::minmax_element(values.begin(), values.end());
  const int exponent = std::ilogb(0.5 * *most - 0.5 * *least);
  return {0.5 * *most + 0.5 * *least, std::ldexp(1.0, -1 - std::max(exponent, kLeastExponent))};
}

void Express(std::vector<double>& values, Centring unit) {
  for (double& v : values) v = (v - unit.origin) * unit.scale;
}

// Ascending by x.
WaveSamples SamplesOf(const CNuPointArray& points) {
  WaveSamples samples;
  const int size = points.GetSize();
  samples.u.reserve(static_cast<std::size_t>(size));
  samples.y.reserve(static_cast<std::size_t>(size));
  const PointView view = ViewOf(points);
  for (std::size_t i = 0; i < view.Size(); ++i) {
    samples.u.push_back(view[i][0]);
    samples.y.push_back(view[i][1]);
  }
  SortTogether(size, samples.u.data(), samples.y.data());
  return samples;
}

// How many x are no closer to each other than the tolerance, up to the number asked for. The x ascend.
int DistinctPlaces(const std::vector<double>& x, int enough, double tolerance) {
  int count = 1;
  double last = x.front();
  for (std::size_t i = 1; i < x.size() && count < enough; ++i) {
    if (!(x[i] > last) || !(x[i] - last >= tolerance)) continue;
    last = x[i];
    ++count;
  }
  return count;
}

double MeanOf(const std::vector<double>& y) {
  CompensatedSum sum;
  for (const double v : y) sum.Add(v);
  return sum.Value() / static_cast<double>(y.size());
}

double Range(const std::vector<double>& y) {
  const auto [least, most] = std::minmax_element(y.begin(), y.end());
  return *most - *least;
}

struct Minimum {
  GaussNewtonEnd end = GaussNewtonEnd::unsolvable;
  double sumSquares = kInfinity;
  double rounding = 0.0;
  SinusoidLeastSquares fit;
};

// The least of the local minima; of equal ones that of the lowest frequency, since few points determine no more.
Minimum LeastOf(const WaveSamples& samples, double level, long maxIter) {
  const FrequencyScan scan = ScanFrequencies(samples);
  const GaussNewtonRule rule{.tolerance = NuGetTol() * NuGetTol(),
                             .large = std::numeric_limits<double>::max(),
                             .limit = maxIter,
                             .takesLastStep = true,
                             .endsAtGrowth = false,
                             .endsBeforeLimit = true};
  Minimum best{.fit = SinusoidLeastSquares(samples, level)};
  for (const double frequency : scan.candidates) {
    Minimum next{.fit = SinusoidLeastSquares(samples, level)};
    next.fit.StartFrom(frequency, scan.step, scan.limit);
    next.end = RunGaussNewton(next.fit, rule);
    if (next.end == GaussNewtonEnd::unsolvable) continue;
    next.sumSquares = next.fit.SumSquares();
    next.rounding = next.fit.Rounding();
    if (next.sumSquares < best.sumSquares - std::min(best.rounding, next.rounding)) best = next;
  }
  return best;
}

DoubleDouble AngleOf(double b, double x, double c) {
  const DoubleDouble product = TwoProduct(b, x);
  const DoubleDouble sum = TwoSum(product.high, c);
  return {sum.high, sum.low + product.low};
}

bool IsSinusoid(double a, double b) {
  return a > 0.0 && b > 0.0 && std::isfinite(a) && std::isfinite(b);
}

// The wave about the origin of x, moved to x = 0.
FittedSinusoid Placed(const Wave& wave, Centring x, Centring y, double mean) {
  const double b = wave.frequency * x.scale;
  const double s = SineAt(b, x.origin, 0.0);
  const double k = CosineAt(b, x.origin, 0.0);
  return {Hypot(wave.sine, wave.cosine) / y.scale,   b,
          wave.sine * k + wave.cosine * s,           wave.cosine * k - wave.sine * s,
          y.origin + (wave.offset + mean) / y.scale, {}};
}

}  // namespace

double SineAt(double b, double x, double c) {
  const DoubleDouble angle = AngleOf(b, x, c);
  const auto [sine, cosine] = SinCos(angle.high);
  return sine + angle.low * cosine;
}

double CosineAt(double b, double x, double c) {
  const DoubleDouble angle = AngleOf(b, x, c);
  const auto [sine, cosine] = SinCos(angle.high);
  return cosine - angle.low * sine;
}

void RequireSinusoid(double a, double b, const char* name) {
  if (!IsSinusoid(a, b)) throw CNuConstructionException(NuConstructionShape, name, nullptr, 0, 0);
}

// A tiny negative angle plus a full turn rounds to the full turn.
double PhaseOf(double cosine, double sine) {
  const double angle = Atan2(sine, cosine);
  const double turned = angle < 0.0 ? angle + Nu_2PI : angle;
  return turned >= Nu_2PI ? 0.0 : turned;
}

FittedSinusoid FitSinusoid(const CNuPointArray& points, const char* name, bool wantsDeviations, long maxIter) {
  RequireCount(ViewOf(points), kLeastPoints, name);
  RequireFinite(ViewOf(points), name);
  WaveSamples samples = SamplesOf(points);
  const double lengthTol = NuGetLengthTol();
  if (DistinctPlaces(samples.u, kLeastPoints, lengthTol) < kLeastPoints) FailFit(kDegeneratePoints, name, kLeastPoints);
  if (!(Range(samples.y) > std::fmax(lengthTol, 0.0))) FailFit(kNoVariation, name);
  const Centring x = CentringOf(samples.u);
  const Centring y = CentringOf(samples.y);
  Express(samples.u, x);
  Express(samples.y, y);
  const double mean = MeanOf(samples.y);
  for (double& v : samples.y) v -= mean;
  Minimum best = LeastOf(samples, std::fabs(y.origin) * y.scale, maxIter);
  if (best.end == GaussNewtonEnd::unsolvable || !best.fit.IsAttained()) FailFit(kNumericalFailure, name);
  if (best.end == GaussNewtonEnd::limitReached) FailFit(kIterationLimit, name);
  const Wave wave = best.fit.Found();
  FittedSinusoid found = Placed(wave, x, y, mean);
  if (!IsSinusoid(found.a, found.b) || !std::isfinite(found.d)) FailFit(kNumericalFailure, name);
  if (wantsDeviations) found.deviations = InUnit(best.fit.DeviationsNow(), y.scale);
  return found;
}

}  // namespace nu::internal
