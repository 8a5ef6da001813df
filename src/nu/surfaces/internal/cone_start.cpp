#include "nu/surfaces/internal/cone_start.h"

#include <array>
#include <limits>

#include "nu/surfaces/internal/quadric_axes.h"

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

namespace nu::internal {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The refined cone is clear when its deviations' root mean square is this part of that from the best plane: what makes
// a wrong direction wrong is of the size of the latter.
constexpr double kClear = 0.03;
// With so few points a wrong cone may pass close to all of them.
constexpr std::size_t kFewPoints = 14;

// Steps of a refinement that is compared with others, and of the one that is kept.
constexpr int kTrialSteps = 30;
constexpr int kFinalSteps = 1000;

// Directions of each kind, of which so many are refined, no two closer than this cosine as the kind sees them.
constexpr int kDirections = 64;
constexpr int kTrials = 4;
constexpr double kSameDirection = 0.93;

// Tangents of 0, 30, 55, 75, 86 and 89 degrees.
constexpr double kSlopes[] = {0.0, 0.57735, 1.42815, 3.73205, 14.3007, 57.29};

struct RevolutionQuadric {
  double meanSquare = kInfinity;  // of the deviations, in units of the largest spread
  Vec3 toAxis;                    // from the mean, in the principal frame
  double radius = 0.0;            // around there
  double slope = 0.0;
};

class DirectionJudge {
 public:
  explicit DirectionJudge(const FourthMoments& m);

  // Directions in the principal frame. The best over all slopes.
  RevolutionQuadric Judge(const Vec3& w) const;
  // About this axis through the apex, both from the mean and in the principal frame.
  double SlopeFrom(const Vec3& apex, const Vec3& w) const;

