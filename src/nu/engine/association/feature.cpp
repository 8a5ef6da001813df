// In the frame of a feature a point is q = (x, y, z), at the height h = z over the plane z = 0 and at the distance rho
// from the axis, in the direction (c, s) = (x, y) / rho.
//
// Round features are a curve in the half-plane of (rho, h): the deviation is F(rho, h, sizes). With the shift
// (sx, sy, sz) and the tilt (a, b), to second order,
//
//   h = z - sz + a (x - sx) + b (y - sy) - (a^2 + b^2) z / 2,
//   rho^2 = X^2 + Y^2,  X = x - sx - a (z - sz) - a (a x + b y) / 2,  Y = y - sy - b (z - sz) - b (a x + b y) / 2,
//
// so that with t = -s dX + c dY, the way around the axis,
//
//   d rho = c dX + s dY,  d2 rho = c d2X + s d2Y + t t' / rho.
//
// Conics are a curve C(t) in the plane of q. With the foot C, the unit normal n and tangent there, the curvature k,
// and the components w_i = dq/di - dC/di, e_i = n . w_i along the normal, tau_i along the tangent,
//
//   e_ij = n . (d2q/didj - d2C/didj) + (k tau_i tau_j - tau_i mu_j - mu_i tau_j - e mu_i mu_j) / (1 + e k),
//   mu_i = n . d2C/dtdi / |dC/dt|,
//
// which follows from the derivatives of |q - C|^2 / 2 when t is eliminated by (q - C) . dC/dt = 0; nothing cancels next
// to the curve.

#include "nu/engine/association/feature.h"

#include "nu/engine/base/elementary.h"
#include "nu/engine/shapes/conics.h"

namespace nu::engine::association {
namespace {

constexpr UnknownMask kAxis = kShiftsAcross | kTilts;
constexpr UnknownMask kInPlane = Bits({kShiftX, kShiftY, kTurn});

bool IsConic(FeatureKind kind) {
  return kind == FeatureKind::ellipse || kind == FeatureKind::hyperbola || kind == FeatureKind::parabola;
}

double Reciprocal(double length) {
  return length > 0.0 ? 1.0 / length : 0.0;
}

// A cone; a cylinder and a circle in its plane are cones that do not widen, and a line is one without a radius.
struct Slope {
  double radius = 0.0;
  double sine = 0.0;
  double cosine = 1.0;
  double side = 1.0;  // -1 for the nappe behind the apex: radius and semi-angle are minus those of the feature

  Slope(const Feature& feature, double h) {
    if (feature.kind != FeatureKind::line) radius = feature.size[0];
    if (feature.kind != FeatureKind::cone) return;
    const SineCosine angle = SinCos(feature.size[1]);
    sine = angle.sine;
    cosine = angle.cosine;
    if (!feature.bothNappes || !(h * sine + radius * cosine < 0.0)) return;
    side = -1.0;
    radius = -radius;
    sine = -sine;
  }
  double At(double rho, double h) const { return (rho - radius) * cosine - h * sine; }
};

// A torus; a circle in space is one without a minor radius, a sphere one without a major radius.
struct Ring {
  double major = 0.0;
  double minor = 0.0;

  explicit Ring(const Feature& feature) {
    if (feature.kind != FeatureKind::sphere) major = feature.size[0];
    if (feature.kind == FeatureKind::sphere) minor = feature.size[0];
    if (feature.kind == FeatureKind::torus) minor = feature.size[1];
  }
};

bool IsRing(FeatureKind kind) {
  return kind == FeatureKind::sphere || kind == FeatureKind::circleInSpace || kind == FeatureKind::torus;
}

// F and its derivatives, by rho, h and the sizes in this order.
enum Coordinate { kRho, kHeight, kFirstSize, kSecondSize, kCoordinates };

struct Meridian {
  double value = 0.0;
  double first[kCoordinates] = {};
  double second[kCoordinates][kCoordinates] = {};
  double across = 0.0;  // the derivative by rho over rho

