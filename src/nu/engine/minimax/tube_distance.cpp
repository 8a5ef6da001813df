#include "nu/engine/minimax/tube_distance.h"

#include "nu/engine/minimax/distance_kernels.h"

// In the frame of the circle, with k = 1 / R, the point (x, y, z) is seen from the centre at the distance R q and under
// the angle phi from the x axis, where
//
//   s = 1 + k x,  q = sqrt(s^2 + (k y)^2),  cos(phi) = s / q,  R sin(phi) = y / q,
//   R^2 (1 - cos(phi)) = c = y^2 / (q (q + s)) = (1 - s / q) / k^2,
//   e = R q - R = (2 x + k (x^2 + y^2)) / (1 + q),
//
// and its distance from the circle is d = sqrt(e^2 + z^2). None of these suffers from a large R.
//
// Six small changes move the circle, where phi is its parameter, radially and along its axis:
//
//   origin of the frame along x, z:        cos(phi) radially, 1 along the axis
//   tangent towards x, z, times L:         R sin(phi) / L both ways
//   curvature vector along x, z, by g:     g c both ways
//
// The scales L and g bring them to the size of 1 where the points are. The derivatives of d are minus these times e / d
// and z / d. For the second ones let k be the curvature vector, (-k, 0) in the frame, and m = (x, z). Then
//
//   d^2 / 2 = |p|^2 / 2 - G,  k^2 G^2 + 2 s G = y^2,  s = 1 - k . m,
//
// with G = q c, and differentiating the equation for G twice gives
//
//   q dG = y dy - G^2 d(k^2) / 2 - G ds
//   q d2G = dy^2 + y d2y - G^2 d2(k^2) / 2 - G d2s - 2 G dG d(k^2) - 2 dG ds - k^2 dG^2.
namespace nu::engine::minimax {
namespace {

enum Unknown { kOut, kUp, kTiltOut, kTiltUp, kBendOut, kBendUp };

struct TubeLanes {
  static constexpr int kUnknowns = TubeDistance::kUnknowns;

  // Also the coordinates, s, q and e.
  struct Spot {
    Lanes x, y, z, s, q, e;
  };
  NU_ALWAYS_INLINE void Find(const PointBlock& block, std::size_t i, Spot& p, Lanes& d) const {
    LoadLocal(block, i, frame, p.x, p.y, p.z);
    p.s = 1.0 + bend * p.x;
    p.q = p.s * p.s + bend * p.y * (bend * p.y);
    TakeSquareRoot(p.q);
    p.e = (2.0 * p.x + bend * (p.x * p.x + p.y * p.y)) / (1.0 + p.q);
    d = p.e * p.e + p.z * p.z;
    TakeSquareRoot(d);
  }

  NU_ALWAYS_INLINE void Deviate(const PointBlock& block, std::size_t i, Lanes& d) const {
    Spot p;
    Find(block, i, p, d);
  }

  // On the circle and on its axis the gradient is undefined; use zero.
  NU_ALWAYS_INLINE void Deviate(const PointBlock& block, std::size_t i, Lanes& d, Lanes (&column)[kUnknowns]) const {
    const Lanes zero = {};
    Spot p;
    Find(block, i, p, d);
    const Lanes e = d > zero ? p.e / d : zero;
    const Lanes z = d > zero ? p.z / d : zero;
    const Lanes cosine = p.q > zero ? p.s / p.q : zero;
    const Lanes tilt = p.q > zero ? p.y / p.q : zero;
    const Lanes near = p.y * p.y / (p.q * (p.q + p.s));
    const Lanes far = (1.0 - cosine) / (bend * bend);
    const Lanes arc = p.s > zero ? near : far;
    column[kOut] = e * cosine;
    column[kUp] = z;
    column[kTiltOut] = e * tilt;
    column[kTiltUp] = z * tilt;
    column[kBendOut] = e * arc;
    column[kBendUp] = z * arc;
  }