 private:
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
  int next = 0;
  for (int a = 0; a <= 4; ++a) {
    for (int b = 0; a + b <= 4; ++b) {
      constexpr double kFactorial[] = {1.0, 1.0, 2.0, 6.0, 24.0};
      const int c = 4 - a - b;
      const double ways = kFactorial[4] / (kFactorial[a] * kFactorial[b] * kFactorial[c]);
      m_along[next++] = ways * std::pow(s[1], b) * std::pow(s[2], c) * m.Of(a, b, c);
    }
  }
}

// The smallest root of a - r - sum of c_i^2 / (d_i - r) in [0, least d]: it falls from below the least d on, and
// Newton's steps on it multiplied by that pole's factor come from the left.
double SmallestRoot(double a, const double (&c)[3], const double (&d)[3]) {
  double low = 0.0;
  double high = std::min({a, d[0], d[1], d[2]});
  constexpr int kMostSteps = 60;
  for (int k = 0; k < kMostSteps; ++k) {
    const double r = 0.5 * (low + high);
    double value = a - r;
    for (int i = 0; i < 3; ++i) value -= c[i] * c[i] / (d[i] - r);
    (value > 0.0 ? low : high) = r;
  }
  return low;
}

RevolutionQuadric DirectionJudge::Judge(const Vec3& w) const {
  const double along[3] = {w.x, w.y, w.z};
  double pairs[6];
  for (int k = 0; k < 6; ++k) pairs[k] = along[kPairs[k][0]] * along[kPairs[k][1]];
  double powers[3][5];
  for (int i = 0; i < 3; ++i) {
    powers[i][0] = 1.0;
    for (int k = 1; k <= 4; ++k) powers[i][k] = powers[i][k - 1] * along[i];
  }
  double alongFourth = 0.0;  // E z^4
  int next = 0;
  for (int a = 0; a <= 4; ++a)
    for (int b = 0; a + b <= 4; ++b)
      alongFourth += m_along[next++] * powers[0][a] * powers[1][b] * powers[2][4 - a - b];
  double squareAlong[3];  // E[p z^2]
  double mixed = 0.0;     // E[|p|^2 z^2]
  double alongSquare = 0.0;
  for (int i = 0; i < 3; ++i) {
    squareAlong[i] = 0.0;
    for (int k = 0; k < 6; ++k) squareAlong[i] += m_third[i][k] * pairs[k];
    for (int j = 0; j < 3; ++j) mixed += m_fourth[i][j] * along[i] * along[j];
    alongSquare += m_square[i] * pairs[i];
  }
  RevolutionQuadric best;
  for (const double slope : kSlopes) {
    const double g = 1.0 + slope * slope;
    const double mean = m_trace - g * alongSquare;
    const double variance = m_fourthTrace - 2.0 * g * mixed + g * g * alongFourth - mean * mean;
    const double gradient = 4.0 * (m_trace - alongSquare + slope * slope * slope * slope * alongSquare);
    const double scale = 1.0 / std::sqrt(gradient);
    double border[3];
    for (int i = 0; i < 3; ++i) border[i] = scale * (m_cubic[i] - g * squareAlong[i]);
    const double root = SmallestRoot(variance * scale * scale, border, m_square);
    if (!(root < best.meanSquare)) continue;
    double linear[3];
    for (int i = 0; i < 3; ++i) linear[i] = -border[i] / (m_square[i] - root) / scale;
    const Vec3 b = LoadVec3(linear);
    const double alongLinear = Dot(b, w);
    const Vec3 across = -0.5 * (b - alongLinear * w);
    const double radius = std::sqrt(std::max(Dot(across, across) + mean, 0.25 * (m_trace - alongSquare)));
    best = {root, m_unit * across, m_unit * radius, -0.5 * alongLinear / radius};
  }
  return best;
}

// The mean square of the distances from the axis over that of the coordinates along it.
double DirectionJudge::SlopeFrom(const Vec3& apex, const Vec3& w) const {
  const Vec3 a = (1.0 / m_unit) * apex;
  const double height = Dot(a, w);
  const double alongSquare = m_square[0] * w.x * w.x + m_square[1] * w.y * w.y + m_square[2] * w.z * w.z;
  const double across = m_trace - alongSquare + Dot(a, a) - height * height;
  return std::sqrt(across / (alongSquare + height * height));
}

// Evenly over half a sphere: equal steps in height, turned by the golden angle from one to the next.
std::array<Vec3, kDirections> EvenDirections() {
  std::array<Vec3, kDirections> directions;
  constexpr double kGoldenAngle = 2.3999632297286533;
  for (int k = 0; k < kDirections; ++k) {
    const double z = (k + 0.5) / kDirections;
    const double across = std::sqrt(1.0 - z * z);
    directions[static_cast<std::size_t>(k)] = {across * std::cos(kGoldenAngle * k), across * std::sin(kGoldenAngle * k),
                                               z};
  }
  return directions;
}

class ConeSearch {
 public:
  ConeSearch(const FourthMoments& moments, PointBlocks& points, ConeLeastSquares& fit)
      : m_moments(moments), m_judge(moments), m_points(points), m_fit(fit) {}

  // In the frame of the blocks. False when the cone could be refined further.
  bool TryQuadric(const QuadricAxes& quadric, int steps);
  bool Try(const Vec3& direction, int steps);
  void TryAll(const QuadricAxes& quadric);
  bool IsClear() const;
  void Keep();

 private:
  Vec3 ToLocal(const Vec3& v) const {
    return {Dot(v, m_moments.axis[0]), Dot(v, m_moments.axis[1]), Dot(v, m_moments.axis[2])};
  }
  bool TryFrom(const ConeModel& model, int steps);
  void TryBestOf(const std::array<Vec3, kDirections>& even, const Vec3& stretch);
  bool Improves(double sumSquares) const;

