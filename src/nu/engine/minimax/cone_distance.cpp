#include "nu/engine/minimax/cone_distance.h"

#include "nu/engine/base/elementary.h"
#include "nu/engine/base/floating_point.h"
#include "nu/engine/least_squares/cone_lanes.h"
#include "nu/engine/minimax/distance_kernels.h"

// Pivot P on the cone, semi-angle a, c = cos a, s = sin a; outward normal n at P, generator g, v = g x n across; then
// u = c n + s g points away from the axis and w = c g - s n along it. With N, T, G the coordinates of a point along
// n, v, g from P, and R the distance of P from the axis,
//
//   h = R + c N + s G,   d = sqrt(h^2 + T^2),   l = d - h = T^2 / (d + h),   f = N + c l
//
// is the deviation: c (d - R) less s times the height along w, in a form in which nothing of the size of R cancels.
// With sin = T / d, ver = l / d = 1 - cos the sine and the versed sine of the angle around the axis, and y = G + s l
// the position along the generator, the six unknowns change f by
//
//   -1, -y / L, -sin / S, -ver / V, -y sin / (L S), -y ver / (L V)
//
// where S, V and L are the largest of each factor: on a narrow sector these are like 1, t, t^2, y, y t, y t^2, and on a
// full cone no two of them are nearly dependent either. What they move:
//
//   1  the cone to a parallel one: P by e along n, R by c e
//   2  the semi-angle, with the axis held: a turn about v, and a by as much
//   3  the axis across: a turn about the parallel to the axis through P
//   4  the curvature of the cross-section, with P and n held: 1 / R
//   5  the generators' twist: a turn about n
//   6  how fast the curvature changes along the generator: a, with n, g and the normal curvature c / R held
//
// All of them are lengths at the points. For a point that counts from the nappe behind the apex, d is minus its
// distance from the axis, and f and all derivatives change their sign.

