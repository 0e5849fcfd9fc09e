// RapidJSON with allocators that throw: a shortage of memory reaches loadConfig as std::bad_alloc, never as a null
// that the library below would follow.
#pragma once

#include <rapidjson/document.h>
#include <rapidjson/pointer.h>

#include <cstddef>
#include <cstring>
#include <new>
#include <string_view>

namespace zant::kor {

// RapidJSON's Realloc over an allocator's other two operations.
template <class Allocator>
void* moveBlock(Allocator& allocator, void* original, size_t originalSize, size_t newSize) {
    void* moved = allocator.Malloc(newSize);
    if (original != nullptr && moved != nullptr) {
        std::memcpy(moved, original, originalSize < newSize ? originalSize : newSize);
    }
    Allocator::Free(original);
    return moved;
}

class ThrowingAllocator {
public:
    static constexpr bool kNeedFree = true;

    void* Malloc(size_t size) { return size == 0 ? nullptr : ::operator new(size); }
    void* Realloc(void* original, size_t originalSize, size_t newSize) {
        return moveBlock(*this, original, originalSize, newSize);
    }
    static void Free(void* block) noexcept { ::operator delete(block); }

    bool operator==(const ThrowingAllocator&) const noexcept { return true; }
    bool operator!=(const ThrowingAllocator&) const noexcept { return false; }
};

using JsonEncoding = rapidjson::UTF8<char>;
using JsonPool = rapidjson::MemoryPoolAllocator<ThrowingAllocator>;
using JsonTree = rapidjson::GenericDocument<JsonEncoding, JsonPool, ThrowingAllocator>;
using JsonValue = JsonTree::ValueType;
using JsonPointer = rapidjson::GenericPointer<JsonValue, ThrowingAllocator>;

// The text of a string value or a member name, zero bytes included.
inline std::string_view textOf(const JsonValue& value) {
    return {value.GetString(), value.GetStringLength()};
}

}  // namespace zant::kor
