#include "nu/engine/minimax/axis_search.h"

#include <utility>

#include "nu/engine/base/floating_point.h"
#include "nu/engine/minimax/enclosing_ball.h"
#include "nu/engine/shapes/vec2.h"

namespace nu::engine::minimax {
namespace {

constexpr std::size_t kMostOutline = 512;

// The circles behind so many bounds prove most of the squares, so that no further ones are needed there.
constexpr std::size_t kBounds = 12;

// Of the areas that decide on which side of an edge a point is.
constexpr double kHullRounding = 64.0 * kEpsilon;

// A point farther outside a circle than its rounding.
constexpr double kOutside = 1.0 + 64.0 * kEpsilon;

PointBlocks BlocksOf(const std::vector<Vec3>& points) {
  return PointBlocks(PointView(&points[0].x, sizeof(Vec3), points.size()), {});
}

// How far the hull of some points reaches from the origin in all directions; 0 where the origin is not inside.
double Inradius(const Vec2* point, int count) {
  double square = 0.0;
  for (int i = 0; i < count; ++i) square = std::max(square, Dot(point[i], point[i]));
  const double rounding = kHullRounding * square;
  double least = kInfinity;
  for (int i = 0; i < count; ++i) {
    for (int j = 0; j < count; ++j) {
      const Vec2 edge = point[j] - point[i];
      const double length = std::sqrt(Dot(edge, edge));
      const bool isOutermost =
          std::all_of(point, point + count, [&](Vec2 p) { return Cross(edge, p - point[i]) >= -rounding; });
      if (length > 0.0 && isOutermost) least = std::min(least, Cross(point[i], edge) / length);
    }
  }
  return least < kInfinity ? std::max(0.0, least) : 0.0;
}

// Of three points in the frame of the axis: the weights that bring their mean onto it, and the b of these; false where
// one would be negative.
bool FindCorner(const Vec3& p, const Vec3& q, const Vec3& r, Vec2& corner) {
  const double area[] = {q.x * r.y - r.x * q.y, r.x * p.y - p.x * r.y, p.x * q.y - q.x * p.y};
  const double sum = area[0] + area[1] + area[2];
  if (!(area[0] * sum >= 0.0 && area[1] * sum >= 0.0 && area[2] * sum >= 0.0 && sum != 0.0)) return false;
  const double weight[] = {area[0] / sum * p.z, area[1] / sum * q.z, area[2] / sum * r.z};
  corner = {weight[0] * p.x + weight[1] * q.x + weight[2] * r.x, weight[0] * p.y + weight[1] * q.y + weight[2] * r.y};
  return true;
}

}  // namespace

RadiusBound::RadiusBound(const Vec3* point, const double* weight, int count) {
  double sum = 0.0;
  Vec3 mean;
  for (int i = 0; i < count; ++i) {
    const double w = std::max(0.0, weight[i]);  // those that are 0 may come out below
    sum += w;
    mean = mean + w * point[i];
  }
  mean = (1.0 / sum) * mean;
  for (int i = 0; i < count; ++i) {
    const Vec3 q = point[i] - mean;
    const Vec3 weighted = (std::max(0.0, weight[i]) / sum) * q;
    m_diagonal[0] += weighted.x * q.x;
    m_diagonal[1] += weighted.y * q.y;
    m_diagonal[2] += weighted.z * q.z;
    m_offDiagonal[0] += weighted.y * q.z;
    m_offDiagonal[1] += weighted.z * q.x;
    m_offDiagonal[2] += weighted.x * q.y;
  }
  const auto& d = m_diagonal;
  const auto& o = m_offDiagonal;
  m_trace = d[0] + d[1] + d[2];
  m_squares = d[0] * d[0] + d[1] * d[1] + d[2] * d[2] + 2.0 * (o[0] * o[0] + o[1] * o[1] + o[2] * o[2]);
}

// At the angle phi from d towards t the product d . M d becomes
//
//   a cos^2 phi + 2 (b . t) sin phi cos phi + (t . M t) sin^2 phi,
//
// where b is the part of M d across d. Across d, M has the trace of M less a and the sum of squares that is left of it
// without a and b; they give the largest value of t . M t.
double RadiusBound::Within(const DirectionCap& cap) const {
  const auto& [d, sine, cosine] = cap;
  const auto& o = m_offDiagonal;
  const Vec3 product{m_diagonal[0] * d.x + o[2] * d.y + o[1] * d.z, o[2] * d.x + m_diagonal[1] * d.y + o[0] * d.z,
                     o[1] * d.x + o[0] * d.y + m_diagonal[2] * d.z};
  const double a = Dot(product, d);
  const double bb = std::max(0.0, Dot(product, product) - a * a);
  const double trace = m_trace - a;
  const double squares = m_squares - a * a - 2.0 * bb;
  const double largest = 0.5 * (trace + std::sqrt(std::max(0.0, 2.0 * squares - trace * trace)));
  const double rise = largest - a;
  const double b = std::sqrt(bb);
  const double sineOfTwice = 2.0 * sine * cosine;
  // The product still grows at the rim, or it is largest within the cap.
  if (rise * sineOfTwice + 2.0 * b * (cosine - sine) * (cosine + sine) > 0.0)
    return trace - (rise * sine * sine + b * sineOfTwice);
  return trace - (0.5 * rise + std::sqrt(0.25 * rise * rise + bb));
}

KnownCylinder::KnownCylinder(const MinimaxSolution<AxisDistance>& found)
    : m_radius(found.value), m_bound(found.contact, found.multiplier, found.contacts), m_own{found.model.frame.z} {
  constexpr int mostCorners = 10;  // the triples of five contacts
  const AxisFrame& frame = found.model.frame;
  Vec2 corner[mostCorners];
  int corners = 0;
  for (int i = 2; i < found.contacts; ++i) {
    for (int j = 1; j < i; ++j) {
      for (int k = 0; k < j; ++k) {
        if (FindCorner(frame.Local(found.contact[i]), frame.Local(found.contact[j]), frame.Local(found.contact[k]),
                       corner[corners]))
          ++corners;
      }
    }
  }
  const double tangent = 2.0 * Inradius(corner, corners) / (m_radius * m_radius);
  m_own.cosine = 1.0 / std::sqrt(1.0 + tangent * tangent);
  m_own.sine = tangent * m_own.cosine;
}

AxisSearch::AxisSearch(PointBlocks& points, const AxisFrame& found, std::vector<Vec3> outline,
                       const AxisSearchLimits& limits)
    : m_points(points), m_frame(found), m_limits(limits), m_outline(std::move(outline)), m_blocks(BlocksOf(m_outline)) {
  for (int face = 0; face < 3; ++face)
    for (const double u : {-0.5, 0.5})
      for (const double v : {-0.5, 0.5}) Push({0.0, face, u, v, 0.5});
}

bool AxisSearch::FindSmaller(const KnownCylinder& known, AxisDistance& found) {
  const double least = Least(known);
  while (!m_cells.empty() && m_cells.front().bound < least && !IsExhausted()) {
    const Cell cell = Pop();
    const DirectionCap cap = CapAround(cell);
    if (known.IsSmallestIn(cap) || known.Bound().Within(cap) >= least || IsKnownLarge(cap, least)) continue;
    const Circle circle = CircleAround(cap.direction, least);
    if (m_bounds.size() < kBounds) m_bounds.push_back(circle.bound);
    Split(cell, circle.bound, known);
    if (!circle.holdsAll) continue;
    found = AxisOf(circle);
    return true;
  }
  return false;
}

void AxisSearch::Push(const Cell& cell) {
  m_cells.push_back(cell);
  std::push_heap(m_cells.begin(), m_cells.end(), IsLater);
}

AxisSearch::Cell AxisSearch::Pop() {
  std::pop_heap(m_cells.begin(), m_cells.end(), IsLater);
  const Cell cell = m_cells.back();
  m_cells.pop_back();
  return cell;
}

// With (1, u, v) the middle and (1, u + x, v + y) a corner, their cross product is (u y - v x, -y, x).
DirectionCap AxisSearch::CapAround(const Cell& cell) const {
  const Vec3 axes[] = {m_frame.z, m_frame.x, m_frame.y};
  const Vec3 middle = axes[cell.face] + cell.u * axes[(cell.face + 1) % 3] + cell.v * axes[(cell.face + 2) % 3];
  const double square = 1.0 + cell.u * cell.u + cell.v * cell.v;
  double most = 0.0;
  for (const double x : {-cell.half, cell.half}) {
    for (const double y : {-cell.half, cell.half}) {
      const double u = cell.u + x;
      const double v = cell.v + y;
      const double turn = cell.u * y - cell.v * x;
      most = std::max(most, (x * x + y * y + turn * turn) / (1.0 + u * u + v * v));
    }
  }
  const double squaredSine = most / square;
  return {(1.0 / std::sqrt(square)) * middle, std::sqrt(squaredSine), std::sqrt(1.0 - squaredSine)};
}

void AxisSearch::Split(const Cell& cell, const RadiusBound& here, const KnownCylinder& known) {
  const double half = 0.5 * cell.half;
  for (const double u : {cell.u - half, cell.u + half}) {
    for (const double v : {cell.v - half, cell.v + half}) {
      Cell part{cell.bound, cell.face, u, v, half};
      const DirectionCap cap = CapAround(part);
      part.bound = std::max({part.bound, here.Within(cap), known.Bound().Within(cap)});
      if (part.bound < Least(known) && !known.IsSmallestIn(cap)) Push(part);
    }
  }
}

// Where the outline seems to be within less than what is known, all points are looked at.
AxisSearch::Circle AxisSearch::CircleAround(const Vec3& direction, double least) {
  Circle circle = CircleAroundOutline(direction);
  for (++m_circles; circle.square < least && !IsExhausted(); ++m_circles) {
    const std::size_t before = m_outline.size();
    const double largest = ExtendOutline(circle);
    circle.holdsAll = largest * largest < least;
    if (circle.holdsAll || m_outline.size() == before) break;
    circle = CircleAroundOutline(direction);
  }
  return circle;
}

AxisSearch::Circle AxisSearch::CircleAroundOutline(const Vec3& direction) const {
  AxisFrame frame = AxisFrame::Along({}, direction);
  const EnclosingBall ball = SmallestEnclosingBall<2>(m_blocks, {frame.x, frame.y}, BallPrecision::quick);
  Vec3 contact[EnclosingBall::kMostContacts];
  for (int k = 0; k < ball.contacts; ++k) contact[k] = m_outline[ball.index[k]];
  frame.origin = ball.centre.x * frame.x + ball.centre.y * frame.y;
  return {frame, ball.radius * ball.radius, {contact, ball.multiplier, ball.contacts}};
}

// Of the points outside the circle the farthest of each stratum join the outline; returns the largest distance from its
// axis.
double AxisSearch::ExtendOutline(const Circle& circle) {
  struct Far {
    double distance;
    Vec3 point;
  };
  const AxisDistance axis = AxisOf(circle);
  const double outside = kOutside * std::sqrt(circle.square);
  Far far[AxisDistance::kStrata];
  for (Far& f : far) f.distance = outside;
  double distance[kBlockPoints];
  const auto look = [&](const PointBlock& block, const ValueRange& range) {
    for (std::size_t i = 0; range.largest > outside && i < block.size; ++i) {
      if (!(distance[i] > outside)) continue;
      const Vec3 point = block.At(i);
      Far& place = far[axis.Stratum(point)];
      if (distance[i] > place.distance) place = {distance[i], point};
    }
  };
  const double largest = VisitDeviations(m_points, axis, distance, look).largest;
  for (const Far& f : far)
    if (f.distance > outside && m_outline.size() < kMostOutline) m_outline.push_back(f.point);
  m_blocks = BlocksOf(m_outline);
  ++m_passes;
  return largest;
}

AxisDistance AxisSearch::AxisOf(const Circle& circle) const {
  ValueRange along;
  for (const Vec3& p : m_outline) along.Include({Dot(p, circle.frame.z), Dot(p, circle.frame.z)});
  AxisFrame frame = circle.frame;
  frame.origin = frame.origin + along.Middle() * frame.z;
  return {frame, 0.5 * along.Width()};
}

}  // namespace nu::engine::minimax
