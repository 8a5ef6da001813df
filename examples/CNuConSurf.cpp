// A taper, measured in four sections: its angle, its form, and the diameter at a gauge
// plane.
#include <nu/nu.h>

#include <cmath>
#include <cstdio>

int main() {
  const double halfAngle = 8.297 * Nu_PI / 180.0;  // of a 7:24 taper, nearly
  CNuPointArray points(32);
  for (int section = 0; section < 4; ++section)
    for (int i = 0; i < 8; ++i) {
      const double u = 2.0 * Nu_PI * i / 8.0, z = 60.0 + 15.0 * section;
      const double radius = z * std::tan(halfAngle) + 0.0015 * std::cos(2.0 * u + section);
      points.Add(CNuPoint(radius * std::cos(u), radius * std::sin(u), z));
    }

  CNuConSurf taper(10.0);
  double form = 0.0, sumSquares = 0.0, zone = 0.0;
  taper.Fit(points, &form, &sumSquares, 50);
  std::printf("semi-angle %.4f degrees, apex at z %.4f, form %.5f\n", taper.GetSemiAngle(),
              taper.GetApex().z(), form);
  CNuConSurf middle(10.0);
  middle.FitMinZone(points, &zone, 1e-6, 200);
  std::printf("minimum zone %.5f\n", zone);

  CNuObjArray section(1);
  const CNuPlane gauge(taper.GetApex() + CNuPoint(0.0, 0.0, 100.0),
                       taper.GetAxisDirection());
  if (taper.IntersectWith(gauge, &section) == 1 &&
      section[0]->GetType() == CNuObject::NuTypeCircle)
    std::printf("gauge diameter %.4f\n",
                2.0 * static_cast<const CNuCircle*>(section[0])->GetRadius());
  for (int i = 0; i < section.GetSize(); ++i) delete section[i];
}
