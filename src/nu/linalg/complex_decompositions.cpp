#include <algorithm>
#include <memory>
#include <utility>

#include "nu/engine/base/workspace.h"
#include "nu/engine/linear/complex_product.h"
#include "nu/engine/linear/complex_reflections.h"
#include "nu/engine/linear/complex_rows.h"
#include "nu/engine/linear/complex_schur.h"
#include "nu/engine/linear/householder.h"
#include "nu/foundation/internal/failures.h"
#include "nu/linalg/complex_matrix.h"
#include "nu/linalg/complex_vector.h"

using namespace nu::internal;

namespace {

// Three blocks of this many rows, and some vectors, stay on the stack.
constexpr int kSmall = 10;
using SmallSpace = Workspace<(3 * kSmall + 6) * 2 * Padded(kSmall)>;

constexpr const char* kCalculation = "calculation";

// A copy of a matrix in working size.
struct Scaled {
  ComplexRows rows;
  double scale;
};

void CopyOut(const CNuComplex* elements, const ComplexRows& a) {
  for (int i = 0; i < a.rows; ++i) {
    double* row = a.Row(i);
    for (int j = 0; j < a.columns; ++j, ++elements) {
      row[j] = elements->r();
      row[a.width + j] = elements->i();
    }
    for (int j = a.columns; j < a.width; ++j) row[j] = row[a.width + j] = 0.0;
  }
}

Scaled TakeScaled(const CNuComplex* elements, const ComplexRows& a, const char* where) {
  CopyOut(elements, a);
  const BlockSize size = MeasureBlock(a.data, a.rows, 2 * a.width, 2 * a.width);
  if (!size.finite) FailOperation(NuOperationFailed, kCalculation, where);
  const double scale = ScaleToWorkingSize(size.largest);
  const std::size_t count = ComplexRows::Size(a.rows, a.columns);
  for (std::size_t k = 0; k < count; ++k) a.data[k] *= scale;
  return {a, scale};
}

CNuComplexMatrix ToMatrix(const Scaled& a) {
  CNuComplexMatrix result(a.rows.rows, a.rows.columns);
  CNuComplex* element = &result.Element(0, 0);
  const double unscale = 1.0 / a.scale;  // a power of two as well
  for (int i = 0; i < a.rows.rows; ++i) {
    for (int j = 0; j < a.rows.columns; ++j) *element++ = {unscale * a.rows.Re(i, j), unscale * a.rows.Im(i, j)};
  }
  return result;
}

CNuComplexMatrix ToTransposedMatrix(const ComplexRows& a) {
  CNuComplexMatrix result(a.columns, a.rows);
  CNuComplex* element = &result.Element(0, 0);
  for (int i = 0; i < a.columns; ++i) {
    for (int j = 0; j < a.rows; ++j) *element++ = {a.Re(j, i), a.Im(j, i)};
  }
  return result;
}

// Up to this many columns the elements are multiplied where they are.
constexpr int kDirect = 4;

void MultiplyDirectly(const CNuComplex* a, const CNuComplex* b, int rows, int inner, int columns, CNuComplex* c) {
  for (int i = 0; i < rows; ++i, a += inner) {
    for (int j = 0; j < columns; ++j) {
      double re = 0.0;
      double im = 0.0;
      for (int k = 0; k < inner; ++k) {
        const CNuComplex& x = a[k];
        const CNuComplex& y = b[k * columns + j];
        re += x.r() * y.r() - x.i() * y.i();
        im += x.r() * y.i() + x.i() * y.r();
      }
      *c++ = {re, im};
    }
  }
}

// Both results exist before the first output changes.
void Store(const Scaled& triangle, CNuComplexMatrix* target, const ComplexRows& qT, CNuComplexMatrix* q) {
  if (target != nullptr && q != nullptr) {
    CNuComplexMatrix upper = ToMatrix(triangle);
    *q = ToTransposedMatrix(qT);
    *target = std::move(upper);
  } else if (q != nullptr) {
    *q = ToTransposedMatrix(qT);
  } else if (target != nullptr) {
    *target = ToMatrix(triangle);
  }
}

// The Hessenberg form of a square matrix and, when wanted, the transposed unitary factor.
class HessenbergForm {
 public:
  HessenbergForm(const CNuComplex* elements, int n, bool wantsQ, const char* where)
      : m_space(3 * ComplexRows::Size(n, n) + ComplexRows::Size(5, n) + static_cast<std::size_t>(n)),
        m_h(TakeScaled(elements, Block(n), where)),
        m_qT(Block(n)) {
    const ComplexRows v = Block(n);
    double* work = m_space.Take(ComplexRows::Size(5, n));
    double* tau = m_space.Take(static_cast<std::size_t>(n));
    ReduceToComplexHessenberg(m_h.rows, v, tau, work);
    if (wantsQ) FormTransposedUnitary(v, tau, std::max(n - 2, 0), 1, m_qT);
  }
  const Scaled& H() const { return m_h; }
  const ComplexRows& QT() const { return m_qT; }

 private:
  ComplexRows Block(int n) { return {m_space.Take(ComplexRows::Size(n, n)), n, n}; }

  SmallSpace m_space;
  Scaled m_h;
  ComplexRows m_qT;
};

// Room for rotations; for small matrices it lies on the stack.
class RotationRoom {
 public:
  explicit RotationRoom(int n)
      : m_heap(n > kSmall ? new ComplexRotation[kWaitingSweeps * static_cast<std::size_t>(n)] : nullptr) {}
  ComplexRotation* Data() { return m_heap ? m_heap.get() : m_local; }

