#ifndef NU_ENGINE_SHAPES_FOOT_STEPS_H
#define NU_ENGINE_SHAPES_FOOT_STEPS_H

#include "nu/engine/base/lanes.h"
#include "nu/engine/rooms.h"

// Newton's steps towards the feet of a point, or of lanes of points, with the same bits; the mathematics is at the top
// of conics.cpp.
namespace nu::engine::shapes {

// They are convex, so the method comes from one side; it converges quadratically but towards a cusp of the evolute,
// where two or three roots meet: each step takes at least a third of the way there.
inline constexpr int kMostFootSteps = 120;

using base::TakeSquareRoot;
NU_ALWAYS_INLINE void TakeSquareRoot(double& x) {
  x = std::sqrt(x);
}

// What an ellipse subtracts from u.
template<class T>
NU_ALWAYS_INLINE void FindEllipseStep(const T& m, const T& n, double k, const T& u, T& step) {
  const T c = m / (u + k);
  const T s = n / u;
  step = -0.5 * (c * c + s * s - 1.0) / (c * c / (u + k) + s * s / u);
}

// What a hyperbola subtracts from S.
template<class T>
NU_ALWAYS_INLINE void FindHyperbolaStep(const T& m, const T& n, const T& s, T& step) {
  T c = 1.0 + s * s;
  TakeSquareRoot(c);
  step = (s - m * (s / c) - n) / (1.0 - m / c / c / c);
}

}  // namespace nu::engine::shapes

#endif
