#ifndef NU_FUZZ_OPERATIONS_OPERATIONS_H
#define NU_FUZZ_OPERATIONS_OPERATIONS_H

#include <span>
#include <vector>

// All public operations in tables, one line each, as calls with arguments from a pool of values. A sequence of them is
// what a fuzz target runs; the tests let every allocation of each fail.
namespace nu::fuzz {

class Pool;

struct Operation {
  const char* name;  // with its parameters, as in the reference
  void (*run)(Pool& pool);
};

// The table of each folder of the library.
std::span<const Operation> FoundationOperations();
std::span<const Operation> LinalgOperations();
std::span<const Operation> NumericsOperations();
std::span<const Operation> GeometryOperations();
std::span<const Operation> CurvesOperations();
std::span<const Operation> SurfacesOperations();
std::span<const Operation> AssociationOperations();
std::span<const Operation> COperations();

// All of them.
const std::vector<Operation>& AllOperations();

}  // namespace nu::fuzz

#endif
