#include "nu/numerics/alg_equ.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "nu/engine/base/sort.h"
#include "nu/engine/base/workspace.h"
#include "nu/engine/roots/polynomial_roots.h"
#include "nu/foundation/double_array.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/tolerances.h"
#include "nu/linalg/complex_array.h"
#include "nu/numerics/polynomial.h"

using namespace nu::internal;

namespace {

constexpr int kFewRoots = 30;

RootRules HostRules() {
  return {NuGetTol(), NuGetSqrtTol(), NuGetZero(), NuGetLarge(), NuGetLengthTol()};
}

// Room for the roots of one equation.
class RootRoom {
 public:
  explicit RootRoom(int count) : m_heap(count > kFewRoots ? new FoundRoot[static_cast<std::size_t>(count)] : nullptr) {}
  FoundRoot* Data() { return m_heap ? m_heap.get() : m_few; }

 private:
  std::unique_ptr<FoundRoot[]> m_heap;
  FoundRoot m_few[kFewRoots];
};

// The effective degree is negative where a coefficient is not finite.
void RequireFinite(int effectiveDegree) {
  if (effectiveDegree < 0) FailOperation(NuOperationFailed, "calculation", "CNuAlgEqu::Solve()");
}

bool IsReal(const FoundRoot& x) {
  return x.im == 0.0;
}

// A root moves left past those with a larger real part only.
void SortByRealPart(FoundRoot* roots, int count) {
  for (int i = 1; i < count; ++i) {
    const FoundRoot x = roots[i];
    int j = i;
    for (; j > 0 && roots[j - 1].re > x.re; --j) roots[j] = roots[j - 1];
    roots[j] = x;
  }
}

}  // namespace

CNuAlgEqu::CNuAlgEqu() : CNuAlgebra(NuTypeAlgEqu), m_roots(m_local), m_local{} {}

CNuAlgEqu::CNuAlgEqu(const CNuAlgEqu& other) : CNuAlgEqu() {
  const int size = other.m_realCount + 2 * other.m_complexCount;
  if (size > kLocal) {
    m_roots = WithMemory("CNuAlgEqu::Copy()", [&] { return new double[static_cast<std::size_t>(size)]; });
  }
  std::copy_n(other.m_roots, size, m_roots);
  m_realCount = other.m_realCount;
  m_complexCount = other.m_complexCount;
}

CNuAlgEqu::CNuAlgEqu(CNuAlgEqu&& other) noexcept : CNuAlgEqu() {
  Take(other);
}

CNuAlgEqu& CNuAlgEqu::operator=(const CNuAlgEqu& other) {
  if (this != &other) *this = CNuAlgEqu(other);
  return *this;
}

CNuAlgEqu& CNuAlgEqu::operator=(CNuAlgEqu&& other) noexcept {
  if (this == &other) return *this;
  Release();
  Take(other);
  return *this;
}

CNuAlgEqu::~CNuAlgEqu() {
  Release();
}

void CNuAlgEqu::Release() noexcept {
  if (m_roots != m_local) delete[] m_roots;
  m_roots = m_local;
  m_realCount = m_complexCount = 0;
}

void CNuAlgEqu::Take(CNuAlgEqu& other) noexcept {
  std::copy_n(other.m_local, kLocal, m_local);
  if (other.m_roots != other.m_local) m_roots = std::exchange(other.m_roots, other.m_local);
  m_realCount = std::exchange(other.m_realCount, 0);
  m_complexCount = std::exchange(other.m_complexCount, 0);
}

void CNuAlgEqu::Store(const FoundRoot* roots, int count) {
  int realCount = 0;
  int complexCount = 0;
  for (int i = 0; i < count; ++i) (IsReal(roots[i]) ? realCount : complexCount) += roots[i].pair ? 2 : 1;
  const int size = realCount + 2 * complexCount;
  double* fresh = size > kLocal ? new double[static_cast<std::size_t>(size)] : nullptr;
  Release();
  if (fresh != nullptr) m_roots = fresh;
  m_realCount = realCount;
  m_complexCount = complexCount;

  double* real = m_roots;
  double* complex = m_roots + realCount;
  // Adding 0 takes the sign from a zero.
  for (int i = 0; i < count; ++i) {
    const FoundRoot x = {roots[i].re + 0.0, roots[i].im + 0.0, roots[i].pair};
    for (const double im : {x.im, -x.im}) {
      if (IsReal(x)) {
        *real++ = x.re;
      } else {
        *complex++ = x.re;
        *complex++ = im;
      }
      if (!x.pair) break;
    }
  }
  nu::internal::Sort(realCount, m_roots);
}

void CNuAlgEqu::Solve(const CNuPolynomial& p) {
  WithMemory("CNuAlgEqu::Solve()", [&] {
    Coefficients equation = {p.GetData(), nullptr, p.GetDegree()};
    equation.degree = EffectiveDegree(equation, NuGetZero());
    RequireFinite(equation.degree);
    if (equation.degree < 1) return Release();
    RootRoom room(equation.degree);
    const int count = FindRoots(equation, true, HostRules(), room.Data());
    SortByRealPart(room.Data(), count);
    Store(room.Data(), count);
  });
}

void CNuAlgEqu::Solve(const CNuComplexArray& coefficients) {
  WithMemory("CNuAlgEqu::Solve()", [&] {
    const int size = coefficients.GetSize();
    if (size < 2) return;
    Workspace<2 * (kFewRoots + 1)> parts(2 * static_cast<std::size_t>(size));
    double* re = parts.Take(static_cast<std::size_t>(size));
    double* im = parts.Take(static_cast<std::size_t>(size));
    bool real = true;
    for (int i = 0; i < size; ++i) {
      re[i] = coefficients.GetData()[i].r();
      im[i] = coefficients.GetData()[i].i();
      real = real && im[i] == 0.0;
    }
    Coefficients equation = {re, real ? nullptr : im, size - 1};
    equation.degree = EffectiveDegree(equation, NuGetZero());
    RequireFinite(equation.degree);
    if (equation.degree == 0) return;
    RootRoom room(equation.degree);
    const int count = FindRoots(equation, false, HostRules(), room.Data());
    SortByRealPart(room.Data(), count);
    Store(room.Data(), count);
  });
}

CNuDoubleArray CNuAlgEqu::GetRealRoots() const {
  CNuDoubleArray roots(m_realCount);
  for (int i = 0; i < m_realCount; ++i) roots.Add(m_roots[i]);
  return roots;
}

CNuComplexArray CNuAlgEqu::GetComplexRoots() const {
  CNuComplexArray roots(m_complexCount);
  const double* part = m_roots + m_realCount;
  for (int i = 0; i < m_complexCount; ++i) roots.Add(CNuComplex(part[2 * i], part[2 * i + 1]));
  return roots;
}

CNuDoubleArray CNuAlgEqu::GetDistinctRealRoots() const {
  CNuDoubleArray roots(m_realCount);
  for (int i = 0; i < m_realCount; ++i) {
    if (i == 0 || m_roots[i] > roots.Last()) roots.Add(m_roots[i]);
  }
  return roots;
}
