#ifndef NU_ENGINE_MINIMAX_NEAR_POINTS_H
#define NU_ENGINE_MINIMAX_NEAR_POINTS_H

#include <memory>
#include <vector>

#include "nu/engine/points/point_blocks.h"
#include "nu/engine/shapes/incidence.h"

namespace nu::engine::minimax {

// The points that may touch an empty ball whose centre c moves by small steps, in levels of fewer and fewer points. For
// two points p and q
//
//   |p - c|^2 - |q - c|^2
//
// changes by 2 (q - p) . d when the centre moves by d. So points p for which that is too little for all d of some
// region, against a contact q at its middle, stay outside while the centre is in the region; a level is made of the
// others.
class NearPoints {
 public:
  // From the centre on; `rounding` is that of a distance.
  NearPoints(PointBlocks& all, const Vec3& centre, double rounding)
      : m_all(all), m_rounding(rounding), m_centre(centre), m_start(centre) {}

  // Level 0 is all points; each level is in the order of all points.
  int Levels() const { return static_cast<int>(m_levels.size()) + 1; }
  PointBlocks& Points(int level) { return level == 0 ? m_all : m_levels[level - 1]->blocks; }
  // Whether a level stands for all points about this centre.
  bool Covers(int level, const Vec3& centre) const;

  // To be called at each step. Takes away the levels that the centre has left, or adds one when the last level is large
  // and has served several times.
  void Follow(const Vec3& centre, const Vec3* contact, int contacts);

 private:
  // A cylinder about `along` with the half length 1 and the radius `across`, in units of a level's reach.
  struct Region {
    double SizeOf(const Vec3& offset) const {
      return std::max(std::fabs(Dot(offset, along)), Norm(Rejection(offset, along)) / across);
    }
    // The largest product of e with an offset of size 1.
    double Support(const Vec3& e) const { return std::fabs(Dot(e, along)) + across * Norm(Rejection(e, along)); }

    Vec3 centre;
    Vec3 along;
    double across;
  };
  struct Level : OwnBlocks {
    Level(std::vector<Vec3> near, const Region& where, double size)
        : OwnBlocks(std::move(near)), region(where), reach(size) {}

    Region region;
    double reach;
  };
  struct Ball;

  Region RegionOfSteps() const;
  void Narrow(const Vec3* contact, int contacts);
  double SampledLeeway(const Ball& ball);
  PointBlocks& LastPoints() { return Points(Levels() - 1); }
  void StartCount() { m_uses = 0, m_travel = 0.0, m_start = m_centre; }

  PointBlocks& m_all;
  double m_rounding;
  std::vector<std::unique_ptr<Level>> m_levels;
  Vec3 m_centre;
  // Since a level was last made or refused: how often the last level served, how far the centre moved, and from where.
  int m_uses = 0;
  double m_travel = 0.0;
  Vec3 m_start;
};

}  // namespace nu::engine::minimax

#endif
