#include "nu/engine/association/form_parameters.h"

#include <algorithm>
#include <cmath>

#include "nu/engine/association/feature_kernels.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/base/lanes.h"

namespace nu::engine::association {
namespace {

NU_KERNEL double SumOfSquares(const double* each, std::size_t count) {
  Lanes sum = {};
  std::size_t i = 0;
  for (; i + kLanes <= count; i += kLanes) {
    Lanes e;
    Load(each + i, e);
    sum += e * e;
  }
  double rest = 0.0;
  for (; i < count; ++i) rest += each[i] * each[i];
  return Sum(sum) + rest;
}

}  // namespace

FormParameters FindForm(PointView points, const Feature& feature, double* deviations) {
  FormParameters form;
  double smallest = kInfinity;
  double largest = -smallest;
  CompensatedSum squares;
  PointBlocks blocks(points, feature.frame.origin);
  std::size_t begin = 0;
  blocks.ForEach([&](const PointBlock& block) {
    alignas(64) double each[kBlockPoints];
    double low, high;
    FindDeviations(block, feature, each, low, high);
    const auto indexOf = [&](double value) {
      return begin + static_cast<std::size_t>(std::find(each, each + block.size, value) - each);
    };
    if (high > largest) form.peakIndex = indexOf(largest = high);
    if (low < smallest) form.valleyIndex = indexOf(smallest = low);
    squares.Add(SumOfSquares(each, block.size));
    if (deviations != nullptr) std::copy_n(each, block.size, deviations + begin);
    begin += block.size;
  });
  form.peak = largest;
  form.valley = ResidualsPerPoint(feature.kind) > 1 ? 0.0 : -smallest;
  form.total = form.peak + form.valley;
  form.rootMeanSquare = std::sqrt(squares.Value() / static_cast<double>(points.Size()));
  form.finite = std::isfinite(form.rootMeanSquare) && std::isfinite(form.total);
  return form;
}

}  // namespace nu::engine::association
