#ifndef NU_CURVES_INTERNAL_CONIC_LEAST_SQUARES_H
#define NU_CURVES_INTERNAL_CONIC_LEAST_SQUARES_H

#include "nu/curves/internal/conics.h"
#include "nu/geometry/internal/form_statistics.h"
#include "nu/geometry/internal/gauss_newton.h"
#include "nu/geometry/internal/point_blocks.h"

namespace nu::internal {

// Orthonormal axes of the plane in which a conic is fitted; what is across it is not seen.
struct PlaneAxes {
  Vec3 u;
  Vec3 v;
};

// A conic in plane coordinates: the origin of its frame and the direction, of unit length, of its x axis.
template<class Curve>
struct PlacedConic {
  Curve curve;
  Vec2 origin;
  Vec2 axis;
};

template<class Curve>
inline constexpr int kConicUnknowns = 5;
template<>
inline constexpr int kConicUnknowns<Parabola2> = 4;

// Least-squares conic: the one that minimises the sum of the squared distances from it. The mathematics is at the top
// of the source.
template<class Curve>
class ConicLeastSquares {
 public:
  ConicLeastSquares(PointBlocks& points, const PlaneAxes& axes);

  // The best of the algebraic fits. False when none is a conic of this kind.
  bool Start();
  // A conic in the unit of the points, relative to the origin of the blocks.
  void StartFrom(const PlacedConic<Curve>& conic);
  PlacedConic<Curve> Found() const;
  // The last step has not led beyond the conics of this kind.
  bool IsConic() const;

  // For RunGaussNewton. The squared length is that of the undamped step, in the unit of the points; a rotation counts
  // by its effect on the parameters or on the points.
  GaussNewtonStep SolveStep();
  void TakeStep();

  Deviations DeviationsNow();

 private:
  static constexpr int kUnknowns = kConicUnknowns<Curve>;

  struct System {
    double product[kUnknowns][kUnknowns];
    double right[kUnknowns];
    double reach = 0.0;  // sum of the squared distances from the origin of the conic
    double sumSquares = 0.0;

    // What rounding of the coordinates may add to the sum of squares.
    double Rounding() const;
  };

  System SumSystem() const;
  bool Shortens(const System& next) const;
  void Damp(double (&step)[kUnknowns]) const;
  bool SolveByRows(double (&step)[kUnknowns]) const;

  PointBlocks& m_points;
  PlaneAxes m_axes;
  PlacedConic<Curve> m_now;
  bool m_started = false;
  PlacedConic<Curve> m_best;
  System m_system;          // of the best
  double m_farthest = 0.0;  // a larger reach is that of no conic near the points
  double m_damping = 0.0;
  double m_step[kUnknowns] = {};
  bool m_isStuck = false;  // no step lowers the sum, though it is above rounding: the same one again and again
  GaussNewtonStep m_stuckStep;
};

extern template class ConicLeastSquares<Ellipse2>;
extern template class ConicLeastSquares<Hyperbola2>;
extern template class ConicLeastSquares<Parabola2>;

}  // namespace nu::internal

#endif
