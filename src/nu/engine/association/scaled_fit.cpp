#include "nu/engine/association/scaled_fit.h"

#include "nu/engine/association/feature_kernels.h"

namespace nu::engine::association {

FreeUnknowns::FreeUnknowns(FeatureKind kind, UnknownMask free, double extent) : count(ListUnknowns(free, at)) {
  for (int i = 0; i < count; ++i) unit[i] = PerLength(kind, at[i], extent);
}

Feature FreeUnknowns::Moved(const Feature& feature, const double* step) const {
  double change[kUnknowns] = {};
  for (int i = 0; i < count; ++i) change[at[i]] = unit[i] * step[i];
  return association::Moved(feature, change);
}

int PartOf(const Feature& feature, double extent, const Vec3& point) {
  const Vec3 q = feature.frame.Local(point);
  const int quarter = q.z < 0.0 ? (q.z < -0.5 * extent ? 0 : 1) : (q.z < 0.5 * extent ? 2 : 3);
  return 8 * quarter + (q.x < 0.0 ? 1 : 0) + (q.y < 0.0 ? 2 : 0) + (std::fabs(q.x) < std::fabs(q.y) ? 4 : 0);
}

void CentreOn(const Feature& feature, const PointBlock& block, PointBlock& centred) {
  const Vec3 origin = feature.frame.origin;
  centred.size = block.size;
  const std::size_t end = (block.size + kLanes - 1) / kLanes * kLanes;
  for (std::size_t i = 0; i < end; ++i) {
    centred.x[i] = block.x[i] - origin.x;
    centred.y[i] = block.y[i] - origin.y;
    centred.z[i] = block.z[i] - origin.z;
  }
}

void DeviationsOf(const Feature& feature, const PointBlock& block, double* deviation, double& smallest,
                  double& largest) {
  PointBlock centred;
  CentreOn(feature, block, centred);
  FindDeviations(centred, feature, deviation, smallest, largest);
}

}  // namespace nu::engine::association
