#include "support/allocation.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace {

thread_local size_t t_allocations = 0;
thread_local int t_allocationsLeft = -1;

void* allocate(size_t size) noexcept {
    ++t_allocations;
    if (t_allocationsLeft >= 0 && t_allocationsLeft-- == 0) return nullptr;
    return std::malloc(size == 0 ? 1 : size);
}
void* allocateOrThrow(size_t size) {
    if (void* block = allocate(size)) return block;
    throw std::bad_alloc();
}

}  // namespace

// clang-format off
void* operator new(size_t size) { return allocateOrThrow(size); }
void* operator new[](size_t size) { return allocateOrThrow(size); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, size_t) noexcept { std::free(block); }
void operator delete[](void* block, size_t) noexcept { std::free(block); }
// clang-format on

size_t zant::test::allocationCount() {
    return t_allocations;
}

bool zant::test::failAllocation(int countdown) {
    return std::exchange(t_allocationsLeft, countdown) >= 0;
}
