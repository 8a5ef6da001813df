#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/base/workspace.h"
#include "nu/engine/linear/eigen_general.h"
#include "nu/engine/linear/eigen_symmetric.h"
#include "nu/engine/linear/householder.h"
#include "nu/engine/linear/lu.h"
#include "nu/engine/linear/lu_singularity.h"
#include "nu/engine/linear/matmul.h"
#include "nu/engine/linear/svd.h"
#include "nu/foundation/int_array.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/foundation/tolerances.h"
#include "nu/linalg/matrix.h"
#include "nu/linalg/vector.h"

using namespace nu::internal;

// The operations of a matrix that need more than one pass over its elements; the methods are in engine/linear.
//
// A B: products of packed blocks that stay in the cache (K. Goto, R. A. van de Geijn, ACM TOMS 34, 2008), each element
// summed in increasing inner index; matmul.cpp.
//
// P A = L U: Gaussian elimination with partial pivoting, by recursion over the columns (S. Toledo, SIAM J. Matrix Anal.
// Appl. 18, 1997); lu.cpp. The determinant is the sign of P times the product of the diagonal of U. The inverse solves
// L U X = P; it also refuses a matrix that relative changes of its elements by n NuGetTol() can make singular;
// lu_singularity.cpp.
//
// A = U diag(w) V^T: Householder reduction to bidiagonal form, then QR sweeps (G. H. Golub, C. Reinsch, Numerische
// Mathematik 14, 1970); svd.cpp. A tall A is first reduced to a triangle in panels of rows; tall_factor.cpp.
//
// A x = lambda x: for a symmetric A, Householder reduction to tridiagonal form, then QL sweeps; eigen_symmetric.cpp.
// Otherwise balancing, Hessenberg form, QR sweeps with double shifts and back substitution; eigen_general.cpp.

namespace {

constexpr int kSmall = 16;
using SmallBlock = Workspace<kSmall * kSmall>;

constexpr const char* kCalculation = "calculation";

// A matrix that has been moved from has no rows and is refused as well.
void RequireSquare(const CNuMatrix& a, const char* where) {
  if (a.GetRowSize() != a.GetColumnSize() || a.GetRowSize() < 1) FailOperation(NuOperationMatrix, kCalculation, where);
}

std::size_t ElementCount(const CNuMatrix& a) {
  return static_cast<std::size_t>(a.GetRowSize()) * static_cast<std::size_t>(a.GetColumnSize());
}

// Hosts may exchange row pointers; only untouched ones show the elements as one block.
bool IsOneBlock(const CNuMatrix& a) {
  const double* const* rows = a.GetData();
  for (int i = 1; i < a.GetRowSize(); ++i)
    if (rows[i] != rows[i - 1] + a.GetColumnSize()) return false;
  return true;
}

void CopyOut(const CNuMatrix& a, double* block) {
  for (int i = 0; i < a.GetRowSize(); ++i, block += a.GetColumnSize())
    std::copy_n(a.GetData()[i], a.GetColumnSize(), block);
}

// The elements of a matrix, row after row: where they are, or copied. Store copies back those that are changed.
template<class Matrix>
class ElementsOf {
 public:
  using Element = std::conditional_t<std::is_const_v<Matrix>, const double, double>;

  explicit ElementsOf(Matrix& a)
      : m_matrix(a), m_isDirect(IsOneBlock(a)), m_copy(m_isDirect ? 0 : ElementCount(a)), m_data(a.GetData()[0]) {
    if (m_isDirect) return;
    CopyOut(a, m_copy.Data());
    m_data = m_copy.Data();
  }
  Element* Data() const { return m_data; }
  void Store() {
    const int columns = m_matrix.GetColumnSize();
    for (int i = 0; !m_isDirect && i < m_matrix.GetRowSize(); ++i)
      std::copy_n(m_data + static_cast<std::ptrdiff_t>(i) * columns, columns, m_matrix.GetData()[i]);
  }

