// One more point adds its rows to J. In the coordinates along the axes of V the factor R is the diagonal S; rotations
// take the new rows into it (G. H. Golub, C. F. Van Loan, Matrix Computations, 4th ed., 6.5.4), and the last diagonal
// element that they leave is the reciprocal of the uncertainty along the weakest axis, which is last.

#include "nu/engine/association/explain.h"

#include <algorithm>
#include <cmath>

#include "nu/engine/association/feature_kernels.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/points/coincidence.h"
#include "nu/engine/points/principal_direction.h"
#include "nu/foundation/constants.h"

namespace nu::engine::association {
namespace {

// Places on a feature: u and v run from 0 to 1 over the measured extent, and all around what is round.
class ProbingSurface {
 public:
  ProbingSurface(const Feature& feature, const Coverage& coverage) : m_feature(feature), m_coverage(coverage) {}

  Vec3 At(double u, double v) const {
    const AxisFrame& f = m_feature.frame;
    const Vec3 q = LocalAt(u, v);
    return f.origin + (q.x * f.x + (q.y * f.y + q.z * f.z));
  }

 private:
  static double Between(double low, double high, double part) { return low + part * (high - low); }
  static Vec3 Around(double radius, double u, double z) {
    const SineCosine angle = SinCos(2.0 * Nu_PI * u);
    return {radius * angle.cosine, radius * angle.sine, z};
  }

  Vec3 LocalAt(double u, double v) const {
    const double* size = m_feature.size;
    const Vec3& low = m_coverage.low;
    const Vec3& high = m_coverage.high;
    switch (m_feature.kind) {
      case FeatureKind::lineInPlane:
        return {Between(low.x, high.x, u), 0.0, 0.0};
      case FeatureKind::line:
        return {0.0, 0.0, Between(low.z, high.z, u)};
      case FeatureKind::plane:
        return {Between(low.x, high.x, u), Between(low.y, high.y, v), 0.0};
      case FeatureKind::ellipse: {
        const Vec3 unit = Around(1.0, u, 0.0);
        return {size[0] * unit.x, size[1] * unit.y, 0.0};
      }
      case FeatureKind::hyperbola: {
        const double y = Between(low.y, high.y, u);
        const double x = size[0] * Hypot(1.0, y / size[1]);
        return {low.x < 0.0 && (v < 0.5 || high.x < 0.0) ? -x : x, y, 0.0};
      }
      case FeatureKind::parabola: {
        const double y = Between(low.y, high.y, u);
        return {y * y / (4.0 * size[0]), y, 0.0};
      }
      case FeatureKind::sphere: {
        const double along = 2.0 * v - 1.0;
        return Around(size[0] * std::sqrt(1.0 - along * along), u, size[0] * along);
      }
      case FeatureKind::cylinder:
        return Around(size[0], u, Between(low.z, high.z, v));
      case FeatureKind::cone: {
        const double z = Between(low.z, high.z, v);
        return Around(size[0] + z * Tan(size[1]), u, z);
      }
      case FeatureKind::torus: {
        const SineCosine angle = SinCos(2.0 * Nu_PI * v);
        return Around(size[0] + size[1] * angle.cosine, u, size[1] * angle.sine);
      }
      default:
        return Around(size[0], u, 0.0);
    }
  }

  const Feature& m_feature;
  const Coverage& m_coverage;
};

// What a point at a place gives to the weakest direction: the reciprocal of the uncertainty that is left. Where more
// than one direction is undetermined, and stays so, the part of its rows along these.
double GainAt(const Feature& feature, const Covariance& c, const Vec3& place) {
  double residual[kMostResiduals];
  double row[kMostResiduals][kUnknowns];
  const int rows = ResidualsOf(feature, place, residual, row);
  double factor[kUnknowns][kUnknowns] = {};
  for (int k = 0; k < c.unknowns; ++k) factor[k][k] = c.singular[k];
  double undetermined = 0.0;
  for (int i = 0; i < rows; ++i) {
    double a[kUnknowns] = {};
    for (int k = 0; k < c.unknowns; ++k)
      for (int j = 0; j < c.unknowns; ++j) a[k] += c.axis[k][j] * row[i][c.unknown[j]] * c.scale[j];
    for (int k = c.unknowns - c.undetermined; k < c.unknowns; ++k) undetermined += a[k] * a[k];
    for (int k = 0; k < c.unknowns; ++k) {
      const double norm = std::sqrt(factor[k][k] * factor[k][k] + a[k] * a[k]);
      if (!(norm > 0.0)) continue;
      const double cosine = factor[k][k] / norm;
      const double sine = a[k] / norm;
      for (int j = k; j < c.unknowns; ++j) {
        const double above = factor[k][j];
        factor[k][j] = cosine * above + sine * a[j];
        a[j] = cosine * a[j] - sine * above;
      }
    }
  }
  return c.undetermined > 1 ? std::sqrt(undetermined) : std::fabs(factor[c.unknowns - 1][c.unknowns - 1]);
}

// The range of projections of the points from a mean.
struct Span {
  double low = kInfinity;
  double high = -kInfinity;

