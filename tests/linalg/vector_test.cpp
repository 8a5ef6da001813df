#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

CNuVector Counted(int n) {
  CNuVector v(n);
  for (int i = 0; i < n; ++i) v[i] = i + 1.0;
  return v;
}

void ExpectComponents(const CNuVector& v, std::initializer_list<double> expected) {
  ASSERT_EQ(v.GetSize(), static_cast<int>(expected.size()));
  int i = 0;
  for (double e : expected) EXPECT_EQ(v[i++], e);
}

TEST(Vector, CopiesAndMovesKeepTheValueAcrossTheSmallSize) {
  for (int from : {1, 3, 4, 5, 9}) {
    for (int to : {1, 3, 4, 5, 9}) {
      const CNuVector source = Counted(from);
      CNuVector target = Counted(to);
      target = source;
      EXPECT_TRUE(target.IsEqual(source, 1e-300)) << from << " to " << to;
      target[0] = -7.0;
      EXPECT_EQ(source[0], 1.0);
      CNuVector taken(Counted(to));
      taken = CNuVector(source);
      CNuVector constructed(std::move(taken));
      EXPECT_TRUE(constructed.IsEqual(source, 1e-300));
      EXPECT_EQ(constructed.GetType(), 18);
      constructed = *&constructed;
      EXPECT_EQ(constructed.GetSize(), from);
    }
  }
}

TEST(Vector, Products) {
  ExpectComponents(CNuVector(1, 0, 0) * CNuVector(0, 1, 0), {0, 0, 1});
  EXPECT_EQ(Counted(4) % Counted(4), 30.0);
  ExpectComponents(Counted(3) & Counted(3), {1, 4, 9});
  CNuMatrix m(2, 3);
  for (int i = 0; i < 2; ++i) {
    for (int j = 0; j < 3; ++j) m.Element(i, j) = 3 * i + j;
  }
  ExpectComponents(Counted(2) * m, {6, 9, 12});
}

