#ifndef NU_ENGINE_LEAST_SQUARES_SINUSOID_LEAST_SQUARES_H
#define NU_ENGINE_LEAST_SQUARES_SINUSOID_LEAST_SQUARES_H

#include <cstddef>
#include <vector>

#include "nu/engine/least_squares/gauss_newton.h"
#include "nu/engine/linear/tall_qr.h"
#include "nu/engine/points/form_statistics.h"

namespace nu::engine::least_squares {

// Samples y over u in [-1, 1].
struct WaveSamples {
  std::size_t Size() const { return u.size(); }

  std::vector<double> u;
  std::vector<double> y;
};

// sine sin(frequency u) + cosine cos(frequency u) + offset.
struct Wave {
  double frequency;
  double sine;
  double cosine;
  double offset;
};

// The least-squares wave whose frequency is a local minimum of the sum of squares. The mathematics is at the top of the
// source.
class SinusoidLeastSquares {
 public:
  // `level` is the distance of the samples from 0 before they were centred, in their unit: they are rounded to it.
  SinusoidLeastSquares(const WaveSamples& samples, double level);

  // No step changes the frequency by more than `reach`, and none leads to `limit`.
  void StartFrom(double frequency, double reach, double limit);

  // For RunGaussNewton. The squared length of a step is the mean square of the changes that it makes to the wave at the
  // samples; it is 0 when those are rounding.
  GaussNewtonStep SolveStep();
  void TakeStep();

  // As the last SolveStep found it.
  double SumSquares() const { return m_system.sumSquares; }
  // The amount that rounding of the samples may add to it.
  double Rounding() const;

  // False when the sum of squares falls all the way to the limit, where the wave of evenly spaced samples grows beyond
  // all bounds, or to frequency 0, where a wave becomes a parabola: the longer the period, the better, or as good.
  bool IsAttained() const;

  Wave Found();
  Deviations DeviationsNow();

 private:
  struct System {
    bool usable = false;
    double coefficient[3];  // of the columns below
    double slope;           // minus half the derivative of the sum of squares
    double curvature;
    double sumSquares;
  };

  System Reduce(double frequency) const;
  double Roughness() const;

  const WaveSamples* m_samples;
  double m_level;
  double m_reach = 0.0;
  double m_squared = 0.0;  // the square of the frequency
  double m_step = 0.0;
  double m_least = 0.0;  // the minimum lies between these
  double m_most = 0.0;
  bool m_hasLeast = false;
  bool m_hasMost = false;
  bool m_hasPrevious = false;
  bool m_isPushed = false;
  double m_previousSquared = 0.0;
  double m_previousSlope = 0.0;
  System m_system;
};

// The part of the sum of the squared y that the best wave of this frequency, which may be 0, leaves.
double UnexplainedPart(const WaveSamples& samples, double frequency);

}  // namespace nu::engine::least_squares

#endif
