// An arc through three points: centre, sweep, length, box.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const CNuCircularArc arc(CNuPoint(10.0, 0.0, 0.0), CNuPoint(6.0, 8.0, 0.0),
                           CNuPoint(-10.0, 0.0, 0.0));
  std::printf("radius %.3f, sweep %.1f degrees, length %.4f\n", arc.GetRadius(),
              arc.GetSweep(), arc.Length());
  CNuPoint low, high;
  arc.BoundingBox(&low, &high);
  std::printf("box from %.1f %.1f to %.1f %.1f\n", low.x() + 0.0, low.y() + 0.0, high.x(),
              high.y());
  std::printf("a point below is %.4f away from its end\n",
              arc.DistanceTo(CNuPoint(13.0, -4.0, 0.0)));
}
