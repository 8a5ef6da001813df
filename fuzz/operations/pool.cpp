#include "operations/pool.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <initializer_list>
#include <iterator>

#include "nu/c/nu.h"
#include "support/failing_new.h"
#include "support/scratch_file.h"

namespace nu::fuzz {

namespace {

using namespace nu::test;

// More memory than this no call has, so that sizes from the input end in the failure for lack of memory.
constexpr std::size_t kMostBytes = std::size_t{1} << 26;

bool IsOneOf(const char* name, std::initializer_list<const char*> beginnings) {
  return std::any_of(beginnings.begin(), beginnings.end(), [name](const char* beginning) {
    return std::strncmp(name, beginning, std::strlen(beginning)) == 0;
  });
}

// Fits that word lack of memory as a numerical failure, as exceptions.h says.
bool WordsLackOfMemory(const char* name) {
  return IsOneOf(name, {"CNuLine::Fit", "CNuPlane::Fit", "CNuCircle::Fit"});
}

// These change their object step by step, or discard its former result first, as their contracts say.
bool ChangesInPlace(const char* name) {
  return IsOneOf(name, {"CNuMatrix::SVD", "CNuMatrix::LUD", "CNuLinearEquSys::Solve("});
}

// These clear their numbers first.
bool ClearsNumbers(const char* name) {
  return IsOneOf(name, {"CNuSphSurf::Fit(", "CNuCylSurf::Fit(", "CNuConSurf::Fit("});
}

// Matrices are kept from one call to the next.
bool UsesCaches(const char* name) {
  return std::strstr(name, "Eigen") != nullptr;
}

// The allocation that fails after the k-th: all of the first ones, of very many some; or a few.
long NextToFail(CallMode mode, long k) {
  constexpr long kEach = 40;
  if (mode == CallMode::kSomeAllocations) return 4 * k + 1;
  return k + 1 + (k > kEach ? k / 4 : 0);
}

CNuPoint lastingObjects[3];

bool IsLasting(const CNuObject* object) {
  return object == nullptr || std::any_of(std::begin(lastingObjects), std::end(lastingObjects),
                                          [object](const CNuPoint& lasting) { return &lasting == object; });
}

struct Scratch {
  ~Scratch() { std::remove(name.c_str()); }
  const std::string name = ScratchFile("operations_fuzz").string();
};

using Tolerances = std::array<double, NU_TOLERANCE_MIN_ANGLE + 1>;

Tolerances CurrentTolerances() {
  Tolerances values;
  for (std::int32_t i = 0; i <= NU_TOLERANCE_MIN_ANGLE; ++i) nu_tolerance_get(i, &values[static_cast<std::size_t>(i)]);
  return values;
}

void SetTolerances(const Tolerances& values) {
  for (std::int32_t i = 0; i <= NU_TOLERANCE_MIN_ANGLE; ++i) nu_tolerance_set(i, values[static_cast<std::size_t>(i)]);
}

// What the tolerances were before the first pool.
const Tolerances& DefaultTolerances() {
  static const Tolerances defaults = CurrentTolerances();
  return defaults;
}

}  // namespace

Pool::Pool(Input& input) : m_input(input) {
  DefaultTolerances();
}

Pool::~Pool() {
  SetTolerances(DefaultTolerances());
}

void Pool::Fill(std::size_t classAt, void* place) {
  const Tolerances current = CurrentTolerances();
  SetTolerances(DefaultTolerances());
  FillObject(m_input, classAt, place);
  SetTolerances(current);
}

void Pool::FillAll() {
  const auto fill = [this]<std::size_t... kAt>(std::index_sequence<kAt...>) {
    const auto fillSlots = [this](std::size_t classAt, auto& slots) {
      for (auto& place : slots) Fill(classAt, &place);
    };
    (fillSlots(kAt, std::get<kAt>(m_objects)), ...);
  };
  fill(std::make_index_sequence<std::tuple_size_v<Classes>>());
}

const char* Pool::FileName() const {
  thread_local const Scratch file;
  return file.name.c_str();
}

void Pool::Run(const Operation& operation) {
  m_operation = &operation;
  m_arguments.clear();
  operation.run(*this);
}

CNuObject* Pool::Lasting() {
  return IsNull() ? nullptr : &lastingObjects[m_input.Below(3)];
}

void Pool::Own(CNuObject* object) {
  if (object == nullptr) return;
  for (const auto& owned : m_owned) {
    if (owned.get() == object) return;
  }
  m_owned.emplace_back(object);
}

Pool::Ending Pool::Problem(const char* what) {
  m_problems.push_back(std::string(m_operation->name) + " " + what);
  return Ending::kFailed;
}

void Pool::Snapshot(Bits& bits) const {
  bits.clear();
  // A status tells of failures, too.
  const bool clears = ClearsNumbers(m_operation->name);
  for (const Argument& argument : m_arguments) {
    const bool isOpen = argument.put == PutAs<ENuStatus> || (clears && argument.put == PutAs<double>);
    if (!isOpen) argument.put(bits, argument.object);
  }
}

void Pool::RecordArguments() {
  m_recorded.push_back(m_hasSucceeded);
  for (const Argument& argument : m_arguments) {
    if (argument.put != PutAs<CNuObjArray>) argument.put(m_recorded, argument.object);
  }
}

// Arrays of objects hold lasting objects and those that the pool owns already, and now new ones.
void Pool::TakeNewObjects() {
  for (const auto& array : std::get<Slots<CNuObjArray>>(m_objects)) {
    if (array == nullptr) continue;
    for (int i = 0; i < array->GetSize(); ++i) {
      if (!IsLasting((*array)[i])) Own((*array)[i]);
    }
  }
}

Pool::Ending Pool::MakeOnce(void (*call)(const void* body), const void* body) {
  try {
    call(body);
    return Ending::kDone;
  } catch (const CNuMemoryException&) {
    return Ending::kOutOfMemory;
  } catch (const CNuBestfitException& failure) {
    return failure.GetCause() == NuBestfitNumericalFailure ? Ending::kNumericalFailure : Ending::kFailed;
  } catch (const CNuException&) {
    return Ending::kFailed;
  } catch (const std::exception& failure) {
    return Problem(failure.what());
  } catch (...) {
    return Problem("throws what is no exception");
  }
}

// What a failure must leave behind: the memory and the arguments as they were.
void Pool::JudgeFailure(long kept, const char* changes) {
  if (std::strstr(m_operation->name, "&&") != nullptr) return;  // what is moved from holds anything
  if (ChangesInPlace(m_operation->name)) return;
  if (kept != 0 && !UsesCaches(m_operation->name)) Problem("keeps memory when it fails");
  Snapshot(m_after);
  if (m_before != m_after) Problem(changes);
}

// Allocations fail one by one. A call that ends for another reason than lack of memory does so without a failing
// allocation as well.
bool Pool::MakeWithFailures(void (*call)(const void* body), const void* body) {
  bool failsOtherwise = false;
  for (long k = 0;; k = NextToFail(m_mode, k)) {
    Snapshot(m_before);
    const long live = LiveAllocations();
    FailAllocationsAbove(kMostBytes);
    FailAllocation(k);
    const Ending ending = MakeOnce(call, body);
    const bool hasFailed = AllocationHasFailed();
    FailAllocation(-1);
    const long kept = LiveAllocations() - live;
    FailAllocationsAbove(static_cast<std::size_t>(-1));
    if (ending == Ending::kDone) TakeNewObjects();
    if (!hasFailed && failsOtherwise && ending == Ending::kDone)
      Problem("fails for another reason when memory runs out");
    if (!hasFailed) return ending == Ending::kDone;
    if (ending == Ending::kDone) failsOtherwise = false;
    if (ending == Ending::kDone) continue;  // it knows a way without that memory
    const bool isWorded = ending == Ending::kNumericalFailure && WordsLackOfMemory(m_operation->name);
    if (ending != Ending::kOutOfMemory && !isWorded) failsOtherwise = true;
    JudgeFailure(kept, "changes an argument when memory runs out");
  }
}

bool Pool::MakeCall(void (*call)(const void* body), const void* body) {
  if (m_mode == CallMode::kEveryAllocation || m_mode == CallMode::kSomeAllocations) return MakeWithFailures(call, body);
  Snapshot(m_before);
  const long live = LiveAllocations();
  FailAllocationsAbove(kMostBytes);
  FailAllocation(m_mode == CallMode::kOneFailure ? m_input.Byte() : -1);
  const Ending ending = MakeOnce(call, body);
  FailAllocation(-1);
  const long kept = LiveAllocations() - live;
  FailAllocationsAbove(static_cast<std::size_t>(-1));
  if (ending == Ending::kDone) {
    TakeNewObjects();
    return true;
  }
  JudgeFailure(kept, "changes an argument when it fails");
  return false;
}

}  // namespace nu::fuzz