namespace nu::engine::minimax {
namespace {

constexpr double kRightAngle = 1.5707963267948966;

// A step leaves this part of the radius and of what the semi-angle is short of 90 degrees.
constexpr double kLeastPart = 0.125;

// The pivot is so far from the apex, as a part of the farthest point, when points are on both nappes.
constexpr double kLeastPivot = 0.25;

constexpr int K = ConeDistance::kUnknowns;

struct Coordinates {
  double n, v, g;
};
Coordinates operator+(const Coordinates& a, const Coordinates& b) {
  return {a.n + b.n, a.v + b.v, a.g + b.g};
}
Coordinates operator*(double f, const Coordinates& a) {
  return {f * a.n, f * a.v, f * a.g};
}
Coordinates Cross(const Coordinates& a, const Coordinates& b) {
  return {a.v * b.g - a.g * b.v, a.g * b.n - a.n * b.g, a.n * b.v - a.v * b.n};
}

// q turned by the angle and about the axis of a rotation vector, to second order, and by less than half a turn whatever
// the vector is (Cayley's map).
Vec3 RotatedCayley(const Vec3& q, const Vec3& rotation) {
  const Vec3 half = 0.5 * rotation;
  const Vec3 moved = Cross(half, q);
  return q + (2.0 / (1.0 + Dot(half, half))) * (moved + Cross(half, moved));
}

struct Reach {
  ValueRange along;  // the generators
  double x = 0.0;    // the sum of the directions from the axis
  double y = 0.0;
};

// From the circle of this radius around the origin of the frame, which is at the height `toApex` below.
NU_KERNEL void FindReach(const PointBlock& block, const AxisFrame& axis, const ConeDistance& cone, double toApex,
                         Reach& found) {
  const AxisFrame f = axis;
  const double cosine = cone.cosine, sine = cone.sine, radius = cone.radius;
  LaneExtremes positions;
  Lanes sumX = {};
  Lanes sumY = {};
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes x, y, z, weight;
    LoadLocal(block, i, f, x, y, z);
    Load(block.Weights(i), weight);
    Lanes d = x * x + y * y;
    TakeSquareRoot(d);
    positions.Add(((z < toApex ? -d : d) - radius) * sine + z * cosine);
    weight = z < toApex ? -weight : weight;
    sumX += x * weight;
    sumY += y * weight;
  }
  found = {{positions.Smallest(), positions.Largest()}, Sum(sumX), Sum(sumY)};
}

struct Extremes {
  ValueRange deviations;
  double across = 0.0;  // |T|
  double lift = 0.0;    // l
  double distance = 0.0;
  double along = 0.0;  // |y|
};

void Widen(Extremes& extremes, const Extremes& part) {
  extremes.deviations.Include(part.deviations);
  extremes.across = std::max(extremes.across, part.across);
  extremes.lift = std::max(extremes.lift, part.lift);
  extremes.distance = std::max(extremes.distance, part.distance);
  extremes.along = std::max(extremes.along, part.along);
}

template<bool kBothNappes>
ConeLanes<kBothNappes> LanesOf(const ConeDistance& m) {
  return {m.frame, m.cosine, m.sine, m.radius, 0.0, 0.0};
}

NU_DISTANCE_KERNELS(ConeLanes<false>)
NU_DISTANCE_KERNELS(ConeLanes<true>)

template<bool kBothNappes>
NU_ALWAYS_INLINE void ExtremesBody(const PointBlock& block, const ConeLanes<kBothNappes>& given, Extremes& found) {
  const ConeLanes<kBothNappes> surface = given;
  LaneExtremes deviation, across, lift, distance, along;
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    typename ConeLanes<kBothNappes>::Spot p;
    surface.Find(block, i, p);
    const Lanes position = p.y + p.l * surface.sine;
    deviation.Add(p.e);
    across.Add(p.t < 0.0 ? -p.t : p.t);
    lift.Add(p.l < 0.0 ? -p.l : p.l);
    distance.Add(p.d < 0.0 ? -p.d : p.d);
    along.Add(position < 0.0 ? -position : position);
  }
  found = {{deviation.Smallest(), deviation.Largest()},
           across.Largest(),
           lift.Largest(),
           distance.Largest(),
           along.Largest()};
}

NU_KERNEL void FindExtremes(const PointBlock& block, const ConeLanes<false>& surface, Extremes& found) {
  ExtremesBody(block, surface, found);
}
NU_KERNEL void FindExtremes(const PointBlock& block, const ConeLanes<true>& surface, Extremes& found) {
  ExtremesBody(block, surface, found);
}

Extremes ExtremesFrom(PointBlocks& points, const ConeDistance& model) {
  Extremes seen;
  points.ForEach([&](const PointBlock& block) {
    Extremes part;
    if (model.bothNappes) {
      FindExtremes(block, LanesOf<true>(model), part);
    } else {
      FindExtremes(block, LanesOf<false>(model), part);
    }
    Widen(seen, part);
  });
  return seen;
}

// All of it from where the axis is next to the points, not from the apex, which may be far away.
ConeDistance PlaceOn(PointBlocks& points, const Cone3& cone, bool& behind) {
  const AxisFrame axis = AxisFrame::Along(cone.axis.point, cone.axis.direction);
  ConeDistance model;
  model.angle = cone.semiAngle;
  model.cosine = Cos(model.angle);
  model.sine = Sin(model.angle);
  model.radius = -cone.toApex * model.sine / model.cosine;
  Reach reach;
  points.ForEach([&](const PointBlock& block) {
    Reach part;
    FindReach(block, axis, model, cone.toApex, part);
    reach.along.Include(part.along);
    reach.x += part.x;
    reach.y += part.y;
  });
  const double apex = cone.toApex / model.cosine;
  behind = reach.along.smallest < apex;
  const double least = apex + kLeastPivot * std::max(reach.along.largest - apex, apex - reach.along.smallest);
  const double along = std::max(reach.along.Middle(), least);
  const Vec3 across = reach.x * axis.x + reach.y * axis.y;
  const Vec3 u = Dot(across, across) > 0.0 ? Unit(across) : axis.x;
  const Vec3 g = Unit(model.cosine * axis.z + model.sine * u);
  const Vec3 pivot = axis.origin + model.radius * u + along * g;
  model.frame = AxisFrame::Along(pivot, g, model.cosine * u - model.sine * axis.z);
  model.radius += model.sine * along;
  return model;
}

}  // namespace