  void SetSecond(Coordinate i, Coordinate j, double d) { second[i][j] = second[j][i] = d; }
};

Meridian MeridianOf(const Slope& slope, double rho, double h) {
  Meridian f;
  f.value = slope.At(rho, h);
  f.first[kRho] = slope.cosine;
  f.first[kHeight] = -slope.sine;
  f.first[kFirstSize] = -slope.side * slope.cosine;
  f.first[kSecondSize] = -slope.side * ((rho - slope.radius) * slope.sine + h * slope.cosine);
  f.SetSecond(kRho, kSecondSize, -slope.side * slope.sine);
  f.SetSecond(kHeight, kSecondSize, -slope.side * slope.cosine);
  f.SetSecond(kFirstSize, kSecondSize, slope.sine);
  f.SetSecond(kSecondSize, kSecondSize, -f.value);
  f.across = slope.cosine * Reciprocal(rho);
  return f;
}

Meridian MeridianOf(const Ring& ring, bool isSphere, double rho, double h) {
  Meridian f;
  const double distance = Hypot(rho - ring.major, h);
  const double inverse = Reciprocal(distance);
  const double u = (rho - ring.major) * inverse;
  const double v = h * inverse;
  f.value = distance - ring.minor;
  f.first[kRho] = u;
  f.first[kHeight] = v;
  f.first[kFirstSize] = isSphere ? -1.0 : -u;
  f.first[kSecondSize] = -1.0;
  f.SetSecond(kRho, kRho, v * v * inverse);
  f.SetSecond(kRho, kHeight, -u * v * inverse);
  f.SetSecond(kHeight, kHeight, u * u * inverse);
  f.across = isSphere ? inverse : u * Reciprocal(rho);
  if (isSphere) return f;
  f.SetSecond(kFirstSize, kFirstSize, v * v * inverse);
  f.SetSecond(kRho, kFirstSize, -v * v * inverse);
  f.SetSecond(kHeight, kFirstSize, u * v * inverse);
  return f;
}

Meridian MeridianOf(const Feature& feature, double rho, double h) {
  if (feature.kind == FeatureKind::plane) {
    Meridian f;
    f.value = h;
    f.first[kHeight] = 1.0;
    return f;
  }
  const bool isSphere = feature.kind == FeatureKind::sphere;
  Meridian f =
      IsRing(feature.kind) ? MeridianOf(Ring(feature), isSphere, rho, h) : MeridianOf(Slope(feature, h), rho, h);
  if (rho > 0.0 || isSphere) return f;
  // The axis is where the deviation by rho has a bend: no direction leads away from it.
  f.first[kRho] = 0.0;
  for (int k = 0; k < kCoordinates; ++k) f.second[kRho][k] = f.second[k][kRho] = 0.0;
  return f;
}

// Half of the square of F.
Meridian HalfSquareOf(const Meridian& f) {
  Meridian half;
  half.value = 0.5 * f.value * f.value;
  half.across = f.value * f.across;
  for (int m = 0; m < kCoordinates; ++m) {
    half.first[m] = f.value * f.first[m];
    for (int n = 0; n < kCoordinates; ++n) half.second[m][n] = f.value * f.second[m][n] + f.first[m] * f.first[n];
  }
  return half;
}

// ((rho - R)^2 + h^2) / 2, and rho^2 / 2.
Meridian HalfSquareOfDistance(const Feature& feature, double rho, double h) {
  const bool isLine = feature.kind == FeatureKind::line;
  const double outwards = isLine ? rho : rho - feature.size[0];
  Meridian half;
  half.value = 0.5 * (outwards * outwards + (isLine ? 0.0 : h * h));
  half.across = isLine ? 1.0 : outwards * Reciprocal(rho);
  half.first[kRho] = outwards;
  half.second[kRho][kRho] = 1.0;
  if (isLine) return half;
  half.first[kHeight] = h;
  half.first[kFirstSize] = -outwards;
  half.second[kHeight][kHeight] = 1.0;
  half.second[kFirstSize][kFirstSize] = 1.0;
  half.SetSecond(kRho, kFirstSize, -1.0);
  return half;
}

// A point seen from a round feature, and the derivatives of rho, h and the sizes by the unknowns.
struct RoundPlace {
  Vec3 q;
  double rho = 0.0;
  double c = 1.0;
  double s = 0.0;
  double first[kCoordinates][kUnknowns] = {};
  double around[kUnknowns] = {};  // t

