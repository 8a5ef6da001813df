#include "batch/statistics.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace {

// The mean of the range of two values of a normal distribution, in standard deviations.
const double kD2 = 2 / std::sqrt(std::numbers::pi);
constexpr double kHalfSpread = 3;  // standard deviations to either side: 99.73 % of a normal distribution

double Ratio(double margin, double spread) {
  if (spread > 0) return margin / spread;
  return margin < 0 ? -std::numeric_limits<double>::infinity() : std::numeric_limits<double>::infinity();
}

std::optional<double> Index(const std::optional<double>& lower, const std::optional<double>& upper, double s) {
  if (!lower || !upper) return std::nullopt;
  return Ratio(*upper - *lower, 2 * kHalfSpread * s);
}

std::optional<double> NearestIndex(const std::optional<double>& lower, const std::optional<double>& upper, double mean,
                                   double s) {
  if (!lower && !upper) return std::nullopt;
  double margin = std::numeric_limits<double>::infinity();
  if (lower) margin = std::min(margin, mean - *lower);
  if (upper) margin = std::min(margin, *upper - mean);
  return Ratio(margin, kHalfSpread * s);
}

}  // namespace

Capability CapabilityOf(const std::vector<double>& values, const std::optional<double>& lower,
                        const std::optional<double>& upper) {
  Capability result;
  result.count = values.size();
  if (values.empty()) return result;
  const auto count = static_cast<double>(values.size());
  const auto [smallest, largest] = std::minmax_element(values.begin(), values.end());
  result.smallest = *smallest;
  result.largest = *largest;
  // From the first value on, so that neither sum loses digits to the nominal value.
  double sum = 0;
  for (const double value : values) sum += value - values.front();
  result.mean = values.front() + sum / count;
  if (values.size() < 2) return result;
  double squares = 0;
  double ranges = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    squares += (values[i] - result.mean) * (values[i] - result.mean);
    if (i > 0) ranges += std::fabs(values[i] - values[i - 1]);
  }
  result.deviationOverall = std::sqrt(squares / (count - 1));
  result.deviationWithin = ranges / (count - 1) / kD2;
  result.pp = Index(lower, upper, result.deviationOverall);
  result.ppk = NearestIndex(lower, upper, result.mean, result.deviationOverall);
  result.cp = Index(lower, upper, result.deviationWithin);
  result.cpk = NearestIndex(lower, upper, result.mean, result.deviationWithin);
  return result;
}

Series SeriesOf(const std::vector<PartResult>& parts, std::size_t characteristic) {
  Series series;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (characteristic >= parts[i].characteristics.size()) continue;
    const std::optional<double>& measured = parts[i].characteristics[characteristic].measured;
    if (!measured) continue;
    series.values.push_back(*measured);
    series.parts.push_back(i);
  }
  return series;
}

std::vector<Capability> CapabilitiesOf(const PartPlan& plan, const std::vector<PartResult>& parts) {
  std::vector<Capability> capabilities;
  for (std::size_t i = 0; i < plan.characteristics.size(); ++i) {
    const CharacteristicPlan& characteristic = plan.characteristics[i];
    capabilities.push_back(CapabilityOf(SeriesOf(parts, i).values, characteristic.lower, characteristic.upper));
  }
  return capabilities;
}
