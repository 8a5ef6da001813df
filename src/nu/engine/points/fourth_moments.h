#ifndef NU_ENGINE_POINTS_FOURTH_MOMENTS_H
#define NU_ENGINE_POINTS_FOURTH_MOMENTS_H

#include "nu/engine/points/point_blocks.h"

namespace nu::engine::points {

// The place of each triple of exponents up to degree 4.
struct MomentIndex {
  constexpr MomentIndex() {
    int next = 0;
    for (int a = 0; a <= 4; ++a)
      for (int b = 0; a + b <= 4; ++b)
        for (int c = 0; a + b + c <= 4; ++c) at[a][b][c] = next++;
  }
  int at[5][5][5] = {};
};
inline constexpr MomentIndex kMomentIndex;

// Everything that algebraic fits of second order ask of a point set: its mean, principal axes and the mean values of
// u^a v^b w^c up to degree 4, where u, v, w are the coordinates along the principal axes from the mean, each in units
// of its own spread. So the numbers are of the size of 1, however flat or slender the set is.
struct FourthMoments {
  static constexpr int kCount = 35;

  double Of(int a, int b, int c) const { return value[kMomentIndex.at[a][b][c]]; }
  // The vector with these components along the principal axes.
  Vec3 Along(const Vec3& v) const { return v.x * axis[0] + v.y * axis[1] + v.z * axis[2]; }
  // The components of a vector along them.
  Vec3 Local(const Vec3& v) const { return {Dot(v, axis[0]), Dot(v, axis[1]), Dot(v, axis[2])}; }

  bool finite = false;
  Vec3 mean;         // relative to the origin of the blocks, scaled as they are
  Vec3 axis[3];      // by falling spread
  double spread[3];  // roots of the mean squares along the axes; never 0 unless all points coincide
  double value[kCount];
};

// May rescale the blocks; points that are not finite give no moments.
FourthMoments FindFourthMoments(PointBlocks& points);

}  // namespace nu::engine::points

#endif