  explicit RoundPlace(const Vec3& local) : q(local), rho(Hypot(local.x, local.y)) {
    if (rho > 0.0) {
      c = q.x / rho;
      s = q.y / rho;
    }
    first[kRho][kShiftX] = -c;
    first[kRho][kShiftY] = -s;
    first[kRho][kTiltX] = -c * q.z;
    first[kRho][kTiltY] = -s * q.z;
    first[kHeight][kShiftZ] = -1.0;
    first[kHeight][kTiltX] = q.x;
    first[kHeight][kTiltY] = q.y;
    first[kFirstSize][kSize0] = 1.0;
    first[kSecondSize][kSize1] = 1.0;
    around[kShiftX] = s;
    around[kShiftY] = -c;
    around[kTiltX] = s * q.z;
    around[kTiltY] = -c * q.z;
  }

  // Times the derivative by rho, and by h.
  void AddOwnCurvature(double byRho, double byHeight, double (&sum)[kUnknowns][kUnknowns]) const {
    const auto add = [&sum](Unknown i, Unknown j, double value) {
      sum[i][j] += value;
      if (i != j) sum[j][i] += value;
    };
    add(kTiltX, kTiltX, -byRho * c * q.x - byHeight * q.z);
    add(kTiltX, kTiltY, -byRho * c * q.y);
    add(kTiltY, kTiltY, -byRho * s * q.y - byHeight * q.z);
    add(kTiltX, kShiftZ, byRho * c);
    add(kTiltY, kShiftZ, byRho * s);
    add(kTiltX, kShiftX, -byHeight);
    add(kTiltY, kShiftY, -byHeight);
  }
};

void RoundGradient(const Meridian& f, const RoundPlace& place, double (&gradient)[kUnknowns]) {
  for (int m = 0; m < kCoordinates; ++m)
    for (int i = 0; i < kUnknowns; ++i) gradient[i] += f.first[m] * place.first[m][i];
}

void RoundCurvature(const Meridian& f, const RoundPlace& place, double (&sum)[kUnknowns][kUnknowns]) {
  for (int i = 0; i < kUnknowns; ++i) {
    double row[kCoordinates] = {};
    for (int m = 0; m < kCoordinates; ++m)
      for (int n = 0; n < kCoordinates; ++n) row[n] += f.second[m][n] * place.first[m][i];
    for (int j = 0; j < kUnknowns; ++j) {
      sum[i][j] += f.across * place.around[i] * place.around[j];
      for (int n = 0; n < kCoordinates; ++n) sum[i][j] += row[n] * place.first[n][j];
    }
  }
  place.AddOwnCurvature(f.first[kRho], f.first[kHeight], sum);
}

Vec2 FootOf(const Feature& feature, Vec2 q) {
  const double a = feature.size[0];
  const double b = feature.size[1];
  if (feature.kind == FeatureKind::hyperbola) return FootOn(Hyperbola2{a, b}, q);
  if (feature.kind == FeatureKind::parabola) return FootOn(Parabola2{a}, q);
  if (a >= b) return FootOn(Ellipse2{a, b}, q);
  const Vec2 swapped = FootOn(Ellipse2{b, a}, {q.y, q.x});
  return {swapped.y, swapped.x};
}

// A point seen from a conic; the foot is C.
struct ConicPlace {
  Vec2 q;
  Vec2 foot;
  Vec2 tangent;
  Vec2 normal;
  double speed = 0.0;  // |dC/dt|
  double e = 0.0;
  double k = 0.0;
  // The derivatives of C by the sizes, and of dC/dt.
  Vec2 bySize[2];
  Vec2 speedBySize[2];

