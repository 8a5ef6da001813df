#ifndef NU_ENGINE_HULLS_VORONOI_EDGE2_H
#define NU_ENGINE_HULLS_VORONOI_EDGE2_H

#include "nu/engine/hulls/delaunay2.h"

namespace nu::engine::hulls {

// cot(c) / 2 for the angle c at the apex over pq, positive to the left.
double HalfCotangent(Vec2 p, Vec2 q, Vec2 apex);

// The Voronoi edge of a Delaunay edge pq is the set of the points
//
//   m + t n,   m = (p + q) / 2,   n = q - p turned to the left,
//
// with t from -cot(b) / 2 to cot(a) / 2 for the angles a and b opposite pq in the triangles to its left and right, and
// without an end where there is none; at t the squared distance from p and q is |n|^2 (1/4 + t^2).
struct VoronoiEdge2 {
  VoronoiEdge2(const Delaunay2& mesh, Delaunay2::Edge e);

  double SquareAt(double t) const { return square * (0.25 + t * t); }
  Vec2 PointAt(double t) const { return middle + t * normal; }

  Vec2 p, q;
  Vec2 middle;
  Vec2 normal;
  double square;            // of the normal
  Delaunay2::Site apex[2];  // of the triangles to the left and to the right, kNoSite where there is none
  double end[2];            // t, to the left and to the right
};

}  // namespace nu::engine::hulls

#endif
