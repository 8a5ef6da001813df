#ifndef NU_ENGINE_LEAST_SQUARES_CONIC_UNKNOWNS_H
#define NU_ENGINE_LEAST_SQUARES_CONIC_UNKNOWNS_H

#include <type_traits>

#include "nu/engine/least_squares/trust_region.h"
#include "nu/engine/shapes/conic_equation.h"

// How a fit moves a conic. The mathematics is at the top of the source. `flatness` is that of the frame.
namespace nu::engine::least_squares {

inline constexpr int kConicUnknowns = kMonomials - 1;

template<class Curve>
inline constexpr bool kIsParabola = std::is_same_v<Curve, Parabola2>;

template<class Curve>
inline constexpr int kUnknownsOf = kIsParabola<Curve> ? kConicUnknowns - 1 : kConicUnknowns;

// By all coefficients but the fixed one, in whose place is the last.
using ConicModel = SecondOrderModel<kConicUnknowns>;

int FixedCoefficient(const ConicEquation& equation, double flatness);

template<class Curve>
ConicCurvature CurvatureAs(const ConicEquation& equation, double flatness);

template<class Curve>
ConicEquation Moved(const ConicEquation& equation, double flatness, const double (&step)[kUnknownsOf<Curve>]);

template<class Curve>
SecondOrderModel<kUnknownsOf<Curve>> ModelFor(const ConicModel& model, const ConicEquation& equation, double flatness);

}  // namespace nu::engine::least_squares

#endif