  ConicPlace(const Feature& feature, Vec2 local) : q(local), foot(FootOf(feature, local)) {
    const double a = feature.size[0];
    const double b = feature.size[1];
    Vec2 velocity, acceleration;
    if (feature.kind == FeatureKind::parabola) {  // C = (a t^2, 2 a t)
      velocity = {foot.y, 2.0 * a};
      acceleration = {2.0 * a, 0.0};
      bySize[0] = (1.0 / a) * foot;
      speedBySize[0] = (1.0 / a) * velocity;
    } else {  // C = (a cos t, b sin t) or (+-a cosh t, b sinh t)
      const double turn = feature.kind == FeatureKind::ellipse ? -1.0 : 1.0;
      const Vec2 unit{foot.x / a, foot.y / b};
      velocity = {turn * a * unit.y, b * unit.x};
      acceleration = turn * foot;
      bySize[0] = {unit.x, 0.0};
      bySize[1] = {0.0, unit.y};
      speedBySize[0] = {turn * unit.y, 0.0};
      speedBySize[1] = {0.0, unit.x};
    }
    speed = Hypot(velocity.x, velocity.y);
    tangent = (1.0 / speed) * velocity;
    const double side = feature.kind == FeatureKind::ellipse ? 1.0 : -1.0;
    normal = side * Vec2{tangent.y, -tangent.x};
    e = Dot(normal, q - foot);
    k = -Dot(normal, acceleration) / (speed * speed);
  }

