#include "nu/engine/least_squares/sinusoid_scan.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "nu/engine/base/elementary.h"
#include "nu/engine/least_squares/fourier_sums.h"
#include "nu/foundation/constants.h"

// The part of the sum of squares that a wave explains is computed at even steps of the frequency from sums over the
// samples (the generalised periodogram of M. Zechmeister, M. Kuerster, Astronomy & Astrophysics 496, 2009), those of a
// band of frequencies from three transforms. Below two periods the wave and the constant are nearly dependent: there,
// and for few samples, each frequency has its own orthogonal reduction, over a part of the samples.

namespace nu::engine::least_squares {
namespace {

constexpr double kSamePlace = 1.0 / 1000.0;  // of the mean spacing
constexpr double kLeastSpacing = 1.0 / 4.0;

// With no more samples than these every local minimum may be the least one, and all are tried.
constexpr std::size_t kFewSamples = 8;
constexpr int kFewSteps = 128;  // to a period more in the range
constexpr std::size_t kManySamples = 1024;
constexpr int kSteps = 8;
constexpr int kManySteps = 4;

constexpr int kLowPeriods = 2;
constexpr std::size_t kLowSamples = 1024;

// So many frequencies, 2 fewer than a power of two, take three grids of 8 MB each, which stay in a large cache. Each
// band passes over all samples: more than so many bands would take a time that is quadratic in the samples.
constexpr std::size_t kBand = std::size_t{1} << 18;
constexpr std::size_t kMostBands = 16;

std::size_t BandFor(std::size_t count) {
  std::size_t band = kBand;
  while (band * kMostBands < count) band *= 2;
  return band - 2;
}

// A step of the scan can miss this much of what the best wave explains, and noise moves it from where the scan over a
// part of the samples saw it.
constexpr double kClose = 0.8;
constexpr std::size_t kMostCandidates = 32;
constexpr std::size_t kKeptPeaks = 1024;

// Below this determinant, relative to the trace, sine and cosine are one column.
constexpr double kDependent = 1e-3;

std::vector<double> GapsAbove(const std::vector<double>& u, double least) {
  std::vector<double> gaps;
  for (std::size_t i = 1; i < u.size(); ++i)
    if (u[i] - u[i - 1] > least) gaps.push_back(u[i] - u[i - 1]);
  return gaps;
}

// Takes one sample from each of as many runs of consecutive ones, at places that no regular pattern shares
// (multiplicative hashing by the golden ratio).
WaveSamples PartOf(const WaveSamples& samples, std::size_t size) {
  if (samples.Size() <= size) return samples;
  WaveSamples part;
  const std::size_t run = samples.Size() / size;
  for (std::size_t k = 0; k < size; ++k) {
    const std::uint64_t hash = (k + 1) * std::uint64_t{0x9E3779B97F4A7C15};
    const std::size_t i = k * run + static_cast<std::size_t>(hash >> 32) % run;
    part.u.push_back(samples.u[i]);
    part.y.push_back(samples.y[i]);
  }
  return part;
}

// The sums over the samples for the frequencies k * step of a band: turned by its middle frequency, the samples need a
// grid for the width of the band only.
class Band {
 public:
  Band(const WaveSamples& samples, double step, std::size_t first, std::size_t count)
      : m_size(static_cast<double>(samples.Size())),
        m_middle(static_cast<std::ptrdiff_t>(first + count / 2)),
        m_plus(count / 2 + 1),
        m_minus(count / 2 + 1),
        m_double(count / 2 + 1) {
    const double middle = step * static_cast<double>(m_middle);
    const double perUnit = step * static_cast<double>(m_plus.Size()) / Nu_2PI;
    for (std::size_t i = 0; i < samples.Size(); ++i) {
      const double u = samples.u[i];
      const double y = samples.y[i];
      const auto [sine, cosine] = SinCos(middle * u);
      m_squares += y * y;
      const FourierSums::Place place = m_plus.PlaceAt(perUnit * u);
      m_plus.Add(place, {y * cosine - sine, y * sine + cosine});
      m_minus.Add(place, {y * cosine + sine, cosine - y * sine});
      m_double.Add(m_double.PlaceAt(2.0 * perUnit * u), {cosine * cosine - sine * sine, 2.0 * sine * cosine});
    }
    m_plus.Transform();
    m_minus.Transform();
    m_double.Transform();
  }

  // Sets, for each frequency from the first on, the part of the sum of the squared y that the best wave explains.
  void ExplainedParts(std::size_t first, std::vector<double>& parts) const {
    for (std::size_t place = 0; place < m_plus.Size(); ++place) {
      const std::ptrdiff_t k = m_plus.IndexAt(place);
      const auto at = static_cast<std::size_t>(m_middle + k);
      if (at >= first && at < first + parts.size()) parts[at - first] = ExplainedPart(place, k);
    }
  }

