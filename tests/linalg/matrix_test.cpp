#include "nu/linalg/matrix.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "nu/geometry/geometry.h"
#include "nu/linalg/vector.h"
#include "support/failures.h"

namespace {

CNuMatrix Counted(int rows, int columns) {
  CNuMatrix m(rows, columns);
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < columns; ++j) m.Element(i, j) = 10.0 * i + j;
  }
  return m;
}

TEST(Matrix, CopiesAndMovesKeepTheValueAcrossTheSmallSize) {
  const std::pair<int, int> shapes[] = {{1, 1}, {4, 4}, {2, 8}, {5, 3}, {3, 6}, {1, 17}};
  for (const auto& from : shapes) {
    for (const auto& to : shapes) {
      const CNuMatrix source = Counted(from.first, from.second);
      CNuMatrix target(to.first, to.second);
      target = source;
      EXPECT_TRUE(target.IsEqual(source, 1e-300));
      target.Element(0, 0) = 5.0;
      EXPECT_EQ(source.GetElement(0, 0), 0.0);
      CNuMatrix taken(to.first, to.second);
      taken = CNuMatrix(source);
      CNuMatrix constructed(std::move(taken));
      EXPECT_TRUE(constructed.IsEqual(source, 1e-300));
      EXPECT_EQ(constructed.GetType(), 2);
    }
  }
  EXPECT_TRUE(CNuMatrix().IsEqual(CNuMatrix(4, 4), 1e-300));
}

// A host may exchange row pointers, as pivoting code does.
TEST(Matrix, LivesWithExchangedRowPointers) {
  for (int n : {3, 6}) {
    CNuMatrix m = Counted(n, n);
    std::swap(m.GetData()[0], m.GetData()[n - 1]);
    EXPECT_EQ(m.Element(0, 1), 10.0 * (n - 1) + 1.0);
    const CNuMatrix copy(m);
    EXPECT_TRUE(copy.IsEqual(m, 1e-300));
    const CNuMatrix moved(std::move(m));
    EXPECT_TRUE(moved.IsEqual(copy, 1e-300));
  }
}

TEST(Matrix, BlocksRowsAndColumns) {
  const CNuMatrix m = Counted(4, 6);
  const CNuMatrix block = m.SubMatrix(1, 2, 3, 5);
  ASSERT_EQ(block.GetRowSize(), 2);
  ASSERT_EQ(block.GetColumnSize(), 3);
  EXPECT_EQ(block.GetElement(1, 2), 25.0);
  CNuMatrix target(4, 6);
  target.SetSubMatrix(1, 2, 3, 5, block);
  EXPECT_EQ(target.GetElement(2, 4), 24.0);
  EXPECT_EQ(target.GetElement(0, 0), 0.0);
  target.SetRowVector(3, m.GetRowVector(0));
  target.SetColumnVector(0, m.GetColumnVector(5));
  EXPECT_EQ(target.GetElement(3, 4), 4.0);
  EXPECT_EQ(target.GetElement(2, 0), 25.0);
}

TEST(Matrix, ProductsAndTransposes) {
  const CNuMatrix a = Counted(20, 3);
  const CNuMatrix t = a.Transpose();
  for (int i = 0; i < 20; ++i) {
    for (int j = 0; j < 3; ++j) EXPECT_EQ(t.GetElement(j, i), a.GetElement(i, j));
  }
  EXPECT_TRUE(a.PreMultiplyTranspose().IsEqual(t * a, 1e-300));
  EXPECT_TRUE(t.PreMultiplyTranspose().IsEqual(a * t, 1e-300));
  EXPECT_TRUE(a.PostMultiplyTranspose().IsEqual(a * t, 1e-300));
  const CNuVector v = a * CNuVector(1, 2, 3);
  EXPECT_EQ(v.GetSize(), 20);
  EXPECT_EQ(v[19], 190.0 + 2 * 191.0 + 3 * 192.0);
  EXPECT_TRUE((2.0 * a - a).IsEqual(-(-a), 1e-300));
  EXPECT_EQ(Counted(3, 3).Trace(), 33.0);
}

