// Start values come from a sample of the points, in units of its extent.
//
// About an axis. In the half-plane of the distance rho from the axis and the height h along it a torus is the circle
// rho^2 + h^2 = 2 R rho + 2 h0 h + c, which regression gives (I. Kasa, IEEE Trans. Instrumentation and Measurement 25,
// 1976). The axis runs through the mean, or through the centre of the circle that fits the points seen along it, in one
// of the 13 directions of the corners, edges and faces of a cube in the principal frame; few points have more optima,
// for which 49 directions are tried.
//
// From a patch. A paraboloid over the plane of the points has the curvatures k1 and k2. One of them is that of the
// tube; the normal meets the axis at the centre of the other one. How far the patch is around the tube, at the angle
// phi, only higher derivatives show: some are tried.
//
// From a tube. Its middle circle and mean distance.
//
// From a cylinder, for short arcs. Where the middle is bent by the curvature (k, l), the points at z along the cylinder
// and in the direction (c, s) deviate from it by z^2 (k c + l s) / 2; regression on that and on moves of the cylinder
// gives the bend.
//
// The descent is taken from the starts with the least sums, until several have come to the same optimum; the best one
// of the sample is the start for all points.

#include "nu/engine/association/torus_least_squares.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/linear/eigen_symmetric.h"
#include "nu/engine/linear/small_cholesky.h"
#include "nu/engine/minimax/smallest_tube.h"
#include "nu/engine/points/mean.h"
#include "nu/engine/points/point_sample.h"

namespace nu::engine::association {
namespace {

constexpr std::size_t kSamplePoints = 256;
constexpr long kSampleSteps = 100;
constexpr std::size_t kMostDescents = 48;
constexpr std::size_t kFewPoints = 32;
constexpr std::size_t kMostDescentsOfFew = 160;
constexpr long kTubeSteps = 100;
constexpr long kCylinderSteps = 12;
constexpr std::size_t kMostCylinders = 3;
// So many descents to the same sum, to this part of it, are enough.
constexpr int kMostSame = 4;
constexpr int kMostSameOfFew = 24;
constexpr double kSame = 1e-9;

// Others meet their axis, and no torus of the classes does: an optimum of theirs hides the one of a torus.
bool IsRing(const Feature& torus) {
  return torus.size[1] > 0.0 && torus.size[0] > torus.size[1];
}

struct Start {
  Feature torus;
  double squares = 0.0;
};

Feature TorusAt(const Vec3& centre, const Vec3& axis, double major, double minor) {
  Feature torus;
  torus.kind = FeatureKind::torus;
  torus.frame = AxisFrame::Along(centre, axis);
  torus.size[0] = major;
  torus.size[1] = minor;
  return torus;
}

// Linear regression by the normal equations, which is enough for starts.
template<int N>
struct Regression {
  double a[N][N] = {};
  double b[N] = {};
  double x[N];

  void Add(const double (&row)[N], double value) {
    for (int i = 0; i < N; ++i) {
      b[i] += row[i] * value;
      for (int j = 0; j < N; ++j) a[i][j] += row[i] * row[j];
    }
  }
  bool Solve() { return linear::SolvePositive(a, b, x) > 0.0; }
};

class TorusStarts {
 public:
  explicit TorusStarts(std::vector<Vec3> points) : m_points(std::move(points)) {}

  // The least sum first.
  const std::vector<Start>& Find() {
    if (!FindPrincipalFrame()) return m_starts;
    AddAboutAxes();
    AddFromPatch();
    AddFromTube();
    AddFromCylinders();
    std::stable_sort(m_starts.begin(), m_starts.end(),
                     [](const Start& a, const Start& b) { return a.squares < b.squares; });
    return m_starts;
  }

 private:
  bool FindPrincipalFrame() {
    double moments[9] = {};
    for (const Vec3& p : m_points) {
      const double at[3] = {p.x, p.y, p.z};
      for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) moments[3 * i + j] += at[i] * at[j];
    }
    double values[3], vectors[9];
    if (!linear::DecomposeSymmetric(moments, 3, 3, values, vectors, 3)) return false;
    for (int k = 0; k < 3; ++k) m_axis[k] = Unit({vectors[k], vectors[3 + k], vectors[6 + k]});
    return true;
  }

  template<class Visit>
  void ForDirections(Visit visit) const {
    const int reach = m_points.size() <= kFewPoints ? 2 : 1;
    for (int i = -reach; i <= reach; ++i) {
      for (int j = -reach; j <= reach; ++j) {
        for (int k = 0; k <= reach; ++k) {
          // One of each two opposite directions, and none twice.
          if (k == 0 && (j < 0 || (j == 0 && i <= 0))) continue;
          if (i % 2 == 0 && j % 2 == 0 && k % 2 == 0) continue;
          visit(Unit(double(i) * m_axis[2] + (double(j) * m_axis[1] + double(k) * m_axis[0])));
        }
      }
    }
  }

