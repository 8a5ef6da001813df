#ifndef NU_SURFACES_SPHERE_H
#define NU_SURFACES_SPHERE_H

#include "nu/export.h"
#include "nu/geometry/fit_result.h"
#include "nu/geometry/point.h"
#include "nu/surfaces/surface.h"

// The sphere: a radius and, as the origin of its position, a centre. Its orientation has no meaning.
class NU_EXPORT CNuSphSurf : public CNuSurface {
 public:
  // A radius that is not above 0, or NaN: CNuConstructionException cause 5, "radius". A radius alone leaves the sphere
  // without a position, around the origin.
  explicit CNuSphSurf(double radius);
  CNuSphSurf(double radius, const CNuPoint& centre);

  double GetRadius() const { return m_radius; }
  CNuPoint GetCentre() const;
  void GetCentre(double* x, double* y, double* z) const;
  void GetData(double* radius, CNuPoint* centre) const;

  void Fit(const CNuPointArray& points, long maxIter);
  void Fit(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, long maxIter);
  ENuFitResult FitEx(const CNuPointArray& points, double* formError, double* sumSquares, long maxIter);

 private:
  double m_radius;
};

#endif
