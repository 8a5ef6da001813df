// Is the zone really the smallest? Branch and bound over all directions gives a lower bound
// for every cylinder.
#include <nu/nu.h>

#include <cmath>
#include <cstdio>

int main() {
  CNuPointArray points(24);
  for (int i = 0; i < 24; ++i) {
    const double u = 2.0 * Nu_PI * (i % 8) / 8.0, radius = 10.0 + 0.002 * ((5 * i) % 7);
    points.Add(CNuPoint(radius * std::cos(u), radius * std::sin(u), 10.0 * (i / 8)));
  }
  CNuAssociation association(points);
  CNuCylSurf cylinder(1.0);
  const CNuAssociationReport report =
      association.ProveGlobally(NuMinimumZone, &cylinder, 200000);
  std::printf("cylindricity %.6f, no cylinder below %.6f\n", report.GetForm(),
              report.GetBound());
  std::printf("proven to be the best of all: %s\n", report.IsGlobal() ? "yes" : "no");
}
