#include "nu/engine/least_squares/cone_least_squares.h"

#include "nu/engine/least_squares/axis_curvatures.h"
#include "nu/engine/least_squares/cone_lanes.h"

// Gauss-Newton on the distance e of the points from the cone. A part of a cone says little about apex and angle but
// much about the surface itself at M, so the unknowns are those of the surface there. n = u cos a - w sin a is its
// normal, g = u sin a + w cos a its generator. For a point with the coordinates x along n, y along g, t along v from M,
//
//   h = H + x cos a + y sin a,   d = sqrt(h^2 + t^2),   l = d - h = t^2 / (d + h),
//   e = l cos a + x - k,         f = y + l sin a - F,
//
// where k is the rise of the surface over M and f is where the foot of the point lies along the generator, from the
// mean of the feet F. With L = H sin a + F, changes of the rise k, of the angle a, of the axis' shift s across and of
// H, and the axis' tilts A, B towards u and v change e by minus the sum of
//
//   1      times dk + F (da + dA)              f        times da + dA
//   t / d  times cos a ds + L dB               f t / d  times dB
//   l / d  times cos a dH - L dA               f l / d  times -dA.
//
// Those six columns are what is solved for. On a narrow strip they are about 1, f, t, t^2, f t and f t^2: height,
// slope, tilt, curvature, twist and change of curvature, each as well determined as the points allow, and the cylinder
// and the plane are no special places. All terms are of the size of the points' extent, not of the distance to the
// apex. To first order the coefficients are also those of a sphere that touches the cone along the circle of the feet:
// its centre shifts by the coefficients of t / d and -l / d over cos a, across and along u; its radius grows by those
// of 1 and l / d; the others turn the axis about its centre and open the cone.
//
// With p = t / d and q = l / d, p^2 = 2 q - q^2 leaves 14 sums of products for the normal equations.
//
// On both nappes e = d cos a - |z sin a + k'| with z along w and k' = k + H cos a: the rows of points behind the apex
// follow from the same unknowns.

