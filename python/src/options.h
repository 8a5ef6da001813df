#ifndef NU_PYTHON_OPTIONS_H
#define NU_PYTHON_OPTIONS_H

#include <nanobind/stl/optional.h>

#include <optional>

#include "arguments.h"

// What a fit is told, for fits in memory and for parts of clouds.
namespace nu::python {

// But for the weights, as the Python side has checked and named it.
struct Options {
  std::optional<double> radius, majorRadius, semiAngle;
  std::optional<Triple> direction, point;
  int materialSide = NuEitherSide;
  std::optional<Feature> start;
  std::optional<long> maxSteps;
  std::optional<double> tolerance;
};

using WeightsArgument = std::optional<nb::ndarray<const double, nb::ndim<1>, nb::c_contig, nb::device::cpu>>;

// Points and weights of Python, borrowed; the weights are null where all are 1.
struct Job {
  Block points;
  const double* weights = nullptr;
};

// Raises ValueError for another number of weights, and as ToBlock.
Job ToJob(const PointsArgument& points, const WeightsArgument& weights);

// The association of the points with the options; the points are borrowed.
CNuAssociation AssociationOf(const Job& job, const Options& options);

}  // namespace nu::python

#endif
