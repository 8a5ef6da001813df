#ifndef NU_ENGINE_QUADRATURE_QUADRATURE_H
#define NU_ENGINE_QUADRATURE_QUADRATURE_H

#include <array>
#include <cstddef>
#include <span>

#include "nu/engine/quadrature/panel_rules.h"

namespace nu::engine::quadrature {

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

// A sample that is not finite may be a singularity that was hit. After so many the integrand is not finite.
inline constexpr int kMostHits = 64;

struct QuadratureLimits {
  int dimensions;     // of the whole integral
  int panels;         // at the start
  int probeHalvings;  // from one probe of an end to the next
  int confirmations;  // halvings of every panel that looks rough, however small its error is
  long halvings;
  long samples;          // what is left, counted down; nested integrals share it
  int hits = kMostHits;  // what is left likewise
};

// Places in ascending order; what has no room is left out.
class Places {
 public:
  void Add(double place);
  void Add(const Places& places) {
    for (double place : places.All()) Add(place);
  }
  std::span<const double> All() const { return {m_place.data(), m_count}; }

 private:
  std::array<double, 16> m_place{};
  std::size_t m_count = 0;
};

// What is exchanged with the integrals over neighbouring lines.
struct Surroundings {
  Places expected = {};     // where f may break
  Places* found = nullptr;  // takes where it does
  bool recheck =
      false;  // f may have learnt meanwhile: every panel is sampled once more before the integral is believed
};

// The integral of f from a to b; a > b negates.
Quadrature Integrate(const Integrand& f, double a, double b, const QuadratureGoal& goal, QuadratureLimits& limits,
                     const Surroundings& surroundings = {});

}  // namespace nu::engine::quadrature

#endif
