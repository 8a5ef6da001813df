#include "nu/engine/minimax/annulus_exchange.h"

#include <tuple>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/points/point_lanes.h"

// Exchange. At a centre c whose annulus cannot be made narrower by a small move, two points lie on the outer and two on
// the inner circle, and seen from c they alternate (T. J. Rivlin, Approximation by circles, Computing 21, 1979). Four
// alternating points give a centre: it is equidistant from the outer two and from the inner two. A point outside this
// annulus takes the place of the outer point on its side of the chord between the inner directions, so that the four
// alternate again; one inside the inner circle likewise. To first order the width grows every time.
//
// Proof. With the unit directions u from the outer and v from the inner contacts to c, let k be the distance from 0 to
// the border of the parallelogram of the four u - v, which holds 0. Distances are convex, and the second derivative of
// the distance from a point d away is at most 1 / d: at c + x the width is at least
//
//   w + |x| (k - |x| / (2 (r - |x|))),   so nothing is narrower for |x| <= D = 2 k r / (1 + 2 k).
//
// Farther out, let some of the points have the directions a from c, and s be the width of the narrowest strip that
// holds these unit vectors. All points are within w / 2 of the circle with the mean radius q, and the distances of the
// a q from c + x differ by at least s q |x| / (q + |x|), which grows with |x|. So nothing is narrower anywhere,
// infinity included, when s q D / (q + D) >= 2 w.

namespace nu::engine::minimax {
namespace {

// Distances that differ by so many roundings of the radius are equal.
constexpr double kNoise = 16.0 * kEpsilon;
// The bounds are kept this far away from equality, far above their own rounding.
constexpr double kMargin = 1.0 + 1e-6;

constexpr std::size_t kSample = 64;
// More exchanges than points near a circle ever need; measured: up to 12 within the sample, up to 9 among all.
constexpr long kMostExchanges = 200;

struct Axes2 {
  Vec3 x, y;
};

struct LaneExtremes {
  double farSquare, nearSquare;
  std::size_t farIndex, nearIndex;
};

NU_KERNEL void FindExtremes(const PointBlock& block, const Axes2& given, const Vec2& centre, LaneExtremes& found) {
  const Axes2 axes = given;
  const Vec2 c = centre;
  Lanes far = -1.0 - Lanes{};
  Lanes near = kInfinity - Lanes{};
  Lanes farPlace = {};
  Lanes nearPlace = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes x, y, z;
    LoadPoints(block, i, x, y, z);
    const Lanes u = (axes.x.x * x + axes.x.y * y + axes.x.z * z) - c.x;
    const Lanes v = (axes.y.x * x + axes.y.y * y + axes.y.z * z) - c.y;
    const Lanes s = u * u + v * v;
    const Lanes place = static_cast<double>(i) - Lanes{};
    farPlace = s > far ? place : farPlace;
    far = s > far ? s : far;
    nearPlace = s < near ? place : nearPlace;
    near = s < near ? s : near;
  }
  found = {Largest(far), Smallest(near), 0, 0};
  for (int l = kLanes - 1; l >= 0; --l) {
    if (far[l] == found.farSquare) found.farIndex = static_cast<std::size_t>(farPlace[l]) + l;
    if (near[l] == found.nearSquare) found.nearIndex = static_cast<std::size_t>(nearPlace[l]) + l;
  }
  // Lanes beyond the last point are copies of it.
  found.farIndex = std::min(found.farIndex, block.size - 1);
  found.nearIndex = std::min(found.nearIndex, block.size - 1);
}

Vec2 InPlane(const Vec3& p, const Vec3 (&axis)[2]) {
  return {Dot(axis[0], p), Dot(axis[1], p)};
}

double Length(Vec2 v) {
  return std::sqrt(Dot(v, v));
}
Vec2 Direction(Vec2 v) {
  return (1.0 / Length(v)) * v;
}

double SideOf(Vec2 from, Vec2 to, Vec2 point) {
  return Cross(to - from, point - from);
}

}  // namespace

AnnulusExchange::AnnulusExchange(PointBlocks& points, const Vec3 (&axes)[2]) : m_points(points) {
  std::copy_n(axes, 2, m_axis);
}

AnnulusExchange::Extremes AnnulusExchange::ExtremesFrom(Vec2 centre) const {
  const Axes2 axes{m_axis[0], m_axis[1]};
  double far = -1.0;
  double near = kInfinity;
  Extremes extremes;
  m_points.ForEach([&](const PointBlock& block) {
    LaneExtremes found;
    FindExtremes(block, axes, centre, found);
    if (found.farSquare > far) {
      far = found.farSquare;
      extremes.farthest = InPlane(block.At(found.farIndex), m_axis);
    }
    if (found.nearSquare < near) {
      near = found.nearSquare;
      extremes.nearest = InPlane(block.At(found.nearIndex), m_axis);
    }
  });
  extremes.outer = std::sqrt(far);
  extremes.inner = std::sqrt(near);
  return extremes;
}

