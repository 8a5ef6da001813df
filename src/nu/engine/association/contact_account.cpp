// The multipliers are the weights of the point nearest to zero in the convex hull of the gradients times their sides:
// with g_i these vectors and rows of 1 below them, the non-negative least-squares solution of sum l_i (g_i, 1) = (0, 1)
// is a multiple of them, as |G l|^2 + (1 - sum l)^2 has its least value over the multiples of l at
// |G l|^2 / (|G l|^2 + (sum l)^2). The hull is grown by the vector that is farthest beyond the plane across the nearest
// point, until none is beyond it (P. Wolfe, Finding the nearest point in a polytope, Mathematical Programming 11,
// 1976).

#include "nu/engine/association/contact_account.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "nu/engine/association/feature_kernels.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/linear/nnls.h"

namespace nu::engine::association {
namespace {

// The parameters of a feature are rounded once more when it is stored, and the points of a solver meet its boundary
// within some roundings of the coordinates.
constexpr double kTouchRoundings = 64.0;

// The tolerance is for the rounding of far origins and apexes, and may take in points that do not hold the feature.
// Those within this part of it, or twice as much and so on, hold it if they balance.
constexpr double kClosest = 0x1p-4;

// Gradients are of the size 1 and their sums are rounded.
constexpr double kBalanced = 16.0 * kEpsilon;

// A vector that comes nearer to zero by a smaller part adds rounding.
constexpr double kNearer = 0x1p-30;

constexpr int kMostRounds = 64;
constexpr int kMostActive = kUnknowns + 2;

// The unknowns, and the middle of a zone that none of them shifts: that between two nappes.
constexpr int kComponents = kUnknowns + 1;
constexpr int kMiddle = kUnknowns;

struct Extremes {
  double high = -kInfinity;
  double low = kInfinity;
  double extent = 0.0;  // of the points from the origin of the frame
  bool finite = true;
};

Extremes ExtremesOf(PointBlocks& blocks, const Feature& feature) {
  Extremes found;
  double square = 0.0;
  blocks.ForEach([&](const PointBlock& block) {
    alignas(64) double each[kBlockPoints];
    double low, high;
    FindDeviations(block, feature, each, low, high);
    found.low = std::min(found.low, low);
    found.high = std::max(found.high, high);
    found.finite = found.finite && std::all_of(each, each + block.size, [](double e) { return std::isfinite(e); });
    for (std::size_t i = 0; i < block.size; ++i)
      square = std::max(square, block.x[i] * block.x[i] + block.y[i] * block.y[i] + block.z[i] * block.z[i]);
  });
  found.extent = std::sqrt(square);
  return found;
}

struct Touching {
  std::size_t index;
  double side;
  double slack;  // off the end of the deviations
};
constexpr std::size_t kNoPoint = std::numeric_limits<std::size_t>::max();

class HullOfGradients {
 public:
  HullOfGradients(PointView points, const Feature& feature, UnknownMask balanced, double extent)
      : m_points(points),
        m_feature(feature),
        m_mask(balanced),
        m_hasMiddle(feature.kind == FeatureKind::cone && feature.bothNappes) {
    for (int k = 0; k < kUnknowns; ++k) m_scale[k] = PerLength(feature.kind, k, extent);
    // The first vector is the one farthest against a direction that singles out no unknown.
    for (int k = 0; k < kComponents; ++k) m_nearest[k] = 1.0 + 0.125 * k;
  }

  // A vector of the hull that is of no point.
  void AddPull(const double (&gradient)[kUnknowns]) {
    Active& pull = m_active[m_count++];
    pull.point = {kNoPoint, 0.0, 0.0};
    for (int k = 0; k < kUnknowns; ++k)
      m_nearest[k] = pull.gradient[k] = Contains(m_mask, k) ? m_scale[k] * gradient[k] : 0.0;
    m_nearest[kMiddle] = 0.0;
  }

  void Solve(const std::vector<Touching>& touching) {
    double square = kInfinity;
    for (int round = 0; round < kMostRounds; ++round) {
      const Active next = FarthestAgainst(touching);
      const double reach = Dot(m_nearest, next.gradient);
      if (round > 0 && !(square - reach > kNearer * square)) return;
      m_active[m_count++] = next;
      if (!Weigh()) return;
      square = Dot(m_nearest, m_nearest);
      if (!(square > kBalanced * kBalanced) || m_count == kMostActive) return;
    }
  }

  bool IsBalanced() const { return m_count > 0 && Dot(m_nearest, m_nearest) <= kBalanced * kBalanced; }

