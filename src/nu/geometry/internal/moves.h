#ifndef NU_GEOMETRY_INTERNAL_MOVES_H
#define NU_GEOMETRY_INTERNAL_MOVES_H

#include "nu/geometry/internal/conversions.h"

// The moves of a line or a plane, by its point and its direction, once for both. Only sources include this. The
// direction goes first: it is never zero, so it is where a useless axis shows, before anything has changed.
#define NU_DEFINE_MOVES(Class, m_direction)                                               \
  void Class::Translate(const CNuPoint& p) {                                              \
    m_point.Translate(p);                                                                 \
  }                                                                                       \
  void Class::Translate(double dx, double dy, double dz) {                                \
    m_point.Translate(dx, dy, dz);                                                        \
  }                                                                                       \
  void Class::Rotate(double angle, CNuGeometry::EAxisType axis) {                         \
    m_direction = nu::internal::TurnedDirection(m_direction, angle, axis);                \
    m_point.Rotate(angle, axis);                                                          \
  }                                                                                       \
  void Class::Rotate(double angle, const CNuVector& axis) {                               \
    m_direction = nu::internal::TurnedDirection(m_direction, angle, axis);                \
    m_point.Rotate(angle, axis);                                                          \
  }                                                                                       \
  void Class::Rotate(double angle, CNuGeometry::EAxisType axis, const CNuPoint& centre) { \
    m_direction = nu::internal::TurnedDirection(m_direction, angle, axis);                \
    m_point.Rotate(angle, axis, centre);                                                  \
  }                                                                                       \
  void Class::Rotate(double angle, const CNuVector& axis, const CNuPoint& centre) {       \
    m_direction = nu::internal::TurnedDirection(m_direction, angle, axis);                \
    m_point.Rotate(angle, axis, centre);                                                  \
  }

#endif
