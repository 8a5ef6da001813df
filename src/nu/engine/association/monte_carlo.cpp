#include "nu/engine/association/monte_carlo.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "nu/engine/association/random_normals.h"
#include "nu/engine/base/compensated_sum.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/base/sort.h"

namespace nu::engine::association {
namespace {

constexpr double kLowProbability = 0.025;

class PackedPoints {
 public:
  explicit PackedPoints(PointView points) : m_coordinates(3 * points.Size()) {
    for (std::size_t i = 0; i < points.Size(); ++i) std::copy_n(points[i], 3, At(i));
  }

  double* At(std::size_t i) { return m_coordinates.data() + 3 * i; }
  PointView First(std::size_t count) const { return {m_coordinates.data(), 3 * sizeof(double), count}; }

 private:
  std::vector<double> m_coordinates;
};

void MovePoints(const MonteCarloProblem& problem, std::uint64_t sample, PackedPoints& moved) {
  const AxisFrame& f = problem.frame;
  RandomNormals normals(problem.seed, sample);
  for (std::size_t i = 0; i < problem.points.Size(); ++i) {
    const double x = problem.sigma.x * normals.Next();
    const double y = problem.sigma.y * normals.Next();
    const double z = problem.sigma.z * normals.Next();
    const Vec3 p = LoadVec3(problem.points[i]) + (x * f.x + (y * f.y + z * f.z));
    double* to = moved.At(i);
    to[0] = p.x;
    to[1] = p.y;
    to[2] = p.z;
  }
}

double QuantileOf(const std::vector<double>& ascending, double probability) {
  const double place = probability * static_cast<double>(ascending.size() - 1);
  const std::size_t below = static_cast<std::size_t>(place);
  const std::size_t above = std::min(below + 1, ascending.size() - 1);
  return ascending[below] + (place - static_cast<double>(below)) * (ascending[above] - ascending[below]);
}

SampledValue Summarise(std::vector<double>& samples) {
  const double count = static_cast<double>(samples.size());
  if (samples.empty()) return {kQuietNaN, kQuietNaN, kQuietNaN, kQuietNaN};
  CompensatedSum sum, squares;
  for (const double value : samples) sum.Add(value);
  const double mean = sum.Value() / count;
  for (const double value : samples) squares.Add((value - mean) * (value - mean));
  Sort(static_cast<int>(samples.size()), samples.data());
  const double deviation = samples.size() > 1 ? std::sqrt(squares.Value() / (count - 1.0)) : kQuietNaN;
  return {mean, deviation, QuantileOf(samples, kLowProbability), QuantileOf(samples, 1.0 - kLowProbability)};
}

}  // namespace

int SampleFits(const MonteCarloProblem& problem, int count, FunctionRef<bool(PointView, double*)> fit,
               SampledValue* result) {
  PackedPoints moved(problem.points);
  const PointView view = moved.First(problem.points.Size());
  std::vector<std::vector<double>> samples(static_cast<std::size_t>(count));
  std::vector<double> values(static_cast<std::size_t>(count));
  int fitted = 0;
  for (int sample = 0; sample < problem.samples; ++sample) {
    MovePoints(problem, static_cast<std::uint64_t>(sample), moved);
    const bool isFitted = fit(view, values.data()) &&
                          std::all_of(values.begin(), values.end(), [](double value) { return std::isfinite(value); });
    if (!isFitted) continue;
    ++fitted;
    for (std::size_t k = 0; k < values.size(); ++k) samples[k].push_back(values[k]);
  }
  for (std::size_t k = 0; k < values.size(); ++k) result[k] = Summarise(samples[k]);
  return fitted;
}

void FindSensitivities(PointView points, const std::size_t* contact, int count, double objective,
                       FunctionRef<double(PointView, std::size_t)> refit, double* change) {
  if (points.Size() == 0) return;
  PackedPoints packed(points);
  const std::size_t last = points.Size() - 1;
  for (int k = 0; k < count; ++k) {
    std::copy_n(points[last], 3, packed.At(contact[k]));
    change[k] = refit(packed.First(last), contact[k]) - objective;
    std::copy_n(points[contact[k]], 3, packed.At(contact[k]));
  }
}

}  // namespace nu::engine::association