 private:
  std::unique_ptr<ComplexRotation[]> m_heap;
  ComplexRotation m_local[kWaitingSweeps * kSmall];
};

}  // namespace

// A matrix that has been moved from has no rows and is refused as well.
void CNuComplexMatrix::RequireSquare(const char* where) const {
  if (m_rows != m_columns || m_rows < 1) FailOperation(NuOperationMatrix, kCalculation, where);
}

CNuComplexMatrix CNuComplexMatrix::operator*(const CNuComplexMatrix& b) const {
  return WithMemory("CNuComplexMatrix::operator*()", [&] {
    if (m_columns != b.m_rows) FailOperation(NuOperationSizeMismatch, "operator*", "CNuComplexMatrix");
    if (m_columns <= kDirect && b.m_columns <= kDirect) {
      CNuComplexMatrix result(m_rows, b.m_columns);
      MultiplyDirectly(m_data, b.m_data, m_rows, m_columns, b.m_columns, result.m_data);
      return result;
    }
    const std::size_t leftSize = ComplexRows::Size(m_rows, m_columns);
    const std::size_t rightSize = ComplexRows::Size(m_columns, b.m_columns);
    const std::size_t size = ComplexRows::Size(m_rows, b.m_columns);
    SmallSpace space(leftSize + rightSize + size);
    const ComplexRows left(space.Take(leftSize), m_rows, m_columns);
    const ComplexRows right(space.Take(rightSize), m_columns, b.m_columns);
    const ComplexRows product(space.Take(size), m_rows, b.m_columns);
    CopyOut(m_data, left);
    CopyOut(b.m_data, right);
    MultiplyComplex(left, right, product);
    return ToMatrix({product, 1.0});
  });
}

void CNuComplexMatrix::QR(CNuComplexMatrix* q, CNuComplexMatrix* r) const {
  WithMemory("CNuComplexMatrix::QR()", [&] {
    constexpr const char* where = "CNuComplexMatrix::QR()";
    if (m_rows < 1) FailOperation(NuOperationMatrix, kCalculation, where);
    const int count = std::min(m_rows, m_columns);
    const std::size_t qSize = q != nullptr ? ComplexRows::Size(m_rows, m_rows) : 0;
    SmallSpace space(ComplexRows::Size(m_rows, m_columns) + ComplexRows::Size(count, m_rows) + qSize +
                     ComplexRows::Size(1, m_columns) + static_cast<std::size_t>(count));
    const ComplexRows block(space.Take(ComplexRows::Size(m_rows, m_columns)), m_rows, m_columns);
    const Scaled a = TakeScaled(m_data, block, where);
    const ComplexRows v(space.Take(ComplexRows::Size(count, m_rows)), count, m_rows);
    const ComplexRows qT(space.Take(qSize), m_rows, m_rows);
    double* sum = space.Take(ComplexRows::Size(1, m_columns));
    double* tau = space.Take(static_cast<std::size_t>(count));
    ReduceToTriangle(a.rows, v, tau, sum);
    if (q != nullptr) FormTransposedUnitary(v, tau, count, 0, qT);
    MakeDiagonalPositive(a.rows, q != nullptr ? &qT : nullptr);
    Store(a, r, qT, q);
  });
}

void CNuComplexMatrix::Hessenberg(CNuComplexMatrix* q, CNuComplexMatrix* h) const {
  WithMemory("CNuComplexMatrix::Hessenberg()", [&] {
    constexpr const char* where = "CNuComplexMatrix::Hessenberg()";
    RequireSquare(where);
    const HessenbergForm form(m_data, m_rows, q != nullptr, where);
    Store(form.H(), h, form.QT(), q);
  });
}

void CNuComplexMatrix::Schur(CNuComplexMatrix* q, CNuComplexMatrix* t) const {
  WithMemory("CNuComplexMatrix::Schur()", [&] {
    constexpr const char* where = "CNuComplexMatrix::Schur()";
    RequireSquare(where);
    const HessenbergForm form(m_data, m_rows, q != nullptr, where);
    RotationRoom room(m_rows);
    const ComplexRows* qT = q != nullptr ? &form.QT() : nullptr;
    if (!ReduceToSchur(form.H().rows, t != nullptr, qT, room.Data()))
      FailOperation(NuOperationFailed, kCalculation, where);
    Store(form.H(), t, form.QT(), q);
  });
}

CNuComplexVector CNuComplexMatrix::EigenValues() const {
  return WithMemory("CNuComplexMatrix::EigenValues()", [&] {
    constexpr const char* where = "CNuComplexMatrix::EigenValues()";
    RequireSquare(where);
    const HessenbergForm form(m_data, m_rows, false, where);
    RotationRoom room(m_rows);
    const ComplexRows& t = form.H().rows;
    if (!ReduceToSchur(t, false, nullptr, room.Data())) FailOperation(NuOperationFailed, kCalculation, where);
    CNuComplexVector values(m_rows);
    CNuComplex* value = values.GetData();
    const double unscale = 1.0 / form.H().scale;
    for (int i = 0; i < m_rows; ++i) value[i] = {unscale * t.Re(i, i), unscale * t.Im(i, i)};
    std::sort(value, value + m_rows, [](const CNuComplex& a, const CNuComplex& b) {
      return a.r() < b.r() || (a.r() == b.r() && a.i() < b.i());
    });
    return values;
  });
}
