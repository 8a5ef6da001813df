#include "nu/engine/association/covariance.h"

#include <algorithm>
#include <cmath>

#include "nu/engine/association/feature_kernels.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/linear/small_svd.h"
#include "nu/engine/linear/tall_qr.h"
#include "nu/engine/points/mean.h"

namespace nu::engine::association {
namespace {

// Rounding errors of the coordinates reach the entries of J, and those of the reduction its singular values: what is
// not above so many roundings of the largest one has no correct digit.
constexpr double kUndetermined = 64.0 * kEpsilon;

// A unit vector whose part along an undetermined direction is below this has none there but rounding.
constexpr double kNoPart = 0x1p-40;

// The weighted rows of all points, reduced chunk by chunk, and what else is summed on the way.
class JacobianReduction {
 public:
  JacobianReduction(const Feature& feature, const double* weights, Covariance& result)
      : m_feature(feature), m_weights(weights), m_result(result), m_reduction(std::max(result.unknowns, 1)) {
    for (int k = 0; k < result.unknowns; ++k) m_column[result.unknown[k]] = m_reduction.Column(k);
  }

  void Reduce(PointView points) {
    PointBlocks blocks(points, m_feature.frame.origin);
    blocks.ForEach([this](const PointBlock& block) {
      Measure(block);
      for (std::size_t begin = 0; begin < block.size; begin += TallReduction::kBlockRows)
        AddPart(block, begin, std::min<std::size_t>(begin + TallReduction::kBlockRows, block.size));
      m_first += block.size;
    });
    m_result.sumSquares = m_sumSquares.Value();
    m_result.extent = std::sqrt(m_squaredExtent);
    for (int j = 0; j < m_result.unknowns; ++j) {
      m_result.scale[j] = PerLength(m_feature.kind, m_result.unknown[j], m_result.extent);
      for (int i = 0; i <= j; ++i) m_result.factor[i][j] = m_reduction.R(i, j) * m_result.scale[j];
    }
  }

 private:
  void Measure(const PointBlock& block) {
    for (std::size_t i = 0; i < block.size; ++i) {
      const double square = block.x[i] * block.x[i] + block.y[i] * block.y[i] + block.z[i] * block.z[i];
      m_squaredExtent = square > m_squaredExtent ? square : m_squaredExtent;
    }
  }

  void AddPart(const PointBlock& block, std::size_t begin, std::size_t end) {
    const std::size_t rows = end - begin;
    for (int which = 0; which < ResidualsPerPoint(m_feature.kind); ++which) {
      alignas(64) double residual[TallReduction::kBlockRows];
      FindRows(block, begin, end, m_feature, which, m_column, residual);
      if (m_weights != nullptr) Weigh(m_weights + m_first + begin, rows, residual);
      double sum = 0.0;
      for (std::size_t i = 0; i < rows; ++i) sum += residual[i] * residual[i];
      m_sumSquares.Add(sum);
      if (m_weights == nullptr) m_result.residuals += rows;
      if (m_result.unknowns > 0) m_reduction.AbsorbBlock(static_cast<int>(rows));
    }
  }

  void Weigh(const double* weights, std::size_t rows, double* residual) {
    for (std::size_t i = 0; i < rows; ++i) {
      const double root = std::sqrt(weights[i]);
      if (root != 0.0) ++m_result.residuals;
      residual[i] = root != 0.0 ? root * residual[i] : 0.0;
      for (double* column : m_column)
        if (column != nullptr) column[i] = root != 0.0 ? root * column[i] : 0.0;
    }
  }