ConeDistance DistanceFromCone(PointBlocks& points, const Cone3& cone, ValueRange& deviations) {
  bool behind;
  ConeDistance model = PlaceOn(points, cone, behind);
  model.bothNappes = cone.bothNappes && behind;
  const Extremes seen = ExtremesFrom(points, model);
  model.breadth = std::max(seen.across / seen.distance, kEpsilon);
  model.bulge = std::max(seen.lift / seen.distance, kEpsilon);
  model.length = std::max(seen.along, kEpsilon * seen.distance);
  deviations = seen.deviations;
  return model;
}

Cone3 ConeDistance::Cone() const {
  const Vec3 outwards = cosine * frame.x + sine * frame.z;
  const Vec3 along = cosine * frame.z - sine * frame.x;
  return {{frame.origin - radius * outwards, Unit(angle < 0.0 ? -1.0 * along : along)},
          -radius * cosine / std::fabs(sine),
          std::fabs(angle),
          bothNappes};
}

bool ConeDistance::IsFinite() const {
  const bool scaled = std::isfinite(radius / (breadth * bulge * length));
  return scaled && shapes::IsFinite(frame.origin) && shapes::IsFinite(frame.x);
}

void ConeDistance::Deviations(const PointBlock& block, double* deviation, double& smallest, double& largest) const {
  if (bothNappes) return FindEach(block, LanesOf<true>(*this), deviation, smallest, largest);
  FindEach(block, LanesOf<false>(*this), deviation, smallest, largest);
}

void ConeDistance::Gradients(const PointBlock& block, double* deviation, double (*gradient)[kMostRows]) const {
  const double turn = -1.0 / breadth, bend = -1.0 / bulge;
  const double factor[K] = {-1.0, -1.0 / length, turn, bend, turn / length, bend / length};
  if (bothNappes) return FindGradients(block, LanesOf<true>(*this), factor, deviation, gradient);
  FindGradients(block, LanesOf<false>(*this), factor, deviation, gradient);
}

