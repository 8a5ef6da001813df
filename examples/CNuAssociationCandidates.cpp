// The minimum zone of a cloud in parts: of each only the points that may hold the zone are
// kept.
#include <nu/nu.h>

#include <cmath>
#include <cstdio>

static CNuPointArray Scan(int from, int to) {
  CNuPointArray points(to - from);
  for (int i = from; i < to; ++i) {
    const double u = 0.1 * i, radius = 12.0 + 0.001 * ((13 * i) % 7 - 3);
    points.Add(CNuPoint(radius * std::cos(u), radius * std::sin(u), 0.02 * i));
  }
  return points;
}

int main() {
  const CNuPointArray parts[] = {Scan(0, 400), Scan(400, 900), Scan(900, 1000)};
  CNuCylSurf pin(1.0);
  pin.Fit(parts[0], 50);
  const CNuPoint middle(0.0, 0.0, 10.0);

  CNuAssociationCandidates candidates;
  double half = 0.0;
  for (int round = 0; round < 20; ++round) {
    CNuAssociationPart all;
    for (const CNuPointArray& points : parts)
      all.Join(CNuAssociationPart(points, pin, middle));
    if (round > 0 &&
        std::fmax(all.GetLargestDeviation(), -all.GetSmallestDeviation()) <= half + 1e-12)
      break;
    candidates.Add(all);
    half = candidates.Fit(NuMinimumZone, &pin);
  }
  std::printf("in parts: zone %.9f\n", 2.0 * half);

  CNuCylSurf whole(1.0);
  double zone = 0.0;
  whole.FitMinZone(Scan(0, 1000), &zone, 1e-9, 200);
  std::printf("at once:  zone %.9f\n", zone);
}
