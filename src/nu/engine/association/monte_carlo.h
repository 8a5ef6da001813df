#ifndef NU_ENGINE_ASSOCIATION_MONTE_CARLO_H
#define NU_ENGINE_ASSOCIATION_MONTE_CARLO_H

#include <cstdint>

#include "nu/engine/base/function_ref.h"
#include "nu/engine/points/point_view.h"
#include "nu/engine/shapes/axis_frame.h"

namespace nu::engine::association {

// Propagation of distributions (JCGM 101:2008): a fit is repeated on points that are moved at random.
struct MonteCarloProblem {
  PointView points;
  Vec3 sigma;  // the standard deviations of a point along the axes of the frame, normally distributed
  AxisFrame frame{{}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
  std::uint64_t seed = 1;
  int samples = 1000;
};

// Of one value over the samples.
struct SampledValue {
  double mean = 0.0;
  double deviation = 0.0;  // standard, with one degree of freedom less than samples
  double low = 0.0;        // the quantiles 2.5 % and 97.5 %, interpolated between the samples next to them
  double high = 0.0;
};

// Calls fit(points, values) once per sample; it sets `count` values, or returns false where there is no result. Fills
// `result` from the samples with finite values and returns their number; with fewer than two, what has no meaning is
// NaN. Sample k is the same whatever the others are. Takes memory for the moved points and for all values. Throws
// std::bad_alloc and what fit throws.
int SampleFits(const MonteCarloProblem& problem, int count, FunctionRef<bool(PointView, double*)> fit,
               SampledValue* result);

// What each point is worth to a fit: refit(points, index) gives the objective without the point `index`, from any start
// that it likes, or NaN. change[k] is that without contact[k], less the objective. Takes one copy of the points, in
// which the last one stands for the one left out. Throws std::bad_alloc and what refit throws.
void FindSensitivities(PointView points, const std::size_t* contact, int count, double objective,
                       FunctionRef<double(PointView, std::size_t)> refit, double* change);

}  // namespace nu::engine::association

#endif
