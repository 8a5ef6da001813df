// Intersections come as objects that the caller owns; the type code tells what each of them
// is.
#include <nu/nu.h>

#include <cstdio>

int main() {
  const CNuCylSurf bore(4.0, CNuPoint(0.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
  const CNuPlane sections[] = {CNuPlane(CNuPoint(0.0, 0.0, 5.0), CNuVector(0.0, 0.0, 1.0)),
                               CNuPlane(CNuPoint(0.0, 0.0, 5.0), CNuVector(0.0, 1.0, 1.0)),
                               CNuPlane(CNuPoint(3.0, 0.0, 0.0), CNuVector(1.0, 0.0, 0.0))};
  for (const CNuPlane& plane : sections) {
    CNuObjArray result(2);
    plane.IntersectWith(bore, &result);
    for (int i = 0; i < result.GetSize(); ++i) {
      switch (result[i]->GetType()) {
        case CNuObject::NuTypeCircle:
          std::printf("circle of radius %.3f\n",
                      static_cast<const CNuCircle*>(result[i])->GetRadius());
          break;
        case CNuObject::NuTypeEllipse:
          std::printf("ellipse, longer semi-axis %.4f\n",
                      static_cast<const CNuEllipse*>(result[i])->GetSemiAxisA());
          break;
        case CNuObject::NuTypeLine:
          std::printf("line at y = %.4f\n",
                      static_cast<const CNuLine*>(result[i])->GetPoint().y());
          break;
        default:
          break;
      }
      delete result[i];
    }
  }
}