// A turn W changes the coordinates Q of a point by -W x Q + W x (W x Q) / 2. Derivatives of these, of the semi-angle
// and of the radius give those of h and T, and they those of l and f.
void ConeDistance::AddCurvature(const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) const {
  const double c = cosine;
  const double s = sine;
  const Vec3 local = frame.Local(point);
  const Coordinates q{local.x, local.y, local.z};
  const double h = radius + c * q.n + s * q.g;
  const double height = c * q.g - s * q.n;
  const double side = bothNappes && s * height + c * radius < 0.0 ? -1.0 : 1.0;
  const double d = side * std::sqrt(h * h + q.v * q.v);
  if (d == 0.0) return;
  const double lift = side * h > 0.0 ? q.v * q.v / (d + h) : d - h;
  const double ver = lift / d;
  const double cosPhi = h / d;
  const double sinPhi = q.v / d;

  const double change = 1.0 / (length * bulge);
  const double bend = 1.0 / (c * bulge);
  const Coordinates turn[K] = {{},
                               {0.0, 1.0 / length, 0.0},
                               {s / (c * breadth * radius), 0.0, -1.0 / (breadth * radius)},
                               {},
                               {-1.0 / (c * breadth * length), 0.0, 0.0},
                               {}};
  const double opening[K] = {0.0, 1.0 / length, 0.0, 0.0, 0.0, change};
  const double widening[K] = {c, 0.0, 0.0, bend, 0.0, -s / c * radius * change};
  double widening2[K][K] = {};
  widening2[3][3] = 2.0 * bend * bend / radius;
  widening2[5][0] = -s * change;
  widening2[5][3] = -s / c * bend * change;
  widening2[5][5] = -radius * change * change;

  Coordinates moved[K];
  double dh[K], dl[K], drop[K];
  for (int i = 0; i < K; ++i) {
    moved[i] = Cross(q, turn[i]);
    if (i == 0) moved[i].n = -1.0;
    dh[i] = widening[i] + c * moved[i].n + s * moved[i].g + opening[i] * height;
    dl[i] = sinPhi * moved[i].v - ver * dh[i];
    drop[i] = sinPhi * dh[i] - cosPhi * moved[i].v;
  }
  for (int i = 0; i < K; ++i) {
    for (int j = 0; j <= i; ++j) {
      Coordinates second = 0.5 * (Cross(turn[i], Cross(turn[j], q)) + Cross(turn[j], Cross(turn[i], q)));
      if (j == 0) second = second + Cross(turn[i], {1.0, 0.0, 0.0});
      const double h2 = widening2[i][j] + c * second.n + s * second.g + opening[i] * (c * moved[j].g - s * moved[j].n) +
                        opening[j] * (c * moved[i].g - s * moved[i].n) - opening[i] * opening[j] * (h - radius);
      const double l2 = sinPhi * second.v - ver * h2 + drop[i] * drop[j] / d;
      const double f2 =
          second.n + c * l2 - s * (opening[i] * dl[j] + opening[j] * dl[i]) - c * lift * opening[i] * opening[j];
      sum[i][j] += side * weight * f2;
      if (j < i) sum[j][i] += side * weight * f2;
    }
  }
}

ConeDistance ConeDistance::Moved(const double (&step)[kUnknowns]) const {
  const double across = step[2] / (breadth * radius);
  const double flatter = step[3] / (cosine * bulge * radius);
  const double opening = step[1] / length;
  const double twist = step[4] / (breadth * length);
  const double change = step[5] / (length * bulge);
  const Vec3 turn = ((sine * across - twist) / cosine) * frame.x + opening * frame.y - across * frame.z;
  const double most = kRightAngle - kLeastPart * (kRightAngle - std::fabs(angle));
  ConeDistance moved = *this;
  moved.frame = AxisFrame::Along(frame.origin + step[0] * frame.x, Unit(RotatedCayley(frame.z, turn)),
                                 RotatedCayley(frame.x, turn));
  moved.angle = std::clamp(angle + (opening + change), -most, most);
  moved.cosine = Cos(moved.angle);
  moved.sine = Sin(moved.angle);
  const double bent = radius / (1.0 - std::min(flatter, 1.0 - kLeastPart));
  moved.radius = std::max((bent + cosine * step[0]) * (Cos(angle + change) / cosine), kLeastPart * radius);
  return moved;
}

// Quarters of the length, eight parts around.
int ConeDistance::Stratum(const Vec3& point) const {
  const Vec3 q = frame.Local(point);
  const double h = radius + cosine * q.x + sine * q.z;
  const double d = std::sqrt(h * h + q.y * q.y);
  const double lift = d - h;
  const double along = q.z + sine * lift;
  const int quarter = along < 0.0 ? (along < -0.5 * length ? 0 : 1) : (along < 0.5 * length ? 2 : 3);
  // On a narrow sector these are even steps of the angle.
  const double part = 16.0 * lift / (bulge * d);
  const int place = part < 1.0 ? 0 : (part < 4.0 ? 1 : (part < 9.0 ? 2 : 3));
  return 8 * quarter + 2 * place + (q.y < 0.0 ? 1 : 0);
}

}  // namespace nu::engine::minimax
