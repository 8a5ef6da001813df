#ifndef NU_NUMERICS_INTERNAL_QUADRATURE_H
#define NU_NUMERICS_INTERNAL_QUADRATURE_H

#include "nu/numerics/internal/panel_rules.h"

namespace nu::internal {

enum class QuadratureEnd { converged, notFinite, limitReached, noMemory };

struct Quadrature {
  QuadratureEnd end = QuadratureEnd::converged;
  double value = 0.0;
  double error = 0.0;  // estimate, rounding and the errors of the samples included
};

// The error may be the largest of these.
struct QuadratureGoal {
  double absolute;
  double ofValue;     // share of the integral's magnitude
  double ofAbsolute;  // share of the integral of the absolute value
};

struct QuadratureLimits {
  int panels;         // at the start
  int probeHalvings;  // from one probe of an end to the next
  int confirmations;  // halvings of every panel that looks rough, however small its error is
  long halvings;
  long samples;  // what is left, counted down; nested integrals share it
};

// The integral of f from a to b; a > b negates.
Quadrature Integrate(const Integrand& f, double a, double b, const QuadratureGoal& goal, QuadratureLimits& limits);

}  // namespace nu::internal

#endif
