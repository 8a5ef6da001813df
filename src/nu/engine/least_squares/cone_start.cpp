#include "nu/engine/least_squares/cone_start.h"

#include <limits>
#include <optional>
#include <utility>

#include "nu/engine/base/elementary.h"
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

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Points on both nappes leave at least this part of the plane's root mean square when one nappe is fitted, and both
// nappes leave at most this part of the sum of squares that one nappe leaves.
constexpr double kOneNappe = 0.1;
constexpr double kBothNappes = 0.25;

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

class DirectionJudge {
 public:
  explicit DirectionJudge(const FourthMoments& m);

  // Directions in the principal frame. The best over all slopes, but for the cylinder's when both nappes are wanted.
  RevolutionQuadric Judge(const Vec3& w, bool bothNappes) const;
  // As judged with the slope that the points show when their distances from the axis are regressed on their heights:
  // biased on arcs, but never next to a plane.
  RevolutionQuadric Regress(const Vec3& w) const;

 private:
  // Mean values of products with z, the height along the direction.
  struct DirectionMoments {
    Vec3 direction;
    double square = 0.0;   // z^2
    double fourth = 0.0;   // z^4
    double mixed = 0.0;    // |p|^2 z^2
    double third[3] = {};  // p z^2
  };
  DirectionMoments Along(const Vec3& w) const;
  RevolutionQuadric QuadricAlong(const DirectionMoments& moments, double slope, double root) const;

  double m_square[3];
  double m_fourth[3][3];  // E[p_i^2 |p|^2] and so on: E[p_i p_j |p|^2]
  double m_cubic[3];      // E[p_i |p|^2]
  double m_third[3][6];   // E[p_i p_j p_k], products of different factors twice
  double m_along[15];     // E[p_i^a p_j^b p_k^c] of degree 4 with the multinomial factors
  double m_trace = 0.0;
  double m_fourthTrace = 0.0;
  double m_unit;
};

constexpr int kPairs[6][2] = {{0, 0}, {1, 1}, {2, 2}, {0, 1}, {0, 2}, {1, 2}};

DirectionJudge::DirectionJudge(const FourthMoments& m) : m_unit(m.spread[0]) {
  const double s[3] = {1.0, m.spread[1] / m_unit, m.spread[2] / m_unit};
  // E of the product of up to four coordinates.
  const auto moment = [&](std::initializer_list<int> coordinates) {
    int power[3] = {};
    double factor = 1.0;
    for (const int c : coordinates) {
      ++power[c];
      factor *= s[c];
    }
    return factor * m.Of(power[0], power[1], power[2]);
  };
  for (int i = 0; i < 3; ++i) {
    m_square[i] = moment({i, i});
    m_trace += m_square[i];
    m_cubic[i] = 0.0;
    for (int j = 0; j < 3; ++j) {
      m_cubic[i] += moment({i, j, j});
      m_fourth[i][j] = 0.0;
      for (int k = 0; k < 3; ++k) m_fourth[i][j] += moment({i, j, k, k});
    }
    for (int k = 0; k < 6; ++k) {
      const auto [p, q] = kPairs[k];
      m_third[i][k] = moment({i, p, q}) * (p == q ? 1.0 : 2.0);
    }
    m_fourthTrace += m_fourth[i][i];
  }
  const auto power = [](double x, int n) {
    double result = 1.0;
    for (int k = 0; k < n; ++k) result *= x;
    return result;
  };
  int next = 0;
  for (int a = 0; a <= 4; ++a) {
    for (int b = 0; a + b <= 4; ++b) {
      constexpr double kFactorial[] = {1.0, 1.0, 2.0, 6.0, 24.0};
      const int c = 4 - a - b;
      const double ways = kFactorial[4] / (kFactorial[a] * kFactorial[b] * kFactorial[c]);
      m_along[next++] = ways * power(s[1], b) * power(s[2], c) * m.Of(a, b, c);
    }
  }
}

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