TEST(Vector, FailuresNameTheOperator) {
  const CNuVector two(2), three(3), four(4);
  CNuVector changed(1, 2, 3);
  const struct {
    std::string failure, expected;
  } cases[] = {
      {FailureOf([] { CNuVector(0); }), "construction 1 size|CNuVector [0,0]"},
      {FailureOf([&] { (void)three[3]; }), "operation 3 element operator[]|CNuVector [0,2]"},
      {FailureOf([&] { (void)three[-1]; }), "operation 3 element operator[]|CNuVector [0,2]"},
      {FailureOf([&] { three + four; }), "operation 5 operator+|CNuVector [0,0]"},
      {FailureOf([&] { three - four; }), "operation 5 operator-|CNuVector [0,0]"},
      {FailureOf([&] { three % four; }), "operation 5 operator%|CNuVector [0,0]"},
      {FailureOf([&] { three& four; }), "operation 5 operator&|CNuVector [0,0]"},
      {FailureOf([&] { three* four; }), "operation 5 operator*|CNuVector [0,0]"},
      {FailureOf([&] { two* two; }), "operation 10 operator*|CNuVector [0,0]"},
      {FailureOf([&] { two* CNuMatrix(3, 3); }), "operation 5 operator*|CNuVector [0,0]"},
      {FailureOf([&] { changed += four; }), "operation 5 operator+=|CNuVector [0,0]"},
      {FailureOf([&] { changed -= four; }), "operation 5 operator-=|CNuVector [0,0]"},
      {FailureOf([&] { three * 1e301; }), "operation 7 operator*|CNuVector [0,0]"},
      {FailureOf([&] { kNaN* three; }), "operation 7 operator*|CNuVector [0,0]"},
      {FailureOf([&] { changed *= kInf; }), "operation 7 operator*=|CNuVector [0,0]"},
      {FailureOf([&] { three / 1e-301; }), "operation 6 operator/|CNuVector [0,0]"},
      {FailureOf([&] { changed /= 0.0; }), "operation 6 operator/=|CNuVector [0,0]"},
      {FailureOf([&] { four.AngleWith(three); }), "operation 10 calculation|CNuVector::AngleWith() [0,0]"},
      {FailureOf([&] { three.AngleWith(CNuVector(1, 0, 0)); }), "operation 9 calculation|CNuVector::AngleWith() [0,0]"},
      {FailureOf([&] { CNuVector(1, 0, 0).AngleWith(CNuVector(0, 1, 1), CNuVector(0, 0, 1)); }),
       "operation 14 calculation|CNuVector::AngleWith() [0,0]"},
      {FailureOf([&] { three.SubVector(2, 3); }), "operation 3 operation|CNuVector::SubVector(i, j) [0,2]"},
      {FailureOf([&] { three.SubVector(2, 1); }), "operation 15 operation|CNuVector::SubVector(i, j) [0,0]"},
      {FailureOf([&] { CNuVector(two).Homogeneous(); }), "operation 11 calculation|CNuVector::Homogeneous() [0,0]"},
      {FailureOf([&] { two.To3DPoint(); }), "operation 11 calculation|CNuVector::NonHomogeneous() [0,0]"},
      {FailureOf([&] {
         CNuVector x, v(three);
         v.OrthonormalX(&x);
       }),
       "operation 9 calculation|CNuVector::OrthonormalX() [0,0]"},
      {FailureOf([&] {
         CNuVector x, v(four);
         v.OrthonormalXY(&x, &x);
       }),
       "operation 10 calculation|CNuVector::OrthonormalX() [0,0]"},
      {FailureOf([&] {
         CNuVector y, v(four);
         v.OrthonormalY(&y);
       }),
       "operation 10 calculation|CNuVector::OrthonormalY() [0,0]"},
      {FailureOf([&] { changed.Rotate(10.0, two); }), "operation 10 rotation|CNuVector [0,0]"},
      {FailureOf([&] { changed.Rotate(10.0, three); }), "operation 9 rotation|CNuVector [0,0]"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.failure, c.expected);
  ExpectComponents(changed, {1, 2, 3});
}

TEST(Vector, AnglesHoldAtEverySize) {
  for (double size : {1e-250, 1.0, 1e250}) {
    EXPECT_EQ(CNuVector(size, 0, 0).AngleWith(CNuVector(0, size, 0)), 90.0);
    EXPECT_EQ(CNuVector(size, 0, 0).AngleWith(CNuVector(-1, 0, 0)), 180.0);
    EXPECT_NEAR(CNuVector(size, size, 0).AngleWith(CNuVector(1, 0, 0)), 45.0, 1e-13);
    EXPECT_FALSE(CNuVector(size, 0, 0).IsParallelTo(CNuVector(size, size, 0), 0.5));
    CNuVector direction(3 * size, -4 * size, 0);
    direction.Normalise();
    EXPECT_TRUE(direction.IsEqual(CNuVector(0.6, -0.8, 0), 1e-15));
  }
}

TEST(Vector, SignedAngleTurnsAboutTheAxis) {
  const CNuVector axes[] = {CNuVector(0, 0, 1), CNuVector(0, 0, -3), CNuVector(1, -2, 0.5)};
  for (const CNuVector& axis : axes) {
    CNuVector start = axis + CNuVector(0.3, 0.2, 0.7);
    for (double turn = 1.0; turn < 360.0; turn += 17.0) {
      CNuVector end(start);
      end.Rotate(turn, axis);
      EXPECT_NEAR(start.AngleWith(end, axis), turn, 1e-9);
      EXPECT_NEAR((start * 1e200).AngleWith(end * 1e-200, axis * 1e200), turn, 1e-9);
      // Either way round a hair's breadth: the full turn is no angle of the range.
      CNuVector beside(end);
      beside[0] = std::nextafter(end[0], 1e3);
      EXPECT_LT(end.AngleWith(beside, axis), 360.0);
      EXPECT_LT(beside.AngleWith(end, axis), 360.0);
      for (double way : {turn / 3.0, -turn / 3.0}) EXPECT_EQ((axis * way).AngleWith(axis * (way / 7.0), axis), 0.0);
    }
    EXPECT_EQ(start.AngleWith(start, axis), 0.0);
  }
}

TEST(Vector, OrthonormalAxesCompleteADirection) {
  for (const CNuVector& z : {CNuVector(1, 2, 3), CNuVector(0, 0, -5), CNuVector(4, -4, 4), CNuVector(1e-9, 0, 1)}) {
    CNuVector direction(z), x, y;
    direction.OrthonormalXY(&x, &y);
    EXPECT_NEAR(direction.Magnitude(), 1.0, 1e-15);
    EXPECT_NEAR(x % direction, 0.0, 1e-15);
    EXPECT_TRUE((x * y).IsEqual(direction, 1e-15));
    CNuVector other(z);
    other.OrthonormalY(&y);
    EXPECT_NEAR(y % z, 0.0, 1e-14);
  }
  // Ties of the smallest component go to the later axis: (1, 1, 1) x (0, 0, 1) points along (1, -1, 0).
  CNuVector tie(1, 1, 1), x;
  tie.OrthonormalX(&x);
  EXPECT_TRUE(x.IsEqual(CNuVector(std::sqrt(0.5), -std::sqrt(0.5), 0), 1e-15));
  CNuVector plane(2), y;
  plane[0] = 3.0;
  plane[1] = 4.0;
  plane.OrthonormalY(&y);
  ExpectComponents(y, {-0.8, 0.6, 0.0});
}

TEST(Vector, CanonicalFormsAndHomogeneousCoordinates) {
  CNuVector axis(1e-12, -3, 2);
  axis.SymmetricAxis(1e-9, 1);
  ExpectComponents(axis, {0, 3, -2});
  CNuVector tie(-2, 2, 0);
  tie.SymmetricAxis(1e-9, 1);
  ExpectComponents(tie, {2, -2, 0});
  CNuVector unit(3, 4, 0), zero;
  unit.Normalise();
  zero.Normalise();
  EXPECT_TRUE(unit.IsEqual(CNuVector(0.6, 0.8, 0), 1e-15));
  ExpectComponents(zero, {0, 0, 0});
  CNuVector point(2, 4, 6);
  point.Homogeneous();
  ExpectComponents(point, {2, 4, 6, 1});
  point[3] = 2.0;
  point.NonHomogeneous();
  ExpectComponents(point, {1, 2, 3});
  point.Homogeneous();
  point[3] = 0.0;
  point.NonHomogeneous();
  ExpectComponents(point, {1, 2, 3});
}

TEST(Vector, SortsAndSearches) {
  CNuVector v(4);
  for (int i = 0; i < 4; ++i) v[i] = "3132"[i] - '0';
  CNuIntArray index(0);
  v.Sort(&index);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(index[i], "1302"[i] - '0');
  v.Sort();
  ExpectComponents(v, {1, 2, 3, 3});
  EXPECT_EQ(v.Max(), 3.0);
  EXPECT_EQ(v.Min(), 1.0);
  EXPECT_TRUE(v.IsPositive());
  v[0] = 0.0;
  EXPECT_FALSE(v.IsPositive());
  EXPECT_TRUE(v.IsNonNegative());
  EXPECT_FALSE(CNuVector(kNaN, 0, 0).IsZero(1.0));
}

TEST(Vector, ParallelAndOrthogonalTakeRadians) {
  const double angle = 1e-3;
  const CNuVector x(1, 0, 0), near(std::cos(0.9 * angle), std::sin(0.9 * angle), 0),
      far(std::cos(1.1 * angle), std::sin(1.1 * angle), 0), y(0, 2, 0);
  EXPECT_TRUE(x.IsParallelTo(-near, angle));
  EXPECT_FALSE(x.IsParallelTo(far, angle));
  EXPECT_TRUE(y.IsOrthogonalTo(near, angle));
  EXPECT_FALSE(y.IsOrthogonalTo(far, angle));
}

}  // namespace
