#ifndef NU_FOUNDATION_OBJECT_H
#define NU_FOUNDATION_OBJECT_H

#include "nu/export.h"

// The root of the value classes, with a type code. The constructors of the concrete classes set it, and copies keep it.
class NU_EXPORT CNuObject {
 public:
  // The values are part of the interface and never change.
  enum ENuObjectType {
    NuTypeNone = 0,
    NuTypeInterval = 1,
    NuTypeMatrix = 2,
    NuTypeComplex = 3,
    NuTypeComplexPolar = 4,
    NuTypeComplexVector = 5,
    NuTypeComplexMatrix = 6,
    NuTypePolynomial = 7,
    NuTypeChebyshevPolynomial = 8,
    NuTypeChebyshevPolynomialExpression = 9,
    NuTypeAlgEqu = 10,
    NuTypeLinearEquSys = 11,
    NuTypeCosineCurve = 12,
    NuTypeSineCurve = 13,
    NuTypeTriag = 14,
    NuTypeTriagEqu = 15,
    NuTypeTriagPolynomial = 16,
    NuTypePoint = 17,
    NuTypeVector = 18,
    NuTypeCartesianCoord = 19,
    NuTypeLine = 20,
    NuTypePlane = 21,
    NuTypeCircle = 22,
    NuTypeEllipse = 23,
    NuTypeHyperbola = 24,
    NuTypeParabola = 25,
    NuTypePolyline = 26,
    NuTypePCurve = 28,
    NuTypeLineSegment = 29,
    NuTypeCircularArc = 30,
    NuTypeCompositeCurve = 31,
    NuTypeSimplifiedCurve = 32,
    NuTypeCylSurf = 33,
    NuTypeConSurf = 34,
    NuTypeSphSurf = 35,
    NuTypeTorSurf = 36,
    NuTypeIntegral = 38,
    NuTypeIntegral2D = 39,
    NuTypeIntegral3D = 40,
    NuTypeInterpolation = 41,
    NuTypeInterpolation2D = 42
  };

  CNuObject(const CNuObject&) = default;
  CNuObject& operator=(const CNuObject&) = default;
  virtual ~CNuObject() = default;

  // The type code of the concrete class.
  ENuObjectType GetType() const { return m_type; }

 protected:
  CNuObject() = default;
  explicit CNuObject(ENuObjectType type) : m_type(type) {}

  ENuObjectType m_type = NuTypeNone;
};

// The root of the algebraic classes: intervals, complex numbers and matrices, polynomials, equations. Like the two
// roots below it has no operations of its own. CNuGeometry is in nu/geometry/geometry.h.
class NU_EXPORT CNuAlgebra : public CNuObject {
 public:
  CNuAlgebra(const CNuAlgebra&) = default;
  CNuAlgebra& operator=(const CNuAlgebra&) = default;

 protected:
  CNuAlgebra() = default;
  explicit CNuAlgebra(ENuObjectType type) : CNuObject(type) {}
};

// The root of integration and interpolation.
class NU_EXPORT CNuNumericalAnalysis : public CNuObject {
 public:
  CNuNumericalAnalysis(const CNuNumericalAnalysis&) = default;
  CNuNumericalAnalysis& operator=(const CNuNumericalAnalysis&) = default;

 protected:
  CNuNumericalAnalysis() = default;
  explicit CNuNumericalAnalysis(ENuObjectType type) : CNuObject(type) {}
};

// The root of sine and cosine curves, trigonometric polynomials and their equations.
class NU_EXPORT CNuTrigonometry : public CNuObject {
 public:
  CNuTrigonometry(const CNuTrigonometry&) = default;
  CNuTrigonometry& operator=(const CNuTrigonometry&) = default;

 protected:
  CNuTrigonometry() = default;
  explicit CNuTrigonometry(ENuObjectType type) : CNuObject(type) {}
};

#endif
