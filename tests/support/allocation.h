// operator new of the test program: it counts the allocations of a thread and fails one on demand.
#pragma once

#include <cstddef>

namespace zant::test {

size_t allocationCount();
// The allocation behind countdown others fails; a negative number calls that off. False when the one asked for before
// has failed.
bool failAllocation(int countdown);

}  // namespace zant::test