 private:
  Matrix& m_matrix;
  bool m_isDirect;
  SmallBlock m_copy;
  Element* m_data;
};

using Elements = ElementsOf<const CNuMatrix>;
using MutableElements = ElementsOf<CNuMatrix>;

// The last call of an eigen operation and its result. The mutex is constant-initialised and the entries are never
// freed, so that the operations serve from the first static constructor to the last static destructor. The tolerance is
// part of the key: it decides which algorithm is used, and other threads may have another one.
template<class Result>
struct EigenCache {
  CNuMatrix matrix;
  double tol;
  ENuStatus status;
  Result result;
};
std::mutex cacheMutex;
constinit EigenCache<CNuVector>* lastValues = nullptr;
constinit EigenCache<CNuMatrix>* lastVectors = nullptr;

// Elements within NuGetTol() squared. A matrix whose elements are themselves that small is compared by its own size:
// otherwise it would be taken for any other of its kind.
bool IsCached(const CNuMatrix& cached, const CNuMatrix& a, double tol) {
  if (a.GetRowSize() != cached.GetRowSize() || a.GetColumnSize() != cached.GetColumnSize()) return false;
  const Elements elements(a);
  const double largest = MeasureBlock(elements.Data(), a.GetRowSize(), a.GetColumnSize(), a.GetColumnSize()).largest;
  return a.IsEqual(cached, std::min(tol * tol, tol * largest)) == NuTrue;
}

template<class Result, class Compute>
Result ThroughCache(const CNuMatrix& a, EigenCache<Result>*& last, ENuStatus* status, const Compute& compute) {
  const double tol = NuGetTol();
  {
    const std::lock_guard lock(cacheMutex);
    if (last != nullptr && last->tol == tol && IsCached(last->matrix, a, tol)) {
      Output(status, last->status);
      return last->result;
    }
  }
  ENuStatus reached = NuStatusNone;
  Output(status, reached);
  Result result = compute(&reached);
  Output(status, reached);
  // Everything that can fail comes before the exchange.
  std::unique_ptr<EigenCache<Result>> entry(new EigenCache<Result>{a, tol, reached, result});
  {
    const std::lock_guard lock(cacheMutex);
    EigenCache<Result>* old = last;
    last = entry.release();
    entry.reset(old);
  }
  return result;
}

// Whether the matrix is symmetric within rounding. Elements are compared within NuGetTol(), and within n * NuGetTol()
// times the largest element of their two rows where that is more: a product such as R^T D R is off by so much. For a
// matrix of elements below 1 / n the first bound shrinks with the matrix. A small block beside large elements is judged
// by its own rows.
bool IsSymmetricEnough(const CNuMatrix& a) {
  const int n = a.GetRowSize();
  const double tol = NuGetTol();
  Workspace<kSmall> sizes(static_cast<std::size_t>(n));
  double* size = sizes.Data();
  double largest = 0.0;
  for (int i = 0; i < n; ++i) {
    size[i] = 0.0;
    for (int j = 0; j < n; ++j) size[i] = std::max(size[i], std::fabs(a.GetData()[i][j]));
    largest = std::max(largest, size[i]);
  }
  if (largest == 0.0) return a.IsSymmetric(HUGE_VAL) == NuTrue;
  const double least = tol * std::min(1.0, n * largest);
  for (int i = 0; i < n; ++i) {
    for (int j = i + 1; j < n; ++j) {
      const double difference = std::fabs(a.GetData()[i][j] - a.GetData()[j][i]);
      if (!(difference < std::max(least, n * tol * std::max(size[i], size[j])))) return false;
    }
  }
  return true;
}

}  // namespace

CNuMatrix CNuMatrix::operator*(const CNuMatrix& b) const {
  return WithMemory("CNuMatrix::operator*()", [&] {
    if (m_columns != b.m_rows) FailOperation(NuOperationSizeMismatch, "operator*", "CNuMatrix");
    CNuMatrix result(m_rows, b.m_columns, Unset{});
    const Elements left(*this);
    const Elements right(b);
    Multiply({left.Data(), m_columns}, {right.Data(), b.m_columns}, result.m_data[0], b.m_columns, m_rows, m_columns,
             b.m_columns);
    return result;
  });
}

void CNuMatrix::LUD(CNuIntArray* index, int* d, int* status) {
  WithMemory("CNuMatrix::LUD()", [&] {
    constexpr const char* where = "CNuMatrix::LUD()";
    RequireSquare(*this, where);
    CNuIntArray rows(m_rows);
    for (int i = 0; i < m_rows; ++i) rows.Add(i);
    MutableElements a(*this);
    const LuResult lu = FactorLu(a.Data(), m_rows, m_rows, rows.GetData(), NuGetTol(), NuGetZero());
    a.Store();
    Output(index, std::move(rows));
    Output(d, lu.parity);
    Output(status, lu.singular ? 1 : 0);
    if (lu.singular) FailOperation(NuOperationMatrix, kCalculation, where);
  });
}

void CNuMatrix::LUD2(CNuMatrix* L, CNuMatrix* U, CNuMatrix* P) const {
  CNuMatrix factors(*this);
  CNuIntArray index(m_rows);
  int parity = 1;
  int status = 0;
  factors.LUD(&index, &parity, &status);
  CNuMatrix lower = Identity(m_rows);
  CNuMatrix upper(m_rows, m_rows);
  CNuMatrix permutation(m_rows, m_rows);
  for (int i = 0; i < m_rows; ++i) {
    std::copy_n(factors.m_data[i], i, lower.m_data[i]);
    std::copy(factors.m_data[i] + i, factors.m_data[i] + m_rows, upper.m_data[i] + i);
    permutation.m_data[i][index.GetData()[i]] = 1.0;
  }
  Output(L, std::move(lower));
  Output(U, std::move(upper));
  Output(P, std::move(permutation));
}

