// The deviations of the contacts are functions f_i of the unknowns u, with their sides as signs, so that the value of
// the feature at u, half of its zone or its radius, is at least each f_i(u). The multipliers are l_i > 0 with sum 1,
// and g_i and H_i the first and second derivatives. Any weights m_i >= 0 with sum 1 give a lower bound of the value,
//
//   value(u) >= sum m_i f_i(u),
//
// and a good choice of them for each u is a proof that the feature at 0, whose value is v, is next to the best. Let
// g = sum l_i g_i, which vanishes but for rounding (the condition of Karush, Kuhn and Tucker), H = sum l_i H_i, s_i =
// v - f_i(0) the small slack of a contact, s its weighted sum and S the largest.
//
// Growth. The part of sum l_i g_i u that is positive is half of sum l_i |g_i u| + g u, so that some contact j has
//
//   g_j u >= (|A u| - |g u|) / 2,  A: the matrix with the rows l_i g_i.
//
// With its singular values split between the r-th, sigma, and the rest, u = a + b, |A u| >= sigma |a|: the value grows
// linearly with a (strong uniqueness, the Haar condition: M. R. Osborne, G. A. Watson, Computer Journal 12, 1969), and
// along b, where fewer contacts than unknowns + 1 resist, it can grow by curvature alone (A. Ben-Tal, J. Zowe,
// Mathematical Programming 24, 1982).
//
// Neighbourhood. For |u| <= rho let K bound the norms of all second derivatives of all f_i, and D the change of their
// weighted sum from H; both are found by interval arithmetic over a box that holds the ball. The weights
// (1 - t) l + t e_j give, with k the least eigenvalue of H across b,
//
//   v - value(u) <= (1 - t) s + t S
//                   - |a| (t sigma / 2 - |g_a| - rho ((1 - t) (|H_ab| + (|H_aa| + D) / 2) + t K / 2))
//                   + |b| |g_b| - |b|^2 ((1 - t) (k - D) - t K) / 2
//
// whose largest value for |a|, |b| <= rho is the gap. Every split r and a few t are tried; each is a proof.
//
// Some bounds hold for all features:
// - A zone is not below 0.
// - The distance from a centre, or from an axis of a fixed direction, is a convex function, so that g alone counts, and
//   what is better by anything is not farther away than 2 v (the enclosing circle and sphere).
// - A plane, or a line in a plane, of slope w has f_i = (linear function of u) / sqrt(1 + w^2), which is not below
//   v - S for growth of at least v per unit of w.
//
// Distances and derivatives at the feature are computed with some thirty digits; norms, singular values and eigenvalues
// with sixteen and a margin for their rounding.

#include "nu/engine/association/certificate.h"

#include <algorithm>
#include <vector>

#include "nu/engine/association/certificate_distance.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/linear/eigen_symmetric.h"
#include "nu/engine/linear/svd.h"

