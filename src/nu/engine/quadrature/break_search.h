#ifndef NU_ENGINE_QUADRATURE_BREAK_SEARCH_H
#define NU_ENGINE_QUADRATURE_BREAK_SEARCH_H

#include <optional>

#include "nu/engine/quadrature/panel_rules.h"

namespace nu::engine::quadrature {

// The place strictly between lo and hi where the integrand jumps, has a kink, or its slope grows without bound, to the
// resolution of double or of its noise: what is continuous on either side of it lies apart. Nothing where the integrand
// is smooth there. *samples grows by the number of evaluations.
struct BreakPlace {
  double place;
  double open;  // what the rest of its uncertainty may count in the integral
};
std::optional<BreakPlace> FindBreak(const Integrand& f, double lo, double hi, long* samples);

}  // namespace nu::engine::quadrature

#endif
