#ifndef NU_ENGINE_SHAPES_QUADRIC_INTERSECTION_CURVE_H
#define NU_ENGINE_SHAPES_QUADRIC_INTERSECTION_CURVE_H

#include <vector>

#include "nu/engine/base/elementary.h"
#include "nu/engine/shapes/round_quadric.h"

// The curve in which a cylinder or cone, the base, meets another round quadric. The base stands upright: its axis is
// the z axis, and its generators are identified by their angle u around it,
//   (r cos u, r sin u, t) of a cylinder, (t0 + t)(sin a cos u, sin a sin u, cos a) of a cone, which has its apex at the
//   origin.
// The other quadric makes it a(u) t^2 + 2 h(u) t + c(u) = 0 on each of them, of degree two in cos u and sin u.
//
// Surfaces that nearly share a generator do so next to u = 0, and an apex of the other surface is next to u = t = 0:
// numbers are densest at 0, so that coordinates and coefficients keep all their digits there.
namespace nu::engine::shapes {

// value + slope sin u + versed (1 - cos u) + mixed sin u (1 - cos u) + square sin^2 u: any trigonometric polynomial of
// degree two, by terms that vanish with u of higher and higher order.
struct Wave2 {
  double At(double u) const;
  Wave2 Derivative() const { return {slope, versed + 2.0 * square, -slope - mixed, -2.0 * square, 2.0 * mixed}; }
  // No value is larger.
  double Bound() const {
    return std::fabs(value) + std::fabs(slope) + 2.0 * std::fabs(versed) + 2.0 * std::fabs(mixed) + std::fabs(square);
  }
  // (1 + z^2)^2 times the wave is sum p[i] z^i for z = tan(u / 2).
  void ToPolynomial(double (&p)[5]) const;

  double value = 0.0;
  double slope = 0.0;
  double versed = 0.0;
  double mixed = 0.0;
  double square = 0.0;
};

inline Wave2 operator+(const Wave2& f, const Wave2& g) {
  return {f.value + g.value, f.slope + g.slope, f.versed + g.versed, f.mixed + g.mixed, f.square + g.square};
}
inline Wave2 operator*(double f, const Wave2& wave) {
  return {f * wave.value, f * wave.slope, f * wave.versed, f * wave.mixed, f * wave.square};
}

struct QuadricPair {
  // The equation on the generators from the two surfaces, the base upright.
  void SetWaves();
  // The point t along the generator at the angle u.
  Vec3 On(double u, double t) const;
  // Where the generator comes deepest into the other quadric, or closest to it: halfway between both crossings.
  Vec3 Middle(double u) const { return On(u, -h.At(u) / a.At(u)); }
  // Above 0 where the generator crosses the other quadric, below 0 where it misses it. Where it all but touches, the
  // size is the distance of Middle from the quadric, to a few roundings; the discriminant h^2 - a c has lost its
  // digits there.
  double Depth(double u) const;
  // A point next to both surfaces, on both of them, unless they are next to tangent there.
  Vec3 OnBoth(Vec3 p) const;

  RoundQuadric base;
  RoundQuadric other;
  double start = 0.0;  // t0, of a cone
  Wave2 a;
  Wave2 h;
  Wave2 c;
};

// What is known of a curve, and the parameters that are kept of it.
struct QuadricPath {
  enum class Sheets {
    kBoth,             // all crossings
    kThroughApex,      // the apex of the base is on the other quadric: a t + 2 h = 0 is left
    kThroughInfinity,  // a = 0: the generators are parallel to one of the other cone; 2 h t + c = 0 is left
  };

  Sheets sheets = Sheets::kBoth;
  // The generator at u = 0 is on both surfaces, through the apex of the base: a and h vanish there together.
  bool hasCommonLine = false;
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

// By halving, where a condition ends that holds at `inside` and not at `outside`.
template<class Condition>
double LastInside(double inside, double outside, int halvings, const Condition& holds) {
  for (int i = 0; i < halvings; ++i) {
    const double middle = 0.5 * (inside + outside);
    (holds(middle) ? inside : outside) = middle;
  }
  return inside;
}

// The angle u, whole turns away, that is nearest to another one.
double AngleNear(double u, double other);

// Where a stretch of a curve begins that reaches to the next node, and the chart in which it is described. The angles
// are within half a turn and a step of 0.
struct QuadricNode {
  enum class Chart {
    kAround,  // u grows evenly; of two crossings the one at which the quadratic in t rises (`sign` above 0) or falls
    kAlong,   // t grows evenly; u stays as close as `width`
    kAcross,  // through a double point, by the cubic that has the tangents at both ends
  };
  double v = 0.0;  // the parameter of the curve
  double u = 0.0;
  double t = 0.0;
  Chart chart = Chart::kAround;
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

struct QuadricIntersectionCurve {
  // t on the generator.
  double LevelAt(double v) const { return PlaceAt(StretchOf(v), v).t; }
  // v is taken around a closed curve, and to the nearest end of another one.
  Vec3 At(double v) const;
  QuadricFoot FootOf(Vec3 p) const;

  // Between two parameters, no more than a turn of a closed curve apart; they keep their meaning.
  QuadricIntersectionCurve Part(double from, double to) const;
  // Parameters, both ends included, between which no chord is farther from the curve than the tolerance; none where
  // more than `most` are needed.
  std::vector<double> SamplesWithin(double tol, std::size_t most) const;
  // The ranges on which the curve is inside all half-spaces.
  std::vector<QuadricRange> Inside(const std::vector<HalfSpace>& spaces) const;

  // Sets the points of the nodes.
  void MeasureNodes() {
    for (QuadricNode& node : nodes) node.point = At(node.v);
  }

  QuadricPair pair;
  QuadricPath path;
  std::vector<QuadricNode> nodes;  // ascending in v, from the lower end or before it to the upper one or beyond

 private:
  std::vector<double> NodesWithin() const;
  std::size_t StretchOf(double v) const;
  QuadricPlace PlaceAt(std::size_t stretch, double v) const;
  QuadricPlace PlaceAcross(const QuadricNode& from, const QuadricNode& to, double share) const;
};

}  // namespace nu::engine::shapes

#endif
