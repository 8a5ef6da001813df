#include "nu/engine/minimax/enclosing_cylinder.h"

#include <limits>

#include "nu/engine/base/lanes.h"
#include "nu/engine/minimax/axis_search.h"
#include "nu/engine/points/principal_direction.h"

namespace nu::engine::minimax {
namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// The errors of the two products with the frame, in units of the farthest point's.
constexpr double kRoundings = 4.0;

// Points so much longer than wide have hardly a second optimum: none was found in 2000 trials.
constexpr double kSlim = 0.1;

struct Reach {
  double low = kInfinity;  // along the axis
  double high = -kInfinity;
  double square = 0.0;  // the largest squared distance from the origin of the frame
  double across = 0.0;  // and from the axis
};

NU_ALWAYS_INLINE void LoadLocal(const PointBlock& block, std::size_t i, const AxisFrame& f, Lanes& u, Lanes& v,
                                Lanes& w) {
  Lanes x, y, z;
  Load(block.x + i, x);
  Load(block.y + i, y);
  Load(block.z + i, z);
  x -= f.origin.x;
  y -= f.origin.y;
  z -= f.origin.z;
  u = x * f.x.x + y * f.x.y + z * f.x.z;
  v = x * f.y.x + y * f.y.y + z * f.y.z;
  w = x * f.z.x + y * f.z.y + z * f.z.z;
}

NU_KERNEL void FindReach(const PointBlock& block, const AxisFrame& frame, Reach& found) {
  const AxisFrame f = frame;
  Lanes low = kInfinity - Lanes{};
  Lanes high = -low;
  Lanes widest = {};
  Lanes most = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes u, v, w;
    LoadLocal(block, i, f, u, v, w);
    low = w < low ? w : low;
    high = w > high ? w : high;
    const Lanes across = u * u + v * v;
    const Lanes square = across + w * w;
    widest = across > widest ? across : widest;
    most = square > most ? square : most;
  }
  found = {Smallest(low), Largest(high), Largest(most), Largest(widest)};
}

NU_KERNEL void FindDistances(const PointBlock& block, const AxisFrame& frame, double* distance, double& smallest,
                             double& largest) {
  const AxisFrame f = frame;
  Lanes low = kInfinity - Lanes{};
  Lanes high = -low;
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes u, v, w;
    LoadLocal(block, i, f, u, v, w);
    Lanes d = u * u + v * v;
    TakeSquareRoot(d);
    Store(d, distance + i);
    low = d < low ? d : low;
    high = d > high ? d : high;
  }
  smallest = Smallest(low);
  largest = Largest(high);
}

NU_KERNEL void FindGradients(const PointBlock& block, const AxisFrame& frame, double half, double* distance,
                             double (*gradient)[kMostRows]) {
  const AxisFrame f = frame;
  const Lanes zero = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes u, v, w;
    LoadLocal(block, i, f, u, v, w);
    Lanes d = u * u + v * v;
    TakeSquareRoot(d);
    Store(d, distance + i);
    // On the axis any direction would do.
    u = d > zero ? -u / d : zero;
    v = d > zero ? -v / d : zero;
    w /= half;
    Store(u, gradient[0] + i);
    Store(v, gradient[1] + i);
    Store(u * w, gradient[2] + i);
    Store(v * w, gradient[3] + i);
  }
}

}  // namespace

void AxisDistance::Deviations(const PointBlock& block, double* deviation, double& smallest, double& largest) const {
  FindDistances(block, frame, deviation, smallest, largest);
}

void AxisDistance::Gradients(const PointBlock& block, double* deviation, double (*gradient)[kMostRows]) const {
  FindGradients(block, frame, half, deviation, gradient);
}

