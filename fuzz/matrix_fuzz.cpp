// Any elements: every decomposition and every solve ends in a result or in an exception of the library.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "nu/nu.h"

namespace {

template<class Operation>
void Ends(Operation operation) {
  try {
    operation();
  } catch (const CNuException&) {
  }
}

void Decompose(const CNuMatrix& a) {
  Ends([&] {
    CNuMatrix u(a), v;
    CNuVector w;
    u.SVD(&w, &v);
  });
  Ends([&] {
    CNuMatrix l, u, p;
    a.LUD2(&l, &u, &p);
  });
  ENuStatus status{};
  CNuVector values;
  CNuMatrix vectors;
  Ends([&] { a.Determinant(); });
  Ends([&] { CNuMatrix(a).Inverse(&status); });
  Ends([&] { a.EigenValuesVectors(&status, &values, &vectors); });
  Ends([&] { (a + a.Transpose()).EigenValuesVectors(&status, &values, &vectors); });
}

// The imaginary parts are the rows of the real parts in reverse order.
void DecomposeComplex(const CNuMatrix& a) {
  CNuMatrix turned(a);
  std::reverse(turned.GetData(), turned.GetData() + a.GetRowSize());
  const CNuComplexMatrix m(a, turned);
  CNuComplexMatrix q(1, 1), t(1, 1);
  Ends([&] { m.QR(&q, &t); });
  Ends([&] { m.Schur(&q, &t); });
  Ends([&] { m.Hessenberg(&q, &t); });
  Ends([&] { m.EigenValues(); });
}

void Solve(const CNuMatrix& a, const CNuVector& b) {
  for (int method : {0, 1}) {
    CNuLinearEquSys plain(method), singular(method), nonnegative(method);
    singular.SetSingularSolvable();
    nonnegative.SetNonnegative();
    for (CNuLinearEquSys* system : {&plain, &singular, &nonnegative}) {
      Ends([&] { system->Solve(a, b); });
      Ends([&] { system->SetRightHandSide(b); });
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::size_t count = size / 8;
  for (int columns = 1; columns <= 6; ++columns) {
    const int rows = static_cast<int>(count) / (columns + 1);
    if (rows < 1) return 0;
    CNuMatrix a(rows, columns);
    CNuVector b(rows);
    for (int i = 0; i < rows; ++i) {
      for (int j = 0; j <= columns; ++j) {
        std::memcpy(j < columns ? &a.Element(i, j) : &b[i], data + (i * (columns + 1) + j) * 8, 8);
      }
    }
    Decompose(a);
    DecomposeComplex(a);
    Solve(a, b);
    if (rows < columns) continue;
    const CNuMatrix square = a.SubMatrix(0, columns - 1, 0, columns - 1);
    Decompose(square);
    DecomposeComplex(square);
  }
  return 0;
}