  void Report(ContactAccount& account) {
    std::sort(m_active, m_active + m_count,
              [](const Active& a, const Active& b) { return a.point.index < b.point.index; });
    double sum = 0.0;
    for (int i = 0; i < m_count; ++i) {
      if (m_active[i].point.index == kNoPoint) continue;
      account.contact[account.count++] = {m_active[i].point.index, m_active[i].point.side, m_active[i].multiplier};
      sum += m_active[i].multiplier;
    }
    for (int i = 0; account.count < m_count && i < account.count; ++i) account.contact[i].multiplier /= sum;
    account.holding = account.count;
    account.balance = std::sqrt(Dot(m_nearest, m_nearest));
  }

 private:
  struct Active {
    Touching point{};
    double gradient[kComponents] = {};
    double multiplier = 0.0;
  };

  static double Dot(const double (&a)[kComponents], const double (&b)[kComponents]) {
    double sum = 0.0;
    for (int k = 0; k < kComponents; ++k) sum += a[k] * b[k];
    return sum;
  }

  Active VectorOf(const Touching& point) const {
    Active vector{point};
    double gradient[kUnknowns];
    DeviationOf(m_feature, LoadVec3(m_points[point.index]), gradient);
    for (int k = 0; k < kUnknowns; ++k)
      vector.gradient[k] = Contains(m_mask, k) ? point.side * m_scale[k] * gradient[k] : 0.0;
    if (m_hasMiddle) vector.gradient[kMiddle] = point.side;
    return vector;
  }

  // Of equal ones the first in the order of coordinates, of identical points the first.
  Active FarthestAgainst(const std::vector<Touching>& touching) const {
    Active best;
    double least = kInfinity;
    for (const Touching& point : touching) {
      const Active vector = VectorOf(point);
      const double reach = Dot(m_nearest, vector.gradient);
      const double* p = m_points[point.index];
      const double* q = m_points[best.point.index];
      if (!(reach < least) && !(reach == least && std::lexicographical_compare(p, p + 3, q, q + 3))) continue;
      least = reach;
      best = vector;
    }
    return best;
  }

  // Finds the multipliers of the active vectors and the nearest point, and drops what has no multiplier.
  bool Weigh() {
    TallReduction reduction(m_count + 1, kComponents + 1);
    for (int j = 0; j < m_count; ++j) {
      std::copy_n(m_active[j].gradient, kComponents, reduction.Column(j));
      reduction.Column(j)[kComponents] = 1.0;
    }
    std::fill_n(reduction.Column(m_count), kComponents, 0.0);
    reduction.Column(m_count)[kComponents] = 1.0;
    reduction.AbsorbBlock(kComponents + 1);
    double x[kMostActive];
    if (!SolveNonNegative(reduction, kEpsilon, x)) return false;
    double sum = 0.0;
    for (int j = 0; j < m_count; ++j) sum += x[j];
    if (!(sum > 0.0)) return false;
    std::fill_n(m_nearest, kComponents, 0.0);
    int kept = 0;
    for (int j = 0; j < m_count; ++j) {
      if (!(x[j] > 0.0)) continue;
      m_active[kept] = m_active[j];
      m_active[kept].multiplier = x[j] / sum;
      for (int k = 0; k < kComponents; ++k) m_nearest[k] += m_active[kept].multiplier * m_active[kept].gradient[k];
      ++kept;
    }
    m_count = kept;
    return true;
  }

