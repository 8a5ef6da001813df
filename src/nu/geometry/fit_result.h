#ifndef NU_GEOMETRY_FIT_RESULT_H
#define NU_GEOMETRY_FIT_RESULT_H

// What all fits share; the contract of a fit says what differs.
//
// Parameters.
// - `points`: the measured points. `tol`: the length tolerance of the fit; without it NuGetLengthTol() is read.
// - `form`, `sumSquares`: the largest minus the smallest signed deviation, and the sum of the squared deviations.
// - `zone`, `inner`, `outer`: the width of the minimum zone and its boundaries.
// - `maxIter`: the limit on the steps of the iteration, at least 1. Fits of spheres, cylinders and cones reach it,
// which
//   is cause 12, even when the last permitted step converges.
//
// Failures. A fit that cannot be carried out throws CNuBestfitException; the feature and the outputs stay as they were.
// Each contract gives the name in m_szWhere and lists the causes with their conditions: row by row, and from left to
// right, in the order of the checks. ENuBestfitCause in nu/foundation/causes.h names them.
// - GetSize() is the number of points that the condition states; 4 for points in one plane, 3 for points on one line or
//   not in one plane, else 0.
// - A coordinate that is not finite is cause 11, after the causes 13 and 1 and before all others.
// - Lack of memory is CNuMemoryException; fits of lines, planes and circles word it as cause 11.
//
// Variants that do not throw. `FitEx`, `FitMinEx`, `FitMaxEx` and `FitMinZoneEx` throw cause 13 only, before anything
// else. They return NuFitNoConvergence for cause 12 and NuFitFailure for every other failure. With a `tol` they make it
// the thread's NuGetLengthTol() while they run.
//
// Distance and extent. Points are distinct when CNuGeometry::NumberDistinctPoints takes them so within the length
// tolerance. They are on one line when none is farther than that tolerance from their least-squares line, and in one
// plane when their signed distances from their least-squares plane differ by that tolerance at most. Rounding errors of
// the coordinates are no extent, whatever the tolerance. So a part has the same fits in metres and in micrometres when
// its tolerances are converted with it.
//
// Outputs. A null pointer to a result is skipped, as everywhere in the library. The feature is stored first, then the
// outputs in the order of the parameters: an output that is the feature itself makes it that boundary, and of two
// outputs that are one object the later holds its result.

// The result of the variants that do not throw.
enum ENuFitResult { NuFitSuccess = 0, NuFitNoConvergence = 1, NuFitFailure = 2 };

#endif