  // q - C by an unknown.
  Vec2 First(int unknown) const {
    switch (unknown) {
      case kShiftX:
        return {-1.0, 0.0};
      case kShiftY:
        return {0.0, -1.0};
      case kTurn:
        return {q.y, -q.x};
      case kSize0:
        return -1.0 * bySize[0];
      case kSize1:
        return -1.0 * bySize[1];
      default:
        return {};
    }
  }
};

void ConicGradient(const ConicPlace& place, double (&gradient)[kUnknowns]) {
  for (int i = 0; i < kUnknowns; ++i) gradient[i] = Dot(place.normal, place.First(i));
}

// At its centre of curvature a point has no second derivatives; next to it they are those of a point this part of the
// radius away.
constexpr double kLeastRadius = 0x1p-26;

void ConicCurvature(const ConicPlace& place, double (&sum)[kUnknowns][kUnknowns]) {
  const Vec2 n = place.normal;
  const double inverse = 1.0 / std::fmax(1.0 + place.e * place.k, kLeastRadius);
  double tau[kUnknowns];
  for (int i = 0; i < kUnknowns; ++i) tau[i] = Dot(place.tangent, place.First(i));
  double mu[kUnknowns] = {};
  mu[kSize0] = Dot(n, place.speedBySize[0]) / place.speed;
  mu[kSize1] = Dot(n, place.speedBySize[1]) / place.speed;
  for (int i = 0; i < kUnknowns; ++i) {
    for (int j = 0; j < kUnknowns; ++j)
      sum[i][j] += inverse * (place.k * tau[i] * tau[j] - tau[i] * mu[j] - mu[i] * tau[j] - place.e * mu[i] * mu[j]);
  }
  sum[kTurn][kTurn] -= Dot(n, place.q);
  sum[kTurn][kShiftX] += n.y;
  sum[kShiftX][kTurn] += n.y;
  sum[kTurn][kShiftY] -= n.x;
  sum[kShiftY][kTurn] -= n.x;
}

void KeepUnknowns(UnknownMask mask, double (&gradient)[kUnknowns]) {
  for (int i = 0; i < kUnknowns; ++i)
    if (!Contains(mask, i)) gradient[i] = 0.0;
}

void AddUnknowns(UnknownMask mask, double weight, const double (&second)[kUnknowns][kUnknowns],
                 double (&sum)[kUnknowns][kUnknowns]) {
  for (int i = 0; i < kUnknowns; ++i) {
    if (!Contains(mask, i)) continue;
    for (int j = 0; j < kUnknowns; ++j)
      if (Contains(mask, j)) sum[i][j] += weight * second[i][j];
  }
}

}  // namespace

Feature Scaled(Feature feature, double factor) {
  feature.frame.origin = factor * feature.frame.origin;
  feature.size[0] *= factor;
  if (feature.kind != FeatureKind::cone) feature.size[1] *= factor;
  return feature;
}

UnknownMask UnknownsOf(FeatureKind kind) {
  switch (kind) {
    case FeatureKind::lineInPlane:
      return Bits({kShiftY, kTurn});
    case FeatureKind::line:
      return kAxis;
    case FeatureKind::plane:
      return Bits({kShiftZ, kTiltX, kTiltY});
    case FeatureKind::circle:
      return Bits({kShiftX, kShiftY, kSize0});
    case FeatureKind::circleInSpace:
      return kShifts | kAxis | Bits({kSize0});
    case FeatureKind::ellipse:
    case FeatureKind::hyperbola:
      return kInPlane | Bits({kSize0, kSize1});
    case FeatureKind::parabola:
      return kInPlane | Bits({kSize0});
    case FeatureKind::sphere:
      return kShifts | Bits({kSize0});
    case FeatureKind::cylinder:
      return kAxis | Bits({kSize0});
    case FeatureKind::cone:
      return kAxis | Bits({kSize0, kSize1});
    case FeatureKind::torus:
      return kShifts | kAxis | Bits({kSize0, kSize1});
  }
  return 0;
}

UnknownMask AnglesOf(FeatureKind kind) {
  const UnknownMask sizes = kind == FeatureKind::cone ? Bits({kSize1}) : 0;
  return UnknownsOf(kind) & (kTilts | Bits({kTurn}) | sizes);
}

double PerLength(FeatureKind kind, int unknown, double extent) {
  return Contains(AnglesOf(kind), unknown) && extent > 0.0 ? 1.0 / extent : 1.0;
}

int ListUnknowns(UnknownMask mask, Unknown (&list)[kUnknowns]) {
  int count = 0;
  for (int k = 0; k < kUnknowns; ++k)
    if (Contains(mask, k)) list[count++] = static_cast<Unknown>(k);
  return count;
}

Unknown OffsetOf(FeatureKind kind) {
  switch (kind) {
    case FeatureKind::lineInPlane:
      return kShiftY;
    case FeatureKind::plane:
      return kShiftZ;
    case FeatureKind::circle:
    case FeatureKind::sphere:
    case FeatureKind::cylinder:
    case FeatureKind::cone:
      return kSize0;
    case FeatureKind::torus:
      return kSize1;
    default:
      return kUnknowns;
  }
}

Feature Moved(const Feature& feature, const double (&step)[kUnknowns]) {
  Feature moved = feature;
  AxisFrame& frame = moved.frame;
  frame.origin = frame.origin + (step[kShiftX] * frame.x + step[kShiftY] * frame.y + step[kShiftZ] * frame.z);
  if (step[kTiltX] != 0.0 || step[kTiltY] != 0.0) {
    const Vec3 z = Unit(frame.z + (step[kTiltX] * frame.x + step[kTiltY] * frame.y));
    frame = AxisFrame::Along(frame.origin, z, frame.x);
  }
  if (step[kTurn] != 0.0) {
    const SineCosine turn = SinCos(step[kTurn]);
    frame = AxisFrame::Along(frame.origin, frame.z, turn.cosine * frame.x + turn.sine * frame.y);
  }
  moved.size[0] += step[kSize0];
  moved.size[1] += step[kSize1];
  return moved;
}

double DeviationOf(const Feature& feature, const Vec3& point) {
  const Vec3 q = feature.frame.Local(point);
  if (feature.kind == FeatureKind::plane) return q.z;
  if (feature.kind == FeatureKind::lineInPlane) return q.y;
  if (IsConic(feature.kind)) return ConicPlace(feature, {q.x, q.y}).e;
  if (feature.kind == FeatureKind::sphere) return Hypot(q.x, q.y, q.z) - feature.size[0];
  const double rho = Hypot(q.x, q.y);
  if (!IsRing(feature.kind)) return Slope(feature, q.z).At(rho, q.z);
  const Ring ring(feature);
  return Hypot(rho - ring.major, q.z) - ring.minor;
}

double DeviationOf(const Feature& feature, const Vec3& point, double (&gradient)[kUnknowns]) {
  std::fill_n(gradient, static_cast<int>(kUnknowns), 0.0);
  const Vec3 q = feature.frame.Local(point);
  double e = q.y;
  if (feature.kind == FeatureKind::lineInPlane) {
    gradient[kShiftY] = -1.0;
    gradient[kTurn] = -q.x;
  } else if (IsConic(feature.kind)) {
    const ConicPlace place(feature, {q.x, q.y});
    ConicGradient(place, gradient);
    e = place.e;
  } else {
    const RoundPlace place(q);
    const Meridian f = MeridianOf(feature, place.rho, q.z);
    RoundGradient(f, place, gradient);
    e = f.value;
  }
  KeepUnknowns(UnknownsOf(feature.kind), gradient);
  return e;
}

void AddCurvature(const Feature& feature, const Vec3& point, double weight, double (&sum)[kUnknowns][kUnknowns]) {
  const Vec3 q = feature.frame.Local(point);
  double second[kUnknowns][kUnknowns] = {};
  if (feature.kind == FeatureKind::lineInPlane) {
    second[kTurn][kTurn] = -q.y;
  } else if (IsConic(feature.kind)) {
    ConicCurvature(ConicPlace(feature, {q.x, q.y}), second);
  } else {
    const RoundPlace place(q);
    RoundCurvature(MeridianOf(feature, place.rho, q.z), place, second);
  }
  AddUnknowns(UnknownsOf(feature.kind), weight, second, sum);
}

double AddHalfSquare(const Feature& feature, const Vec3& point, double weight, double (&gradient)[kUnknowns],
                     double (&sum)[kUnknowns][kUnknowns]) {
  const Vec3 q = feature.frame.Local(point);
  const UnknownMask mask = UnknownsOf(feature.kind);
  double first[kUnknowns] = {};
  double second[kUnknowns][kUnknowns] = {};
  double e = 0.0;
  if (feature.kind == FeatureKind::lineInPlane || IsConic(feature.kind)) {
    e = DeviationOf(feature, point, first);
    AddCurvature(feature, point, e, second);
    for (int i = 0; i < kUnknowns; ++i)
      for (int j = 0; j < kUnknowns; ++j) second[i][j] += first[i] * first[j];
    for (double& d : first) d *= e;
  } else {
    const RoundPlace place(q);
    const Meridian half = IsDistance(feature.kind) ? HalfSquareOfDistance(feature, place.rho, q.z)
                                                   : HalfSquareOf(MeridianOf(feature, place.rho, q.z));
    e = DeviationOf(feature, point);
    RoundGradient(half, place, first);
    RoundCurvature(half, place, second);
    KeepUnknowns(mask, first);
  }
  for (int i = 0; i < kUnknowns; ++i) gradient[i] += weight * first[i];
  AddUnknowns(mask, weight, second, sum);
  return e;
}

}  // namespace nu::engine::association
