#ifndef NU_ENGINE_QUADRATURE_CUBATURE_H
#define NU_ENGINE_QUADRATURE_CUBATURE_H

#include "nu/engine/quadrature/quadrature.h"

namespace nu::engine::quadrature {

using Function1 = FunctionRef<double(double)>;
using Function2 = FunctionRef<double(double, double)>;
using Function3 = FunctionRef<double(double, double, double)>;

// Integrals over 1, 2 and 3 dimensions with the tolerance and the limit of the caller.
Quadrature IntegrateLine(const Function1& f, double ax, double bx, double tol, long maxIter);

struct Bounds2 {
  double ax, bx;
  Function1 ay, by;
};
Quadrature IntegrateArea(const Function2& f, const Bounds2& bounds, double tol, long maxIter);

struct Bounds3 {
  double ax, bx;
  Function1 ay, by;
  Function2 az, bz;
};
Quadrature IntegrateVolume(const Function3& f, const Bounds3& bounds, double tol, long maxIter);

}  // namespace nu::engine::quadrature

#endif
