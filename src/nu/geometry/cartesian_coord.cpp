#include "nu/geometry/cartesian_coord.h"

#include <utility>

#include "nu/foundation/internal/outputs.h"

using namespace nu::internal;

CNuCartesianCoord::CNuCartesianCoord()
    : CNuGeometry(NuTypeCartesianCoord), m_xaxis(1.0, 0.0, 0.0), m_zaxis(0.0, 0.0, 1.0) {}

void CNuCartesianCoord::SetData(const CNuPoint& origin, const CNuVector& xaxis, const CNuVector& zaxis) {
  CNuVector x(xaxis), z(zaxis);  // long ones take memory, which may be lacking
  m_origin = origin;
  m_xaxis = std::move(x);
  m_zaxis = std::move(z);
}

void CNuCartesianCoord::GetData(CNuPoint* origin, CNuVector* xaxis, CNuVector* zaxis) const {
  CNuVector x(m_xaxis), z(m_zaxis);
  Output(origin, m_origin);
  Output(xaxis, std::move(x));
  Output(zaxis, std::move(z));
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
