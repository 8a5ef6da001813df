// Let e_i be the deviations of the contacts times their sides, l_i their multipliers, g_i and H_i the first and second
// derivatives of e_i by the unknowns u. When the contacts move by x_i, the optimum goes along with
//
//   e_i(u) all equal:                (g_i - g_1) . u = -(n_i . x_i - n_1 . x_1),    n_i = de_i / dx_i,
//   sum l_i g_i stays 0 across them: N^T (H u + sum l_i (dg_i / dx_i) x_i) = 0,     H = sum l_i H_i,
//
// where the columns of N span the moves that leave the differences of the e_i as they are (the first-order sensitivity
// of an optimum under constraints: A. V. Fiacco, Introduction to Sensitivity and Stability Analysis in Nonlinear
// Programming, 1983). The value, and with it a radius that is the value, follows with sum l_i n_i . x_i. Contacts of
// the feature itself, where it has all points on one side, keep e_i = 0 instead.
//
// Least squares with all points on one side keep A u = -x, with the gradients of the contacts for rows of A and x their
// moves along the normals. What A leaves free, the columns of N, follows all points: with R the triangular factor of
// the derivatives and R N = U S V^T,
//
//   u = -(I - N V S^-1 U^T R) A^+ x - N V S^-1 q,
//
// where the components of q are independent and have the standard deviation 1. The rows of contacts have no part in R
// N, so that x and q are independent, too. Second derivatives, times deviations, are left out, as in any covariance of
// least squares.

#include "nu/engine/association/contact_sensitivity.h"

#include <algorithm>
#include <cmath>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/linear/eigen_symmetric.h"
#include "nu/engine/linear/small_svd.h"
#include "nu/engine/shapes/incidence.h"

namespace nu::engine::association {
namespace {

constexpr int N = kUnknowns;

// A singular value below this part of the largest one, or a curvature below this part of the reciprocal extent, holds
// nothing.
constexpr double kHoldsNothing = 0x1p-30;
// Multipliers that leave more of the gradients are those of no optimum.
constexpr double kUnbalanced = 0x1p-16;
// The step of difference quotients, in units of the extent: both of their errors are near 1e-10.
constexpr double kDifference = 0x1p-17;
// Against the uncertainty of what is determined: of what is not, and the least that is told from 0.
constexpr double kVast = 0x1p20;
constexpr double kLeast = 0x1p-80;

// Adds the products of the components, times a weight.
void AddSquare(const double (&u)[N], double weight, double (&square)[N][N]) {
  for (int j = 0; j < N; ++j)
    for (int k = 0; k < N; ++k) square[j][k] += weight * u[j] * u[k];
}

class HeldFeature {
 public:
  HeldFeature(PointView points, const Feature& feature, ContactCriterion criterion, const ContactAccount& account,
              const Covariance& unknowns, int held)
      : m_points(points), m_feature(feature), m_account(account), m_unknowns(unknowns), m_held(held) {
    for (int i = 0; i < account.holding; ++i)
      m_isOnFeature[i] = criterion == ContactCriterion::oneSidedZone &&
                         std::fabs(DeviationOf(feature, PointOf(i))) <= account.tolerance;
    while (m_first + 1 < account.holding && m_isOnFeature[m_first]) ++m_first;
    FindDifferences();
    FindCurvature();
  }

  // Adds the squares of what the move of each contact along each axis does to the unknowns; `radius`, if it is not
  // null, has a row of its own at the end.
  void AddMoves(bool hasRadius, double (&square)[N][N]) const {
    for (int i = 0; i < m_account.holding; ++i) {
      for (int axis = 0; axis < 3; ++axis) {
        double u[N] = {};
        const double value = Follow(i, axis, u);
        if (hasRadius) u[m_held] = value;
        AddSquare(u, 1.0, square);
      }
    }
  }

  // The directions that nothing holds.
  int Undetermined() const { return m_undetermined; }
  const double (&Directions() const)[N][N] { return m_loose; }

 private:
  double SideOf(int i) const { return m_account.contact[i].side; }

  double Gradient(const Vec3& point, int i, double (&gradient)[N]) const {
    double by[kUnknowns];
    const double deviation = DeviationOf(m_feature, point, by);
    std::fill_n(gradient, N, 0.0);
    for (int j = 0; j < m_held; ++j) gradient[j] = SideOf(i) * m_unknowns.scale[j] * by[m_unknowns.unknown[j]];
    return SideOf(i) * deviation;
  }

