// Segments have ends: what they share, how far they are apart, and an offset.
#include <nu/nu.h>

#include <cstdio>

int main() {
  CNuLineSegment edge(CNuPoint(0.0, 0.0, 0.0), CNuPoint(30.0, 40.0, 0.0));
  const CNuLineSegment other(CNuPoint(0.0, 30.0, 0.0), CNuPoint(40.0, 0.0, 0.0));
  CNuPoint p;
  std::printf("length %.1f, common points %d", edge.Length(),
              edge.IntersectWith(other, &p));
  std::printf(" at %.2f %.2f\n", p.x(), p.y());

  const CNuLineSegment apart(CNuPoint(50.0, 0.0, 0.0), CNuPoint(50.0, 100.0, 0.0));
  CNuPoint p1, p2;
  std::printf("distance to a third one %.2f\n", edge.DistanceTo(&apart, &p1, &p2));

  CNuBoundedCurve* moved = edge.Offset(5.0, CNuVector(0.0, 0.0, 1.0), 0);
  const CNuPoint start = static_cast<const CNuBoundedCurve*>(moved)->GetStartPoint();
  std::printf("offset by 5 to the right it starts at %.1f %.1f\n", start.x(), start.y());
  delete moved;
}
