// Counts the thread's allocations. One file of a program includes this.
#pragma once

#include <cstdlib>
#include <new>

namespace bench {

inline thread_local size_t t_allocations = 0;

}  // namespace bench

void* operator new(size_t size) {
    ++bench::t_allocations;
    if (void* block = std::malloc(size)) return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, size_t) noexcept {
    std::free(block);
}