  Vec3 PointOf(int i) const { return LoadVec3(m_points[m_account.contact[i].index]); }

  // Of the contacts but the first; those of the feature itself differ from 0.
  void FindDifferences() {
    double first[N];
    Gradient(PointOf(m_first), m_first, first);
    double column[N][N] = {};
    for (int i = 0; i < m_account.holding; ++i) {
      double gradient[N];
      Gradient(PointOf(i), i, gradient);
      for (int j = 0; i != m_first && j < m_held; ++j)
        column[j][RowOf(i)] = gradient[j] - (m_isOnFeature[i] ? 0.0 : first[j]);
    }
    m_differences = SvdOfColumns(column);
  }
  int RowOf(int i) const { return i < m_first ? i : i - 1; }
  // Of the difference that contact k has a row for, when contact i moves by 1 along its normal.
  double RiseOf(int k, int i) const {
    if (k == i) return 1.0;
    return i == m_first && !m_isOnFeature[k] ? -1.0 : 0.0;
  }

  bool IsHeld(int k) const { return m_differences.value[k] > kHoldsNothing * m_differences.value[0]; }

  // Of what the differences leave free; unknowns beyond those of the feature have axes of their own.
  void FindCurvature() {
    double sum[kUnknowns][kUnknowns] = {};
    for (int i = 0; i < m_account.holding; ++i)
      AddCurvature(m_feature, PointOf(i), SideOf(i) * m_account.contact[i].multiplier, sum);
    for (int j = 0; j < m_held; ++j)
      for (int k = 0; k < m_held; ++k)
        m_curvature[j][k] =
            m_unknowns.scale[j] * m_unknowns.scale[k] * sum[m_unknowns.unknown[j]][m_unknowns.unknown[k]];
    for (int k = 0; k < N; ++k)
      if (!IsHeld(k) && IsOfFeature(m_differences.axis[k])) m_free[m_freeCount++] = k;
    double reduced[N * N] = {};
    for (int a = 0; a < m_freeCount; ++a)
      for (int b = 0; b < m_freeCount; ++b)
        reduced[a * N + b] = Bend(m_differences.axis[m_free[a]], m_differences.axis[m_free[b]]);
    double values[N], vectors[N * N];
    if (m_freeCount == 0 || !DecomposeSymmetric(reduced, m_freeCount, N, values, vectors, N)) return;
    for (int a = 0; a < m_freeCount; ++a) {
      double direction[N] = {};
      for (int b = 0; b < m_freeCount; ++b)
        for (int j = 0; j < N; ++j) direction[j] += vectors[b * N + a] * m_differences.axis[m_free[b]][j];
      const bool bends = values[a] * m_unknowns.extent > kHoldsNothing;
      double(&to)[N] = bends ? m_bent[m_bentCount] : m_loose[m_undetermined];
      std::copy_n(direction, N, to);
      if (bends) m_bend[m_bentCount] = values[a];
      ++(bends ? m_bentCount : m_undetermined);
    }
  }

  bool IsOfFeature(const double (&axis)[N]) const {
    return std::all_of(axis + m_held, axis + N, [](double component) { return component == 0.0; });
  }

  double Bend(const double (&a)[N], const double (&b)[N]) const {
    double sum = 0.0;
    for (int j = 0; j < m_held; ++j)
      for (int k = 0; k < m_held; ++k) sum += a[j] * m_curvature[j][k] * b[k];
    return sum;
  }

  // The unknowns after contact i has moved by 1 along an axis; returns the change of its deviation times its
  // multiplier and the sense of a radius.
  double Follow(int i, int axis, double (&u)[N]) const {
    const double h = kDifference * m_unknowns.extent;
    const Vec3 step{axis == 0 ? h : 0.0, axis == 1 ? h : 0.0, axis == 2 ? h : 0.0};
    double after[N], before[N];
    const double rise = Gradient(PointOf(i) + step, i, after) - Gradient(PointOf(i) - step, i, before);
    const double normal = rise / (2.0 * h);
    for (int k = 0; k < N; ++k) {
      if (!IsHeld(k)) continue;
      const double* work = m_differences.work[k];
      double right = 0.0;
      for (int c = 0; c < m_account.holding; ++c)
        if (c != m_first) right -= work[RowOf(c)] * RiseOf(c, i) * normal;
      const double part = right / (m_differences.value[k] * m_differences.value[k]);
      for (int j = 0; j < N; ++j) u[j] += part * m_differences.axis[k][j];
    }
    double held[N];
    std::copy_n(u, N, held);
    for (int b = 0; b < m_bentCount; ++b) {
      double pull = Bend(m_bent[b], held);
      for (int j = 0; j < m_held; ++j)
        pull += m_account.contact[i].multiplier * m_bent[b][j] * (after[j] - before[j]) / (2.0 * h);
      for (int j = 0; j < N; ++j) u[j] -= pull / m_bend[b] * m_bent[b][j];
    }
    return SideOf(i) * m_account.contact[i].multiplier * normal;
  }

