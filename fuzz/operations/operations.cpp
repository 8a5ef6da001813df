#include "operations/operations.h"

namespace nu::fuzz {

const std::vector<Operation>& AllOperations() {
  static const std::vector<Operation> all = [] {
    std::vector<Operation> tables;
    for (const auto table : {FoundationOperations(), LinalgOperations(), NumericsOperations(), GeometryOperations(),
                             CurvesOperations(), SurfacesOperations(), AssociationOperations(), COperations()})
      tables.insert(tables.end(), table.begin(), table.end());
    return tables;
  }();
  return all;
}

}  // namespace nu::fuzz
