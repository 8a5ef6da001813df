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

double NuGetTol() {
  return tolerances.tol;
}
void NuSetTol(double value) {
  tolerances.tol = value;
}
double NuGetLarge() {
  return tolerances.large;
}
void NuSetLarge(double value) {
  tolerances.large = value;
}
double NuGetZero() {
  return tolerances.zero;
}
void NuSetZero(double value) {
  tolerances.zero = value;
}
double NuGetSqrtTol() {
  return tolerances.sqrtTol;
}
void NuSetSqrtTol(double value) {
  tolerances.sqrtTol = value;
}
double NuGetLengthTol() {
  return tolerances.lengthTol;
}
void NuSetLengthTol(double value) {
  tolerances.lengthTol = value;
}
double NuGetMinEdgeLength() {
  return tolerances.minEdgeLength;
}
void NuSetMinEdgeLength(double value) {
  tolerances.minEdgeLength = value;
}
double NuGetDegreeTol() {
  return tolerances.degreeTol;
}
void NuSetDegreeTol(double value) {
  tolerances.degreeTol = value;
}
double NuGetRadianTol() {
  return tolerances.radianTol;
}
void NuSetRadianTol(double value) {
  tolerances.radianTol = value;
}
double NuGetMinAngle() {
  return tolerances.minAngle;
}
void NuSetMinAngle(double value) {
  tolerances.minAngle = value;
}