  PointView m_points;
  const Feature& m_feature;
  const ContactAccount& m_account;
  const Covariance& m_unknowns;
  int m_held;
  bool m_isOnFeature[ContactAccount::kMostContacts] = {};
  int m_first = 0;
  SmallSvd<N> m_differences{};
  double m_curvature[N][N] = {};
  int m_free[N] = {};
  int m_freeCount = 0;
  double m_bent[N][N] = {};
  double m_bend[N] = {};
  int m_bentCount = 0;
  double m_loose[N][N] = {};
  int m_undetermined = 0;
};

// Least squares whose contacts stay where they are. Unknowns beyond those of the feature are taken for held.
class SquaresOnOneSide {
 public:
  SquaresOnOneSide(PointView points, const double* weights, const Feature& feature, const ContactAccount& account,
                   const Covariance& unknowns)
      : m_account(account), m_unknowns(unknowns) {
    double column[N][N] = {};
    for (int i = 0; i < account.holding; ++i) {
      const std::size_t index = account.contact[i].index;
      double by[kUnknowns];
      DeviationOf(feature, LoadVec3(points[index]), by);
      for (int j = 0; j < unknowns.unknowns; ++j) column[j][i] = unknowns.scale[j] * by[unknowns.unknown[j]];
      m_deviation[i] = weights == nullptr ? 1.0 : 1.0 / std::sqrt(weights[index]);
    }
    m_contacts = SvdOfColumns(column);
    FindTurns();
  }

  // The squares of what the moves of the contacts, and of all points about them, do to the unknowns.
  void AddMoves(double (&square)[N][N]) const {
    for (int i = 0; i < m_account.holding; ++i) {
      double u[N];
      Follow(i, u);
      AddSquare(u, 1.0, square);
    }
    for (int k = 0; k < m_turns; ++k) {
      double u[N];
      for (int j = 0; j < N; ++j) u[j] = m_turn[k][j] / m_turned.value[k];
      AddSquare(u, 1.0, square);
    }
  }

  // The directions that nothing holds.
  int Undetermined() const { return m_undetermined; }
  const double (&Directions() const)[N][N] { return m_loose; }

 private:
  bool IsHeld(int k) const { return m_contacts.value[k] > kHoldsNothing * m_contacts.value[0]; }

  void MultiplyByFactor(const double (&u)[N], double (&to)[N]) const {
    for (int i = 0; i < N; ++i) {
      to[i] = 0.0;
      for (int j = i; j < m_unknowns.unknowns; ++j) to[i] += m_unknowns.factor[i][j] * u[j];
    }
  }

  // What the contacts leave free, by how much the points hold it.
  void FindTurns() {
    double column[N][N] = {};
    for (int k = 0; k < N; ++k)
      if (!IsHeld(k)) MultiplyByFactor(m_contacts.axis[k], column[k]);
    m_turned = SvdOfColumns(column);
    for (int t = 0; t < N; ++t) {
      double direction[N] = {};
      for (int k = 0; k < N; ++k)
        for (int j = 0; !IsHeld(k) && j < m_unknowns.unknowns; ++j)
          direction[j] += m_turned.axis[t][k] * m_contacts.axis[k][j];
      double square = 0.0;
      for (const double component : direction) square += component * component;
      if (!(square > 0.5)) continue;  // not a unit vector of the feature, but of what is held or no unknown
      const bool isHeld = m_turned.value[t] > kHoldsNothing * m_unknowns.singular[0];
      std::copy_n(direction, N, isHeld ? m_turn[m_turns++] : m_loose[m_undetermined++]);
    }
  }

