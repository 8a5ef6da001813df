#ifndef NU_ENGINE_MINIMAX_WITH_OFFSET_H
#define NU_ENGINE_MINIMAX_WITH_OFFSET_H

#include <algorithm>

#include "nu/engine/minimax/minimax_rows.h"
#include "nu/engine/points/point_blocks.h"

namespace nu::engine::minimax {

// A model of minimax.h whose deviations count from an offset that is an unknown of its own, the last one: for surfaces
// whose unknowns do not level the deviations.
template<class Model>
struct WithOffset {
  static constexpr int kUnknowns = Model::kUnknowns + 1;
  static constexpr int kStrata = Model::kStrata;

  Model model;
  double offset = 0.0;

  void Deviations(const PointBlock& block, double* deviation, double& smallest, double& largest) const {
    model.Deviations(block, deviation, smallest, largest);
    for (std::size_t i = 0; i < block.size; ++i) deviation[i] -= offset;
    smallest -= offset;
    largest -= offset;
  }

  void Gradients(const PointBlock& block, double* deviation, double (*gradient)[kMostRows]) const {
    model.Gradients(block, deviation, gradient);
    for (std::size_t i = 0; i < block.size; ++i) deviation[i] -= offset;
    std::fill_n(gradient[kUnknowns - 1], block.size, -1.0);
  }

  void AddCurvature(const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) const {
    double part[kUnknowns - 1][kUnknowns - 1] = {};
    model.AddCurvature(point, weight, part);
    for (int i = 0; i < kUnknowns - 1; ++i)
      for (int j = 0; j < kUnknowns - 1; ++j) sum[i][j] += part[i][j];
  }

  WithOffset Moved(const double (&step)[kUnknowns]) const {
    double ofModel[kUnknowns - 1];
    std::copy_n(step, kUnknowns - 1, ofModel);
    return {model.Moved(ofModel), offset + step[kUnknowns - 1]};
  }

  int Stratum(const Vec3& point) const { return model.Stratum(point); }
};

}  // namespace nu::engine::minimax

#endif
