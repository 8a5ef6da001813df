#include "nu/engine/points/principal_direction.h"

#include "nu/engine/base/floating_point.h"
#include "nu/engine/points/low_moments.h"
#include "nu/engine/points/small_systems.h"

// One pass sums the first and second moments. They square the condition of the matrix, so the eigenvector that they
// give is off by about epsilon / separation, where
//
//   separation = (distance to the second eigenvalue) * (distance to the third) / trace^2
//
// A singular vector of the matrix itself is off by epsilon times the square root of that. Where the difference would
// show, a second pass reduces the rows of the matrix by orthogonal steps to a triangle with the same singular vectors.

namespace nu::engine::points {
namespace {

// Moments carry the result while they lose at most this factor: the few roundings that the coordinates lose anyway,
// times the sensitivity of the direction.
constexpr double kClearSeparation = 1.0 / 64.0;

// Sums outside do not tell points that coincide or that are not finite from sums that have vanished or overflowed.
constexpr double kSafeSmall = 1e-100;
constexpr double kSafeLarge = 1e100;

// Newton's method needs two to four steps where the eigenvalues are apart; where it needs more, moments are not used.
constexpr int kMaxNewtonSteps = 10;

struct Symmetric3 {
  double xx, yy, zz, xy, xz, yz;
  double Trace() const { return xx + yy + zz; }
};

struct Moments {
  Vec3 mean;
  Symmetric3 scatter;  // about the mean
  double rawTrace;     // about the origin: rounding errors are in units of it
};

Moments MomentsOf(PointBlocks& points) {
  const BlockSums<kLowSums> total = SumLowPowers(points);
  const double n = static_cast<double>(points.Size());
  const Vec3 sum{total[0], total[1], total[2]};
  const Vec3 mean{sum.x / n, sum.y / n, sum.z / n};
  return {mean,
          {total[3] - sum.x * mean.x, total[4] - sum.y * mean.y, total[5] - sum.z * mean.z, total[6] - sum.x * mean.y,
           total[7] - sum.x * mean.z, total[8] - sum.y * mean.z},
          total[3] + total[4] + total[5]};
}

struct EigenDirection {
  Vec3 direction;
  double value = 0.0;
  double separation = 0.0;  // 0: not found
};

// Newton's method on the characteristic polynomial of m / trace, whose roots lie in [0, 1], from the end at which it
// converges monotonically; then the largest column of the adjugate of m - value.
EigenDirection ExtremeEigenDirection(const Symmetric3& matrix, Extent extent) {
  const double trace = matrix.Trace();
  const double f = 1.0 / trace;
  const Symmetric3 m{f * matrix.xx, f * matrix.yy, f * matrix.zz, f * matrix.xy, f * matrix.xz, f * matrix.yz};
  const double minor = m.xx * m.yy - m.xy * m.xy;
  const double b = minor + (m.xx * m.zz - m.xz * m.xz) + (m.yy * m.zz - m.yz * m.yz);
  const double c = m.zz * minor + m.xz * (m.xy * m.yz - m.xz * m.yy) - m.yz * (m.xx * m.yz - m.xy * m.xz);
  const auto slope = [b](double l) { return (3.0 * l - 2.0) * l + b; };
  double l = extent == Extent::largest ? 1.0 : 0.0;
  double step = 1.0;
  for (int k = 0; k < kMaxNewtonSteps && !(std::fabs(step) <= kEpsilon); ++k) {
    step = (((l - 1.0) * l + b) * l - c) / slope(l);
    l -= step;
  }
  EigenDirection found;
  if (!(std::fabs(step) <= kEpsilon)) return found;

  const Vec3 row0{m.xx - l, m.xy, m.xz};
  const Vec3 row1{m.xy, m.yy - l, m.yz};
  const Vec3 row2{m.xz, m.yz, m.zz - l};
  Vec3 best = Cross(row0, row1);
  double square = Dot(best, best);
  for (const Vec3& column : {Cross(row0, row2), Cross(row1, row2)}) {
    const double other = Dot(column, column);
    if (other > square) {
      best = column;
      square = other;
    }
  }
  if (!(square > 0.0)) return found;
  found.direction = (1.0 / std::sqrt(square)) * best;
  found.value = l * trace;
  found.separation = slope(l);
  return found;
}

SmallSvd<3> SvdAbout(const Vec3& mean, PointBlocks& points) {
  const auto fill = [&](const PointBlock& block, std::size_t begin, std::size_t end, TallReduction& rows) {
    for (std::size_t i = begin; i < end; ++i) {
      rows.Column(0)[i - begin] = block.x[i] - mean.x;
      rows.Column(1)[i - begin] = block.y[i] - mean.y;
      rows.Column(2)[i - begin] = block.z[i] - mean.z;
    }
  };
  const TallReduction reduction = ReduceRows(points, 3, fill);
  double columns[3][3] = {};
  for (int j = 0; j < 3; ++j)
    for (int i = 0; i <= j; ++i) columns[j][i] = reduction.R(i, j);
  return SvdOfColumns(columns);
}

}  // namespace

PrincipalDirection FindPrincipalDirection(PointBlocks& points, Extent extent) {
  PrincipalDirection found;
  Moments moments = MomentsOf(points);
  if (!(moments.rawTrace >= kSafeSmall && moments.rawTrace <= kSafeLarge)) {
    if (!points.FitScale()) return found;
    moments = MomentsOf(points);
  }
  found.finite = true;
  found.mean = moments.mean;
  if (moments.rawTrace == 0.0) return found;

  const double trace = moments.scatter.Trace();
  const EigenDirection eigen = ExtremeEigenDirection(moments.scatter, extent);
  if (eigen.separation * trace > kClearSeparation * moments.rawTrace) {
    found.direction = eigen.direction;
    // For a plane any bound from below will do: nothing reads it but the test for coinciding points.
    found.largestSingular = std::sqrt(extent == Extent::largest ? eigen.value : trace / 3.0) / points.Scale();
    return found;
  }
  const SmallSvd<3> svd = SvdAbout(found.mean, points);
  found.direction = LoadVec3(svd.axis[extent == Extent::largest ? 0 : 2]);
  found.largestSingular = svd.value[0] / points.Scale();
  return found;
}

}  // namespace nu::engine::points