  PointView m_points;
  const Feature& m_feature;
  UnknownMask m_mask;
  bool m_hasMiddle;
  double m_scale[kUnknowns];
  double m_nearest[kComponents];
  int m_count = 0;
  Active m_active[kMostActive];
};

std::vector<Touching> TouchingPoints(PointBlocks& blocks, const Feature& feature, const Extremes& extremes,
                                     double outer, double inner) {
  std::vector<Touching> touching;
  std::size_t begin = 0;
  blocks.ForEach([&](const PointBlock& block) {
    alignas(64) double each[kBlockPoints];
    double low, high;
    FindDeviations(block, feature, each, low, high);
    for (std::size_t i = 0; (high >= outer || low <= inner) && i < block.size; ++i) {
      if (each[i] >= outer) touching.push_back({begin + i, 1.0, extremes.high - each[i]});
      if (each[i] <= inner) touching.push_back({begin + i, -1.0, each[i] - extremes.low});
    }
    begin += block.size;
  });
  return touching;
}

std::vector<Touching> Within(std::vector<Touching> touching, double most) {
  std::erase_if(touching, [&](const Touching& point) { return !(point.slack <= most); });
  return touching;
}

void AddFurther(PointView points, const std::vector<Touching>& touching, ContactAccount& account) {
  for (const Touching& point : touching) {
    if (account.count == ContactAccount::kMostContacts) return;
    const double* p = points[point.index];
    const bool isListed = std::any_of(account.contact, account.contact + account.count, [&](const ContactPoint& c) {
      return c.side == point.side && std::equal(p, p + 3, points[c.index]);
    });
    if (!isListed) account.contact[account.count++] = {point.index, point.side, 0.0};
  }
}

ContactAccount AccountOf(const Feature& feature, const Extremes& extremes, double tolerance) {
  ContactAccount account;
  const Vec3& o = feature.frame.origin;
  double size = extremes.extent + std::fabs(feature.size[0]) + std::sqrt(Dot(o, o));
  if (feature.kind == FeatureKind::cone) size += std::fabs(feature.size[0] / Tan(feature.size[1]));  // to the apex
  account.tolerance = tolerance > 0.0 ? tolerance : kTouchRoundings * kEpsilon * size;
  account.finite = extremes.finite && std::isfinite(size);
  return account;
}

// Of half of the mean square of the deviations, over their mean, which makes it of the size 1.
void FindPull(PointView points, const double* weights, const Feature& feature, double (&pull)[kUnknowns]) {
  double sum = 0.0;
  for (std::size_t i = 0; i < points.Size(); ++i) {
    double gradient[kUnknowns];
    const double weight = weights == nullptr ? 1.0 : weights[i];
    const double deviation = weight * DeviationOf(feature, LoadVec3(points[i]), gradient);
    sum += std::fabs(deviation);
    for (int k = 0; k < kUnknowns; ++k) pull[k] += deviation * gradient[k];
  }
  for (double& component : pull) component = sum > 0.0 ? component / sum : 0.0;
}

}  // namespace

ContactAccount FindContacts(PointView points, const Feature& feature, ContactCriterion criterion, UnknownMask free,
                            double tolerance) {
  PointBlocks blocks(points, feature.frame.origin);
  const Extremes extremes = ExtremesOf(blocks, feature);
  ContactAccount account = AccountOf(feature, extremes, tolerance);
  if (!account.finite) return account;

  const Unknown offset = OffsetOf(feature.kind);
  const bool isZone = criterion == ContactCriterion::zone || criterion == ContactCriterion::oneSidedZone;
  const bool isCentred = criterion == ContactCriterion::zone && !Contains(free, offset);
  const double level = std::max(extremes.high, -extremes.low);
  double outer = extremes.high - account.tolerance;
  double inner = extremes.low + account.tolerance;
  // Where the zone cannot be shifted to its middle, the larger of the two deviations counts.
  if (isCentred && outer < level - 2.0 * account.tolerance) outer = kInfinity;
  if (isCentred && -inner < level - 2.0 * account.tolerance) inner = -kInfinity;
  // Nor can a zone on one side, which need not reach down to its feature then.
  const bool isOneSided = criterion == ContactCriterion::oneSidedZone && !Contains(free, offset);
  if (isOneSided && extremes.low > account.tolerance) inner = -kInfinity;
  if (isOneSided && extremes.high < -account.tolerance) outer = kInfinity;
  if (criterion == ContactCriterion::circumscribed || ResidualsPerPoint(feature.kind) > 1) inner = -kInfinity;
  if (criterion == ContactCriterion::inscribed) outer = kInfinity;
  const std::vector<Touching> touching = TouchingPoints(blocks, feature, extremes, outer, inner);
  account.touching = touching.size();
  if (touching.empty()) return account;

  UnknownMask balanced = free & UnknownsOf(feature.kind);
  if (!isZone && offset != kUnknowns) balanced &= ~(1U << offset);
  for (double part = kClosest; part <= 1.0; part *= 2.0) {
    HullOfGradients hull(points, feature, balanced, extremes.extent);
    hull.Solve(Within(touching, part * account.tolerance));
    if (part < 1.0 && !hull.IsBalanced()) continue;
    hull.Report(account);
    break;
  }
  AddFurther(points, touching, account);
  return account;
}

ContactAccount FindContactsOfSquares(PointView points, const double* weights, const Feature& feature, bool positive,
                                     UnknownMask free) {
  PointBlocks blocks(points, feature.frame.origin);
  const Extremes extremes = ExtremesOf(blocks, feature);
  ContactAccount account = AccountOf(feature, extremes, 0.0);
  if (!account.finite) return account;
  const double outer = positive ? kInfinity : -account.tolerance;
  const double inner = positive ? account.tolerance : -kInfinity;
  std::vector<Touching> touching = TouchingPoints(blocks, feature, extremes, outer, inner);
  std::erase_if(touching, [&](const Touching& point) { return weights != nullptr && !(weights[point.index] > 0.0); });
  account.touching = touching.size();
  if (touching.empty()) return account;
  HullOfGradients hull(points, feature, free & UnknownsOf(feature.kind), extremes.extent);
  double pull[kUnknowns] = {};
  FindPull(points, weights, feature, pull);
  hull.AddPull(pull);
  hull.Solve(touching);
  hull.Report(account);
  AddFurther(points, touching, account);
  return account;
}

}  // namespace nu::engine::association
