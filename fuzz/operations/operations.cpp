#include "operations/operations.h"

#include <algorithm>
#include <utility>

#include "tables.h"

namespace nu::fuzz {

namespace {

// FNV-1a, 32 bits, of Fowler, Noll and Vo; the last shifts spread the last characters over all bits.
std::uint32_t HashOf(const char* name, unsigned salt) {
  std::uint32_t hash = 2166136261u ^ salt;
  for (; *name != '\0'; ++name) hash = (hash ^ static_cast<unsigned char>(*name)) * 16777619u;
  hash = (hash ^ (hash >> 16)) * 0x85ebca6bu;
  return hash ^ (hash >> 13);
}

using Mark = std::pair<std::uint32_t, const Operation*>;

// A ring on which each operation has some marks.
std::vector<Mark> Ring() {
  constexpr unsigned kMarks = 8;
  std::vector<Mark> ring;
  for (const Operation& operation : AllOperations()) {
    for (unsigned salt = 0; salt < kMarks; ++salt) ring.emplace_back(HashOf(operation.name, salt), &operation);
  }
  std::sort(ring.begin(), ring.end());
  return ring;
}

}  // namespace

const std::vector<Operation>& AllOperations() {
  static const std::vector<Operation> all = [] {
    std::vector<Operation> operations;
    const auto add = [&operations](std::span<const Operation> table) {
      operations.insert(operations.end(), table.begin(), table.end());
    };
    for (const auto table : kGeneratedTables) add(table());
    add(WrittenOperations());
    add(COperations());
    return operations;
  }();
  return all;
}

const Operation& OperationOf(std::uint16_t number) {
  static const std::vector<Mark> ring = Ring();
  const Mark at{std::uint32_t{number} << 16, nullptr};
  const auto next = std::lower_bound(ring.begin(), ring.end(), at);
  return *(next == ring.end() ? ring.front() : *next).second;
}

}  // namespace nu::fuzz
