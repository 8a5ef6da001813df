#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "nu/engine/chains/near_pieces2.h"
#include "support/clouds.h"

namespace {

using namespace nu::test;
using namespace nu::engine::chains;
using nu::engine::shapes::Vec2;

// A polyline through random points, with some of its edges bent to arcs.
std::vector<Piece2> Tangle(Random& random, int n) {
  std::vector<Piece2> pieces;
  Vec2 last{0.0, 0.0};
  for (int i = 0; i < n; ++i) {
    const Vec2 next{random.Uniform(-1.0, 1.0), random.Uniform(-1.0, 1.0)};
    Piece2 piece = SegmentBetween(last, next);
    if (i % 5 == 0) {
      const double half = 0.5 * piece.length, turn = random.Uniform(-3.0, 3.0);
      piece.direction = Rotated(piece.direction, -0.5 * turn);
      piece.curvature = std::sin(0.5 * turn) / half;
      piece.length = turn / piece.curvature;
    }
    pieces.push_back(piece);
    last = next;
  }
  return pieces;
}

// What all pieces one by one say, also beyond the tangle; and far fewer looks than that.
TEST(NearPieces, AnswerInATangleAsAllPiecesDo) {
  Random random(5);
  for (const double distance : {1e-5, 1e-3, 0.02, 3.0}) {
    const std::vector<Piece2> pieces = Tangle(random, 300);
    const PieceCells2 cells(pieces, 0.5 * distance);
    NearPieces2 near(pieces, distance);
    for (int k = 0; k < 3000; ++k) {
      const Vec2 p{random.Uniform(-1.5, 1.5), random.Uniform(-1.5, 1.5)};
      double least = HUGE_VAL;
      for (const Piece2& piece : pieces) least = std::min(least, piece.DistanceTo(p));
      const int found[] = {cells.PieceWithin(distance, p), near.PieceWithin(distance, p)};
      for (const int i : found) {
        ASSERT_EQ(i >= 0, least < distance);
        ASSERT_TRUE(i < 0 || pieces[static_cast<std::size_t>(i)].DistanceTo(p) < distance);
      }
      const auto closest = cells.ClosestWithin(distance, p);
      ASSERT_EQ(closest.has_value(), least < distance);
      ASSERT_TRUE(!closest || std::fabs(Norm(*closest - p) - least) < 1e-15);
    }
  }
}

TEST(NearPieces, LookAtAFixedPartOfATangle) {
  Random random(6);
  for (const int n : {1000, 10000}) {
    const std::vector<Piece2> pieces = Tangle(random, n);
    const PieceCells2 cells(pieces, 1e-6);
    constexpr int kQueries = 2000;
    for (int k = 0; k < kQueries; ++k) cells.PieceWithin(1e-6, {random.Uniform(-1.0, 1.0), random.Uniform(-1.0, 1.0)});
    EXPECT_LT(static_cast<double>(cells.Visits()), 0.01 * n * kQueries);
  }
}

// The distances of the points of a noisy circle from a point inside are nearly the same, but few of them are extreme.
TEST(NearPieces, LookAtFewPiecesOfANoisyCircle) {
  constexpr double kDistance = 0.4;
  double visits[2];
  for (const bool isLarge : {false, true}) {
    Random random(7);
    const int n = isLarge ? 100'000 : 10'000;
    std::vector<Piece2> pieces;
    Vec2 last{1.0, 0.0};
    for (int i = 1; i <= n; ++i) {
      const double angle = Nu_2PI * i / n, radius = 1.0 + 1e-4 * random.Uniform(-1.0, 1.0);
      const Vec2 next{radius * std::cos(angle), radius * std::sin(angle)};
      pieces.push_back(SegmentBetween(last, next));
      last = next;
    }
    const PieceTree2 tree(pieces);
    for (int k = 0; k < 100; ++k) {
      const double angle = 0.01 + Nu_2PI * k / 100;
      const Vec2 p{(1.0 - kDistance) * std::cos(angle), (1.0 - kDistance) * std::sin(angle)};
      const auto closest = tree.ClosestWithin(2.0 * kDistance, p);
      double least = HUGE_VAL;
      for (const Piece2& piece : pieces) least = std::min(least, piece.DistanceTo(p));
      ASSERT_TRUE(closest && std::fabs(Norm(*closest - p) - least) < 1e-15);
    }
    visits[isLarge ? 1 : 0] = static_cast<double>(tree.Visits());
  }
  EXPECT_LT(visits[1], 2.0 * visits[0]);
}

}  // namespace
