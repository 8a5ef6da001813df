#ifndef NU_INSPECT_FITS_H
#define NU_INSPECT_FITS_H

#include <stdexcept>
#include <vector>

#include "evaluate/inspection.h"

// The points do not determine the feature, or the iteration failed; the text says which.
class FitFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// One feature by one criterion each, with parameters, frame, deviations and, for least squares, the sum of squares.
// They pass the exceptions of the library on.
Inspection LeastSquaresLine(const std::vector<Vec3>& points);
Inspection MinimumZoneLine(const std::vector<Vec3>& points);
Inspection LeastSquaresPlane(const std::vector<Vec3>& points);
Inspection MinimumZonePlane(const std::vector<Vec3>& points);
Inspection LeastSquaresCircle(const std::vector<Vec3>& points);
Inspection MinimumZoneCircle(const std::vector<Vec3>& points);
Inspection CircumscribedCircle(const std::vector<Vec3>& points);
Inspection InscribedCircle(const std::vector<Vec3>& points);
Inspection LeastSquaresEllipse(const std::vector<Vec3>& points);
Inspection LeastSquaresHyperbola(const std::vector<Vec3>& points);
Inspection LeastSquaresParabola(const std::vector<Vec3>& points);
Inspection LeastSquaresSphere(const std::vector<Vec3>& points);
Inspection MinimumZoneSphere(const std::vector<Vec3>& points);
Inspection CircumscribedSphere(const std::vector<Vec3>& points);
Inspection InscribedSphere(const std::vector<Vec3>& points);
Inspection LeastSquaresCylinder(const std::vector<Vec3>& points);
Inspection MinimumZoneCylinder(const std::vector<Vec3>& points);
Inspection CircumscribedCylinder(const std::vector<Vec3>& points);
Inspection InscribedCylinder(const std::vector<Vec3>& points);
Inspection LeastSquaresCone(const std::vector<Vec3>& points);
Inspection MinimumZoneCone(const std::vector<Vec3>& points);
Inspection CircumscribedTorus(const std::vector<Vec3>& points);

#endif
