#ifndef NU_FUZZ_CLOUDS_H
#define NU_FUZZ_CLOUDS_H

#include <cstdint>
#include <iterator>

#include "nu/nu.h"
#include "operations/input.h"
#include "support/clouds.h"
#include "support/fitted.h"

namespace nu::fuzz {

template<class F>
CNuPointArray Typical(test::Random& random, int n) {
  return test::TypicalPoints<F>(random, n);
}

// Points of each feature, and of degenerate ones: a short arc, a cap, a sliver, a needle, a lattice.
inline constexpr CNuPointArray (*kClouds[])(test::Random&, int n) = {
    Typical<CNuLine>,
    Typical<CNuPlane>,
    Typical<CNuCircle>,
    Typical<CNuSphSurf>,
    Typical<CNuCylSurf>,
    Typical<CNuConSurf>,
    Typical<CNuTorSurf>,
    Typical<CNuEllipse>,
    Typical<CNuHyperbola>,
    Typical<CNuParabola>,
    Typical<CNuSineCurve>,
    [](test::Random& random, int n) { return test::CircleCloud(random, n, 5.0, 0.01, 0.0); },
    [](test::Random& random, int n) { return test::SphereCloud(random, n, 5.0, 0.1, 1e-9); },
    [](test::Random& random, int n) { return test::CylinderCloud(random, n, 5.0, 1e-6, 10.0, 1e-12); },
    [](test::Random& random, int n) { return test::ConeCloud(random, n, 1e-7, 5.0, 8.0, 360.0, 0.0); },
    [](test::Random& random, int n) { return test::ConeCloud(random, n, 89.9999, 5.0, 8.0, 90.0, 0.0); },
    [](test::Random& random, int n) { return test::TorusCloud(random, n, 1.0 + 1e-9, 1.0, 360.0, 360.0, 0.0); },
    [](test::Random& random, int n) { return test::PlaneCloud(random, n, 1.0, 1e-12, 0.0); },
    [](test::Random& random, int n) { return test::LineCloud(random, n, 1.0, 1e-15); },
    [](test::Random& random, int n) {
      CNuPointArray points(n);
      for (int i = 0; i < n; ++i) points.Add(CNuPoint(random.Below(3), random.Below(3), random.Below(2)));
      return points;
    }};

// A cloud that is moved, scaled, repeated and spoiled; with Input::Below for its size never a large one.
inline CNuPointArray Cloud(Input& input, int (Input::*size)(int most) = &Input::Size) {
  constexpr double kScales[] = {1.0, 1.0, 1.0, 1e-9, 1e9, 1e150, 1e-150, 1e300};
  constexpr double kShifts[] = {0.0, 0.0, 100.0, 1e6, 1e12};
  test::Random random(input.Byte());
  const int n = (input.*size)(40);
  CNuPointArray points = kClouds[input.Below(std::size(kClouds))](random, n);
  const std::uint8_t how = input.Byte();
  if ((how & 1) != 0) points = test::RandomMotion(random, kShifts[input.Below(std::size(kShifts))])(points);
  const double scale = kScales[input.Below(std::size(kScales))];
  for (int i = 0; i < points.GetSize(); ++i) {
    points[i] = CNuPoint(scale * points[i].x(), scale * points[i].y(), scale * points[i].z());
  }
  if ((how & 2) != 0) points.Append(CNuPointArray(points));
  if ((how & 12) == 12 && points.GetSize() > 0) points[random.Below(points.GetSize())].x() = input.Number();
  return points;
}

}  // namespace nu::fuzz

#endif
