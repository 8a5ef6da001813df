#include "nu/engine/hulls/voronoi_edge2.h"

#include "nu/engine/base/floating_point.h"

namespace nu::engine::hulls {

double HalfCotangent(Vec2 p, Vec2 q, Vec2 apex) {
  return 0.5 * AccurateDot(p - apex, q - apex) / AccurateCross(p - apex, q - apex);
}

VoronoiEdge2::VoronoiEdge2(const Delaunay2& mesh, Delaunay2::Edge e)
    : p(mesh.At(mesh.Origin(e))),
      q(mesh.At(mesh.Destination(e))),
      middle(0.5 * (p + q)),
      normal(Perpendicular(q - p)),
      square(Dot(normal, normal)),
      apex{mesh.Apex(e), mesh.Apex(Delaunay2::Opposite(e))} {
  end[0] = apex[0] == Delaunay2::kNoSite ? kInfinity : HalfCotangent(p, q, mesh.At(apex[0]));
  end[1] = apex[1] == Delaunay2::kNoSite ? -kInfinity : -HalfCotangent(q, p, mesh.At(apex[1]));
}

}  // namespace nu::engine::hulls
