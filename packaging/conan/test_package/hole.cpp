// By a class and by the interface for C: the same circle.

#include <cstdio>

#include "nu/c/nu.h"
#include "nu/nu.h"

int main() {
  const double xyz[] = {15.0, 8.0, 0.0, 5.0, 18.0, 0.0, -5.0, 8.0, 0.0, 5.0, -2.0, 0.0};
  CNuCircle circle(1.0);
  const CNuAssociationReport report = CNuAssociation(xyz, 4).Fit(NuLeastSquares, &circle);
  report.Require();
  nu_feature hole{};
  hole.kind = NU_KIND_CIRCLE;
  const nu_status status = nu_feature_fit(xyz, 4, 3, NU_CRITERION_LEAST_SQUARES, &hole, nullptr);
  std::printf("radius %.17g\n", hole.size[0]);
  return status == NU_STATUS_OK && hole.size[0] == circle.GetRadius() ? 0 : 1;
}
