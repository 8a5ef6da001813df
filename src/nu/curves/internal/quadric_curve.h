#ifndef NU_CURVES_INTERNAL_QUADRIC_CURVE_H
#define NU_CURVES_INTERNAL_QUADRIC_CURVE_H

#include <vector>

#include "nu/curves/internal/round_quadric.h"
#include "nu/foundation/internal/elementary.h"

// The curve in which a cylinder or cone, the base, meets another round quadric. The base stands upright: its axis is
// the z axis, and its generators are told by their angle u around it,
//   (r cos u, r sin u, t) of a cylinder, t (sin a cos u, sin a sin u, cos a) of a cone, which has its apex at the
//   origin.
// The other quadric makes it a(u) t^2 + 2 h(u) t + c(u) = 0 on each of them, of degree two in cos u and sin u.
namespace nu::internal {

// c0 + c1 cos u + s1 sin u + c2 cos 2u + s2 sin 2u.
struct Wave2 {
  double At(double u) const;
  // (f(u) - f(v)) / 2 sin((u - v) / 2), told by the middle of u and v and half their difference; nothing cancels.
  double Slope(double middle, double half) const;
  Wave2 Derivative() const { return {0.0, s1, -c1, 2.0 * s2, -2.0 * c2}; }
  // No value is larger.
  double Bound() const { return std::fabs(c0) + std::fabs(c1) + std::fabs(s1) + std::fabs(c2) + std::fabs(s2); }

  double c0 = 0.0;
  double c1 = 0.0;
  double s1 = 0.0;
  double c2 = 0.0;
  double s2 = 0.0;
};

inline Wave2 operator*(double f, const Wave2& wave) {
  return {f * wave.c0, f * wave.c1, f * wave.s1, f * wave.c2, f * wave.s2};
}

struct QuadricPair {
  // The point t along the generator at the angle u.
  Vec3 On(double u, double t) const;
  // Where the generator comes deepest into the other quadric, or closest to it: halfway between both crossings.
  Vec3 Middle(double u) const { return On(u, -h.At(u) / a.At(u)); }
  // Above 0 where the generator crosses the other quadric, below 0 where it misses it. Where it all but touches, this
  // is the distance of Middle from the quadric, to a few roundings; the discriminant h^2 - a c has lost its places
  // there.
  double Depth(double u) const;
  // A point next to both surfaces, on both of them, unless they are next to tangent there.
  Vec3 OnBoth(Vec3 p) const;

  RoundQuadric base;
  RoundQuadric other;
  Wave2 a;
  Wave2 h;
  Wave2 c;
};

// How the parameter v of a curve runs over the generators and their crossings t = (-h +- sqrt(h^2 - a c)) / a.
struct QuadricPath {
  enum class Sheets {
    kBoth,             // the crossings +- alternate as below
    kThroughApex,      // c = 0: the apex of the base is on the other quadric; t = -2 h / a is left
    kThroughInfinity,  // a = 0: the generators are parallel to one of the other cone; t = -c / 2 h is left
  };
  double AngleAt(double v) const { return swings ? middle - half * Cos(v) : v; }

  Sheets sheets = Sheets::kBoth;
  // Between two generators that touch, u = middle - half cos v: forth on + and back on -. Else u = v, on one of them.
  bool swings = false;
  double middle = 0.0;
  double half = 0.0;
  double sign = 1.0;
  // Generators through a double point, where the curve goes over from one crossing to the other.
  int nodes = 0;
  double node[2] = {};
  // A generator that is on both surfaces, through the apex of the base: a and h vanish there together.
  bool hasCommonLine = false;
  double commonLine = 0.0;
  // One turn of a closed curve; the part of an unbounded one that is kept.
  double lower = 0.0;
  double upper = 0.0;
  bool closed = true;
};

// The place t on the generator at u.
struct QuadricPlace {
  double u = 0.0;
  double t = 0.0;
};

// Where a stretch of a curve begins that reaches to the next node, and the chart in which it is described.
struct QuadricNode {
  enum class Chart {
    kPath,    // by the path
    kAround,  // u grows evenly; of two crossings the one at which the quadratic in t rises (`sign` above 0) or falls
    kAlong,   // t grows evenly; u stays as close as `width`
    kAcross,  // through a double point, by the cubic that has the tangents at both ends
  };
  double v = 0.0;  // the parameter of the curve
  double u = 0.0;
  double t = 0.0;
  Chart chart = Chart::kPath;
  double sign = 1.0;
  double width = 0.0;
  Vec3 point;
};

// The point of a curve that is closest to another one.
struct QuadricFoot {
  double v = 0.0;
  Vec3 point;
  double distance = HUGE_VAL;
};

// The points p with normal p <= height.
struct HalfSpace {
  Vec3 normal;  // of unit length
  double height = 0.0;
};

struct QuadricRange {
  double lower = 0.0;
  double upper = 0.0;
};

struct QuadricCurve {
  // h +- times the square root of the discriminant, with its sign along the path.
  double RootAt(double v) const;
  // On the path, before OnBoth.
  Vec3 OnPath(double v) const;
  // t on the generator, for a curve in charts around and along.
  double LevelAt(double v) const;
  // v is taken around a closed curve, and to the nearest end of another one.
  Vec3 At(double v) const;
  QuadricFoot FootOf(Vec3 p) const;

  // Between two parameters, no more than a turn of a closed curve apart; they keep their meaning.
  QuadricCurve Part(double from, double to) const;
  // Parameters, both ends included, between which no chord is farther from the curve than the tolerance; none where
  // more than `most` are needed.
  std::vector<double> SamplesWithin(double tol, std::size_t most) const;
  // The ranges on which the curve is inside all half-spaces.
  std::vector<QuadricRange> Inside(const std::vector<HalfSpace>& spaces) const;

  // Nodes for a curve that is described by its path.
  void AddNodes();
  // Their points.
  void MeasureNodes();

  QuadricPair pair;
  QuadricPath path;
  std::vector<QuadricNode> nodes;  // ascending in v, from the lower end or before it to the upper one or beyond

 private:
  std::vector<double> NodesWithin() const;
  std::size_t StretchOf(double v) const;
  QuadricPlace PlaceAt(std::size_t stretch, double v) const;
  QuadricPlace PlaceAcross(const QuadricNode& from, const QuadricNode& to, double share) const;
};

}  // namespace nu::internal

#endif
