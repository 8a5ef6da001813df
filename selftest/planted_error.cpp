// Loaded before the library, it makes one of its results wrong: the form of circles by a part in a million. The
// self-test must find that.

#include <dlfcn.h>

#include "nu/curves/circle.h"

void CNuCircle::Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter) {
  using Member = void (*)(CNuCircle*, const CNuPointArray&, double*, double*, long);
  const auto fit = reinterpret_cast<Member>(dlsym(RTLD_NEXT, "_ZN9CNuCircle3FitERK13CNuPointArrayPdS3_l"));
  fit(this, points, form, sumSquares, maxIter);
  if (form != nullptr) *form *= 1.0 + 1e-6;
}