namespace nu::engine::association {
namespace {

constexpr int kMost = Jet<double>::kMost;
// An unknown of its own: the middle of the zone between two nappes, which no size of the cone shifts.
constexpr int kMiddle = kUnknowns;

constexpr double kRounding = 256.0 * DBL_EPSILON;  // of norms and decompositions of the few contacts, relative
constexpr double kSumTolerance = 1e-6;             // rounding stays far below, another scale far above
constexpr double kLeastRadius = 64.0;              // losses: in a smaller neighbourhood any feature is next to the best
constexpr std::size_t kMostSpread = 64;            // contacts, beyond which those without a multiplier are left aside
constexpr double kFlat = 1e-6;  // curvature that counts as none, relative: the rounding of the feature makes less

double NormOf(const double* values, int count) {
  double sum = 0.0;
  for (int k = 0; k < count; ++k) sum += values[k] * values[k];
  return std::sqrt(sum);
}

// The positive part; NaN stays NaN.
double Positive(double a) {
  return a <= 0.0 ? 0.0 : a;
}

struct Matrix {
  double Norm(int rowBegin, int rowEnd, int columnBegin, int columnEnd) const {
    double sum = 0.0;
    for (int i = rowBegin; i < rowEnd; ++i)
      for (int j = columnBegin; j < columnEnd; ++j) sum += at[i][j] * at[i][j];
    return std::sqrt(sum);
  }
  double at[kMost][kMost] = {};
};

struct Contact {
  WideVec3 local;
  double side = 1.0;
  double multiplier = 0.0;
  double slack = 0.0;
  Jet<DoubleDouble> jet;
};

// The bounds of the second derivatives over a box.
struct BoxCurvature {
  double largest = 0.0;  // K
  double change = 0.0;   // D
};

// One way to divide the moves into those that contacts resist and the others.
struct Split {
  int along = 0;  // r
  int across = 0;
  double growth = 0.0;          // sigma / 2
  double gradientAlong = 0.0;   // |g_a|
  double gradientAcross = 0.0;  // |g_b|
  double curvature = 0.0;       // k
  double coupled = 0.0;         // |H_ab|
  double stiffness = 0.0;       // |H_aa|
};

double ExtentOf(const CertificateQuestion& question) {
  double extent = 0.0;
  for (std::size_t i = 0; i < question.points.Size(); ++i) {
    const Vec3 from = LoadVec3(question.points[i]) - question.feature.frame.origin;
    const double distance = Hypot(from.x, from.y, from.z);
    if (!(distance <= extent)) extent = distance;
    if (!std::isfinite(distance)) return distance;
  }
  return extent;
}

double UnitFor(double extent) {
  return std::isnormal(extent) ? std::ldexp(1.0, std::clamp(-std::ilogb(extent), -1000, 1000)) : 1.0;
}

bool IsSupported(FeatureKind kind, ContactCriterion criterion) {
  const bool isZone = criterion == ContactCriterion::zone;
  switch (kind) {
    case FeatureKind::circle:
    case FeatureKind::sphere:
    case FeatureKind::cylinder:
      return true;
    case FeatureKind::lineInPlane:
    case FeatureKind::plane:
    case FeatureKind::cone:
      return isZone || criterion == ContactCriterion::oneSidedZone;
    case FeatureKind::line:
    case FeatureKind::circleInSpace:
      return isZone;
    case FeatureKind::torus:
      return criterion == ContactCriterion::circumscribed;
    default:
      return false;
  }
}

class Proof {
 public:
  explicit Proof(const CertificateQuestion& question)
      : m_question(question),
        m_extent(ExtentOf(question)),
        m_unit(UnitFor(m_extent)),
        m_length(m_unit * question.length),
        m_feature(question.feature, m_unit) {
    m_extent *= m_unit;
    for (int k = 0; k <= kMiddle; ++k) {
      if (IsFree(k)) m_free[m_count++] = k;
    }
  }

  // The result in the unit of the points.
  Certificate Passed() const {
    Certificate result = m_result;
    for (double* length : {&result.gap, &result.radius, &result.value, &result.excess, &result.offBoundary})
      *length /= m_unit;
    result.curvature *= m_unit;
    return result;
  }

  Certificate FailedAt(CertificateCheck check) const {
    Certificate result = Passed();
    result.failed = check;
    return result;
  }

  // The checks follow in their order; each puts its numbers into the result.

  bool IsFinite() const {
    const Feature& f = m_question.feature;
    return IsSupported(f.kind, m_question.criterion) && m_question.points.Size() > 0 && std::isfinite(m_extent) &&
           shapes::IsFinite(f.frame.x) && shapes::IsFinite(f.frame.z) && std::isfinite(f.size[0]) &&
           std::isfinite(f.size[1]) && m_question.length > 0.0 && std::isfinite(m_length);
  }

