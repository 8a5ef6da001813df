#include "nu/engine/least_squares/cylinder_start.h"

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/least_squares/direction_moments.h"
#include "nu/engine/least_squares/direction_search.h"
#include "nu/engine/least_squares/quadric_axes.h"
#include "nu/engine/linear/small_svd.h"
#include "nu/engine/shapes/axis_direction.h"

// The axis of the quadric through the points is the first direction to be tried. It is enough when the cylinder that is
// found from there follows the points far better than a plane does. Otherwise (points in two cross-sections or on few
// lines, narrow strips, rough parts, few points) many directions are judged, and the best ones refined.
//
// A direction w is judged by the circle that fits the points' projections across it. With q the projection from the
// mean and s = |q|^2, the circle A (s - E s) + B . q = 0 that minimises E[(A (s - E s) + B . q)^2] with mean squared
// gradient 1 (G. Taubin, IEEE Trans. PAMI 13, 1991) leaves about the mean square of the deviations. With A' = 2 A
// sqrt(E s) it is the smallest eigenvalue of
//
//   | var(s) / (4 E s)   E[s q]^T / (2 sqrt(E s)) |
//   | .                  E[q q^T]                 |
//
// All its entries come from moments of the points up to degree 4: judging a direction does not look at the points.

namespace nu::engine::least_squares {
namespace {

// With so few points a wrong cylinder may pass close to all of them.
constexpr std::size_t kFewPoints = 12;

// Steps of the refinement that is kept.
constexpr int kFinalSteps = 1000;
// Directions of each kind that are refined.
constexpr int kTrials = 4;

class DirectionJudge {
 public:
  explicit DirectionJudge(const FourthMoments& m) : m_moments(m) {}

  // Directions in the principal frame. The mean square of the deviations, in units of the largest spread.
  // The smallest root of the characteristic polynomial, by the cosine of a third of an angle.
  double Judge(const Vec3& w) const {
    const Section section = SectionAcross(w);
    const auto& m = section.matrix;
    const double third = (m[0][0] + m[1][1] + m[2][2]) / 3.0;
    const double a = m[0][0] - third, b = m[1][1] - third, c = m[2][2] - third;
    const double p = (a * a + b * b + c * c) / 6.0 + (m[0][1] * m[0][1] + m[0][2] * m[0][2] + m[1][2] * m[1][2]) / 3.0;
    if (!(p > 0.0)) return third;
    const double half = 0.5 * (a * (b * c - m[1][2] * m[1][2]) - m[0][1] * (m[0][1] * c - m[1][2] * m[0][2]) +
                               m[0][2] * (m[0][1] * m[1][2] - b * m[0][2]));
    const double cosine = std::clamp(half / (p * std::sqrt(p)), -1.0, 1.0);
    constexpr double kThirdTurn = 2.0943951023931953;
    return third + 2.0 * std::sqrt(p) * Cos(Acos(cosine) / 3.0 + kThirdTurn);
  }

  // The circle's centre from the mean, in the principal frame, and its radius.
  struct Circle {
    Vec3 centre;
    double radius = 0.0;
  };

  Circle CircleAcross(const Vec3& w) const {
    const Section section = SectionAcross(w);
    const SmallSvd<3> svd = SvdOfColumns(section.matrix);
    const double* vector = svd.axis[2];
    // Nearly a line: a circle whose curvature can just be told from none.
    constexpr double kFlat = 1e-6;
    double a = vector[0];
    if (std::fabs(a) < kFlat) a = kFlat;
    const double root = std::sqrt(section.meanSquare);
    const double c1 = -vector[1] / a * root;
    const double c2 = -vector[2] / a * root;
    const double unit = m_moments.unit;
    return {unit * (c1 * section.e1 + c2 * section.e2), unit * std::sqrt(c1 * c1 + c2 * c2 + section.meanSquare)};
  }

