#ifndef NU_GEOMETRY_FIT_RESULT_H
#define NU_GEOMETRY_FIT_RESULT_H

// What all fits share.
//
// Extent. Points are on one line when none is farther than the length tolerance of the fit from their least-squares
// line; they are in one plane when their signed distances from their least-squares plane differ by that tolerance at
// most. It is the argument `tol` where there is one, else NuGetLengthTol(). What the rounding errors of the coordinates
// make counts as no extent, whatever the tolerance. So a part has the same fits in metres and in micrometres when its
// tolerances are converted with it.

// Outputs. A null pointer to a result is skipped, as everywhere in the library; so `Fit(points, nullptr, &sumsq, ...)`
// gives the sum alone. The feature is stored first, then the outputs in the order of the parameters: an output that is
// the feature itself makes it that boundary, and of two outputs that are one object the later holds its result.

// What the fits that do not throw return: success, the iteration limit was reached, any other failure.
enum ENuFitResult { NuFitSuccess = 0, NuFitNoConvergence = 1, NuFitFailure = 2 };

#endif
