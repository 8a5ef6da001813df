#include "nu/linalg/linear_equ_sys.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>

#include "nu/engine/base/workspace.h"
#include "nu/engine/linear/lu.h"
#include "nu/engine/linear/lu_singularity.h"
#include "nu/engine/linear/nnls.h"
#include "nu/engine/linear/svd.h"
#include "nu/engine/linear/tall_qr.h"
#include "nu/foundation/internal/failures.h"
#include "nu/linalg/matrix.h"

using namespace nu::internal;

namespace {

// The modes, as SetNonnegative and its neighbours leave them; 0 is none.
constexpr int kEquality = 1;
constexpr int kInequality = 2;
constexpr int kBothConstraints = 3;
constexpr int kNonnegative = 4;
constexpr int kLeastDistance = 5;
constexpr int kSingularSolvable = 6;

constexpr const char* kClass = "CNuLinearEquSys";
constexpr const char* kSolving = "solving a set of equations";

// Up to this many unknowns the factors need no memory of their own.
constexpr int kSmall = 10;

// The test for full rank compares Frobenius norms, which are off by the rounding of a substitution only.
constexpr double kRankMargin = 2.0;

// Solves R x = d for the n x n upper triangle R, row by row; x may be d.
void SolveTriangle(const double* r, int n, const double* d, double* x) {
  for (int i = n - 1; i >= 0; --i) {
    const double* row = r + static_cast<std::ptrdiff_t>(i) * n;
    double sum = d[i];
    for (int k = i + 1; k < n; ++k) sum -= row[k] * x[k];
    x[i] = sum / row[i];
  }
}

// Whether no singular value of the triangle can be as small as `tolerance` times the largest: the Frobenius norms of R
// and of its inverse bound them. It spares the decomposition wherever the rank is beyond doubt; a NaN leaves the doubt.
bool IsSurelyRegular(const double* r, int n, double tolerance) {
  SmallArray<double, kSmall> column(static_cast<std::size_t>(n));
  double* y = column.Data();
  double square = 0.0;
  double inverseSquare = 0.0;
  for (int j = 0; j < n; ++j) {
    for (int i = j; i >= 0; --i) {
      const double* row = r + static_cast<std::ptrdiff_t>(i) * n;
      double sum = i == j ? 1.0 : 0.0;
      for (int k = i + 1; k <= j; ++k) sum -= row[k] * y[k];
      y[i] = sum / row[i];
      square += row[j] * row[j];
      inverseSquare += y[i] * y[i];
    }
  }
  return kRankMargin * tolerance * std::sqrt(square) * std::sqrt(inverseSquare) < 1.0;
}

}  // namespace

namespace nu::internal {

// What a solve keeps. Never changes after its making.
class EquationFactors {
 public:
  EquationFactors(int rows, int unknowns) : m_rows(rows), m_unknowns(unknowns) {}
  virtual ~EquationFactors() = default;

  int Rows() const { return m_rows; }
  virtual void Substitute(const double* b, double* x) const = 0;
  CNuVector Substitute(const CNuVector& b) const {
    CNuVector x(m_unknowns);
    Substitute(b.GetData(), x.GetData());
    return x;
  }

 protected:
  int m_rows;
  int m_unknowns;
};

class ExactFactors final : public EquationFactors {
 public:
  explicit ExactFactors(const CNuMatrix& a)
      : EquationFactors(a.GetRowSize(), a.GetRowSize()),
        m_pivots(static_cast<std::size_t>(m_rows)),
        m_lu(static_cast<std::size_t>(m_rows) * m_rows) {
    double* row = m_lu.Data();
    for (int i = 0; i < m_rows; ++i) row = std::copy_n(a.GetData()[i], m_rows, row);
    const double tol = NuGetTol();
    const LuResult lu = FactorLu(m_lu.Data(), m_rows, m_rows, m_pivots.Data(), tol, NuGetZero());
    m_singular = IsSingularToRounding(a.GetData(), m_lu.Data(), m_rows, m_rows, m_pivots.Data(), lu, tol);
  }

  bool IsSingular() const { return m_singular; }
  using EquationFactors::Substitute;
  void Substitute(const double* b, double* x) const override {
    SolveLu(m_lu.Data(), m_rows, m_rows, m_pivots.Data(), b, x);
  }