// With (u, v, w) the point in the frame, shift (a, b) and tilt (alpha, beta) = (c, d) / half, the squared distance is
//
//   (u - a - w alpha)^2 + (v - b - w beta)^2 - (u alpha + v beta)^2 + terms of third order,
//
// and the second derivatives of the distance are those of half its square, less the product of its first derivatives,
// by the distance.
void AxisDistance::AddCurvature(const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) const {
  const Vec3 q = frame.Local(point);
  const double distance = std::sqrt(q.x * q.x + q.y * q.y);
  if (distance == 0.0) return;
  const double w = q.z / half;
  const double u = q.x / half;
  const double v = q.y / half;
  const double ex = q.x / distance;
  const double ey = q.y / distance;
  const double first[kUnknowns] = {ex, ey, ex * w, ey * w};
  const double second[kUnknowns][kUnknowns] = {
      {1.0, 0.0, w, 0.0}, {0.0, 1.0, 0.0, w}, {w, 0.0, w * w - u * u, -u * v}, {0.0, w, -u * v, w * w - v * v}};
  const double factor = weight / distance;
  for (int i = 0; i < kUnknowns; ++i)
    for (int j = 0; j < kUnknowns; ++j) sum[i][j] += factor * (second[i][j] - first[i] * first[j]);
}

AxisDistance AxisDistance::Moved(const double (&step)[kUnknowns]) const {
  return {frame.Moved(step[0], step[1], step[2] / half, step[3] / half), half};
}

// Quarters of the length, octants around.
int AxisDistance::Stratum(const Vec3& point) const {
  const Vec3 q = frame.Local(point);
  const int quarter = q.z < 0.0 ? (q.z < -0.5 * half ? 0 : 1) : (q.z < 0.5 * half ? 2 : 3);
  const int octant = (q.x < 0.0 ? 1 : 0) + (q.y < 0.0 ? 2 : 0) + (std::fabs(q.x) < std::fabs(q.y) ? 4 : 0);
  return 8 * quarter + octant;
}

namespace {

Reach ReachOf(PointBlocks& points, const AxisFrame& frame) {
  Reach reach;
  points.ForEach([&](const PointBlock& block) {
    Reach part;
    FindReach(block, frame, part);
    reach.low = std::min(reach.low, part.low);
    reach.high = std::max(reach.high, part.high);
    reach.square = std::max(reach.square, part.square);
    reach.across = std::max(reach.across, part.across);
  });
  return reach;
}

// Frames turn with the points, so that the optimum found does. Of two principal directions one is across.
Vec3 PrincipalAcross(PointBlocks& points, const Vec3& direction) {
  constexpr double mostCosine = 0.8;
  const Vec3 smallest = FindPrincipalDirection(points, Extent::smallest).direction;
  if (std::fabs(Dot(smallest, direction)) < mostCosine) return smallest;
  return FindPrincipalDirection(points, Extent::largest).direction;
}

}  // namespace

MinimaxSolution<AxisDistance> SmallestCylinder(PointBlocks& points, const Vec3& mean, const Vec3& direction,
                                               long limit) {
  const Reach reach = ReachOf(points, AxisFrame::Along(mean, direction));
  const double half = 0.5 * (reach.high - reach.low);
  const Vec3 middle = mean + (0.5 * (reach.high + reach.low)) * direction;
  const double rounding = kRoundings * kEpsilon * std::sqrt(reach.square);
  Minimax<AxisDistance> minimax(points, MinimaxSide::outer, rounding, limit);
  if (!(reach.across > kSlim * kSlim * half * half)) return minimax.Solve({AxisFrame::Along(middle, direction), half});

  const AxisFrame frame = AxisFrame::Along(middle, direction, PrincipalAcross(points, direction));
  MinimaxSolution<AxisDistance> best = minimax.Solve({frame, half});
  if (best.end == MinimaxEnd::limitReached) return best;
  if (AxisSearch::IsProven(KnownCylinder(best))) return best;
  AxisSearch search(points, best.model.frame, minimax.KnownPoints());
  AxisDistance start;
  while (search.FindSmaller(KnownCylinder(best), start)) {
    const MinimaxSolution<AxisDistance> other = minimax.Improve(start, best.value - rounding);
    if (other.end == MinimaxEnd::converged) best = other;
  }
  return best;
}

}  // namespace nu::engine::minimax
