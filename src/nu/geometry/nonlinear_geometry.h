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
  CNuNonLinearGeometry& operator=(const CNuNonLinearGeometry& other);
  ~CNuNonLinearGeometry() override = default;

  // All motions act in the global frame and create the position where there is none.
  //
  // Places the frame at p: it is required not to add p, as for all features.
  virtual void Translate(const CNuPoint& p);
  virtual void Translate(double dx, double dy, double dz);
  // By `angle` degrees, right-handed, about an axis through `centre` or through the global origin. An angle within 6e-7
  // degrees of a multiple of 90 counts as that multiple: a smaller rotation does nothing.
  // Fails with CNuOperationException ("CNuNonLinearGeometry", "rotation"):
  //   10  axis has not three components     9  axis is zero within NuGetZero()
  virtual void Rotate(double angle, const CNuVector& axis, const CNuPoint& centre);
  virtual void Rotate(double angle, CNuGeometry::EAxisType axis, const CNuPoint& centre);
  virtual void Rotate(double angle, const CNuVector& axis);
  virtual void Rotate(double angle, CNuGeometry::EAxisType axis);

  // Whether there is a position.
  ENuBoolean IsPositionSet() const;
  // Takes over the position of g. Where g has none, this object keeps its own, unlike in an assignment.
  void CopyPosition(const CNuNonLinearGeometry& g);

  // R (3 x 3), T (3), and both as the 4 x 4 matrix that maps the row (q, 1) to (p, 1); identity and zero without a
  // position, which none of these creates.
  CNuMatrix GetRotation() const;
  CNuVector GetTranslation() const;
  CNuMatrix GetTransformation() const;
  // The transpose of R, the negative of T, and the 4 x 4 matrix that maps (p, 1) to (q, 1).
  CNuMatrix GetInverseRotation() const;
  CNuVector GetInverseTranslation() const;
  CNuMatrix GetInverseTransformation() const;

 protected:
  struct Frame {
    CNuPoint origin;
    CNuVector xaxis;
    CNuVector zaxis;
  };

  CNuNonLinearGeometry() = default;
  explicit CNuNonLinearGeometry(ENuObjectType type) : CNuGeometry(type) {}

  // The axes are stored as they are given; they are meant to be unit vectors and orthogonal.
  void SetPosition(const CNuPoint& origin, const CNuVector& xaxis, const CNuVector& zaxis);
  // The identity placement where there is no position.
  void GetPosition(CNuPoint* origin, CNuVector* xaxis, CNuVector* zaxis) const;
  Frame GetFrame() const;

 private:
  // Called after every change of the position, for geometries that consist of others. It must not throw.
  virtual void PositionChanged() {}
  void Turn(const CNuMatrix& rotation, const CNuPoint& centre);

  std::optional<CNuCartesianCoord> m_position;
};

#endif
