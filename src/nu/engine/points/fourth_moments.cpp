#include "nu/engine/points/fourth_moments.h"

#include "nu/engine/base/floating_point.h"
#include "nu/engine/linear/small_svd.h"
#include "nu/engine/points/low_moments.h"
#include "nu/engine/points/point_lanes.h"

namespace nu::engine::points {
namespace {

// Sums outside have overflowed or vanished, or are about to in a product.
constexpr double kSafeSmall = 1e-80;
constexpr double kSafeLarge = 1e80;

// The coordinates that are summed: row . p - offset.
struct Whitening {
  Vec3 row[3];
  double offset[3];
};

// In the order of FourthMoments: the exponent of w runs fastest, that of u slowest.
NU_KERNEL void SumHighPowers(const PointBlock& block, const Whitening& given, double (&sums)[FourthMoments::kCount]) {
  const Whitening to = given;
  Lanes sum[FourthMoments::kCount] = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes x, y, z, weight;
    LoadPoints(block, i, x, y, z, weight);
    const Lanes u = to.row[0].x * x + to.row[0].y * y + to.row[0].z * z - to.offset[0];
    const Lanes v = to.row[1].x * x + to.row[1].y * y + to.row[1].z * z - to.offset[1];
    const Lanes w = to.row[2].x * x + to.row[2].y * y + to.row[2].z * z - to.offset[2];
    Lanes powerOfU = weight;
    int k = 0;
    for (int a = 0; a <= 4; ++a) {
      Lanes powerOfV = powerOfU;
      for (int b = 0; a + b <= 4; ++b) {
        Lanes power = powerOfV;
        for (int c = 0; a + b + c <= 4; ++c) {
          sum[k++] += power;
          power *= w;
        }
        powerOfV *= v;
      }
      powerOfU *= u;
    }
  }
  for (int k = 0; k < FourthMoments::kCount; ++k) sums[k] = Sum(sum[k]);
}

double TraceOf(const BlockSums<kLowSums>& sums) {
  return sums[3] + sums[4] + sums[5];
}

}  // namespace

FourthMoments FindFourthMoments(PointBlocks& points) {
  FourthMoments found;
  BlockSums<kLowSums> low = SumLowPowers(points);
  if (!(TraceOf(low) >= kSafeSmall && TraceOf(low) <= kSafeLarge)) {
    if (!points.FitScale()) return found;
    low = SumLowPowers(points);
  }
  const double n = static_cast<double>(points.Size());
  found.finite = true;
  found.mean = {low[0] / n, low[1] / n, low[2] / n};
  const Vec3& m = found.mean;
  const double scatter[3][3] = {
      {low[3] / n - m.x * m.x, low[6] / n - m.x * m.y, low[7] / n - m.x * m.z},
      {low[6] / n - m.x * m.y, low[4] / n - m.y * m.y, low[8] / n - m.y * m.z},
      {low[7] / n - m.x * m.z, low[8] / n - m.y * m.z, low[5] / n - m.z * m.z},
  };
  const SmallSvd<3> principal = SvdOfColumns(scatter);
  Whitening whitening;
  for (int k = 0; k < 3; ++k) {
    found.axis[k] = LoadVec3(principal.axis[k]);
    // Below this the sums know nothing of the spread.
    found.spread[k] = std::sqrt(std::max(principal.value[k], kEpsilon * TraceOf(low) / n));
    const double inverse = found.spread[k] > 0.0 ? 1.0 / found.spread[k] : 0.0;
    whitening.row[k] = inverse * found.axis[k];
    whitening.offset[k] = Dot(whitening.row[k], m);
  }
  const BlockSums<FourthMoments::kCount> high = SumOver<FourthMoments::kCount>(
      points,
      [&](const PointBlock& block, double(&sums)[FourthMoments::kCount]) { SumHighPowers(block, whitening, sums); });
  for (int k = 0; k < FourthMoments::kCount; ++k) found.value[k] = high[k] / n;
  return found;
}

}  // namespace nu::engine::points