  AxisFrame frame;
  double bend;
};

NU_DISTANCE_KERNELS(TubeLanes)

}  // namespace

void TubeDistance::Deviations(const PointBlock& block, double* deviation, double& smallest, double& largest) const {
  FindEach(block, TubeLanes{frame, bend}, deviation, smallest, largest);
}

void TubeDistance::Gradients(const PointBlock& block, double* deviation, double (*gradient)[kMostRows]) const {
  const double lever = -1.0 / Lever();
  const double sweep = -Sweep();
  FindGradients(block, TubeLanes{frame, bend}, {-1.0, -1.0, lever, lever, sweep, sweep}, deviation, gradient);
}

void TubeDistance::AddCurvature(const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) const {
  const Vec3 p = frame.Local(point);
  const double s = 1.0 + bend * p.x;
  const double q = std::sqrt(s * s + bend * p.y * (bend * p.y));
  const double e = (2.0 * p.x + bend * (p.x * p.x + p.y * p.y)) / (1.0 + q);
  const double d = std::sqrt(e * e + p.z * p.z);
  if (!(d > 0.0) || !(q > 0.0)) return;
  const double g = s > 0.0 ? p.y * p.y / (q + s) : (q - s) / (bend * bend);
  const double y = p.y / q;
  const double c = g / q;
  const double first[kUnknowns] = {e * s / q, p.z, e * y, p.z * y, e * c, p.z * c};  // of d, times -d

  const double dG[kUnknowns] = {bend * c, 0.0, e * y, p.z * y, e * c, p.z * c};
  const double dy[kUnknowns] = {0.0, 0.0, p.x, p.z, 0.0, 0.0};
  const double ds[kUnknowns] = {-bend, 0.0, -bend * p.y, 0.0, -p.x, -p.z};
  const double dk[kUnknowns] = {0.0, 0.0, 0.0, 0.0, -2.0 * bend, 0.0};  // of k^2
  double second[kUnknowns][kUnknowns] = {};                             // what the second derivatives bring to q d2G
  second[kTiltOut][kTiltOut] = -p.y * p.y + g * bend * p.x;
  second[kTiltUp][kTiltUp] = -p.y * p.y;
  second[kTiltOut][kTiltUp] = 0.5 * g * bend * p.z;
  second[kOut][kTiltOut] = second[kUp][kTiltUp] = -p.y;
  second[kBendOut][kBendOut] = second[kBendUp][kBendUp] = -g * g;
  second[kOut][kBendOut] = second[kUp][kBendUp] = -g;
  second[kTiltOut][kBendOut] = second[kTiltUp][kBendUp] = -g * p.y;

  const double lever = 1.0 / Lever();
  const double sweep = Sweep();
  const double unit[kUnknowns] = {1.0, 1.0, lever, lever, sweep, sweep};
  for (int i = 0; i < kUnknowns; ++i) {
    for (int j = i; j < kUnknowns; ++j) {
      const double mixed = dG[i] * (g * dk[j] + ds[j]) + dG[j] * (g * dk[i] + ds[i]) + bend * bend * dG[i] * dG[j];
      const double ofG = (dy[i] * dy[j] + second[i][j] - mixed) / q;
      const double ofP = i == j && i <= kUp ? 1.0 : 0.0;
      const double entry = weight * unit[i] * unit[j] * (ofP - ofG - first[i] / d * (first[j] / d)) / d;
      sum[i][j] += entry;
      if (j > i) sum[j][i] += entry;
    }
  }
}

// A circle that the points go around must not be bent open by a step that is meant to widen it.
TubeDistance TubeDistance::Moved(const double (&step)[kUnknowns]) const {
  const double lever = 1.0 / Lever();
  const Vec3 origin = frame.origin + step[kOut] * frame.x + step[kUp] * frame.z;
  const Vec3 y = Unit(frame.y + lever * (step[kTiltOut] * frame.x + step[kTiltUp] * frame.z));
  const Vec3 x = Unit(Rejection(frame.x, y));
  const Vec3 z = Cross(x, y);
  const double outwardBend = Sweep() * step[kBendOut];
  double inwards = bend - outwardBend;
  double upwards = Sweep() * step[kBendUp];
  const double widening = outwardBend / bend;
  if (!IsShort() && widening > 0.0) {
    inwards = bend / (1.0 + widening);
    upwards /= 1.0 + widening;
  }
  const double bent = std::sqrt(inwards * inwards + upwards * upwards);
  if (!(bent > 0.0)) return {{origin, x, y, z}, 0.0, half};
  const Vec3 outwards = (inwards / bent) * x - (upwards / bent) * z;
  return {{origin, outwards, y, Cross(outwards, y)}, bent, half};
}

// Eight parts along the circle, quarters of the section.
int TubeDistance::Stratum(const Vec3& point) const {
  const Vec3 p = frame.Local(point);
  const double s = 1.0 + bend * p.x;
  int part = 0;
  if (IsShort()) {
    for (const double end : {-0.75, -0.5, -0.25, 0.0, 0.25, 0.5, 0.75}) part += p.y > end * half ? 1 : 0;
  } else {
    const double t = bend * p.y;
    part = (s < 0.0 ? 1 : 0) + (t < 0.0 ? 2 : 0) + (std::fabs(s) < std::fabs(t) ? 4 : 0);
  }
  const bool outside = 2.0 * p.x + bend * (p.x * p.x + p.y * p.y) > 0.0;
  return 4 * part + (outside ? 2 : 0) + (p.z > 0.0 ? 1 : 0);
}

}  // namespace nu::engine::minimax
