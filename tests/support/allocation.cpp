#include "support/allocation.h"

#include <atomic>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

thread_local size_t t_allocations = 0;
thread_local int t_allocationsLeft = -1;
thread_local bool t_isFailing = false;
thread_local bool t_failsOn = false;  // the first failure is followed by others
std::atomic<size_t> g_live{0};

void* allocate(size_t size) noexcept {
    ++t_allocations;
    if (t_allocationsLeft >= 0 && t_allocationsLeft-- == 0) t_isFailing = true;
    if (t_isFailing) {
        t_isFailing = t_failsOn;
        return nullptr;
    }
    void* block = std::malloc(size == 0 ? 1 : size);
    if (block != nullptr) ++g_live;
    return block;
}
void release(void* block) noexcept {
    if (block != nullptr) --g_live;
    std::free(block);
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
void operator delete(void* block) noexcept { release(block); }
void operator delete[](void* block) noexcept { release(block); }
void operator delete(void* block, size_t) noexcept { release(block); }
void operator delete[](void* block, size_t) noexcept { release(block); }
// clang-format on

size_t zant::test::allocationCount() {
    return t_allocations;
}

size_t zant::test::liveAllocations() {
    return g_live;
}

bool zant::test::failAllocation(int countdown, bool fromThenOn) {
    t_failsOn = fromThenOn;
    t_isFailing = false;
    return std::exchange(t_allocationsLeft, countdown) >= 0;
}
