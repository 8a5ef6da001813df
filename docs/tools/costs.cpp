// costs N: each fit once on N typical points of its feature, for costs.py, which counts the instructions of `Counted`.
// The names of the fits are printed in the order of the calls.

#include <cstdio>
#include <cstdlib>

#include "support/fitted.h"

using namespace nu::test;

// Collected by name; nothing else is counted.
extern "C" __attribute__((noinline)) void Counted(const AnyFit& fit, const CNuPointArray& points, Fitted& result) {
  fit.run(points, 1e-9, 1000, result);
}

namespace {

void Count(const AnyFit& fit, int n) {
  Random random(1);
  const CNuPointArray points = fit.points(random, n);
  Fitted result;
  fit.run(points, 1e-9, 1000, result);  // what the first call prepares is not counted
  Counted(fit, points, result);
  std::printf("%s\n", fit.Name().c_str());
}

}  // namespace

int main(int argc, char** argv) {
  const int n = argc > 1 ? std::atoi(argv[1]) : 0;
  for (const AnyFit& fit : kAllFits) Count(fit, n);
  Count(kTorusFit, n);
  return 0;
}