  void AddAboutAxes() {
    ForDirections([this](const Vec3& direction) {
      AddAboutAxis({}, direction);
      AddAboutAxis(CentreAcross(direction), direction);
    });
  }

  void AddAboutAxis(const Vec3& through, const Vec3& direction) {
    const AxisFrame f = AxisFrame::Along(through, direction);
    Regression<3> fit;
    for (const Vec3& p : m_points) {
      const Vec3 q = f.Local(p);
      const double row[3] = {Hypot(q.x, q.y), q.z, 1.0};
      fit.Add(row, row[0] * row[0] + q.z * q.z);
    }
    if (!fit.Solve()) return;
    const auto& x = fit.x;
    const double major = 0.5 * x[0];
    const double height = 0.5 * x[1];
    Add(TorusAt(f.origin + height * f.z, direction, major, std::sqrt(x[2] + major * major + height * height)));
  }

  // The regression of the squared distance from the mean on the coordinates across.
  Vec3 CentreAcross(const Vec3& direction) const {
    const AxisFrame f = AxisFrame::Along({}, direction);
    Regression<3> fit;
    for (const Vec3& p : m_points) {
      const Vec3 q = f.Local(p);
      fit.Add({q.x, q.y, 1.0}, q.x * q.x + q.y * q.y);
    }
    if (!fit.Solve()) return {};
    const auto& x = fit.x;
    return 0.5 * (x[0] * f.x + x[1] * f.y);
  }

  void AddFromPatch() {
    constexpr int kTerms = 6;
    const AxisFrame f = AxisFrame::Along({}, m_axis[0], m_axis[2]);
    Regression<kTerms> fit;
    for (const Vec3& p : m_points) {
      const Vec3 q = f.Local(p);
      fit.Add({1.0, q.x, q.y, 0.5 * q.x * q.x, q.x * q.y, 0.5 * q.y * q.y}, q.z);
    }
    if (!fit.Solve()) return;
    const auto& c = fit.x;
    const double form[4] = {c[3], c[4], c[4], c[5]};
    double k[2], v[4];
    if (!linear::DecomposeSymmetric(form, 2, 2, k, v, 2)) return;
    const Vec3 first = v[0] * f.x + v[2] * f.y;
    const Vec3 second = v[1] * f.x + v[3] * f.y;
    const Vec3 foot = f.origin + c[0] * f.z;
    AddFromCurvatures(foot, f.z, first, k[0], k[1]);
    AddFromCurvatures(foot, f.z, second, k[1], k[0]);
  }

  // `along` is the direction around the tube, whose curvature towards the normal is `tube`.
  void AddFromCurvatures(const Vec3& foot, const Vec3& normal, const Vec3& along, double tube, double other) {
    constexpr double kAngles[] = {0.0, 0.5, -0.5, 1.0, -1.0, 1.5, -1.5};  // phi, radians
    const double minor = 1.0 / std::fabs(tube);
    const Vec3 middle = foot + (1.0 / tube) * normal;
    const Vec3 onAxis = foot + (1.0 / other) * normal;
    for (const double phi : kAngles) {
      const Vec3 axis = Cos(phi) * along + Sin(phi) * normal;
      const Vec3 outwards = Rejection(middle - onAxis, axis);
      Add(TorusAt(middle - outwards, axis, std::sqrt(Dot(outwards, outwards)), minor));
    }
  }

  void AddFromTube() {
    PointBlocks blocks({&m_points[0].x, sizeof(Vec3), m_points.size()}, {});
    const Tube tube = SmallestTube(blocks, TubeStarts::many, kTubeSteps);
    const TubeDistance& middle = tube.solution.model;
    if (!(middle.bend > 0.0)) return;
    Feature torus =
        TorusAt(middle.frame.origin - middle.Radius() * middle.frame.x, middle.frame.z, middle.Radius(), 0.0);
    torus.frame.origin = (1.0 / blocks.Scale()) * torus.frame.origin;
    torus.size[0] /= blocks.Scale();
    double sum = 0.0;
    for (const Vec3& p : m_points) sum += DeviationOf(torus, p);
    torus.size[1] = sum / static_cast<double>(m_points.size());
    Add(torus);
  }

  void AddFromCylinders() {
    std::vector<Start> cylinders;
    FitProblem problem;
    problem.points = {&m_points[0].x, sizeof(Vec3), m_points.size()};
    problem.mostSteps = kCylinderSteps;
    ForDirections([&](const Vec3& direction) {
      Feature cylinder;
      cylinder.kind = FeatureKind::cylinder;
      const Vec3 centre = CentreAcross(direction);
      cylinder.frame = AxisFrame::Along(centre, direction);
      for (const Vec3& p : m_points) {
        const Vec3 q = cylinder.frame.Local(p);
        cylinder.size[0] += Hypot(q.x, q.y) / static_cast<double>(m_points.size());
      }
      const FittedFeature found = FitFrom(problem, cylinder);
      if (found.end != FitEnd::noOptimum) cylinders.push_back({found.feature, found.objective});
    });
    std::stable_sort(cylinders.begin(), cylinders.end(),
                     [](const Start& a, const Start& b) { return a.squares < b.squares; });
    if (cylinders.size() > kMostCylinders) cylinders.resize(kMostCylinders);
    for (const Start& cylinder : cylinders) AddBent(cylinder.torus);
  }