  bool IsWithinBoundary() {
    DoubleDouble smallest = DeviationOf(m_question.points[0]);
    DoubleDouble largest = smallest;
    for (std::size_t i = 1; i < m_question.points.Size(); ++i) {
      const DoubleDouble deviation = DeviationOf(m_question.points[i]);
      if (!(deviation.high - deviation.high == 0.0)) return false;
      if (deviation < smallest) smallest = deviation;
      if (largest < deviation) largest = deviation;
    }
    const DoubleDouble stated = m_feature.Size(m_question.feature.kind == FeatureKind::torus ? 1 : 0);
    switch (m_question.criterion) {
      case ContactCriterion::zone:
      case ContactCriterion::oneSidedZone:
        if (IsOneSided()) m_result.excess = std::min((-smallest).high, largest.high);
        if (IsFree(kMiddle) || IsOneSided()) m_middle = DoubleDouble{0.5} * (smallest + largest);
        largest = largest - m_middle;
        smallest = smallest - m_middle;
        m_boundary = largest < -smallest ? -smallest : largest;
        m_result.value = m_boundary.high;
        return std::fabs(m_result.excess) <= m_length;
      case ContactCriterion::circumscribed:
        m_result.excess = (largest - stated).high;
        m_boundary = stated < largest ? largest : stated;
        m_result.value = m_boundary.high;
        break;
      case ContactCriterion::inscribed:
        m_result.excess = (stated - smallest).high;
        m_boundary = -(stated < smallest ? stated : smallest);
        m_result.value = -m_boundary.high;
        break;
    }
    return m_result.excess <= m_length;
  }

  bool HasContacts() {
    for (int k = 0; k < m_question.count; ++k) {
      const ContactPoint& given = m_question.contacts[k];
      Contact contact;
      contact.local = m_feature.Local(m_question.points[given.index]);
      contact.side = SideOf(given);
      contact.multiplier = given.multiplier;
      const DoubleDouble deviation = DeviationOf(m_question.points[given.index]);
      contact.slack = (m_boundary - DoubleDouble{contact.side} * deviation).high;
      // What only touches by a coarser measure proves nothing, and is not needed.
      if (given.multiplier == 0.0 && !(contact.slack <= m_length)) continue;
      if (!(contact.slack <= m_result.offBoundary)) m_result.offBoundary = contact.slack;
      if (!(contact.slack <= m_length)) return false;
      m_contacts.push_back(contact);
    }
    return true;
  }

  bool HasMultipliers() {
    bool areValid = true;
    for (const Contact& contact : m_contacts) {
      m_result.multiplierSum += contact.multiplier;
      if (!(contact.multiplier >= 0.0)) areValid = false;
    }
    if (!areValid || !(std::fabs(m_result.multiplierSum - 1.0) <= kSumTolerance)) return false;
    for (Contact& contact : m_contacts) contact.jet = JetOf(contact, DoubleDouble{});
    SpreadMultipliers();
    std::erase_if(m_contacts, [](const Contact& contact) { return !(contact.multiplier > 0.0); });
    WeightContacts();
    return true;
  }

  bool IsGlobal() {
    const double value = m_boundary.high;
    Split whole;
    double gap = kInfinity;
    if (m_question.criterion != ContactCriterion::inscribed && value <= m_length) {
      gap = value;
    } else if (m_count == 0) {
      gap = m_largestSlack;
    } else if (MakeSplits()) {
      whole = m_splits.back();
      if (IsConvex()) gap = m_slack + 2.0 * value * m_result.balance;
      if (IsSlab() && whole.growth - m_result.balance >= value / m_extent) gap = m_largestSlack;
    }
    if (!(gap <= m_length)) return false;
    Accept(gap, kInfinity, whole);
    return true;
  }

