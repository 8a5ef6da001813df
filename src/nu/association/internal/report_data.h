#ifndef NU_ASSOCIATION_INTERNAL_REPORT_DATA_H
#define NU_ASSOCIATION_INTERNAL_REPORT_DATA_H

#include <optional>
#include <string>
#include <variant>

#include "nu/association/criteria.h"
#include "nu/association/internal/association_state.h"
#include "nu/engine/association/covariance.h"
#include "nu/foundation/double_array.h"
#include "nu/foundation/exceptions.h"
#include "nu/foundation/int_array.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/object.h"

namespace nu::internal {

// What the plain fit would have thrown.
using FitFailure = std::variant<std::monostate, CNuBestfitException, CNuOperationException>;

struct ReportedForm {
  double form = 0.0;
  double peak = 0.0;
  double valley = 0.0;
  double rootMeanSquare = 0.0;
  double sumSquares = 0.0;
  int highest = 0;
  int lowest = 0;
};

struct ReportedContacts {
  CNuIntArray points{0};
  CNuIntArray sides{0};
  CNuDoubleArray multipliers{0};
};

struct ReportedExplanation {
  std::string text;
  const char* parameter = "";  // the weakest one
  double uncertainty = 0.0;    // of it, per unit of point uncertainty
  double arc = 0.0;            // degrees
  bool hasProbe = false;
  Vec3 probe;
};

struct ReportData {
  ENuCriterion criterion = NuLeastSquares;
  CNuObject::ENuObjectType type = CNuObject::NuTypeNone;
  int points = 0;
  int details = NuDetailNone;
  FixedParameters fixed;

  ENuAssociationEnd end = NuNoOptimum;
  FitFailure failure;
  long steps = 0;
  double lastStep = 0.0;

  ReportedForm form;
  CNuDoubleArray deviations{0};

  Feature feature;
  bool isCentred = false;  // the feature is in the frame of its parameters: more than its form was asked for
  double value = 0.0;      // the radius of a circumscribed or inscribed feature, else T where it is known
  bool isGlobal = false;
  bool hasCertificate = false;
  std::optional<double> bound;

  std::optional<Covariance> covariance;
  std::optional<ReportedContacts> contacts;
  std::optional<ReportedExplanation> explanation;
};

inline constexpr const char* kReport = "report";

// The fit converged, and somebody asked.
inline void RequireDetail(const ReportData& data, int detail, const char* where) {
  if (data.end != NuConverged || (data.details & detail) != detail)
    FailOperation(NuOperationNotReported, kReport, where);
}

}  // namespace nu::internal

#endif