DirectionJudge::DirectionMoments DirectionJudge::Along(const Vec3& w) const {
  DirectionMoments moments{w};
  const double along[3] = {w.x, w.y, w.z};
  double pairs[6];
  for (int k = 0; k < 6; ++k) pairs[k] = along[kPairs[k][0]] * along[kPairs[k][1]];
  double powers[3][5];
  for (int i = 0; i < 3; ++i) {
    powers[i][0] = 1.0;
    for (int k = 1; k <= 4; ++k) powers[i][k] = powers[i][k - 1] * along[i];
  }
  int next = 0;
  for (int a = 0; a <= 4; ++a)
    for (int b = 0; a + b <= 4; ++b)
      moments.fourth += m_along[next++] * powers[0][a] * powers[1][b] * powers[2][4 - a - b];
  for (int i = 0; i < 3; ++i) {
    for (int k = 0; k < 6; ++k) moments.third[i] += m_third[i][k] * pairs[k];
    for (int j = 0; j < 3; ++j) moments.mixed += m_fourth[i][j] * along[i] * along[j];
    moments.square += m_square[i] * pairs[i];
  }
  return moments;
}

// With the mean square given by the eigenvalue.
RevolutionQuadric DirectionJudge::QuadricAlong(const DirectionMoments& moments, double slope, double root) const {
  const double g = 1.0 + slope * slope;
  const double mean = m_trace - g * moments.square;
  double linear[3];
  for (int i = 0; i < 3; ++i) linear[i] = -(m_cubic[i] - g * moments.third[i]) / (m_square[i] - root);
  const Vec3 b = LoadVec3(linear);
  const double along = Dot(b, moments.direction);
  const Vec3 across = -0.5 * (b - along * moments.direction);
  const double radius = std::sqrt(std::max(Dot(across, across) + mean, 0.25 * (m_trace - moments.square)));
  const double height = slope > 0.0 ? -0.5 * along / (slope * slope) : 0.0;
  return {root, m_unit * across, m_unit * radius, -0.5 * along / radius, slope, m_unit * height};
}

RevolutionQuadric DirectionJudge::Judge(const Vec3& w, bool bothNappes) const {
  const DirectionMoments moments = Along(w);
  double least = kInfinity;
  double best = 0.0;
  for (const double slope : kSlopes) {
    if (bothNappes && slope == 0.0) continue;
    const double g = 1.0 + slope * slope;
    const double mean = m_trace - g * moments.square;
    const double variance = m_fourthTrace - 2.0 * g * moments.mixed + g * g * moments.fourth - mean * mean;
    const double gradient = 4.0 * (m_trace - moments.square + slope * slope * slope * slope * moments.square);
    const double scale = 1.0 / std::sqrt(gradient);
    double border[3];
    for (int i = 0; i < 3; ++i) border[i] = scale * (m_cubic[i] - g * moments.third[i]);
    const double root = SmallestRoot(variance * scale * scale, border, m_square);
    if (!(root < least)) continue;
    least = root;
    best = slope;
  }
  return QuadricAlong(moments, best, least);
}

RevolutionQuadric DirectionJudge::Regress(const Vec3& w) const {
  const DirectionMoments moments = Along(w);
  return QuadricAlong(moments, QuadricAlong(moments, 0.0, 0.0).slope, 0.0);
}

class ConeSearch {
  struct Found {
    ConeModel model;
    double sumSquares = kInfinity;
  };

 public:
  ConeSearch(const FourthMoments& moments, PointBlocks& points, ConeLeastSquares& fit)
      : m_moments(moments),
        m_points(points),
        m_fit(fit),
        m_trials(points.Size() > kFewPoints ? kTrials : kTrialsOfFew) {}

  // In the frame of the blocks.
  void TryQuadric(const QuadricAxes& quadric);
  void Try(const Vec3& direction);
  void TryAll(const QuadricAxes& quadric);
  void TryBothNappes(const QuadricAxes& quadric);
  // Whether the root mean square is no more than this part of the plane's.
  bool IsWithin(double part) const;
  bool IsClear() const { return m_points.Size() > kFewPoints && IsWithin(kClear); }
  void Keep();

 private:
  Vec3 ToLocal(const Vec3& v) const {
    return {Dot(v, m_moments.axis[0]), Dot(v, m_moments.axis[1]), Dot(v, m_moments.axis[2])};
  }
  void TryFrom(ConeModel model);
  void Take(const ConeModel& model, double sumSquares, Found& best) const;
  double Least() const;

  const FourthMoments& m_moments;
  std::optional<DirectionJudge> m_judge;
  PointBlocks& m_points;
  ConeLeastSquares& m_fit;
  int m_trials;
  bool m_bothNappes = false;
  Found m_settled;
  Found m_onItsWay;
};

double SizeOf(const ConeModel& m) {
  return std::fabs(m.rise + m.height * Cos(m.angle));
}

