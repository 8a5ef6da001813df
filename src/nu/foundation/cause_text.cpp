#include "nu/foundation/cause_text.h"

#include <array>
#include <cstddef>

#include "nu/foundation/exceptions.h"

namespace {

// What m_nCause adds to the enumerators of a class.
constexpr int kOperation = 100;
constexpr int kBestfit = 200;

struct Cause {
  int stored;
  const char* name;
  const char* text;
};

#define NU_CAUSE(kind, enumerator, text) \
  { (kind) + (enumerator), #enumerator, text }

constexpr Cause kCauses[] = {
    NU_CAUSE(0, NuConstructionSize, "the size is not positive"),
    NU_CAUSE(0, NuConstructionNegativeSize, "the size or degree is negative"),
    NU_CAUSE(0, NuConstructionZeroDirection, "the direction is zero or not finite"),
    NU_CAUSE(0, NuConstructionDirection, "the direction has not three components, or is zero or not finite"),
    NU_CAUSE(0, NuConstructionLength, "a radius, semi-axis, focal length or modulus is not positive"),
    NU_CAUSE(0, NuConstructionConeAngle, "the semi-angle is not between 0 and 90 degrees"),
    NU_CAUSE(0, NuConstructionLengthOrder, "the semi-axes or radii are in the wrong order"),
    NU_CAUSE(0, NuConstructionShape, "the axes are not perpendicular, or the coefficients give no curve"),
    NU_CAUSE(0, NuConstructionPlane, "the point lies on the line that is to span a plane with it"),
    NU_CAUSE(0, NuConstructionCoincident, "the defining points coincide"),
    NU_CAUSE(0, NuConstructionInterval, "the bounds are not in ascending order"),
    NU_CAUSE(0, NuConstructionArc, "the radii differ, or the points determine no arc"),
    NU_CAUSE(0, NuConstructionExpandSize, "the array would not grow"),
    NU_CAUSE(kOperation, NuOperationDomain, "the argument is outside of the domain of the function"),
    NU_CAUSE(kOperation, NuOperationRoot, "the order of the power or root is below 1"),
    NU_CAUSE(kOperation, NuOperationIndex, "the index is out of range"),
    NU_CAUSE(kOperation, NuOperationCoefficient, "the index of the coefficient is out of range"),
    NU_CAUSE(kOperation, NuOperationSizeMismatch, "the sizes do not match"),
    NU_CAUSE(kOperation, NuOperationZeroDivisor, "the divisor is zero or next to it"),
    NU_CAUSE(kOperation, NuOperationLargeFactor, "the factor is too large"),
    NU_CAUSE(kOperation, NuOperationEmpty, "there are no elements"),
    NU_CAUSE(kOperation, NuOperationZeroVector, "a direction is needed and the vector is zero"),
    NU_CAUSE(kOperation, NuOperationNotThreeComponents, "the vector has not three components"),
    NU_CAUSE(kOperation, NuOperationHomogeneous, "the vector has neither three nor four components"),
    NU_CAUSE(kOperation, NuOperationCount, "the number of samples or the tolerance gives no polyline"),
    NU_CAUSE(kOperation, NuOperationArgument, "the size or the range is invalid"),
    NU_CAUSE(kOperation, NuOperationRange, "the range ends before it starts"),
    NU_CAUSE(kOperation, NuOperationMatrix, "the matrix is singular or not square"),
    NU_CAUSE(kOperation, NuOperationUnsolvable, "the system of equations cannot be solved"),
    NU_CAUSE(kOperation, NuOperationAppend, "an array cannot be appended to itself"),
    NU_CAUSE(kOperation, NuOperationCoincidentPoints, "no plane lies half-way between points that coincide"),
    NU_CAUSE(kOperation, NuOperationPointOnLine, "no plane lies half-way between a point and a line through it"),
    NU_CAUSE(kOperation, NuOperationLineAcrossPlane, "no line lies half-way between a plane and a perpendicular line"),
    NU_CAUSE(kOperation, NuOperationLinesMeet, "no plane lies half-way between lines that meet"),
    NU_CAUSE(kOperation, NuOperationPlaneAcrossLine, "no plane lies half-way between a plane and a perpendicular line"),
    NU_CAUSE(kOperation, NuOperationOffsetDirection, "the offset is along the segment, or the chain has a gap"),
    NU_CAUSE(kOperation, NuOperationOffsetRadius, "the offset takes the whole radius of an arc"),
    NU_CAUSE(kOperation, NuOperationOffsetVanishes, "nothing is left of the offset curve"),
    NU_CAUSE(kOperation, NuOperationOffsetNotFinite, "the offset is not finite"),
    NU_CAUSE(kOperation, NuOperationOffsetParts, "the offset consists of several curves"),
    NU_CAUSE(kOperation, NuOperationOutside, "the argument is outside of the data"),
    NU_CAUSE(kOperation, NuOperationData, "the data cannot be used"),
    NU_CAUSE(kOperation, NuOperationIntegrand, "the integrand is not finite"),
    NU_CAUSE(kOperation, NuOperationIntegrationLimit, "the integral did not converge within the limit"),
    NU_CAUSE(kOperation, NuOperationUnsupported, "the case is not supported, or an argument is not finite"),
    NU_CAUSE(kOperation, NuOperationFailed, "the calculation failed"),
    NU_CAUSE(kOperation, NuOperationFileOpen, "the file cannot be opened, read or written"),
    NU_CAUSE(kOperation, NuOperationFileReadOnly, "the file is read-only"),
    NU_CAUSE(kOperation, NuOperationNotReported, "the report does not hold it"),
    NU_CAUSE(kBestfit, NuBestfitTooFewPoints, "too few points"),
    NU_CAUSE(kBestfit, NuBestfitTooFewDistinct, "too few distinct points"),
    NU_CAUSE(kBestfit, NuBestfitCollinearPoints, "the points lie on one line"),
    NU_CAUSE(kBestfit, NuBestfitCoplanarPoints, "the points lie in one plane"),
    NU_CAUSE(kBestfit, NuBestfitNotCoplanar, "the points do not lie in one plane"),
    NU_CAUSE(kBestfit, NuBestfitNoVariation, "the values do not vary"),
    NU_CAUSE(kBestfit, NuBestfitExchange, "no annulus holds the points more closely than two parallel lines"),
    NU_CAUSE(kBestfit, NuBestfitNumericalFailure, "the points do not determine the feature, or are not finite"),
    NU_CAUSE(kBestfit, NuBestfitIterationLimit, "the iteration limit was reached"),
    NU_CAUSE(kBestfit, NuBestfitInvalidLimit, "the iteration limit is below 1"),
    NU_CAUSE(0, NuMemoryExhausted, "there is not enough memory"),
};

#undef NU_CAUSE

const Cause* CauseOf(const CNuException& failure) {
  for (const Cause& cause : kCauses)
    if (cause.stored == failure.m_nCause) return &cause;
  return nullptr;
}

constexpr std::size_t kDigits = 10;

template<std::size_t N>
struct Text {
  char characters[N];
};

// The text once for every digit in place of its '#'.
template<std::size_t N>
consteval std::array<Text<N>, kDigits> WithDigits(const char (&text)[N]) {
  std::array<Text<N>, kDigits> all{};
  for (std::size_t digit = 0; digit < kDigits; ++digit)
    for (std::size_t i = 0; i < N; ++i)
      all[digit].characters[i] = text[i] == '#' ? static_cast<char>('0' + digit) : text[i];
  return all;
}

constexpr auto kTooFewPoints = WithDigits("too few points: at least # are needed");
constexpr auto kTooFewDistinct = WithDigits("too few distinct points: at least # are needed");

}  // namespace

const char* NuCauseText(const CNuException& failure) {
  const auto least = static_cast<std::size_t>(failure.m_nLower);
  const bool isPlural = failure.m_nLower > 1 && least < kDigits;
  if (isPlural && failure.m_nCause == kBestfit + NuBestfitTooFewPoints) return kTooFewPoints[least].characters;
  if (isPlural && failure.m_nCause == kBestfit + NuBestfitTooFewDistinct) return kTooFewDistinct[least].characters;
  const Cause* cause = CauseOf(failure);
  return cause == nullptr ? "unknown cause" : cause->text;
}

const char* NuCauseName(const CNuException& failure) {
  const Cause* cause = CauseOf(failure);
  return cause == nullptr ? "" : cause->name;
}
