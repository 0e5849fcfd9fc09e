// operator new of the test program: it counts the allocations of a thread and fails one on demand.
#pragma once

#include <cstddef>

namespace zant::test {

size_t allocationCount();
// How many blocks of all threads live.
size_t liveAllocations();
// The allocation behind countdown others fails, and with fromThenOn all behind it; a negative number calls that off.
// False when the one asked for before has failed.
bool failAllocation(int countdown, bool fromThenOn = false);

}  // namespace zant::test
