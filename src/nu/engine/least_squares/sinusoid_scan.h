#ifndef NU_ENGINE_LEAST_SQUARES_SINUSOID_SCAN_H
#define NU_ENGINE_LEAST_SQUARES_SINUSOID_SCAN_H

#include <vector>

#include "nu/engine/least_squares/sinusoid_least_squares.h"

namespace nu::engine::least_squares {

// The frequencies at which the sum of squares may be least.
struct FrequencyScan {
  std::vector<double> candidates;  // ascending
  double step = 0.0;               // the minimum lies about this close to one of them
  double limit = 0.0;
};

// The Nyquist frequency of ascending u: pi over the spacing of the samples. Where that is uneven, it is the median of
// the distances between neighbours, but not above their mean and not below a quarter of it; samples closer together
// than a thousandth of the mean distance count as taken at one place.
double NyquistFrequency(const std::vector<double>& u);

// Scans all frequencies up to that one, in steps of at most a quarter of what the range of u resolves, in a time of the
// order n log n. u ascends, the y have mean 0; neither is all the same. Throws std::bad_alloc.
FrequencyScan ScanFrequencies(const WaveSamples& samples);

}  // namespace nu::engine::least_squares

#endif