  // The unknowns after contact i has moved against its normal by its standard deviation.
  void Follow(int i, double (&u)[N]) const {
    std::fill_n(u, N, 0.0);
    for (int k = 0; k < N; ++k)
      for (int j = 0; IsHeld(k) && j < N; ++j)
        u[j] += m_deviation[i] * m_contacts.work[k][i] / (m_contacts.value[k] * m_contacts.value[k]) *
                m_contacts.axis[k][j];
    double work[N];
    MultiplyByFactor(u, work);
    for (int t = 0; t < m_turns; ++t) {
      double part = 0.0;
      for (int r = 0; r < N; ++r) part += m_turned.work[t][r] * work[r];
      for (int j = 0; j < N; ++j) u[j] -= part / (m_turned.value[t] * m_turned.value[t]) * m_turn[t][j];
    }
  }

  const ContactAccount& m_account;
  const Covariance& m_unknowns;
  double m_deviation[N] = {};
  SmallSvd<N> m_contacts{};
  SmallSvd<N> m_turned{};
  double m_turn[N][N] = {};
  int m_turns = 0;
  double m_loose[N][N] = {};
  int m_undetermined = 0;
};

// The axes and the reciprocal roots of the squares. Nothing holds the feature in the loose directions.
void Decompose(int loose, const double (&direction)[N][N], double (&square)[N][N], Covariance& result) {
  double trace = 1.0;
  for (int k = 0; k < N; ++k) trace += square[k][k];
  for (int w = 0; w < loose; ++w) AddSquare(direction[w], kVast * trace, square);
  double values[N], vectors[N * N];
  result.finite = DecomposeSymmetric(&square[0][0], result.unknowns, N, values, vectors, N);
  if (!result.finite) return;
  result.undetermined = loose;
  for (int k = 0; k < result.unknowns; ++k) {
    const bool isLoose = k >= result.unknowns - result.undetermined;
    result.singular[k] = isLoose ? 0.0 : 1.0 / std::sqrt(std::max(values[k], kLeast * trace));
    for (int j = 0; j < result.unknowns; ++j) result.axis[k][j] = vectors[j * N + k];
  }
  const double last = result.singular[result.unknowns - 1];
  result.condition = last > 0.0 ? result.singular[0] / last : kInfinity;
}

}  // namespace

Covariance SensitivityToContacts(PointView points, const Feature& feature, ContactCriterion criterion,
                                 const ContactAccount& account, UnknownMask free) {
  Covariance result;
  // The middle between two nappes is an unknown of its own, which no parameter of the feature is.
  const bool hasMiddle = feature.kind == FeatureKind::cone && feature.bothNappes;
  const bool isBalanced = account.holding > 0 && account.holding <= N && account.balance <= kUnbalanced;
  result.finite = account.finite && isBalanced && !hasMiddle;
  if (!result.finite) return result;
  const UnknownMask all = free & UnknownsOf(feature.kind);
  const bool isSize = criterion == ContactCriterion::circumscribed || criterion == ContactCriterion::inscribed;
  const UnknownMask radius = isSize ? all & Bits({kSize0}) : 0U;
  const int held = result.unknowns = ListUnknowns(all & ~radius, result.unknown);
  if (radius != 0) result.unknown[result.unknowns++] = kSize0;
  for (std::size_t i = 0; i < points.Size(); ++i)
    result.extent = std::max(result.extent, Norm(LoadVec3(points[i]) - feature.frame.origin));
  result.finite = result.extent > 0.0;
  if (!result.finite || result.unknowns == 0) return result;
  for (int j = 0; j < result.unknowns; ++j) result.scale[j] = PerLength(feature.kind, result.unknown[j], result.extent);
  const HeldFeature moves(points, feature, criterion, account, result, held);
  double square[N][N] = {};
  moves.AddMoves(radius != 0, square);
  Decompose(moves.Undetermined(), moves.Directions(), square, result);
  return result;
}

Covariance SensitivityOfSquares(PointView points, const double* weights, const Feature& feature,
                                const ContactAccount& account, UnknownMask free) {
  Covariance result = CovarianceOf(points, weights, feature, free);
  result.finite = result.finite && account.finite && account.holding <= N && account.balance <= kUnbalanced;
  if (!result.finite || account.holding == 0 || result.unknowns == 0) return result;
  SquaresOnOneSide moves(points, weights, feature, account, result);
  double square[N][N] = {};
  moves.AddMoves(square);
  Decompose(moves.Undetermined(), moves.Directions(), square, result);
  return result;
}

}  // namespace nu::engine::association
