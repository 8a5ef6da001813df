#ifndef NU_ENGINE_ASSOCIATION_FORM_PARAMETERS_H
#define NU_ENGINE_ASSOCIATION_FORM_PARAMETERS_H

#include <cstddef>

#include "nu/engine/association/feature.h"
#include "nu/engine/points/point_view.h"

namespace nu::engine::association {

// The parameters of form of ISO 12180, 12181, 12780 and 12781, from the deviations of all points.
struct FormParameters {
  double peak = 0.0;            // P: the largest deviation
  double valley = 0.0;          // V: the smallest, with its sign turned; 0 where deviations are distances
  double total = 0.0;           // T = P + V
  double rootMeanSquare = 0.0;  // Q
  std::size_t peakIndex = 0;    // the first point with the largest deviation
  std::size_t valleyIndex = 0;  // the first with the smallest
  bool finite = true;           // false: a deviation was not, and nothing else has a meaning
};

// `deviations`, unless null, receives one value per point, in order. In constant memory. At least one point.
FormParameters FindForm(PointView points, const Feature& feature, double* deviations);

}  // namespace nu::engine::association

#endif
