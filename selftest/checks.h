#ifndef NU_SELFTEST_CHECKS_H
#define NU_SELFTEST_CHECKS_H

#include <string>
#include <vector>

#include "statement.h"

// The parts of the self-test, each of which gives a section.

// Least squares at the default tolerances and carried to rounding, minimax fits by the full bounds, and the refusals:
// where the sets lie, as millimetres.
Section CheckReferenceSets(Progress& progress);
// The same sets in the size and place of the part.
Section CheckAtPart(const Part& part, Progress& progress);
// The proofs of the minimax fits of all sets in the size and place of the part.
Section CheckCertificates(const Part& part, Progress& progress);
// Motion, size and order of the points carry every fit along.
Section CheckLaws(const Part& part, Progress& progress);
// Whether every bit is as in the builds that this version was tested with; appends the fingerprint to the identity.
Section CheckBits(Progress& progress, std::vector<std::pair<std::string, std::string>>& identity);

struct PublishedOptions {
  std::vector<std::string> paths;  // directories or point files
  std::string criterion = "ls";
  std::string feature;      // empty: as the name of the file says
  double limit = 0.1;       // largest permitted error, in micrometres, and in microradians of directions and angles
  bool givesRadii = false;  // instead of diameters
  bool fullAngle = false;   // of cones, instead of the semi-angle
};

// Test sets of others: point files with result files beside them. Throws std::runtime_error where one cannot be read.
Section CheckPublishedSets(const PublishedOptions& options, const Part& part, Progress& progress);

#endif
