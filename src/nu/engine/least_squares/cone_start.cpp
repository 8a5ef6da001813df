#include "nu/engine/least_squares/cone_start.h"

#include <optional>
#include <utility>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/least_squares/direction_moments.h"
#include "nu/engine/least_squares/direction_search.h"
#include "nu/engine/least_squares/quadric_axes.h"

// The axis and the centre of the quadric through the points are the first axis and apex to be tried. They are enough
// when the cone that is found from there follows the points far better than a plane does. Otherwise (points in two
// cross-sections or on few lines, narrow strips, rough parts, few points, both nappes) many directions are judged, and
// the best ones refined.
//
// A direction w is judged together with a slope m by the quadrics of revolution that have the shape of a cone of this
// slope far away. With z along w from the mean and N = |p|^2 - (1 + m^2) z^2 the one of them
// A (N - E N) + b . p = 0 that minimises the mean square of the left side with mean squared gradient 1 (G. Taubin, IEEE
// Trans. PAMI 13, 1991) leaves about the mean square of the deviations. With A' = 2 A sqrt(E s + m^4 E z^2), s the
// square of the distance from the parallel to w through the mean, and c the coefficients of N - E N in A', it is the
// smallest eigenvalue of
//
//   | var(c N)   E[c N p]^T |
//   | .          E[p p^T]   |,
//
// which is diagonal but for its border in the principal frame. All its entries come from moments of the points up to
// degree 4: judging a direction does not look at the points.

namespace nu::engine::least_squares {
namespace {

// Points on both nappes leave at least this part of the plane's root mean square when one nappe is fitted.
constexpr double kOneNappe = 0.1;

// Steps of the refinement that is kept.
constexpr int kFinalSteps = 3000;

// Directions of each kind that are refined.
constexpr int kTrials = 4;
constexpr int kTrialsOfFew = 8;

// Tangents of 0, 30, 55, 75, 86 and 89 degrees.
constexpr double kSlopes[] = {0.0, 0.57735, 1.42815, 3.73205, 14.3007, 57.29};

struct RevolutionQuadric {
  double meanSquare = kInfinity;  // of the deviations, in units of the largest spread
  Vec3 toAxis;                    // from the mean, in the principal frame
  double radius = 0.0;            // around there
  double slope = 0.0;
  // When it stands for both nappes: the slope far away, and the height of the mean over the apex.
  double farSlope = 0.0;
  double height = 0.0;
};

// The smallest root of a - r - sum of c_i^2 / (d_i - r), which falls and is concave from 0 to the least d: halving
// finds a place behind the root, from where Newton's steps come down to it.
double SmallestRoot(double a, const double (&c)[3], const double (&d)[3]) {
  constexpr int kMostHalvings = 40;
  constexpr int kNewtonSteps = 6;
  const double square[3] = {c[0] * c[0], c[1] * c[1], c[2] * c[2]};
  double low = 0.0;
  double high = std::min({d[0], d[1], d[2]});
  double found = high;
  bool behind = false;
  for (int k = 0, steps = 0; k < kMostHalvings && steps < kNewtonSteps; ++k) {
    const double r = behind ? found : 0.5 * (low + high);
    double value = a - r, slope = 1.0;
    for (int i = 0; i < 3; ++i) {
      const double inverse = 1.0 / (d[i] - r);
      value -= square[i] * inverse;
      slope += square[i] * inverse * inverse;
    }
    if (behind || value <= 0.0) {
      behind = true;
      found = std::max(r + value / slope, low);
      ++steps;
    } else {
      low = r;
    }
  }
  return found;
}

class DirectionJudge {
 public:
  explicit DirectionJudge(const FourthMoments& m) : m_moments(m) {}

  // Directions in the principal frame. The best over all slopes, but for the cylinder's when both nappes are wanted.
  RevolutionQuadric Judge(const Vec3& w, bool bothNappes) const {
    const DirectionMoments moments = m_moments.Along(w);
    double least = kInfinity;
    double best = 0.0;
    for (const double slope : kSlopes) {
      if (bothNappes && slope == 0.0) continue;
      const double g = 1.0 + slope * slope;
      const double mean = m_moments.trace - g * moments.square;
      const double variance = m_moments.fourthTrace - 2.0 * g * moments.mixed + g * g * moments.fourth - mean * mean;
      const double gradient = 4.0 * (m_moments.trace - moments.square + slope * slope * slope * slope * moments.square);
      const double scale = 1.0 / std::sqrt(gradient);
      double border[3];
      for (int i = 0; i < 3; ++i) border[i] = scale * (m_moments.cubic[i] - g * moments.third[i]);
      const double root = SmallestRoot(variance * scale * scale, border, m_moments.square);
      if (!(root < least)) continue;
      least = root;
      best = slope;
    }
    return QuadricAlong(w, moments, best, least);
  }

  // As judged with the slope that the points show when their distances from the axis are regressed on their heights:
  // biased on arcs, but never next to a plane.
  RevolutionQuadric Regress(const Vec3& w) const {
    const DirectionMoments moments = m_moments.Along(w);
    return QuadricAlong(w, moments, QuadricAlong(w, moments, 0.0, 0.0).slope, 0.0);
  }