 private:
  struct Section {
    Vec3 e1;
    Vec3 e2;
    double matrix[3][3];
    double meanSquare;
  };

  Section SectionAcross(const Vec3& w) const {
    Section section;
    const DirectionMoments along = m_moments.Along(w);
    const double* square = m_moments.square;
    double cubic[3];
    for (int i = 0; i < 3; ++i) cubic[i] = m_moments.cubic[i] - along.third[i];
    section.meanSquare = m_moments.trace - along.square;
    const double variance =
        m_moments.fourthTrace - 2.0 * along.mixed + along.fourth - section.meanSquare * section.meanSquare;

    section.e1 = AnyAcross(w);
    section.e2 = Cross(w, section.e1);
    const Vec3 cubicSum = LoadVec3(cubic);
    const double scale = 0.5 / std::sqrt(section.meanSquare);
    const auto product = [&](const Vec3& a, const Vec3& b) {
      return square[0] * a.x * b.x + square[1] * a.y * b.y + square[2] * a.z * b.z;
    };
    auto& m = section.matrix;
    m[0][0] = variance * scale * scale;
    m[0][1] = m[1][0] = scale * Dot(cubicSum, section.e1);
    m[0][2] = m[2][0] = scale * Dot(cubicSum, section.e2);
    m[1][1] = product(section.e1, section.e1);
    m[1][2] = m[2][1] = product(section.e1, section.e2);
    m[2][2] = product(section.e2, section.e2);
    return section;
  }

  JudgingMoments m_moments;
};

class CylinderSearch {
 public:
  CylinderSearch(const FourthMoments& moments, PointBlocks& points, CylinderLeastSquares& fit)
      : m_moments(moments), m_judge(moments), m_points(points), m_fit(fit) {}

  // In the frame of the blocks. False when the cylinder could be refined further.
  bool Try(const Vec3& direction, int steps) {
    const Vec3 local = Unit(m_moments.Local(direction));
    const DirectionJudge::Circle circle = m_judge.CircleAcross(local);
    m_fit.Place(
        CylinderAbout(m_moments.mean, Unit(m_moments.Along(local)), m_moments.Along(circle.centre), circle.radius));
    const bool settled = m_fit.Descend(steps);
    m_best.Take(m_fit, m_points.Scale());
    return settled;
  }

  void TryAll(const QuadricAxes& quadric) {
    Try(quadric.axis[1], kTrialSteps);
    Try(quadric.axis[2], kTrialSteps);
    for (const Vec3& axis : m_moments.axis) Try(axis, kTrialSteps);
    TryDirections(
        m_moments, kTrials, [this](const Vec3& w) { return m_judge.Judge(w); },
        [this](const Vec3& w) { Try(m_moments.Along(w), kTrialSteps); });
  }

  bool IsClear() const {
    const double fromPlane = m_moments.spread[2] * m_moments.spread[2] * static_cast<double>(m_points.Size());
    return m_points.Size() > kFewPoints && m_best.sumSquares <= kClear * kClear * fromPlane;
  }

  void Keep() {
    m_fit.Place(m_best.model);
    m_fit.Descend(kFinalSteps);
  }

 private:
  const FourthMoments& m_moments;
  DirectionJudge m_judge;
  PointBlocks& m_points;
  CylinderLeastSquares& m_fit;
  BestFit<CylinderModel> m_best;
};

}  // namespace

bool StartCylinder(PointBlocks& points, CylinderLeastSquares& fit) {
  const FourthMoments moments = FindFourthMoments(points);
  const QuadricAxes quadric = FindQuadricAxes(moments);
  if (!quadric.solvable) return false;
  CylinderSearch search(moments, points, fit);
  const bool settled = search.Try(quadric.axis[0], kTrialSteps);
  const bool clear = search.IsClear();
  if (!clear) search.TryAll(quadric);
  if (!clear || !settled) search.Keep();
  return true;
}

}  // namespace nu::engine::least_squares
