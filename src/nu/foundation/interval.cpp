#include "nu/foundation/interval.h"

#include "nu/foundation/constants.h"
#include "nu/foundation/exceptions.h"
#include "nu/foundation/internal/outputs.h"

using namespace nu::internal;

CNuInterval::CNuInterval() : CNuAlgebra(NuTypeInterval), m_lower(0.0), m_upper(Nu_2PI) {}

// A NaN bound keeps no order and is refused with the rest: lower < upper always holds.
CNuInterval::CNuInterval(double lower, double upper, int leftOpen, int rightOpen)
    : CNuAlgebra(NuTypeInterval), m_leftOpen(leftOpen), m_rightOpen(rightOpen), m_lower(lower), m_upper(upper) {
  if (!(lower < upper)) throw CNuConstructionException(NuConstructionInterval, "CNuInterval", nullptr, 0, 0);
}

void CNuInterval::GetBounds(double* lower, double* upper) const {
  Output(lower, m_lower);
  Output(upper, m_upper);
}

// Hosts rely on the closed test: the open flags are not consulted here.
int CNuInterval::IsIn(double x) const {
  return m_lower <= x && x <= m_upper ? 1 : 0;
}

int CNuInterval::IsOverlapping(const CNuInterval& other) const {
  return IsIn(other.m_lower) || IsIn(other.m_upper) || other.IsIn(m_lower) || other.IsIn(m_upper) ? 1 : 0;
}