  void AddBent(const Feature& cylinder) {
    constexpr int kTerms = 7;
    const AxisFrame& f = cylinder.frame;
    Regression<kTerms> fit;
    for (const Vec3& p : m_points) {
      const Vec3 q = f.Local(p);
      const double rho = Hypot(q.x, q.y);
      if (!(rho > 0.0)) continue;
      const double c = q.x / rho, s = q.y / rho, half = 0.5 * q.z * q.z;
      fit.Add({1.0, c, s, c * q.z, s * q.z, c * half, s * half}, rho - cylinder.size[0]);
    }
    if (!fit.Solve()) return;
    const auto& x = fit.x;
    const Vec3 bend = x[5] * f.x + x[6] * f.y;
    const double major = 1.0 / std::sqrt(Dot(bend, bend));
    const Vec3 inwards = major * bend;
    Add(TorusAt(f.origin + major * inwards, Cross(f.z, inwards), major, cylinder.size[0]));
  }

  void Add(const Feature& torus) {
    if (!(torus.size[0] > 0.0 && torus.size[1] > 0.0) || !IsFinite(torus.frame.origin) || !IsFinite(torus.frame.x))
      return;
    Start start{torus, 0.0};
    for (const Vec3& p : m_points) {
      const double e = DeviationOf(torus, p);
      start.squares += e * e;
    }
    if (std::isfinite(start.squares)) m_starts.push_back(start);
  }

  std::vector<Vec3> m_points;
  Vec3 m_axis[3];  // by rising spread
  std::vector<Start> m_starts;
};

// The points about their mean, in units of about their extent.
struct UnitPoints {
  Vec3 mean;
  double unit = 0.0;
  std::vector<Vec3> points;

  explicit UnitPoints(PointView given) : mean(MeanOf(given)) {
    double farthest = 0.0;
    for (std::size_t i = 0; i < given.Size(); ++i) {
      const Vec3 q = LoadVec3(given[i]) - mean;
      farthest = std::max({farthest, std::fabs(q.x), std::fabs(q.y), std::fabs(q.z)});
    }
    if (!(farthest > 0.0) || !std::isfinite(farthest)) return;
    unit = std::ldexp(1.0, std::ilogb(farthest));
    for (std::size_t i = 0; i < given.Size(); ++i) {
      const Vec3 q = LoadVec3(given[i]) - mean;
      points.push_back({q.x / unit, q.y / unit, q.z / unit});
    }
  }

  Feature InCallersFrame(Feature torus) const {
    torus = Scaled(torus, unit);
    torus.frame.origin = mean + torus.frame.origin;
    return torus;
  }
};

// The best optimum of the sample, or its best start.
bool FindStart(const UnitPoints& sample, Feature& best) {
  TorusStarts starts(sample.points);
  FitProblem problem;
  problem.points = {&sample.points[0].x, sizeof(Vec3), sample.points.size()};
  problem.mostSteps = kSampleSteps;
  double least = kInfinity;
  const bool isFew = sample.points.size() <= kFewPoints;
  const std::size_t mostDescents = isFew ? kMostDescentsOfFew : kMostDescents;
  const int mostSame = isFew ? kMostSameOfFew : kMostSame;
  std::size_t descents = 0;
  int same = 0;
  for (const Start& start : starts.Find()) {
    if (++descents > mostDescents) break;
    const FittedFeature found = FitFrom(problem, start.torus);
    const bool isTorus = found.end != FitEnd::noOptimum && IsRing(found.feature);
    if (!isTorus && !IsRing(start.torus)) continue;
    const double squares = isTorus ? found.objective : start.squares;
    if (isTorus && std::fabs(squares - least) <= kSame * least && ++same >= mostSame) break;
    if (!(squares < least)) continue;
    if (!(squares > least * (1.0 - kSame))) same = 1;
    least = squares;
    best = isTorus ? found.feature : start.torus;
  }
  return least < kInfinity;
}

}  // namespace

FittedFeature LeastSquaresTorus(const FitProblem& problem) {
  FittedFeature failed;
  failed.feature.kind = FeatureKind::torus;
  if (problem.points.Size() == 0) return failed;
  const PointSample sample(problem.points, kSamplePoints);
  const UnitPoints unit(sample.View());
  Feature torus;
  if (unit.points.empty() || !FindStart(unit, torus)) return failed;
  FitProblem free = problem;
  free.fixed = 0;
  free.side = PointSide::either;
  return FitFrom(free, unit.InCallersFrame(torus));
}

}  // namespace nu::engine::association
