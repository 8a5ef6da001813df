#include <cstdio>
#include <new>

#include "nu/c/internal/calls.h"
#include "nu/foundation/cause_text.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/exceptions.h"
#include "nu/foundation/tolerances.h"

using namespace nu::internal;
using namespace nu::internal::c;

namespace {

struct Failure {
  nu_error error;
  char message[256];
};

thread_local Failure lastFailure{};

// Causes of which m_nLower and m_nUpper, or m_dLower and m_dUpper, hold the range that was left.
void AddRange(const CNuException& failure, nu_status status, char* text, std::size_t size) {
  if (status != NU_STATUS_OPERATION) return;
  const int cause = failure.GetCause();
  if (cause == NuOperationIndex || cause == NuOperationCoefficient)
    std::snprintf(text, size, " (%d to %d)", failure.m_nLower, failure.m_nUpper);
}

struct Refusal {
  nu_status status;
  const char* text;
};

nu_status Keep(const Refusal& refusal) {
  lastFailure = {};
  lastFailure.error.status = refusal.status;
  std::snprintf(lastFailure.message, sizeof lastFailure.message, "%s", refusal.text);
  return refusal.status;
}

nu_status Keep(nu_status status, const CNuException& failure) {
  lastFailure.error = {status,           failure.GetCause(), failure.m_nLower,
                       failure.m_nUpper, failure.m_dLower,   failure.m_dUpper};
  char range[32] = "";
  AddRange(failure, status, range, sizeof range);
  std::snprintf(lastFailure.message, sizeof lastFailure.message, "%s: %s%s", failure.m_szWhere, NuCauseText(failure),
                range);
  return status;
}

struct Tolerance {
  double (*get)();
  void (*set)(double);
};

constexpr Tolerance kTolerances[] = {
    {NuGetTol, NuSetTol},
    {NuGetLarge, NuSetLarge},
    {NuGetZero, NuSetZero},
    {NuGetSqrtTol, NuSetSqrtTol},
    {NuGetLengthTol, NuSetLengthTol},
    {NuGetMinEdgeLength, NuSetMinEdgeLength},
    {NuGetDegreeTol, NuSetDegreeTol},
    {NuGetRadianTol, NuSetRadianTol},
    {NuGetMinAngle, NuSetMinAngle},
};

const Tolerance& ToleranceOf(std::int32_t tolerance) {
  Require(tolerance >= 0 && tolerance <= NU_TOLERANCE_MIN_ANGLE, "there is no such tolerance");
  return kTolerances[tolerance];
}

}  // namespace

namespace nu::internal::c {

nu_status StatusOfFailure() noexcept {
  try {
    throw;
  } catch (const Refusal& refusal) {
    return Keep(refusal);
  } catch (const CNuConstructionException& failure) {
    return Keep(NU_STATUS_CONSTRUCTION, failure);
  } catch (const CNuOperationException& failure) {
    return Keep(NU_STATUS_OPERATION, failure);
  } catch (const CNuBestfitException& failure) {
    return Keep(NU_STATUS_FIT, failure);
  } catch (const CNuException& failure) {
    return Keep(NU_STATUS_MEMORY, failure);
  } catch (const std::bad_alloc&) {
    return Keep({NU_STATUS_MEMORY, "there is not enough memory"});
  } catch (...) {
    return Keep({NU_STATUS_UNEXPECTED, "unexpected exception"});
  }
}

void Refuse(nu_status status, const char* text) {
  throw Refusal{status, text};
}

}  // namespace nu::internal::c

nu_status nu_version_get(int32_t* major, int32_t* minor, int32_t* build) {
  return Guarded([&] {
    Output(major, static_cast<std::int32_t>(NuMajorVersionLabel));
    Output(minor, static_cast<std::int32_t>(NuMinorVersionLabel));
    Output(build, static_cast<std::int32_t>(NuBuildVersionLabel));
  });
}

const char* nu_version_text() {
  struct Text {
    char characters[36];
    Text() {
      std::snprintf(characters, sizeof characters, "%u.%u.%u", NuMajorVersionLabel, NuMinorVersionLabel,
                    NuBuildVersionLabel);
    }
  };
  static const Text text;
  return text.characters;
}

nu_status nu_error_get(nu_error* error) {
  if (error == nullptr) return NU_STATUS_ARGUMENT;
  *error = lastFailure.error;
  return NU_STATUS_OK;
}

const char* nu_error_message() {
  return lastFailure.message;
}

nu_status nu_tolerance_get(int32_t tolerance, double* value) {
  return Give(value, "value is null", [&] { return ToleranceOf(tolerance).get(); });
}

nu_status nu_tolerance_set(int32_t tolerance, double value) {
  return Guarded([&] { ToleranceOf(tolerance).set(value); });
}
