#include "options.h"

namespace nu::python {

Job ToJob(const PointsArgument& points, const WeightsArgument& weights) {
  const Block block = ToBlock(points);
  if (!weights) return {block, nullptr};
  if (weights->shape(0) != static_cast<std::size_t>(block.count)) throw nb::value_error("not one weight per point");
  return {block, weights->data()};
}

CNuAssociation AssociationOf(const Job& job, const Options& options) {
  CNuAssociation association(job.points.xyz, job.points.count, job.points.stride);
  if (job.weights != nullptr) association.SetWeights(ToNumbers(job.weights, job.points.count));
  if (options.radius) association.FixRadius(*options.radius);
  if (options.majorRadius) association.FixMajorRadius(*options.majorRadius);
  if (options.semiAngle) association.FixSemiAngle(*options.semiAngle);
  if (options.direction) association.FixDirection(options.direction->Vector());
  if (options.point) association.FixPoint(options.point->Point());
  if (options.materialSide != NuEitherSide)
    association.RestrictToMaterialSide(static_cast<ENuMaterialSide>(options.materialSide));
  if (options.start) std::visit([&](const auto& start) { association.StartFrom(start); }, *options.start);
  if (options.maxSteps) association.SetMaxSteps(*options.maxSteps);
  if (options.tolerance) association.SetTolerance(*options.tolerance);
  return association;
}

}  // namespace nu::python
