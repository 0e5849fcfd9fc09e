// Memory for a component that may be left half made: all blocks still allocated go when the heap does.
//
// RapidJSON's schema classes make allocators of their own by default construction, and lose them and what they gave
// when memory is short in a constructor. So an allocator made by default belongs to the thread's current heap, and lies
// in it itself.
#pragma once

#include <cstddef>
#include <new>

#include "platform/json_types.h"

namespace zant::kor {

class DroppableHeap {
public:
    // Becomes the thread's current heap until it ends; heaps nest.
    DroppableHeap() noexcept : m_outer(t_current) { t_current = this; }
    ~DroppableHeap() {
        t_current = m_outer;
        while (m_blocks.next != &m_blocks) release(m_blocks.next + 1);
    }
    DroppableHeap(const DroppableHeap&) = delete;
    DroppableHeap& operator=(const DroppableHeap&) = delete;

    static DroppableHeap* current() noexcept { return t_current; }

    void* allocate(size_t size) {
        auto* block = static_cast<Block*>(::operator new(sizeof(Block) + size));
        block->previous = &m_blocks;
        block->next = m_blocks.next;
        m_blocks.next->previous = block;
        m_blocks.next = block;
        return block + 1;
    }
    // memory: of any heap, which need not be known.
    static void release(void* memory) noexcept {
        Block* block = static_cast<Block*>(memory) - 1;
        // The analyzer loses track of the ring while the heap is emptied.
        block->previous->next = block->next;  // NOLINT(clang-analyzer-cplusplus.NewDelete)
        block->next->previous = block->previous;
        ::operator delete(block);
    }

private:
    // Stands before each block, in a ring.
    struct alignas(std::max_align_t) Block {
        Block* previous;
        Block* next;
    };

    static thread_local DroppableHeap* t_current;

    Block m_blocks{&m_blocks, &m_blocks};
    DroppableHeap* m_outer;
};

// RapidJSON's allocator concept over the heap that was current when it was made.
class DroppableAllocator {
public:
    static constexpr bool kNeedFree = true;

    DroppableAllocator() noexcept : m_heap(DroppableHeap::current()) {}

    void* Malloc(size_t size) { return size == 0 ? nullptr : m_heap->allocate(size); }
    void* Realloc(void* original, size_t originalSize, size_t newSize) {
        return moveBlock(*this, original, originalSize, newSize);
    }
    static void Free(void* memory) noexcept {
        if (memory != nullptr) DroppableHeap::release(memory);
    }

    static void* operator new(size_t size) { return DroppableHeap::current()->allocate(size); }
    static void* operator new(size_t, void* place) noexcept { return place; }
    static void operator delete(void* memory) noexcept { Free(memory); }

    bool operator==(const DroppableAllocator& other) const noexcept { return m_heap == other.m_heap; }
    bool operator!=(const DroppableAllocator& other) const noexcept { return m_heap != other.m_heap; }

private:
    DroppableHeap* m_heap;
};

}  // namespace zant::kor