 private:
  double ExplainedPart(std::size_t place, std::ptrdiff_t k) const {
    const Phasor plus = m_plus.At(place);
    const Phasor minus = m_minus.At(FourierSums::MirrorOf(place));
    const double half = 0.5 * m_plus.Factor(k);
    const Phasor y{half * (plus.re + minus.re), half * (plus.im - minus.im)};
    const Phasor one{half * (plus.im + minus.im), half * (minus.re - plus.re)};
    const Phasor square{half * m_double.At(place).re, half * m_double.At(place).im};
    const double cc = 0.5 * m_size + square.re - one.re * one.re / m_size;
    const double ss = 0.5 * m_size - square.re - one.im * one.im / m_size;
    const double cs = square.im - one.re * one.im / m_size;
    const double trace = cc + ss;
    const double determinant = cc * ss - cs * cs;
    const double explained = determinant > kDependent * trace * trace
                                 ? (y.re * y.re * ss - 2.0 * y.re * y.im * cs + y.im * y.im * cc) / determinant
                                 : (y.re * y.re + y.im * y.im) / trace;
    return explained / m_squares;
  }

  double m_size;
  double m_squares = 0.0;
  std::ptrdiff_t m_middle;
  FourierSums m_plus;  // of (y + i) e^(i k u), and of (y + i) e^(-i k u)
  FourierSums m_minus;
  FourierSums m_double;
};

// The local maxima of values in a row, as far as they may be the greatest one: at least `close` of it, and of equal
// ones the first.
class Peaks {
 public:
  explicit Peaks(double close) : m_close(close) {}

  void Add(const std::vector<double>& values) {
    for (const double value : values) {
      if (m_rises && m_last > value) Keep();
      m_rises = m_count == 0 || value >= m_last;
      m_last = value;
      ++m_count;
    }
  }

  // After the last value: their places, ascending.
  std::vector<std::size_t> Places() {
    if (m_rises) Keep();
    Prune();
    std::vector<std::size_t> places;
    for (const Peak& peak : m_peaks) places.push_back(peak.place);
    std::sort(places.begin(), places.end());
    return places;
  }

 private:
  struct Peak {
    double height;
    std::size_t place;
  };

  void Keep() {
    m_highest = std::max(m_highest, m_last);
    if (!(m_last >= m_close * m_highest)) return;
    m_peaks.push_back({m_last, m_count - 1});
    if (m_peaks.size() == kKeptPeaks) Prune();
  }

  void Prune() {
    std::erase_if(m_peaks, [&](const Peak& peak) { return !(peak.height >= m_close * m_highest); });
    std::sort(m_peaks.begin(), m_peaks.end(), [](const Peak& a, const Peak& b) {
      return a.height != b.height ? a.height > b.height : a.place < b.place;
    });
    m_peaks.resize(std::min(m_peaks.size(), kMostCandidates));
  }

  double m_close;
  double m_last = 0.0;
  double m_highest = 0.0;
  bool m_rises = false;
  std::size_t m_count = 0;
  std::vector<Peak> m_peaks;
};

// The multiples of the step at which the wave explains most.
std::vector<std::size_t> BestMultiples(const WaveSamples& samples, double step, int steps, double limit) {
  const auto count = static_cast<std::size_t>(std::ceil(limit / step)) + 1;
  const bool few = samples.Size() <= kFewSamples;
  const std::size_t low = few ? count : std::min(count, static_cast<std::size_t>(kLowPeriods * steps));
  std::vector<double> parts(low);
  const WaveSamples some = PartOf(samples, kLowSamples);
  for (std::size_t k = 0; k < low; ++k) {
    parts[k] = 1.0 - UnexplainedPart(some, std::min(static_cast<double>(k) * step, limit));
  }
  Peaks peaks(few ? 0.0 : kClose);
  peaks.Add(parts);
  const std::size_t most = BandFor(count);
  for (std::size_t first = low; first < count; first += most) {
    parts.resize(std::min(count - first, most));
    const Band band(samples, step, first, parts.size());
    band.ExplainedParts(first, parts);
    peaks.Add(parts);
  }
  return peaks.Places();
}

}  // namespace

double NyquistFrequency(const std::vector<double>& u) {
  const double range = u.back() - u.front();
  const double meanOfAll = range / static_cast<double>(GapsAbove(u, 0.0).size());
  std::vector<double> gaps = GapsAbove(u, kSamePlace * meanOfAll);
  const double mean = range / static_cast<double>(gaps.size());
  const auto middle = gaps.begin() + static_cast<std::ptrdiff_t>(gaps.size() / 2);
  std::nth_element(gaps.begin(), middle, gaps.end());
  return Nu_PI / std::clamp(*middle, kLeastSpacing * mean, mean);
}

FrequencyScan ScanFrequencies(const WaveSamples& samples) {
  const std::size_t size = samples.Size();
  const int steps = size <= kFewSamples ? kFewSteps : size <= kManySamples ? kSteps : kManySteps;
  FrequencyScan scan;
  scan.limit = NyquistFrequency(samples.u);
  scan.step = Nu_2PI / ((samples.u.back() - samples.u.front()) * steps);
  // Next to the limit the sum of squares of evenly spaced samples hardly changes, whatever they are.
  const double last = std::max(scan.limit - 0.5 * scan.step, 0.0);
  for (const std::size_t k : BestMultiples(samples, scan.step, steps, scan.limit)) {
    scan.candidates.push_back(std::min(static_cast<double>(k) * scan.step, last));
  }
  return scan;
}

}  // namespace nu::engine::least_squares