  // The largest of some radii, by powers of 4, within which no more than rounding is lost; otherwise the largest within
  // which no more than the length is. What is lost must be little beside the radius, or the proof is none.
  bool HasNeighbourhood() {
    constexpr double kStep = 0.25;
    constexpr int kRadii = 40;
    const double rounding = m_largestSlack + 8.0 * DBL_EPSILON * m_extent;
    const double stiffness = m_turned.Norm(0, m_count, 0, m_count);
    double radius = kStep * m_extent;
    bool found = false;
    const double least = kLeastRadius * std::min(m_length, rounding);
    for (int step = 0; step < kRadii && radius >= least; ++step, radius *= kStep) {
      const BoxCurvature box = CurvatureWithin(radius);
      for (const Split& split : m_splits) {
        if (split.along > 0 && !(split.growth > 0.0)) continue;
        if (split.across > 0 && !(split.curvature >= -kFlat * stiffness)) continue;
        const double loss = LossOf(split, box, radius);
        const bool isRounding = loss <= rounding;
        if (!(loss <= std::min(m_length, radius / kLeastRadius)) || (found && !isRounding)) continue;
        Accept(loss, radius, split);
        found = true;
        if (isRounding) return true;
      }
    }
    return found;
  }

  // So far that no more than the length is lost within the least radius.
  bool IsBalanced() const { return m_result.balance * kLeastRadius <= 1.0; }

 private:
  // The deviation from the feature moved by u, or the distance where that is the radius in question.
  template<class T>
  T DeviationOf(const WideVec3& local, const T (&u)[kUnknowns + 1]) const {
    const T distance = m_feature.Distance(local, u);
    if (!IsZone()) return distance;
    if (m_feature.HasRadius()) return distance - (Constant(m_feature.Size(0) + m_middle, u[0]) + u[kSize0]);
    return distance - (Constant(m_middle, u[0]) + u[kMiddle]);
  }

  DoubleDouble DeviationOf(const double* point) const {
    const DoubleDouble none[kUnknowns + 1] = {};
    return DeviationOf(m_feature.Local(point), none);
  }

  // Only a zone has two boundaries, and distances from a line or a circle in space have one side.
  double SideOf(const ContactPoint& given) const {
    if (m_question.criterion == ContactCriterion::inscribed) return -1.0;
    const bool isOuter = m_question.criterion == ContactCriterion::circumscribed || IsDistance(m_question.feature.kind);
    return isOuter || given.side >= 0.0 ? 1.0 : -1.0;
  }

  // Angles times the extent of the points are lengths.
  template<class Number>
  Jet<Number> JetOf(const Contact& contact, Number range) const {
    Jet<Number> u[kUnknowns + 1];
    for (Jet<Number>& unknown : u) unknown = Jet<Number>(m_count);
    for (int k = 0; k < m_count; ++k) {
      const DoubleDouble perLength{PerLength(m_question.feature.kind, m_free[k], m_extent)};
      u[m_free[k]].first[k] = Constant(perLength, Number{});
      u[m_free[k]].value = Constant(perLength, Number{}) * range;
    }
    return Constant({contact.side}, u[0]) * DeviationOf(contact.local, u);
  }

  bool IsOneSided() const { return m_question.criterion == ContactCriterion::oneSidedZone; }
  bool IsZone() const { return m_question.criterion == ContactCriterion::zone || IsOneSided(); }

  // Which size is the boundary of a circumscribed or inscribed feature, and not an unknown: that of the tube of a
  // torus, and the radius of others.
  bool IsFree(int unknown) const {
    const CertificateQuestion& q = m_question;
    if (unknown == kMiddle) return q.feature.kind == FeatureKind::cone && q.feature.bothNappes;
    const bool isTorus = q.feature.kind == FeatureKind::torus;
    if (unknown == kSize1 && isTorus) return false;
    if (unknown == kSize0 && !isTorus && !IsZone()) return false;
    return Contains(q.free & UnknownsOf(q.feature.kind), unknown);
  }

