#ifndef NU_ENGINE_HULLS_HULL3_H
#define NU_ENGINE_HULLS_HULL3_H

#include <array>
#include <vector>

#include "nu/engine/hulls/orientation3.h"
#include "nu/engine/points/box_tree.h"

namespace nu::engine::hulls {

// The convex hull of points in space, as triangles, without rounding: no point lies outside by the given doubles. Flat
// faces are cut into triangles, and a corner may lie inside a flat face or an edge, where it does no harm. It grows by
// the farthest outside point (C. B. Barber, D. P. Dobkin, H. Huhdanpaa, The quickhull algorithm for convex hulls, ACM
// Transactions on Mathematical Software 22, 1996); only faces that see a point strictly give way to it, which by exact
// signs leaves a surface whatever lies in one plane or on one line.
class Hull3 {
 public:
  struct Face {
    std::array<int, 3> corner;  // counter-clockwise from outside
    std::array<int, 3> across;  // the face beyond the edge from corner k to the next one
    bool isAlive;
  };

  // More points, up to 2^30 in all; the coordinates are near 2^100 or smaller. A point may be added again. False when
  // signs contradict each other, as no exact ones do; then there is no hull.
  [[nodiscard]] bool Add(const std::vector<IndexedPoint>& points);

  // Of the space that the points span: 0 one place, 1 a line, 2 a plane, 3; -1 without points.
  int Dimension() const { return m_dimension; }
  // Dimension() + 1 points that span it. Of dimension 3 there are faces, else none.
  const std::array<int, 4>& Simplex() const { return m_simplex; }

  int Size() const { return static_cast<int>(m_points.size()); }
  const std::vector<Face>& Faces() const { return m_faces; }
  const IndexedPoint& PointAt(int i) const { return m_points[i]; }
  const double* At(int i) const { return PointAt(i).xyz; }

  Normal3 NormalOf(const Face& face) const {
    return {At(face.corner[0]), At(face.corner[1]), At(face.corner[0]), At(face.corner[2])};
  }

  // Calls visit(w) for the corners next to corner v until it returns true.
  template<class Visit>
  void ForNeighbours(int v, Visit visit) const {
    const int start = m_faceOf[v];
    int f = start;
    do {
      const Face& face = m_faces[f];
      const int k = face.corner[0] == v ? 0 : face.corner[1] == v ? 1 : 2;
      if (visit(face.corner[kNext[k]])) return;
      f = face.across[kNext[kNext[k]]];
    } while (f != start);
  }

  static constexpr int kNext[3] = {1, 2, 0};

 private:
  // The points that a face sees, as a list; each point is in the list of one face at most.
  struct Outside {
    int first = -1;
    int farthest = -1;
    double distance = -1.0;
  };
  class Fan;
  struct Edge {
    int from, to;  // as in the face that gives way
    int beyond;
  };

  bool FindSimplex();
  void MakeSimplex();
  bool FindInside();
  std::vector<int> ArrangeInStages();
  bool GrowInStages();
  bool WalkTowards(int point, int& f) const;
  int AnyPointOff(int dimension, int guess) const;
  int MakeFace(int a, int b, int c);
  void Link(int f, int from, int g);
  bool Offer(int f, const Normal3& normal, int point);
  void PlaceOnAnyFace(int point);
  bool Grow();
  void CollectVisible(int f, int apex);
  bool Cap(int apex);
  bool IsOneRing(int apex) const;
  void Redistribute(int apex);
  template<class Place>
  void ClearVisible(int apex, Place place);

  int m_dimension = -1;
  std::array<int, 4> m_simplex{-1, -1, -1, -1};
  bool m_hasInside = false;
  double m_inside[3] = {};  // strictly inside, for the walks of large sets
  std::vector<IndexedPoint> m_points;
  std::vector<int> m_next;    // per point: the next one in its list
  std::vector<int> m_faceOf;  // per point: a face at that corner; while capping, the new face that starts there
  std::vector<Face> m_faces;
  std::vector<Outside> m_outside;  // per face
  std::vector<int> m_mark;         // per face: the last apex that was tested against it, and whether it is seen
  std::vector<int> m_free;
  std::vector<int> m_open;
  std::vector<int> m_visible, m_fresh;
  std::vector<Edge> m_horizon;
};

}  // namespace nu::engine::hulls

#endif