// Sums within the rounding errors of the coordinates are as good as each other, and then the smaller cone counts: the
// order in which they are found must not.
void ConeSearch::Take(const ConeModel& model, double sumSquares, Found& best) const {
  const double level = m_fit.RoundingLevel();
  const bool improves = sumSquares <= level && best.sumSquares <= level ? SizeOf(model) < SizeOf(best.model)
                                                                        : sumSquares < best.sumSquares;
  if (improves) best = {model, sumSquares};
}

void ConeSearch::TryFrom(ConeModel model) {
  model.bothNappes = m_bothNappes;
  m_fit.Place(model);
  const bool settled = m_fit.Descend(kTrialSteps);
  const double scale = m_points.Scale();
  const double sumSquares = m_fit.DeviationsNow().sumSquares * scale * scale;
  Take(m_fit.Model(), sumSquares, settled ? m_settled : m_onItsWay);
}

// With the slope that gives the mean square of the distances from the axis for that of the heights over the apex.
void ConeSearch::TryQuadric(const QuadricAxes& quadric) {
  const double height = -Dot(quadric.centre, quadric.axis[0]);
  const Vec3 w = ToLocal(quadric.axis[0]);
  const double square[3] = {m_moments.spread[0] * m_moments.spread[0], m_moments.spread[1] * m_moments.spread[1],
                            m_moments.spread[2] * m_moments.spread[2]};
  const double along = square[0] * w.x * w.x + square[1] * w.y * w.y + square[2] * w.z * w.z + height * height;
  const double all = square[0] + square[1] + square[2] + Dot(quadric.centre, quadric.centre);
  const double slope = std::sqrt((all - along) / along);
  TryFrom(ConeAbout(m_moments.mean, quadric.axis[0], quadric.centre, slope * std::fabs(height),
                    Atan(std::copysign(slope, height))));
}

void ConeSearch::Try(const Vec3& direction) {
  const Vec3 local = Unit(ToLocal(direction));
  const RevolutionQuadric found = m_judge->Judge(local, m_bothNappes);
  const double radius = m_bothNappes ? found.farSlope * std::fabs(found.height) : found.radius;
  const double slope = m_bothNappes ? std::copysign(found.farSlope, found.height) : found.slope;
  TryFrom(ConeAbout(m_moments.mean, direction, m_moments.Along(found.toAxis), radius, Atan(slope)));
  if (m_bothNappes) return;
  const RevolutionQuadric other = m_judge->Regress(local);
  TryFrom(ConeAbout(m_moments.mean, direction, m_moments.Along(other.toAxis), other.radius, Atan(other.slope)));
}

double ConeSearch::Least() const {
  return std::min(m_settled.sumSquares, m_onItsWay.sumSquares);
}

bool ConeSearch::IsWithin(double part) const {
  const double fromPlane = m_moments.spread[2] * m_moments.spread[2] * static_cast<double>(m_points.Size());
  return Least() <= part * part * fromPlane;
}

void ConeSearch::TryAll(const QuadricAxes& quadric) {
  if (!m_judge) m_judge.emplace(m_moments);
  for (const Vec3& axis : quadric.axis) Try(axis);
  for (const Vec3& axis : m_moments.axis) Try(axis);
  TryDirections(
      m_moments, m_trials, [this](const Vec3& w) { return m_judge->Judge(w, m_bothNappes).meanSquare; },
      [this](const Vec3& w) { Try(Unit(m_moments.Along(w))); });
}

// Points just behind the apex are no second nappe: it has to explain much of what the first one leaves.
void ConeSearch::TryBothNappes(const QuadricAxes& quadric) {
  const Found settled = std::exchange(m_settled, {});
  const Found onItsWay = std::exchange(m_onItsWay, {});
  m_bothNappes = true;
  TryQuadric(quadric);
  if (!IsClear()) TryAll(quadric);
  if (Least() <= kBothNappes * std::min(settled.sumSquares, onItsWay.sumSquares)) return;
  m_settled = settled;
  m_onItsWay = onItsWay;
}

// What was still on its way counts if it settles in the end: where no cone is the best one, steps lead on and on.
void ConeSearch::Keep() {
  if (m_onItsWay.sumSquares < m_settled.sumSquares) {
    m_fit.Place(m_onItsWay.model);
    if (m_fit.Descend(kFinalSteps) || !(m_settled.sumSquares < kInfinity)) return;
  }
  m_fit.Place(m_settled.model);
}

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