  bool HasFreeAngle() const {
    const auto isAngle = [](int unknown) { return Contains(kTilts | Bits({kTurn}), unknown); };
    return std::any_of(m_free, m_free + m_count, isAngle);
  }

  bool IsConvex() const {
    const FeatureKind kind = m_question.feature.kind;
    if (HasFreeAngle() || kind == FeatureKind::torus || kind == FeatureKind::circleInSpace) return false;
    return IsSlab() || kind == FeatureKind::line || m_question.criterion == ContactCriterion::circumscribed;
  }

  bool IsSlab() const {
    return m_question.feature.kind == FeatureKind::plane || m_question.feature.kind == FeatureKind::lineInPlane;
  }

  // Contacts without a multiplier hold the feature as well, and growth is proved by those that have one. What is left
  // of the wish to raise them all, once its part that changes the balance or the sum is taken away, gives them a share;
  // it goes half of the way to where another multiplier vanishes.
  void SpreadMultipliers() {
    const auto isIdle = [](const Contact& contact) { return contact.multiplier == 0.0; };
    const std::size_t idle = static_cast<std::size_t>(std::count_if(m_contacts.begin(), m_contacts.end(), isIdle));
    if (idle == 0 || idle == m_contacts.size() || m_contacts.size() > kMostSpread) return;
    std::vector<bool> raised(m_contacts.size());
    std::transform(m_contacts.begin(), m_contacts.end(), raised.begin(), isIdle);
    for (std::size_t round = 0; round < idle; ++round) {
      const std::vector<double> change = BalancedChange(raised);
      if (change.empty()) return;
      double most = kInfinity;
      bool isAllowed = true;
      for (std::size_t k = 0; k < m_contacts.size(); ++k) {
        const bool isDropped = !raised[k] && isIdle(m_contacts[k]);
        if (raised[k] && !(change[k] > kRounding)) raised[k] = isAllowed = false;
        if (!isDropped && change[k] < 0.0) most = std::min(most, m_contacts[k].multiplier / -change[k]);
      }
      if (!isAllowed) continue;
      if (std::isfinite(most))
        for (std::size_t k = 0; k < m_contacts.size(); ++k) m_contacts[k].multiplier += 0.5 * most * change[k];
      return;
    }
  }

  // The change of the multipliers next to 1 for each that is to be raised and to 0 for the others, with no change of
  // the weighted gradients and of the sum; those that are 0 and not to be raised stay. Empty where there is none.
  std::vector<double> BalancedChange(const std::vector<bool>& raised) const {
    constexpr int kColumns = kMost + 1;
    const std::size_t contacts = m_contacts.size();
    const int columns = m_count + 1;
    const int rows = std::max(static_cast<int>(contacts), columns);
    std::vector<double> basis(static_cast<std::size_t>(rows) * kColumns);
    std::vector<double> change(contacts);
    for (std::size_t k = 0; k < contacts; ++k) {
      change[k] = raised[k] ? 1.0 : 0.0;
      if (!raised[k] && m_contacts[k].multiplier == 0.0) continue;
      for (int i = 0; i < m_count; ++i) basis[k * kColumns + i] = m_contacts[k].jet.first[i].high;
      basis[k * kColumns + m_count] = 1.0;
    }
    double values[kColumns];
    double v[kColumns][kColumns];
    if (!DecomposeSingular(basis.data(), rows, columns, kColumns, values, v[0], kColumns, kRounding, DBL_MIN))
      return {};
    for (int c = 0; c < columns; ++c) {
      if (values[c] == 0.0) continue;
      double share = 0.0;
      for (std::size_t k = 0; k < contacts; ++k) share += basis[k * kColumns + c] * change[k];
      for (std::size_t k = 0; k < contacts; ++k) change[k] -= share * basis[k * kColumns + c];
    }
    return change;
  }

