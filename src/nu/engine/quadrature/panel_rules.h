#ifndef NU_ENGINE_QUADRATURE_PANEL_RULES_H
#define NU_ENGINE_QUADRATURE_PANEL_RULES_H

#include <span>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/base/function_ref.h"

namespace nu::engine::quadrature {

// A value of the integrand. Where the value is an integral itself, it has an error estimate of its own.
struct Sample {
  double value;
  double error = 0.0;
};
using Integrand = FunctionRef<Sample(double)>;

inline constexpr int kNoBreak = -1;

// A part lo < hi of the interval of integration, with the estimate of one rule for the integral over it.
struct Panel {
  double lo;
  double hi;
  double value = 0.0;
  double absolute = 0.0;  // integral of the absolute value
  double carried = 0.0;   // integral of the samples' own errors
  double error = 0.0;     // estimate for the rule, without rounding
  double atLo = 0.0;      // the integrand at the ends, by extrapolation: no rule samples it there
  double atHi = 0.0;
  double checkAt = 0.0;  // a place between the samples, and the polynomial through them there
  double checkValue = 0.0;
  bool checked = false;
  double gap = 0.0;        // from an end to the nearest sample
  int depth = 0;           // halvings that led to this panel
  int breakLo = kNoBreak;  // whether an end is a break that is known, and which
  int breakHi = kNoBreak;
  double bendLo = 0.0;  // where rough: the neighbours of the sample at which the slope changes most
  double bendHi = 0.0;
  bool rough = false;      // the samples do not look like those of a smooth function
  bool settled = false;    // not to be divided any more
  bool notFinite = false;  // a sample was not finite, or the integral overflowed
  double hit = kQuietNaN;  // the place of a sample that was not finite
};

// The integrand nearer to an end of the interval than any panel samples it, and the distance of the probe before, which
// is farther.
struct Probe {
  double distance;
  double before;
  double value;
};
using Probes = std::span<const Probe>;

// Gauss-Kronrod with 7 and 15 points; none of them is an end. The probes belong to the ends of the interval that are
// ends of the panel. What they differ from the polynomial through the samples counts as error over the distance to the
// probe before: an edge, a kink or a singularity beyond the outermost sample is not missed.
Panel KronrodPanel(const Integrand& f, double lo, double hi, int depth, Probes atLo, Probes atHi);
inline constexpr int kKronrodSamples = 15;
// From an end of the panel to its nearest sample, as a share of the width.
inline constexpr double kKronrodGap = 0.5 * (1.0 - 0.9914553711208126392069);

// Double-exponential rule for integrands that are singular at an end of the panel; the ends are approached as closely
// as double allows and never reached, in an integral of several dimensions less closely. The panel is settled when its
// error is at most `goal`. *samples grows by the number of evaluations.
Panel DoubleExponentialPanel(const Integrand& f, double lo, double hi, double goal, int dimensions, long* samples);

// The limit of Gauss-Kronrod sums for integrands that are singular at one end of the panel, which is not 0: there the
// double-exponential rule lacks digits. The integrand is sampled up to the distance `reach` from that end, which is at
// least the width of the panel and exceeds no distance from another break. The probes belong to that end.
Panel ExtrapolatedPanel(const Integrand& f, double lo, double hi, bool atLo, double reach, double goal, Probes probes,
                        long* samples);

}  // namespace nu::engine::quadrature

#endif
