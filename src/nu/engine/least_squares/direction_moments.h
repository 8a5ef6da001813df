#ifndef NU_ENGINE_LEAST_SQUARES_DIRECTION_MOMENTS_H
#define NU_ENGINE_LEAST_SQUARES_DIRECTION_MOMENTS_H

#include "nu/engine/points/fourth_moments.h"

namespace nu::engine::least_squares {

// Mean values of products with z, the height of p along a direction.
struct DirectionMoments {
  double square = 0.0;   // z^2
  double fourth = 0.0;   // z^4
  double mixed = 0.0;    // |p|^2 z^2
  double third[3] = {};  // p z^2
};

// The moments of a point set that judge directions of an axis, in the principal frame and in units of the largest
// spread. With them a direction is judged without a look at the points.
class JudgingMoments {
 public:
  explicit JudgingMoments(const FourthMoments& m);

  // Of a unit vector.
  DirectionMoments Along(const Vec3& direction) const;

  double square[3];          // E[p_i^2]
  double trace = 0.0;        // E[|p|^2]
  double cubic[3];           // E[p_i |p|^2]
  double fourthTrace = 0.0;  // E[|p|^4]
  double unit;

 private:
  double m_third[3][6];  // E[p_i p_j p_k], products of different factors twice
  double m_mixed[3][3];  // E[p_i p_j |p|^2]
  double m_fourth[15];   // E[p_i^a p_j^b p_k^c] of degree 4 with the multinomial factors
};

}  // namespace nu::engine::least_squares

#endif
