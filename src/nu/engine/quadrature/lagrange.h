#ifndef NU_ENGINE_QUADRATURE_LAGRANGE_H
#define NU_ENGINE_QUADRATURE_LAGRANGE_H

#include "nu/engine/rooms.h"

namespace nu::engine::quadrature {

struct PolynomialValue {
  double value;
  double error;
};

// The polynomial of least degree through the n >= 2 points (x_i, y_i), x ascending, at a place between the nodes that
// is none of them. n^2 steps.
PolynomialValue LagrangeValue(const double* x, const double* y, int n, double at);

}  // namespace nu::engine::quadrature

#endif
