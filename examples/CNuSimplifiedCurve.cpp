// A scanned profile of 181 points, reduced to the fewest vertices within a tolerance.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const CNuCircularArc arc(CNuPoint(0.0, 0.0, 0.0), CNuPoint(50.0, 0.0, 0.0),
                           CNuPoint(-50.0, 0.0, 0.0), NuTrue);
  const CNuPointArray scanned = arc.ToPointArray(181);
  for (const double tol : {0.01, 0.1, 1.0}) {
    const CNuSimplifiedCurve curve(scanned, tol);
    std::printf("within %.2f: %d of %d points, largest deviation %.4f\n", tol,
                curve.GetSize(), scanned.GetSize(), curve.GetMaxDeviation());
  }
}
