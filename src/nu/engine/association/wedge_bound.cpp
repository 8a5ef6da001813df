// Let d have the range Z over the points, with s(m) the largest m . p. For a point where the first part is the larger
// one, m . p + j is not below the least d, and s(m) + j is not above the largest, so that s(m) - m . p <= Z: all points
// are within Z of the one or the other of two planes that touch them from outside.
//
// With another vector m' for m the depth s(m) - m . p changes by no more than |m - m'| times the diameter of the
// points. The vectors are in squares on the faces of a cube. A pair of squares is left when even with that allowance
// the two planes in their middles leave out a point, else the larger square is cut in four; a pair too small to be cut
// says that there may be a wedge. Points left out only lower the range.

#include "nu/engine/association/wedge_bound.h"

#include <cmath>
#include <cstdint>
#include <vector>

namespace nu::engine::association {
namespace {

constexpr std::size_t kMostPoints = 64;  // as many as a mask has bits
constexpr double kLeastHalf = 1.0 / 256.0;
constexpr long kMostPairs = 1L << 13;
// What is enough, and smaller parts of it.
constexpr int kTrials = 20;
constexpr double kStep = 0.875;

// Directions next to that through the middle (u, v) of a square on a face of the cube.
struct Square {
  int face = 0;
  double u = 0.0;
  double v = 0.0;
  double half = 1.0;
  std::uint64_t near = 0;  // bit i: point i may be next to the plane
};

class WedgeSearch {
 public:
  WedgeSearch(const std::vector<Vec3>& sample, double reach, double range)
      : m_sample(sample), m_reach(reach), m_range(range), m_all(~std::uint64_t{0} >> (kMostPoints - sample.size())) {}

  // False where every wedge has a larger range.
  bool MayFind() {
    std::vector<Square> faces;
    faces.reserve(6);
    for (int face = 0; face < 6; ++face) faces.push_back(Seen({face}));
    for (std::size_t i = 0; i < faces.size(); ++i)
      for (std::size_t j = i; j < faces.size(); ++j) m_pairs.push_back({faces[i], faces[j]});
    for (long looked = 0; !m_pairs.empty(); ++looked) {
      const Pair pair = m_pairs.back();
      m_pairs.pop_back();
      if ((pair.first.near | pair.second.near) != m_all) continue;
      if (looked >= kMostPairs || std::max(pair.first.half, pair.second.half) <= kLeastHalf) return true;
      Cut(pair);
    }
    return false;
  }

 private:
  struct Pair {
    Square first, second;
  };

  void Cut(const Pair& pair) {
    const bool isFirst = pair.first.half >= pair.second.half;
    const Square& cut = isFirst ? pair.first : pair.second;
    const double half = 0.5 * cut.half;
    for (const double u : {cut.u - half, cut.u + half})
      for (const double v : {cut.v - half, cut.v + half}) {
        const Square part = Seen({cut.face, u, v, half});
        m_pairs.push_back(isFirst ? Pair{part, pair.second} : Pair{pair.first, part});
      }
  }

  // Vectors on a face are not nearer to each other than their directions.
  Square Seen(Square square) const {
    const double side = square.face < 3 ? 1.0 : -1.0;
    const int axis = square.face % 3;
    const Vec3 m = Unit(axis == 0   ? Vec3{side, square.u, square.v}
                        : axis == 1 ? Vec3{square.u, side, square.v}
                                    : Vec3{square.u, square.v, side});
    double most = Dot(m, m_sample[0]);
    for (const Vec3& p : m_sample) most = std::max(most, Dot(m, p));
    const double allowed = m_range + std::sqrt(2.0) * square.half * 2.0 * m_reach;
    for (std::size_t i = 0; i < m_sample.size(); ++i)
      if (most - Dot(m, m_sample[i]) <= allowed) square.near |= std::uint64_t{1} << i;
    return square;
  }

  const std::vector<Vec3>& m_sample;
  double m_reach;
  double m_range;
  std::uint64_t m_all;
  std::vector<Pair> m_pairs;
};

}  // namespace

double BoundWedges(BoundedPoints& points, double enough) {
  const std::vector<Vec3> sample = points.Spread(kMostPoints);
  if (sample.empty()) return 0.0;
  double range = enough;
  for (int trial = 0; trial < kTrials; ++trial, range *= kStep)
    if (!WedgeSearch(sample, points.Reach(), range).MayFind()) return range;
  return 0.0;
}

}  // namespace nu::engine::association