namespace nu::engine::least_squares {
namespace {

constexpr double kRightAngle = 1.5707963267948966;

// A descent ends with a step after which, at the rate at which the gains of the steps fall, the next would lower the
// sum of squares by less than this part.
constexpr double kGainTolerance = 1e-18;

// A step leaves at least this part of the angle's complement, and of the curvature.
constexpr double kLeastPart = 0.1;
// M is as close to the surface as it is on a strip, in parts of the radius of curvature.
constexpr double kStrip = 0.25;

// Sums of 1, p, q, p q, q^2, each times 1, f, f^2, but for the number of points; of the six columns times e; of e^2; of
// |point - M|^2.
constexpr int kProducts = 14;
constexpr int kColumns = 6;
constexpr int kConeSums = kProducts + kColumns + 2;

template<bool kBothNappes>
ConeLanes<kBothNappes> LanesOf(const ConeModel& m) {
  const double cosine = Cos(m.angle), sine = Sin(m.angle);
  const AxisFrame frame{m.pivot, cosine * m.u - sine * m.w, m.v, sine * m.u + cosine * m.w};
  return {frame, cosine, sine, m.height, m.rise, m.foot};
}

// The generic body would take 27 sums; this one is for the frequent points on one nappe.
NU_KERNEL void SumProducts(const PointBlock& block, const ConeLanes<false>& given, double (&sums)[kConeSums],
                           Deviations& found) {
  const ConeLanes<false> s = given;
  Lanes sum[kConeSums] = {};
  LaneExtremes extremes;
  for (std::size_t i = 0; i < block.size; i += kLanes) {
    Lanes x, y, t, weight;
    s.Locate(block, i, x, y, t);
    Load(block.Weights(i), weight);
    const Lanes h = s.height + s.cosine * x + s.sine * y;
    const Lanes square = t * t;
    Lanes l, inverseDistance;
    FindLift(h, square, l, inverseDistance);
    Lanes e = s.cosine * l + (x - s.rise);
    extremes.Add(e);
    const Lanes p = t * inverseDistance * weight;
    const Lanes q = l * inverseDistance * weight;
    const Lanes f = (y - s.foot + s.sine * l) * weight;
    e *= weight;
    const Lanes pq = p * q;
    const Lanes qq = q * q;
    const Lanes ff = f * f;
    const Lanes ef = e * f;
    sum[0] += p;
    sum[1] += q;
    sum[2] += pq;
    sum[3] += qq;
    sum[4] += f;
    sum[5] += p * f;
    sum[6] += q * f;
    sum[7] += pq * f;
    sum[8] += qq * f;
    sum[9] += ff;
    sum[10] += p * ff;
    sum[11] += q * ff;
    sum[12] += pq * ff;
    sum[13] += qq * ff;
    sum[14] += e;
    sum[15] += ef;
    sum[16] += e * p;
    sum[17] += e * q;
    sum[18] += ef * p;
    sum[19] += ef * q;
    sum[20] += e * e;
    sum[21] += weight * (x * x + y * y + square);
  }
  for (int k = 0; k < kConeSums; ++k) sums[k] = Sum(sum[k]);
  found = {0.0, extremes.Smallest(), extremes.Largest()};
}

NU_KERNEL void SumProducts(const PointBlock& block, const ConeLanes<true>& surface,
                           double (&sums)[kSums<ConeLanes<true>>], Deviations& found) {
  ProductsBody(block, surface, sums, found);
}

NU_KERNEL void FindDeviations(const PointBlock& block, const ConeLanes<false>& surface, Deviations& found) {
  DeviationsBody(block, surface, found);
}
NU_KERNEL void FindDeviations(const PointBlock& block, const ConeLanes<true>& surface, Deviations& found) {
  DeviationsBody(block, surface, found);
}

template<bool kBothNappes>
Deviations FindDeviations(PointBlocks& points, const ConeModel& model) {
  const auto surface = LanesOf<kBothNappes>(model);
  return OverBlocks(points, [&](const PointBlock& block, Deviations& part) { FindDeviations(block, surface, part); });
}

// v turned about the origin by the length of `by`, around its direction (the formula of O. Rodrigues).
Vec3 RotatedRodrigues(const Vec3& v, const Vec3& by) {
  const double angle = std::sqrt(Dot(by, by));
  if (!(angle > 0.0)) return v;
  const Vec3 axis = (1.0 / angle) * by;
  const double half = Sin(0.5 * angle);
  return v + Sin(angle) * Cross(axis, v) + (2.0 * half * half) * Cross(axis, Cross(axis, v));
}

// Not through the plane by one step: its axis is anywhere.
double NextAngle(double angle, double change) {
  const double most = kRightAngle - kLeastPart * (kRightAngle - std::fabs(angle));
  return std::clamp(angle + change, -most, most);
}

// Where the points' feet are when their deviations are about 0 and M is their mean. On both nappes the apex stands for
// them.
double FootOf(const ConeModel& m) {
  if (!m.bothNappes) return m.rise * Tan(m.angle);
  const double sine = Sin(m.angle), cosine = Cos(m.angle);
  return -(m.rise + m.height * cosine) * cosine / sine - m.height * sine;
}

ConeProblem::System SumOneNappe(PointBlocks& points, const ConeModel& model) {
  ConeProblem::System system;
  const auto surface = LanesOf<false>(model);
  const auto kernel = [&](const PointBlock& block, double(&sums)[kConeSums], Deviations& part) {
    SumProducts(block, surface, sums, part);
  };
  const BlockSums<kConeSums> total = SumOver<kConeSums>(points, system.deviations, kernel);
  // Of 1, p, q, p q, q^2 and p^2, times a power of f.
  struct Group {
    double one, p, q, pq, qq, pp;
  };
  const auto group = [&](double one, int first) {
    const double q = total[first + 1], qq = total[first + 3];
    return Group{one, total[first], q, total[first + 2], qq, 2.0 * q - qq};
  };
  system.count = static_cast<double>(points.Size());
  const Group a = group(system.count, 0);
  const Group b = group(total[4], 5);
  const Group c = group(total[9], 10);
  const double all[kColumns][kColumns] = {{a.one, b.one, a.p, a.q, b.p, b.q}, {b.one, c.one, b.p, b.q, c.p, c.q},
                                          {a.p, b.p, a.pp, a.pq, b.pp, b.pq}, {a.q, b.q, a.pq, a.qq, b.pq, b.qq},
                                          {b.p, c.p, b.pp, b.pq, c.pp, c.pq}, {b.q, c.q, b.pq, b.qq, c.pq, c.qq}};
  std::copy_n(&all[0][0], kColumns * kColumns, &system.product[0][0]);
  for (int j = 0; j < kColumns; ++j) system.right[j] = total[kProducts + j];
  system.deviations.sumSquares = total[kProducts + kColumns];
  system.spread = total[kProducts + kColumns + 1];
  system.along = b.one / a.one;
  return system;
}

// The generic sums.
ConeProblem::System SumBothNappes(PointBlocks& points, const ConeModel& model) {
  BlockSums<kSums<ConeLanes<true>>> total;
  ConeProblem::System system = SystemOf(
      points, LanesOf<true>(model),
      [](const PointBlock& block, const ConeLanes<true>& surface, double(&sums)[kSums<ConeLanes<true>>],
         Deviations& part) { SumProducts(block, surface, sums, part); },
      total);
  system.spread = total[kSums<ConeLanes<true>> - 1];
  return system;
}

// The points are on a strip over M: turns are about M, and curvature is what changes.
void TurnStrip(const double (&step)[kColumns], ConeModel& m) {
  const double cosine = Cos(m.angle), lever = m.height * Sin(m.angle) + m.foot;
  const double tiltU = -step[5], tiltV = step[4];
  const double shift = (step[2] - step[4] * lever) / cosine;
  const double bend = (step[3] - step[5] * m.foot) / cosine;
  const double angle = NextAngle(m.angle, step[1] + step[5]);
  const double lifted =
      Cos(NextAngle(m.angle, step[5])) / cosine *
      (bend > 0.0 ? m.height / std::max(1.0 - bend / m.height, kLeastPart) : m.height * m.height / (m.height - bend));
  const Vec3 turn = tiltU * m.v - tiltV * m.u - (shift / m.height) * m.w;
  m.Turn(Unit(RotatedRodrigues(m.w, turn)), RotatedRodrigues(m.u, turn));
  m.rise += step[0] - step[1] * m.foot;
  m.height = lifted;
  m.angle = angle;
}

// The points are all around: turns are about the centre of the sphere that touches the cone where their feet are, so
// that it goes on touching it, and the sphere moves and grows.
void MoveSphere(const double (&step)[kColumns], ConeModel& m) {
  const double sine = Sin(m.angle), cosine = Cos(m.angle);
  const double along = (m.foot + m.height * sine) / cosine;
  const Vec3 centre = along * m.w - m.height * m.u;
  const Vec3 shift = (step[2] / cosine) * m.v - (step[3] / cosine) * m.u;
  const Vec3 direction = Unit(RotatedRodrigues(m.w, -step[5] * m.v - step[4] * m.u));
  const double angle = NextAngle(m.angle, step[1] + step[5]);
  // The changes and not the values are what is added up: far from M the values are large.
  const double further = Dot(centre, direction - m.w) + Dot(shift, direction);
  const double grown = step[0] + step[3];
  const double offset = m.rise + m.height * cosine + grown - further * Sin(angle) - along * (Sin(angle) - sine);
  m.PlaceAxis(direction, centre + shift);
  m.angle = angle;
  m.rise = offset - m.height * Cos(angle);
}

}  // namespace

ConeModel ConeAbout(const Vec3& pivot, const Vec3& direction, const Vec3& toAxis, double radius, double angle) {
  ConeModel model;
  model.pivot = pivot;
  model.PlaceAxis(direction, toAxis);
  model.angle = angle;
  model.rise = (radius - model.height) * Cos(angle);
  return model;
}

void ConeProblem::Complete(ConeModel& model) {
  model.foot = FootOf(model);
}

ConeProblem::System ConeProblem::Sum(PointBlocks& points, const ConeModel& model) {
  return model.bothNappes ? SumBothNappes(points, model) : SumOneNappe(points, model);
}

// k and H cos a are linear in e together, and the other unknowns are linear in the six coefficients.
void ConeProblem::AddSecond(PointBlocks& points, const ConeModel& model, System& system) {
  const double cosine = Cos(model.angle), sine = Sin(model.angle);
  double natural[kAxisUnknowns][kAxisUnknowns];
  SumCurvatures(points, {.frame = model, .cosine = cosine, .sine = sine, .bothNappes = model.bothNappes}, natural);
  const double lever = (model.height * sine + model.foot) / cosine;
  const double inverse = 1.0 / cosine;
  // Of a, s, H, A, B by the coefficients.
  const double by[kAxisUnknowns][kUnknowns] = {{0.0, 1.0, 0.0, 0.0, 0.0, 1.0},
                                               {0.0, 0.0, inverse, 0.0, -lever, 0.0},
                                               {0.0, 0.0, 0.0, inverse, 0.0, -lever},
                                               {0.0, 0.0, 0.0, 0.0, 0.0, -1.0},
                                               {0.0, 0.0, 0.0, 0.0, 1.0, 0.0}};
  for (int i = 0; i < kUnknowns; ++i) {
    for (int j = 0; j < kUnknowns; ++j) {
      double sum = 0.0;
      for (int k = 0; k < kAxisUnknowns; ++k)
        for (int l = 0; l < kAxisUnknowns; ++l) sum += by[k][i] * natural[k][l] * by[l][j];
      system.second[i][j] = sum;
    }
  }
}

TallReduction ConeProblem::Reduce(PointBlocks& points, const ConeModel& model) {
  return model.bothNappes ? ReduceSurface(points, LanesOf<true>(model)) : ReduceSurface(points, LanesOf<false>(model));
}

Deviations ConeProblem::DeviationsFrom(PointBlocks& points, const ConeModel& model) {
  return model.bothNappes ? FindDeviations<true>(points, model) : FindDeviations<false>(points, model);
}

double ConeProblem::SquaredLength(const ConeModel& model, const System& system, const double (&step)[kUnknowns]) {
  const double cosine = Cos(model.angle);
  const double shift = step[2] / cosine, height = step[3] / cosine;
  const double opened = step[1] + step[5];
  const double turned = step[4] * step[4] + step[5] * step[5] + opened * opened;
  return shift * shift + height * height + turned * system.MeanSquare();
}

void ConeProblem::Move(PointBlocks&, const System& system, const double (&step)[kUnknowns], ConeModel& model) {
  const bool strip = std::fabs(model.rise) * Cos(model.angle) < kStrip * model.height && !model.bothNappes;
  const double foot = model.foot + system.along;
  strip ? TurnStrip(step, model) : MoveSphere(step, model);
  model.foot = model.bothNappes ? FootOf(model) : foot;
}

bool ConeProblem::IsEnough(const StepGains& gains, double sumSquares) {
  const bool falls = !gains.damped && std::isfinite(gains.before) && gains.now < gains.before;
  const double rate = falls ? gains.now / gains.before : 1.0;
  return rate * gains.now <= kGainTolerance * sumSquares;
}

template class DampedGaussNewton<ConeProblem>;

}  // namespace nu::engine::least_squares