 private:
  // With the mean square given by the eigenvalue.
  RevolutionQuadric QuadricAlong(const Vec3& direction, const DirectionMoments& moments, double slope,
                                 double root) const {
    const double g = 1.0 + slope * slope;
    const double mean = m_moments.trace - g * moments.square;
    double linear[3];
    for (int i = 0; i < 3; ++i) {
      linear[i] = -(m_moments.cubic[i] - g * moments.third[i]) / (m_moments.square[i] - root);
    }
    const Vec3 b = LoadVec3(linear);
    const double along = Dot(b, direction);
    const Vec3 across = -0.5 * (b - along * direction);
    const double radius = std::sqrt(std::max(Dot(across, across) + mean, 0.25 * (m_moments.trace - moments.square)));
    const double height = slope > 0.0 ? -0.5 * along / (slope * slope) : 0.0;
    const double unit = m_moments.unit;
    return {root, unit * across, unit * radius, -0.5 * along / radius, slope, unit * height};
  }

  JudgingMoments m_moments;
};

class ConeSearch {
  using Found = BestFit<ConeModel>;

 public:
  ConeSearch(const FourthMoments& moments, PointBlocks& points, ConeLeastSquares& fit)
      : m_moments(moments),
        m_points(points),
        m_fit(fit),
        m_trials(points.Size() > kFewPoints ? kTrials : kTrialsOfFew) {}

  // From a quadric in the frame of the blocks, with the slope that gives the mean square of the distances from the axis
  // for that of the heights over the apex.
  void TryQuadric(const QuadricAxes& quadric) {
    const double height = -Dot(quadric.centre, quadric.axis[0]);
    const Vec3 w = m_moments.Local(quadric.axis[0]);
    const double square[3] = {m_moments.spread[0] * m_moments.spread[0], m_moments.spread[1] * m_moments.spread[1],
                              m_moments.spread[2] * m_moments.spread[2]};
    const double along = square[0] * w.x * w.x + square[1] * w.y * w.y + square[2] * w.z * w.z + height * height;
    const double all = square[0] + square[1] + square[2] + Dot(quadric.centre, quadric.centre);
    const double slope = std::sqrt((all - along) / along);
    TryFrom(ConeAbout(m_moments.mean, quadric.axis[0], quadric.centre, slope * std::fabs(height),
                      Atan(std::copysign(slope, height))));
  }

  void Try(const Vec3& direction) {
    const Vec3 local = Unit(m_moments.Local(direction));
    const RevolutionQuadric found = m_judge->Judge(local, m_bothNappes);
    const double radius = m_bothNappes ? found.farSlope * std::fabs(found.height) : found.radius;
    const double slope = m_bothNappes ? std::copysign(found.farSlope, found.height) : found.slope;
    TryFrom(ConeAbout(m_moments.mean, direction, m_moments.Along(found.toAxis), radius, Atan(slope)));
    if (m_bothNappes) return;
    const RevolutionQuadric other = m_judge->Regress(local);
    TryFrom(ConeAbout(m_moments.mean, direction, m_moments.Along(other.toAxis), other.radius, Atan(other.slope)));
  }

  void TryAll(const QuadricAxes& quadric) {
    if (!m_judge) m_judge.emplace(m_moments);
    for (const Vec3& axis : quadric.axis) Try(axis);
    for (const Vec3& axis : m_moments.axis) Try(axis);
    TryDirections(
        m_moments, m_trials, [this](const Vec3& w) { return m_judge->Judge(w, m_bothNappes).meanSquare; },
        [this](const Vec3& w) { Try(Unit(m_moments.Along(w))); });
  }

  // A second nappe has to explain much of what the first one leaves.
  void TryBothNappes(const QuadricAxes& quadric) {
    const Found settled = std::exchange(m_settled, {});
    const Found unsettled = std::exchange(m_unsettled, {});
    m_bothNappes = true;
    TryQuadric(quadric);
    if (!IsClear()) TryAll(quadric);
    if (Least() <= kBothNappes * std::min(settled.sumSquares, unsettled.sumSquares)) return;
    m_settled = settled;
    m_unsettled = unsettled;
  }

  // Whether the root mean square is no more than this part of the plane's.
  bool IsWithin(double part) const {
    const double fromPlane = m_moments.spread[2] * m_moments.spread[2] * static_cast<double>(m_points.Size());
    return Least() <= part * part * fromPlane;
  }

  bool IsClear() const { return m_points.Size() > kFewPoints && IsWithin(kClear); }

  // What had not settled counts if it does so in the end: where no cone is the best one, steps lead on and on.
  void Keep() {
    if (m_unsettled.sumSquares < m_settled.sumSquares) {
      m_fit.Place(m_unsettled.model);
      if (m_fit.Descend(kFinalSteps) || !(m_settled.sumSquares < kInfinity)) return;
    }
    m_fit.Place(m_settled.model);
  }

 private:
  void TryFrom(ConeModel model) {
    model.bothNappes = m_bothNappes;
    m_fit.Place(model);
    const bool settled = m_fit.Descend(kTrialSteps);
    (settled ? m_settled : m_unsettled).Take(m_fit, m_points.Scale());
  }

  double Least() const { return std::min(m_settled.sumSquares, m_unsettled.sumSquares); }

  const FourthMoments& m_moments;
  std::optional<DirectionJudge> m_judge;
  PointBlocks& m_points;
  ConeLeastSquares& m_fit;
  int m_trials;
  bool m_bothNappes = false;
  Found m_settled;
  Found m_unsettled;
};

}  // namespace

bool StartCone(PointBlocks& points, ConeLeastSquares& fit) {
  const FourthMoments moments = FindFourthMoments(points);
  const QuadricAxes quadric = FindQuadricAxes(moments);
  if (!quadric.solvable) return false;
  ConeSearch search(moments, points, fit);
  search.TryQuadric(quadric);
  if (search.IsClear()) return search.Keep(), true;
  search.TryAll(quadric);
  if (!search.IsWithin(kOneNappe)) search.TryBothNappes(quadric);
  search.Keep();
  return true;
}

}  // namespace nu::engine::least_squares
