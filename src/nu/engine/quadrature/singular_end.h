#ifndef NU_ENGINE_QUADRATURE_SINGULAR_END_H
#define NU_ENGINE_QUADRATURE_SINGULAR_END_H

#include <array>
#include <cstddef>

#include "nu/engine/quadrature/panel_rules.h"

namespace nu::engine::quadrature {

// The integral over the distances from `from` to 2 from.
struct Shell {
  double from = 0.0;
  double value = 0.0;
  double absolute = 0.0;  // integral of the absolute value
  double carried = 0.0;   // integral of the samples' own errors
  double error = 0.0;
  double edges = 0.0;    // what an edge here does to the law, in units of the integral of all that lies nearer
  double atOuter = 0.0;  // the integrand at the ends, by extrapolation
  double atInner = 0.0;
  double gap = 0.0;  // from the outer end to the nearest sample
  bool notFinite = false;
};

// The integrand beside a place c at which it is singular, as a function of the distance from c, with the law that it
// follows there and bounds of its errors.
class SingularEnd {
 public:
  // On the side of c in this direction, 1 or -1, up to the distance `reach`. *samples grows by the number of
  // evaluations.
  SingularEnd(const Integrand& f, double c, double direction, double reach, long* samples);

  // Compares other values near c with the law, for ErrorWithin.
  void Compare(Probes others);
  // By the Gauss-Kronrod rule.
  Shell Octave(double from);
  // The error estimate of an edge, from the step between two values at the same distance.
  double StepAt(double distance, double outer, double inner) const;
  // Below this distance the place of a sample is not known well enough.
  double Nearest() const;
  // The exponent of the power of the distance that the integrand follows next to c, and a bound of its error.
  double Power() const { return m_power; }
  double PowerError() const;
  // Bound of the error of a value at this distance, relative to it.
  double RelativeError(double distance) const;
  // A bound of the contribution of an edge nearer to c than the distance; infinite where none is known.
  double ErrorWithin(double distance) const;

 private:
  struct Value {
    double distance;
    double value;
    double error;         // the value's own
    double nearer = 0.0;  // integral of the absolute value up to the probe before
    double hidden = 0.0;  // what an edge at this distance or nearer may count
  };

  Sample At(double distance);
  void Scan(double reach);
  void FindLaw();
  void JudgeProbes();
  double Excess(double departure, double distance, double relativeError) const;
  std::size_t Beside(double distance) const;
  double LineAt(std::size_t i) const;
  void MeasureNoise(double reach);
  double NoiseAt(double distance);
  double Departure(std::size_t i, double start) const;
  double LogarithmicStart(std::size_t i) const;
  double Slope(std::size_t i) const;
  double PowerAt(std::size_t i) const;
  double ExponentAt(double distance) const;

  const Integrand& m_f;
  double m_c;
  double m_direction;
  double m_resolution;  // of distances, by the rounding of c
  long* m_samples;
  std::array<Value, 40> m_probe{};  // from the farthest to the nearest
  std::size_t m_count = 0;
  std::size_t m_lawAt = 0;  // the nearest of the probes that gave the law
  double m_start;           // steps from the zero of the law's logarithm to probe 0; infinite without a logarithm
  double m_power = 0.0;
  double m_valueNoise = 0.0;     // relative to the values
  double m_distanceNoise = 0.0;  // of the distance on which a value depends, in units of the resolution
};

}  // namespace nu::engine::quadrature

#endif
