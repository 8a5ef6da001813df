// The weighting function of ISO 16610-21 over the angle t, closed around the circle, is the series
//
//   w(t) = 1/(2 pi) (1 + 2 sum over k of T_k cos k t),   T_k = exp(-ln 2 (k / cutoff)^2),
//
// so that T_k is what remains of k undulations per revolution, half at the cutoff. With the radial deviations r_i at
// the angles t_i, each standing for an arc a_i of half the way to either neighbour, the filtered profile is
//
//   f(t) = sum a_i r_i w(t - t_i) / sum a_i w(t - t_i),
//
// both sums by their Fourier coefficients. The divisor is 1 for even spacing and takes out the unevenness of others.

#include "evaluate/roundness_filter.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <numeric>

#include "evaluate/fit_tools.h"
#include "text.h"

namespace {

constexpr double kFullTurn = 2 * std::numbers::pi;

// A term of the series beyond it is smaller than the rounding of the sum: T_k < 2^-53.
int NumberOfTerms(int cutoff) {
  constexpr double kBits = 53;
  return static_cast<int>(std::ceil(std::sqrt(kBits) * cutoff));
}

struct Profile {
  std::vector<double> angles;
  std::vector<double> radial;  // deviations
  std::vector<double> arcs;
};

// Throws FitFailure if a gap between neighbours is wider than `widest`.
std::vector<double> ArcsOf(const std::vector<double>& angles, double widest, int cutoff) {
  constexpr double kDegrees = 180 / std::numbers::pi;
  std::vector<std::size_t> order(angles.size());
  std::iota(order.begin(), order.end(), 0U);
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return angles[a] < angles[b]; });
  std::vector<double> arcs(angles.size());
  for (std::size_t i = 0; i < order.size(); ++i) {
    const bool last = i + 1 == order.size();
    const std::size_t next = order[last ? 0 : i + 1];
    const double gap = angles[next] - angles[order[i]] + (last ? kFullTurn : 0);
    if (!(gap <= widest)) {
      throw FitFailure("the roundness filter of " + std::to_string(cutoff) +
                       " undulations per revolution needs points " + "all around, at most " +
                       General(widest * kDegrees, 3) + " degrees apart; there is a gap of " +
                       General(gap * kDegrees, 3) + " degrees");
    }
    arcs[order[i]] += gap / 2;
    arcs[next] += gap / 2;
  }
  return arcs;
}

using Complex = std::complex<double>;

// One point at a time, with all terms: the powers of exp(i t) come by multiplication.
std::vector<double> Filtered(const Profile& profile, int cutoff) {
  const int terms = NumberOfTerms(cutoff);
  const auto count = static_cast<std::size_t>(terms) + 1;
  std::vector<Complex> deviation(count);
  std::vector<Complex> divisor(count);
  for (std::size_t i = 0; i < profile.angles.size(); ++i) {
    const Complex step(std::cos(profile.angles[i]), -std::sin(profile.angles[i]));
    Complex power = profile.arcs[i];
    for (std::size_t k = 0; k < count; ++k, power *= step) {
      divisor[k] += power;
      deviation[k] += profile.radial[i] * power;
    }
  }
  for (std::size_t k = 0; k < count; ++k) {
    const double ratio = static_cast<double>(k) / cutoff;
    const double weight = (k == 0 ? 1 : 2) * std::exp(-std::numbers::ln2 * ratio * ratio);
    deviation[k] *= weight;
    divisor[k] *= weight;
  }
  std::vector<double> filtered;
  filtered.reserve(profile.angles.size());
  for (const double angle : profile.angles) {
    const Complex step(std::cos(angle), std::sin(angle));
    Complex power = 1;
    double above = 0;
    double below = 0;
    for (std::size_t k = 0; k < count; ++k, power *= step) {
      above += (deviation[k] * power).real();
      below += (divisor[k] * power).real();
    }
    filtered.push_back(above / below);
  }
  return filtered;
}

}  // namespace

std::string FilterText(int cutoff) {
  return cutoff == 0 ? "none, unfiltered" : "Gaussian, " + std::to_string(cutoff) + " UPR (ISO 16610-21)";
}

std::vector<Vec3> FilteredRoundness(const std::vector<Vec3>& points, int cutoff) {
  CNuCircle circle(1.0);
  const CNuAssociationReport report = AssociationOf(points).Fit(NuLeastSquares, &circle);
  if (report.HasConverged() == NuFalse) throw FitFailure(report.Explain());
  const Frame frame = FrameAlong(circle.GetCentre(), circle.GetNormal());
  Profile profile;
  for (const Vec3& point : points) {
    const Vec3 local = frame.ToLocal(point);
    profile.angles.push_back(std::atan2(local[1], local[0]));
    profile.radial.push_back(std::hypot(local[0], local[1]) - circle.GetRadius());
  }
  profile.arcs = ArcsOf(profile.angles, kFullTurn / 2 / cutoff, cutoff);
  const std::vector<double> filtered = Filtered(profile, cutoff);
  std::vector<Vec3> result;
  result.reserve(points.size());
  for (std::size_t i = 0; i < points.size(); ++i) {
    const double radius = circle.GetRadius() + filtered[i];
    const double x = radius * std::cos(profile.angles[i]);
    const double y = radius * std::sin(profile.angles[i]);
    Vec3 point = frame.origin;
    for (std::size_t j = 0; j < 3; ++j) point[j] += x * frame.x[j] + y * frame.y[j];
    result.push_back(point);
  }
  return result;
}
