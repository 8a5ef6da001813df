#include "nu/geometry/geometry.h"

#include "nu/foundation/constants.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/numeric_helpers.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/linalg/matrix.h"

using namespace nu::internal;

namespace {

struct Turn {
  double c;
  double s;
};

Turn TurnByDegrees(double angle) {
  Turn turn;
  NuCosSin(Nu_PI * angle * (1.0 / 180.0), &turn.c, &turn.s);
  return turn;
}

CNuMatrix FromRows(Vec3 row0, Vec3 row1, Vec3 row2) {
  CNuMatrix m(3, 3);
  double** rows = m.GetData();
  int i = 0;
  for (const Vec3& row : {row0, row1, row2}) {
    rows[i][0] = row.x;
    rows[i][1] = row.y;
    rows[i][2] = row.z;
    ++i;
  }
  return m;
}

}  // namespace

CNuMatrix CNuGeometry::RotationMatrix(double angle, EAxisType axis) {
  const auto [c, s] = TurnByDegrees(angle);
  switch (axis) {
    case X_AXIS:
      return FromRows({1.0, 0.0, 0.0}, {0.0, c, s}, {0.0, -s, c});
    case Y_AXIS:
      return FromRows({c, 0.0, -s}, {0.0, 1.0, 0.0}, {s, 0.0, c});
    default:
      return FromRows({c, s, 0.0}, {-s, c, 0.0}, {0.0, 0.0, 1.0});
  }
}

CNuMatrix CNuGeometry::RotationMatrix(double angle, const CNuVector& axis) {
  constexpr const char* kWhere = "CNuGeometry::RotationMatrix()";
  if (axis.GetSize() != 3) FailOperation(NuOperationNotThreeComponents, "rotation", kWhere);
  if (axis.IsZero(NuGetZero())) FailOperation(NuOperationZeroVector, "rotation", kWhere);
  const auto [a, b, w] = Unit(Components(axis));
  const auto [c, s] = TurnByDegrees(angle);
  const double t = 1.0 - c;
  return FromRows({a * a * t + c, a * b * t + w * s, a * w * t - b * s},
                  {a * b * t - w * s, b * b * t + c, b * w * t + a * s},
                  {a * w * t + b * s, b * w * t - a * s, w * w * t + c});
}