  const FourthMoments& m_moments;
  DirectionJudge m_judge;
  PointBlocks& m_points;
  ConeLeastSquares& m_fit;
  ConeModel m_best;
  double m_sumSquares = kInfinity;
};

double SizeOf(const ConeModel& m) {
  return std::fabs(m.rise + m.height * std::cos(m.angle));
}

// Sums within the rounding errors of the coordinates are as good as each other, and then the smaller cone counts: the
// order in which they are found must not.
bool ConeSearch::Improves(double sumSquares) const {
  const double level = m_fit.RoundingLevel();
  if (sumSquares <= level && m_sumSquares <= level) return SizeOf(m_fit.Model()) < SizeOf(m_best);
  return sumSquares < m_sumSquares;
}

bool ConeSearch::TryFrom(const ConeModel& model, int steps) {
  m_fit.Place(model);
  const bool settled = m_fit.Descend(steps);
  const double scale = m_points.Scale();
  const double sumSquares = m_fit.DeviationsNow().sumSquares * scale * scale;
  if (Improves(sumSquares)) {
    m_best = m_fit.Model();
    m_sumSquares = sumSquares;
  }
  return settled;
}

bool ConeSearch::TryQuadric(const QuadricAxes& quadric, int steps) {
  const double height = -Dot(quadric.centre, quadric.axis[0]);
  const double slope = m_judge.SlopeFrom(ToLocal(quadric.centre), Unit(ToLocal(quadric.axis[0])));
  return TryFrom(ConeAbout(m_moments.mean, quadric.axis[0], quadric.centre, slope * std::fabs(height),
                           std::atan(std::copysign(slope, height))),
                 steps);
}

bool ConeSearch::Try(const Vec3& direction, int steps) {
  const RevolutionQuadric found = m_judge.Judge(Unit(ToLocal(direction)));
  return TryFrom(
      ConeAbout(m_moments.mean, direction, m_moments.Along(found.toAxis), found.radius, std::atan(found.slope)), steps);
}

bool ConeSearch::IsClear() const {
  const double fromPlane = m_moments.spread[2] * m_moments.spread[2] * static_cast<double>(m_points.Size());
  return m_points.Size() > kFewPoints && m_sumSquares <= kClear * kClear * fromPlane;
}

// The best directions of a set that is even as seen by points that are stretched along their principal axes.
void ConeSearch::TryBestOf(const std::array<Vec3, kDirections>& even, const Vec3& stretch) {
  std::array<double, kDirections> value;
  std::array<Vec3, kDirections> direction;
  for (std::size_t k = 0; k < kDirections; ++k) {
    direction[k] = Unit({stretch.x * even[k].x, stretch.y * even[k].y, stretch.z * even[k].z});
    value[k] = m_judge.Judge(direction[k]).meanSquare;
  }
  for (int trial = 0; trial < kTrials; ++trial) {
    const std::size_t best = static_cast<std::size_t>(std::min_element(value.begin(), value.end()) - value.begin());
    if (!(value[best] < kInfinity)) return;
    Try(Unit(m_moments.Along(direction[best])), kTrialSteps);
    for (std::size_t k = 0; k < kDirections; ++k)
      if (std::fabs(Dot(even[k], even[best])) > kSameDirection) value[k] = kInfinity;
  }
}

void ConeSearch::TryAll(const QuadricAxes& quadric) {
  for (const Vec3& axis : quadric.axis) Try(axis, kTrialSteps);
  for (const Vec3& axis : m_moments.axis) Try(axis, kTrialSteps);
  // As they are; denser where the points extend, for flat and slender sets; denser across, for short ones.
  const double b = m_moments.spread[1] / m_moments.spread[0];
  const double c = m_moments.spread[2] / m_moments.spread[0];
  const std::array<Vec3, kDirections> even = EvenDirections();
  TryBestOf(even, {1.0, 1.0, 1.0});
  TryBestOf(even, {1.0, b, c});
  TryBestOf(even, {b * c, c, b});
}

void ConeSearch::Keep() {
  m_fit.Place(m_best);
  m_fit.Descend(kFinalSteps);
}

}  // namespace

bool StartCone(PointBlocks& points, ConeLeastSquares& fit) {
  const FourthMoments moments = FindFourthMoments(points);
  const QuadricAxes quadric = FindQuadricAxes(moments);
  if (!quadric.solvable) return false;
  ConeSearch search(moments, points, fit);
  const bool settled = search.TryQuadric(quadric, kTrialSteps);
  const bool clear = search.IsClear();
  if (!clear) search.TryAll(quadric);
  if (!clear || !settled) search.Keep();
  return true;
}

}  // namespace nu::internal