AnnulusExchange::Extremes AnnulusExchange::ExtremesAlong(Vec2 direction) const {
  Extremes extremes;
  extremes.outer = -kInfinity;
  extremes.inner = kInfinity;
  m_points.ForEachPoint([&](const Vec3& point) {
    const Vec2 p = InPlane(point, m_axis);
    const double along = Dot(p, direction);
    if (along > extremes.outer) extremes.outer = along, extremes.farthest = p;
    if (along < extremes.inner) extremes.inner = along, extremes.nearest = p;
  });
  return extremes;
}

AnnulusExchange::Extremes AnnulusExchange::ExtremesOfSample() const {
  Extremes extremes;
  extremes.inner = kInfinity;
  for (const Vec2& p : m_sample) {
    const double d = Length(p - m_centre);
    if (d > extremes.outer) extremes.outer = d, extremes.farthest = p;
    if (d < extremes.inner) extremes.inner = d, extremes.nearest = p;
  }
  return extremes;
}

std::vector<Vec2> AnnulusExchange::RepresentativePoints(Vec2 centre) const {
  struct Run {
    Vec2 farthest, nearest;
    double far = -1.0;
    double near = kInfinity;
  };
  std::vector<Run> runs(kSample);
  const std::size_t n = m_points.Size();
  std::size_t at = 0;
  m_points.ForEachPoint([&](const Vec3& point) {
    Run& run = runs[at++ * kSample / n];
    const Vec2 p = InPlane(point, m_axis);
    const double square = Dot(p - centre, p - centre);
    if (square > run.far) run.far = square, run.farthest = p;
    if (square < run.near) run.near = square, run.nearest = p;
  });
  std::vector<Vec2> points = m_sample;
  for (const Run& run : runs) {
    if (run.far >= 0.0) points.insert(points.end(), {run.farthest, run.nearest});
  }
  return points;
}

void AnnulusExchange::TakeSample(Vec2 start) {
  const std::size_t step = (m_points.Size() + kSample - 1) / kSample;
  m_sample.clear();
  m_sample.reserve(kSample);
  std::size_t before = 0;
  m_points.ForEach([&](const PointBlock& block) {
    for (std::size_t i = (step - before % step) % step; i < block.size; i += step) {
      m_sample.push_back(InPlane(block.At(i), m_axis));
    }
    before += block.size;
  });
  std::vector<std::pair<double, Vec2>> byAngle;
  byAngle.reserve(m_sample.size());
  for (const Vec2& p : m_sample) byAngle.emplace_back(DiamondAngle(p - start), p);
  std::sort(byAngle.begin(), byAngle.end(), [](const auto& a, const auto& b) {
    return std::tie(a.first, a.second.x, a.second.y) < std::tie(b.first, b.second.x, b.second.y);
  });
  for (std::size_t k = 0; k < byAngle.size(); ++k) m_sample[k] = byAngle[k].second;
}

AnnulusExchange::Outcome AnnulusExchange::Run(Vec2 start, long limit, AnnulusMonitor& monitor) {
  TakeSample(start);
  const std::size_t n = m_sample.size();
  if (n < 4) return Outcome::lost;
  for (const std::size_t k : {std::size_t{0}, std::size_t{1}}) {
    m_outer[k] = m_sample[2 * k * n / 4];
    m_inner[k] = m_sample[(2 * k + 1) * n / 4];
  }
  m_level = -kInfinity;
  if (!Solve()) return Outcome::lost;
  Outcome outcome = Outcome::limitReached;
  for (long k = 0; k < kMostExchanges && outcome == Outcome::limitReached; ++k) outcome = Exchange(ExtremesOfSample());
  if (outcome != Outcome::converged) return Outcome::lost;
  for (long k = 0; k < kMostExchanges; ++k) {
    if (k == limit) return Outcome::limitReached;
    m_extremes = ExtremesFrom(m_centre);
    if (!monitor.GoesOn(m_centre, m_extremes.outer - m_extremes.inner)) return Outcome::cancelled;
    outcome = Exchange(m_extremes);
    if (outcome == Outcome::converged) return Sharpness() > 0.0 && !IsFar() ? outcome : Outcome::lost;
    if (outcome == Outcome::lost) return outcome;
  }
  return Outcome::lost;
}

// The centre that the contacts give. False when it does not exist, or when the annulus has not become wider.
bool AnnulusExchange::Solve() {
  const Vec2 across = m_outer[1] - m_outer[0];
  const Vec2 along = Perpendicular(across);
  const Vec2 inner = m_inner[1] - m_inner[0];
  const Vec2 offset = 0.5 * ((m_inner[0] - m_outer[0]) + (m_inner[1] - m_outer[1]));
  const double share = AccurateDot(offset, inner) / AccurateDot(along, inner);
  m_centre = 0.5 * (m_outer[0] + m_outer[1]) + share * along;
  const double level = Length(m_outer[0] - m_centre) - Length(m_inner[0] - m_centre);
  const bool wider = level > m_level;
  m_level = level;
  return wider;
}