  const Feature& m_feature;
  const double* m_weights;
  Covariance& m_result;
  TallReduction m_reduction;
  double* m_column[kUnknowns] = {};
  CompensatedSum m_sumSquares;
  double m_squaredExtent = 0.0;
  std::size_t m_first = 0;  // the index of the first point of the block
};

template<int N>
void DecomposeFactor(Covariance& c) {
  double column[N][N];
  for (int j = 0; j < N; ++j)
    for (int i = 0; i < N; ++i) column[j][i] = c.factor[i][j];
  const SmallSvd<N> svd = SvdOfColumns(column);
  for (int k = 0; k < N; ++k) {
    c.finite = c.finite && std::isfinite(svd.value[k]);
    c.singular[k] = svd.value[k] > kUndetermined * svd.value[0] ? svd.value[k] : 0.0;
    if (c.singular[k] == 0.0) ++c.undetermined;
    std::copy_n(svd.axis[k], N, c.axis[k]);
  }
  c.condition = c.undetermined > 0 ? kInfinity : c.singular[0] / c.singular[N - 1];
}

constexpr void (*kDecompose[])(Covariance&) = {[](Covariance&) {}, DecomposeFactor<1>, DecomposeFactor<2>,
                                               DecomposeFactor<3>, DecomposeFactor<4>, DecomposeFactor<5>,
                                               DecomposeFactor<6>, DecomposeFactor<7>, DecomposeFactor<8>};
static_assert(std::size(kDecompose) == kUnknowns + 1);

// The part of a gradient along axis k of the scaled unknowns; 0 where it is rounding of an undetermined direction.
double PartAlong(const Covariance& c, int k, const double (&scaled)[kUnknowns], double length) {
  double part = 0.0;
  for (int j = 0; j < c.unknowns; ++j) part += c.axis[k][j] * scaled[j];
  return c.singular[k] == 0.0 && std::fabs(part) <= kNoPart * length ? 0.0 : part;
}

}  // namespace

Feature CentredOn(PointView points, const Feature& feature) {
  const Vec3 mean = feature.frame.Local(MeanOf(points));
  Feature centred = feature;
  AxisFrame& frame = centred.frame;
  switch (feature.kind) {
    case FeatureKind::lineInPlane:
      frame.origin = frame.origin + mean.x * frame.x;
      break;
    case FeatureKind::plane:
      frame.origin = frame.origin + mean.x * frame.x + mean.y * frame.y;
      break;
    case FeatureKind::cone:
      centred.size[0] += mean.z * Tan(feature.size[1]);
      [[fallthrough]];
    case FeatureKind::line:
    case FeatureKind::cylinder:
      frame.origin = frame.origin + mean.z * frame.z;
      break;
    default:
      break;
  }
  return centred;
}

Covariance CovarianceOf(PointView points, const double* weights, const Feature& feature, UnknownMask free) {
  Covariance result;
  result.unknowns = ListUnknowns(free & UnknownsOf(feature.kind), result.unknown);
  JacobianReduction(feature, weights, result).Reduce(points);
  result.finite = std::isfinite(result.sumSquares) && std::isfinite(result.extent);
  kDecompose[result.unknowns](result);
  result.degreesOfFreedom = static_cast<std::ptrdiff_t>(result.residuals) - result.unknowns;
  const bool isSpread = result.degreesOfFreedom > 0;
  result.sigma = isSpread ? std::sqrt(result.sumSquares / static_cast<double>(result.degreesOfFreedom)) : kInfinity;
  return result;
}

double UncertaintyPerUnit(const Covariance& c, const Gradient& gradient) {
  if (!c.finite) return kQuietNaN;
  double scaled[kUnknowns];
  double length = 0.0;
  for (int j = 0; j < c.unknowns; ++j) {
    scaled[j] = gradient.by[c.unknown[j]] * c.scale[j];
    length = Hypot(length, scaled[j]);
  }
  double uncertainty = 0.0;
  for (int k = 0; k < c.unknowns; ++k) {
    const double part = PartAlong(c, k, scaled, length);
    if (part != 0.0) uncertainty = Hypot(uncertainty, part / c.singular[k]);
  }
  return uncertainty;
}

double StandardUncertainty(const Covariance& c, const Gradient& gradient) {
  const double perUnit = UncertaintyPerUnit(c, gradient);
  return perUnit == 0.0 ? 0.0 : c.sigma * perUnit;
}

void FillCovariance(const Covariance& c, double sigma, double (&matrix)[kUnknowns][kUnknowns]) {
  double part[kUnknowns][kUnknowns];
  for (int i = 0; i < c.unknowns; ++i) {
    double scaled[kUnknowns] = {};
    scaled[i] = c.scale[i];
    for (int k = 0; k < c.unknowns; ++k) {
      const double along = PartAlong(c, k, scaled, c.scale[i]);
      part[i][k] = along != 0.0 ? sigma * along / c.singular[k] : 0.0;
    }
  }
  for (int i = 0; i < c.unknowns; ++i) {
    for (int j = 0; j <= i; ++j) {
      double sum = 0.0;
      for (int k = 0; k < c.unknowns; ++k)
        if (part[i][k] != 0.0 && part[j][k] != 0.0) sum += part[i][k] * part[j][k];
      matrix[i][j] = matrix[j][i] = sum;
    }
  }
}

Gradient UnknownGradient(Unknown unknown, double factor) {
  Gradient gradient;
  gradient.by[unknown] = factor;
  return gradient;
}

Gradient AxisPointGradient(double height, double towardsX, double towardsY) {
  Gradient gradient;
  gradient.by[kShiftX] = towardsX;
  gradient.by[kShiftY] = towardsY;
  gradient.by[kTiltX] = height * towardsX;
  gradient.by[kTiltY] = height * towardsY;
  return gradient;
}

Gradient SurfaceGradient(const Feature& feature, const Vec3& place) {
  Gradient gradient;
  DeviationOf(feature, place, gradient.by);
  for (double& derivative : gradient.by) derivative = -derivative;
  return gradient;
}

void FindChange(const Feature& from, const Feature& to, double (&change)[kUnknowns]) {
  std::fill_n(change, kUnknowns, 0.0);
  const AxisFrame& frame = from.frame;
  const Vec3 o = frame.Local(to.frame.origin);
  const Vec3 x{Dot(to.frame.x, frame.x), Dot(to.frame.x, frame.y), Dot(to.frame.x, frame.z)};
  const Vec3 z{Dot(to.frame.z, frame.x), Dot(to.frame.z, frame.y), Dot(to.frame.z, frame.z)};
  const double along = -o.z / z.z;  // to the point of an axis beside the first origin
  const bool slides =
      from.kind == FeatureKind::line || from.kind == FeatureKind::cylinder || from.kind == FeatureKind::cone;
  change[kShiftX] = slides ? o.x + along * z.x : o.x;
  change[kShiftY] = slides ? o.y + along * z.y : o.y;
  change[kShiftZ] = o.z;
  change[kTiltX] = z.x / z.z;
  change[kTiltY] = z.y / z.z;
  change[kTurn] = from.kind == FeatureKind::parabola ? Atan2(x.y, x.x) : Atan(x.y / x.x);
  change[kSize0] = to.size[0] - from.size[0];
  change[kSize1] = to.size[1] - from.size[1];
  if (from.kind == FeatureKind::plane) change[kShiftZ] = o.z + (o.x * z.x + o.y * z.y) / z.z;
  if (from.kind == FeatureKind::lineInPlane) change[kShiftY] = o.y - o.x * x.y / x.x;
  if (from.kind == FeatureKind::cone) change[kSize0] += along * Tan(to.size[1]);
  for (int k = 0; k < kUnknowns; ++k)
    if (!Contains(UnknownsOf(from.kind), k)) change[k] = 0.0;
}

}  // namespace nu::engine::association