  void Add(double value) {
    low = std::min(low, value);
    high = std::max(high, value);
  }
  double Width() const { return high > low ? high - low : 0.0; }
};

// Of a circle that is seen as an arc with this extent along and across: beyond half of a turn the first is the
// diameter.
double ArcOf(double length, double width) {
  if (!(length > 0.0)) return 0.0;
  const double ratio = std::min(width / length, 1.0);
  return 180.0 / Nu_PI * (ratio <= 0.5 ? 4.0 * Atan(2.0 * ratio) : 2.0 * Acos(1.0 - 2.0 * ratio));
}

std::size_t CountDistinct(PointView points, double coincident) {
  const double* kept[PointsSummary::kMostDistinct];
  std::size_t count = 0;
  for (std::size_t i = 0; i < points.Size() && count < PointsSummary::kMostDistinct; ++i) {
    const double* p = points[i];
    const bool isKnown = std::any_of(kept, kept + count, [&](const double* q) { return Coincide(p, q, coincident); });
    if (!isKnown) kept[count++] = p;
  }
  return count;
}

}  // namespace

WeakDirection WeakestDirection(const Covariance& c) {
  WeakDirection weak;
  if (c.unknowns == 0) return weak;
  const double(&axis)[kUnknowns] = c.axis[c.unknowns - 1];
  int main = 0;
  for (int j = 1; j < c.unknowns; ++j)
    if (std::fabs(axis[j]) > std::fabs(axis[main])) main = j;
  for (int j = 0; j < c.unknowns; ++j) weak.share[c.unknown[j]] = axis[main] < 0.0 ? -axis[j] : axis[j];
  weak.main = c.unknown[main];
  weak.uncertainty = 1.0 / c.singular[c.unknowns - 1];
  weak.undetermined = c.undetermined;
  return weak;
}

// A grid finds the hill, halved steps its top. Closed curves take any u, so that the search does not stop at 0.
ProbingPlace BestProbingPlace(const Feature& feature, const Covariance& covariance, const Coverage& coverage) {
  constexpr int kAlongU = 72;
  constexpr int kAlongV = 24;
  constexpr int kHalvings = 5;  // down to a two-thousandth of the extent: a probe is not placed more closely
  constexpr double kWorthwhile = 1.0 + 0x1p-20;
  ProbingPlace best;
  if (covariance.unknowns == 0 || !covariance.finite) return best;
  const ProbingSurface surface(feature, coverage);
  double top = (covariance.undetermined > 0 ? 0.0 : covariance.singular[covariance.unknowns - 1]) * kWorthwhile;
  double bestU = 0.0, bestV = 0.0;
  const auto attempt = [&](double u, double v) {
    const Vec3 place = surface.At(u, v);
    const double gain = GainAt(feature, covariance, place);
    if (!(gain > top)) return false;
    top = gain;
    bestU = u;
    bestV = v;
    best.place = place;
    return best.found = true;
  };
  for (int i = 0; i <= kAlongU; ++i)
    for (int j = 0; j <= kAlongV; ++j) attempt(static_cast<double>(i) / kAlongU, static_cast<double>(j) / kAlongV);
  double step = 0.5 / kAlongU;
  for (int halving = 0; best.found && halving < kHalvings; ++halving, step *= 0.5) {
    const double u = bestU, v = bestV;
    for (const double du : {-step, 0.0, step})
      for (const double dv : {-step, 0.0, step}) attempt(std::clamp(u + du, 0.0, 1.0), std::clamp(v + dv, 0.0, 1.0));
  }
  best.uncertainty = covariance.undetermined > 1 ? kInfinity : 1.0 / top;
  return best;
}

PointsSummary SummaryOf(PointView points, double coincident) {
  PointsSummary summary;
  summary.count = points.Size();
  while (summary.nonFinite < summary.count && IsFinite(LoadVec3(points[summary.nonFinite]))) ++summary.nonFinite;
  summary.finite = summary.nonFinite == summary.count;
  if (!summary.finite || summary.count == 0) return summary;
  summary.distinct = CountDistinct(points, coincident);

  PointBlocks blocks(points, LoadVec3(points[0]));
  const PrincipalDirection longest = FindPrincipalDirection(blocks, Extent::largest);
  const PrincipalDirection thinnest = FindPrincipalDirection(blocks, Extent::smallest);
  const Vec3 across = Cross(thinnest.direction, longest.direction);
  Span along[3];
  double square = 0.0;
  blocks.ForEachPoint([&](const Vec3& p) {
    const Vec3 q = p - longest.mean;
    const Vec3 off = Rejection(q, longest.direction);
    along[0].Add(Dot(q, longest.direction));
    along[1].Add(Dot(q, across));
    along[2].Add(Dot(q, thinnest.direction));
    square = std::max(square, Dot(off, off));
  });
  summary.length = along[0].Width() / blocks.Scale();
  summary.width = along[1].Width() / blocks.Scale();
  summary.thickness = along[2].Width() / blocks.Scale();
  summary.fromLine = std::sqrt(square) / blocks.Scale();
  summary.arc = ArcOf(summary.length, summary.width);
  return summary;
}

}  // namespace nu::engine::association
