#ifndef NU_ENGINE_LEAST_SQUARES_TRUST_REGION_H
#define NU_ENGINE_LEAST_SQUARES_TRUST_REGION_H

#include <algorithm>
#include <cmath>

#include "nu/engine/linear/eigen_symmetric.h"

namespace nu::engine::least_squares {

// Half a sum of squared deviations to second order in N unknowns.
template<int N>
struct SecondOrderModel {
  double metric[N][N];   // products of the first derivatives of the deviations
  double hessian[N][N];  // the metric and the products of the deviations with their second derivatives
  double gradient[N];
  double sumSquares = 0.0;
  bool isCurved = false;  // otherwise the Hessian is not set and taken to be the metric: a step is a Gauss-Newton step
};

// Newton's method in a trust region (J. J. More, D. C. Sorensen, SIAM J. Scientific and Statistical Computing 4, 1983).
// A step is as long as the change of all deviations that it makes to first order. In this metric the second derivatives
// are those of a Gauss-Newton step, all of them one, and the curvature of the problem, so that their least eigenvalue
// tells how much of a minimum it is whatever the unknowns are.
template<int N>
class TrustRegion {
 public:
  // False when something is not finite.
  bool Place(const SecondOrderModel<N>& model);

  bool IsConvex() const { return m_value[0] > 0.0; }
  // By how much the full step should lower half the sum of squares, and that step; where the model is convex.
  double FullGain() const;
  void FullStep(double (&step)[N]) const;

  struct Step {
    double length = 0.0;
    double gain = 0.0;  // by how much half the sum of squares should fall
  };
  // The best step that is no longer than the radius.
  Step StepWithin(double radius, double (&step)[N]) const;

 private:
  // Unknowns on which the deviations depend by no more than this part count as if they did by that much.
  static constexpr double kIndependent = 1e-14;
  // Where the model is not convex, the shifted one is by at least this part.
  static constexpr double kConvex = 1e-10;
  // How exact the length of a step has to be.
  static constexpr double kLengthTolerance = 1e-2;
  static constexpr int kMostShifts = 60;

  void Factorise(const SecondOrderModel<N>& model, double (&gradient)[N]);
  bool Decompose(const SecondOrderModel<N>& model);
  double ShiftFor(double radius) const;
  // Of a step along the eigenvectors.
  void ToUnknowns(const double (&along)[N], double (&step)[N]) const;

