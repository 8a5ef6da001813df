#include "nu/numerics/chebyshev.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <utility>

#include "nu/engine/base/elementary.h"
#include "nu/engine/roots/chebyshev_series.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/double_array.h"
#include "nu/foundation/internal/failures.h"

// The fit interpolates f at the N = n + 11 zeros of T_N, where the cosines are orthogonal:
//
//   x_k = h cos(pi (k + 1/2) / N) + m,   h = (b - a) / 2,  m = (a + b) / 2,   k = 0 .. N - 1
//   c_j = 2/N sum_k f(x_k) cos(pi j (k + 1/2) / N)
//
// and drops the terms beyond degree n (Broucke, Algorithm 446, Communications of the ACM 16 (1973) 254; Rivlin,
// Chebyshev Polynomials, 2nd ed., chapter 3). What is dropped is about c_(n+1) T_(n+1), which nearly equioscillates:
// hence nearly minimax. The series is summed by Clenshaw's recurrence (Mathematical Tables 9 (1955) 118).

namespace {

using namespace nu::internal;

constexpr const char* kDataChecking = "data checking";
constexpr const char* kFit = "CNuChebyshevPolynomialExpression::FitMinMax()";

// Terms that are computed beyond the degree: they separate what is kept from what aliases onto it.
constexpr int kMoreTerms = 10;

// In n^2 steps. What no memory would hold fails before them.
CNuPolynomial ChebyshevInPowers(int n) {
  const CNuPolynomial room(n);
  CNuPolynomial next(1);
  next[1] = 1.0;
  CNuPolynomial current(0);
  current[0] = 1.0;
  CNuPolynomial twice(1);
  twice[1] = 2.0;
  for (int k = 0; k < n; ++k) {
    CNuPolynomial afterNext = twice * next - current;
    current = std::move(next);
    next = std::move(afterNext);
  }
  return current;
}

// cos(pi i / 2N) for any i >= 0, from values for the first quarter turn that are exactly as symmetric as the cosine is:
// a node and its mirror image differ in the sign alone, and the middle one is 0.
class Cosines {
 public:
  explicit Cosines(int nodes) : m_nodes(nodes), m_values(nodes + 1) {
    const double step = 0.5 * Nu_PI / nodes;
    for (int i = 0; i <= nodes; ++i) {
      m_values.Add(2 * i <= nodes ? nu::internal::Cos(i * step) : nu::internal::Sin((nodes - i) * step));
    }
  }

  double operator()(long long i) const {
    const long long half = 2LL * m_nodes;
    const long long turned = i % (2 * half);
    const long long folded = turned <= half ? turned : 2 * half - turned;
    return folded <= m_nodes ? m_values[static_cast<int>(folded)] : -m_values[static_cast<int>(half - folded)];
  }

 private:
  int m_nodes;
  CNuDoubleArray m_values;
};

}  // namespace

CNuChebyshevPolynomial::CNuChebyshevPolynomial(int n)
    : CNuAlgebra(NuTypeChebyshevPolynomial),
      m_polynomial(n >= 0 ? ChebyshevInPowers(n)
                          : throw CNuConstructionException(NuConstructionNegativeSize, "CNuChebyshevPolynomial",
                                                           "degree", 0, 0)) {}

CNuChebyshevPolynomial::~CNuChebyshevPolynomial() = default;

CNuChebyshevPolynomialExpression::CNuChebyshevPolynomialExpression(int n)
    : CNuAlgebra(NuTypeChebyshevPolynomialExpression), m_degree(n) {
  if (n < 0)
    throw CNuConstructionException(NuConstructionNegativeSize, "CNuChebyshevPolynomialExpression", "degree", 0, 0);
}

CNuChebyshevPolynomialExpression::~CNuChebyshevPolynomialExpression() = default;

void CNuChebyshevPolynomialExpression::FitMinMax(double a, double b, double (*f)(double)) {
  const bool sound = f != nullptr && a < b && std::isfinite(b - a);
  if (!sound) FailOperation(NuOperationData, kDataChecking, kFit);
  if (m_degree > INT_MAX / 2 - kMoreTerms) throw CNuMemoryException(kFit);
  const int count = m_degree + kMoreTerms + 1;
  const Cosines cosines(count);
  const double h = 0.5 * b - 0.5 * a;
  const double m = 0.5 * b + 0.5 * a;
  CNuDoubleArray samples(count);
  for (int k = 0; k < count; ++k) samples.Add(f(std::clamp(cosines(2LL * k + 1) * h + m, a, b)));

  CNuPolynomial coefficients(count - 1);
  for (int j = 0; j < count; ++j) {
    // The terms of a node and of its mirror image together: even and odd functions get exact zeros.
    const double parity = j % 2 == 0 ? 1.0 : -1.0;
    double sum = count % 2 == 0 ? 0.0 : samples[count / 2] * cosines(1LL * j * count);
    for (int k = 0; k < count / 2; ++k) {
      sum += (samples[k] + parity * samples[count - 1 - k]) * cosines(j * (2LL * k + 1));
    }
    coefficients[j] = 2.0 / count * sum;
  }
  m_a = a;
  m_b = b;
  m_coefficients = std::move(coefficients);
}

// The differences from the ends are as accurate as x, however far the interval lies from 0, and exact at the ends.
double CNuChebyshevPolynomialExpression::Place(double x) const {
  return ((x - m_a) + (x - m_b)) / (m_b - m_a);
}

double CNuChebyshevPolynomialExpression::ValueAt(double x) const {
  if (!IsFitted()) return 0.0;
  if (x < m_a || x > m_b) {
    throw CNuOperationException(NuOperationOutside, kDataChecking, "CNuChebyshevPolynomialExpression::ValueAt()", 0, 0,
                                m_a, m_b);
  }
  const double* c = m_coefficients.GetData();
  const double y = Place(x);
  double d = 0.0;
  double dd = 0.0;
  for (int j = m_degree; j >= 1; --j) dd = std::exchange(d, 2.0 * y * d - dd + c[j]);
  return y * d - dd + 0.5 * c[0];
}

// The coefficients of the derivative, c'_(j-1) = c'_(j+1) + 2j c_j, come in the order in which the summation needs
// them.
double CNuChebyshevPolynomialExpression::DerivativeAt(double x) const {
  if (!IsFitted()) return 0.0;
  if (x < m_a || x > m_b)
    FailOperation(NuOperationOutside, kDataChecking, "CNuChebyshevPolynomialExpression::DerivativeAt()");
  const double* c = m_coefficients.GetData();
  const double y = Place(x);
  double d = 0.0;
  double dd = 0.0;
  double slope = 0.0;
  double nextSlope = 0.0;
  for (int j = m_degree; j >= 1; --j) {
    nextSlope = std::exchange(slope, nextSlope + 2.0 * j * c[j]);
    if (j > 1) dd = std::exchange(d, 2.0 * y * d - dd + slope);
  }
  return (y * d - dd + 0.5 * slope) * 2.0 / (m_b - m_a);
}

CNuPolynomial CNuChebyshevPolynomialExpression::ToPolynomial() const {
  if (!IsFitted()) return CNuPolynomial(0);
  CNuPolynomial powers(m_degree), work(m_degree);
  SeriesToPowers(0.5 * m_coefficients[0], m_coefficients.GetData(), m_degree,
                 {0.5 * m_a + 0.5 * m_b, 2.0 / (m_b - m_a)}, powers.GetData(), work.GetData());
  return powers;
}