  // With multipliers that add up to 1 to all digits.
  void WeightContacts() {
    DoubleDouble sum;
    for (const Contact& contact : m_contacts) sum = sum + DoubleDouble{contact.multiplier};
    DoubleDouble gradient[kMost];
    for (Contact& contact : m_contacts) {
      const DoubleDouble multiplier = DoubleDouble{contact.multiplier} / sum;
      contact.multiplier = multiplier.high;
      for (int i = 0; i < m_count; ++i) {
        gradient[i] = gradient[i] + multiplier * contact.jet.first[i];
        for (int j = 0; j <= i; ++j) m_hessian.at[i][j] += contact.multiplier * contact.jet.second[i][j].high;
      }
      m_slack += contact.multiplier * contact.slack;
      m_largestSlack = std::max(m_largestSlack, contact.slack);
    }
    for (int i = 0; i < m_count; ++i) {
      m_gradient[i] = gradient[i].high;
      for (int j = 0; j < i; ++j) m_hessian.at[j][i] = m_hessian.at[i][j];
    }
    m_result.balance = NormOf(m_gradient, m_count);
  }

  // The singular values of A, and everything else in the axes that belong to them.
  bool MakeSplits() {
    const int rows = std::max(static_cast<int>(m_contacts.size()), m_count);
    std::vector<double> a(static_cast<std::size_t>(rows) * kMost);
    for (std::size_t i = 0; i < m_contacts.size(); ++i)
      for (int j = 0; j < m_count; ++j) a[i * kMost + j] = m_contacts[i].multiplier * m_contacts[i].jet.first[j].high;
    double values[kMost];
    Matrix v;
    if (m_count > 0 && !DecomposeSingular(a.data(), rows, m_count, kMost, values, v.at[0], kMost, 0.0, DBL_MIN))
      return false;
    for (int k = 0; k < m_count; ++k) {
      const int largest = static_cast<int>(std::max_element(values, values + m_count) - values);
      m_singular[k] = values[largest];
      values[largest] = -1.0;
      for (int i = 0; i < m_count; ++i) m_axes.at[i][k] = v.at[i][largest];
    }
    for (int k = 0; k < m_count; ++k) {
      double product[kMost] = {};
      for (int i = 0; i < m_count; ++i) {
        m_balanceAlong[k] += m_axes.at[i][k] * m_gradient[i];
        for (int j = 0; j < m_count; ++j) product[i] += m_hessian.at[i][j] * m_axes.at[j][k];
      }
      for (int l = 0; l < m_count; ++l)
        for (int i = 0; i < m_count; ++i) m_turned.at[l][k] += m_axes.at[i][l] * product[i];
    }
    for (int along = 0; along <= m_count; ++along) m_splits.push_back(SplitAt(along));
    return true;
  }

  Split SplitAt(int along) const {
    const int n = m_count;
    Split split{.along = along, .across = n - along};
    if (along > 0) split.growth = 0.5 * (m_singular[along - 1] - kRounding * m_singular[0]);
    split.gradientAlong = NormOf(m_balanceAlong, along);
    split.gradientAcross = NormOf(m_balanceAlong + along, n - along);
    split.coupled = m_turned.Norm(0, along, along, n);
    split.stiffness = m_turned.Norm(0, along, 0, along);
    if (along == n) return split;
    double values[kMost];
    const bool found = DecomposeSymmetric(&m_turned.at[along][along], n - along, kMost, values, nullptr, 0);
    split.curvature = found ? values[0] - kRounding * m_turned.Norm(0, n, 0, n) : -kInfinity;
    return split;
  }

