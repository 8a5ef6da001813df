#ifndef NU_ENGINE_MINIMAX_ANNULUS_EXCHANGE_H
#define NU_ENGINE_MINIMAX_ANNULUS_EXCHANGE_H

#include <vector>

#include "nu/engine/minimax/annulus2.h"

namespace nu::engine::minimax {

// Points that extend over L differ from a line by L^2 / (8 r) on a circle of radius r, whose distances are rounded by
// eps r. Beyond about L / sqrt(8 eps) the rounding hides that they are on a circle at all.
inline constexpr double kFarthestCentre = 0x1p24;

// Hands the rounds of the search for an annulus to a monitor, in the unit of the points.
class AnnulusMonitor {
 public:
  AnnulusMonitor(const StepMonitor& monitor, Vec2 start, double unit)
      : m_monitor(monitor), m_centre(start), m_unit(unit) {}

  bool GoesOn(Vec2 centre, double width) {
    const Vec2 step = centre - m_centre;
    m_centre = centre;
    return m_monitor.GoesOn(++m_rounds, m_unit * width, m_unit * std::sqrt(Dot(step, step)));
  }

 private:
  StepMonitor m_monitor;
  Vec2 m_centre;
  double m_unit;  // of the points, in that of the blocks
  long m_rounds = 0;
};

// The exchange that finds an annulus next to a start, and a bound that proves it the narrowest one for points near a
// circle or an arc. The mathematics is at the top of the source. Here everything is in the unit of the blocks.
class AnnulusExchange {
 public:
  AnnulusExchange(PointBlocks& points, const Vec3 (&axes)[2]);

  enum class Outcome { converged, limitReached, lost, cancelled };
  Outcome Run(Vec2 start, long limit, AnnulusMonitor& monitor);

  // After convergence; certified where the bound holds.
  Annulus Found() const;

  struct Extremes {
    Vec2 farthest;
    Vec2 nearest;
    double outer = 0.0;
    double inner = 0.0;
  };
  Extremes ExtremesFrom(Vec2 centre) const;
  // Seen from infinity: `outer` and `inner` are the greatest and the least coordinate along a unit direction.
  Extremes ExtremesAlong(Vec2 direction) const;

  // Some hundred points that tell most about annuli: the sample, and the farthest and the nearest one, from a centre,
  // of each of many runs of points.
  std::vector<Vec2> RepresentativePoints(Vec2 centre) const;

 private:
  void TakeSample(Vec2 start);
  bool Solve();
  Outcome Exchange(const Extremes& seen);
  bool Replace(Vec2 (&pair)[2], const Vec2 (&other)[2], Vec2 point) const;
  Extremes ExtremesOfSample() const;
  bool IsFar() const;
  double Sharpness() const;
  double Coverage(std::size_t step) const;
  bool IsProven() const;

  PointBlocks& m_points;
  Vec3 m_axis[2];
  std::vector<Vec2> m_sample;  // by direction from the start
  Vec2 m_outer[2];
  Vec2 m_inner[2];
  Vec2 m_centre;
  double m_level = 0.0;  // distance of the two circles through the contacts
  Extremes m_extremes;
};

}  // namespace nu::engine::minimax

#endif
