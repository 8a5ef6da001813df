#ifndef NU_FWD_H
#define NU_FWD_H

// Every class of the library, declared. Headers include their bases and by-value members and take the rest from here.

class CNuObject;
class CNuAlgebra;
class CNuGeometry;
class CNuNumericalAnalysis;
class CNuTrigonometry;

class CNuException;
class CNuConstructionException;
class CNuOperationException;
class CNuBestfitException;
class CNuMemoryException;

class CNuIntArray;
class CNuDoubleArray;
class CNuComplexArray;
class CNuComplexPolarArray;
class CNuObjArray;
class CNuPointArray;
class CNuInterval;

class CNuVector;
class CNuMatrix;
class CNuLinearEquSys;
class CNuComplex;
class CNuComplexPolar;
class CNuComplexVector;
class CNuComplexMatrix;

class CNuPolynomial;
class CNuAlgEqu;
class CNuChebyshevPolynomial;
class CNuChebyshevPolynomialExpression;
class CNuTriag;
class CNuTriagEqu;
class CNuTriagPolynomial;
class CNuIntegral;
class CNuIntegral2D;
class CNuIntegral3D;
class CNuInterpolation;
class CNuInterpolation2D;

class CNuPoint;
class CNuCartesianCoord;
class CNuNonLinearGeometry;
class CNuLine;
class CNuPlane;

class CNuCurve;
class CNuCircle;
class CNuEllipse;
class CNuHyperbola;
class CNuParabola;
class CNuSineCurve;
class CNuCosineCurve;
class CNuBoundedCurve;
class CNuLineSegment;
class CNuCircularArc;
class CNuPolyline;
class CNuCompositeCurve;
class CNuSimplifiedCurve;
class CNuPCurve;

class CNuSurface;
class CNuSphSurf;
class CNuCylSurf;
class CNuConSurf;
class CNuTorSurf;

class CNuAssociation;
class CNuAssociationCandidates;
class CNuAssociationPart;
class CNuAssociationReport;
class CNuCertificate;
class CNuCertificateVerdict;
class CNuSampledFit;

namespace nu::internal {
struct FeatureAccess;  // stores features as their own fits do
}

#endif
