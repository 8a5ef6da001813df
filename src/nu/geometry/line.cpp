#include "nu/geometry/line.h"

#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/moves.h"
#include "nu/geometry/nonlinear_geometry.h"
#include "nu/linalg/matrix.h"

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuLine";

CNuVector DirectionThrough(const CNuPoint& p, const CNuPoint& q) {
  const CNuPoint difference = q - p;
  if (difference.IsZero(NuGetLengthTol()))
    throw CNuConstructionException(NuConstructionCoincident, kName, nullptr, 0, 0);
  return RequireDirection(difference.To3DVector(), NuConstructionCoincident, kName);
}

}  // namespace

CNuLine::CNuLine() : CNuGeometry(NuTypeLine), m_direction(1.0, 0.0, 0.0) {}

CNuLine::CNuLine(const CNuPoint& point, const CNuVector& direction)
    : CNuGeometry(NuTypeLine),
      m_point(point),
      m_direction(RequireDirection(direction, NuConstructionZeroDirection, kName)) {}

CNuLine::CNuLine(const CNuPoint& p, const CNuPoint& q)
    : CNuGeometry(NuTypeLine), m_point(p), m_direction(DirectionThrough(p, q)) {}

void CNuLine::GetData(CNuPoint* point, CNuVector* direction) const {
  Output(point, m_point);
  Output(direction, m_direction);
}

NU_DEFINE_MOVES(CNuLine, m_direction)

void CNuLine::MoveTo(const CNuNonLinearGeometry& g) {
  m_direction = ToVector(Unit(Components(m_direction * g.GetInverseRotation())));
  m_point.MoveTo(g);
}
