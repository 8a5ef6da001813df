// work N SET OPERATION: one operation on one adversarial set, for work.sh, which counts the instructions of `Measured`.
// Without arguments it lists the names of sets and operations.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "support/adversaries.h"
#include "support/fitted.h"
#include "support/point_set_operations.h"

using namespace nu::test;

namespace {

using Operation = PointSetOperation;

std::vector<Operation> Operations() {
  std::vector<Operation> all = PointSetOperations();
  for (const AnyFit& fit : kAllFits) {
    all.push_back({fit.Name(), [&fit](const CNuPointArray& points) {
                     Fitted f;
                     fit.run(points, 1e-9, 1000, f);
                   }});
    if (fit.associate == nullptr) continue;
    all.push_back({"association, " + fit.Name(), [&fit](const CNuPointArray& points) {
                     Fitted f;
                     CNuAssociation association(points);
                     association.SetDetails(NuDetailAll);
                     fit.associate(association, 1e-9, 1000, f);
                   }});
  }
  return all;
}

}  // namespace

// Collected by name; nothing else is counted.
extern "C" __attribute__((noinline)) void Measured(const Operation& operation, const CNuPointArray& points) {
  try {
    operation.run(points);
  } catch (const CNuException&) {
    // A set need not suit each fit: refusing it is work as well.
  }
}

int main(int argc, char** argv) {
  const std::vector<Operation> operations = Operations();
  const int n = argc > 1 ? std::atoi(argv[1]) : 1;
  for (const auto& [name, points] : Adversaries(n)) {
    for (const Operation& operation : operations) {
      if (argc == 1 || argc == 2) std::printf("%s|%s\n", name, operation.name.c_str());
      if (argc == 2 || (argc == 4 && argv[2] == std::string(name) && argv[3] == operation.name))
        Measured(operation, points);
    }
  }
  return 0;
}