  double m_lower[N][N];  // of the metric, L L'
  double m_value[N];     // eigenvalues of L^-1 H L^-T, ascending
  double m_vector[N][N];
  double m_part[N];  // of the gradient L^-1 g along the eigenvectors
};

// L, and L^-1 g.
template<int N>
void TrustRegion<N>::Factorise(const SecondOrderModel<N>& model, double (&gradient)[N]) {
  for (int i = 0; i < N; ++i) {
    double pivot = model.metric[i][i];
    gradient[i] = model.gradient[i];
    for (int j = 0; j < i; ++j) {
      double sum = model.metric[i][j];
      for (int k = 0; k < j; ++k) sum -= m_lower[i][k] * m_lower[j][k];
      m_lower[i][j] = sum / m_lower[j][j];
      pivot -= m_lower[i][j] * m_lower[i][j];
      gradient[i] -= m_lower[i][j] * gradient[j];
    }
    pivot = std::max(pivot, kIndependent * model.metric[i][i]);
    m_lower[i][i] = pivot > 0.0 ? std::sqrt(pivot) : 1.0;
    gradient[i] /= m_lower[i][i];
  }
}

// The eigenvectors of L^-1 H L^-T: its columns come one from each column of L^-1 H and of its transpose.
template<int N>
bool TrustRegion<N>::Decompose(const SecondOrderModel<N>& model) {
  double scaled[N][N];
  const auto divide = [&](double(&column)[N]) {
    for (int i = 0; i < N; ++i) {
      for (int j = 0; j < i; ++j) column[i] -= m_lower[i][j] * column[j];
      column[i] /= m_lower[i][i];
    }
  };
  for (int j = 0; j < N; ++j) {
    double column[N];
    for (int i = 0; i < N; ++i) column[i] = model.hessian[i][j];
    divide(column);
    for (int i = 0; i < N; ++i) scaled[i][j] = column[i];
  }
  for (double(&row)[N] : scaled) divide(row);
  return DecomposeSymmetric(&scaled[0][0], N, N, m_value, &m_vector[0][0], N);
}

template<int N>
bool TrustRegion<N>::Place(const SecondOrderModel<N>& model) {
  double gradient[N];
  Factorise(model, gradient);
  if (model.isCurved) {
    if (!Decompose(model)) return false;
  } else {
    for (int i = 0; i < N; ++i) {
      m_value[i] = 1.0;
      for (int k = 0; k < N; ++k) m_vector[i][k] = i == k ? 1.0 : 0.0;
    }
  }
  double sum = 0.0;
  for (int k = 0; k < N; ++k) {
    m_part[k] = 0.0;
    for (int i = 0; i < N; ++i) m_part[k] += m_vector[i][k] * gradient[i];
    sum += m_part[k];
  }
  return std::isfinite(sum);
}

template<int N>
double TrustRegion<N>::FullGain() const {
  double sum = 0.0;
  for (int k = 0; k < N; ++k) sum += m_part[k] * (m_part[k] / m_value[k]);
  return 0.5 * sum;
}

template<int N>
void TrustRegion<N>::FullStep(double (&step)[N]) const {
  double along[N];
  for (int k = 0; k < N; ++k) along[k] = -m_part[k] / m_value[k];
  ToUnknowns(along, step);
}

// Of the eigenvalues, so that the step has the length of the radius or less. The length falls as the shift grows, and
// its reciprocal is nearly linear: Newton's method, kept between bounds.
template<int N>
double TrustRegion<N>::ShiftFor(double radius) const {
  double low = m_value[0] > 0.0 ? 0.0 : -m_value[0] + kConvex * std::max(1.0, -m_value[0]);
  double high = low;
  for (const double part : m_part) high += std::fabs(part) / radius;
  double shift = low;
  for (int step = 0; step < kMostShifts && low < high; ++step) {
    double square = 0.0;
    double fall = 0.0;
    for (int k = 0; k < N; ++k) {
      const double part = m_part[k] / (m_value[k] + shift);
      square += part * part;
      fall += part * part / (m_value[k] + shift);
    }
    const double length = std::sqrt(square);
    if (!(length > radius) && (shift == low || length >= (1.0 - kLengthTolerance) * radius)) break;
    (length > radius ? low : high) = shift;
    const double next = shift + square / fall * ((length - radius) / radius);
    shift = next > low && next < high ? next : 0.5 * (low + high);
  }
  return shift;
}

template<int N>
typename TrustRegion<N>::Step TrustRegion<N>::StepWithin(double radius, double (&step)[N]) const {
  const double shift = ShiftFor(radius);
  double along[N];
  double square = 0.0;
  for (int k = 0; k < N; ++k) {
    along[k] = -m_part[k] / (m_value[k] + shift);
    square += along[k] * along[k];
  }
  // The gradient may have no part where the model falls most.
  if (!IsConvex() && square < radius * radius) along[0] += std::copysign(std::sqrt(radius * radius - square), along[0]);
  Step found;
  square = 0.0;
  for (int k = 0; k < N; ++k) {
    square += along[k] * along[k];
    found.gain -= along[k] * (m_part[k] + 0.5 * m_value[k] * along[k]);
  }
  found.length = std::sqrt(square);
  ToUnknowns(along, step);
  return found;
}

template<int N>
void TrustRegion<N>::ToUnknowns(const double (&along)[N], double (&step)[N]) const {
  for (int i = N - 1; i >= 0; --i) {
    step[i] = 0.0;
    for (int k = 0; k < N; ++k) step[i] += m_vector[i][k] * along[k];
    for (int j = i + 1; j < N; ++j) step[i] -= m_lower[j][i] * step[j];
    step[i] /= m_lower[i][i];
  }
}

}  // namespace nu::engine::least_squares

#endif