 private:
  bool m_singular;
  SmallArray<int, kSmall> m_pivots;
  SmallArray<double, kSmall * kSmall> m_lu;
};

// A = Q R with R from the reduction of the rows; where the rank is in doubt also R = U diag(w) V^T. With fewer rows
// than unknowns Q is the identity and R is A itself.
class LeastSquaresFactors final : public EquationFactors {
 public:
  // Factors and solves for the first right-hand side, which travels with the rows.
  LeastSquaresFactors(const CNuMatrix& a, const CNuVector& b, double* x)
      : EquationFactors(a.GetRowSize(), a.GetColumnSize()),
        m_innerRows(std::min(m_rows, m_unknowns)),
        m_triangle(static_cast<std::size_t>(m_innerRows) * m_unknowns) {
    if (m_rows < m_unknowns) {
      double* row = m_triangle.Data();
      for (int i = 0; i < m_rows; ++i) row = std::copy_n(a.GetData()[i], m_unknowns, row);
      Decompose();
      SubstituteInner(b.GetData(), x);
    } else {
      Reduce(a, b, x);
      if (!IsSurelyRegular(m_triangle.Data(), m_unknowns, NuGetTol() * m_rows)) Decompose();
      SubstituteInner(x, x);
    }
  }

  using EquationFactors::Substitute;
  void Substitute(const double* b, double* x) const override {
    if (!m_reflectors) return SubstituteInner(b, x);
    m_reflectors->Apply(b, x);
    SubstituteInner(x, x);
  }

 private:
  struct Singular {
    Singular(int rows, int unknowns)
        : u(static_cast<std::size_t>(rows) * unknowns),
          w(static_cast<std::size_t>(unknowns)),
          v(static_cast<std::size_t>(unknowns) * unknowns) {}
    SmallArray<double, kSmall * kSmall> u;
    SmallArray<double, kSmall> w;
    SmallArray<double, kSmall * kSmall> v;
  };

  // Leaves Q^T b in x.
  void Reduce(const CNuMatrix& a, const CNuVector& b, double* x) {
    m_reflectors.emplace(m_unknowns, m_rows);
    TallReduction reduction(m_unknowns + 1, m_rows);
    reduction.KeepReflectors(&*m_reflectors);
    reduction.AddRows(a.GetData(), b.GetData(), m_rows);
    reduction.Finish();
    double* to = m_triangle.Data();
    for (int i = 0; i < m_unknowns; ++i) {
      x[i] = reduction.R(i, m_unknowns);
      for (int j = 0; j < m_unknowns; ++j) *to++ = j < i ? 0.0 : reduction.R(i, j);
    }
  }

  // The singular values of R are those of A, and so is the dimension that goes with the tolerance. Without a vanishing
  // value the triangle itself is the better way to the solution: its errors do not mix columns of different size.
  void Decompose() {
    m_singular = std::make_unique<Singular>(m_innerRows, m_unknowns);
    Singular& s = *m_singular;
    std::copy_n(m_triangle.Data(), static_cast<std::ptrdiff_t>(m_innerRows) * m_unknowns, s.u.Data());
    const double share = static_cast<double>(std::max(m_rows, m_unknowns)) / m_unknowns;
    if (!DecomposeSingular(s.u.Data(), m_innerRows, m_unknowns, m_unknowns, s.w.Data(), s.v.Data(), m_unknowns,
                           NuGetTol() * share, NuGetZero())) {
      FailOperation(NuOperationFailed, "calculation", "CNuMatrix::SVD()");
    }
    const double* w = s.w.Data();
    if (m_rows >= m_unknowns && std::none_of(w, w + m_unknowns, [](double value) { return value == 0.0; }))
      m_singular.reset();
  }

  // d has as many components as R has rows; x may be d.
  void SubstituteInner(const double* d, double* x) const {
    if (!m_singular) return SolveTriangle(m_triangle.Data(), m_unknowns, d, x);
    SmallArray<double, kSmall> shares(static_cast<std::size_t>(m_unknowns));
    const Singular& s = *m_singular;
    for (int k = 0; k < m_unknowns; ++k) {
      double sum = 0.0;
      for (int i = 0; i < m_innerRows; ++i) sum += s.u.Data()[static_cast<std::ptrdiff_t>(i) * m_unknowns + k] * d[i];
      shares.Data()[k] = s.w.Data()[k] == 0.0 ? 0.0 : sum / s.w.Data()[k];
    }
    for (int i = 0; i < m_unknowns; ++i) {
      const double* row = s.v.Data() + static_cast<std::ptrdiff_t>(i) * m_unknowns;
      x[i] = 0.0;
      for (int k = 0; k < m_unknowns; ++k) x[i] += row[k] * shares.Data()[k];
    }
  }

