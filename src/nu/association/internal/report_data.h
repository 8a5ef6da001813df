#ifndef NU_ASSOCIATION_INTERNAL_REPORT_DATA_H
#define NU_ASSOCIATION_INTERNAL_REPORT_DATA_H

#include <variant>

#include "nu/association/criteria.h"
#include "nu/foundation/double_array.h"
#include "nu/foundation/exceptions.h"
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

struct ReportData {
  ENuCriterion criterion = NuLeastSquares;
  CNuObject::ENuObjectType type = CNuObject::NuTypeNone;
  int points = 0;
  int details = NuDetailNone;

  ENuAssociationEnd end = NuNoOptimum;
  FitFailure failure;
  long steps = 0;
  double lastStep = 0.0;

  ReportedForm form;
  CNuDoubleArray deviations{0};
};

}  // namespace nu::internal

#endif
