#include "nu/foundation/tolerances.h"

namespace {

struct Tolerances {
  double tol = 4.45e-16;
  double large = 1e300;
  double zero = 1e-300;
  double sqrtTol = 1.5e-8;
  double lengthTol = 1e-12;
  double minEdgeLength = 1e-9;
  double degreeTol = 2.777777777778e-10;
  double radianTol = 4.848136811094e-12;
  double minAngle = 2.777777777778e-8;
};

// Constant-initialised and destroyed with nothing to do: a read is an address and a load.
constinit thread_local Tolerances tolerances;

}  // namespace

#define NU_DEFINE_TOLERANCE(Name, tolerance) \
  double NuGet##Name() {                     \
    return tolerances.tolerance;             \
  }                                          \
  void NuSet##Name(double value) {           \
    tolerances.tolerance = value;            \
  }

NU_DEFINE_TOLERANCE(Tol, tol)
NU_DEFINE_TOLERANCE(Large, large)
NU_DEFINE_TOLERANCE(Zero, zero)
NU_DEFINE_TOLERANCE(SqrtTol, sqrtTol)
NU_DEFINE_TOLERANCE(LengthTol, lengthTol)
NU_DEFINE_TOLERANCE(MinEdgeLength, minEdgeLength)
NU_DEFINE_TOLERANCE(DegreeTol, degreeTol)
NU_DEFINE_TOLERANCE(RadianTol, radianTol)
NU_DEFINE_TOLERANCE(MinAngle, minAngle)