  int m_innerRows;
  SmallArray<double, kSmall * kSmall> m_triangle;
  std::optional<TallReflectors> m_reflectors;
  std::unique_ptr<Singular> m_singular;
};

}  // namespace nu::internal

CNuLinearEquSys::CNuLinearEquSys(int method) : CNuAlgebra(NuTypeLinearEquSys), m_method(method) {}

CNuLinearEquSys::~CNuLinearEquSys() = default;

void CNuLinearEquSys::Solve(const CNuMatrix& a, const CNuVector& b) {
  WithMemory("CNuLinearEquSys::Solve()", [&] {
    m_solved = NuFalse;
    m_solution = CNuVector();
    m_factors.reset();
    if (a.GetRowSize() != b.GetSize()) FailOperation(NuOperationUnsolvable, kSolving, "CNuLinearEquSys::Solve()");
    if (m_method == 0) return SolveExact(a, b);
    if (m_mode == 0) return SolveLeastSquares(a, b);
    if (m_mode == kNonnegative) return SolveNonnegative(a, b);
    if (m_mode == kLeastDistance) Solve();
  });
}

void CNuLinearEquSys::SolveExact(const CNuMatrix& a, const CNuVector& b) {
  if (a.GetRowSize() != a.GetColumnSize())
    FailOperation(NuOperationUnsupported, "solving an exact set of equations", kClass);
  auto factors = std::make_shared<const ExactFactors>(a);
  if (factors->IsSingular() && m_mode != kSingularSolvable) return;
  m_solution = factors->Substitute(b);
  m_factors = std::move(factors);
  m_solved = NuTrue;
}

void CNuLinearEquSys::SolveLeastSquares(const CNuMatrix& a, const CNuVector& b) {
  CNuVector x(a.GetColumnSize());
  m_factors = std::make_shared<const LeastSquaresFactors>(a, b, x.GetData());
  m_solution = std::move(x);
  m_solved = NuTrue;
}

void CNuLinearEquSys::SolveNonnegative(const CNuMatrix& a, const CNuVector& b) {
  TallReduction reduction(a.GetColumnSize() + 1, a.GetRowSize());
  reduction.AddRows(a.GetData(), b.GetData(), a.GetRowSize());
  reduction.Finish();
  CNuVector x(a.GetColumnSize());
  if (!SolveNonNegative(reduction, NuGetLengthTol(), x.GetData())) return;
  m_solution = std::move(x);
  m_solved = NuTrue;
}

void CNuLinearEquSys::SetRightHandSide(const CNuVector& b) {
  WithMemory("CNuLinearEquSys::SetRightHandSide()", [&] {
    if (!m_factors || m_factors->Rows() != b.GetSize()) {
      FailOperation(NuOperationUnsolvable, kSolving, "CNuLinearEquSys::SetRightHandSide()");
    }
    m_solution = m_factors->Substitute(b);
  });
}

ENuBoolean CNuLinearEquSys::SolutionExists() {
  return m_solved;
}

CNuVector CNuLinearEquSys::GetSolution() const {
  return m_solution;
}

void CNuLinearEquSys::SetNonnegative() {
  m_mode = kNonnegative;
}

void CNuLinearEquSys::SetSingularSolvable() {
  m_mode = kSingularSolvable;
}

void CNuLinearEquSys::SetEquality(const CNuMatrix&, const CNuVector&) {
  m_mode = m_mode == kInequality ? kBothConstraints : kEquality;
  FailOperation(NuOperationUnsupported, "solving a set of equations with equality/inequality constraints", kClass);
}

void CNuLinearEquSys::SetInequality(const CNuMatrix&, const CNuVector&) {
  m_mode = m_mode == kEquality ? kBothConstraints : kInequality;
  FailOperation(NuOperationUnsupported, "solving a set of equations with equality/inequality constraints", kClass);
}

void CNuLinearEquSys::SetLeastDistance() {
  m_mode = kLeastDistance;
  Solve();
}

void CNuLinearEquSys::Solve() {
  FailOperation(NuOperationUnsupported, "least distance programming", kClass);
}
