// A cloud in parts that are never in one place: each is reduced to some sums, and their
// join gives the fit of the whole.
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
  pin.Fit(parts[0], 50);  // the start: a fit of one part
  const CNuPoint middle(0.0, 0.0, 10.0);

  double step = 1.0;
  CNuAssociationPart all;
  for (int round = 0; round < 20 && step > 1e-12; ++round) {
    all = CNuAssociationPart();
    for (const CNuPointArray& points : parts)
      all.Join(CNuAssociationPart(points, pin, middle));
    step = all.Step(&pin);
  }
  std::printf("in parts: radius %.9f of %d points\n", pin.GetRadius(),
              static_cast<int>(all.GetNumberPoints()));

  CNuCylSurf whole(1.0);
  whole.Fit(Scan(0, 1000), 50);
  std::printf("at once:  radius %.9f\n", whole.GetRadius());
}
