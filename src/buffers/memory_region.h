// Registering a part of a block with a context of the backend.
#pragma once

#include <cstdint>
#include <cstring>

#include "zelmar_kor/memory_records.h"
#include "zelmar_kor/provider_record.h"

namespace zant::kor {

// A function of the backend. functions: byte 40 of a ZantProviderRecord, where its functions begin, or null; offset:
// the function's place in the record. Null when either lacks it.
template <class Function>
Function backendFunction(const void* functions, size_t offset) noexcept {
    Function function = nullptr;
    if (functions == nullptr) return function;
    const size_t place = offset - offsetof(ZantProviderRecord, functions40);
    std::memcpy(&function, static_cast<const char*>(functions) + place, sizeof(function));
    return function;
}

inline ZantMemoryRegisterFn memoryRegisterOf(const void* functions) noexcept {
    return backendFunction<ZantMemoryRegisterFn>(functions, offsetof(ZantProviderRecord, memoryRegister));
}

inline ZantMemoryDeregisterFn memoryDeregisterOf(const void* functions) noexcept {
    return backendFunction<ZantMemoryDeregisterFn>(functions, offsetof(ZantProviderRecord, memoryDeregister));
}

struct MemoryShape {
    uint32_t rank;
    const uint32_t* dimensions;
    uint32_t dataType;
};

// The backend's status; on success handle is the region's.
inline uint64_t registerRegion(ZantMemoryRegisterFn memoryRegister, void* context, const MemoryShape& shape,
                               const SharedBufferInfo& region, void*& handle) noexcept {
    const MemRegisterDescriptor descriptor{
        shape.rank, 0, shape.dimensions, nullptr, shape.dataType, ZANT_MEMORY_KIND_SHARED_BUFFER, &region};
    return memoryRegister(context, &descriptor, 1, &handle);
}

}  // namespace zant::kor
