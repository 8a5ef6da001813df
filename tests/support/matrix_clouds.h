#ifndef NU_TESTS_SUPPORT_MATRIX_CLOUDS_H
#define NU_TESTS_SUPPORT_MATRIX_CLOUDS_H

#include <algorithm>
#include <cmath>
#include <limits>

#include "nu/linalg/matrix.h"
#include "nu/linalg/vector.h"
#include "support/clouds.h"

// Seeded matrices of the kinds that break decompositions, and the measures by which one is judged.
namespace nu::test {

inline constexpr double kRoundings = 40.0;  // errors stay below kRoundings * n * kEps * norm

enum class Kind {
  kUniform,
  kGradedUp,
  kGradedDown,
  kGradedColumns,
  kGradedRows,
  kRankDeficient,
  kRepeated,
  kHuge,
  kTiny
};
inline constexpr Kind kAllKinds[] = {Kind::kUniform,       Kind::kGradedUp,   Kind::kGradedDown,
                                     Kind::kGradedColumns, Kind::kGradedRows, Kind::kRankDeficient,
                                     Kind::kRepeated,      Kind::kHuge,       Kind::kTiny};

inline CNuMatrix UniformMatrix(Random& random, int rows, int columns) {
  CNuMatrix m(rows, columns);
  for (int i = 0; i < rows; ++i)
    for (int j = 0; j < columns; ++j) m.Element(i, j) = random.Uniform(-1.0, 1.0);
  return m;
}

// A product of random mirrors.
inline CNuMatrix OrthogonalMatrix(Random& random, int n) {
  CNuMatrix q = CNuMatrix::Identity(n);
  for (int k = 0; k < std::min(n, 4); ++k) {
    const CNuMatrix v = UniformMatrix(random, n, 1);
    const CNuMatrix vT = v.Transpose();
    q -= v * (vT * q) * (2.0 / (vT * v).GetElement(0, 0));
  }
  return q;
}

// Powers of ten from 1e-75 to 1e75 along a row or column: products of two span 300 decades.
inline double Grade(int i, int n) {
  return std::pow(10.0, -75.0 + 150.0 * i / std::max(1, n - 1));
}

inline CNuMatrix MatrixOf(Kind kind, Random& random, int rows, int columns) {
  CNuMatrix m = UniformMatrix(random, rows, columns);
  if (kind == Kind::kRankDeficient)
    m = UniformMatrix(random, rows, std::max(1, columns / 2)) *
        UniformMatrix(random, std::max(1, columns / 2), columns);
  if (kind == Kind::kRepeated) {
    const int n = std::max(rows, columns);
    CNuVector values(n);
    for (int i = 0; i < n; ++i) values[i] = 1 + i / 3;
    const CNuMatrix q = OrthogonalMatrix(random, n);
    m = (q * CNuMatrix::DiagonalMatrix(values) * q.Transpose()).SubMatrix(0, rows - 1, 0, columns - 1);
  }
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < columns; ++j) {
      double& x = m.Element(i, j);
      if (kind == Kind::kGradedUp) x *= Grade(i, rows) * Grade(j, columns);
      if (kind == Kind::kGradedDown) x *= Grade(rows - 1 - i, rows) * Grade(columns - 1 - j, columns);
      if (kind == Kind::kGradedColumns) x *= Grade(j, columns) * Grade(j, columns);
      if (kind == Kind::kGradedRows) x *= Grade(rows - 1 - i, rows) * Grade(rows - 1 - i, rows);
      if (kind == Kind::kHuge) x *= 1e305;
      if (kind == Kind::kTiny) x *= 1e-290;
    }
  }
  return m;
}

inline CNuMatrix Symmetric(const CNuMatrix& m) {
  CNuMatrix s(m);
  for (int i = 0; i < m.GetRowSize(); ++i)
    for (int j = 0; j < i; ++j) s.Element(i, j) = m.GetElement(j, i);
  return s;
}

inline double LargestElement(const CNuMatrix& m) {
  double largest = 0.0;
  for (int i = 0; i < m.GetRowSize(); ++i)
    for (int j = 0; j < m.GetColumnSize(); ++j) {
      const double size = std::fabs(m.GetElement(i, j));
      // A NaN must not pass for small.
      if (!(size <= largest)) largest = std::isnan(size) ? std::numeric_limits<double>::infinity() : size;
    }
  return largest;
}

// The matrix brought to elements of about 1 by a power of two, so that products of it neither overflow nor vanish.
inline double UnitOf(const CNuMatrix& m) {
  return std::ldexp(1.0, -std::clamp(std::ilogb(LargestElement(m)), -1000, 1000));
}

// Distance of two matrices in units of n * epsilon * norm, the norm being the largest element of the second.
inline double RoundingsBetween(const CNuMatrix& a, const CNuMatrix& b) {
  const int n = std::max(a.GetRowSize(), a.GetColumnSize());
  return LargestElement(a - b) / (n * kEps * std::max(LargestElement(b), std::numeric_limits<double>::min()));
}

inline double RoundingsFromOrthogonal(const CNuMatrix& m) {
  return RoundingsBetween(m.PreMultiplyTranspose(), CNuMatrix::Identity(m.GetColumnSize()));
}

// The same matrix behind row pointers that a host has exchanged.
inline CNuMatrix WithExchangedRows(const CNuMatrix& m) {
  CNuMatrix copy(m);
  const int n = m.GetRowSize();
  std::reverse(copy.GetData(), copy.GetData() + n);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < m.GetColumnSize(); ++j) copy.Element(i, j) = m.GetElement(i, j);
  return copy;
}

}  // namespace nu::test

#endif
