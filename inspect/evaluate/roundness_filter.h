#ifndef NU_INSPECT_ROUNDNESS_FILTER_H
#define NU_INSPECT_ROUNDNESS_FILTER_H

#include <string>
#include <vector>

#include "evaluate/fits.h"

// Undulations per revolution: far beyond any roundness filter in use.
inline constexpr long kLargestFilter = 10000;

// The points of a closed roundness profile after the linear Gaussian filter of ISO 16610-21, which passes half of the
// amplitude of `cutoff` undulations per revolution: each moves along its radius of the least-squares circle, in the
// plane of that circle. Throws FitFailure where the points leave gaps that the filter cannot bridge: wider than half
// an undulation of the cutoff. Takes time in proportion to the points times the cutoff.
std::vector<Vec3> FilteredRoundness(const std::vector<Vec3>& points, int cutoff);

// "Gaussian, 50 UPR (ISO 16610-21)"; "none, unfiltered" for 0.
std::string FilterText(int cutoff);

#endif