  BoxCurvature CurvatureWithin(double radius) const {
    BoxCurvature box;
    Interval sum[kMost][kMost];
    for (const Contact& contact : m_contacts) {
      const Jet<Interval> jet = JetOf(contact, Interval{-radius, radius});
      const Interval multiplier{contact.multiplier, contact.multiplier};
      Matrix magnitude;
      for (int i = 0; i < m_count; ++i) {
        for (int j = 0; j <= i; ++j) {
          sum[i][j] = sum[i][j] + multiplier * jet.second[i][j];
          magnitude.at[i][j] = magnitude.at[j][i] = Magnitude(jet.second[i][j]);
        }
      }
      box.largest = std::max(box.largest, magnitude.Norm(0, m_count, 0, m_count));
    }
    Matrix change;
    for (int i = 0; i < m_count; ++i) {
      for (int j = 0; j <= i; ++j) {
        const double here = m_hessian.at[i][j];
        change.at[i][j] = change.at[j][i] = Magnitude(sum[i][j] - Interval{here, here});
      }
    }
    box.change = change.Norm(0, m_count, 0, m_count);
    return box;
  }

  // An upper bound of the gap within the radius, for the best of some t. Bounds that are infinite make it so, or NaN.
  double LossOf(const Split& split, const BoxCurvature& box, double radius) const {
    const double spare = split.curvature - box.change;
    const double most = split.across == 0 ? 1.0 : spare > 0.0 ? spare / (spare + box.largest) : 0.0;
    double best = kInfinity;
    if (!(box.largest + box.change < best)) return best;
    for (const double t : {0.0, 0.5 * most, most}) {
      double loss = (1.0 - t) * m_slack + t * m_largestSlack;
      if (split.along > 0) {
        const double bend = (1.0 - t) * (split.coupled + 0.5 * (split.stiffness + box.change)) + 0.5 * t * box.largest;
        loss += radius * Positive(split.gradientAlong + radius * bend - t * split.growth);
      }
      if (split.across > 0) {
        const double curvature = 0.5 * ((1.0 - t) * spare - t * box.largest);
        const double slope = split.gradientAcross;
        const bool turns = slope <= 2.0 * curvature * radius;  // within the radius, the loss turns back
        loss +=
            turns && slope > 0.0 ? slope * slope / (4.0 * curvature) : Positive(radius * (slope - radius * curvature));
      }
      if (loss < best) best = loss;
    }
    return best;
  }

  void Accept(double gap, double radius, const Split& split) {
    m_result.failed = CertificateCheck::passed;
    m_result.gap = gap;
    m_result.radius = radius;
    m_result.isGlobal = radius == kInfinity;
    m_result.growth = split.growth;
    m_result.curvature = split.curvature;
  }

  const CertificateQuestion& m_question;
  double m_extent = 0.0;  // of the points about the origin; NaN or infinite where one is not finite
  double m_unit = 1.0;
  double m_length;
  CertifiedFeature m_feature;
  int m_free[kMost] = {};  // the free unknowns
  int m_count = 0;         // of them
  DoubleDouble m_boundary;
  DoubleDouble m_middle;
  std::vector<Contact> m_contacts;
  double m_slack = 0.0;         // s
  double m_largestSlack = 0.0;  // S
  double m_gradient[kMost] = {};
  Matrix m_hessian;
  Matrix m_axes;                  // columns: directions of the unknowns, by descending singular value
  double m_singular[kMost] = {};  // the singular values
  double m_balanceAlong[kMost] = {};
  Matrix m_turned;  // H in the axes
  std::vector<Split> m_splits;
  Certificate m_result;
};

}  // namespace

Certificate CheckCertificate(const CertificateQuestion& question) {
  Proof proof(question);
  if (!proof.IsFinite()) return proof.FailedAt(CertificateCheck::finite);
  if (!proof.IsWithinBoundary()) return proof.FailedAt(CertificateCheck::boundary);
  if (!proof.HasContacts()) return proof.FailedAt(CertificateCheck::contacts);
  if (!proof.HasMultipliers()) return proof.FailedAt(CertificateCheck::multipliers);
  if (proof.IsGlobal() || proof.HasNeighbourhood()) return proof.Passed();
  return proof.FailedAt(proof.IsBalanced() ? CertificateCheck::growth : CertificateCheck::balance);
}

}  // namespace nu::engine::association
