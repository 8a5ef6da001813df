#include "nu/geometry/cartesian_coord.h"

#include "nu/foundation/internal/outputs.h"

using namespace nu::internal;

CNuCartesianCoord::CNuCartesianCoord()
    : CNuGeometry(NuTypeCartesianCoord), m_xaxis(1.0, 0.0, 0.0), m_zaxis(0.0, 0.0, 1.0) {}

void CNuCartesianCoord::SetData(const CNuPoint& origin, const CNuVector& xaxis, const CNuVector& zaxis) {
  m_origin = origin;
  m_xaxis = xaxis;
  m_zaxis = zaxis;
}

void CNuCartesianCoord::GetData(CNuPoint* origin, CNuVector* xaxis, CNuVector* zaxis) const {
  Output(origin, m_origin);
  Output(xaxis, m_xaxis);
  Output(zaxis, m_zaxis);
}

void CNuCartesianCoord::SetLocalXaxis(const CNuVector& xaxis) {
  m_xaxis = xaxis;
}

void CNuCartesianCoord::SetLocalZaxis(const CNuVector& zaxis) {
  m_zaxis = zaxis;
}

CNuVector CNuCartesianCoord::GetLocalZaxis() const {
  return m_zaxis;
}
