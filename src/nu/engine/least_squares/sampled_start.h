#ifndef NU_ENGINE_LEAST_SQUARES_SAMPLED_START_H
#define NU_ENGINE_LEAST_SQUARES_SAMPLED_START_H

#include "nu/engine/points/point_blocks.h"
#include "nu/engine/points/point_sample.h"

namespace nu::engine::least_squares {

// Places `fit` where it has come to on a sample of a large set. False when the sample does not determine it.
template<class Fit>
bool StartFromSample(PointView points, PointBlocks& blocks, Fit& fit, bool (*start)(PointBlocks&, Fit&)) {
  constexpr int kSampleSteps = 100;
  constexpr int kPlainSteps = 5;  // that the sample has spared
  const PointSample sample(points);
  PointBlocks sampleBlocks(sample.View(), blocks.Origin());
  sampleBlocks.Keep();
  Fit sampleFit(sampleBlocks);
  if (!start(sampleBlocks, sampleFit)) return false;
  sampleFit.DescendAnyhow(kSampleSteps);
  if (!sampleFit.Determined()) return false;
  if (sampleBlocks.Scale() != 1.0 && !blocks.FitScale()) return false;
  auto model = sampleFit.Model();
  model.Rescale(blocks.Scale() / sampleBlocks.Scale());
  fit.Place(model, kPlainSteps);
  return true;
}

// Places `fit`, which runs over the blocks of these points, by `start`: on a sample of them where that is enough.
template<class Fit>
bool StartFit(PointView points, PointBlocks& blocks, Fit& fit, bool (*start)(PointBlocks&, Fit&)) {
  if (points.Size() > PointSample::kMostPoints && StartFromSample(points, blocks, fit, start)) return true;
  return start(blocks, fit);
}

}  // namespace nu::engine::least_squares

#endif
