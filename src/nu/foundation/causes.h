#ifndef NU_FOUNDATION_CAUSES_H
#define NU_FOUNDATION_CAUSES_H

// Names of the causes that CNuException::GetCause() returns. The same number means different things in different
// classes of exceptions, so each class has an enumeration of its own. Values and meanings are fixed.

// CNuConstructionException
enum ENuConstructionCause {
  NuConstructionSize = 1,           // a size that is not positive
  NuConstructionNegativeSize = 2,   // a negative size or degree
  NuConstructionZeroDirection = 3,  // a direction that is zero or not finite
  NuConstructionDirection = 4,      // a direction that has not three components, or is zero or not finite
  NuConstructionLength = 5,         // a radius, semi-axis, focal length or modulus that is not positive
  NuConstructionConeAngle = 6,      // a semi-angle outside of 0 to 90 degrees
  NuConstructionLengthOrder = 7,    // semi-axes or radii in the wrong order
  NuConstructionShape = 8,          // axes that are not perpendicular; coefficients that make no sine wave
  NuConstructionPlane = 9,          // a point on the line that is to span a plane with it
  NuConstructionCoincident = 10,    // defining points that coincide
  NuConstructionInterval = 11,      // bounds that are not in ascending order
  NuConstructionArc = 12,           // radii that differ, or points that determine no arc
  NuConstructionExpandSize = 15     // an array that would not grow
};

// CNuOperationException
enum ENuOperationCause {
  NuOperationDomain = 1,               // an argument outside of the domain of a function
  NuOperationRoot = 2,                 // a power or root of a complex number of an order below 1
  NuOperationIndex = 3,                // an index out of range: m_nLower and m_nUpper hold the range
  NuOperationCoefficient = 4,          // the same for a coefficient of a trigonometric polynomial
  NuOperationSizeMismatch = 5,         // operands whose sizes do not match
  NuOperationZeroDivisor = 6,          // a divisor below NuGetZero()
  NuOperationLargeFactor = 7,          // a factor above NuGetLarge()
  NuOperationEmpty = 8,                // an empty container
  NuOperationZeroVector = 9,           // a zero vector where a direction is needed
  NuOperationNotThreeComponents = 10,  // a vector that has not three components
  NuOperationHomogeneous = 11,         // a vector that has neither three nor four components
  NuOperationCount = 12,               // a number of samples or a tolerance that gives no polyline
  NuOperationArgument = 14,            // a size that an array cannot have; a range without points
  NuOperationRange = 15,               // a range that ends before it starts
  NuOperationMatrix = 16,              // a matrix that is singular or not square
  NuOperationUnsolvable = 17,          // a system of equations that cannot be solved
  NuOperationAppend = 18,              // an array appended to itself
  NuOperationCoincidentPoints = 19,    // no plane half-way between points that coincide
  NuOperationPointOnLine = 21,         // no plane half-way between a point and a line through it
  NuOperationLineAcrossPlane = 22,     // no line half-way between a plane and a line perpendicular to it
  NuOperationLinesMeet = 23,           // no plane half-way between lines that meet
  NuOperationPlaneAcrossLine = 24,     // no plane half-way between a plane and a line perpendicular to it
  NuOperationOffsetDirection = 26,     // an offset along the segment, or of a chain with a gap
  NuOperationOffsetRadius = 27,        // an offset that takes the radius of an arc
  NuOperationOffsetVanishes = 28,      // an offset of which nothing is left
  NuOperationOffsetNotFinite = 29,     // an offset by a distance, or to a place, that is not finite
  NuOperationOffsetParts = 30,         // an offset that consists of several curves
  NuOperationOutside = 40,             // an argument outside of the data: m_dLower and m_dUpper hold the range
  NuOperationData = 41,                // data that an approximation cannot use
  NuOperationIntegrand = 43,           // an integrand that is not finite
  NuOperationIntegrationLimit = 44,    // an integral that did not converge within the limit
  NuOperationUnsupported = 45,         // a case that is not supported; arguments that are not finite
  NuOperationFailed = 46,              // a calculation that failed
  NuOperationFileOpen = 47,            // a file that cannot be opened, read or written
  NuOperationFileReadOnly = 48,        // a file that is read-only
  NuOperationNotReported = 49          // what a report does not hold
};

// CNuBestfitException. GetSize() is the number in brackets, else 0.
enum ENuBestfitCause {
  NuBestfitTooFewPoints = 1,       // too few points (the number needed)
  NuBestfitTooFewDistinct = 2,     // too few distinct points (the number needed)
  NuBestfitCollinearPoints = 3,    // points on one line (3)
  NuBestfitCoplanarPoints = 4,     // points in one plane where a sphere, cylinder or cone is wanted (4)
  NuBestfitNotCoplanar = 5,        // points of a circle that do not lie in one plane (3)
  NuBestfitNoVariation = 6,        // values of a sine or cosine curve that do not vary
  NuBestfitExchange = 9,           // no narrowest annulus: the points are next to one line
  NuBestfitNumericalFailure = 11,  // the points do not determine the feature, or are not finite
  NuBestfitIterationLimit = 12,    // the iteration limit was reached
  NuBestfitInvalidLimit = 13       // an iteration limit below 1
};

// CNuMemoryException
enum ENuMemoryCause { NuMemoryExhausted = 301 };

#endif
