#ifndef NU_TESTS_SUPPORT_FAILING_NEW_H
#define NU_TESTS_SUPPORT_FAILING_NEW_H

#include <cstddef>

// For programs that are linked with failing_new.cpp, which replaces their allocation functions. Both count for the
// calling thread only.
namespace nu::test {

// Lets the k-th allocation from now on fail, counted from 0, once; a negative k lets none fail.
void FailAllocation(long k);
// How many go well until then.
long AllocationsUntilFailure();
// Whether the allocation that was last told to fail has done so.
bool AllocationHasFailed();
// Lets all larger allocations fail.
void FailAllocationsAbove(std::size_t bytes);
// What has been allocated and not released.
long LiveAllocations();
// In bytes, with the most there has been since the last call of MarkPeak; 0 where their sizes are not known.
long LiveBytes();
long PeakBytes();
void MarkPeak();

}  // namespace nu::test

#endif
