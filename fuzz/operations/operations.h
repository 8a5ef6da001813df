#ifndef NU_FUZZ_OPERATIONS_OPERATIONS_H
#define NU_FUZZ_OPERATIONS_OPERATIONS_H

#include <cstdint>
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

// The tables that are written by hand; `generate` writes the others from the headers.
std::span<const Operation> WrittenOperations();
std::span<const Operation> COperations();

// All of them.
const std::vector<Operation>& AllOperations();

// The operation that an input names by a number. It depends on the hashes of names, so that an input keeps its
// operations when others are added.
const Operation& OperationOf(std::uint16_t number);

}  // namespace nu::fuzz

#endif