TEST(Matrix, Predicates) {
  CNuMatrix m = Counted(2, 2);
  EXPECT_FALSE(m.IsSymmetric(1.0));
  EXPECT_TRUE(m.IsSymmetric(9.5));
  EXPECT_FALSE(Counted(2, 3).IsSymmetric(1e9));
  EXPECT_FALSE(Counted(2, 3).IsOrthogonal(1e9));
  EXPECT_TRUE(CNuMatrix::Identity(7).IsOrthogonal(1e-300));
  EXPECT_TRUE(CNuMatrix::DiagonalMatrix(CNuVector(1, 1, 1)).IsEqual(CNuMatrix::Identity(3), 1e-300));
  m.Element(0, 0) = std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(m.IsZero(1e300));
  EXPECT_FALSE(m.IsEqual(m, 1e300));
}

TEST(Matrix, FailuresNameTheOperationAndTheRange) {
  const CNuMatrix m(2, 5), square(2, 2);
  CNuMatrix changed = Counted(2, 5);
  const struct {
    std::string failure, expected;
  } cases[] = {
      {FailureOf([] { CNuMatrix(0, 3); }), "construction 1 number of rows/columns|CNuMatrix [0,0]"},
      {FailureOf([] { CNuMatrix::Identity(0); }), "construction 1 number of rows/columns|CNuMatrix [0,0]"},
      {FailureOf([&] { m.Element(2, 0); }), "operation 3 operation|CNuMatrix::Element() [0,1]"},
      {FailureOf([&] { m.Element(0, 5); }), "operation 3 operation|CNuMatrix::Element() [0,4]"},
      {FailureOf([&] { m.GetRowVector(2); }), "operation 3 operation|CNuMatrix::GetRowVector() [0,1]"},
      {FailureOf([&] { m.GetColumnVector(-1); }), "operation 3 operation|CNuMatrix::GetColumnVector() [0,4]"},
      {FailureOf([&] { changed.SetRowVector(5, CNuVector()); }),
       "operation 3 operation|CNuMatrix::SetRowVector() [0,1]"},
      {FailureOf([&] { changed.SetRowVector(0, CNuVector()); }),
       "operation 5 operation|CNuMatrix::SetRowVector() [0,0]"},
      {FailureOf([&] { changed.SetColumnVector(0, CNuVector()); }),
       "operation 5 operation|CNuMatrix::SetColumnVector() [0,0]"},
      {FailureOf([&] { m.SubMatrix(1, 0, 0, 9); }), "operation 15 operation|CNuMatrix::SubMatrix() [0,0]"},
      {FailureOf([&] { m.SubMatrix(0, 2, 0, 9); }), "operation 3 operation|CNuMatrix::SubMatrix() [0,1]"},
      {FailureOf([&] { m.SubMatrix(0, 1, 0, 9); }), "operation 3 operation|CNuMatrix::SubMatrix() [0,4]"},
      {FailureOf([&] { changed.SetSubMatrix(0, 1, 0, 1, CNuMatrix(3, 3)); }),
       "operation 5 operation|CNuMatrix::SetSubMatrix() [0,0]"},
      {FailureOf([&] { m.Trace(); }), "operation 16 calculation|CNuMatrix::Trace() [0,0]"},
      {FailureOf([&] { m + square; }), "operation 5 operator+|CNuMatrix [0,0]"},
      {FailureOf([&] { m - square; }), "operation 5 operator-|CNuMatrix [0,0]"},
      {FailureOf([&] { changed += square; }), "operation 5 operator+=|CNuMatrix [0,0]"},
      {FailureOf([&] { changed -= square; }), "operation 5 operator-=|CNuMatrix [0,0]"},
      {FailureOf([&] { m* square; }), "operation 5 operator*|CNuMatrix [0,0]"},
      {FailureOf([&] { m* CNuVector(); }), "operation 5 operator*|CNuMatrix [0,0]"},
      {FailureOf([&] { 1e301 * m; }), "operation 7 operator*|CNuMatrix [0,0]"},
      {FailureOf([&] { changed *= -1e301; }), "operation 7 operator*=|CNuMatrix [0,0]"},
      {FailureOf([&] { m / 0.0; }), "operation 6 operator/|CNuMatrix [0,0]"},
      {FailureOf([&] { changed /= 1e-301; }), "operation 6 operator/=|CNuMatrix [0,0]"},
      {FailureOf([] { CNuMatrix(std::numeric_limits<int>::max(), std::numeric_limits<int>::max()); }),
       "memory 301 |CNuMatrix::Init() [0,0]"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.failure, c.expected);
  EXPECT_TRUE(changed.IsEqual(Counted(2, 5), 1e-300));
}

}  // namespace
