// A slot of two straight sides and two half circles: offset outwards and to the inside.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const CNuPoint a(0.0, -5.0, 0.0), b(20.0, -5.0, 0.0), c(20.0, 5.0, 0.0), d(0.0, 5.0, 0.0);
  CNuCompositeCurve slot;
  slot.AddSegment(CNuLineSegment(a, b), NuTrue);
  slot.AddSegment(CNuCircularArc(CNuPoint(20.0, 0.0, 0.0), b, c, NuTrue), NuTrue);
  slot.AddSegment(CNuLineSegment(c, d), NuTrue);
  slot.AddSegment(CNuCircularArc(CNuPoint(0.0, 0.0, 0.0), d, a, NuTrue), NuTrue);
  std::printf("%d segments, closed: %d, length %.4f\n", slot.GetNumberSegments(),
              slot.IsClosed(), slot.Length());

  for (const double distance : {1.0, -1.0}) {
    CNuBoundedCurve* other = slot.Offset(distance);
    std::printf("offset by %+.0f: length %.4f\n", distance, other->Length());
    delete other;
  }
  std::printf("as a polyline within 0.01: %d points\n", slot.ToPolyline(0.01).GetSize());
}
