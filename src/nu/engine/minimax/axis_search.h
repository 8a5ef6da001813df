#ifndef NU_ENGINE_MINIMAX_AXIS_SEARCH_H
#define NU_ENGINE_MINIMAX_AXIS_SEARCH_H

#include <algorithm>
#include <tuple>
#include <vector>

#include "nu/engine/minimax/enclosing_cylinder.h"

namespace nu::engine::minimax {

// Directions within an angle of up to 90 degrees from one.
struct DirectionCap {
  Vec3 direction;
  double sine = 0.0;
  double cosine = 1.0;

  // Whichever sign directions have.
  bool Holds(const DirectionCap& other) const {
    return other.sine <= sine &&
           std::fabs(Dot(direction, other.direction)) >= cosine * other.cosine + sine * other.sine;
  }
};

// A lower bound on the radii of all cylinders around some points p_i, from weights w_i that are not negative and add up
// to 1. The largest squared distance from an axis is at least the weighted mean of all of them, and that is least where
// the axis passes through the weighted mean m of the points. With M the sum of w_i (p_i - m)(p_i - m)^T,
//
//   radius^2 >= trace M - d . M d
//
// for an axis along the unit vector d. With the multipliers of the smallest circle around the projections along d0 this
// is an equation for d = d0; with those of a locally smallest cylinder both sides have the same derivatives there, too.
class RadiusBound {
 public:
  // Without points the bound is 0.
  RadiusBound(const Vec3* point, const double* weight, int count);

  // Of the squared radius.
  double Within(const DirectionCap& cap) const;
  double Everywhere() const { return Within({{0.0, 0.0, 1.0}, 1.0, 0.0}); }

 private:
  double m_diagonal[3] = {};     // xx, yy, zz
  double m_offDiagonal[3] = {};  // yz, zx, xy
  double m_trace = 0.0;
  double m_squares = 0.0;  // of all nine
};

// What the contacts of a locally smallest cylinder say of others.
//
// Along its axis d0, of all weights of the contacts that keep their mean on the axis the bound is an equation. Those of
// three contacts are the corners of all such weights, and the b of Within, across d0, of all of them fill the hull of
// those of the corners. In it is 0, from the multipliers. Let the hull reach as far as r in all directions. For a
// direction at an angle of phi from d0 there are weights whose b is r long and opposite, so
//
//   radius^2 >= radius0^2 + 2 r sin phi cos phi - radius0^2 sin^2 phi:
//
// no cylinder is smaller up to tan phi = 2 r / radius0^2.
class KnownCylinder {
 public:
  explicit KnownCylinder(const MinimaxSolution<AxisDistance>& found);

  double Radius() const { return m_radius; }
  // The squared radius, less this part of it.
  double SquareLess(double part) const { return m_radius * m_radius * (1.0 - part); }
  const RadiusBound& Bound() const { return m_bound; }
  // All cylinders with these directions are at least as large.
  bool IsSmallestIn(const DirectionCap& cap) const { return m_own.Holds(cap); }

 private:
  double m_radius;
  RadiusBound m_bound;
  DirectionCap m_own;
};

// When a search ends.
struct AxisSearchLimits {
  // A square whose bound is less than this part below the squared radius known is given up. Around an optimum bounds
  // are exact to second order only, so a narrower gap costs small squares there: a third more time than one of 1e-6,
  // within which one set of points on three rings in fifty has a better optimum.
  double gap = 1e-9;
  // Boxes, discs and balls of up to some thousand points need some hundred circles and up to 30 passes over all points;
  // of points on a sphere, whose cylinders all have nearly the same radius, no work would be enough.
  long circles = 2000;
  long passes = 100;
};

// A search for smaller cylinders around points than one known: branch and bound over the directions of the axis (A. H.
// Land, A. G. Doig, Econometrica 28, 1960). They are the points of three faces of a cube, in squares. The square with
// the lowest bound is cut in four, and those parts are left whose bounds are below what is known. The smallest circles
// behind the bounds are found for some of the points, the outline, which grows where their circle does not hold all; a
// bound for some of the points is one for all.
class AxisSearch {
 public:
  // The frame of what has been found makes the squares follow the points; `outline` is the first one.
  AxisSearch(PointBlocks& points, const AxisFrame& found, std::vector<Vec3> outline,
             const AxisSearchLimits& limits = {});

  // No cylinder is smaller by more than what a search without limits of its own neglects.
  static bool IsProven(const KnownCylinder& known) {
    return known.Bound().Everywhere() >= known.SquareLess(AxisSearchLimits{}.gap);
  }

  // An axis from which all points are nearer than the radius known. False when that is proven to be the smallest, or
  // when the work permitted for all calls is done. What is known must not grow from call to call.
  bool FindSmaller(const KnownCylinder& known, AxisDistance& found);

  // More work, up to so much in all, after that permitted at first is done.
  void Allow(long circles, long passes) {
    m_limits.circles = circles;
    m_limits.passes = passes;
  }
  bool IsExhausted() const { return m_circles >= m_limits.circles || m_passes >= m_limits.passes; }

  // When nothing smaller has been found: the squared radius that no cylinder is below, but for rounding.
  double Bound(const KnownCylinder& known) const {
    return m_cells.empty() ? Least(known) : std::min(Least(known), m_cells.front().bound);
  }
  long Circles() const { return m_circles; }
  long Passes() const { return m_passes; }

 private:
  struct Cell {
    double bound = 0.0;  // on the squared radius
    int face = 0;
    double u = 0.0;  // of the middle, on a face that reaches from -1 to 1
    double v = 0.0;
    double half = 1.0;
  };
  struct Circle {
    AxisFrame frame;
    double square = 0.0;  // of the radius
    RadiusBound bound;
    bool holdsAll = false;  // nearer than the radius in question
  };

  double Least(const KnownCylinder& known) const { return known.SquareLess(m_limits.gap); }
  static bool IsLater(const Cell& a, const Cell& b) {
    return std::tie(a.bound, a.face, a.u, a.v) > std::tie(b.bound, b.face, b.u, b.v);
  }
  void Push(const Cell& cell);
  Cell Pop();
  DirectionCap CapAround(const Cell& cell) const;
  void Split(const Cell& cell, const RadiusBound& here, const KnownCylinder& known);
  bool IsKnownLarge(const DirectionCap& cap, double least) const {
    return std::any_of(m_bounds.begin(), m_bounds.end(), [&](const RadiusBound& b) { return b.Within(cap) >= least; });
  }
  Circle CircleAround(const Vec3& direction, double least);
  Circle CircleAroundOutline(const Vec3& direction) const;
  double ExtendOutline(const Circle& circle);
  AxisDistance AxisOf(const Circle& circle) const;

  PointBlocks& m_points;
  AxisFrame m_frame;
  AxisSearchLimits m_limits;
  std::vector<Vec3> m_outline;
  mutable PointBlocks m_blocks;       // of the outline
  std::vector<Cell> m_cells;          // a heap, the lowest bound on top
  std::vector<RadiusBound> m_bounds;  // of the first circles, which are far apart
  long m_circles = 0;                 // found so far
  long m_passes = 0;                  // over all points
};

}  // namespace nu::engine::minimax

#endif
