#ifndef NU_ENGINE_MINIMAX_FAR_SQUARES_H
#define NU_ENGINE_MINIMAX_FAR_SQUARES_H

#include <cstdint>
#include <vector>

#include "nu/engine/hulls/convex_polygon2.h"
#include "nu/engine/hulls/grid2.h"

namespace nu::engine::minimax {

// Small squares that hold all centres of the largest circle with no point inside and the centre in the hull, up to some
// steps of the grid in its radius, and the points that may be next to these.
class FarSquares {
 public:
  // Points of a grid, in any order, and their hull, which has an inside. Nothing is found when too many squares
  // compete.
  FarSquares(const std::vector<Vec2>& points, const ConvexPolygon2& hull);

  bool IsFound() const { return !m_codes.empty(); }
  // A radius that the largest circle has at least.
  double Radius() const { return m_radius; }
  // In the order of the grid, each once; of the points given first.
  std::vector<Vec2> PointsNear(const std::vector<Vec2>& points) const;
  bool Hold(Vec2 place) const;

 private:
  struct Square {
    Vec2 middle;
    double distance;  // from there to the nearest point
  };

  void FillBuckets(const std::vector<Vec2>& points);
  void ThinBuckets();
  int Column(double x) const;
  int Row(double y) const;
  std::size_t Bucket(int column, int row) const { return static_cast<std::size_t>(row) * m_columns + column; }
  int FirstRing(Vec2 p, double least) const;
  template<class Visit>
  void ForRing(Vec2 p, int ring, Visit visit) const;
  double DistanceFrom(Vec2 p, double least, double enough);
  double DistanceOutside(Vec2 p) const;
  bool Cut();
  bool Keep(Vec2 middle, double least);
  double DistanceFromBucket(Vec2 p, std::size_t bucket) const;
  void MarkNear(const Square& square, double reach);
  void Find();
  std::uint64_t CodeOf(Vec2 place) const;

  const ConvexPolygon2& m_hull;
  Vec2 m_inside;
  double m_insideReach = 0.0;  // from there to the border of the hull
  Vec2 m_least;                // of the points
  double m_step = 1.0;         // of the buckets
  int m_columns = 1, m_rows = 1;
  std::vector<std::uint32_t> m_begin;  // per bucket
  std::size_t m_filled = 0;            // buckets with points
  std::vector<Vec2> m_points;          // by buckets
  double m_thinning = 0.0;             // a point that was left out is no farther from one of these
  std::vector<bool> m_isNear;          // per bucket
  std::vector<Square> m_squares;
  double m_half = 0.0;        // side of the squares
  double m_lastColumn = 0.0;  // and row of squares; the border beyond belongs to it
  double m_radius = 0.0;
  std::size_t m_work = 0, m_mostWork = 0;
  std::vector<std::uint64_t> m_codes;  // of the squares, ascending
};

}  // namespace nu::engine::minimax

#endif
