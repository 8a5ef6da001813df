// The hyperbola in which a plane cuts a cone, fitted back from points of it.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const CNuConSurf cone(30.0);
  CNuObjArray section(1);
  CNuPlane(CNuPoint(2.0, 0.0, 0.0), CNuVector(1.0, 0.0, 0.0)).IntersectWith(cone, &section);
  const auto* cut = static_cast<const CNuHyperbola*>(section[0]);
  std::printf("cut:    semi-axes %.4f and %.4f\n", cut->GetSemiAxisA(),
              cut->GetSemiAxisB());

  CNuPointArray points(14);
  for (int side = 0; side < 2; ++side) {
    const CNuPointArray half = cut->ToPointArray(7, -1.5, 1.5, side);
    points.Append(half);
  }
  CNuHyperbola fitted(1.0, 1.0);
  fitted.Fit(points, 100);
  std::printf("fitted: semi-axes %.4f and %.4f\n", fitted.GetSemiAxisA(),
              fitted.GetSemiAxisB());
  delete section[0];
}