// Converged when no point is beyond the circles through the contacts; "limit reached" after an exchange.
AnnulusExchange::Outcome AnnulusExchange::Exchange(const Extremes& seen) {
  const double outer = std::max(Length(m_outer[0] - m_centre), Length(m_outer[1] - m_centre));
  const double inner = std::min(Length(m_inner[0] - m_centre), Length(m_inner[1] - m_centre));
  const bool isOutside = seen.outer > outer * (1.0 + kNoise);
  const bool isInside = seen.inner < inner - kNoise * outer;
  if (!isOutside && !isInside) return Outcome::converged;
  if (isOutside && !Replace(m_outer, m_inner, seen.farthest)) return Outcome::lost;
  if (isInside && !Replace(m_inner, m_outer, seen.nearest)) return Outcome::lost;
  return Solve() ? Outcome::limitReached : Outcome::lost;
}

bool AnnulusExchange::Replace(Vec2 (&pair)[2], const Vec2 (&other)[2], Vec2 point) const {
  const Vec2 from = Direction(other[0] - m_centre);
  const Vec2 to = Direction(other[1] - m_centre);
  const double first = SideOf(from, to, Direction(pair[0] - m_centre));
  const double second = SideOf(from, to, Direction(pair[1] - m_centre));
  if (!(first * second < 0.0)) return false;
  const double side = SideOf(from, to, Direction(point - m_centre));
  pair[side * first > 0.0 ? 0 : 1] = point;
  return true;
}

bool AnnulusExchange::IsFar() const {
  double size = 0.0;
  for (const Vec2& p : m_sample) size = std::max(size, Length(p - m_sample.front()));
  return !(m_extremes.outer <= kFarthestCentre * size);
}

// k: the parallelogram of the u - v has its corners at u0 - v0, u0 - v1, u1 - v1, u1 - v0. Below 0 when it does not
// hold 0.
double AnnulusExchange::Sharpness() const {
  const Vec2 u[2] = {Direction(m_centre - m_outer[0]), Direction(m_centre - m_outer[1])};
  const Vec2 v[2] = {Direction(m_centre - m_inner[0]), Direction(m_centre - m_inner[1])};
  const Vec2 corner[4] = {u[0] - v[0], u[0] - v[1], u[1] - v[1], u[1] - v[0]};
  const double turn = Cross(corner[1] - corner[0], corner[2] - corner[1]);
  double least = kInfinity;
  for (int k = 0; k < 4; ++k) {
    const Vec2 side = corner[(k + 1) % 4] - corner[k];
    least = std::min(least, std::copysign(1.0, turn) * Cross(corner[k], side) / Length(side));
  }
  return least;
}

// s, of every step-th direction of the sample: points of a circle in order are corners of a convex polygon, whose
// narrowest strip lies along one of its sides.
double AnnulusExchange::Coverage(std::size_t step) const {
  std::vector<Vec2> directions;
  for (std::size_t k = 0; k < m_sample.size(); k += step) directions.push_back(Direction(m_sample[k] - m_centre));
  // In order from the start, but hardly ever from here.
  std::sort(directions.begin(), directions.end(), [](Vec2 a, Vec2 b) {
    return std::make_tuple(DiamondAngle(a), a.x) < std::make_tuple(DiamondAngle(b), b.x);
  });
  double narrowest = 2.0;
  for (std::size_t k = 0; k < directions.size(); ++k) {
    const Vec2 side = directions[(k + 1) % directions.size()] - directions[k];
    const double length = Length(side);
    if (!(length > kNoise)) continue;
    double widest = 0.0;
    for (const Vec2& d : directions) widest = std::max(widest, std::fabs(Cross(side, d - directions[k])));
    narrowest = std::min(narrowest, widest / length);
  }
  return narrowest;
}

bool AnnulusExchange::IsProven() const {
  const double width = m_extremes.outer - m_extremes.inner;
  const double sharpness = Sharpness();
  if (!(sharpness > 0.0)) return false;
  const double within = 2.0 * sharpness * m_extremes.inner / (1.0 + 2.0 * sharpness);
  const double mean = 0.5 * (m_extremes.outer + m_extremes.inner);
  const double perCoverage = mean * within / (mean + within);
  const auto covers = [&](std::size_t step) { return Coverage(step) * perCoverage >= kMargin * 2.0 * width; };
  return covers(kSample / 16) || covers(1);
}

Annulus AnnulusExchange::Found() const {
  Annulus annulus;
  annulus.end = AnnulusEnd::found;
  annulus.centre = m_centre;
  annulus.inner = m_extremes.inner;
  annulus.outer = m_extremes.outer;
  std::copy_n(m_outer, 2, annulus.outerContact);
  std::copy_n(m_inner, 2, annulus.innerContact);
  annulus.certified = IsProven();
  return annulus;
}

}  // namespace nu::engine::minimax
