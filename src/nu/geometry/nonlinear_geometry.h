#ifndef NU_GEOMETRY_NONLINEAR_GEOMETRY_H
#define NU_GEOMETRY_NONLINEAR_GEOMETRY_H

#include <optional>

#include "nu/export.h"
#include "nu/foundation/boolean.h"
#include "nu/geometry/cartesian_coord.h"
#include "nu/geometry/geometry.h"

// The root of the curves and surfaces, which are defined in a local frame of their own: an optional position says where
// that frame lies. Without one it is the global frame. With R the matrix whose rows are the local axes and T the
// origin, a local point q is the global point q * R + T.
class NU_EXPORT CNuNonLinearGeometry : public CNuGeometry {
 public:
  // Copies take over the presence and the absence of a position alike.
  CNuNonLinearGeometry(const CNuNonLinearGeometry&) = default;
  CNuNonLinearGeometry& operator=(const CNuNonLinearGeometry&) = default;
  ~CNuNonLinearGeometry() override = default;

  // All motions act in the global frame.
  virtual void Translate(const CNuPoint& p);
  virtual void Translate(double dx, double dy, double dz);
  virtual void Rotate(double angle, const CNuVector& axis, const CNuPoint& centre);
  virtual void Rotate(double angle, CNuGeometry::EAxisType axis, const CNuPoint& centre);
  virtual void Rotate(double angle, const CNuVector& axis);
  virtual void Rotate(double angle, CNuGeometry::EAxisType axis);

  ENuBoolean IsPositionSet() const;
  void CopyPosition(const CNuNonLinearGeometry& g);

  CNuMatrix GetRotation() const;
  CNuVector GetTranslation() const;
  CNuMatrix GetTransformation() const;
  CNuMatrix GetInverseRotation() const;
  CNuVector GetInverseTranslation() const;
  CNuMatrix GetInverseTransformation() const;

 protected:
  CNuNonLinearGeometry() = default;
  explicit CNuNonLinearGeometry(ENuObjectType type) : CNuGeometry(type) {}

  void SetPosition(const CNuPoint& origin, const CNuVector& xaxis, const CNuVector& zaxis);
  void GetPosition(CNuPoint* origin, CNuVector* xaxis, CNuVector* zaxis) const;

 private:
  std::optional<CNuCartesianCoord> m_position;
};

#endif