void CNuMatrix::SVD(CNuVector* w, CNuMatrix* v) {
  WithMemory("CNuMatrix::SVD()", [&] {
    CNuVector values(m_columns);
    CNuMatrix right(m_columns, m_columns);
    MutableElements a(*this);
    const bool converged = DecomposeSingular(a.Data(), m_rows, m_columns, m_columns, values.GetData(), right.m_data[0],
                                             m_columns, NuGetTol(), NuGetZero());
    if (!converged) FailOperation(NuOperationFailed, kCalculation, "CNuMatrix::SVD()");
    a.Store();
    Output(w, std::move(values));
    Output(v, std::move(right));
  });
}

double CNuMatrix::Determinant() const {
  return WithMemory("CNuMatrix::Determinant()", [&] {
    RequireSquare(*this, "CNuMatrix::Determinant()");
    SmallBlock a(ElementCount(*this));
    CopyOut(*this, a.Data());
    if (!MeasureBlock(a.Data(), m_rows, m_rows, m_rows).finite) return kQuietNaN;
    SmallArray<int, kSmall> rows(static_cast<std::size_t>(m_rows));
    // Only exact zeros make it 0: small pivots may meet large ones in the product.
    const LuResult lu = FactorLu(a.Data(), m_rows, m_rows, rows.Data(), 0.0, 0.0);
    return lu.singular ? 0.0 : LuDeterminant(a.Data(), m_rows, m_rows, lu.parity);
  });
}

CNuMatrix CNuMatrix::Inverse(ENuStatus* status) {
  return WithMemory("CNuMatrix::Inverse()", [&] {
    constexpr const char* where = "CNuMatrix::Inverse()";
    Output(status, NuStatusNone);
    RequireSquare(*this, where);
    SmallBlock a(ElementCount(*this));
    CopyOut(*this, a.Data());
    SmallArray<int, kSmall> rows(static_cast<std::size_t>(m_rows));
    const double tol = NuGetTol();
    const LuResult lu = FactorLu(a.Data(), m_rows, m_rows, rows.Data(), tol, NuGetZero());
    if (IsSingularToRounding(m_data, a.Data(), m_rows, m_rows, rows.Data(), lu, tol))
      FailOperation(NuOperationMatrix, kCalculation, where);
    // The columns of the inverse solve A x = e(k); all of them at once.
    CNuMatrix inverse(m_rows, m_rows);
    for (int i = 0; i < m_rows; ++i) inverse.m_data[i][rows.Data()[i]] = 1.0;
    SolveLuPermuted(a.Data(), m_rows, m_rows, inverse.m_data[0], m_rows, m_rows);
    Output(status, NuStatusComputed);
    return inverse;
  });
}

void CNuMatrix::EigenValuesVectors(ENuStatus* status, CNuVector* values, CNuMatrix* vectors) const {
  WithMemory("CNuMatrix::EigenValuesVectors()", [&] {
    Output(status, NuStatusNone);
    RequireSquare(*this, "CNuMatrix::EigenValuesVectors()");
    Output(status, NuStatusComputed);
    const int n = m_rows;
    CNuVector real(n);
    CNuMatrix columns(n, n);
    const Elements a(*this);
    bool converged = false;
    bool complex = false;
    if (IsSymmetricEnough(*this)) {
      converged = DecomposeSymmetric(a.Data(), n, n, real.GetData(), columns.m_data[0], n);
    } else {
      Workspace<kSmall> imaginary(static_cast<std::size_t>(n));
      converged = DecomposeGeneral(a.Data(), n, n, real.GetData(), imaginary.Data(), columns.m_data[0], n);
      complex = converged && std::any_of(imaginary.Data(), imaginary.Data() + n, [](double im) { return im != 0.0; });
    }
    if (!converged) FailOperation(NuOperationFailed, kCalculation, "CNuMatrix::EigenValues()");
    if (complex) Output(status, NuStatusComplex);
    Output(values, std::move(real));
    Output(vectors, std::move(columns));
  });
}

CNuVector CNuMatrix::EigenValues(ENuStatus* status) {
  return WithMemory("CNuMatrix::EigenValues()", [&] {
    return ThroughCache<CNuVector>(*this, lastValues, status, [this](ENuStatus* reached) {
      CNuVector values;
      EigenValuesVectors(reached, &values, nullptr);
      return values;
    });
  });
}

CNuMatrix CNuMatrix::EigenVectors(ENuStatus* status) {
  return WithMemory("CNuMatrix::EigenVectors()", [&] {
    return ThroughCache<CNuMatrix>(*this, lastVectors, status, [this](ENuStatus* reached) {
      CNuMatrix vectors;
      EigenValuesVectors(reached, nullptr, &vectors);
      return vectors;
    });
  });
}
