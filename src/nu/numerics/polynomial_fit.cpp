#include <cmath>

#include "nu/engine/roots/polynomial_least_squares.h"
#include "nu/foundation/double_array.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/numerics/polynomial.h"

// Least squares over the powers 1, x, ..., x^n with the singular value decomposition (Golub and Reinsch, Numerische
// Mathematik 14 (1970) 403): among all polynomials of degree n with the smallest sum of squares, the one with the
// smallest coefficients.

namespace {

using namespace nu::internal;

// Directions of the coefficients that the samples determine worse than this, relative to the best one, are left out.
constexpr double kSingular = 1e-10;

// Coefficients below it are the rounding of 0: they become 0, so that hosts see a polynomial of the degree that the
// samples have. It does not follow the scale of the samples.
constexpr double kVanishing = 1e-10;

}  // namespace

void CNuPolynomial::Fit(const CNuDoubleArray& x, const CNuDoubleArray& y) {
  double residualSum;
  Fit(x, y, &residualSum);
}

void CNuPolynomial::Fit(const CNuDoubleArray& x, const CNuDoubleArray& y, double* residualSum) {
  WithMemory("CNuPolynomial::Fit()", [&] {
    if (x.GetSize() != y.GetSize()) FailOperation(NuOperationSizeMismatch, "data checking", "CNuPolynomial::Fit()");
    if (x.GetSize() == 0)
      throw CNuConstructionException(NuConstructionSize, "CNuMatrix", "number of rows/columns", 0, 0);
    const Samples samples = {x.GetData(), y.GetData(), x.GetSize()};
    const double tolerance = NuGetTol();
    const double cut = tolerance > kSingular ? tolerance : kSingular;
    CNuPolynomial fitted(m_degree);
    if (!SolvePolynomial(samples, m_degree, cut, NuGetZero(), fitted.m_data)) {
      FailOperation(NuOperationFailed, "calculation", "CNuMatrix::SVD()");
    }
    for (int i = 0; i <= m_degree; ++i) {
      if (std::fabs(fitted.m_data[i]) < kVanishing) fitted.m_data[i] = 0.0;
    }
    const double sum = ResidualSum(samples, fitted.m_data, m_degree);
    Take(fitted);
    Output(residualSum, sum < tolerance ? 0.0 : sum);
  });
}
