#ifndef NU_ASSOCIATION_CRITERIA_H
#define NU_ASSOCIATION_CRITERIA_H

#include "nu/export.h"

// Hosts of other languages pass numbers: any is a value of these enumerations, and what none names is refused.

// What an association can be asked for. ISO 17450-1 calls it association to fit an ideal feature to points; ISO 1101
// marks the criteria by the letters G, C, N and X.

// In practice they go by these names, too:
//   NuLeastSquares          G  Gauss, LSQ, LSC (circle), LSS (sphere), LSCY (cylinder), LSPL (plane), LSLI (line)
//   NuMinimumZone           C  Chebyshev, minimax, MZ, MZC, MZS, MZCY, MZPL, MZLI, tolerance zone
//   NuMinimumCircumscribed  N  MC, MCC, MCS, MCCY, smallest enclosing, ring gauge
//   NuMaximumInscribed      X  MI, MIC, MIS, MICY, largest empty, plug gauge
enum ENuCriterion : int {
  NuLeastSquares = 0,          // the least sum of squared deviations
  NuMinimumZone = 1,           // the least distance of two parallel features that hold all points between them
  NuMinimumCircumscribed = 2,  // the smallest feature with no point outside
  NuMaximumInscribed = 3       // the largest feature with no point inside
};

// The side on which the points may lie; the feature touches them from the other one. Outside is where the deviation is
// positive: away from the axis or the centre, on the side of the normal of a plane.
enum ENuMaterialSide : int { NuEitherSide = 0, NuOutside = 1, NuInside = 2 };

// How a fit ended. The feature is changed by the first alone.
enum ENuAssociationEnd : int {
  NuConverged = 0,     // at an optimum
  NuLimitReached = 1,  // the limit on the steps
  NuCancelled = 2,     // by the monitor
  NuNoOptimum = 3      // the points determine no such feature
};

// What a report holds beside the end of the fit and its steps: any sum of these. What is not asked for is not computed.
enum ENuReportDetails : int {
  NuDetailNone = 0,
  NuDetailForm = 1,          // the form with its peak and valley, and the sum of squares
  NuDetailDeviations = 3,    // also the signed deviation of every point, and the points of the extremes
  NuDetailUncertainty = 4,   // covariance of the parameters, standard uncertainties, condition
  NuDetailContacts = 8,      // the points that hold the feature, and their multipliers
  NuDetailExplanation = 16,  // the weakest parameter and where to probe; the reason of a failure with its remedy
  NuDetailAll = 31
};

// The letter of ISO 1101, "G", "C", "N" or "X", and the words, such as "minimum zone"; empty for any other value. The
// texts live as long as the program.
NU_EXPORT const char* NuCriterionLetter(ENuCriterion criterion);
NU_EXPORT const char* NuCriterionName(ENuCriterion criterion);

#endif
